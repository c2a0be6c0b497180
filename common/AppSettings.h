// The application settings: buzzer and backlight, shared with the host's GUI process.
#ifndef HXD_APPSETTINGS_H
#define HXD_APPSETTINGS_H

#include "common/FileLock.h"
#include "common/SettingsFile.h"

#include <QString>

namespace hxd {

extern const char* const appCfgLckPath;  // "/tmp/olma_app_conf.lck"

// The host's settings directory, with the panel's usual one for a host that names none.
QString AppConfigDirectory();

// Keys of section "DEVICE"; all values are decimal text.
extern const char* const KEY_BUZZ_DURATION;       // ms; "0" = buzzer off
extern const char* const KEY_BACKLIGHT_STATUS;    // "0" or "1"; the GUI also writes "true"/"false"
extern const char* const KEY_BACKLIGHT_DURATION;  // ms
extern const char* const KEY_BACKLIGHT_BRIGHTNESS;  // per cent

// Access to the settings file for the time the object lives. Each read and write holds the lock
// shared with the GUI only for itself and sees what the file holds at that moment; the lock file
// stays open in between.
class AppSettings {
public:
    AppSettings();

    // False when the lock file cannot be opened; nothing may be read or written then.
    bool IsOpen() const { return m_bOpen; }

    // 1 and 0; an absent key reads as the empty text, and a write that fails is not reported.
    int Read(const char* key, QString& value);
    int Write(const char* key, const QString& value);

private:
    HXDCTRL::FileLock m_lock;
    bool m_bOpen;
    SettingsFile m_file;
};

}  // namespace hxd

#endif
