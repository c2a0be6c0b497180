// Texts as the console shows and takes them. Bytes are taken as the locale's encoding says.
#ifndef HXDPANEL_TEXT_H
#define HXDPANEL_TEXT_H

#include <chrono>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

// Control characters and invalid bytes as visible escapes; never anything that acts on a terminal.
std::string Visible(const std::string& text);

// Visible, and between quotes where the bare text would be misread (empty, blanks at its ends).
std::string Quoted(const std::string& text);

// The shortest of up to 15 digits: 0.1, not 0.10000000000000001.
std::string NumberText(double number);

// "2026-01-31 08:00:00"
std::string TimeText(const std::tm& time);

// The local time, to the millisecond, as in ISO 8601: "2026-01-31T08:00:00.000+01:00"
std::string IsoTime(std::chrono::system_clock::time_point time = std::chrono::system_clock::now());

// address: IPv4, network byte order.
std::string AddressText(std::uint32_t address);

// Columns that a visible text takes on a terminal.
std::size_t Columns(const std::string& visible);
std::string PadRight(const std::string& visible, std::size_t columns);
// Cut to so many columns, with a mark at its end where something is missing.
std::string Shortened(const std::string& visible, std::size_t columns);

// The first word, or the first text between double quotes, cut off what follows it.
std::string TakeWord(std::string& rest);
// The words between blanks.
std::vector<std::string> SplitWords(const std::string& line);
std::vector<std::string> SplitAt(char separator, const std::string& text);
std::string Joined(const std::vector<std::string>& parts, const std::string& separator = ", ");
// Takes the quotes around a text away; false when there are none.
bool Unquote(std::string& text);
// True for a text that begins with a quote and does not end with another.
bool HasOpenQuote(const std::string& text);

std::string Trimmed(const std::string& text);
bool EqualNames(const std::string& left, const std::string& right);  // without regard to case

// Those that begin with the word, without regard to case.
std::vector<std::string> Beginning(const std::string& word,
                                   const std::vector<std::string>& candidates);

// The candidate that the word is probably a misspelling of, or "" when none is close.
std::string Closest(const std::string& word, const std::vector<std::string>& candidates);

#endif
