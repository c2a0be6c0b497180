#include "hxdpanel/sandbox/Sandbox.h"

#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/sandbox/ChildProcess.h"
#include "hxdpanel/sandbox/PageSocket.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace sandbox {

namespace {

const char* const MARKER = "/run/hxd-panel";
const char* const DRIVER_INSIDE = "/run/driver/libhxdcontrol_armv7.so.1";

std::string ExecutableFolder() {
    const QString file = QFile::symLinkTarget(QLatin1String("/proc/self/exe"));
    return QFile::encodeName(QFileInfo(file).path()).constData();
}

std::string Absolute(const std::string& path) {
    const QFileInfo file(QFile::decodeName(path.c_str()));
    return QFile::encodeName(file.absoluteFilePath()).constData();
}

// Where the desktop's programs keep what belongs to the user; empty if nobody knows.
std::string DataHome() {
    const char* const chosen = std::getenv("XDG_DATA_HOME");
    if (chosen != nullptr && chosen[0] == '/')
        return chosen;
    const char* const home = std::getenv("HOME");
    return home != nullptr && home[0] == '/' ? std::string(home) + "/.local/share" : "";
}

// The folder below the user's data, made if need be; empty if it cannot be written.
std::string DataFolder(const char* name) {
    const std::string base = DataHome();
    std::string folder = base + "/hxdpanel/" + name;
    if (base.empty() || !QDir().mkpath(QFile::decodeName(folder.c_str())) ||
        ::access(folder.c_str(), W_OK) != 0)
        return "";
    return folder;
}

std::string ScriptPath(std::size_t index) {
    return "/run/scripts/" + std::to_string(index);
}

std::string MachineName() {
    std::array<char, 256> name = {};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

void Append(std::vector<std::string>& words, const std::vector<std::string>& more) {
    words.insert(words.end(), more.begin(), more.end());
}

// What is opened out here for the program inside; -1: nothing.
struct HandedOver {
    int results = -1;
    int folder = -1;
    int page = -1;
    int stop = -1;  // the child's owner closes it

    ~HandedOver() {
        for (const int descriptor : {results, folder, page}) {
            if (descriptor >= 0)
                ::close(descriptor);
        }
    }
};

void AppendDescriptors(std::vector<std::string>& words, const HandedOver& handedOver) {
    const std::pair<const char*, int> options[] = {{"--results-descriptor", handedOver.results},
                                                   {"--folder-descriptor", handedOver.folder},
                                                   {"--page-descriptor", handedOver.page},
                                                   {"--stop-descriptor", handedOver.stop}};
    for (const auto& option : options) {
        if (option.second >= 0)
            Append(words, {option.first, std::to_string(option.second)});
    }
}

// The launcher's options, the program, what the program inside must know, and its own arguments.
std::vector<std::string> CommandLine(const std::string& launcher, const Setup& setup,
                                     const HandedOver& handedOver, int argc, char** argv) {
    const std::string root = RootFolder(setup);
    const std::string history = setup.history ? HistoryFolder() : "";
    std::vector<std::string> words = {launcher};
    if (!root.empty())
        Append(words, {"--root", root});
    for (const std::string& panel : PanelFolders(setup))
        Append(words, {"--panel", panel});
    words.emplace_back("--live");
    for (std::size_t i = 0; i < setup.scripts.size(); ++i) {
        if (setup.scripts[i] != "-")
            Append(words, {"--ro", Absolute(setup.scripts[i]), ScriptPath(i)});
    }
    if (!history.empty())
        Append(words, {"--rw", history});
    if (!setup.driver.empty())
        Append(words, {"--ro", Absolute(setup.driver), DRIVER_INSIDE});
    Append(words, {"--", ExecutableFolder() + "/hxdpanel", "--launched"});
    if (!history.empty())
        Append(words, {"--history-folder", history});
    if (!root.empty())
        Append(words, {"--files-outside", Absolute(root)});
    if (!setup.driver.empty())
        Append(words, {"--driver-inside", DRIVER_INSIDE});
    if (handedOver.page >= 0)
        Append(words, {"--machine", MachineName()});
    AppendDescriptors(words, handedOver);
    for (int i = 1; i < argc; ++i)
        words.emplace_back(argv[i]);
    return words;
}

// The same as a descriptor that the child inherits; -1 for -1.
int HandOver(int opened) {
    if (opened < 0)
        return -1;
    const int handedOver = ::fcntl(opened, F_DUPFD, ChildProcess::FIRST_HANDED_OVER);
    ::close(opened);
    return handedOver;
}

// "" for a file that the sandbox can be shown.
std::string ReadError(const std::string& file) {
    struct stat status = {};
    if (::stat(file.c_str(), &status) != 0)
        return std::strerror(errno);
    if (S_ISDIR(status.st_mode))
        return std::strerror(EISDIR);
    if (!S_ISREG(status.st_mode))
        return "not a plain file; - reads standard input";
    return ::access(file.c_str(), R_OK) != 0 ? std::strerror(errno) : "";
}

// The folder that the user is in, for files that the console is told to record. -1: there is none.
// It is more than the program inside needs: by "..", it leads anywhere. The commands that the
// driver runs do not get it (close-on-exec), and the driver itself knows absolute paths only, so
// nothing but a driver that searches its process for a way out would find this one; to keep such a
// driver in, the file would have to be opened out here when the user asks for it.
int OpenFolder(bool wanted) {
    return HandOver(wanted ? ::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC) : -1);
}

bool CanRead(const std::vector<std::string>& scripts) {
    for (const std::string& script : scripts) {
        const std::string error = script != "-" ? ReadError(script) : "";
        if (error.empty())
            continue;
        std::fprintf(stderr, "hxdpanel: cannot read %s: %s\n", script.c_str(), error.c_str());
        return false;
    }
    return true;
}

// The machine's file, opened out here for the program inside, which does not see its folder. What
// is in it stays until the program inside has something to write. -1: none is asked for; -2: it
// cannot be opened.
int OpenResults(const std::string& file) {
    if (file.empty() || file == "-")
        return -1;
    const int opened = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (opened < 0) {
        std::fprintf(stderr, "hxdpanel: cannot write %s: %s\n", file.c_str(), std::strerror(errno));
        return -2;
    }
    return HandOver(opened);
}

// -1: none is asked for; -2: it cannot be had.
int OpenPage(const Setup::Page& page) {
    if (!page.wanted)
        return -1;
    std::string error;
    const int opened = OpenPageSocket(page.address, page.port, error);
    if (opened >= 0)
        return HandOver(opened);
    std::fprintf(stderr, "hxdpanel: --page: %s\n", error.c_str());
    return -2;
}

}  // namespace

