#include "hxdpanel/report/ChannelReport.h"

#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <ctime>

namespace {

// A channel with what is known about it; a number beyond the table is known by its number only.
struct Line {
    int number;
    std::string name;
    std::string unit;
    bool isText;
    HostDatabase::Received received;
};

Line MakeLine(const HostDatabase& database, int number) {
    const ChannelRow* const row = FindChannel(number);
    if (row == nullptr)
        return {number, "Channel " + std::to_string(number), "", false, database.Channel(number)};
    return {number, row->name, row->unit, row->kind == ChannelRow::TEXT, database.Channel(number)};
}

std::vector<Line> Lines(const HostDatabase& database) {
    std::vector<Line> lines;
    const int count = std::max(CHANNEL_COUNT, database.ChannelCount());
    for (int number = 1; number <= count; ++number)
        lines.push_back(MakeLine(database, number));
    return lines;
}

const char* Kind(const Line& line) {
    return line.isText ? "text" : "number";
}

std::string Value(const Line& line) {
    return line.received.delivered ? ValueText(line.received.value) : "(not delivered)";
}

// "0..1" stands where a channel has a range instead of a unit.
std::string UnitSuffix(const std::string& unit) {
    if (unit.empty())
        return "";
    return unit.find("..") != std::string::npos ? " (" + unit + ")" : " " + unit;
}

const char* SentinelMeaning(const Line& line) {
    const ChannelRow* const row = FindChannel(line.number);
    if (row == nullptr || !line.received.delivered)
        return nullptr;
    return line.isText ? row->SentinelMeaning(line.received.value.text.c_str())
                       : row->SentinelMeaning(line.received.value.number);
}

std::string ExplainedValue(const Line& line) {
    const char* const meaning = SentinelMeaning(line);
    return Value(line) + (meaning != nullptr ? " (" + std::string(meaning) + ")" : "");
}

struct Column {
    const char* title;
    std::string (*cell)(const Line&);
};
const Column COLUMNS[] = {
    {"No",
     [](const Line& line) { return (line.number < 10 ? " " : "") + std::to_string(line.number); }},
    {"Name", [](const Line& line) { return line.name; }},
    {"Unit", [](const Line& line) { return line.unit; }},
    {"Type", [](const Line& line) { return std::string(Kind(line)); }},
    {"Value", ExplainedValue},
};

using Json = nlohmann::ordered_json;

// Whole numbers without a fraction, as everywhere else; JSON has no word for "not a number".
Json JsonNumber(double number) {
    constexpr double EXACT = 9007199254740992.0;  // 2^53
    if (number == std::floor(number) && std::fabs(number) < EXACT)
        return static_cast<std::int64_t>(number);
    return number;
}

Json JsonValue(const HostDatabase::Received& received) {
    if (!received.delivered)
        return nullptr;
    switch (received.value.type) {
        case DATATYPE_INTEGER:
            return received.value.integer;
        case DATATYPE_DOUBLE:
            return JsonNumber(received.value.number);
        default:
            return received.value.text;
    }
}

// On one line; bytes that are no UTF-8 become replacement characters.
std::string JsonLine(const Line& line) {
    const Json channel = {{"number", line.number},
                          {"name", line.name},
                          {"unit", line.unit},
                          {"type", Kind(line)},
                          {"value", JsonValue(line.received)}};
    return channel.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string CsvCell(const std::string& text) {
    std::string visible = Visible(text);
    if (visible.find_first_of(",\" ") == std::string::npos)
        return visible;
    for (std::size_t i = visible.find('"'); i != std::string::npos; i = visible.find('"', i + 2))
        visible.insert(i, 1, '"');
    return '"' + visible + '"';
}

std::string CsvValue(const HostDatabase::Received& received) {
    if (!received.delivered)
        return "";
    const bool isText = received.value.type == DATATYPE_TEXT;
    return isText ? CsvCell(received.value.text) : ValueText(received.value);
}

}  // namespace

void PrintChannelTable(std::FILE* out, const HostDatabase& database) {
    const std::vector<Line> lines = Lines(database);
    std::vector<std::string> rows(lines.size() + 1);
    for (const Column& column : COLUMNS) {
        const bool last = &column == &COLUMNS[sizeof COLUMNS / sizeof *COLUMNS - 1];
        std::size_t width = Columns(column.title);
        for (const Line& line : lines)
            width = std::max(width, Columns(column.cell(line)));
        rows[0] += last ? column.title : PadRight(column.title, width + 2);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const std::string cell = column.cell(lines[i]);
            rows[i + 1] += last ? cell : PadRight(cell, width + 2);
        }
    }
    for (const std::string& row : rows)
        std::fprintf(out, "%s\n", row.c_str());
}

void PrintChannelsJson(std::FILE* out, const HostDatabase& database) {
    const char* separator = "[\n";
    for (const Line& line : Lines(database)) {
        std::fprintf(out, "%s  %s", separator, JsonLine(line).c_str());
        separator = ",\n";
    }
    std::fputs("\n]\n", out);
}

void PrintCsvHeader(std::FILE* out, const HostDatabase& database) {
    std::fputs("time", out);
    for (const Line& line : Lines(database)) {
        const std::string unit = line.unit.empty() ? "" : " [" + line.unit + "]";
        std::fprintf(out, ",%s", CsvCell(line.name + unit).c_str());
    }
    std::fputs("\n", out);
}

void PrintCsvLine(std::FILE* out, const HostDatabase& database) {
    std::fputs(IsoTime().c_str(), out);
    for (const Line& line : Lines(database))
        std::fprintf(out, ",%s", CsvValue(line.received).c_str());
    std::fputs("\n", out);
}

std::string ChannelText(const HostDatabase& database, int number) {
    const Line line = MakeLine(database, number);
    return std::to_string(number) + " " + line.name + " = " + Value(line) + UnitSuffix(line.unit);
}

std::string AcceptedText(const ChannelRow& row) {
    const std::string subject = "channel " + std::to_string(row.number);
    switch (row.input) {
        case ChannelRow::NOTHING:
            return subject + " cannot be written";
        case ChannelRow::ADDRESS:
            return subject + " takes an IPv4 address that begins with 1 to 223";
        case ChannelRow::NETMASK:
            return subject + " takes a netmask that begins with 192 to 255";
        case ChannelRow::ANY_TEXT:
            return subject + " takes a text";
        case ChannelRow::CUT_NUMBER:
        case ChannelRow::WHOLE_NUMBER:
            break;
    }
    return subject + " takes " + std::to_string(row.minimum) +
           (row.HasUpperLimit() ? " to " + std::to_string(row.maximum) : " or more");
}

std::vector<std::pair<std::string, std::string>> ScreenRows(const HostDatabase& database) {
    std::vector<std::pair<std::string, std::string>> rows;
    for (const Line& line : Lines(database)) {
        rows.emplace_back(std::to_string(line.number) + " " + line.name,
                          Value(line) + UnitSuffix(line.unit));
    }
    return rows;
}

std::string IsoTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    ::localtime_r(&now, &local);
    std::array<char, 32> text = {};
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", &local);
    return std::string(text.data()).insert(22, 1, ':');  // +0200 as +02:00
}
