#include "hxdpanel/host/ShownChannel.h"

#include "driver/record/ChannelTable.h"

// "0..1" stands where a channel has a range instead of a unit.
std::string ShownChannel::UnitSuffix() const {
    if (unit.empty())
        return "";
    return unit.find("..") != std::string::npos ? " (" + unit + ")" : " " + unit;
}

std::string ShownChannel::Value() const {
    return received.delivered ? ValueText(received.value) : "(not delivered)";
}

const char* ShownChannel::Meaning() const {
    const ChannelRow* const row = FindChannel(number);
    if (row == nullptr || !received.delivered)
        return nullptr;
    return isText ? row->SentinelMeaning(received.value.text.c_str())
                  : row->SentinelMeaning(received.value.number);
}

ShownChannel ShowChannel(const HostDatabase& database, int number) {
    const ChannelRow* const row = FindChannel(number);
    if (row == nullptr)
        return {number, "Channel " + std::to_string(number), "", false, database.Channel(number)};
    return {number, row->name, row->unit, row->kind == ChannelRow::TEXT, database.Channel(number)};
}

ShownChannels ShowChannels(const HostDatabase& database, const std::vector<int>& numbers) {
    ShownChannels channels;
    for (const int number : numbers)
        channels.push_back(ShowChannel(database, number));
    return channels;
}
