// Writes to the driver's channels.
#ifndef HXD_CHANNELWRITE_H
#define HXD_CHANNELWRITE_H

#include "driver/record/OlmaData.h"

namespace CDevBas {

// Carries out "CHANNEL=VALUE". 0 = done, or ignored: a channel outside 1 to 32, and every write
// while the settings' lock file cannot be opened. Otherwise a negative ResultCode. Called by the
// dispatcher under g_halMutex.
int mfDevIOWriteChannel(OLMA_DATA& data, const CString& args);

// The nearest multiple of 5; percent is 0 to 100.
int RoundBrightness(int percent);

}  // namespace CDevBas

#endif
