#include "driver/record/DriverTexts.h"

namespace DriverTexts {

const char* const DRIVER_NAME = "HXDcontrol";
const char* const DISPLAY_NAME = "HXD系统控制";
const char* const DRIVER_FILE_FIRST = "HXDcontrolU.drv";
const char* const DRIVER_FILE_SECOND = "HXDcontrolE.drv";
const char* const STATUS_CHANNEL = "通讯状态";
const char* const DEVICE_PARAMETERS[2] = {"设备地址", "通讯等待时间"};
const char* const CHECKSUM_CHOICES[2] = {"0 - 不求校验", "1 - 求校验"};
const char* const CHANNEL_NAMES[10] = {"通道01", "通道02", "通道03", "通道04", "通道05",
                                       "通道06", "通道07", "通道08", "通道09", "通道10"};

}  // namespace DriverTexts
