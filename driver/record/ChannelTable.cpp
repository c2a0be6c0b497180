#include "driver/record/ChannelTable.h"

#include "host.h"

#include <limits.h>

namespace {

using Row = ChannelRow;

// clang-format off
constexpr ChannelRow CHANNELS[CHANNEL_COUNT] = {
    { 1, Row::TEXT,   "IP address 1",          "",    Row::WRITABLE,  0, 0},
    { 2, Row::TEXT,   "Netmask 1",             "",    Row::WRITABLE,  0, 0},
    { 3, Row::NUMBER, "Buzzer enabled",        "",    Row::WRITABLE,  0, 1},
    { 4, Row::NUMBER, "Buzzer duration",       "ms",  Row::WRITABLE,  0, 6500},
    { 5, Row::NUMBER, "Backlight auto-off",    "",    Row::WRITABLE,  0, 1},
    { 6, Row::NUMBER, "Backlight-off delay",   "s",   Row::WRITABLE,  15, 1800},
    { 7, Row::NUMBER, "Buzzer test",           "ms",  Row::WRITABLE,  0, INT_MAX},
    { 8, Row::TEXT,   "IP address 2",          "",    Row::WRITABLE,  0, 0},
    { 9, Row::TEXT,   "Netmask 2",             "",    Row::WRITABLE,  0, 0},
    {10, Row::NUMBER, "CPU use",               "0..1", Row::READ_ONLY, 0, 0},
    {11, Row::NUMBER, "Memory available",      "MiB", Row::READ_ONLY, 0, 0},
    {12, Row::NUMBER, "Time sync switch",      "",    Row::WRITABLE,  0, 1},
    {13, Row::NUMBER, "Time sync mode",        "",    Row::WRITABLE,  0, 1},
    {14, Row::NUMBER, "Time sync period",      "h",   Row::WRITABLE,  1, 24},
    {15, Row::TEXT,   "Time server 1",         "",    Row::WRITABLE,  0, 0},
    {16, Row::TEXT,   "Time server 2",         "",    Row::WRITABLE,  0, 0},
    {17, Row::TEXT,   "Time server 3",         "",    Row::WRITABLE,  0, 0},
    {18, Row::TEXT,   "Time server 4",         "",    Row::WRITABLE,  0, 0},
    {19, Row::TEXT,   "Remote-view password",  "",    Row::WRITABLE,  0, 0},
    {20, Row::TEXT,   "Serial number",         "",    Row::READ_ONLY, 0, 0},
    {21, Row::NUMBER, "Brightness",            "%",   Row::WRITABLE,  0, 100},
    {22, Row::TEXT,   "MAC address 1",         "",    Row::READ_ONLY, 0, 0},
    {23, Row::TEXT,   "MAC address 2",         "",    Row::READ_ONLY, 0, 0},
    {24, Row::NUMBER, "Local input locked",    "",    Row::WRITABLE,  0, 1},
    {25, Row::NUMBER, "Remote input locked",   "",    Row::WRITABLE,  0, 1},
    {26, Row::NUMBER, "Storage life left",     "%",   Row::READ_ONLY, 0, 0},
    {27, Row::NUMBER, "Storage write gear",    "1..4", Row::READ_ONLY, 0, 0},
    {28, Row::NUMBER, "Free storage",          "MiB", Row::READ_ONLY, 0, 0},
    {29, Row::NUMBER, "COM1 use",              "%",   Row::READ_ONLY, 0, 0},
    {30, Row::NUMBER, "COM2 use",              "%",   Row::READ_ONLY, 0, 0},
    {31, Row::NUMBER, "COM3 use",              "%",   Row::READ_ONLY, 0, 0},
    {32, Row::NUMBER, "COM4 use",              "%",   Row::READ_ONLY, 0, 0},
};

// clang-format on

}  // namespace

constexpr int N = DATATYPE_DOUBLE;
constexpr int T = DATATYPE_TEXT;
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
static_assert(TypesFollowRows(1), "a channel's row is out of place or of another kind");

}  // namespace

const ChannelRow* FindChannel(int number) {
    return number >= 1 && number <= CHANNEL_COUNT ? &CHANNELS[number - 1] : nullptr;
}
