// The hardware in the user's hands: cables pulled, flash worn, calls that fail, time that passes.
// One table of commands for the console, pipes and scripts.
#ifndef HXDPANEL_HARDWARECOMMANDS_H
#define HXDPANEL_HARDWARECOMMANDS_H

#include "hxdpanel/panel/HardwareResult.h"
#include "hxdpanel/panel/PanelRestart.h"
#include "hxdpanel/panel/SystemLoad.h"

#include <string>
#include <vector>

class HardwareCommands {
public:
    using Words = std::vector<std::string>;

    struct Row {
        const char* name;
        const char* arguments;
        const char* summary;
        // words: what follows the name.
        HardwareResult (*run)(HardwareCommands& hardware, const Words& words);
        // What the word after these may be.
        Words (*candidates)(const Words& words);
        std::vector<const char*> notes = {};
        std::vector<const char*> examples = {};
    };
    static const std::vector<Row>& Table();
    static const Row* Find(const std::string& name);
    // What the last, unfinished word of the line may become.
    static Words Candidates(const std::string& line);

    // On the thread that calls the driver. restart: how the panel is switched off and on. panels:
    // its folders.
    HardwareCommands(const PanelRestart& restart, const std::vector<std::string>& panels);
    ~HardwareCommands();  // the clock runs again, so that no thread of the driver is left asleep
    HardwareCommands(const HardwareCommands&) = delete;
    HardwareCommands& operator=(const HardwareCommands&) = delete;

    // line: a name of the table and its arguments.
    HardwareResult Run(const std::string& line);

    SystemLoad& Load() { return m_load; }
    PanelRestart& Restart() { return m_restart; }

private:
    PanelRestart m_restart;
    SystemLoad m_load;
};

#endif
