// The library's two exported functions.
#include "driver/Barrier.h"
#include "driver/CDevCtrl.h"
#include "driver/Operation.h"

extern "C" __attribute__((visibility("default"))) IDeviceCtrl* CreateDeviceCtrl(const char* name,
                                                                                IRtdb* host) {
    return hxd::NoThrow(nullptr, [&]() -> IDeviceCtrl* { return new CDevCtrl(name, host); });
}

extern "C" __attribute__((visibility("default"))) int DestroyDeviceCtrl(IDeviceCtrl* device) {
    if (device == nullptr)
        return 1;
    return hxd::NoThrow(0, [&] {
        CDevCtrl* const ours = dynamic_cast<CDevCtrl*>(device);
        if (ours == nullptr || hxd::Operation::Postpone(*ours, hxd::Operation::DESTROY))
            return 0;
        ours->CleanupDevice();  // no thread of ours outlives its object
        delete ours;
        return 0;
    });
}
