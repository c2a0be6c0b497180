#include "driver/RefreshCycle.h"

#include "commands/VncPassword.h"
#include "common/AppSettings.h"
#include "common/QtText.h"
#include "common/ResultCodes.h"
#include "driver/record/ChannelTable.h"
#include "driver/record/CommandTable.h"
#include "driver/record/DevContext.h"
#include "network/InterfaceSettings.h"
#include "ntp/NtpCtrl.h"
#include "olma_gui.h"
#include "olma_hal.h"
#include "olma_host.h"
#include "storage/DiskInterface.h"
#include "storage/FreeSpace.h"
#include "sysinfo/DevManger.h"

#include <cstdio>

namespace {

constexpr double FULL_BRIGHTNESS = 100.0;
constexpr unsigned STORAGE_POLL_MS = 200;

// The two result arrays; what lies beyond their size is dropped.
class Channels {
public:
    Channels(CArray<double, double>& values, CStringArray& strings)
        : m_values(values), m_strings(strings) {}

    void Set(int channel, double value) {
        if (channel < m_values.GetSize())
            m_values[channel] = value;
    }
    void Set(int channel, const CString& text) {
        if (channel < m_strings.GetSize())
            m_strings[channel] = text;
    }

private:
    CArray<double, double>& m_values;
    CStringArray& m_strings;
};

// Panels have one or two interfaces; with any other number nothing is known about which is which,
// and the four texts stay as they were.
void ReadInterfaces(Channels& channels) {
    const std::vector<InterfaceAddress> interfaces = CDevBas::ListInterfaceAddresses();
    if (interfaces.size() != 1 && interfaces.size() != 2)
        return;
    const InterfaceAddress second = interfaces.size() == 2 ? interfaces[1] : InterfaceAddress();
    channels.Set(CHANNEL_IP_ADDRESS_1, interfaces[0].address);
    channels.Set(CHANNEL_NETMASK_1, interfaces[0].netmask);
    channels.Set(CHANNEL_IP_ADDRESS_2, second.address);
    channels.Set(CHANNEL_NETMASK_2, second.netmask);
}

void ReadSettings(hxd::AppSettings& settings, Channels& channels) {
    QString text;
    if (settings.Read(hxd::KEY_BUZZ_DURATION, text) == 1) {
        const int durationMs = text.toInt();
        channels.Set(CHANNEL_BUZZER_ENABLED, durationMs != 0 ? 1.0 : 0.0);
        channels.Set(CHANNEL_BUZZER_DURATION, durationMs);
    }
    if (settings.Read(hxd::KEY_BACKLIGHT_STATUS, text) == 1) {
        if (const hxd::Maybe<double> autoOff = CDevBas::ParseSwitch(text))
            channels.Set(CHANNEL_BACKLIGHT_AUTO_OFF, *autoOff);
    }
    if (settings.Read(hxd::KEY_BACKLIGHT_DURATION, text) == 1) {
        const int wholeSeconds = text.toInt() / 1000;
        channels.Set(CHANNEL_BACKLIGHT_DELAY, wholeSeconds);
    }
}

// As a script would ask for it: the registry's log lines and its choice of provider belong to every
// reading, so this is no detour around calling the provider.
void RunOperation(OLMA_DATA& data, Command command, int channel) {
    CString text;
    text.Format("%s(%d)", CommandOf(command).name, channel);
    data.m_pContext->m_pDevManger->DevOpear(data, static_cast<const char*>(text));
}

void ReadSystemUse(OLMA_DATA& data, Channels& channels) {
    if (data.m_pContext->m_pDevManger == nullptr)
        return;
    RunOperation(data, COMMAND_GET_CPU_USE, CHANNEL_CPU_USE);
    channels.Set(CHANNEL_CPU_USE, data.m_pContext->m_dCpuUse);
    RunOperation(data, COMMAND_GET_MEM_USE, CHANNEL_MEMORY_AVAILABLE);
    channels.Set(CHANNEL_MEMORY_AVAILABLE, data.m_pContext->m_dMemAvail);
}

void ReadTimeSettings(OLMA_DATA& data, Channels& channels) {
    if (data.m_pContext->m_pNtpCtrl == nullptr)
        return;
    const ntpCfgParam settings = data.m_pContext->m_pNtpCtrl->getParam();
    channels.Set(CHANNEL_NTP_SWITCH, settings.ntpSwitch);
    channels.Set(CHANNEL_NTP_MODE, settings.mode);
    channels.Set(CHANNEL_NTP_PERIOD, settings.freq);
    for (int i = 0; i < settings.servers.size() && CHANNEL_NTP_SERVER_1 + i <= CHANNEL_NTP_SERVER_4;
         ++i)
        channels.Set(CHANNEL_NTP_SERVER_1 + i, hxd::ToHost(settings.servers[i]));
}

void ReadSerialNumber(Channels& channels) {
    const CString serialNumber = __gui_get_serial_number();
    channels.Set(CHANNEL_SERIAL_NUMBER,
                 serialNumber.IsEmpty() ? CString(NO_SERIAL_NUMBER) : serialNumber);
}

void ReadBrightness(Channels& channels) {
    const int percent = hal_display_get_backlight_brightness();
    channels.Set(CHANNEL_BRIGHTNESS, percent == HAL_NO_SUCH_DEVICE ? FULL_BRIGHTNESS : percent);
}

void ReadMacAddresses(Channels& channels) {
    const char* const names[] = {"eth0", "eth1"};
    unsigned int count = 0;
    if (hal_get_network_count(&count) != 0)
        return;
    int channel = CHANNEL_MAC_ADDRESS_1;
    for (unsigned int i = 0; i < count && i < 2; ++i) {
        const hxd::Maybe<CString> mac = CDevBas::ReadMacAddress(names[i]);
        if (!mac)
            return;
        channels.Set(channel++, *mac);
    }
}

// Brings the storage manager's two numbers up to date; false while it has none.
bool RefreshStorage(DEV_CONTEXT& context) {
    DiskInterface* const disk = context.m_pDisk.get();
    if (disk == nullptr)
        return false;
    if (context.m_bDiskInitPending) {
        // Stays pending after a failure: the next recomputation tries again.
        context.m_bDiskReady = disk->init();
        context.m_bDiskInitPending = !context.m_bDiskReady;
    } else if (context.m_bDiskReady) {
        disk->refresh();
        while (!disk->refreshRes())
            Olma_Sleep(STORAGE_POLL_MS);
    }
    return context.m_bDiskReady;
}

void ReadStorage(DEV_CONTEXT& context, Channels& channels) {
    const bool known = RefreshStorage(context);
    channels.Set(CHANNEL_STORAGE_LIFE,
                 known ? context.m_pDisk->getDiskLifeTime() : STORAGE_UNREADABLE);
    channels.Set(CHANNEL_STORAGE_GEAR, known ? context.m_pDisk->getDiskIO() : STORAGE_UNREADABLE);
}

void ReadUarts(Channels& channels) {
    for (int port = 1; port <= 4; ++port) {
        hal_uart_info_t info = {};
        const int result = hal_uart_info(port, &info);
        if (result != 0)
            std::printf("hal_uart_info failed,com:%d, res:%d\n", port, result);
        channels.Set(CHANNEL_UART_1 + port - 1,
                     result == 0 ? CDevBas::UartUsePercent(info) : UART_UNREADABLE);
    }
}

}  // namespace

