#include "hxdpanel/base/Text.h"

#include <arpa/inet.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <sstream>

namespace {

std::string Hexadecimal(unsigned value, int digits) {
    std::array<char, 16> buffer = {};
    std::snprintf(buffer.data(), buffer.size(), "%0*X", digits, value);
    return buffer.data();
}

std::string Escape(unsigned code, bool isByte) {
    switch (code) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '\r':
            return "\\r";
        default:
            return isByte || code < 0x80 ? "\\x" + Hexadecimal(code, 2)
                                         : "\\u" + Hexadecimal(code, 4);
    }
}

// One character of a text: its wide code and the bytes it takes; no code for an invalid byte.
struct Character {
    wchar_t code;
    std::size_t length;
    bool valid;
};

Character CharacterAt(const std::string& text, std::size_t position) {
    std::mbstate_t state = {};
    wchar_t code = 0;
    const std::size_t length =
        std::mbrtowc(&code, text.data() + position, text.size() - position, &state);
    if (length == 0)
        return {0, 1, true};
    if (length > text.size() - position)  // invalid or cut short
        return {0, 1, false};
    return {code, length, true};
}

std::size_t Width(const Character& character) {
    return static_cast<std::size_t>(std::max(::wcwidth(character.code), 1));
}

std::size_t Distance(const std::string& left, const std::string& right) {
    std::vector<std::size_t> row(right.size() + 1);
    for (std::size_t j = 0; j <= right.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const bool same = std::tolower(static_cast<unsigned char>(left[i - 1])) ==
                              std::tolower(static_cast<unsigned char>(right[j - 1]));
            const std::size_t replaced = diagonal + (same ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string Visible(const std::string& text) {
    std::string visible;
    for (std::size_t i = 0; i < text.size();) {
        const Character character = CharacterAt(text, i);
        if (!character.valid)
            visible += Escape(static_cast<unsigned char>(text[i]), true);
        else if (std::iswprint(static_cast<std::wint_t>(character.code)) == 0)
            visible += Escape(static_cast<unsigned>(character.code), false);
        else
            visible.append(text, i, character.length);
        i += character.length;
    }
    return visible;
}

std::string Quoted(const std::string& text) {
    const std::string visible = Visible(text);
    const bool bare = !text.empty() && text == Trimmed(text) && text == visible &&
                      text.find('"') == std::string::npos;
    return bare ? text : '"' + visible + '"';
}

std::string NumberText(double number) {
    std::array<char, 40> buffer = {};
    std::snprintf(buffer.data(), buffer.size(), "%.15g", number);
    return buffer.data();
}

std::string TimeText(const std::tm& time) {
    std::array<char, 64> text = {};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", time.tm_year + 1900,
                  time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec);
    return text.data();
}

std::string IsoTime(std::chrono::system_clock::time_point time) {
    const auto passed =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local = {};
    ::localtime_r(&seconds, &local);
    std::array<char, 32> text = {};
    std::array<char, 24> milliseconds = {};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", &local);
    std::snprintf(milliseconds.data(), milliseconds.size(), ".%03d",
                  static_cast<int>(passed.count() % 1000));
    return std::string(text.data()).insert(22, 1, ':').insert(19, milliseconds.data());
}

std::string AddressText(std::uint32_t address) {
    std::array<char, INET_ADDRSTRLEN> text = {};
    ::inet_ntop(AF_INET, &address, text.data(), text.size());
    return text.data();
}

std::size_t Columns(const std::string& visible) {
    std::size_t columns = 0;
    for (std::size_t i = 0; i < visible.size();) {
        const Character character = CharacterAt(visible, i);
        columns += Width(character);
        i += character.length;
    }
    return columns;
}

std::string PadRight(const std::string& visible, std::size_t columns) {
    const std::size_t used = Columns(visible);
    return used < columns ? visible + std::string(columns - used, ' ') : visible;
}

std::string Shortened(const std::string& visible, std::size_t columns) {
    if (Columns(visible) <= columns)
        return visible;
    if (columns == 0)
        return "";
    std::size_t end = 0;
    for (std::size_t used = 1;;) {  // the mark's
        const Character character = CharacterAt(visible, end);
        used += Width(character);
        if (used > columns)
            return visible.substr(0, end) + (MB_CUR_MAX > 1 ? "…" : "~");
        end += character.length;
    }
}

std::string TakeWord(std::string& rest) {
    const std::string text = Trimmed(rest);
    const bool isQuoted = !text.empty() && text[0] == '"' && text.find('"', 1) < text.size();
    const std::size_t end = isQuoted ? text.find('"', 1) + 1 : text.find_first_of(" \t");
    std::string word = text.substr(0, end);
    rest = end < text.size() ? Trimmed(text.substr(end)) : "";
    Unquote(word);
    return word;
}

std::vector<std::string> SplitWords(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

std::vector<std::string> SplitAt(char separator, const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> pieces;
    for (std::string piece; std::getline(stream, piece, separator);)
        pieces.push_back(piece);
    return pieces;
}

std::string Joined(const std::vector<std::string>& parts, const std::string& separator) {
    std::string text;
    for (const std::string& part : parts)
        text += (&part == &parts.front() ? "" : separator) + part;
    return text;
}

bool Unquote(std::string& text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"')
        return false;
    text = text.substr(1, text.size() - 2);
    return true;
}

bool HasOpenQuote(const std::string& text) {
    return !text.empty() && text.front() == '"' && (text.size() < 2 || text.back() != '"');
}

std::string Trimmed(const std::string& text) {
    const char* const blanks = " \t\r\n\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool EqualNames(const std::string& left, const std::string& right) {
    return ::strcasecmp(left.c_str(), right.c_str()) == 0;
}

std::vector<std::string> Beginning(const std::string& word,
                                   const std::vector<std::string>& candidates) {
    std::vector<std::string> matching;
    for (const std::string& candidate : candidates) {
        if (EqualNames(candidate.substr(0, word.size()), word))
            matching.push_back(candidate);
    }
    return matching;
}

std::string Closest(const std::string& word, const std::vector<std::string>& candidates) {
    std::size_t best = std::min<std::size_t>(3, word.size() / 2) + 1;
    std::string closest;
    for (const std::string& candidate : candidates) {
        if (std::max(word.size(), candidate.size()) - std::min(word.size(), candidate.size()) >=
            best)
            continue;  // so far apart are they at least
        const std::size_t distance = Distance(word, candidate);
        if (distance < best) {
            best = distance;
            closest = candidate;
        }
    }
    return closest;
}
