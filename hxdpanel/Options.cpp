#include "hxdpanel/Options.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <cctype>
#include <functional>

#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Text.h"

namespace {

const char* const DESCRIPTION =
    "hxdpanel: a simulated touch panel with the real driver in it. Without a subcommand it starts\n"
    "an interactive console. The driver runs in a sandbox: nothing it does reaches this machine.";

const char* const FOOTER =
    "Exit code: 0 done; 1 the driver reported a status other than 0; 2 wrong usage, or the "
    "results\n"
    "cannot be written; 3 the driver cannot be loaded or initialised; 4 the panel's description "
    "or\n"
    "files cannot be used; 125 the sandbox could not be set up; 129 the panel was rebooted.\n\n"
    "Examples:\n"
    "  hxdpanel channels --json\n"
    "  hxdpanel write 21 40\n"
    "  hxdpanel exec --set secret=abc --set digest:text= 'STRSHA256(secret,digest)'\n"
    "  hxdpanel watch --interval 0.5 --csv values.csv";

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

void AddGeneralOptions(CLI::App& app, Options& options) {
    app.add_option("--panel", options.panel,
                   "Folder of the panel: panel.ini describes its hardware, root/ its files")
        ->check(CLI::ExistingDirectory)
        ->check(
            [](const std::string& folder) {
                const bool isPanel = ::access((folder + "/panel.ini").c_str(), F_OK) == 0 ||
                                     ::access((folder + "/root").c_str(), F_OK) == 0;
                return isPanel ? std::string() : "neither panel.ini nor root/ in " + Quoted(folder);
            },
            "");
    app.add_option("--root", options.root,
                   "Keep the panel's files in DIR (default: a folder among the user's data; with "
                   "--panel fresh files)")
        ->type_name("DIR");
    app.add_flag("--fresh", options.fresh, "Start with fresh files and keep none");
    app.add_option("--driver", options.driver, "The driver library (default: the one built here)")
        ->type_name("FILE");
    app.add_option("--channels", options.channels, "How many channels the host asks for")
        ->capture_default_str()
        ->check(CLI::Range(1, 65536))
        ->type_name("N");
    app.add_option("--log", options.logLevel,
                   "Show the driver's log lines up to a level: 1 errors, 4 trace")
        ->check(CLI::Range(0, 9))
        ->type_name("LEVEL");
    app.add_flag_callback(
        "--no-vnc", [&options] { options.lockPlugin = false; },
        "Run the host without the remote-view plug-in");
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
    app.add_option("--csv-descriptor", inside.csvDescriptor)->group("");
    app.add_option("--stop-descriptor", inside.stopDescriptor)->group("");
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

void AddSubcommands(CLI::App& app, Options& options) {
    CLI::App* const channels = AddSubcommand(app, options, Options::CHANNELS, "channels",
                                             "Show the panel's channels and their values");
    channels->add_flag("--json", options.json, "As JSON, an object for each channel");

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
    exec->add_option("COMMAND", options.commands, "For example 'GetCpuUse(10)'")->required();

    CLI::App* const write =
        AddSubcommand(app, options, Options::WRITE, "write", "Write a value to a channel");
    write->add_option("N", options.number, "Number of the channel, 1 to 32")->required();
    write->add_option("VALUE", options.value, "What to write")->required();

    CLI::App* const watch = AddSubcommand(app, options, Options::WATCH, "watch",
                                          "Show the channels again and again, until Ctrl-C");
    watch->add_option("--interval", options.interval, "Seconds between two readings")
        ->capture_default_str()
        ->check(CLI::Range(0.01, 86400.0))
        ->type_name("S");
    watch->add_option("--count", options.count, "Stop after so many readings")
        ->check(CLI::Range(1, 1000000000))
        ->type_name("N");
    watch->add_option("--csv", options.csv, "Write a line for each reading; - for standard output")
        ->type_name("FILE");

    AddSubcommand(app, options, Options::PANEL, "panel",
                  "Show the simulated hardware and what the driver did to it");
    AddSubcommand(app, options, Options::NTP, "ntp",
                  "Show the time settings and what the clocks were set to");
    CLI::App* const help =
        AddSubcommand(app, options, Options::HELP, "help",
                      "Explain a command of the driver or the console, or list them");
    help->add_option("COMMAND", options.helpTopic, "Name of the command, or number of a channel");
}

// Words that no option or subcommand takes.
void ExplainExtras(const std::vector<std::string>& words) {
    const std::string word = words.empty() ? "" : words.front();
    const std::string closest =
        Closest(word, {"channels", "exec", "write", "watch", "panel", "ntp", "help"});
    std::string advice = "see hxdpanel --help";
    if (word.find('(') != std::string::npos)
        advice = "to run a command of the driver: hxdpanel exec '" + Visible(word) + "'";
    else if (!closest.empty())
        advice = "did you mean " + closest + "?";
    std::fprintf(stderr, "hxdpanel: %s means nothing here; %s\n", Quoted(word).c_str(),
                 advice.c_str());
}

}  // namespace

bool ParseOptions(int argc, const char* const* argv, Options& options, int& exitCode) {
    CLI::App app(DESCRIPTION, "hxdpanel");
    app.footer(FOOTER);
    app.fallthrough();
    app.require_subcommand(0, 1);
    ParseBlob(DEFAULT_BLOB, options.blob);
    AddGeneralOptions(app, options);
    AddInsideOptions(app, options.inside);
    AddSubcommands(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ExtrasError&) {
        ExplainExtras(app.remaining(true));
        exitCode = EXIT_USAGE;
        return false;
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
        return false;
    }
    options.history = options.mode == Options::CONSOLE;
    return true;
}
