// libolma-hal: directories, clock, sleep and buzzer of the simulated panel.
#include "olma_host.h"

#include "Remember.h"
#include "SimPanel.h"

using sim::PanelState;
using sim::SimPanel;

const char* Olma_GetDirectory(int kind, int /*option*/) {
    static sim::TextPool* const pool = new sim::TextPool;
    int result = 0;
    if (SimPanel::instance().shallFail(__func__, result))
        return "";
    std::string directory;
    SimPanel::instance().change([&](PanelState& state) {
        const auto found = state.directories.find(kind);
        if (found != state.directories.end())
            directory = found->second;
    });
    return pool->Keep(directory);
}

long long Olma_GetTickCount(void) {
    return SimPanel::instance().tick();
}

void Olma_Sleep(unsigned int milliseconds) {
    SimPanel::instance().sleep(milliseconds);
}

int Olma_Beep(unsigned int frequencyHz, unsigned int milliseconds) {
    int result = 0;
    if (!SimPanel::instance().shallFail(__func__, result))
        SimPanel::instance().change([=](PanelState& state) {
            sim::Remember(state.beeps, sim::Beep{frequencyHz, milliseconds});
        });
    return result;
}

int Olma_Check_Mount_Path(const char* directory) {
    int result = 0;
    if (SimPanel::instance().shallFail(__func__, result))
        return result;
    SimPanel::instance().change(
        [&](PanelState& state) { result = directory != nullptr && state.storageMounted ? 1 : 0; });
    return result;
}
