#include "hxdpanel/report/ChannelReport.h"

#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"

#include <algorithm>
#include <climits>

namespace {

const char* Kind(const ShownChannel& channel) {
    return channel.isText ? "text" : "number";
}

std::string Explained(const ShownChannel& channel) {
    const char* const meaning = channel.Meaning();
    return channel.Value() + (meaning != nullptr ? " (" + std::string(meaning) + ")" : "");
}

std::string TrimmedRight(const std::string& text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

struct Column {
    const char* title;
    std::string (*cell)(const ShownChannel&);
};
const Column COLUMNS[] = {
    {"No",
     [](const ShownChannel& line) {
         return (line.number < 10 ? " " : "") + std::to_string(line.number);
     }},
    {"Name", [](const ShownChannel& line) { return line.name; }},
    {"Unit", [](const ShownChannel& line) { return line.unit; }},
    {"Type", [](const ShownChannel& line) { return std::string(Kind(line)); }},
    {"Value", Explained},
};

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

int HighestChannel(const HostDatabase& database) {
    return std::max(CHANNEL_COUNT, database.ChannelCount());
}

void PrintChannelTable(std::FILE* out, const ShownChannels& channels) {
    std::string title;
    std::vector<std::string> rows(channels.size());
    for (const Column& column : COLUMNS) {
        std::size_t width = Columns(column.title);
        for (const ShownChannel& channel : channels)
            width = std::max(width, Columns(column.cell(channel)));
        title += PadRight(column.title, width + 2);
        for (std::size_t i = 0; i < channels.size(); ++i)
            rows[i] += PadRight(column.cell(channels[i]), width + 2);
    }
    const std::size_t values = title.rfind(COLUMNS[sizeof COLUMNS / sizeof *COLUMNS - 1].title);
    std::fprintf(out, "%s\n", terminal::Styled(out, terminal::TITLE, TrimmedRight(title)).c_str());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::string row = terminal::Wrapped(out, TrimmedRight(rows[i]), values);
        const std::size_t end = std::min(values, row.size());  // shorter in a very narrow window
        const std::string value = row.substr(end);
        const bool isSpecial = channels[i].Meaning() != nullptr;
        std::fprintf(
            out, "%s%s\n", row.substr(0, end).c_str(),
            isSpecial ? terminal::Styled(out, terminal::SPECIAL, value).c_str() : value.c_str());
    }
}

Json ChannelJson(const ShownChannel& channel) {
    const bool delivered = channel.received.delivered;
    return {{"number", channel.number},
            {"name", channel.name},
            {"unit", channel.unit},
            {"type", Kind(channel)},
            {"value", delivered ? JsonValue(channel.received.value) : Json(nullptr)},
            {"meaning", JsonText(channel.Meaning())}};
}

Json ChannelsJson(const ShownChannels& channels) {
    Json list = Json::array();
    for (const ShownChannel& channel : channels)
        list.push_back(ChannelJson(channel));
    return list;
}

void PrintCsvHeader(std::FILE* out, const ShownChannels& channels) {
    std::fputs("time", out);
    for (const ShownChannel& channel : channels) {
        const std::string unit = channel.unit.empty() ? "" : " [" + channel.unit + "]";
        std::fprintf(out, ",%s", CsvCell(channel.name + unit).c_str());
    }
    std::fputs("\n", out);
}

void PrintCsvLine(std::FILE* out, const ShownChannels& channels) {
    std::fputs(IsoTime().c_str(), out);
    for (const ShownChannel& channel : channels)
        std::fprintf(out, ",%s", CsvValue(channel.received).c_str());
    std::fputs("\n", out);
}

std::string ChannelText(const ShownChannel& channel) {
    const char* const meaning = channel.Meaning();
    return std::to_string(channel.number) + " " + channel.name + " = " + channel.Value() +
           channel.UnitSuffix() + (meaning != nullptr ? " (" + std::string(meaning) + ")" : "");
}

std::string AcceptedText(const ChannelRow& row) {
    const std::string subject = "channel " + std::to_string(row.number);
    const std::string range =
        std::to_string(row.minimum) +
        (row.HasUpperLimit() ? " to " + std::to_string(row.maximum) : " or more");
    switch (row.input) {
        case ChannelRow::NOTHING:
            return subject + " cannot be written";
        case ChannelRow::ADDRESS:
            return subject + " takes an IPv4 address that begins with " + range;
        case ChannelRow::NETMASK:
            return subject + " takes a netmask that begins with " + range;
        case ChannelRow::ANY_TEXT:
            return subject + " takes a text";
        case ChannelRow::CUT_NUMBER:
        case ChannelRow::WHOLE_NUMBER:
            break;
    }
    return subject + " takes " + range;
}

std::vector<std::pair<std::string, std::string>> ScreenRows(const HostDatabase& database) {
    std::vector<std::pair<std::string, std::string>> rows;
    for (int number = 1; number <= HighestChannel(database); ++number) {
        const ShownChannel channel = ShowChannel(database, number);
        rows.emplace_back(std::to_string(number) + " " + channel.name,
                          channel.Value() + channel.UnitSuffix());
    }
    return rows;
}
