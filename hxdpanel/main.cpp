// hxdpanel: a host in miniature around the driver, on a simulated panel.
#include "common/ResultCodes.h"
#include "hxdpanel/Options.h"
#include "hxdpanel/ResultsFile.h"
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Interrupt.h"
#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/console/Console.h"
#include "hxdpanel/console/Help.h"
#include "hxdpanel/console/Session.h"
#include "hxdpanel/console/Vocabulary.h"
#include "hxdpanel/host/Device.h"
#include "hxdpanel/host/DriverLibrary.h"
#include "hxdpanel/host/DriverOutput.h"
#include "hxdpanel/host/HostDatabase.h"
#include "hxdpanel/host/LockPlugin.h"
#include "hxdpanel/page/Page.h"
#include "hxdpanel/panel/HardwareCommands.h"
#include "hxdpanel/panel/HardwareMemory.h"
#include "hxdpanel/panel/PanelNetwork.h"
#include "hxdpanel/panel/SimulatedPanel.h"
#include "hxdpanel/panel/TimeServer.h"
#include "hxdpanel/panel/TimeServerSetting.h"
#include "hxdpanel/sandbox/GuardedCalls.h"
#include "hxdpanel/sandbox/PageSocket.h"
#include "hxdpanel/sandbox/Sandbox.h"
#include "hxdpanel/script/RunScripts.h"

#include <QCoreApplication>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <memory>

