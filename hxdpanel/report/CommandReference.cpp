#include "hxdpanel/report/CommandReference.h"

#include "common/ResultCodes.h"
#include "hxdpanel/base/Text.h"

namespace {

using Arg = CommandArgument;

constexpr bool OPTIONAL = true;
constexpr bool REQUIRED = false;
constexpr bool EXACT = true;
constexpr bool ANY_CASE = false;
constexpr bool SAVES_FILE = true;

const char* const STATUS_IN_RESULT =
    "A refused value shows only in the result variable; the command's own status stays 0.";
const char* const UNREADABLE = "a variable cannot be read or written";
const char* const NO_BLANKS =
    "Write no blanks around the commas: they would become part of a name.";

const std::vector<CommandInfo> COMMANDS = {
    {"OLMA_WRITE",
     "write a channel; what the console's write sends",
     {{"number=value", Arg::IN, Arg::TEXT, "channel number, \"=\", and the value as text",
       REQUIRED}},
     {{1, "no \"=\", or the channel cannot be written"},
      {4, "value out of the channel's range, or no valid address"},
      {5, "brightness below 0 or above 100"}},
     {"OLMA_WRITE(21=40)", "OLMA_WRITE(1=192.168.1.50)"},
     {"A number that is no channel is ignored with status 0.", "A text ends at its first \")\"."},
     ANY_CASE},
    {"BACKLIGHTON",
     "switch the display's light on",
     {},
     {{9, "the light could not be switched"}},
     {"BACKLIGHTON()"},
     {},
     ANY_CASE},
    {"BACKLIGHTOFF",
     "switch the display's light off",
     {},
     {{9, "the light could not be switched"}},
     {"BACKLIGHTOFF()"},
     {},
     ANY_CASE},
    {"REFLESH",
     "have every channel read anew by the next collection",
     {},
     {},
     {"REFLESH()"},
     {"Without it, and without a channel write, collections deliver the values read before."},
     ANY_CASE},
    {"REBOOT",
     "restart the panel at once, without saving anything first",
     {},
     {},
     {"REBOOT()"},
     {"Here it ends the simulated panel, and hxdpanel with it."},
     ANY_CASE},
    {"SAVESCREEN",
     "save a picture of the screen, or of a part of it",
     {{"path", Arg::IN, Arg::TEXT,
       "file; $OLMA_DIR_USR/... lies in the user's data, anything else on the USB stick", REQUIRED},
      {"x1", Arg::IN, Arg::NUMBER, "left edge", OPTIONAL},
      {"y1", Arg::IN, Arg::NUMBER, "top edge", OPTIONAL},
      {"x2", Arg::IN, Arg::NUMBER, "right edge, no longer part of the picture", OPTIONAL},
      {"y2", Arg::IN, Arg::NUMBER, "bottom edge, no longer part of the picture", OPTIONAL}},
     {},
     {"SAVESCREEN($OLMA_DIR_USR/shots/screen.png)", "SAVESCREEN(corner.bmp,0,0,200,100)"},
     {"The status is always 0; look whether the file is there.",
      "The name's ending chooses the format: .png, .jpg or .bmp.",
      "Give the path alone or all four edges; in between the part is not a proper one."},
     ANY_CASE,
     SAVES_FILE},
    {"STRSHA256",
     "SHA-256 of a text, as 64 lower-case hexadecimal digits",
     {{"text", Arg::IN, Arg::TEXT, "what to hash", REQUIRED},
      {"result", Arg::OUT, Arg::TEXT, "receives the digits", REQUIRED}},
     {{5, "no second argument, or an empty text"}},
     {"set secret abc", "set digest:text", "STRSHA256(secret,digest)"},
     {},
     ANY_CASE},
    {"ModVncPwd",
     "change the password of the remote view",
     {{"password", Arg::IN, Arg::TEXT, "the new password", REQUIRED},
      {"result", Arg::OUT, Arg::NUMBER, "receives 0, or 4 when the password cannot be read",
       OPTIONAL}},
     {{4, "the password cannot be read, or the result not written"},
      {5, "neither one nor two arguments"}},
     {"set password:text 1234", "set result 0", "ModVncPwd(password,result)"},
     {"Dropped silently when the panel has no vncConfig.ini."},
     ANY_CASE},
    {"GetMacInfo",
     "name and hardware address of a network interface",
     {{"index", Arg::IN, Arg::NUMBER, "0 for the first interface", REQUIRED},
      {"name", Arg::OUT, Arg::TEXT, "receives the interface's name", REQUIRED},
      {"mac", Arg::OUT, Arg::TEXT, "receives the address, upper case", REQUIRED}},
     {{5, "fewer than three arguments, or no such interface"},
      {17, "the hardware layer failed, or does not know the interface"}},
     {"set name:text", "set mac:text", "GetMacInfo(0,name,mac)"},
     {NO_BLANKS},
     ANY_CASE},
    {"SetNetworkMode",
     "switch an interface between its two addressing modes",
     {{"index", Arg::IN, Arg::NUMBER, "0 for the first interface", REQUIRED},
      {"mode", Arg::IN, Arg::NUMBER, "0 or 1", REQUIRED},
      {"result", Arg::OUT, Arg::NUMBER, "receives 0, 4 when refused, or what the platform answered",
       REQUIRED}},
     {{4, "index or mode out of range, or the result cannot be written"},
      {5, "not exactly three arguments"},
      {6, "no network interface can be read"}},
     {"set result 0", "SetNetworkMode(0,1,result)"},
     {},
     ANY_CASE},
    {"EnableNTP",
     "switch the time synchronisation on or off",
     {{"switch", Arg::IN, Arg::NUMBER, "1 on, 0 off", REQUIRED},
      {"result", Arg::OUT, Arg::NUMBER, "receives 0, or 4 when refused", OPTIONAL}},
     {{4, UNREADABLE}, {5, "neither one nor two arguments"}},
     {"set result 0", "EnableNTP(1,result)"},
     {STATUS_IN_RESULT},
     ANY_CASE},
    {"SetNTPMode",
     "choose when the time is synchronised",
     {{"mode", Arg::IN, Arg::NUMBER, "1 every period, 0 only by ExecNTP", REQUIRED},
      {"result", Arg::OUT, Arg::NUMBER, "receives 0, or 4 when refused", OPTIONAL}},
     {{4, UNREADABLE}, {5, "neither one nor two arguments"}},
     {"set result 0", "SetNTPMode(1,result)"},
     {STATUS_IN_RESULT},
     ANY_CASE},
    {"SetNTPFreq",
     "set the period of the time synchronisation",
     {{"hours", Arg::IN, Arg::NUMBER, "1 to 24", REQUIRED},
      {"result", Arg::OUT, Arg::NUMBER, "receives 0, or 4 when refused", OPTIONAL}},
     {{4, UNREADABLE}, {5, "neither one nor two arguments"}},
     {"set result 0", "SetNTPFreq(12,result)"},
     {STATUS_IN_RESULT},
     ANY_CASE},
    {"SetNTPServer",
     "set the four time servers",
     {{"server1", Arg::IN, Arg::TEXT, "address or host name, or empty", REQUIRED},
      {"server2", Arg::IN, Arg::TEXT, "the same", REQUIRED},
      {"server3", Arg::IN, Arg::TEXT, "the same", REQUIRED},
      {"server4", Arg::IN, Arg::TEXT, "the same", REQUIRED},
      {"result", Arg::OUT, Arg::NUMBER, "receives 0, or 4 when a server cannot be read", OPTIONAL}},
     {{4, UNREADABLE}, {5, "neither four nor five arguments"}},
     {"set result 0", "SetNTPServer(192.168.1.1,ntp.example.org,,,result)"},
     {},
     ANY_CASE},
    {"ExecNTP",
     "synchronise the time now",
     {{"result", Arg::OUT, Arg::NUMBER, "receives 0, or 10 when it failed", OPTIONAL}},
     {{4, "the result cannot be written"}},
     {"set result 0", "ExecNTP(result)"},
     {"Waits until it is done. While the synchronisation is switched off it does nothing and "
      "answers 0.",
      "A failure shows only in the result variable."},
     ANY_CASE},
    {"GetCpuUse",
     "sample the CPU use for channel 10",
     {{"channel", Arg::IN, Arg::INTEGER, "10; only logged", REQUIRED}},
     {},
     {"GetCpuUse(10)", "REFLESH()", "channels"},
     {"Every refresh does the same."},
     EXACT},
    {"GetMemUse",
     "read the available memory for channel 11",
     {{"channel", Arg::IN, Arg::INTEGER, "11; only logged", REQUIRED}},
     {{1, "/proc/meminfo cannot be read"}},
     {"GetMemUse(11)", "REFLESH()", "channels"},
     {"Every refresh does the same."},
     EXACT},
    {"ReadAppLog",
     "the newest part of one of the panel's logs",
     {{"mode", Arg::IN, Arg::INTEGER, "0 restart log, 1 kernel log of a crash, 2 signal log",
       REQUIRED},
      {"KiB", Arg::IN, Arg::INTEGER, "how much of it at most", REQUIRED},
      {"text", Arg::OUT, Arg::TEXT, "receives the text", REQUIRED},
      {"status", Arg::OUT, Arg::NUMBER, "receives 0, or 4", REQUIRED}},
     {{4, "mode or length not usable, or the text cannot be written"},
      {5, "not exactly four arguments"}},
     {"set text:text", "set status 0", "ReadAppLog(0,64,text,status)"},
     {"A log that is not there reads as an empty text.", NO_BLANKS},
     EXACT},
    {"ReadSysLog",
     "the newest part of the kernel's log",
     {{"mode", Arg::IN, Arg::INTEGER, "0", REQUIRED},
      {"KiB", Arg::IN, Arg::INTEGER, "how much of it at most", REQUIRED},
      {"text", Arg::OUT, Arg::TEXT, "receives the text", REQUIRED},
      {"status", Arg::OUT, Arg::NUMBER, "receives 0, or 4", REQUIRED}},
     {{3, "dmesg failed"},
      {4, "mode or length not usable, or the text cannot be written"},
      {5, "not exactly four arguments"}},
     {"set text:text", "set status 0", "ReadSysLog(0,64,text,status)"},
     {NO_BLANKS},
     EXACT},
};

}  // namespace

const std::vector<CommandInfo>& CommandReference() {
    return COMMANDS;
}

const CommandInfo* FindCommand(const std::string& name) {
    for (const CommandInfo& command : COMMANDS) {
        if (EqualNames(name, command.name))
            return &command;
    }
    return nullptr;
}

std::string CommandSignature(const CommandInfo& command) {
    std::string text = command.name + std::string("(");
    int open = 0;
    for (const CommandArgument& argument : command.arguments) {
        const bool first = &argument == &command.arguments.front();
        open += argument.optional ? 1 : 0;
        text += std::string(argument.optional ? "[" : "") + (first ? "" : ",") + argument.name;
    }
    return text + std::string(static_cast<std::size_t>(open), ']') + ")";
}

const char* CommandStatusMeaning(const CommandInfo* command, int status) {
    if (command != nullptr) {
        for (const CommandStatus& code : command->codes) {
            if (code.status == status)
                return code.meaning;
        }
    }
    return StatusMeaning(status);
}

const char* KindName(CommandArgument::Kind kind) {
    switch (kind) {
        case CommandArgument::INTEGER:
            return "int";
        case CommandArgument::NUMBER:
            return "number";
        case CommandArgument::TEXT:
            return "text";
    }
    return "";
}
