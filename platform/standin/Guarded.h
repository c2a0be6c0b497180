// The frame of every platform function: the injected failure first, then the work under the
// panel's lock, and no exception across the C interface.
#ifndef GUARDED_H
#define GUARDED_H

#include "SimPanel.h"

#include <cerrno>

namespace sim {

// work: int (PanelState&). -ENOMEM when memory is exhausted.
template <class WORK>
int Guarded(const char* function, WORK work) noexcept {
    try {
        int result = 0;
        if (SimPanel::Instance().ShallFail(function, result))
            return result;
        SimPanel::Instance().Change([&](PanelState& state) { result = work(state); });
        return result;
    } catch (...) {
        return -ENOMEM;
    }
}

// The same for functions that return text. work: std::string (PanelState&); "" on any failure.
template <class WORK>
const char* GuardedText(const char* function, WORK work) noexcept {
    try {
        std::string text;
        int result = 0;
        if (SimPanel::Instance().ShallFail(function, result))
            return "";
        SimPanel::Instance().Change([&](PanelState& state) { text = work(state); });
        return SimPanel::Instance().KeepText(text);
    } catch (...) {
        return "";
    }
}

}  // namespace sim

#endif
