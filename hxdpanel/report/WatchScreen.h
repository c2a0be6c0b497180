// The watched channels on a window: all of them at once, in as many columns as that takes.
#ifndef HXDPANEL_WATCHSCREEN_H
#define HXDPANEL_WATCHSCREEN_H

#include "hxdpanel/report/ChannelReport.h"

#include <cstdio>
#include <deque>
#include <map>
#include <set>
#include <string>

class WatchScreen {
public:
    // title: the first line. changed: the numbers of the channels to mark.
    void Take(const std::string& title, const ShownChannels& channels,
              const std::set<int>& changed);
    // Over what stands in the window, in its present size.
    void Draw(std::FILE* out) const;

private:
    std::string Cell(std::FILE* out, const ShownChannel& channel, std::size_t width) const;
    std::string Spark(int number, std::size_t columns) const;

    std::string m_strTitle;
    ShownChannels m_channels;
    std::set<int> m_changed;
    std::map<int, std::deque<double>> m_past;  // of each number channel, newest last
};

#endif
