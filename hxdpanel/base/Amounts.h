// Numbers as a user types them.
#ifndef HXDPANEL_AMOUNTS_H
#define HXDPANEL_AMOUNTS_H

#include <string>

// The whole text as a finite decimal number.
bool ParseNumber(const std::string& text, double& number);
// A whole number in this range.
bool ParseWhole(const std::string& text, long long least, long long most, long long& number);

// "500ms", "10s" or "10", "5m" or "5min", "1h", "2d"; up to a year, in milliseconds.
bool ParseDuration(const std::string& text, long long& milliseconds);
// "300M", "1G", "64K" or bytes; in powers of 1024, up to 1024 T.
bool ParseSize(const std::string& text, long long& bytes);

#endif
