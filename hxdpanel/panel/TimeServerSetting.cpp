#include "hxdpanel/panel/TimeServerSetting.h"

#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/host/Device.h"
#include "hxdpanel/host/DriverOutput.h"
#include "hxdpanel/host/HostDatabase.h"
#include "hxdpanel/panel/SimulatedPanel.h"
#include "hxdpanel/panel/TimeServer.h"

#include <cstdio>

namespace {

// Beside the hardware's memory.
std::string NoteFile(const PanelFiles& files) {
    return files.memory.substr(0, files.memory.rfind('/')) + "/panel-time-server";
}

}  // namespace

TimeServerSetting::TimeServerSetting(bool use, const PanelFiles& files, Device& device,
                                     const HostDatabase& database, DriverOutput& output)
    : m_device(device), m_database(database), m_output(output) {
    m_note.Open(NoteFile(files), use);
    const bool alone = m_note.TakeAlone();
    const bool noted = m_note.Read(m_strBefore);
    std::string current;
    const bool known = (use || noted) && Read(current);
    if (known && use)
        Use(current, noted);
    else if (known && alone && PutBack())
        std::fprintf(stderr,
                     "hxdpanel: channel %d (time server 1) is %s again; a run with --time-server "
                     "was ended before it could put it back\n",
                     CHANNEL_NTP_SERVER_1, Quoted(m_strBefore).c_str());
    else if (use)
        std::fputs("hxdpanel: channel 15 cannot be read; time server 1 stays as it is\n", stderr);
    m_bActive = known && (use || !alone);
    if (m_bActive)
        m_note.Share();
    else
        m_note.Close();
}

TimeServerSetting::~TimeServerSetting() {
    if (m_bActive)
        PutBack();
}

// The name of this server may be what a run before this one, or beside it, has set.
void TimeServerSetting::Use(const std::string& current, bool noted) {
    if (!noted || current != TimeServer::ADDRESS) {
        m_strBefore = current;
        if (!m_note.Write(current))
            std::fputs(
                "hxdpanel: no note can be kept of time server 1: it is put back only if this "
                "run ends in good order\n",
                stderr);
    }
    if (!Write(TimeServer::ADDRESS))
        std::fputs("hxdpanel: the driver does not take time server 1\n", stderr);
    else
        std::fprintf(stderr,
                     "hxdpanel: a time server with this machine's time answers at %s\n"
                     "hxdpanel: channel %d (time server 1) is set to it until this run ends; it "
                     "was %s\n",
                     TimeServer::ADDRESS, CHANNEL_NTP_SERVER_1, Quoted(m_strBefore).c_str());
}

// False when there was nothing to put back, or, after a message, when the driver does not take it.
bool TimeServerSetting::PutBack() {
    std::string current;
    if (!Read(current))
        return false;
    const bool due = current == TimeServer::ADDRESS && m_strBefore != TimeServer::ADDRESS;
    const bool done = due && Write(m_strBefore) && Read(current) && current == m_strBefore;
    if (due && !done)
        std::fprintf(stderr, "hxdpanel: channel %d (time server 1) cannot be put back to %s\n",
                     CHANNEL_NTP_SERVER_1, Quoted(m_strBefore).c_str());
    else if (m_note.TakeAlone())
        m_note.Erase();
    return done;
}

bool TimeServerSetting::Read(std::string& server) const {
    const MutedDriver muted(m_output);
    m_device.Command("REFLESH()");  // the collection delivers what was read before otherwise
    m_device.Collect();
    const HostDatabase::Received channel = m_database.Channel(CHANNEL_NTP_SERVER_1);
    server = channel.value.text;
    return channel.delivered;
}

bool TimeServerSetting::Write(const std::string& server) const {
    const MutedDriver muted(m_output);
    return m_device.Write(CHANNEL_NTP_SERVER_1, HostValue::Text(server)) == HOST_OK;
}
