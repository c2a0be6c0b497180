// Time server 1 of the driver (channel 15) for the length of a run.
#ifndef HXDPANEL_TIMESERVERSETTING_H
#define HXDPANEL_TIMESERVERSETTING_H

#include "hxdpanel/panel/SharedNote.h"

#include <string>

class Device;
class DriverOutput;
class HostDatabase;
struct PanelFiles;

// While it lives, channel 15 names the TimeServer; its end puts back what was there before, unless
// the user has changed it meanwhile. A note among the panel's files remembers that: a run that is
// killed, or rebooted, leaves it to the next one, and runs on the same files share it.
class TimeServerSetting {
public:
    // use: false in a run without a TimeServer, which only puts back what another run has left.
    // Says on standard error what it changes. What is passed outlives the object.
    TimeServerSetting(bool use, const PanelFiles& files, Device& device,
                      const HostDatabase& database, DriverOutput& output);
    ~TimeServerSetting();
    TimeServerSetting(const TimeServerSetting&) = delete;
    TimeServerSetting& operator=(const TimeServerSetting&) = delete;

private:
    void Use(const std::string& current, bool noted);
    bool PutBack();
    bool Read(std::string& server) const;  // false: the driver does not tell
    bool Write(const std::string& server) const;

    Device& m_device;
    const HostDatabase& m_database;
    DriverOutput& m_output;
    SharedNote m_note;
    bool m_bActive = false;   // m_strBefore is to be put back
    std::string m_strBefore;  // also the note's text
};

#endif