hxd::Maybe<double> CDevBas::ParseSwitch(const QString& text) {
    if (text == QLatin1String("1") || text == QLatin1String("true"))
        return 1.0;
    if (text == QLatin1String("0") || text == QLatin1String("false"))
        return 0.0;
    return {};
}

double CDevBas::UartUsePercent(const hal_uart_info_t& info) {
    const long long sum = static_cast<long long>(info.first) + info.second;
    const long long wholePercent = sum == 0 ? 0 : info.fourth * 100LL / sum;
    return static_cast<double>(wholePercent);
}

int CDevBas::refleshData(OLMA_DATA& data, CArray<double, double>& values, CStringArray& strings) {
    Channels channels(values, strings);
    ReadInterfaces(channels);
    hxd::AppSettings settings;
    if (!settings.IsOpen())
        return 1;
    ReadSettings(settings, channels);
    ReadSystemUse(data, channels);
    ReadTimeSettings(data, channels);
    channels.Set(CHANNEL_VNC_PASSWORD, CDevBas::ReadVncPwd());
    ReadSerialNumber(channels);
    ReadBrightness(channels);
    ReadMacAddresses(channels);
    ReadStorage(*data.m_pContext, channels);
    channels.Set(CHANNEL_STORAGE_FREE, FreeStorageMiB());
    ReadUarts(channels);
    return 1;
}
