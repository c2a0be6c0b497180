// The command that sets the panel's clock.
#ifndef HXD_CLOCKTEXT_H
#define HXD_CLOCKTEXT_H

#include <ctime>
#include <string>

// date -s "2024-1-2 3:4:5". The fields stand as they are, also an hour above 23.
std::string ClockCommand(const std::tm& time);

// The same for people, without a newline: date is : 2024-1-2 3:4:5
std::string ClockReport(const std::tm& time);

#endif
