#include "hxdcheck/host/HostChecks.h"

#include "common/File.h"
#include "common/ResultCodes.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/host/Device.h"
#include "hxdpanel/host/ShownChannel.h"
#include "ntp/ntpCfgParam.h"
#include "olma_gui.h"

#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <thread>

namespace {

constexpr int COLLECTION_SECONDS = 60;
const unsigned char CONFIGURATION[] = {0, 0, 0, 0};  // a device without parameters

const char* const OTHER_TEXTS =
    "driver and host have different kinds of std::string: build both with the same "
    "_GLIBCXX_USE_CXX11_ABI";

long StatusNumber(const std::string& status, const char* key) {
    const std::size_t found = status.find(key);
    return found == std::string::npos
               ? 0
               : std::strtol(status.c_str() + found + std::string(key).size(), nullptr, 10);
}

Finding Judge(int status, const char* done) {
    return status == HOST_OK
               ? Ok(done)
               : Wrong("gives " + std::to_string(status) + ": " + StatusMeaning(status),
                       "see the lines above");
}

ChannelLine MakeLine(const ShownChannel& channel) {
    const char* const meaning = channel.Meaning();
    return {std::to_string(channel.number), channel.name, Trimmed(channel.UnitSuffix()),
            channel.Value(), meaning != nullptr ? meaning : ""};
}

// The numbers of the channels for which it holds.
template <class HOLDS>
std::string Numbers(const ShownChannels& channels, HOLDS holds) {
    std::string numbers;
    for (const ShownChannel& channel : channels) {
        if (holds(channel))
            numbers += (numbers.empty() ? "" : ", ") + std::to_string(channel.number);
    }
    return numbers;
}

Finding JudgeValues(const ShownChannels& channels) {
    const std::string missing =
        Numbers(channels, [](const ShownChannel& one) { return !one.received.delivered; });
    if (!missing.empty())
        return Wrong("not delivered: " + missing, "the order of IRtdb's operations in host.h");
    const std::string special =
        Numbers(channels, [](const ShownChannel& one) { return one.Meaning() != nullptr; });
    if (!special.empty())
        return Look("without a value: channels " + special,
                    "right if the panel has no such hardware; docs/channels.md and docs/storage.md "
                    "tell more");
    return Ok(std::to_string(channels.size()) +
              " delivered; compare them with the panel's own screens");
}

// A text goes to the driver and another comes back, both as std::string.
Finding CheckTexts(Device& device, HostDatabase& host) {
    host.SetVariable("text", HostValue::Text("abc"));
    host.SetVariable("digest", HostValue::Text(""));
    device.Command("STRSHA256(text,digest)");
    HostValue digest;
    host.FindVariable("digest", digest);
    if (digest.text != "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad")
        return Wrong("the digest of \"abc\" arrives as \"" + digest.text.substr(0, 80) + "\"",
                     OTHER_TEXTS);
    return Ok("std::string goes there and back");
}

// A text comes by itself, as a channel's value, and what it must be is known.
Finding CheckDelivery(const HostDatabase& host) {
    const char* const number = __gui_get_serial_number();
    const bool none = number == nullptr || *number == '\0';
    const HostDatabase::Received received = host.Channel(CHANNEL_SERIAL_NUMBER);
    if (!received.delivered || received.value.text.empty())
        return Look("channel 20 has no text",
                    "/tmp/olma_app_conf.lck above; without it the driver reads little");
    if (received.value.text != (none ? NO_SERIAL_NUMBER : number))
        return Wrong("channel 20 arrives as \"" + received.value.text.substr(0, 80) + "\"",
                     std::string("the platform says otherwise; ") + OTHER_TEXTS);
    return Ok("channel 20 arrives as the platform says it");
}

// With the automatic mode on, the start of the driver sets the panel's clock.
bool MayStart(FindingPipe& findings, bool mayAsk) {
    ntpCfgParam settings;
    settings.ReadCfg();
    if (settings.ntpSwitch != 1 || settings.mode != 1)
        return true;
    bool allowed = false;
    findings.Run(
        "start",
        [&] {
            allowed = mayAsk && findings.Ask(
                                    "Automatic time synchronisation is on: starting the "
                                    "driver may set the clock. Start it?");
            return allowed ? Ok("allowed")
                           : Look(
                                 "not tried: automatic time synchronisation is on, and starting "
                                 "the driver would set the clock",
                                 "hxdcheck --act asks and goes on");
        },
        0);
    return allowed;
}

class DeviceCheck {
public:
    DeviceCheck(FindingPipe& findings, const DriverLibrary& driver)
        : m_findings(findings), m_driver(driver) {}

