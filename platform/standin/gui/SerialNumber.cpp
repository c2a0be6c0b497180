#include "Guarded.h"
#include "olma_gui.h"

const char* __gui_get_serial_number(void) {
    return sim::GuardedText(__func__, [](sim::PanelState& state) { return state.serialNumber; });
}
