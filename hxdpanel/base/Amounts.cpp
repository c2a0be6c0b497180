#include "hxdpanel/base/Amounts.h"

#include <QString>

#include <cmath>
#include <cstddef>

namespace {

struct Unit {
    const char* name;
    double factor;
};
const Unit TIMES[] = {{"", 1e3},    {"ms", 1},    {"s", 1e3},   {"m", 6e4},
                      {"min", 6e4}, {"h", 3.6e6}, {"d", 8.64e7}};
const Unit SIZES[] = {
    {"", 1}, {"K", 1024}, {"M", 1048576}, {"G", 1073741824.0}, {"T", 1099511627776.0}};
constexpr double YEAR_MS = 365 * 8.64e7;
constexpr double LARGEST_SIZE = 1024 * 1099511627776.0;

template <std::size_t COUNT>
bool ParseAmount(const std::string& text, const Unit (&units)[COUNT], double most,
                 long long& amount) {
    const std::size_t end = text.find_last_of("0123456789.") + 1;  // 0: there is no digit
    double number = 0.0;
    if (!ParseNumber(text.substr(0, end), number) || number < 0.0)
        return false;
    for (const Unit& unit : units) {
        if (text.substr(end) == unit.name && number * unit.factor <= most) {
            amount = std::llround(number * unit.factor);
            return true;
        }
    }
    return false;
}

}  // namespace

bool ParseNumber(const std::string& text, double& number) {
    bool valid = false;
    const double parsed = QString::fromUtf8(text.c_str()).toDouble(&valid);
    if (!valid || !std::isfinite(parsed))
        return false;
    number = parsed;
    return true;
}

bool ParseWhole(const std::string& text, long long least, long long most, long long& number) {
    bool valid = false;
    const long long parsed = QString::fromUtf8(text.c_str()).toLongLong(&valid);
    if (!valid || parsed < least || parsed > most)
        return false;
    number = parsed;
    return true;
}

bool ParseDuration(const std::string& text, long long& milliseconds) {
    return ParseAmount(text, TIMES, YEAR_MS, milliseconds);
}

bool ParseSize(const std::string& text, long long& bytes) {
    return ParseAmount(text, SIZES, LARGEST_SIZE, bytes);
}
