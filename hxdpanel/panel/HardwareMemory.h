// The settings that a panel's hardware keeps over a restart: brightness and interfaces. They lie
// among the panel's files, so they are kept as long as these.
#ifndef HXDPANEL_HARDWAREMEMORY_H
#define HXDPANEL_HARDWAREMEMORY_H

#include <string>

class HardwareMemory {
public:
    // file: on the panel. What it holds replaces the description of the panel, unless that has
    // changed since.
    explicit HardwareMemory(const std::string& file);
    // Writes the settings if they have changed; called after each step, because a reboot ends the
    // program without notice.
    void Save();

private:
    static std::string Settings();

    std::string m_file;
    std::string m_described;  // the settings at the start, in short
    std::string m_saved;
};

#endif
