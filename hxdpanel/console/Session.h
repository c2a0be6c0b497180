// One run of the panel: takes the lines of the console, of "exec" and of a pipe alike.
#ifndef HXDPANEL_SESSION_H
#define HXDPANEL_SESSION_H

#include "hxdpanel/console/Help.h"
#include "hxdpanel/console/LineResult.h"
#include "hxdpanel/console/Recorder.h"
#include "hxdpanel/host/Device.h"
#include "hxdpanel/host/DriverOutput.h"
#include "hxdpanel/host/HostDatabase.h"
#include "hxdpanel/panel/SavedFiles.h"
#include "hxdpanel/panel/SimulatedPanel.h"
#include "hxdpanel/report/Json.h"
#include "hxdpanel/report/Watch.h"

#include <cstdio>
#include <string>
#include <vector>

class HardwareCommands;
class HardwareMemory;
struct Outcome;

// Operations return an ExitCode.
class Session {
public:
    // What is passed by reference outlives the session. plugin may be null.
    Session(HostDatabase& database, Device& device, DriverOutput& output, HardwareMemory& memory,
            HardwareCommands& hardware, const IVNCLock* plugin, const PanelFiles& files);

    // A console command, or a command of the driver as it stands. Blank lines do nothing.
    int Run(const std::string& line);
    // False, with a message for the user, when Run() would find no meaning in the line.
    static bool Understands(const std::string& line, std::string& error);
    bool Ended() const { return m_bEnded; }  // after quit

    // A reboot restarts the panel from now on, and results go to out; null: nowhere.
    void BeScript(std::FILE* out);
    // What the last line of Run() did.
    const LineResult& Result() const { return m_result; }
    const HostDatabase& Database() const { return m_database; }
    int Refresh();  // has the driver read everything anew and deliver it

    // Results as JSON objects from now on.
    void UseJson(JsonLayout layout);

    // channels: as ChooseChannels() takes them; all for none.
    int ShowChannels(const std::vector<std::string>& channels);
    int Read(const std::string& channel);  // its value alone
    int Write(const std::string& channel, const std::string& text);
    // csv: null for tables. options.channels follows from the words.
    int WatchChannels(WatchOptions options, const std::vector<std::string>& channels,
                      std::FILE* csv);
    int ShowPanel();
    int ShowTime();
    int Collect();

    // What the last, unfinished word of the line may become.
    std::vector<std::string> Completions(const std::string& line) const;

    // topic: as typed after help; json: null for text; needs no session.
    static int PrintHelp(std::FILE* out, const std::string& topic, const JsonLayout* json);

private:
    struct ConsoleCommand {
        ConsoleTopic topic;
        int (Session::*run)(const std::string& rest);
    };
    static const std::vector<ConsoleCommand>& ConsoleCommands();
    static const ConsoleCommand* FindConsoleCommand(const std::string& name);
    static std::vector<std::string> AllNames();
    static std::string NoMeaning(const std::string& line);
    int RunDriverCommand(const std::string& text);
    int RunHardware(const std::string& line);
    int RunChannels(const std::string& rest);
    int RunRead(const std::string& rest);
    int RunWatch(const std::string& rest);
    int RunWrite(const std::string& rest);
    int RunSet(const std::string& rest);
    int RunVars(const std::string& rest);
    int RunNtp(const std::string& rest);
    int RunPanel(const std::string& rest);
    int RunHelp(const std::string& rest);
    int RunRecord(const std::string& rest);
    int RunQuit(const std::string& rest);

    int RunMeaningful(const std::string& line);

    static int Complain(const std::string& message);
    void PrintWrapped(const std::vector<std::string>& lines) const;  // but empty ones
    const JsonLayout* AsJson() const { return m_json ? &m_layout : nullptr; }
    int Report(const Outcome& outcome);

    HostDatabase& m_database;
    Device& m_device;
    DriverOutput& m_output;
    HardwareMemory& m_memory;
    HardwareCommands& m_hardware;
    std::FILE* m_out;
    const IVNCLock* m_plugin;
    PanelFiles m_files;
    SavedFiles m_savedFiles;
    LineResult m_result;
    Recorder m_recorder;
    bool m_bScript = false;
    bool m_json = false;
    JsonLayout m_layout = JsonLayout::DOCUMENT;
    std::string m_strLastSync;  // answer of the last ExecNTP
    bool m_bEnded = false;
};

#endif
