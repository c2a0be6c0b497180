// One run of the panel: takes the lines of the console, of "exec" and of a pipe alike.
#ifndef HXDPANEL_SESSION_H
#define HXDPANEL_SESSION_H

#include "hxdpanel/console/LineResult.h"
#include "hxdpanel/console/Recorder.h"
#include "hxdpanel/console/SharedRun.h"
#include "hxdpanel/console/Vocabulary.h"
#include "hxdpanel/host/Device.h"
#include "hxdpanel/host/DriverOutput.h"
#include "hxdpanel/host/HostDatabase.h"
#include "hxdpanel/panel/SimulatedPanel.h"
#include "hxdpanel/report/Json.h"
#include "hxdpanel/report/Watch.h"

#include <cstdio>
#include <string>
#include <vector>

class HardwareCommands;
class HardwareMemory;
struct Outcome;
struct PanelSource;

// What is passed by reference outlives the sessions. plugin may be null.
struct SessionParts {
    HostDatabase& database;
    Device& device;
    DriverOutput& output;
    HardwareMemory& memory;
    HardwareCommands& hardware;
    SharedRun& shared;
    const IVNCLock* plugin;
    const PanelFiles& files;
};

// Operations return an ExitCode. Those that reach the device belong into a Turn; Run() and
// WatchChannels() take theirs themselves, the latter one for each reading.
class Session {
public:
    // While it lives no other session of the run acts.
    class HXD_THREAD_ANNOTATION(scoped_lockable) Turn {
    public:
        explicit Turn(Session& session)
            HXD_THREAD_ANNOTATION(exclusive_lock_function(session.m_shared.turn));
        ~Turn() HXD_THREAD_ANNOTATION(unlock_function()) = default;
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

    private:
        const hxd::MutexLock m_lock;
    };

    explicit Session(const SessionParts& parts);

    // A console command, or a command of the driver as it stands. Blank lines do nothing.
    int Run(const std::string& line);
    int RunInTurn(const std::string& line) HXD_REQUIRES(m_shared.turn);
    bool Ended() const { return m_bEnded; }  // after quit

    // A reboot restarts the panel from now on, and results go to out; null: nowhere.
    void BeScript(std::FILE* out);
    void RestartAfterReboots();
    // From now on results go there, and mistakes into complaint instead of standard error. name:
    // what others are told of who acts.
    void PrintTo(std::FILE* out, std::string* complaint);
    void BeNamed(const std::string& name) { m_strName = name; }
    // When the driver waits for its own worker while it collects, the panel's clock passes over
    // that.
    void BeBrief() { m_bBrief = true; }
    // What the last line of Run() did.
    const LineResult& Result() const { return m_result; }
    const HostDatabase& Database() const { return m_database; }
    int Refresh()
        HXD_REQUIRES(m_shared.turn);  // has the driver read everything anew and deliver it

    // Results as JSON objects from now on.
    void UseJson(JsonLayout layout);

    // channels: as ChooseChannels() takes them; all for none.
    int ShowChannels(const std::vector<std::string>& channels) HXD_REQUIRES(m_shared.turn);
    int Read(const std::string& channel) HXD_REQUIRES(m_shared.turn);  // its value alone
    int Write(const std::string& channel, const std::string& text) HXD_REQUIRES(m_shared.turn);
    // csv: null for tables. options.channels follows from the words.
    int WatchChannels(WatchOptions options, const std::vector<std::string>& channels,
                      std::FILE* csv);
    int ShowPanel() HXD_REQUIRES(m_shared.turn);
    Json Panel() const HXD_REQUIRES(m_shared.turn);
    Json Channels() const HXD_REQUIRES(m_shared.turn);  // as last read
    int ShowTime() HXD_REQUIRES(m_shared.turn);
    int Collect() HXD_REQUIRES(m_shared.turn);
    int SetVariable(const Definition& definition) HXD_REQUIRES(m_shared.turn);

    // What the last, unfinished word of the line may become.
    std::vector<std::string> Completions(const std::string& line) const;

private:
    int RunDriverCommand(const std::string& text) HXD_REQUIRES(m_shared.turn);
    int RunHardware(const std::string& line, const std::string& why) HXD_REQUIRES(m_shared.turn);
    void NoteSaved(Outcome& outcome) HXD_REQUIRES(m_shared.turn);
    void TellActed(const std::string& line, int status, const std::string& meaning)
        HXD_REQUIRES(m_shared.turn);
    int RunRead(const std::string& rest) HXD_REQUIRES(m_shared.turn);
    int RunWatch(const std::string& rest);
    int RunWrite(const std::string& rest) HXD_REQUIRES(m_shared.turn);
    int RunSet(const std::string& rest) HXD_REQUIRES(m_shared.turn);
    int RunRecord(const std::string& rest);
    int ShowVariables();
    int ShowPage() HXD_REQUIRES(m_shared.turn);

    PanelSource Source() const HXD_REQUIRES(m_shared.turn);
    int RunMeaningful(const std::string& line) HXD_REQUIRES(m_shared.turn);
    int RunVerb(vocabulary::Verb verb, const std::string& rest) HXD_REQUIRES(m_shared.turn);

    int Complain(const std::string& message);
    void PrintWrapped(const std::vector<std::string>& lines) const;  // but empty ones
    const JsonLayout* AsJson() const { return m_bJson ? &m_eLayout : nullptr; }
    int Report(const Outcome& outcome) HXD_REQUIRES(m_shared.turn);

    HostDatabase& m_database;
    Device& m_device;
    DriverOutput& m_output;
    HardwareMemory& m_memory;
    HardwareCommands& m_hardware;
    SharedRun& m_shared;
    std::FILE* m_pOut;
    const IVNCLock* m_pPlugin;
    PanelFiles m_files;
    LineResult m_result;
    Recorder m_recorder;
    std::string m_strName = "console";
    std::string* m_pComplaint = nullptr;  // null: mistakes go to standard error
    bool m_bBrief = false;
    bool m_bJson = false;
    JsonLayout m_eLayout = JsonLayout::DOCUMENT;
    bool m_bEnded = false;
};

#endif
