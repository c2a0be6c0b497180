// The driver's identity and configuration texts (UTF-8), for the host's configuration side. The
// driver's own logic reads none of them.
#ifndef HXD_DRIVERTEXTS_H
#define HXD_DRIVERTEXTS_H

namespace DriverTexts {

constexpr const char* DRIVER_NAME = "HXDcontrol";
constexpr const char* DISPLAY_NAME = "HXD系统控制";
constexpr const char* DRIVER_FILE_FIRST = "HXDcontrolU.drv";
constexpr const char* DRIVER_FILE_SECOND = "HXDcontrolE.drv";
constexpr const char* STATUS_CHANNEL = "通讯状态";
constexpr const char* DEVICE_PARAMETERS[] = {"设备地址", "通讯等待时间"};
constexpr const char* CHECKSUM_CHOICES[] = {"0 - 不求校验", "1 - 求校验"};
constexpr const char* CHANNEL_NAMES[] = {"通道01", "通道02", "通道03", "通道04", "通道05",
                                         "通道06", "通道07", "通道08", "通道09", "通道10"};

}  // namespace DriverTexts

#endif
