#include "network/ResolverText.h"

#include "toolscom.h"

#include <regex>

namespace {

const char* const KEYWORD = "nameserver";
constexpr std::size_t BLANK_INDEX = 10;   // of a line, wherever in it the keyword stands
constexpr std::size_t VALUE_OFFSET = 11;  // from the keyword
const char* const ADDRESS_PATTERN =
    "^(((\\d{1,2})|(1\\d{2})|(2[0-4]\\d)|(25[0-5]))\\.){3}"
    "((\\d{1,2})|(1\\d{2})|(2[0-4]\\d)|(25[0-5]))$";

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

bool ParseNameServers(const std::string& text, std::vector<std::string>& servers) {
    servers.clear();
    std::vector<FF::utils::String> lines;
    SplitCsvStr(text, '\n', lines);
    const std::regex address(ADDRESS_PATTERN);
    for (const FF::utils::String& line : lines) {
        std::string value;
        const Line kind = ParseLine(line, value);
        if (kind == Line::OTHER)
            continue;
        if (kind == Line::MALFORMED || !std::regex_match(value, address)) {
            servers.clear();
            return false;
        }
        servers.push_back(value);
    }
    return true;
}
