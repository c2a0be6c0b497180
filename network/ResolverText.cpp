#include "network/ResolverText.h"

#include "toolscom.h"

#include <algorithm>

namespace {

const char* const KEYWORD = "nameserver";
constexpr std::size_t BLANK_INDEX = 10;   // of a line, wherever in it the keyword stands
constexpr std::size_t VALUE_OFFSET = 11;  // from the keyword
constexpr int ADDRESS_NUMBERS = 4;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// One or two digits, or three for 100 to 255.
bool IsAddressNumber(const std::string& text) {
    if (text.empty() || text.size() > 3 || !std::all_of(text.begin(), text.end(), IsDigit))
        return false;
    return text.size() < 3 || (text[0] != '0' && text <= "255");
}

enum class Line { OTHER, SERVER, MALFORMED };

Line ParseLine(const std::string& line, std::string& value) {
    const std::size_t keyword = line.find(KEYWORD);
    if (keyword == std::string::npos)
        return Line::OTHER;
    const std::size_t start = keyword + VALUE_OFFSET;
    const std::size_t comment = line.find('#');
    if (comment != std::string::npos && comment <= start)
        return Line::OTHER;
    if (start >= line.size() || line[BLANK_INDEX] != ' ')
        return Line::MALFORMED;
    FF::utils::String text =
        line.substr(start, comment == std::string::npos ? comment : comment - start);
    value = text.trim();
    return Line::SERVER;
}

}  // namespace

// By hand: the regular expressions of Qt and of the C++ library keep caches that all threads share,
// the latter's without a lock.
bool IsDottedAddress(const std::string& text) {
    std::size_t start = 0;
    for (int i = 0; i < ADDRESS_NUMBERS; ++i) {
        const bool last = i == ADDRESS_NUMBERS - 1;
        const std::size_t end = last ? text.size() : text.find('.', start);
        if (end == std::string::npos || !IsAddressNumber(text.substr(start, end - start)))
            return false;
        start = end + 1;
    }
    return true;
}

bool ParseNameServers(const std::string& text, std::vector<std::string>& servers) {
    servers.clear();
    std::vector<FF::utils::String> lines;
    SplitCsvStr(text, '\n', lines);
    for (const FF::utils::String& line : lines) {
        std::string value;
        const Line kind = ParseLine(line, value);
        if (kind == Line::OTHER)
            continue;
        if (kind == Line::MALFORMED || !IsDottedAddress(value)) {
            servers.clear();
            return false;
        }
        servers.push_back(value);
    }
    return true;
}
