// The collection cycle's full reading of the panel's state.
#ifndef HXD_REFRESHCYCLE_H
#define HXD_REFRESHCYCLE_H

#include "common/Maybe.h"
#include "driver/record/OlmaData.h"
#include "olma_hal.h"

class QString;

namespace CDevBas {

// Reads every source into the two arrays, both indexed by channel number; channels beyond an
// array's size are left out. A source that fails leaves its channels as they were, or shows the
// sentinel that the channel reference names. Always 1. Runs on the host's collection thread, which
// waits without bound for the lock of the settings and for the storage manager to have measured
// (usually 200 ms; as long as the commands that it runs take, where a storage has died).
int refleshData(OLMA_DATA& data, CArray<double, double>& values, CStringArray& strings);

// What the channels make of their sources.
hxd::Maybe<double> ParseSwitch(const QString& text);  // "0" and "false", "1" and "true"
double UartUsePercent(const hal_uart_info_t& info);

}  // namespace CDevBas

#endif
