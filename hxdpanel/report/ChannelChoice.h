// Channels as a user names them: "21", "26-28", "Brightness", "com1", "time-server-2".
#ifndef HXDPANEL_CHANNELCHOICE_H
#define HXDPANEL_CHANNELCHOICE_H

#include <string>
#include <vector>

// A number up to the highest, or a name of the channel table without regard to case: every part of
// the word, cut at blanks, hyphens and before digits, begins a part of the name, in this order, and
// no other name fits. False with a message for the user.
bool ChooseChannel(const std::string& word, int highest, int& number, std::string& error);

// Several, in the order of the words; a word may be a range of numbers. All for no word.
bool ChooseChannels(const std::vector<std::string>& words, int highest, std::vector<int>& numbers,
                    std::string& error);

// All that may be typed for a channel, for completion: numbers, and names without blanks.
std::vector<std::string> ChannelWords();

#endif
