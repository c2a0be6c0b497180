// The one device of the panel's driver, from creation to destruction.
#ifndef HXDPANEL_DEVICE_H
#define HXDPANEL_DEVICE_H

#include "hxdpanel/host/DriverLibrary.h"
#include "hxdpanel/host/HostLink.h"
#include "hxdpanel/host/HostValue.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

// Not to be entered from two threads at once.
class Device {
public:
    // Creates and initialises the device. Without success every operation answers HOST_BAD_ARGUMENT
    // and InitStatus() tells why. The library and the host outlive the device.
    Device(const DriverLibrary& library, IRtdb& host, const std::vector<unsigned char>& blob,
           int channelCount);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    // Ends the device and makes it anew, as when the panel is switched off and on.
    void Restart();
    // Run before each operation.
    void SetBeforeCall(std::function<void()> call) { m_beforeCall = std::move(call); }

    int InitStatus() const { return m_nInitStatus; }

    int Collect();  // brings the host's channels up to date
    int Command(const std::string& text);
    int Write(int number, const HostValue& value);  // 1-based number of the channel

private:
    void Start();
    void End();
    bool Enter() const;  // false: the device is none

    const DriverLibrary& m_library;
    IRtdb& m_host;
    const std::vector<unsigned char> m_blob;
    std::function<void()> m_beforeCall;
    HostLink m_link;
    IDeviceCtrl* m_pDevice = nullptr;
    std::vector<int> m_channels;  // what the host asks for
    int m_nInitStatus = HOST_BAD_ARGUMENT;
};

#endif
