#include "olma_host.h"

#include "Guarded.h"

using sim::Guarded;
using sim::PanelState;
using sim::SimPanel;

// The directories do not depend on the option.
const char* Olma_GetDirectory(int kind, int /*option*/) {
    return sim::GuardedText(__func__, [kind](PanelState& state) {
        const auto found = state.directories.find(kind);
        return found == state.directories.end() ? std::string() : found->second;
    });
}

long long Olma_GetTickCount(void) {
    return SimPanel::Instance().Tick();
}

void Olma_Sleep(unsigned int milliseconds) {
    try {
        SimPanel::Instance().Sleep(milliseconds);
    } catch (...) {
        // No memory to note the sleeper down: the caller goes on at once.
    }
}

int Olma_Beep(unsigned int frequencyHz, unsigned int milliseconds) {
    return Guarded(__func__, [=](PanelState& state) {
        sim::Keep(state.beeps, sim::Beep{frequencyHz, milliseconds});
        return 0;
    });
}

int Olma_Check_Mount_Path(const char* directory) {
    return Guarded(__func__, [directory](PanelState& state) {
        if (!directory)
            return -EINVAL;
        return state.storageMounted ? 1 : 0;
    });
}