namespace {

// As docs/platform.md has it, in short.
const char* const GUARDED_NOTICE =
    "hxdpanel: going on without the sandbox; reboot, clock, mount and kernel-log calls of the "
    "driver\n"
    "are refused. It may write to the panel's folder (panel names it) and, where you may, to\n"
    "/storage/user_dir, /media/usb0, /etc/iot_cfg/vncConfig.ini, /etc/resolv.conf, /tmp/*.lck,\n"
    "/tmp/ping.lock and /tmp/ping.sh. To have the sandbox, install bubblewrap and allow user\n"
    "namespaces: sysctl -w kernel.unprivileged_userns_clone=1 user.max_user_namespaces=10000, and\n"
    "kernel.apparmor_restrict_unprivileged_userns=0 where it exists; docs/platform.md has more.\n";

void Collect(Session& session) {
    const Session::Turn turn(session);
    session.Collect();
}

int RunCommands(Session& session, const std::vector<std::string>& commands) {
    std::string error;
    for (const std::string& command : commands) {
        if (!vocabulary::Understands(command, error)) {
            std::fprintf(stderr, "%s\n", error.c_str());
            return EXIT_USAGE;
        }
    }
    Collect(session);  // as a host does before its scripts run
    int worst = EXIT_DONE;
    for (const std::string& command : commands) {
        if (session.Ended())
            break;
        worst = std::max(worst, session.Run(command));
    }
    return worst;
}

int RunWatch(Session& session, const Options& options, std::FILE* results) {
    WatchOptions watch;
    watch.interval = options.interval;
    watch.count = options.count;
    watch.changes = options.changes;
    ResultsFile csv;
    if (!csv.Open(options, results))
        return EXIT_USAGE;
    return csv.Finish(session.WatchChannels(watch, options.chosen, csv.Stream()));
}

int RunScriptFiles(Session& session, const Options& options, DriverOutput& output) {
    std::vector<ScriptFile> files;
    for (std::size_t i = 0; i < options.scripts.size(); ++i)
        files.push_back({options.scripts[i] == "-" ? "stdin" : options.scripts[i],
                         sandbox::ScriptInside(options, i)});
    ResultsFile junit;
    if (!junit.Open(options, output.Results()))
        return EXIT_USAGE;
    std::unique_ptr<MutedDriver> muted;
    if (!options.echo)
        muted = std::make_unique<MutedDriver>(output);
    return junit.Finish(RunScripts(session, files, {options.keepGoing},
                                   options.tap ? ScriptReport::TAP : ScriptReport::SUMMARY,
                                   options.echo, output.Results(), junit.Stream()));
}

// One result.
int RunOnce(Session& session, const Options& options) {
    const Session::Turn turn(session);
    switch (options.mode) {
        case Options::CHANNELS:
            return session.ShowChannels(options.chosen);
        case Options::READ:
            return session.Read(options.channel);
        case Options::WRITE:
            return session.Write(options.channel, options.value);
        case Options::NTP:
            return session.ShowTime();
        default:
            session.Collect();
            return session.ShowPanel();
    }
}

// Null, after a message, when it cannot be had.
std::unique_ptr<Page> StartPage(const SessionParts& parts, const Options& options) {
    PageSetup setup;
    std::string error;
    setup.socket = options.inside.pageDescriptor;
    if (setup.socket < 0)  // nobody has handed one in: this is the machine, or a test's sandbox
        setup.socket = sandbox::OpenPageSocket(options.page.address, options.page.port, error);
    else
        ::fcntl(setup.socket, F_SETFD, FD_CLOEXEC);
    setup.machine = options.inside.machine;
    setup.isOpen = options.page.isOpen;
    setup.folder = sandbox::Companion("page/web");
    setup.documents = sandbox::Companion("../docs");
    std::unique_ptr<Page> page;
    if (setup.socket >= 0)
        page = Page::Start(parts, setup, error);
    if (page == nullptr)
        std::fprintf(stderr, "hxdpanel: --page: %s\n", error.c_str());
    else
        std::fprintf(stderr, "hxdpanel: the panel is at %s\n", page->Address().c_str());
    return page;
}

// What comes from a pipe or a file may end before those who look at the page do.
void ServeOn(const Session& session) {
    if (session.Ended() || ::isatty(STDIN_FILENO) != 0)
        return;
    while (!interrupt::Pending())
        interrupt::Wait(-1);
}

int RunWithConsole(Session& session, const SessionParts& parts, const Options& options) {
    const std::string history =
        guard::Enabled() ? sandbox::HistoryFolder() : options.inside.historyFolder;
    Collect(session);  // as a host does before anybody types
    if (!options.page.wanted)
        return RunConsole(session, parts.output, history);
    session.RestartAfterReboots();
    const std::unique_ptr<Page> page = StartPage(parts, options);
    if (page == nullptr)
        return EXIT_USAGE;
    const int exitCode = RunConsole(session, parts.output, history);
    ServeOn(session);
    return exitCode;
}

int RunMode(Session& session, const SessionParts& parts, const Options& options) {
    if (options.mode != Options::CONSOLE && options.mode != Options::WATCH)
        session.BeBrief();  // nobody looks on
    switch (options.mode) {
        case Options::EXEC:
            return RunCommands(session, options.commands);
        case Options::WATCH:
            return RunWatch(session, options, parts.output.Results());
        case Options::SCRIPT:
            return RunScriptFiles(session, options, parts.output);
        case Options::CONSOLE:
            return RunWithConsole(session, parts, options);
        default:
            return RunOnce(session, options);
    }
}

// A run with one result shows it as a document, others an object a line.
JsonLayout LayoutOf(const Options& options) {
    const bool isLines = options.mode == Options::EXEC || options.mode == Options::CONSOLE;
    return isLines ? JsonLayout::LINE : JsonLayout::DOCUMENT;
}

// Descriptors 0 to 2 are open from here on, so that no file takes their place.
bool HasStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::dup2(::open("/dev/null", O_RDWR), descriptor);
    }
    if (::fcntl(STDOUT_FILENO, F_GETFD) >= 0)
        return true;
    std::fputs("hxdpanel: standard output is closed: the results cannot be written\n", stderr);
    return false;
}

// Null, after a message, when it cannot be had.
std::unique_ptr<TimeServer> StartTimeServer() {
    std::string error;
    std::unique_ptr<TimeServer> server = TimeServer::Start(error);
    if (server == nullptr)
        std::fprintf(stderr, "hxdpanel: no time server: %s\n", error.c_str());
    else if (!AnswerReachCheck())
        std::fputs("hxdpanel: pings cannot be answered; ExecNTP will fail\n", stderr);
    return server;
}

