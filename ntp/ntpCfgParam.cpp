#include "ntp/ntpCfgParam.h"

#include "common/File.h"
#include "common/IniOperator.h"
#include "olma_host.h"

#include <fcntl.h>
#include <unistd.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <cstdio>
#include <mutex>

const char* const ntp_cfg_name = "/ntp_param_cfg.ini";
const char* const ntpCfgSection = "NTP_PARAM";
const char* const ntpCfgNode[NTP_SETTING_COUNT] = {
    "ntp_switch",  "ntp_mode",    "ntp_freq",    "ntp_server1",
    "ntp_server2", "ntp_server3", "ntp_server4",
};
const char* const ntpDefCfg[NTP_SETTING_COUNT] = {
    "0", "1", "2", "0.pool.ntp.org", "1.pool.ntp.org", "2.pool.ntp.org", "3.pool.ntp.org",
};

namespace {

constexpr int FIRST_SERVER = NTP_SETTING_COUNT - NTP_SERVER_COUNT;

// The controllers of several devices share the file.
std::mutex g_fileLock;

QString SettingsDirectory() {
    return QFile::decodeName(Olma_GetDirectory(2, 1)) + QLatin1String("/config/");
}

// With two slashes before the name, which the system takes as one.
QString SettingsFile() {
    return SettingsDirectory() + QLatin1String(ntp_cfg_name);
}

QString KeyPath(int setting) {
    return QLatin1String(ntpCfgSection) + QLatin1Char('/') + QLatin1String(ntpCfgNode[setting]);
}

QString ReadText(const QSettings& file, int setting) {
    return file.value(KeyPath(setting), QLatin1String(ntpDefCfg[setting])).toString();
}

void SetAll(QSettings& file, const ntpCfgParam& settings) {
    const std::int32_t numbers[FIRST_SERVER] = {settings.ntpSwitch, settings.mode, settings.freq};
    for (int i = 0; i < FIRST_SERVER; ++i)
        file.setValue(KeyPath(i), QString::number(numbers[i]));
    for (int i = 0; i < NTP_SERVER_COUNT; ++i) {
        const QString server = i < settings.servers.size() ? settings.servers.at(i) : QString();
        file.setValue(KeyPath(FIRST_SERVER + i), server.isNull() ? QLatin1String("") : server);
    }
}

// Keys that are not ours survive.
void CopyAll(QSettings& to, const QString& from) {
    QSettings file(from, QSettings::IniFormat);
    file.setIniCodec("UTF-8");
    const QStringList keys = file.allKeys();
    for (int i = 0; i < keys.size(); ++i)
        to.setValue(keys.at(i), file.value(keys.at(i)));
}

bool WriteFile(const QString& path, const QString& previous, const ntpCfgParam& settings) {
    {
        QSettings file(path, QSettings::IniFormat);
        file.setIniCodec("UTF-8");
        CopyAll(file, previous);
        SetAll(file, settings);
        file.sync();
        if (file.status() != QSettings::NoError)
            return false;
    }
    if (QFile::exists(previous))
        QFile::setPermissions(path, QFile::permissions(previous));
    HXDCTRL::File written;
    return written.open(QFile::encodeName(path).constData(), O_RDONLY) &&
           ::fsync(written.Descriptor()) == 0;
}

}  // namespace

ntpCfgParam::ntpCfgParam() : ntpSwitch(0), mode(0), freq(0) {
    for (int i = 0; i < NTP_SERVER_COUNT; ++i)
        servers.append(QString());
}

bool operator==(const ntpCfgParam& a, const ntpCfgParam& b) {
    return a.ntpSwitch == b.ntpSwitch && a.mode == b.mode && a.freq == b.freq &&
           a.servers == b.servers;
}

bool operator!=(const ntpCfgParam& a, const ntpCfgParam& b) {
    return !(a == b);
}

void ntpCfgParam::ReadCfg() {
    QSettings file(SettingsFile(), QSettings::IniFormat);
    file.setIniCodec("UTF-8");
    ntpSwitch = ReadText(file, 0).toInt();
    mode = ReadText(file, 1).toInt();
    freq = ReadText(file, 2).toInt();
    for (int i = 0; i < NTP_SERVER_COUNT; ++i)
        servers[i] = ReadText(file, FIRST_SERVER + i);
}

// QSettings writes in place with Qt 4, so it gets a file of its own that then replaces the real
// one.
void ntpCfgParam::writeCfg() const {
    if (!QDir().mkpath(SettingsDirectory()))
        return;
    const std::lock_guard<std::mutex> locker(g_fileLock);
    QString path = SettingsFile();
    if (QFile::exists(path))
        path = QFileInfo(path).canonicalFilePath();  // a link stays a link
    const QString replacement = path + QLatin1String(".new");
    // What a process that was killed here has left. For Qt's lock file a later process that happens
    // to have the same number would wait half a minute.
    QFile::remove(replacement);
    QFile::remove(replacement + QLatin1String(".lock"));

    const hxd::ModificationMark mark(path);
    if (WriteFile(replacement, path, *this) &&
        std::rename(QFile::encodeName(replacement).constData(),
                    QFile::encodeName(path).constData()) == 0)
        mark.Settle();
    else
        QFile::remove(replacement);
    ::sync();
}
