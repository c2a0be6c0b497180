// A communication link and a foreign device, for tests of the device object.
#ifndef HXD_TESTS_FAKELINK_H
#define HXD_TESTS_FAKELINK_H

#include "host.h"

#include <string>

class FakeLink final : public ICommunication {
public:
    int kind = 1;
    std::string deviceName;  // all names that were announced, one behind the other

    int ReservedSlot1() override { return 0; }
    int ReservedSlot2() override { return 0; }
    int ReservedSlot3() override { return 0; }
    int ReservedSlot4() override { return 0; }
    int ReservedSlot5() override { return 0; }
    int ReservedSlot6() override { return 0; }
    int ReservedSlot7() override { return 0; }
    int ReservedSlot8() override { return 0; }
    int ReservedSlot9() override { return 0; }
    int ReservedSlot10() override { return 0; }
    int ReservedSlot11() override { return 0; }
    int ReservedSlot12() override { return 0; }
    int ReservedSlot13() override { return 0; }
    int ReservedSlot14() override { return 0; }
    int ReservedSlot15() override { return 0; }
    int SetDeviceName(char* name) override {
        deviceName += name;
        return 0;
    }
    int GetLinkType() override { return kind; }
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
