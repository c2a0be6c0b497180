#include "fuzz/FuzzPanel.h"

namespace {

constexpr const char* MEMORY = "/root/panel-hardware.ini";
const std::vector<unsigned char> BLOB = {0, 0};

}  // namespace

FuzzPanel::FuzzPanel(std::unique_ptr<DriverLibrary> driver)
    : library(std::move(driver)),
      device(*library, database, BLOB, 32),
      memory(MEMORY),
      hardware(PanelRestart(files, memory,
                            [this] {
                                device.Restart();
                                return device.InitStatus() == HOST_OK;
                            }),
               {}) {
    files.memory = MEMORY;
}

FuzzPanel& FuzzPanel::Instance() {
    std::string error;
    static FuzzPanel& panel = *new FuzzPanel(DriverLibrary::Load("", error));
    return panel;
}
