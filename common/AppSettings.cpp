#include "common/AppSettings.h"

#include "common/IniOperator.h"
#include "olma_host.h"

#include <QFile>

namespace hxd {

const char* const appCfgLckPath = "/tmp/olma_app_conf.lck";

const char* const KEY_BUZZ_DURATION = "buzz_duration";
const char* const KEY_BACKLIGHT_STATUS = "backlight_status";
const char* const KEY_BACKLIGHT_DURATION = "backlight_duration";
const char* const KEY_BACKLIGHT_BRIGHTNESS = "backlight_brightness";

namespace {

QString DeviceSection() {
    return QLatin1String("DEVICE");
}

}  // namespace

QString AppConfigDirectory() {
    const QString directory = QFile::decodeName(Olma_GetDirectory(1));
    return directory.isEmpty() ? QString(QLatin1String("/usr/olma_app/config")) : directory;
}

AppSettings::AppSettings()
    : m_bOpen(m_lock.open(appCfgLckPath)),
      m_strFile(AppConfigDirectory() + QLatin1String("/olma_app_conf.ini")) {}

int AppSettings::Read(const char* key, QString& value) {
    HXDCTRL::FileLocker locker(m_lock);
    return IniOperator::FileIniReadValue(m_strFile, DeviceSection(), QLatin1String(key), value,
                                         QString());
}

int AppSettings::Write(const char* key, const QString& value) {
    HXDCTRL::FileLocker locker(m_lock);
    return IniOperator::FileIniWriteValue(m_strFile, DeviceSection(), QLatin1String(key), value);
}

}  // namespace hxd
