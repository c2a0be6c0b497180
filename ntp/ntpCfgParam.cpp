#include "ntp/ntpCfgParam.h"

#include "common/Mutex.h"
#include "common/SettingsFile.h"
#include "olma_host.h"

#include <QDir>
#include <QFile>

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
hxd::Mutex g_fileLock;

QString SettingsDirectory() {
    return QFile::decodeName(Olma_GetDirectory(2, 1)) + QLatin1String("/config/");
}

// With two slashes before the name, which the system takes as one.
QString SettingsPath() {
    return SettingsDirectory() + QLatin1String(ntp_cfg_name);
}

QString KeyPath(int setting) {
    return QLatin1String(ntpCfgSection) + QLatin1Char('/') + QLatin1String(ntpCfgNode[setting]);
}

QString Text(const hxd::SettingsFile& file, int setting) {
    return file.Value(KeyPath(setting), QLatin1String(ntpDefCfg[setting]));
}

void Store(const hxd::SettingsValues& values) HXD_REQUIRES(g_fileLock) {
    hxd::SettingsFile(SettingsPath(), hxd::CODEC_UTF8).Store(values);
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
    hxd::SettingsFile file(SettingsPath(), hxd::CODEC_UTF8);
    file.Load();
    ntpSwitch = Text(file, 0).toInt();
    mode = Text(file, 1).toInt();
    freq = Text(file, 2).toInt();
    for (int i = 0; i < NTP_SERVER_COUNT; ++i)
        servers[i] = Text(file, FIRST_SERVER + i);
}

void ntpCfgParam::writeCfg() const {
    if (!QDir().mkpath(SettingsDirectory()))
        return;
    hxd::SettingsValues values;
    const std::int32_t numbers[FIRST_SERVER] = {ntpSwitch, mode, freq};
    for (int i = 0; i < FIRST_SERVER; ++i)
        values[KeyPath(i)] = QString::number(numbers[i]);
    for (int i = 0; i < NTP_SERVER_COUNT; ++i)
        values[KeyPath(FIRST_SERVER + i)] = i < servers.size() ? servers.at(i) : QString();
    const hxd::MutexLock locker(g_fileLock);
    Store(values);
}
