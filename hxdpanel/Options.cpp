#include "hxdpanel/Options.h"

#include "HxdVersion.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <cctype>
#include <functional>
#include <sstream>

#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/console/Vocabulary.h"

namespace {

const char* const DESCRIPTION =
    "hxdpanel: a simulated touch panel with the real driver in it. Without a subcommand it starts\n"
    "an interactive console. The driver runs in a sandbox: nothing it does reaches this machine.";

const char* const EXAMPLES =
    "Examples:\n"
    "  hxdpanel channels --json\n"
    "  hxdpanel read brightness\n"
    "  hxdpanel write 21 40\n"
    "  hxdpanel exec --set secret=abc --set digest:text= 'STRSHA256(secret,digest)'\n"
    "  hxdpanel watch 10 11 26-28 --interval 0.5 --csv values.csv";

std::string Footer() {
    std::string text = "Exit code:\n";
    for (const ExitMeaning& row : EXIT_MEANINGS)
        text += "  " + PadRight(std::to_string(row.code), 5) + row.meaning + "\n";
    return text + "\n" + EXAMPLES;
}

// Two parameters, each 32-bit little-endian after their number: device address 0, communication
// wait time 200 ms.
const char* const DEFAULT_BLOB = "02000000 00000000 C8000000";

bool ParseBlob(const std::string& text, std::vector<unsigned char>& blob) {
    std::string digits;
    for (const char character : text) {
        if (std::isxdigit(static_cast<unsigned char>(character)) != 0)
            digits += character;
        else if (character != ' ')
            return false;
    }
    blob.clear();
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        blob.push_back(static_cast<unsigned char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return digits.size() % 2 == 0;
}

// NAME=VALUE or NAME:TYPE=VALUE, each as a variable.
std::string AddVariable(const std::string& text, std::vector<Definition>& variables) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        return Quoted(text) + " is not NAME=VALUE";
    Definition definition;
    std::string error;
    if (!ParseDefinition(text.substr(0, equals), text.substr(equals + 1), definition, error))
        return error;
    variables.push_back(definition);
    return "";
}

// An empty path would silently stand for the default.
std::string NotEmpty(const std::string& text) {
    return text.empty() ? "needs a path, not an empty text" : "";
}

// Outside the sandbox: the paths are the user's. "" when the folder is a panel.
std::string PanelError(const std::string& folder) {
    const bool isPanel = ::access((folder + "/panel.ini").c_str(), F_OK) == 0 ||
                         ::access((folder + "/root").c_str(), F_OK) == 0;
    return folder.empty() || isPanel ? ""
                                     : "--panel: neither panel.ini nor root/ in " + Quoted(folder);
}

// port: as typed; empty for any.
void WantPage(const std::string& port, sandbox::Setup::Page& page) {
    long long number = 0;
    if (!port.empty() && !ParseWhole(port, 0, 65535, number))
        throw CLI::ValidationError("--page", "takes a port from 0 to 65535, not " + Quoted(port));
    page.wanted = true;
    page.port = static_cast<int>(number);
}

void AddPageOptions(CLI::App& app, sandbox::Setup::Page& page) {
    CLI::Option* const option = app.add_option_function<std::string>(
        "--page", [&page](const std::string& port) { WantPage(port, page); },
        "Show the panel in a browser, beside the console: at this port of the machine or a free "
        "one");
    option->expected(0, 1)->type_name("[PORT]");
    app.add_option_function<std::string>(
           "--listen",
           [&page](const std::string& address) {
               page.address = address;
               page.isOpen = true;
           },
           "Let other machines reach the page at this IPv4 address of the machine, 0.0.0.0 for all "
           "of its; they need the token that is printed")
        ->needs(option)
        ->check(CLI::ValidIPV4)
        ->type_name("ADDRESS");
}

void AddGeneralOptions(CLI::App& app, Options& options) {
    CLI::Option* const panel =
        app.add_option("--panel", options.panel,
                       "Folder of the panel: panel.ini describes its hardware, root/ its files");
    panel->check(NotEmpty)->type_name("DIR");
    app.add_flag("--over-default", options.overDefault,
                 "Lay the folder of --panel over the default panel instead of replacing it")
        ->needs(panel);
    CLI::Option* const root = app.add_option(
        "--root", options.root,
        "Keep the panel's files in DIR (default: a folder among the user's data; with "
        "--panel fresh files)");
    root->check(NotEmpty)->type_name("DIR");
    app.add_flag("--fresh", options.fresh, "Start with fresh files and keep none")->excludes(root);
    app.add_option("--driver", options.driver, "The driver library (default: the one built here)")
        ->check(NotEmpty)
        ->type_name("FILE");
    app.add_option("--channels", options.channels, "How many channels the host asks for")
        ->capture_default_str()
        ->check(CLI::Range(1, 65536))
        ->type_name("N");
    app.add_option("--log", options.logLevel,
                   "Show the driver's log lines up to a level: 1 errors, 4 trace")
        ->check(CLI::Range(0, 9))
        ->type_name("LEVEL");
    app.add_flag("--json", options.json, "Results as JSON objects; docs/json.md describes them");
    app.add_flag_callback(
        "--no-vnc", [&options] { options.lockPlugin = false; },
        "Run the host without the remote-view plug-in");
    AddPageOptions(app, options.page);
    app.add_flag("--time-server", options.timeServer,
                 "Start a time server in the panel's network; until the end it is time server 1");
    app.add_option_function<std::string>(
           "--blob",
           [&options](const std::string& text) {
               if (!ParseBlob(text, options.blob))
                   throw CLI::ValidationError("--blob", "is not pairs of hexadecimal digits");
           },
           std::string("Configuration of the device (default: ") + DEFAULT_BLOB + ")")
        ->type_name("HEX");
}

// Not shown in the help: see sandbox::Setup::Inside.
void AddInsideOptions(CLI::App& app, sandbox::Setup::Inside& inside) {
    app.add_flag("--launched", inside.launched)->group("");
    app.add_option("--results-descriptor", inside.resultsDescriptor)->group("");
    app.add_option("--folder-descriptor", inside.folderDescriptor)->group("");
    app.add_option("--page-descriptor", inside.pageDescriptor)->group("");
    app.add_option("--stop-descriptor", inside.stopDescriptor)->group("");
    app.add_option("--machine", inside.machine)->group("");
    app.add_option("--driver-inside", inside.driver)->group("");
    app.add_option("--history-folder", inside.historyFolder)->group("");
    app.add_option("--files-outside", inside.filesOutside)->group("");
}

CLI::App* AddSubcommand(CLI::App& app, Options& options, Options::Mode mode, const char* name,
                        const char* description) {
    CLI::App* const subcommand = app.add_subcommand(name, description);
    subcommand->callback([&options, mode] { options.mode = mode; });
    return subcommand;
}

std::string OneChannel() {
    return "Number, 1 to " + std::to_string(CHANNEL_COUNT) + ", or name like brightness or com1";
}

void AddChannels(CLI::App& subcommand, Options& options) {
    subcommand.add_option("CHANNEL", options.chosen,
                          "Number, range like 26-28, or name like brightness or com1");
}

void AddSubcommands(CLI::App& app, Options& options) {
    CLI::App* const channels = AddSubcommand(app, options, Options::CHANNELS, "channels",
                                             "Show the panel's channels and their values");
    AddChannels(*channels, options);
    CLI::App* const read = AddSubcommand(app, options, Options::READ, "read",
                                         "Print the value of a channel and nothing else");
    read->add_option("CHANNEL", options.channel, OneChannel())->required();

    CLI::App* const exec = AddSubcommand(app, options, Options::EXEC, "exec",
                                         "Run commands of the driver, or of the console, in order");
    exec->add_option_function<std::vector<std::string>>(
            "--set",
            [&options](const std::vector<std::string>& texts) {
                for (const std::string& text : texts) {
                    const std::string error = AddVariable(text, options.variables);
                    if (!error.empty())
                        throw CLI::ValidationError("--set", error);
                }
            },
            "Set a variable of the host first; its type follows the value, or is forced by "
            "NAME:int=, NAME:double= or NAME:text=")
        ->allow_extra_args(false)
        ->type_name("NAME=VALUE");
    exec->add_option("COMMAND", options.commands, "For example 'GetCpuUse(10)'")
        ->check([](const std::string& text) {
            return Trimmed(text).empty() ? "a command is empty" : std::string();
        })
        ->required();

    CLI::App* const write =
        AddSubcommand(app, options, Options::WRITE, "write", "Write a value to a channel");
    write->add_option("CHANNEL", options.channel, OneChannel())->required();
    write->add_option("VALUE", options.value, "What to write")->required();

    CLI::App* const watch = AddSubcommand(app, options, Options::WATCH, "watch",
                                          "Show the channels again and again, until Ctrl-C");
    AddChannels(*watch, options);
    watch->add_option("--interval", options.interval, "Seconds between two readings")
        ->capture_default_str()
        ->check(CLI::Range(0.01, 86400.0))
        ->type_name("S");
    watch->add_option("--count", options.count, "Stop after so many readings")
        ->check(CLI::Range(1, 1000000000))
        ->type_name("N");
    CLI::Option* const csv = watch->add_option(
        "--csv", options.resultsFile, "Write a line for each reading; - for standard output");
    csv->check(NotEmpty)->type_name("FILE")->excludes(app.get_option("--json"));
    watch->add_flag("--changes", options.changes,
                    "Only what differs from the reading before: a line for each channel, or the "
                    "line of CSV or JSON when there is something");

    AddSubcommand(app, options, Options::PANEL, "panel",
                  "Show the simulated hardware and what the driver did to it");
    AddSubcommand(app, options, Options::NTP, "ntp",
                  "Show the time settings and what the clocks were set to");
    CLI::App* const script =
        AddSubcommand(app, options, Options::SCRIPT, "script",
                      "Run scripts: lines of the console with what they should lead to");
    script->add_option("FILE", options.scripts, "Scripts, in order; - for standard input")
        ->check(NotEmpty)
        ->required();
    script->add_flag("--keep-going", options.keepGoing, "Go on after a failure");
    script->add_flag("--echo", options.echo, "Show each line and what it prints");
    script->add_flag("--tap", options.tap,
                     "A line for each expectation, for programs that read TAP");
    script
        ->add_option("--junit", options.resultsFile,
                     "Write a report for a build server; - for standard output")
        ->check(NotEmpty)
        ->type_name("FILE");
    CLI::App* const help =
        AddSubcommand(app, options, Options::HELP, "help",
                      "Explain a command of the driver or the console, or list them");
    help->add_option("TOPIC", options.helpTopic, "Name of the command, or a channel");
}

// Each line at the window's width; what goes on after a gap goes on below it.
void PrintUsage(const CLI::App& app) {
    std::istringstream lines(app.help());
    for (std::string line; std::getline(lines, line);) {
        const std::size_t gap = line.find("  ", line.find_first_not_of(' '));
        const std::size_t column = line.find_first_not_of(' ', gap);
        const std::size_t indent = line.compare(0, 2, "  ") == 0 ? 4 : 0;
        std::printf(
            "%s\n",
            terminal::Wrapped(stdout, line, gap == std::string::npos ? indent : column).c_str());
    }
}

// Words that no option or subcommand takes.
void ExplainExtras(const CLI::App& app) {
    const std::vector<std::string> words = app.remaining(true);
    const std::string word = words.empty() ? "" : words.front();
    const std::string line = Joined(words, " ");
    std::vector<std::string> subcommands;
    for (const CLI::App* subcommand : app.get_subcommands(nullptr))
        subcommands.push_back(subcommand->get_name());
    const std::string closest = Closest(word, subcommands);
    std::string advice = "see hxdpanel --help";
    std::string error;
    if (word.find('(') != std::string::npos)
        advice = "to run a command of the driver: hxdpanel exec '" + Visible(word) + "'";
    else if (vocabulary::Understands(line, error) &&
             vocabulary::PlaceOf(line) == vocabulary::Place::PAGE)
        advice = "to run a line of the console: hxdpanel exec '" + Visible(line) + "'";
    else if (!closest.empty())
        advice = "did you mean " + closest + "?";
    std::fprintf(stderr, "hxdpanel: %s means nothing here; %s\n", Quoted(word).c_str(),
                 advice.c_str());
}

}  // namespace

