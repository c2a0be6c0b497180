#include "common/IniOperator.h"

#include "common/SettingsFile.h"

int IniOperator::FileIniWriteValue(const QString& file, const QString& section, const QString& key,
                                   const QString& value) {
    if (file.isEmpty() || section.isEmpty() || key.isEmpty())
        return -1;
    hxd::SettingsFile(file, hxd::CODEC_UTF8).Store({{section + QLatin1Char('/') + key, value}});
    return 0;
}

int IniOperator::FileIniReadValue(const QString& file, const QString& section, const QString& key,
                                  QString& value, const QString& defaultValue) {
    if (file.isEmpty() || section.isEmpty() || key.isEmpty())
        return 0;
    hxd::SettingsFile settings(file, hxd::CODEC_UTF8);
    settings.Load();
    value = settings.Value(section + QLatin1Char('/') + key, defaultValue);
    return 1;
}
