#include "ntp/NtpCommands.h"

#include "common/Numbers.h"
#include "common/QtText.h"
#include "common/ResultCodes.h"
#include "driver/record/CDevServer.h"
#include "driver/record/CommandTable.h"
#include "driver/record/DevContext.h"
#include "ntp/NtpCtrl.h"

#include <vector>

const CString NTP_CTRL_CMD[NTP_CTRL_CMD_COUNT] = {
    CommandOf(COMMAND_ENABLE_NTP).name, CommandOf(COMMAND_SET_NTP_MODE).name,
    CommandOf(COMMAND_SET_NTP_FREQ).name, CommandOf(COMMAND_SET_NTP_SERVER).name,
    CommandOf(COMMAND_EXEC_NTP).name};

namespace {

// Arguments of a command of which the last one, the result variable, may be left out.
class Arguments {
public:
    Arguments(OLMA_DATA& data, const CString& args, std::size_t required) : m_data(data) {
        std::vector<FF::utils::String> items;
        m_bValid = CDevBas::splitString(args, ',', items) != 0 &&
                   (items.size() == required || items.size() == required + 1);
        for (const FF::utils::String& item : items)
            m_names.emplace_back(item.c_str());
        m_bNamesResult = items.size() > required;
    }

    bool IsValid() const { return m_bValid; }

    template <class VALUE>
    bool Read(std::size_t index, VALUE& value) const {
        return CDevServer::SvrGetParaValue(m_data, m_names[index], value) != 0;
    }

    // The error number of a result code; true also when there is no result variable.
    bool WriteResult(int code) const {
        return !m_bNamesResult ||
               CDevServer::SvrSetParaValue(m_data, m_names.back(), hxd::Negated(code)) != 0;
    }

private:
    OLMA_DATA& m_data;
    std::vector<CString> m_names;
    bool m_bValid;
    bool m_bNamesResult;
};

using SETTER = int (NtpCtrl::*)(int);
constexpr SETTER SETTERS[] = {&NtpCtrl::enableNtp, &NtpCtrl::setNtpMode, &NtpCtrl::setNtpFreq};

bool ReadServers(const Arguments& arguments, QStringList& servers) {
    for (std::size_t i = 0; i < NTP_SERVER_COUNT; ++i) {
        CString server;
        if (!arguments.Read(i, server))
            return false;
        servers.append(hxd::FromHost(server));
    }
    return true;
}

}  // namespace

int CDevBas::execSameCtrl(OLMA_DATA& data, const CString& args, NTP_CTRL_TYPE type) {
    const Arguments arguments(data, args, 1);
    if (!arguments.IsValid())
        return RESULT_BAD_ARGUMENTS;
    NtpCtrl* const controller = ServiceOf(data, &DEV_CONTEXT::m_pNtpCtrl);
    if (controller == nullptr)
        return RESULT_DONE;
    int value = 0;
    if (!arguments.Read(0, value)) {
        arguments.WriteResult(RESULT_REFUSED);
        return RESULT_REFUSED;
    }
    if (type < NTP_CTRL_ENABLE || type > NTP_CTRL_FREQ)
        return arguments.WriteResult(RESULT_BAD_ARGUMENTS) ? RESULT_BAD_ARGUMENTS : RESULT_REFUSED;
    // A refused value shows in the result variable alone.
    return arguments.WriteResult((controller->*SETTERS[type])(value)) ? RESULT_DONE
                                                                      : RESULT_REFUSED;
}

namespace ntp_commands {

int EnableNtp(OLMA_DATA& data, const CString& args) {
    return CDevBas::execSameCtrl(data, args, CDevBas::NTP_CTRL_ENABLE);
}

int SetNtpMode(OLMA_DATA& data, const CString& args) {
    return CDevBas::execSameCtrl(data, args, CDevBas::NTP_CTRL_MODE);
}

int SetNtpFreq(OLMA_DATA& data, const CString& args) {
    return CDevBas::execSameCtrl(data, args, CDevBas::NTP_CTRL_FREQ);
}

int SetNtpServer(OLMA_DATA& data, const CString& args) {
    const Arguments arguments(data, args, NTP_SERVER_COUNT);
    if (!arguments.IsValid())
        return RESULT_BAD_ARGUMENTS;
    NtpCtrl* const controller = ServiceOf(data, &DEV_CONTEXT::m_pNtpCtrl);
    if (controller == nullptr)
        return RESULT_DONE;
    QStringList servers;
    if (!ReadServers(arguments, servers)) {
        arguments.WriteResult(RESULT_REFUSED);
        return RESULT_REFUSED;
    }
    controller->setNtpServers(servers);
    return arguments.WriteResult(RESULT_DONE) ? RESULT_DONE : RESULT_REFUSED;
}

int ExecNtp(OLMA_DATA& data, const CString& args) {
    NtpCtrl* const controller = ServiceOf(data, &DEV_CONTEXT::m_pNtpCtrl);
    if (controller == nullptr)
        return RESULT_DONE;
    const int result = controller->execNtp();
    if (args.IsEmpty())
        return RESULT_DONE;
    return CDevServer::SvrSetParaValue(data, args, hxd::Negated(result)) != 0 ? RESULT_DONE
                                                                              : RESULT_REFUSED;
}

}  // namespace ntp_commands
