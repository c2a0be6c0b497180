#include "ntp/NtpCommands.h"

#include "common/Numbers.h"
#include "common/QtText.h"
#include "common/ResultCodes.h"
#include "driver/record/Call.h"
#include "ntp/NtpCtrl.h"

const CString NTP_CTRL_CMD[NTP_CTRL_CMD_COUNT] = {
    CommandOf(COMMAND_ENABLE_NTP).name, CommandOf(COMMAND_SET_NTP_MODE).name,
    CommandOf(COMMAND_SET_NTP_FREQ).name, CommandOf(COMMAND_SET_NTP_SERVER).name,
    CommandOf(COMMAND_EXEC_NTP).name};

namespace {

using SETTER = int (NtpCtrl::*)(int);
constexpr SETTER SETTERS[] = {&NtpCtrl::enableNtp, &NtpCtrl::setNtpMode, &NtpCtrl::setNtpFreq};

// The result variable receives the error number; the command fails only by not reaching it.
int Report(const Call& call, int code, int result = RESULT_DONE) {
    return call.WriteResult(hxd::Negated(code)) ? result : RESULT_REFUSED;
}

int ChangeSetting(const Call& call, NtpCtrl& controller, CDevBas::NTP_CTRL_TYPE type) {
    int value = 0;
    if (!call.Read(0, value))
        return Report(call, RESULT_REFUSED, RESULT_REFUSED);
    if (type < CDevBas::NTP_CTRL_ENABLE || type > CDevBas::NTP_CTRL_FREQ)
        return Report(call, RESULT_BAD_ARGUMENTS, RESULT_BAD_ARGUMENTS);
    // A refused value shows in the result variable alone.
    return Report(call, (controller.*SETTERS[type])(value));
}

int ChangeServers(const Call& call, NtpCtrl& controller) {
    QStringList servers;
    for (std::size_t i = 0; i < NTP_SERVER_COUNT; ++i) {
        CString server;
        if (!call.Read(i, server))
            return Report(call, RESULT_REFUSED, RESULT_REFUSED);
        servers.append(hxd::FromHost(server));
    }
    controller.setNtpServers(servers);
    return Report(call, RESULT_DONE);
}

int Synchronise(const Call& call, NtpCtrl& controller) {
    return Report(call, controller.execNtp());
}

// All three take the same arguments.
Command CommandOfType(CDevBas::NTP_CTRL_TYPE type) {
    switch (type) {
        case CDevBas::NTP_CTRL_MODE:
            return COMMAND_SET_NTP_MODE;
        case CDevBas::NTP_CTRL_FREQ:
            return COMMAND_SET_NTP_FREQ;
        default:
            return COMMAND_ENABLE_NTP;
    }
}

}  // namespace

namespace CDevBas {

int execSameCtrl(OLMA_DATA& data, const CString& args, NTP_CTRL_TYPE type) {
    return RunCall(
        data, CommandOfType(type), args, &DEV_CONTEXT::m_pNtpCtrl,
        [type](const Call& call, NtpCtrl& ntp) { return ChangeSetting(call, ntp, type); });
}

int EnableNtp(OLMA_DATA& data, const CString& args) {
    return execSameCtrl(data, args, NTP_CTRL_ENABLE);
}

int SetNtpMode(OLMA_DATA& data, const CString& args) {
    return execSameCtrl(data, args, NTP_CTRL_MODE);
}

int SetNtpFreq(OLMA_DATA& data, const CString& args) {
    return execSameCtrl(data, args, NTP_CTRL_FREQ);
}

int SetNtpServer(OLMA_DATA& data, const CString& args) {
    return RunCall(data, COMMAND_SET_NTP_SERVER, args, &DEV_CONTEXT::m_pNtpCtrl, ChangeServers);
}

int ExecNtp(OLMA_DATA& data, const CString& args) {
    return RunCall(data, COMMAND_EXEC_NTP, args, &DEV_CONTEXT::m_pNtpCtrl, Synchronise);
}

}  // namespace CDevBas
