#include "driver/CDevCtrl.h"

#include "commands/Dispatcher.h"
#include "commands/VNCLockProxy.h"
#include "common/Numbers.h"
#include "driver/Barrier.h"
#include "driver/Operation.h"
#include "driver/RefreshCycle.h"
#include "driver/record/ChannelTable.h"
#include "driver/record/DevContext.h"

#include <algorithm>

namespace {

// More channels than any project has; keeps a mistaken count from taking all the memory.
constexpr int MAX_CHANNELS = 65536;

constexpr int FLAG_DELIVER = 3;

}  // namespace

CDevCtrl::CDevCtrl(const char* name, IRtdb* host) : m_record() {
    m_record.m_strDevName = CString(name);
    m_record.m_pParamHost = host;
    m_record.m_pfnSetParamValue = SetParamValue_Fun;
    m_record.m_pfnGetParamValue = GetParamValue_Fun;
    m_record.m_pfnGetParamType = GetParamType_Fun;
    m_record.m_pRtdb = host;
    m_record.m_nChannelCount = -1;
}

CDevCtrl::~CDevCtrl() {
    m_record.m_arrStrValue.RemoveAll();
    m_record.m_arrValue.RemoveAll();
    m_record.m_arrChannelFlag.RemoveAll();
}

int CDevCtrl::DevIOCtrl(const char* command) {
    if (command == nullptr)
        return HOST_BAD_ARGUMENT;
    const hxd::Operation operation(*this);
    return hxd::NoThrow(HOST_BAD_ARGUMENT, [&] {
        AnnounceDevice();
        RunCommand(command);
        return Result();
    });
}

int CDevCtrl::WriteChannel(int channel, DATATYPE type, void* value) {
    if (value == nullptr || channel < 0)
        return HOST_BAD_ARGUMENT;
    const hxd::Operation operation(*this);
    return hxd::NoThrow(HOST_BAD_ARGUMENT, [&] {
        AnnounceDevice();
        const unsigned number = static_cast<unsigned>(channel) + 1;
        CString command;
        if (type == DATATYPE_DOUBLE)
            command.Format("OLMA_WRITE(%u=%lf)", number, *static_cast<const double*>(value));
        else if (type == DATATYPE_TEXT)
            command.Format("OLMA_WRITE(%u=%s)", number, static_cast<const char*>(value));
        else if (type == DATATYPE_INTEGER)
            command.Format("OLMA_WRITE(%u=%d)", number, *static_cast<const int*>(value));
        // Any other type leaves the command empty; it goes on as it is and gives 0.
        RunCommand(command);
        return Result();
    });
}

int CDevCtrl::CollectDevData(const int* channels, int count) {
    if (count <= 0 || channels == nullptr)
        return HOST_OK;
    if (count > MAX_CHANNELS)
        return HOST_BAD_ARGUMENT;
    const hxd::Operation operation(*this);
    return hxd::NoThrow(HOST_BAD_ARGUMENT, [&] { return Collect(channels, count); });
}

int CDevCtrl::Collect(const int* channels, int count) {
    AnnounceDevice();
    _InitValueArray(count);
    if (m_record.m_pRtdb == nullptr)
        return HOST_NO_CHANNEL_HOST;
    if (m_record.m_pContext == nullptr)
        return Result();

    CArray<int, int>& flags = m_record.m_arrChannelFlag;
    flags[0] = 1;
    for (int i = 0; i < count && i + 1 < flags.GetSize(); ++i)
        flags[i + 1] = channels[i];
    RefreshValues();
    // The host's list has been noted and is overwritten: every channel is delivered on every call.
    for (int i = 1; i < flags.GetSize(); ++i)
        flags[i] = FLAG_DELIVER;
    DeliverChannels();
    return Result();
}

void CDevCtrl::RefreshValues() {
    StoreInputLocks();
    int(&refreshed)[2] = m_record.m_pContext->m_bRefreshed;
    if (refreshed[0] != 0 && refreshed[1] != 0)
        return;
    CDevBas::refleshData(m_record, m_record.m_arrValue, m_record.m_arrStrValue);
    refreshed[0] = 1;
    refreshed[1] = 1;
}