    void Run(const Usage& before) {
        Step("start", 2000.0F, [this] {
            m_device = std::make_unique<Device>(
                m_driver, m_host,
                std::vector<unsigned char>(std::begin(CONFIGURATION), std::end(CONFIGURATION)),
                CHANNEL_COUNT);
            return Judge(m_device->InitStatus(), "started");
        });
        if (m_device->InitStatus() == HOST_OK) {
            m_findings.Run(
                "texts", [this] { return CheckTexts(*m_device, m_host); }, 10, OTHER_TEXTS);
            Collections();
        }
        const Usage running = CurrentUsage();
        Step("end", 3000.0F, [this] {
            m_device.reset();
            return Ok("ended");
        });
        m_findings.Run("memory", [&] { return JudgeMemory(before, running); });
        m_findings.Run("threads",
                       [&] { return JudgeThreads(before, running, UsageWhenEnded(before)); });
        ShowChannels();
    }

private:
    template <class WHAT>
    void Step(const char* name, float slowMs, WHAT what) {
        m_findings.Run(
            name, [&] { return Timed(slowMs, what); }, COLLECTION_SECONDS,
            "the line before the crash or stop tells which source; see the platform's functions");
    }

    void Collections() {
        const auto collect = [this] { return Judge(m_device->Collect(), "done"); };
        Step("first collection", 5000.0F, collect);
        m_findings.Run(
            "delivered text", [this] { return CheckDelivery(m_host); }, 10, OTHER_TEXTS);
        Step("cached collection", 100.0F, collect);
        m_device->Command("REFLESH()");
        Step("full collection", 5000.0F, collect);
    }

    static Finding JudgeMemory(const Usage& before, const Usage& running) {
        const long kibibytes = std::max(0L, running.memoryKiB - before.memoryKiB);
        const std::string text = std::to_string(kibibytes) + " KiB more than without the driver";
        return kibibytes < 16 * 1024 ? Ok(text) : Look(text, "look whether it grows: top -p PID");
    }

    // A thread that has been joined may be listed by the kernel for a moment yet.
    static Usage UsageWhenEnded(const Usage& before) {
        Usage usage = CurrentUsage();
        for (int i = 0; i < 200 && usage.threads > before.threads; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            usage = CurrentUsage();
        }
        return usage;
    }

    static Finding JudgeThreads(const Usage& before, const Usage& running, const Usage& after) {
        const std::string text = std::to_string(running.threads - before.threads) +
                                 " while it runs, " +
                                 std::to_string(after.threads - before.threads) + " left after";
        return after.threads <= before.threads ? Ok(text) : Wrong(text, "report it with this list");
    }

    void ShowChannels() {
        std::vector<int> numbers(CHANNEL_COUNT);
        std::iota(numbers.begin(), numbers.end(), 1);
        const ShownChannels channels = ::ShowChannels(m_host, numbers);
        m_findings.Group("The channels");
        for (const ShownChannel& channel : channels)
            m_findings.Channel(MakeLine(channel));
        m_findings.Run("values", [&] { return JudgeValues(channels); });
    }

    FindingPipe& m_findings;
    const DriverLibrary& m_driver;
    HostDatabase m_host;
    std::unique_ptr<Device> m_device;
};

}  // namespace

Usage CurrentUsage() {
    HXDCTRL::File file;
    const std::string status =
        file.open("/proc/self/status", O_RDONLY) ? file.readAll() : std::string();
    return {StatusNumber(status, "VmRSS:"), StatusNumber(status, "Threads:")};
}

void CheckDevice(FindingPipe& findings, const DriverLibrary& driver, const Usage& before,
                 bool mayAsk) {
    if (MayStart(findings, mayAsk))
        DeviceCheck(findings, driver).Run(before);
}
