#include "ntp/ClockText.h"

#include <cstdio>

namespace {

std::string DateAndTime(const std::tm& time) {
    char text[100];
    const long long year = 1900LL + time.tm_year;
    const long long month = 1LL + time.tm_mon;
    std::snprintf(text, sizeof text, "%lld-%lld-%d %d:%d:%d", year, month, time.tm_mday,
                  time.tm_hour, time.tm_min, time.tm_sec);
    return text;
}

}  // namespace

std::string ClockCommand(const std::tm& time) {
    return "date -s \"" + DateAndTime(time) + '"';
}

std::string ClockReport(const std::tm& time) {
    return "date is : " + DateAndTime(time);
}