void CDevCtrl::StoreInputLocks() {
    const VNCLockProxy* const lock = m_record.m_pContext->m_pVncLock.get();
    if (lock == nullptr)
        return;
    CArray<double, double>& values = m_record.m_arrValue;
    const bool localLocked = lock->getHMIMouseState() || lock->getHMIKeyboardState();
    if (values.GetSize() > CHANNEL_LOCAL_INPUT_LOCKED)
        values[CHANNEL_LOCAL_INPUT_LOCKED] = localLocked ? 1.0 : 0.0;
    const bool remoteLocked = lock->getVNCMouseState() || lock->getVNCKeyboardState();
    if (values.GetSize() > CHANNEL_REMOTE_INPUT_LOCKED)
        values[CHANNEL_REMOTE_INPUT_LOCKED] = remoteLocked ? 1.0 : 0.0;
}

void CDevCtrl::DeliverChannels() {
    const hxd::HostTurn turn;
    const OLMA_DATA& record = m_record;
    // The host may send a command from within a delivery, and a command resizes the value arrays,
    // so the sizes are asked again for every channel.
    for (int i = 1; i < std::min({record.m_arrChannelFlag.GetSize(), record.m_arrValue.GetSize(),
                                  record.m_arrStrValue.GetSize()});
         ++i) {
        int type = 0;
        if (record.m_arrChannelFlag[i] != FLAG_DELIVER ||
            record.m_pRtdb->GetChannelType(i - 1, &type) != HOST_OK)
            continue;
        if (i >= record.m_arrValue.GetSize() || i >= record.m_arrStrValue.GetSize())
            break;  // GetChannelType has resized them
        if (type == DATATYPE_DOUBLE) {
            record.m_pRtdb->SetChannelDouble(i - 1, record.m_arrValue[i]);
        } else if (type == DATATYPE_TEXT) {
            const CString& text = record.m_arrStrValue[i];
            const std::string value(text, static_cast<std::size_t>(text.GetLength()));
            record.m_pRtdb->SetChannelString(i - 1, &value);
        } else if (type == DATATYPE_INTEGER) {
            record.m_pRtdb->SetChannelInt(i - 1, hxd::ToInt(record.m_arrValue[i]));
        }
    }
}

int CDevCtrl::UpdataCommunication(ICommunication* communication) {
    if (communication == nullptr)
        return HOST_BAD_ARGUMENT;
    // Kept even when its link kind is refused below.
    m_record.m_pComm = communication;
    const hxd::Operation operation(*this);
    return hxd::NoThrow(HOST_BAD_ARGUMENT, [&] {
        const hxd::HostTurn turn;
        // The host counts its links 1 and 2, the record the other way round.
        switch (communication->GetLinkType()) {
            case 1:
                m_record.m_nCommType = 2;
                return HOST_OK;
            case 2:
                m_record.m_nCommType = 1;
                return HOST_OK;
            default:
                return HOST_BAD_ARGUMENT;
        }
    });
}

int CDevCtrl::ChannelRefChange(const int* channels, int count) {
    if (count <= 0 || count > MAX_CHANNELS || channels == nullptr)
        return HOST_BAD_ARGUMENT;
    return hxd::NoThrow(HOST_BAD_ARGUMENT, [&] { return _InitValueArray(count); });
}

int CDevCtrl::SetChannelAddress(int /*first*/, int /*second*/) {
    return HOST_OK;
}

void CDevCtrl::AnnounceDevice() {
    if (m_record.m_pComm == nullptr)
        return;
    const hxd::HostTurn turn;
    m_record.m_pComm->SetDeviceName(
        const_cast<char*>(static_cast<const char*>(m_record.m_strDevName)));
}

void CDevCtrl::RunCommand(CString command) {
    _InitValueArray(0);
    olma_device::SvrDevIOCtrl(m_record, command, m_record.m_arrValue, m_record.m_arrStrValue);
}

int CDevCtrl::_InitValueArray(int n) {
    int& channelCount = m_record.m_nChannelCount;
    if ((n == channelCount && channelCount != 0) || (n == 0 && channelCount > 0))
        return 0;
    // Never fewer than the fixed channels need, whatever the host asks for.
    const int newCount = std::max(n, CHANNEL_COUNT);
    m_record.m_arrValue.SetSize(newCount + 1);
    m_record.m_arrStrValue.SetSize(newCount + 1);
    m_record.m_arrChannelFlag.SetSize(newCount + 1);
    channelCount = newCount;  // last: arrays that found no memory are sized again by the next call
    return 0;
}

int CDevCtrl::Result() const {
    return m_record.m_arrValue.GetSize() > 0 ? hxd::ToInt(m_record.m_arrValue[0]) : 0;
}
