// A host that throws, calls back, and answers with anything, wherever the driver calls it.
#include "fuzz/Fuzz.h"
#include "fuzz/Refusals.h"
#include "host.h"
#include "hxdpanel/host/HostLink.h"
#include "hxdpanel/host/LockPlugin.h"

#include <QCoreApplication>

#include <stdexcept>
#include <vector>

namespace {

constexpr int MOST_DEPTH = 3;  // of calls from within callbacks
constexpr int MOST_STEPS = 8;

// The remote-view plug-in, or none, or what only has its name, or one that locks by itself.
void SetPlugin(int kind) {
    static LockPlugin& plugin = *QCoreApplication::instance()->findChild<LockPlugin*>();
    static QObject& other = *new QObject(plugin.parent());
    const QString name = QLatin1String("olma.vnc.lock");
    plugin.setObjectName(kind % 2 == 0 ? name : QString());
    other.setObjectName(kind % 4 == 1 ? name : QString());
    plugin.setHMIKeyboardState(kind % 4 == 2);
    plugin.setVNCKeyboardState(kind % 4 == 2);
}

class WildHost final : public IRtdb, public HostLink {
public:
    // What the callbacks do; null: nothing but their work.
    void Follow(Input* input) { m_input = input; }
    void RunOne();
    // The device is as good as new, whatever was done to it.
    void ExpectHealthy();

    int GetParamType(const char*, DATATYPE* type) override {
        *type = static_cast<DATATYPE>(Wild() ? m_input->ConsumeIntegralInRange(-3, 5) : 1);
        return Answer();
    }
    int GetParamInt(const char*, int* value) override {
        *value = Wild() ? m_input->ConsumeIntegral<int>() : 0;
        return Answer();
    }
    int GetParamDouble(const char*, double* value) override {
        *value = Wild() ? m_input->ConsumeFloatingPoint<double>() : 0.0;
        return Answer();
    }
    int GetParamString(const char*, std::string* value) override {
        *value = WildText();
        return Answer();
    }
    int SetParamInt(const char*, int) override { return Answer(); }
    int SetParamDouble(const char*, double) override { return Answer(); }
    int SetParamString(const char*, const std::string*) override { return Answer(); }
    int GetChannelType(int, int* type) override {
        *type = Wild() ? m_input->ConsumeIntegralInRange(-1, 4) : 2;
        return Answer();
    }
    int ReservedSlot9() override { std::abort(); }
    int ReservedSlot10() override { std::abort(); }
    int ReservedSlot11() override { std::abort(); }
    int SetChannelInt(int, int) override { return Answer(); }
    int SetChannelDouble(int, double) override { return Answer(); }
    int SetChannelString(int, const std::string*) override { return Answer(); }
    int SetDeviceName(char*) override { return Answer(); }
    int GetLinkType() override {
        const int answer = Answer();
        return Wild() ? m_input->ConsumeIntegralInRange(0, 3) : answer + 1;
    }

private:
    bool Wild() const { return m_input != nullptr && m_input->remaining_bytes() > 0; }
    std::string WildText() {
        if (!Wild())
            return std::string();
        const std::string text = m_input->ConsumeRandomLengthString(100);
        return m_input->ConsumeIntegral<std::uint8_t>() == 1 ? text + std::string(100000, 'x')
                                                             : text;
    }
    int Answer() {
        const int choice = Wild() ? m_input->ConsumeIntegral<std::uint8_t>() : 0;
        if (choice == 1)
            throw std::runtime_error("host");
        if (choice == 2)
            throw choice;
        if (choice >= 0xC0)
            RunOne();
        return choice == 3 ? -1 : 0;
    }
    IDeviceCtrl& Device() {
        if (m_device == nullptr)
            m_device = CreateDeviceCtrl("wild", m_isNobody ? nullptr : this);
        return *m_device;
    }
    void Destroy() {
        FUZZ_EXPECT(DestroyDeviceCtrl(m_device) == (m_device == nullptr ? 1 : 0));
        m_device = nullptr;
    }
    int Init() {
        const std::string blob = m_input->ConsumeRandomLengthString(64);
        return Device().InitDevice(reinterpret_cast<const unsigned char*>(blob.data()),
                                   static_cast<int>(blob.size()));
    }

    void GiveNothing() {
        IDeviceCtrl& device = Device();
        FUZZ_EXPECT(device.InitDevice(nullptr, 1) == HOST_BAD_ARGUMENT);
        FUZZ_EXPECT(device.DevIOCtrl(nullptr) == HOST_BAD_ARGUMENT);
        FUZZ_EXPECT(device.WriteChannel(0, DATATYPE_INTEGER, nullptr) == HOST_BAD_ARGUMENT);
        FUZZ_EXPECT(device.CollectDevData(nullptr, 1) == HOST_OK);
        FUZZ_EXPECT(device.UpdataCommunication(nullptr) == HOST_BAD_ARGUMENT);
        FUZZ_EXPECT(device.ChannelRefChange(nullptr, 1) == HOST_BAD_ARGUMENT);
        const int one = 1;  // of many more than can be
        FUZZ_EXPECT(device.ChannelRefChange(&one, 100000) == HOST_BAD_ARGUMENT);
        FUZZ_EXPECT(device.CollectDevData(&one, 100000) == HOST_BAD_ARGUMENT);
    }

    Input* m_input = nullptr;
    IDeviceCtrl* m_device = nullptr;
    int m_depth = 0;
    bool m_isNobody = false;  // the device is made without a host
};

void WildHost::RunOne() {
    if (!Wild() || m_depth >= MOST_DEPTH)
        return;
    ++m_depth;
    const std::vector<int> channels(100, 1);
    int number = m_input->ConsumeIntegral<std::int8_t>();
    switch (m_input->ConsumeIntegral<std::uint8_t>() % 16) {
        case 0:
            Device().CleanupDevice();
            break;
        case 1:
            Destroy();
            break;
        case 2:
        case 3:
            Init();
            break;
        case 4:
            Device().UpdataCommunication(this);
            break;
        case 5:
            Device().ChannelRefChange(channels.data(), number);
            break;
        case 6:
            Device().WriteChannel(number, DATATYPE_INTEGER, &number);
            break;
        case 10:
            machine::Refuse(number);
            break;
        case 11:
            SetPlugin(number);
            break;
        case 12:
            Destroy();
            m_isNobody = number % 2 != 0;
            break;
        case 13:
            GiveNothing();
            break;
        case 7:
        case 8:
        case 9:
            Device().CollectDevData(channels.data(), std::min(number, 100));
            break;
        default:
            Device().DevIOCtrl(m_input->ConsumeRandomLengthString(200).c_str());
    }
    --m_depth;
}

void WildHost::ExpectHealthy() {
    m_input = nullptr;
    machine::Refuse(machine::NOTHING);
    SetPlugin(0);
    if (m_isNobody)
        Destroy();
    m_isNobody = false;
    const unsigned char blob[] = {0, 0};
    const std::vector<int> channels(32, 1);
    FUZZ_EXPECT(Device().InitDevice(blob, sizeof blob) == HOST_OK);
    FUZZ_EXPECT(Device().DevIOCtrl("Nothing()") == 0);
    FUZZ_EXPECT(Device().CollectDevData(channels.data(), 32) == 0);
}

}  // namespace

void fuzz::Host(Input& input) {
    static WildHost& host = *new WildHost;
    host.Follow(&input);
    for (int step = 0; step < MOST_STEPS && input.remaining_bytes() > 0; ++step)
        host.RunOne();
    host.ExpectHealthy();
}
