#include "driver/record/CommandTable.h"

#include <strings.h>

namespace {

using Row = CommandRow;
using Arg = CommandArgument;

constexpr bool REQUIRED = false;
constexpr bool OPTIONAL = true;

constexpr Arg RESULT = {"result", Arg::OUT, Arg::NUMBER, OPTIONAL};
constexpr Arg SERVER1 = {"server1", Arg::IN, Arg::TEXT, REQUIRED};
constexpr Arg SERVER2 = {"server2", Arg::IN, Arg::TEXT, REQUIRED};
constexpr Arg SERVER3 = {"server3", Arg::IN, Arg::TEXT, REQUIRED};
constexpr Arg SERVER4 = {"server4", Arg::IN, Arg::TEXT, REQUIRED};
constexpr Arg LOG_MODE = {"mode", Arg::IN, Arg::INTEGER, REQUIRED};
constexpr Arg LOG_LENGTH = {"KiB", Arg::IN, Arg::INTEGER, REQUIRED};
constexpr Arg LOG_TEXT = {"text", Arg::OUT, Arg::TEXT, REQUIRED};
constexpr Arg LOG_STATUS = {"status", Arg::OUT, Arg::NUMBER, REQUIRED};

// clang-format off
constexpr CommandRow COMMANDS[COMMAND_COUNT] = {
    {COMMAND_OLMA_WRITE, "OLMA_WRITE", Row::HEADS, '=',
     {{"number", Arg::IN, Arg::LITERAL, REQUIRED}, {"value", Arg::IN, Arg::LITERAL, REQUIRED}}},
    {COMMAND_BACKLIGHT_ON, "BACKLIGHTON", Row::IGNORED, ',', {}},
    {COMMAND_BACKLIGHT_OFF, "BACKLIGHTOFF", Row::IGNORED, ',', {}},
    {COMMAND_REFLESH, "REFLESH", Row::IGNORED, ',', {}},
    {COMMAND_REBOOT, "REBOOT", Row::IGNORED, ',', {}},
    {COMMAND_SAVE_SCREEN, "SAVESCREEN", Row::HEADS, ',',
     {{"path", Arg::IN, Arg::TEXT, REQUIRED},
      {"x1", Arg::IN, Arg::NUMBER, OPTIONAL}, {"y1", Arg::IN, Arg::NUMBER, OPTIONAL},
      {"x2", Arg::IN, Arg::NUMBER, OPTIONAL}, {"y2", Arg::IN, Arg::NUMBER, OPTIONAL}}},
    {COMMAND_STR_SHA256, "STRSHA256", Row::HEADS, ',',
     {{"text", Arg::IN, Arg::TEXT, REQUIRED}, {"result", Arg::OUT, Arg::TEXT, REQUIRED}}},
    {COMMAND_MOD_VNC_PWD, "ModVncPwd", Row::LIST, ',',
     {{"password", Arg::IN, Arg::TEXT, REQUIRED}, RESULT}},
    {COMMAND_GET_MAC_INFO, "GetMacInfo", Row::RAW_LIST, ',',
     {{"index", Arg::IN, Arg::NUMBER, REQUIRED}, {"name", Arg::OUT, Arg::TEXT, REQUIRED},
      {"mac", Arg::OUT, Arg::TEXT, REQUIRED}}},
    {COMMAND_SET_NETWORK_MODE, "SetNetworkMode", Row::LIST, ',',
     {{"index", Arg::IN, Arg::NUMBER, REQUIRED}, {"mode", Arg::IN, Arg::NUMBER, REQUIRED},
      {"result", Arg::OUT, Arg::NUMBER, REQUIRED}}},
    {COMMAND_ENABLE_NTP, "EnableNTP", Row::LIST, ',',
     {{"switch", Arg::IN, Arg::NUMBER, REQUIRED}, RESULT}},
    {COMMAND_SET_NTP_MODE, "SetNTPMode", Row::LIST, ',',
     {{"mode", Arg::IN, Arg::NUMBER, REQUIRED}, RESULT}},
    {COMMAND_SET_NTP_FREQ, "SetNTPFreq", Row::LIST, ',',
     {{"hours", Arg::IN, Arg::NUMBER, REQUIRED}, RESULT}},
    {COMMAND_SET_NTP_SERVER, "SetNTPServer", Row::LIST, ',',
     {SERVER1, SERVER2, SERVER3, SERVER4, RESULT}},
    {COMMAND_EXEC_NTP, "ExecNTP", Row::WHOLE, ',', {RESULT}},
    {COMMAND_GET_CPU_USE, "GetCpuUse", Row::WORDS, ',',
     {{"channel", Arg::IN, Arg::LITERAL, REQUIRED}}},
    {COMMAND_GET_MEM_USE, "GetMemUse", Row::WORDS, ',',
     {{"channel", Arg::IN, Arg::LITERAL, REQUIRED}}},
    {COMMAND_READ_APP_LOG, "ReadAppLog", Row::WORDS, ',',
     {LOG_MODE, LOG_LENGTH, LOG_TEXT, LOG_STATUS}},
    {COMMAND_READ_SYS_LOG, "ReadSysLog", Row::WORDS, ',',
     {LOG_MODE, LOG_LENGTH, LOG_TEXT, LOG_STATUS}},
};
// clang-format on

constexpr bool RowsAreInPlace(int command) {
    return command == COMMAND_COUNT ||
           (COMMANDS[command].command == command && RowsAreInPlace(command + 1));
}
static_assert(RowsAreInPlace(0), "a command's row is missing or out of place");

// It takes a text apart before it knows the row.
constexpr bool RegistryHasOneRule(int command) {
    return command == COMMAND_COUNT ||
           (COMMANDS[command].split == Row::WORDS &&
            COMMANDS[command].separator == COMMANDS[FIRST_REGISTRY_COMMAND].separator &&
            RegistryHasOneRule(command + 1));
}
static_assert(RegistryHasOneRule(FIRST_REGISTRY_COMMAND), "the registry knows one rule only");

}  // namespace

int CommandRow::ArgumentCount() const {
    int count = 0;
    while (count < MAX_ARGUMENTS && arguments[count].name != nullptr)
        ++count;
    return count;
}

int CommandRow::RequiredCount() const {
    int count = 0;
    while (count < MAX_ARGUMENTS && arguments[count].name != nullptr && !arguments[count].optional)
        ++count;
    return count;
}

const CommandRow& CommandOf(Command command) {
    return COMMANDS[command];
}

const CommandRow* FindCommandRow(const char* name) {
    for (const CommandRow& row : COMMANDS) {
        if (::strcasecmp(row.name, name) == 0)
            return &row;
    }
    return nullptr;
}
