// The settings that a panel's hardware keeps over a restart: brightness and interfaces. They lie
// among the panel's files, so they are kept as long as these.
#ifndef HXDPANEL_HARDWAREMEMORY_H
#define HXDPANEL_HARDWAREMEMORY_H

#include <map>
#include <string>
#include <vector>

class HardwareMemory {
public:
    // file: on the panel. What it holds replaces the description of the panel, unless that has
    // changed since.
    explicit HardwareMemory(const std::string& file);
    // Writes the settings that have changed; called after each step, because a reboot ends the
    // program without notice. What other runs on these files have changed stays as they left it.
    void Save();
    // The settings as they are now are the described ones; nothing is kept.
    void Forget();
    // What differs from the description now: "panel/brightness = 40 (described as 80)".
    std::vector<std::string> Differences() const;

private:
    using Settings = std::map<std::string, std::string>;  // by section/key
    static Settings Current();
    static Settings Parse(const std::string& text);
    static std::string Text(const Settings& settings);
    static std::string TitleOf(const Settings& described);

    std::string m_strFile;
    Settings m_described;
    std::string m_strTitle;  // first line of the file: the description, in short
    Settings m_saved;
};

#endif