bool Inside() {
    return ::access(MARKER, F_OK) == 0;
}

std::string RootFolder(const Setup& setup) {
    if (!setup.root.empty())
        return Absolute(setup.root);
    return setup.fresh || !setup.panel.empty() ? "" : DataFolder("root");
}

std::string HistoryFolder() {
    return DataFolder("console");
}

std::string Companion(const std::string& name) {
#ifdef HXD_PANEL_SOURCES
    const std::string path = HXD_PANEL_SOURCES "/" + name;
#else
    const std::string path = ExecutableFolder() + "/" + name;
#endif
    return ::access(path.c_str(), R_OK) == 0 ? path : "";
}

std::vector<std::string> PanelFolders(const Setup& setup) {
    std::vector<std::string> folders;
    if (setup.panel.empty() || setup.overDefault)
        folders.push_back(Companion("default-panel"));
    if (!setup.panel.empty())
        folders.push_back(Absolute(setup.panel));
    folders.erase(std::remove(folders.begin(), folders.end(), ""), folders.end());
    return folders;
}

std::string ScriptInside(const Setup& setup, std::size_t index) {
    const bool isHandedOver = setup.inside.launched && setup.scripts[index] != "-";
    return isHandedOver ? ScriptPath(index) : setup.scripts[index];
}

std::string DriverFile(const Setup& setup) {
    if (!setup.inside.driver.empty())
        return setup.inside.driver;
    if (!setup.driver.empty())
        return Absolute(setup.driver);
    return ExecutableFolder() + "/../lib/libhxdcontrol_armv7.so.1";
}

int RunInside(const Setup& setup, int argc, char** argv) {
    const std::string launcher = Companion("in-panel");
    if (launcher.empty())
        return UNAVAILABLE;
    if (!setup.driver.empty() && ::access(setup.driver.c_str(), R_OK) != 0) {
        std::fprintf(stderr, "hxdpanel: cannot read the driver %s: %s\n", setup.driver.c_str(),
                     std::strerror(errno));
        return EXIT_NO_DRIVER;
    }
    if (!CanRead(setup.scripts))
        return EXIT_USAGE;
    HandedOver handedOver;
    handedOver.results = OpenResults(setup.resultsFile);
    handedOver.page = OpenPage(setup.page);
    if (handedOver.results < -1 || handedOver.page < -1)
        return EXIT_USAGE;
    handedOver.folder = OpenFolder(setup.history);
    ChildProcess child;
    handedOver.stop = child.StopDescriptor();
    const int exitCode = child.Run(CommandLine(launcher, setup, handedOver, argc, argv));
    if (exitCode == EXIT_REBOOTED)
        std::fputs("hxdpanel: a reboot ends the run; the command restart comes back\n", stderr);
    return exitCode;
}

}  // namespace sandbox
