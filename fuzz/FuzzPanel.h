// The console around the driver in this program, for the targets of its user.
#ifndef HXD_FUZZ_FUZZPANEL_H
#define HXD_FUZZ_FUZZPANEL_H

#include "hxdpanel/console/Session.h"
#include "hxdpanel/host/DriverLibrary.h"
#include "hxdpanel/panel/HardwareCommands.h"
#include "hxdpanel/panel/HardwareMemory.h"

#include <memory>

// Made once; each input finds the panel as those before have left it.
class FuzzPanel {
public:
    static FuzzPanel& Instance();

    SessionParts Parts(SharedRun& shared) {
        return {database, device, output, memory, hardware, shared, nullptr, files};
    }

    HostDatabase database;
    DriverOutput output;

private:
    explicit FuzzPanel(std::unique_ptr<DriverLibrary> driver);

    PanelFiles files;
    std::unique_ptr<DriverLibrary> library;
    Device device;
    HardwareMemory memory;
    HardwareCommands hardware;
};

#endif
