// The link over which the host talks to a device; the panel's own driver needs none, so this one
// only answers.
#ifndef HXDPANEL_HOSTLINK_H
#define HXDPANEL_HOSTLINK_H

#include "host.h"

class HostLink : public ICommunication {
public:
    virtual ~HostLink() = default;

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
    int SetDeviceName(char*) override { return 0; }
    int GetLinkType() override { return 1; }
};

#endif
