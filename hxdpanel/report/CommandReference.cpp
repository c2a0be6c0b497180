#include "hxdpanel/report/CommandReference.h"

#include "common/ResultCodes.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Text.h"

namespace {

const char* const STATUS_IN_RESULT =
    "A refused value shows only in the result variable; the command's own status stays 0.";
const char* const NO_END = "no \")\" at the end";  // of a command of the registry
const char* const NO_BLANKS =
    "Write no blanks around the commas: they would become part of a name.";

// A code that a command answers with. detail: of what its meaning names, where that helps, or what
// this command means by it besides.
struct CommandCode {
    CommandCode(ResultCode itsCode, const std::string& itsDetail = "")
        : code(itsCode), detail(itsDetail) {}
    ResultCode code;
    std::string detail;
};

// What the table of commands does not say of one.
struct Description {
    Command command;
    const char* summary;
    std::vector<std::string> meanings;  // of the arguments, in their order
    std::vector<CommandCode> codes;
    std::vector<const char*> example;
    std::vector<const char*> notes;
    bool savesFile;
};

constexpr bool SAVES_FILE = true;
constexpr bool LEAVES_NO_FILE = false;

// What a write to the channel accepts, put together by the word.
std::string Range(Channel channel, const std::string& between) {
    const ChannelRow& row = *FindChannel(channel);
    return std::to_string(row.minimum) + between + std::to_string(row.maximum);
}

const std::vector<Description> DESCRIPTIONS = {
    {COMMAND_OLMA_WRITE,
     "write a channel; what the console's write sends",
     {"number of the channel", "the value as text"},
     {{RESULT_MALFORMED},
      {RESULT_REFUSED},
      {RESULT_BAD_ARGUMENTS, "brightness below " + Range(CHANNEL_BRIGHTNESS, " or above ")},
      {RESULT_NO_INTERFACE},
      {RESULT_INTERFACE_NOT_SET},
      {RESULT_INTERFACE_MISSING},
      {RESULT_BRIGHTNESS_FAILED},
      {RESULT_NO_BRIGHTNESS, "this comes before the range"}},
     {"OLMA_WRITE(21=40)", "OLMA_WRITE(1=192.168.1.50)"},
     {"A number that is no channel is ignored with status 0.", "A text ends at its first \")\"."},
     LEAVES_NO_FILE},
    {COMMAND_BACKLIGHT_ON,
     "switch the display's light on",
     {},
     {{RESULT_BACKLIGHT_FAILED}},
     {"BACKLIGHTON()"},
     {},
     LEAVES_NO_FILE},
    {COMMAND_BACKLIGHT_OFF,
     "switch the display's light off",
     {},
     {{RESULT_BACKLIGHT_FAILED}},
     {"BACKLIGHTOFF()"},
     {},
     LEAVES_NO_FILE},
    {COMMAND_REFLESH,
     "have every channel read anew by the next collection",
     {},
     {},
     {"REFLESH()"},
     {"Without it, and without a channel write, collections deliver the values read before."},
     LEAVES_NO_FILE},
    {COMMAND_REBOOT,
     "restart the panel at once, without saving anything first",
     {},
     {},
     {"REBOOT()"},
     {"Here it ends the simulated panel, and hxdpanel with it; in a script and with --page the "
      "panel "
      "is restarted. restart is the command that always comes back."},
     LEAVES_NO_FILE},
    {COMMAND_SAVE_SCREEN,
     "save a picture of the screen, or of a part of it",
     {"file; $OLMA_DIR_USR/... lies in the user's data, anything else on the USB stick",
      "left edge", "top edge", "right edge, no longer part of the picture",
      "bottom edge, no longer part of the picture"},
     {},
     {"SAVESCREEN($OLMA_DIR_USR/shots/screen.png)", "SAVESCREEN(corner.bmp,0,0,200,100)"},
     {"The status is always 0; look whether the file is there.",
      "The name's ending chooses the format: .png, .jpg or .bmp.",
      "Give the path alone or all four edges; in between the part is not a proper one."},
     SAVES_FILE},
    {COMMAND_STR_SHA256,
     "SHA-256 of a text, as 64 lower-case hexadecimal digits",
     {"what to hash", "receives the digits"},
     {{RESULT_BAD_ARGUMENTS, "fewer than two, or an empty text"}},
     {"set secret abc", "set digest:text", "STRSHA256(secret,digest)"},
     {},
     LEAVES_NO_FILE},
    {COMMAND_MOD_VNC_PWD,
     "change the password of the remote view",
     {"the new password", "receives 0, or 4 when the password cannot be read"},
     {{RESULT_REFUSED}, {RESULT_BAD_ARGUMENTS}},
     {"set password:text 1234", "set result 99", "ModVncPwd(password,result)"},
     {"Dropped silently when the panel has no vncConfig.ini."},
     LEAVES_NO_FILE},
    {COMMAND_GET_MAC_INFO,
     "name and hardware address of a network interface",
     {"0 for the first interface", "receives the interface's name",
      "receives the address, upper case"},
     {{RESULT_BAD_ARGUMENTS, "fewer than three, or no such interface"},
      {RESULT_HARDWARE_FAILED, "perhaps it does not know the interface"}},
     {"set name:text", "set mac:text", "GetMacInfo(0,name,mac)"},
     {NO_BLANKS},
     LEAVES_NO_FILE},
    {COMMAND_SET_NETWORK_MODE,
     "switch an interface between its two addressing modes",
     {"0 for the first interface", "0 or 1",
      "receives 0, 4 when refused, or what the platform answered"},
     {{RESULT_REFUSED}, {RESULT_BAD_ARGUMENTS}, {RESULT_NO_INTERFACE}},
     {"set result 99", "SetNetworkMode(0,1,result)"},
     {"What the modes 0 and 1 are, the panel's hardware library decides; the driver passes them "
      "on, for mode 1 together with the number 5000 in mode1_param. Addresses stay as they are.",
      "The mode that an interface already has is answered with 0, and nothing is applied. panel "
      "shows the present one."},
     LEAVES_NO_FILE},
    {COMMAND_ENABLE_NTP,
     "switch the time synchronisation on or off",
     {"1 on, 0 off", "receives 0, or 4 when refused"},
     {{RESULT_REFUSED}, {RESULT_BAD_ARGUMENTS}},
     {"set result 99", "EnableNTP(1,result)"},
     {STATUS_IN_RESULT},
     LEAVES_NO_FILE},
    {COMMAND_SET_NTP_MODE,
     "choose when the time is synchronised",
     {"1 every period, 0 only by ExecNTP", "receives 0, or 4 when refused"},
     {{RESULT_REFUSED}, {RESULT_BAD_ARGUMENTS}},
     {"set result 99", "SetNTPMode(1,result)"},
     {STATUS_IN_RESULT},
     LEAVES_NO_FILE},
    {COMMAND_SET_NTP_FREQ,
     "set the period of the time synchronisation",
     {Range(CHANNEL_NTP_PERIOD, " to "), "receives 0, or 4 when refused"},
     {{RESULT_REFUSED}, {RESULT_BAD_ARGUMENTS}},
     {"set result 99", "SetNTPFreq(12,result)"},
     {STATUS_IN_RESULT},
     LEAVES_NO_FILE},
    {COMMAND_SET_NTP_SERVER,
     "set the four time servers",
     {"address or host name, or empty", "the same", "the same", "the same",
      "receives 0, or 4 when a server cannot be read"},
     {{RESULT_REFUSED}, {RESULT_BAD_ARGUMENTS}},
     {"set result 99", "SetNTPServer(192.168.1.1,ntp.example.org,,,result)"},
     {},
     LEAVES_NO_FILE},
    {COMMAND_EXEC_NTP,
     "synchronise the time now",
     {"receives 0, or 10 when it failed"},
     {{RESULT_REFUSED}},
     {"set result 99", "ExecNTP(result)"},
     {"Waits until it is done. While the synchronisation is switched off it does nothing and "
      "answers 0.",
      "A failure shows only in the result variable."},
     LEAVES_NO_FILE},
    {COMMAND_GET_CPU_USE,
     "sample the CPU use for channel 10",
     {"10; only logged"},
     {{RESULT_BAD_ARGUMENTS, NO_END}},
     {"GetCpuUse(10)", "REFLESH()", "channels"},
     {"Every refresh does the same."},
     LEAVES_NO_FILE},
    {COMMAND_GET_MEM_USE,
     "read the available memory for channel 11",
     {"11; only logged"},
     {{RESULT_MALFORMED, "/proc/meminfo"}, {RESULT_BAD_ARGUMENTS, NO_END}},
     {"GetMemUse(11)", "REFLESH()", "channels"},
     {"Every refresh does the same."},
     LEAVES_NO_FILE},
    {COMMAND_READ_APP_LOG,
     "the newest part of one of the panel's logs",
     {"0 restart log, 1 kernel log of a crash, 2 signal log", "how much of it at most",
      "receives the text", "receives 0, or 4"},
     {{RESULT_REFUSED}, {RESULT_BAD_ARGUMENTS}},
     {"set text:text", "set status 99", "ReadAppLog(0,64,text,status)"},
     {"A log that is not there reads as an empty text.", NO_BLANKS},
     LEAVES_NO_FILE},
    {COMMAND_READ_SYS_LOG,
     "the newest part of the kernel's log",
     {"0", "how much of it at most", "receives the text", "receives 0, or 4"},
     {{RESULT_KERNEL_LOG_FAILED}, {RESULT_REFUSED}, {RESULT_BAD_ARGUMENTS}},
     {"set text:text", "set status 99", "ReadSysLog(0,64,text,status)"},
     {NO_BLANKS},
     LEAVES_NO_FILE},
};

CommandInfo Describe(const Description& description) {
    const CommandRow& row = CommandOf(description.command);
    CommandInfo info = {row,
                        row.name,
                        description.summary,
                        {},
                        {},
                        description.example,
                        description.notes,
                        description.savesFile};
    for (std::size_t i = 0; i < description.meanings.size(); ++i)
        info.arguments.emplace_back(row.arguments[i], description.meanings[i]);
    info.statuses.push_back({-RESULT_DONE, StatusMeaning(-RESULT_DONE)});
    for (const CommandCode& code : description.codes)
        info.statuses.push_back({-code.code, StatusMeaning(-code.code) +
                                                 (code.detail.empty() ? "" : ": " + code.detail)});
    return info;
}

std::vector<CommandInfo> DescribeAll() {
    std::vector<CommandInfo> commands;
    commands.reserve(DESCRIPTIONS.size());
    for (const Description& description : DESCRIPTIONS)
        commands.push_back(Describe(description));
    return commands;
}

}  // namespace

const std::vector<CommandInfo>& CommandReference() {
    static const std::vector<CommandInfo> commands = DescribeAll();
    return commands;
}

const CommandInfo* FindCommand(const std::string& name) {
    for (const CommandInfo& command : CommandReference()) {
        if (EqualNames(name, command.name))
            return &command;
    }
    return nullptr;
}

std::string CommandSignature(const CommandInfo& command) {
    std::string text = command.name + std::string("(");
    int open = 0;
    for (const DescribedArgument& argument : command.arguments) {
        const bool first = &argument == &command.arguments.front();
        open += argument.optional ? 1 : 0;
        text += argument.optional ? "[" : "";
        text += first ? "" : std::string(1, command.row.separator);
        text += argument.name;
    }
    return text + std::string(static_cast<std::size_t>(open), ']') + ")";
}

std::string CommandStatusMeaning(const CommandInfo* command, int status) {
    if (command != nullptr) {
        for (const CommandStatus& known : command->statuses) {
            if (known.status == status)
                return known.meaning;
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
        case CommandArgument::LITERAL:
            return "as is";
    }
    return "";
}
