// Conversions between number types that cannot misbehave.
#ifndef HXD_NUMBERS_H
#define HXD_NUMBERS_H

#include <cstdint>
#include <limits>

namespace hxd {

// Truncates toward zero; values beyond the range of int give its limits, NaN gives 0.
inline int ToInt(double value) {
    if (value >= static_cast<double>(std::numeric_limits<int>::max()))
        return std::numeric_limits<int>::max();
    if (value <= static_cast<double>(std::numeric_limits<int>::min()))
        return std::numeric_limits<int>::min();
    return value == value ? static_cast<int>(value) : 0;
}

// Rounds half away from zero, saturating as ToInt; 0 gives 0.
inline int RoundToInt(double value) {
    return value > 0 ? ToInt(value + 0.5) : ToInt(value - 0.5);
}

// strtol(text, nullptr, 10) of a platform whose long has 32 bits, which the panel's has.
int ParseInt(const char* text);

// -value without undefined behaviour: the lowest int stays as it is.
inline int Negated(int value) {
    return static_cast<int>(0u - static_cast<std::uint32_t>(value));
}

}  // namespace hxd

#endif
