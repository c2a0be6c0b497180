#include "toolscom.h"

int SplitCsvStr(const std::string& text, char separator, std::vector<FF::utils::String>& pieces) {
    int count = 0;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = text.find(separator, begin);
        pieces.emplace_back(text.substr(begin, end - begin));
        ++count;
        if (end == std::string::npos)
            return count;
        begin = end + 1;
    }
}
