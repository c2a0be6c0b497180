#include "hxdpanel/report/ChannelChoice.h"

#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Text.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace {

using Parts = std::vector<std::string>;

bool IsNumber(const std::string& text) {
    return !text.empty() && text.size() < 7 &&
           text.find_first_not_of("0123456789") == std::string::npos;
}

// In lower case: "COM1 use" as com, 1, use.
Parts PartsOf(const std::string& name) {
    Parts parts;
    bool digits = false;
    bool inside = false;
    for (const char byte : name) {
        const auto character = static_cast<unsigned char>(byte);
        const bool isDigit = std::isdigit(character) != 0;
        if (std::isalnum(character) == 0) {
            inside = false;
            continue;
        }
        if (!inside || isDigit != digits)
            parts.emplace_back();
        parts.back() += static_cast<char>(std::tolower(character));
        inside = true;
        digits = isDigit;
    }
    return parts;
}

bool Abbreviates(const Parts& typed, const Parts& name) {
    std::size_t next = 0;
    for (const std::string& part : name) {
        if (next < typed.size() && part.compare(0, typed[next].size(), typed[next]) == 0)
            ++next;
    }
    return next == typed.size();
}

// By the channels' numbers; the first is nobody's.
std::vector<Parts> PartsOfAllNames() {
    std::vector<Parts> names(1);
    for (int number = 1; number <= CHANNEL_COUNT; ++number)
        names.push_back(PartsOf(FindChannel(number)->name));
    return names;
}

// The channel of that very name alone, else all that the word abbreviates.
std::vector<const ChannelRow*> Matching(const std::string& word) {
    static const std::vector<Parts> names = PartsOfAllNames();
    const Parts typed = PartsOf(word);
    std::vector<const ChannelRow*> rows;
    for (int number = 1; number <= CHANNEL_COUNT && !typed.empty(); ++number) {
        const Parts& name = names[static_cast<std::size_t>(number)];
        const ChannelRow* const row = FindChannel(number);
        if (typed == name)
            return {row};
        if (Abbreviates(typed, name))
            rows.push_back(row);
    }
    return rows;
}

bool NumberInRange(const std::string& text, int highest, int& number, std::string& error) {
    number = std::atoi(text.c_str());
    if (number >= 1 && number <= highest)
        return true;
    error = "There is no channel " + text + ": 1 to " + std::to_string(highest);
    return false;
}

}  // namespace

bool ChooseChannel(const std::string& word, int highest, int& number, std::string& error) {
    if (IsNumber(word))
        return NumberInRange(word, highest, number, error);
    const std::vector<const ChannelRow*> rows = Matching(word);
    if (rows.size() == 1) {
        number = rows[0]->number;
        return true;
    }
    error = Quoted(word);
    error += rows.empty() ? " is no channel; say a number, 1 to " + std::to_string(highest) +
                                ", or a name, for example Brightness"
                          : " may be ";
    std::vector<std::string> names;
    names.reserve(rows.size());
    for (const ChannelRow* row : rows)
        names.push_back(std::to_string(row->number) + " " + row->name);
    error += Joined(names);
    return false;
}

bool ChooseChannels(const std::vector<std::string>& words, int highest, std::vector<int>& numbers,
                    std::string& error) {
    numbers.clear();
    for (const std::string& word : words) {
        const std::size_t hyphen = std::min(word.find('-'), word.size());
        const bool hasFirst = IsNumber(word.substr(0, hyphen));
        const bool isRange = hasFirst && IsNumber(word.substr(std::min(hyphen + 1, word.size())));
        if (hasFirst && hyphen < word.size() && !isRange) {
            error = Quoted(word) + " is no range; write 26-28";
            return false;
        }
        int first = 0;
        int last = 0;
        if (!ChooseChannel(isRange ? word.substr(0, hyphen) : word, highest, first, error) ||
            (isRange && !ChooseChannel(word.substr(hyphen + 1), highest, last, error)))
            return false;
        last = isRange ? last : first;
        for (int number = std::min(first, last); number <= std::max(first, last); ++number)
            numbers.push_back(number);
    }
    for (int number = 1; words.empty() && number <= highest; ++number)
        numbers.push_back(number);
    return true;
}

std::vector<std::string> ChannelWords() {
    std::vector<std::string> words;
    for (int number = 1; number <= CHANNEL_COUNT; ++number)
        words.push_back(std::to_string(number));
    for (int number = 1; number <= CHANNEL_COUNT; ++number) {
        std::string name = FindChannel(number)->name;
        std::replace(name.begin(), name.end(), ' ', '-');
        words.push_back(name);
    }
    return words;
}
