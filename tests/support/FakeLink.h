// A communication link and a foreign device, for tests of the device object.
#ifndef HXD_TESTS_FAKELINK_H
#define HXD_TESTS_FAKELINK_H

#include "host.h"
#include "hxdpanel/host/HostLink.h"

#include <functional>
#include <string>

class FakeLink final : public HostLink {
public:
    int kind = 1;
    std::string deviceName;  // all names that were announced, one behind the other
    std::function<void()> onCall = [] {};

    int SetDeviceName(char* name) override {
        deviceName += name;
        onCall();
        return 0;
    }
    int GetLinkType() override {
        onCall();
        return kind;
    }
};

class ForeignDevice final : public IDeviceCtrl {
public:
    int InitDevice(const unsigned char*, int) override { return 0; }
    int CleanupDevice() override { return 0; }
    int CollectDevData(const int*, int) override { return 0; }
    int DevIOCtrl(const char*) override { return 0; }
    int WriteChannel(int, DATATYPE, void*) override { return 0; }
    int UpdataCommunication(ICommunication*) override { return 0; }
    int ChannelRefChange(const int*, int) override { return 0; }
    int SetChannelAddress(int, int) override { return 0; }
};

#endif
