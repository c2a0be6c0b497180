#include "driver/record/ChannelTable.h"

#include "host.h"

#include <climits>
#include <cstring>

namespace {

using Row = ChannelRow;

// clang-format off
constexpr Row::Sentinel NO_STORAGE = {STORAGE_UNREADABLE, nullptr, "storage not readable"};
constexpr Row::Sentinel NO_LIFE = {STORAGE_LIFE_UNKNOWN, nullptr, "not known"};
constexpr Row::Sentinel NO_UART = {UART_UNREADABLE, nullptr, "port cannot be queried"};
constexpr Row::Sentinel NO_NUMBER = {0, NO_SERIAL_NUMBER, "the panel has none"};

constexpr ChannelRow CHANNELS[CHANNEL_COUNT] = {
    { 1, Row::TEXT,   "IP address 1",         "",     Row::ADDRESS,       1, 223,     {}},
    { 2, Row::TEXT,   "Netmask 1",            "",     Row::NETMASK,     192, 255,     {}},
    { 3, Row::NUMBER, "Buzzer enabled",       "",     Row::CUT_NUMBER,    0, 1,       {}},
    { 4, Row::NUMBER, "Buzzer duration",      "ms",   Row::CUT_NUMBER,    0, 6500,    {}},
    { 5, Row::NUMBER, "Backlight auto-off",   "",     Row::CUT_NUMBER,    0, 1,       {}},
    { 6, Row::NUMBER, "Backlight-off delay",  "s",    Row::CUT_NUMBER,   15, 1800,    {}},
    { 7, Row::NUMBER, "Buzzer test",          "ms",   Row::CUT_NUMBER,    0, INT_MAX, {}},
    { 8, Row::TEXT,   "IP address 2",         "",     Row::ADDRESS,       1, 223,     {}},
    { 9, Row::TEXT,   "Netmask 2",            "",     Row::NETMASK,     192, 255,     {}},
    {10, Row::NUMBER, "CPU use",              "0..1", Row::NOTHING,       0, 0,       {}},
    {11, Row::NUMBER, "Memory available",     "MiB",  Row::NOTHING,       0, 0,       {}},
    {12, Row::NUMBER, "Time sync switch",     "",     Row::WHOLE_NUMBER,  0, 1,       {}},
    {13, Row::NUMBER, "Time sync mode",       "",     Row::WHOLE_NUMBER,  0, 1,       {}},
    {14, Row::NUMBER, "Time sync period",     "h",    Row::WHOLE_NUMBER,  1, 24,      {}},
    {15, Row::TEXT,   "Time server 1",        "",     Row::ANY_TEXT,      0, 0,       {}},
    {16, Row::TEXT,   "Time server 2",        "",     Row::ANY_TEXT,      0, 0,       {}},
    {17, Row::TEXT,   "Time server 3",        "",     Row::ANY_TEXT,      0, 0,       {}},
    {18, Row::TEXT,   "Time server 4",        "",     Row::ANY_TEXT,      0, 0,       {}},
    {19, Row::TEXT,   "Remote-view password", "",     Row::ANY_TEXT,      0, 0,       {}},
    {20, Row::TEXT,   "Serial number",        "",     Row::NOTHING,       0, 0,       {NO_NUMBER, {}}},
    {21, Row::NUMBER, "Brightness",           "%",    Row::CUT_NUMBER,    0, 100,     {}},
    {22, Row::TEXT,   "MAC address 1",        "",     Row::NOTHING,       0, 0,       {}},
    {23, Row::TEXT,   "MAC address 2",        "",     Row::NOTHING,       0, 0,       {}},
    {24, Row::NUMBER, "Local input locked",   "",     Row::CUT_NUMBER,    0, 1,       {}},
    {25, Row::NUMBER, "Remote input locked",  "",     Row::CUT_NUMBER,    0, 1,       {}},
    {26, Row::NUMBER, "Storage life left",    "%",    Row::NOTHING,       0, 0,       {NO_STORAGE, NO_LIFE}},
    {27, Row::NUMBER, "Storage write gear",   "1..4", Row::NOTHING,       0, 0,       {NO_STORAGE, {}}},
    {28, Row::NUMBER, "Free storage",         "MiB",  Row::NOTHING,       0, 0,       {}},
    {29, Row::NUMBER, "COM1 use",             "%",    Row::NOTHING,       0, 0,       {NO_UART, {}}},
    {30, Row::NUMBER, "COM2 use",             "%",    Row::NOTHING,       0, 0,       {NO_UART, {}}},
    {31, Row::NUMBER, "COM3 use",             "%",    Row::NOTHING,       0, 0,       {NO_UART, {}}},
    {32, Row::NUMBER, "COM4 use",             "%",    Row::NOTHING,       0, 0,       {NO_UART, {}}},
};

// clang-format on

constexpr int N = DATATYPE_DOUBLE;
constexpr int T = DATATYPE_TEXT;

}  // namespace

extern constexpr int DEV_LONG_CHLTYPE[CHANNEL_COUNT + 1] = {0, T, T, N, N, N, N, N, T, T, N,
                                                            N, N, N, N, T, T, T, T, T, T, N,
                                                            T, T, N, N, N, N, N, N, N, N, N};

namespace {

constexpr bool TypesFollowRows(int number) {
    return number > CHANNEL_COUNT ||
           (CHANNELS[number - 1].number == number &&
            DEV_LONG_CHLTYPE[number] == (CHANNELS[number - 1].kind == Row::TEXT ? T : N) &&
            TypesFollowRows(number + 1));
}
static_assert(TypesFollowRows(1),
              "a channel's row or type code is missing, out of place or of another kind");

}  // namespace

bool ChannelRow::HasUpperLimit() const {
    return maximum != INT_MAX;
}

const char* ChannelRow::SentinelMeaning(double value) const {
    for (const Sentinel& sentinel : sentinels) {
        if (sentinel.meaning != nullptr && kind == NUMBER && sentinel.number == value)
            return sentinel.meaning;
    }
    return nullptr;
}

const char* ChannelRow::SentinelMeaning(const char* value) const {
    for (const Sentinel& sentinel : sentinels) {
        if (sentinel.text != nullptr && std::strcmp(sentinel.text, value) == 0)
            return sentinel.meaning;
    }
    return nullptr;
}

const ChannelRow* FindChannel(int number) {
    return number >= 1 && number <= CHANNEL_COUNT ? &CHANNELS[number - 1] : nullptr;
}
