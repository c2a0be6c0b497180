#include "common/Numbers.h"

#include <algorithm>
#include <cstdlib>

namespace hxd {

int ParseInt(const char* text) {
    const long long value = std::strtoll(text, nullptr, 10);
    const long long lowest = std::numeric_limits<int>::min();
    const long long highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(std::max(value, lowest), highest));
}

}  // namespace hxd
