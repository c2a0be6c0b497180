#include "hxdcheck/host/HostChecks.h"

#include "hxdpanel/host/DriverLibrary.h"
#include "hxdpanel/host/HostDatabase.h"

namespace {

// Calls that have no effect, with what they answer; another answer comes from another slot.
struct Slot {
    const char* name;
    int (*call)(IDeviceCtrl& device);
    int expected;
};

const Slot SLOTS[] = {
    {"InitDevice", [](IDeviceCtrl& device) { return device.InitDevice(nullptr, 0); },
     HOST_BAD_ARGUMENT},
    {"CleanupDevice", [](IDeviceCtrl& device) { return device.CleanupDevice(); }, HOST_OK},
    {"CollectDevData", [](IDeviceCtrl& device) { return device.CollectDevData(nullptr, 0); },
     HOST_OK},
    {"DevIOCtrl", [](IDeviceCtrl& device) { return device.DevIOCtrl(nullptr); }, HOST_BAD_ARGUMENT},
    {"WriteChannel",
     [](IDeviceCtrl& device) { return device.WriteChannel(-1, DATATYPE_INTEGER, nullptr); },
     HOST_BAD_ARGUMENT},
    {"UpdataCommunication", [](IDeviceCtrl& device) { return device.UpdataCommunication(nullptr); },
     HOST_BAD_ARGUMENT},
    {"ChannelRefChange", [](IDeviceCtrl& device) { return device.ChannelRefChange(nullptr, 0); },
     HOST_BAD_ARGUMENT},
    {"SetChannelAddress", [](IDeviceCtrl& device) { return device.SetChannelAddress(0, 0); },
     HOST_OK},
};

const char* const SAME_HEADER =
    "the order of the operations in host.h differs from the driver's: build both with the "
    "vendor's host.h";

Finding CheckSlots(IDeviceCtrl& device) {
    for (const Slot& slot : SLOTS) {
        const int answer = slot.call(device);
        if (answer != slot.expected)
            return Wrong(std::string(slot.name) + " gives " + std::to_string(answer) +
                             " instead of " + std::to_string(slot.expected),
                         SAME_HEADER);
    }
    return Ok("all eight operations answer as they should");
}

}  // namespace

bool CheckInterface(Findings& findings, const DriverLibrary& driver) {
    HostDatabase host;
    IDeviceCtrl* device = nullptr;
    const auto create = [&] {
        device = driver.Create("hxdcheck", &host);
        return device != nullptr ? Ok("made") : Wrong("gives null", "no memory left");
    };
    const auto destroy = [&] {
        const bool done = driver.Destroy(device) == HOST_OK && driver.Destroy(nullptr) == 1;
        return done ? Ok("released") : Wrong("gives another answer", SAME_HEADER);
    };
    if (findings.Run("create", create).status != Finding::OK)
        return false;
    const auto checkSlots = [&] { return CheckSlots(*device); };
    const Finding answered = findings.Run("slots", checkSlots, 10, SAME_HEADER);
    const Finding released = findings.Run("destroy", destroy, 10, SAME_HEADER);
    return answered.status == Finding::OK && released.status == Finding::OK;
}
