#include "commands/Dispatcher.h"

#include "commands/ChannelWrite.h"
#include "commands/PanelActions.h"
#include "commands/Screenshot.h"
#include "commands/StringHash.h"
#include "commands/VncPassword.h"
#include "common/Mutex.h"
#include "common/ResultCodes.h"
#include "driver/record/ChannelTable.h"
#include "driver/record/CommandTable.h"
#include "driver/record/DevContext.h"
#include "network/NetworkCommands.h"
#include "ntp/NtpCommands.h"
#include "sysinfo/DevManger.h"

namespace {

// Held for the whole of every command, so commands of all devices of the process take turns, long
// ones included. Taken before any lock of a subsystem. Recursive: the host may send a command from
// within its parameter callbacks, which must not block for ever.
hxd::RecursiveMutex g_halMutex;

// What a command leaves behind: the result arrays of a device with the fixed channels.
constexpr int RESULT_ELEMENTS = CHANNEL_COUNT + 1;

int OlmaWrite(OLMA_DATA& data, const CString& args) {
    const int result = CDevBas::mfDevIOWriteChannel(data, args);
    ExpireValues(data);  // also after a refused write
    return result;
}

int Reflesh(OLMA_DATA& data, const CString& /*args*/) {
    ExpireValues(data);
    return RESULT_DONE;
}

struct HandlerRow {
    Command command;
    int (*run)(OLMA_DATA& data, const CString& args);  // a ResultCode
};

constexpr HandlerRow HANDLERS[] = {
    {COMMAND_OLMA_WRITE, OlmaWrite},
    {COMMAND_BACKLIGHT_ON, panel_actions::BacklightOn},
    {COMMAND_BACKLIGHT_OFF, panel_actions::BacklightOff},
    {COMMAND_REFLESH, Reflesh},
    {COMMAND_REBOOT, panel_actions::Reboot},
    {COMMAND_SAVE_SCREEN, panel_actions::SaveScreen},
    {COMMAND_STR_SHA256, CDevBas::strSha256},
    {COMMAND_MOD_VNC_PWD, CDevBas::ModVncPwd},
    {COMMAND_GET_MAC_INFO, network_commands::GetMacInfo},
    {COMMAND_SET_NETWORK_MODE, network_commands::SetNetworkMode},
    {COMMAND_ENABLE_NTP, CDevBas::EnableNtp},
    {COMMAND_SET_NTP_MODE, CDevBas::SetNtpMode},
    {COMMAND_SET_NTP_FREQ, CDevBas::SetNtpFreq},
    {COMMAND_SET_NTP_SERVER, CDevBas::SetNtpServer},
    {COMMAND_EXEC_NTP, CDevBas::ExecNtp},
};

constexpr bool HandlersFollowTheTable(int command) {
    return command == FIRST_REGISTRY_COMMAND ||
           (HANDLERS[command].command == command && HandlersFollowTheTable(command + 1));
}
static_assert(sizeof HANDLERS / sizeof *HANDLERS == FIRST_REGISTRY_COMMAND &&
                  HandlersFollowTheTable(0),
              "a command of the dispatcher has no handler here, or not in its place");

int AskRegistry(OLMA_DATA& data, const CString& cmd) HXD_REQUIRES(g_halMutex) {
    DevManger* const registry = ServiceOf(data, &DEV_CONTEXT::m_pDevManger);
    if (registry == nullptr)
        return RESULT_DONE;
    return registry->DevOpear(data, std::string(cmd, static_cast<std::size_t>(cmd.GetLength())));
}

int Run(OLMA_DATA& data, const CString& cmd) HXD_REQUIRES(g_halMutex) {
    const auto parts = olma_device::SplitCommand(cmd);
    if (!parts)
        return RESULT_DONE;
    const CommandRow* const row = FindCommandRow(parts->name);
    if (row == nullptr || row->IsOfRegistry())
        return AskRegistry(data, cmd);
    return HANDLERS[row->command].run(data, parts->args);
}

}  // namespace

hxd::Maybe<olma_device::CommandParts> olma_device::SplitCommand(const CString& cmd) {
    const int open = cmd.Find('(');
    const int close = cmd.Find(')');
    if (open < 0 || close < 0)
        return {};
    CommandParts parts = {cmd.Left(open), cmd.Mid(open + 1, close - open - 1)};
    parts.name.Trim().MakeUpper();
    return parts;
}

int olma_device::SvrDevIOCtrl(OLMA_DATA& data, CString& cmd, CArray<double, double>& values,
                              CStringArray& strings) {
    if (values.GetSize() < 1)
        return 0;
    const hxd::RecursiveMutexLock locker(g_halMutex);
    values.SetSize(RESULT_ELEMENTS);
    strings.SetSize(RESULT_ELEMENTS);
    const int result = Run(data, cmd);
    values[0] = result < 0 ? -static_cast<double>(result) : 0.0;
    return 0;
}
