#include "common/AppSettings.h"

#include "olma_host.h"

#include <QFile>

namespace hxd {

const char* const appCfgLckPath = "/tmp/olma_app_conf.lck";

const char* const KEY_BUZZ_DURATION = "buzz_duration";
const char* const KEY_BACKLIGHT_STATUS = "backlight_status";
const char* const KEY_BACKLIGHT_DURATION = "backlight_duration";
const char* const KEY_BACKLIGHT_BRIGHTNESS = "backlight_brightness";

namespace {

QString KeyPath(const char* key) {
    return QLatin1String("DEVICE/") + QLatin1String(key);
}

}  // namespace

QString AppConfigDirectory() {
    const QString directory = QFile::decodeName(Olma_GetDirectory(1));
    return directory.isEmpty() ? QString(QLatin1String("/usr/olma_app/config")) : directory;
}

AppSettings::AppSettings()
    : m_bOpen(m_lock.open(appCfgLckPath)),
      m_file(AppConfigDirectory() + QLatin1String("/olma_app_conf.ini"), CODEC_UTF8) {}

int AppSettings::Read(const char* key, QString& value) {
    HXDCTRL::FileLocker locker(m_lock);
    m_file.Load();
    value = m_file.Value(KeyPath(key));
    return 1;
}

int AppSettings::Write(const char* key, const QString& value) {
    HXDCTRL::FileLocker locker(m_lock);
    m_file.Store({{KeyPath(key), value}});
    return 0;
}

}  // namespace hxd
