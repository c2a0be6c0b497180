// The time-synchronisation settings and the file they are kept in: "config/ntp_param_cfg.ini" below
// the host's directory of kind 2, INI in UTF-8, one section with seven keys.
#ifndef HXD_NTPCFGPARAM_H
#define HXD_NTPCFGPARAM_H

#include <QStringList>

#include <cstdint>

constexpr int NTP_SERVER_COUNT = 4;

extern const char* const ntp_cfg_name;   // "/ntp_param_cfg.ini"
extern const char* const ntpCfgSection;  // "NTP_PARAM"

// Keys and defaults in the same order: switch, mode, period, the four servers.
constexpr int NTP_SETTING_COUNT = 3 + NTP_SERVER_COUNT;
extern const char* const ntpCfgNode[NTP_SETTING_COUNT];
extern const char* const ntpDefCfg[NTP_SETTING_COUNT];

// A plain record. The controller's copy is guarded by the controller's lock; the two functions take
// no lock on the record, and only writeCfg() takes one on the file, which is replaced as a whole.
struct ntpCfgParam {
    ntpCfgParam();  // 0, 0, 0 and four empty servers, unlike the file's defaults

    // Fills the record from the file; what is missing or unreadable gets its default. Numbers are
    // taken as they are, also those outside the ranges below; a text that is no number gives 0.
    void ReadCfg();

    // Replaces the file by one with all seven keys, making its directory where needed. Whenever the
    // process or the panel dies, the file is the old one or the new one. A write that fails is
    // silent and leaves the old file. On return the data have reached the storage.
    void writeCfg() const;

    std::int32_t ntpSwitch;  // 1 = synchronisation on, 0 = off
    std::int32_t mode;       // 1 = automatic, every freq hours; 0 = only on demand
    std::int32_t freq;       // hours, 1 to 24
    QStringList servers;     // four host names or dotted IPv4 addresses, by priority; may be empty
};

bool operator==(const ntpCfgParam& a, const ntpCfgParam& b);
bool operator!=(const ntpCfgParam& a, const ntpCfgParam& b);

#endif
