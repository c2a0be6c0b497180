#include "toolscom.h"

namespace {

const char* const WHITE_SPACE = " \t\n\r\v\f";

}  // namespace

FF::utils::String& FF::utils::String::trim() {
    erase(find_last_not_of(WHITE_SPACE) + 1);
    erase(0, find_first_not_of(WHITE_SPACE));
    return *this;
}

int SplitCsvStr(const std::string& text, char separator, std::vector<FF::utils::String>& pieces) {
    const std::size_t before = pieces.size();
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(separator, start);
        pieces.emplace_back(text.substr(start, end - start));
        if (end == std::string::npos)
            return static_cast<int>(pieces.size() - before);
        start = end + 1;
    }
}
