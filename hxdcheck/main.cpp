// hxdcheck: tells on a panel whether the driver will run there, and why not. This program needs no
// library of the panel, so that it can explain the loader's refusal; what needs them is asked by
// hxdcheck-host, which it starts.
#include "hxdcheck/file/FileChecks.h"
#include "hxdcheck/panel/PanelChecks.h"
#include "hxdcheck/report/TestHost.h"

#include "HxdVersion.h"

#include <unistd.h>

#include <climits>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace {

constexpr int EXIT_USAGE = 3;
const char* const DRIVER_NAME = "libhxdcontrol_armv7.so.1";

const char* const HELP =
    "Usage: hxdcheck [OPTION...] [DRIVER]\n"
    "\n"
    "Tells whether the driver will run on this panel, and if not, why. Start it under\n"
    "the account and with the LD_LIBRARY_PATH of the HMI runtime. DRIVER is the\n"
    "driver's file; if not named, the one that was installed with this program.\n"
    "\n"
    "  --runtime FILE  look at the HMI runtime's program, too\n"
    "  --channels      start the driver and show the channels, and only what is not ok\n"
    "  --act           also beep, dim and switch off the light; asks before each\n"
    "  --json          print the findings as JSON\n"
    "  --version       print the version\n"
    "  --help          print this text\n"
    "\n"
    "Nothing is written and nothing is set, but for what a reading of the channels does:\n"
    "lock files in /tmp and, with raw flash, a mount of debugfs.\n"
    "\n"
    "Exit code: 0 all ok, 1 something to look at, 2 something is wrong, 3 wrong usage.\n";

struct Options {
    std::string driver;
    std::string runtime;
    bool channels = false;
    bool act = false;
    bool json = false;
};

// False, with the exit code, when there is nothing more to do.
bool ParseOptions(int argc, char** argv, Options& options, int& exitCode) {
    exitCode = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--help")
            return std::fputs(HELP, stdout), false;
        if (word == "--version")
            return std::puts(HXD_VERSION_TEXT), false;
        if (word == "--channels")
            options.channels = true;
        else if (word == "--act")
            options.act = true;
        else if (word == "--json")
            options.json = true;
        else if (word == "--runtime" && i + 1 < argc)
            options.runtime = argv[++i];
        else if (!word.empty() && word[0] != '-' && options.driver.empty())
            options.driver = word;
        else {
            std::fprintf(stderr, "hxdcheck: %s is not understood here; see hxdcheck --help\n",
                         word.c_str());
            exitCode = EXIT_USAGE;
            return false;
        }
    }
    return true;
}

std::string OwnFolder() {
    char path[PATH_MAX] = "";
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    const std::string file(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    return file.substr(0, file.rfind('/'));
}

std::string FindDriver(const std::string& folder) {
    std::string file;
    for (const char* const place : {"/", "/../" HXD_PLUGIN_DIR "/", "/../lib/"}) {
        char path[PATH_MAX] = "";
        file = folder + place + DRIVER_NAME;
        if (::realpath(file.c_str(), path) != nullptr)
            return path;
    }
    return folder + "/../" HXD_PLUGIN_DIR "/" + DRIVER_NAME;
}

// HXD_EMULATOR: words in front of a program of another processor.
std::vector<std::string> Command(const std::string& host, const Options& options) {
    const char* const emulator = std::getenv("HXD_EMULATOR");
    std::istringstream stream(emulator != nullptr ? emulator : "");
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    words.push_back(host);
    words.push_back(options.driver);
    if (options.act)
        words.emplace_back("--act");
    if (options.channels)
        words.emplace_back("--channels");
    return words;
}

void RunChecks(Report& report, const std::string& host, const Options& options) {
    const bool loadable = CheckFiles(report, options.driver, host, options.runtime);
    if (!options.channels) {
        CheckPaths(report);
        CheckRights(report);
        CheckTimeZone(report);
    }
    if (loadable)
        return RunTestHost(report, Command(host, options));
    report.Group("The driver");
    report.Run("start", [] {
        return Wrong("not tried: it cannot be loaded", "mend what is wrong with its file first");
    });
}

}  // namespace

int main(int argc, char** argv) {
    if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        std::setlocale(LC_CTYPE, "C");
    std::signal(SIGPIPE, SIG_IGN);  // seen as a failed write
    Options options;
    int exitCode = 0;
    if (!ParseOptions(argc, argv, options, exitCode))
        return exitCode;
    const std::string folder = OwnFolder();
    if (options.driver.empty())
        options.driver = FindDriver(folder);
    Report report(options.json       ? Report::JSON
                  : options.channels ? Report::TEXT_FAULTS_ONLY
                                     : Report::TEXT);
    RunChecks(report, folder + "/hxdcheck-host", options);
    return report.Finish(options.driver) ? report.Worst() : EXIT_USAGE;
}