bool ParseOptions(int argc, const char* const* argv, Options& options, int& exitCode) {
    CLI::App app(DESCRIPTION, "hxdpanel");
    app.footer(Footer());
    app.set_version_flag("--version", HXD_VERSION_TEXT, "Print the version and exit");
    app.fallthrough();
    app.require_subcommand(0, 1);
    ParseBlob(DEFAULT_BLOB, options.blob);
    AddGeneralOptions(app, options);
    AddInsideOptions(app, options.inside);
    AddSubcommands(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ExtrasError&) {
        ExplainExtras(app);
        exitCode = EXIT_USAGE;
        return false;
    } catch (const CLI::CallForHelp&) {
        PrintUsage(app);
        exitCode = EXIT_DONE;
        return false;
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
        return false;
    }
    std::string error = options.inside.launched ? "" : PanelError(options.panel);
    if (options.mode == Options::SCRIPT && options.json)
        error = "script has --tap and --junit instead of --json";
    if (!error.empty()) {
        std::fprintf(stderr, "hxdpanel: %s\n", error.c_str());
        exitCode = EXIT_USAGE;
        return false;
    }
    if (options.page.wanted && options.mode != Options::CONSOLE) {
        std::fputs("hxdpanel: --page goes with the console, not with a subcommand\n", stderr);
        exitCode = EXIT_USAGE;
        return false;
    }
    options.history = options.mode == Options::CONSOLE;
    return true;
}
