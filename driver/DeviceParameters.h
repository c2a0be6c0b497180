// The device parameters that the host stores in the configuration blob.
//
// The blob, all numbers little-endian: optionally a mark (2 bytes, 20000), the parameter count (4
// bytes, signed), and that many parameters (4 bytes each, signed): device address, communication
// wait time in ms. A first number below 20000 is no mark but the beginning of the count. A blob
// that ends early continues with zeros.
#ifndef HXD_DEVICEPARAMETERS_H
#define HXD_DEVICEPARAMETERS_H

#include "driver/record/OlmaData.h"

namespace CDevBas {

// Sets the context's parameters to their defaults, and then to those of the record's archive unless
// its mark is 20001 or more: such a blob is not in this format.
void ReadDeviceParameters(OLMA_DATA& record);

// Reads count and parameters from the archive's position. A count that no archive could hold
// empties the array. Always 0.
int mfDeserializeFromOld(OLMA_DATA& record);

}  // namespace CDevBas

#endif
