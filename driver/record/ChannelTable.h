// The panel's channels, one row each: the one place that knows their numbers, kinds, what a write
// accepts and what special values mean. The collection, the channel writes, the time settings, the
// console, hxdcheck and the reference in docs/ all ask the rows.
#ifndef HXD_CHANNELTABLE_H
#define HXD_CHANNELTABLE_H

// A channel's number is its element in the result arrays and its number in "OLMA_WRITE" commands;
// the host's channel index is one less. Element 0 is the result of the last call.
enum Channel : int {
    CHANNEL_IP_ADDRESS_1 = 1,
    CHANNEL_NETMASK_1 = 2,
    CHANNEL_BUZZER_ENABLED = 3,
    CHANNEL_BUZZER_DURATION = 4,
    CHANNEL_BACKLIGHT_AUTO_OFF = 5,
    CHANNEL_BACKLIGHT_DELAY = 6,
    CHANNEL_BUZZER_TEST = 7,
    CHANNEL_IP_ADDRESS_2 = 8,
    CHANNEL_NETMASK_2 = 9,
    CHANNEL_CPU_USE = 10,
    CHANNEL_MEMORY_AVAILABLE = 11,
    CHANNEL_NTP_SWITCH = 12,
    CHANNEL_NTP_MODE = 13,
    CHANNEL_NTP_PERIOD = 14,
    CHANNEL_NTP_SERVER_1 = 15,
    CHANNEL_NTP_SERVER_4 = 18,
    CHANNEL_VNC_PASSWORD = 19,
    CHANNEL_SERIAL_NUMBER = 20,
    CHANNEL_BRIGHTNESS = 21,
    CHANNEL_MAC_ADDRESS_1 = 22,
    CHANNEL_MAC_ADDRESS_2 = 23,
    CHANNEL_LOCAL_INPUT_LOCKED = 24,
    CHANNEL_REMOTE_INPUT_LOCKED = 25,
    CHANNEL_STORAGE_LIFE = 26,
    CHANNEL_STORAGE_GEAR = 27,
    CHANNEL_STORAGE_FREE = 28,
    CHANNEL_UART_1 = 29,
    CHANNEL_UART_4 = 32,
};
constexpr int CHANNEL_COUNT = 32;

// What a channel shows for a value that cannot be had.
constexpr int STORAGE_UNREADABLE = -1;  // no storage found, or not yet
constexpr int STORAGE_LIFE_UNKNOWN = -2;
constexpr int UART_UNREADABLE = -2;
constexpr const char* NO_SERIAL_NUMBER = "-1";

struct ChannelRow {
    enum Kind { NUMBER, TEXT };
    enum Input {
        NOTHING,       // the channel cannot be written
        CUT_NUMBER,    // a number, of which the fraction is cut off
        WHOLE_NUMBER,  // the text as a whole is a decimal integer; any other text counts as 0
        ADDRESS,       // a dotted IPv4 address whose first number is in the range
        NETMASK,       // a dotted IPv4 netmask, the same
        ANY_TEXT,
    };
    struct Sentinel {
        double number;
        const char* text;     // of a text channel; else null
        const char* meaning;  // null: the sentinel is none
    };

    bool IsWritable() const { return input != NOTHING; }
    bool HasUpperLimit() const;
    // Whether a write accepts a number; for the others of Input never asked.
    bool InRange(int value) const { return value >= minimum && value <= maximum; }
    // What a special value means, or null for an ordinary one.
    const char* SentinelMeaning(double value) const;
    const char* SentinelMeaning(const char* value) const;

    int number;
    Kind kind;
    const char* name;
    const char* unit;  // "" where there is none
    Input input;
    int minimum;  // accepted by a write, both ends included; 0 and 0 for ANY_TEXT and NOTHING
    int maximum;  // INT_MAX: no upper limit
    Sentinel sentinels[2];
};

// The row of a channel number, or null for a number that is no channel.
const ChannelRow* FindChannel(int number);

// The host's type codes for the channels, indexed by channel number (0 is unused): 3 for a text,
// 2 for a number.
extern const int DEV_LONG_CHLTYPE[CHANNEL_COUNT + 1];

#endif
