#include "commands/Dispatcher.h"

#include "commands/ChannelWrite.h"
#include "commands/CommandNames.h"
#include "commands/PanelActions.h"
#include "commands/StringHash.h"
#include "commands/VncPassword.h"
#include "common/Numbers.h"
#include "common/ResultCodes.h"
#include "driver/record/DevContext.h"
#include "network/NetworkCommands.h"
#include "ntp/NtpCommands.h"
#include "sysinfo/DevManger.h"

std::recursive_mutex g_halMutex;

namespace {

// What a command leaves behind: the result arrays of a device with the fixed channels.
constexpr int RESULT_ELEMENTS = 33;

int OlmaWrite(OLMA_DATA& data, const CString& args) {
    const int result = CDevBas::mfDevIOWriteChannel(data, args);
    ExpireValues(data);  // also after a refused write
    return result;
}

int Reflesh(OLMA_DATA& data, const CString& /*args*/) {
    ExpireValues(data);
    return RESULT_DONE;
}

struct CommandRow {
    const CString& name;
    int (*run)(OLMA_DATA& data, const CString& args);  // a ResultCode
};

const CommandRow COMMANDS[] = {
    {DEV_STR_OLMAWRITE, OlmaWrite},
    {DEV_STR_BLON, panel_actions::BacklightOn},
    {DEV_STR_BLOFF, panel_actions::BacklightOff},
    {DEV_STR_REFLESH, Reflesh},
    {DEV_STR_REBOOT, panel_actions::Reboot},
    {DEV_STR_SAVESCREEN, panel_actions::SaveScreen},
    {DEV_STR_SHA256, CDevBas::strSha256},
    {DEV_STR_MODVNCPWD, CDevBas::ModVncPwd},
    {GETMACINFO, network_commands::GetMacInfo},
    {SET_NETWORK_MODE, network_commands::SetNetworkMode},
    {NTP_CTRL_CMD[0], ntp_commands::EnableNtp},
    {NTP_CTRL_CMD[1], ntp_commands::SetNtpMode},
    {NTP_CTRL_CMD[2], ntp_commands::SetNtpFreq},
    {NTP_CTRL_CMD[3], ntp_commands::SetNtpServer},
    {NTP_CTRL_CMD[4], ntp_commands::ExecNtp},
};

int AskRegistry(OLMA_DATA& data, const CString& cmd) {
    DevManger* const registry = ServiceOf(data, &DEV_CONTEXT::m_pDevManger);
    if (registry == nullptr)
        return RESULT_DONE;
    return registry->DevOpear(data, std::string(cmd, static_cast<std::size_t>(cmd.GetLength())));
}

int Run(OLMA_DATA& data, const CString& cmd) {
    CString name;
    CString args;
    if (!dispatcher::SplitCommand(cmd, name, args))
        return RESULT_DONE;
    for (const CommandRow& command : COMMANDS) {
        if (command.name.CompareNoCase(name) == 0)
            return command.run(data, args);
    }
    return AskRegistry(data, cmd);
}

}  // namespace

bool dispatcher::SplitCommand(const CString& cmd, CString& name, CString& args) {
    const int open = cmd.Find('(');
    const int close = cmd.Find(')');
    if (open < 0 || close < 0)
        return false;
    name = cmd.Left(open);
    name.Trim().MakeUpper();
    args = cmd.Mid(open + 1, close - open - 1);
    return true;
}

int olma_device::SvrDevIOCtrl(OLMA_DATA& data, CString& cmd, CArray<double, double>& values,
                              CStringArray& strings) {
    if (values.GetSize() < 1)
        return 0;
    const std::lock_guard<std::recursive_mutex> locker(g_halMutex);
    values.SetSize(RESULT_ELEMENTS);
    strings.SetSize(RESULT_ELEMENTS);
    const int result = Run(data, cmd);
    values[0] = result < 0 ? -static_cast<double>(result) : 0.0;
    return 0;
}
