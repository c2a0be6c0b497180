// Writes what is typed into a script, with the results that were observed as its expectations.
#ifndef HXDPANEL_RECORDER_H
#define HXDPANEL_RECORDER_H

#include "hxdpanel/base/Stream.h"
#include "hxdpanel/console/LineResult.h"
#include "hxdpanel/host/HostDatabase.h"

#include <map>
#include <string>

class Recorder {
public:
    // folder: a descriptor of the folder that the user is in; name: a file in it that is not there
    // yet. False with the reason.
    bool Start(int folder, const std::string& name, std::string& error);
    // The name of the file; "" when there was no recording. False in done when it is incomplete.
    std::string Stop(bool& done);
    bool IsOn() const { return m_file != nullptr; }

    void Add(const std::string& line, const LineResult& result, const HostDatabase& database);

private:
    void AddChannels(const LineResult& result, const HostDatabase& database);
    void AddEvents();

    OwnedStream m_file;
    std::string m_strName;
    std::map<std::string, std::size_t> m_events;  // how many of each kind are known
};

#endif
