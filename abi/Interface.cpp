// What the driver shares with the host and with the panel's other drivers, gathered in one library
// so that its binary form can be described and compared: the operations' order in the virtual
// tables and the records' layout. Compiled only; nothing is called.
#include "driver/record/DevContext.h"
#include "driver/record/OlmaData.h"
#include "host.h"
#include "olma_hal.h"

#define DESCRIBED extern "C" __attribute__((visibility("default"))) void

DESCRIBED DescribeEntries(decltype(&CreateDeviceCtrl), decltype(&DestroyDeviceCtrl)) {}
DESCRIBED DescribeStatus(HOST_STATUS) {}
DESCRIBED DescribeDevice(IDeviceCtrl*) {}
DESCRIBED DescribeHost(IRtdb*) {}
DESCRIBED DescribeLink(ICommunication*) {}
DESCRIBED DescribeLock(IVNCLock*) {}
DESCRIBED DescribeRecord(OLMA_DATA*) {}
DESCRIBED DescribeContext(DEV_CONTEXT*) {}
DESCRIBED DescribeNetworkInterface(hal_network_t*) {}
DESCRIBED DescribeSerialPort(hal_uart_info_t*) {}
DESCRIBED DescribeTexts(CString*, CStringArray*, CByteArray*) {}
