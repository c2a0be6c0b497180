#include "commands/ChannelWrite.h"

#include "commands/VNCLockProxy.h"
#include "commands/VncPassword.h"
#include "common/AppSettings.h"
#include "common/Numbers.h"
#include "common/QtText.h"
#include "common/ResultCodes.h"
#include "driver/record/Call.h"
#include "driver/record/ChannelTable.h"
#include "driver/record/DevContext.h"
#include "network/InterfaceSettings.h"
#include "ntp/NtpCtrl.h"
#include "olma_gui.h"
#include "olma_hal.h"
#include "olma_host.h"

namespace {

constexpr unsigned SHORT_PAUSE_MS = 30;
constexpr unsigned TEST_TONE_HZ = 900;

// One write on its way to its channel's handler.
struct Write {
    OLMA_DATA& data;
    const ChannelRow& channel;
    int value;     // 0 for text channels
    CString text;  // what follows the "="
    hxd::AppSettings& settings;

    // A negative value is refused like one that is too large.
    bool InRange() const { return channel.InRange(value); }
    int Store(const char* key, int number) { return settings.Write(key, QString::number(number)); }
};

void ReloadBuzzer() {
    __gui_get_buzzing_time(1);
    __gui_get_buzzing_time(0);
}

int WriteBuzzerEnabled(Write& write) {
    if (!write.InRange())
        return RESULT_REFUSED;
    const int result = write.Store(hxd::KEY_BUZZ_DURATION, write.value != 0 ? 30 : 0);
    ReloadBuzzer();  // also after a failed write, here and below: the GUI then shows what holds
    return result;
}

int WriteBuzzerDuration(Write& write) {
    if (!write.InRange())
        return RESULT_REFUSED;
    const int result = write.Store(hxd::KEY_BUZZ_DURATION, write.value);
    ReloadBuzzer();
    return result;
}

int WriteBacklightAutoOff(Write& write) {
    if (!write.InRange())
        return RESULT_REFUSED;
    const int result = write.Store(hxd::KEY_BACKLIGHT_STATUS, write.value);
    __gui_get_lcdlight_status(1);
    __gui_reset_lcdlight_timer();
    return result;
}

int WriteBacklightDelay(Write& write) {
    if (!write.InRange())
        return RESULT_REFUSED;
    const int result = write.Store(hxd::KEY_BACKLIGHT_DURATION, write.value * 1000);
    __gui_get_lcdlight_time(1);
    __gui_reset_lcdlight_timer();
    return result;
}

// The pause comes first, so that the tone does not run into the one of the key that was pressed,
// and takes its length from the settings; the written value is the length of the tone.
int TestBuzzer(Write& write) {
    if (!write.InRange())
        return RESULT_REFUSED;
    QString text;
    const bool known = write.settings.Read(hxd::KEY_BUZZ_DURATION, text) == 1;
    const int pauseMs = text.toInt();
    const bool usable = known && FindChannel(CHANNEL_BUZZER_DURATION)->InRange(pauseMs);
    Olma_Sleep(usable ? static_cast<unsigned>(pauseMs) : SHORT_PAUSE_MS);
    Olma_Beep(TEST_TONE_HZ, static_cast<unsigned>(write.value));
    return RESULT_DONE;
}

enum AddressPart { PART_ADDRESS = 0, PART_NETMASK = 1 };

int SetInterface(const CString& text, AddressPart part, std::size_t interfaceIndex) {
    const bool valid = part == PART_ADDRESS ? CDevBas::IsAvailableIPAddr(text)
                                            : CDevBas::IsAvailableMaskAddr(text);
    if (!valid)
        return RESULT_REFUSED;
    unsigned int count = 0;
    std::vector<QString> names;
    if (!CDevBas::getLocalcount_name(count, names))
        return RESULT_NO_INTERFACE;
    // The listing fails already when there is none; this guards the index for the second one.
    if (names.size() <= interfaceIndex)
        return RESULT_INTERFACE_MISSING;
    QString address = hxd::FromHost(text);
    return CDevBas::setLocalIp(address, part, names[interfaceIndex]) ? RESULT_DONE
                                                                     : RESULT_INTERFACE_NOT_SET;
}

int WriteAddress1(Write& write) {
    return SetInterface(write.text, PART_ADDRESS, 0);
}
int WriteNetmask1(Write& write) {
    return SetInterface(write.text, PART_NETMASK, 0);
}
int WriteAddress2(Write& write) {
    return SetInterface(write.text, PART_ADDRESS, 1);
}
int WriteNetmask2(Write& write) {
    return SetInterface(write.text, PART_NETMASK, 1);
}

// The numbers of the time channels are read from the text as a whole: "1" counts, "1.0" is no
// number and counts as 0.
template <int (NtpCtrl::*SET)(int)>
int WriteTimeNumber(Write& write) {
    NtpCtrl* const ntp = ServiceOf(write.data, &DEV_CONTEXT::m_pNtpCtrl);
    return ntp != nullptr ? (ntp->*SET)(hxd::FromHost(write.text).toInt()) : RESULT_DONE;
}

int WriteTimeServer(Write& write) {
    NtpCtrl* const ntp = ServiceOf(write.data, &DEV_CONTEXT::m_pNtpCtrl);
    const int slot = write.channel.number - CHANNEL_NTP_SERVER_1;
    return ntp != nullptr ? ntp->setNtpServer(hxd::FromHost(write.text), slot) : RESULT_DONE;
}

int WritePassword(Write& write) {
    return CDevBas::writeVncPwd(write.text);
}

int WriteBrightness(Write& write) {
    // Whether there is a control at all comes before the range.
    if (hal_display_get_backlight_brightness() == HAL_NO_SUCH_DEVICE)
        return RESULT_NO_BRIGHTNESS;
    if (!write.InRange())
        return RESULT_BAD_ARGUMENTS;
    const int rounded = CDevBas::RoundBrightness(write.value);
    if (hal_display_set_backlight_brightness(rounded) != 0)
        return RESULT_BRIGHTNESS_FAILED;
    write.Store(hxd::KEY_BACKLIGHT_BRIGHTNESS,
                rounded);  // the light is right whether this is or not
    return RESULT_DONE;
}

template <void (VNCLockProxy::*SET_MOUSE)(bool), void (VNCLockProxy::*SET_KEYBOARD)(bool)>
int WriteInputLock(Write& write) {
    VNCLockProxy* const lock = ServiceOf(write.data, &DEV_CONTEXT::m_pVncLock);
    if (lock == nullptr)
        return RESULT_DONE;
    if (!write.InRange())
        return RESULT_REFUSED;
    (lock->*SET_MOUSE)(write.value != 0);
    (lock->*SET_KEYBOARD)(write.value != 0);
    return RESULT_DONE;
}

struct WriterRow {
    int channel;
    int (*write)(Write& write);
};

constexpr WriterRow WRITERS[] = {
    {CHANNEL_IP_ADDRESS_1, WriteAddress1},
    {CHANNEL_NETMASK_1, WriteNetmask1},
    {CHANNEL_BUZZER_ENABLED, WriteBuzzerEnabled},
    {CHANNEL_BUZZER_DURATION, WriteBuzzerDuration},
    {CHANNEL_BACKLIGHT_AUTO_OFF, WriteBacklightAutoOff},
    {CHANNEL_BACKLIGHT_DELAY, WriteBacklightDelay},
    {CHANNEL_BUZZER_TEST, TestBuzzer},
    {CHANNEL_IP_ADDRESS_2, WriteAddress2},
    {CHANNEL_NETMASK_2, WriteNetmask2},
    {CHANNEL_NTP_SWITCH, WriteTimeNumber<&NtpCtrl::enableNtp>},
    {CHANNEL_NTP_MODE, WriteTimeNumber<&NtpCtrl::setNtpMode>},
    {CHANNEL_NTP_PERIOD, WriteTimeNumber<&NtpCtrl::setNtpFreq>},
    {CHANNEL_NTP_SERVER_1, WriteTimeServer},
    {CHANNEL_NTP_SERVER_1 + 1, WriteTimeServer},
    {CHANNEL_NTP_SERVER_1 + 2, WriteTimeServer},
    {CHANNEL_NTP_SERVER_4, WriteTimeServer},
    {CHANNEL_VNC_PASSWORD, WritePassword},
    {CHANNEL_BRIGHTNESS, WriteBrightness},
    {CHANNEL_LOCAL_INPUT_LOCKED,
     WriteInputLock<&VNCLockProxy::setHMIMouseState, &VNCLockProxy::setHMIKeyboardState>},
    {CHANNEL_REMOTE_INPUT_LOCKED,
     WriteInputLock<&VNCLockProxy::setVNCMouseState, &VNCLockProxy::setVNCKeyboardState>},
};

}  // namespace

int CDevBas::RoundBrightness(int percent) {
    return (percent + 2) / 5 * 5;
}

int CDevBas::mfDevIOWriteChannel(OLMA_DATA& data, const CString& args) {
    const Call call(data, CommandOf(COMMAND_OLMA_WRITE), args);
    if (!call.IsWellFormed())
        return RESULT_MALFORMED;
    const CString& number = call.Argument(0);
    const CString& text = call.Argument(1);
    const ChannelRow* const channel =
        FindChannel(hxd::ToInt(CDevServer::SvrStr2Double(number, number.GetLength())));
    if (channel == nullptr)
        return RESULT_DONE;
    hxd::AppSettings settings;
    if (!settings.IsOpen())
        return RESULT_DONE;
    const bool isText = DEV_LONG_CHLTYPE[channel->number] == DATATYPE_TEXT;
    const int value = isText ? 0 : hxd::ToInt(CDevServer::SvrStr2Double(text, text.GetLength()));
    Write write{data, *channel, value, text, settings};
    for (const WriterRow& row : WRITERS) {
        if (row.channel == channel->number)
            return row.write(write);
    }
    return RESULT_MALFORMED;
}
