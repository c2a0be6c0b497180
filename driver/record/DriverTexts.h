// The driver's identity and configuration texts (UTF-8), for the host's configuration side. The
// driver's own logic reads none of them.
#ifndef HXD_DRIVERTEXTS_H
#define HXD_DRIVERTEXTS_H

namespace DriverTexts {

extern const char* const DRIVER_NAME;
extern const char* const DISPLAY_NAME;
extern const char* const DRIVER_FILE_FIRST;
extern const char* const DRIVER_FILE_SECOND;
extern const char* const STATUS_CHANNEL;
extern const char* const DEVICE_PARAMETERS[2];
extern const char* const CHECKSUM_CHOICES[2];
extern const char* const CHANNEL_NAMES[10];

}  // namespace DriverTexts

#endif
