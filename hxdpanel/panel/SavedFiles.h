// Notices which files a command has left where users look for them: on the USB stick and in the
// user's data area.
#ifndef HXDPANEL_SAVEDFILES_H
#define HXDPANEL_SAVEDFILES_H

#include <map>
#include <string>
#include <utility>
#include <vector>

class SavedFiles {
public:
    SavedFiles();
    // Paths of the files that are new or changed since the object was made or last asked.
    std::vector<std::string> TakeChanges();

private:
    using Stamp = std::pair<long long, long long>;  // time of the last change, size
    static std::map<std::string, Stamp> Look();

    std::map<std::string, Stamp> m_known;
};

#endif