// Null, with a message, for a library that cannot be loaded.
std::unique_ptr<DriverLibrary> LoadDriver(const Options& options) {
    std::string error;
    const std::string driver = sandbox::DriverFile(options);
    auto library = DriverLibrary::Load(driver, error);
    if (library != nullptr)
        return library;
    const std::size_t place = options.driver.empty() ? std::string::npos : error.find(driver);
    if (place != std::string::npos)  // the user knows it by another name than the sandbox
        error.replace(place, driver.size(), options.driver);
    std::fprintf(stderr, "hxdpanel: %s\n", error.c_str());
    return nullptr;
}

int RunPanel(const Options& options, int argc, char** argv) {
    QCoreApplication application(argc, argv);
    PanelFiles files;
    if (!SetUpPanel(options, options.logLevel, files))
        return EXIT_NO_PANEL;
    files.userFolder = options.inside.launched ? options.inside.folderDescriptor : AT_FDCWD;
    if (files.userFolder >= 0)
        ::fcntl(files.userFolder, F_SETFD, FD_CLOEXEC);
    HardwareMemory memory(files.memory);
    // Owned by the application object, under which the driver looks for it.
    const IVNCLock* const plugin = options.lockPlugin ? new LockPlugin(&application) : nullptr;
    HostDatabase database;
    for (const Definition& variable : options.variables)
        database.SetVariable(variable.name, variable.value);

    const auto timeServer = options.timeServer ? StartTimeServer() : nullptr;
    if (options.timeServer && timeServer == nullptr)
        return EXIT_NO_PANEL;

    DriverOutput output;
    if (options.logLevel > 0)
        output.ShowAll();
    const auto library = LoadDriver(options);
    if (library == nullptr)
        return EXIT_NO_DRIVER;
    auto starting = std::make_unique<MutedDriver>(output);
    Device device(*library, database, options.blob, options.channels);
    starting.reset();
    if (device.InitStatus() != HOST_OK) {
        std::fprintf(stderr, "hxdpanel: the driver refuses to start: %s\n",
                     StatusMeaning(device.InitStatus()));
        return EXIT_NO_DRIVER;
    }
    const auto restartDriver = [&] {
        const MutedDriver muted(output);
        device.Restart();
        return device.InitStatus() == HOST_OK;
    };
    HardwareCommands hardware(PanelRestart(files, memory, restartDriver), files.panels);
    device.SetBeforeCall([&] { hardware.Load().BringUpToDate(); });
    SharedRun shared;
    const SessionParts parts = {database, device, output, memory, hardware, shared, plugin, files};
    Session session(parts);
    if (options.json)
        session.UseJson(LayoutOf(options));
    int exitCode = EXIT_DONE;
    {
        const TimeServerSetting setting(options.timeServer, files, device, database, output);
        exitCode = RunMode(session, parts, options);
    }
    exitCode = FinishStream(output.Results(), "the results", exitCode);
    output.Mute();  // what the driver says when it ends
    return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_CTYPE, "");
    Options options;
    int exitCode = EXIT_DONE;
    if (!HasStandardStreams())
        return EXIT_USAGE;
    if (!ParseOptions(argc, argv, options, exitCode))
        return exitCode;
    if (options.mode == Options::HELP) {
        const JsonLayout layout = JsonLayout::DOCUMENT;
        return PrintHelp(stdout, options.helpTopic, options.json ? &layout : nullptr);
    }
    if (!sandbox::Inside()) {
        exitCode = sandbox::RunInside(options, argc, argv);
        if (exitCode != sandbox::UNAVAILABLE)
            return exitCode;
        if (options.timeServer) {
            std::fputs("hxdpanel: --time-server needs the sandbox\n", stderr);
            return EXIT_NO_PANEL;
        }
        std::fputs(GUARDED_NOTICE, stderr);
        guard::Enable();
    }
    interrupt::Install();
    terminal::NoticeSize();
    if (options.inside.stopDescriptor >= 0)
        interrupt::EndWith(options.inside.stopDescriptor);
    return RunPanel(options, argc, argv);
}
