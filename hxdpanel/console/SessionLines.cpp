// What a line leads to: the console's own commands, the hardware's, and the driver's.
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/console/Help.h"
#include "hxdpanel/console/Session.h"
#include "hxdpanel/console/Vocabulary.h"
#include "hxdpanel/panel/HardwareCommands.h"

#include <algorithm>

namespace {

const char* const OPEN_QUOTE = "the quote is not closed at the end of the line";

// The first word and what follows it.
struct Words {
    std::string first;
    std::string rest;
};

Words Split(const std::string& text) {
    const std::string trimmed = Trimmed(text);
    const std::size_t end = std::min(trimmed.find_first_of(" \t"), trimmed.size());
    return {trimmed.substr(0, end), Trimmed(trimmed.substr(end))};
}

std::vector<std::string> AllWords(std::string rest) {
    std::vector<std::string> words;
    while (!rest.empty())
        words.push_back(TakeWord(rest));
    return words;
}

}  // namespace

int Session::Run(const std::string& line) {
    if (vocabulary::PlaceOf(line) == vocabulary::Place::TERMINAL) {
        m_result = LineResult();
        return RunWatch(Split(line).rest);
    }
    const Turn turn(*this);
    return RunInTurn(line);
}

int Session::RunInTurn(const std::string& line) {
    std::string error;
    if (!vocabulary::Understands(line, error))
        return Complain(error);
    m_result = LineResult();
    const std::string first = Split(line).first;
    if (first.empty() || first[0] == '#')
        return EXIT_DONE;
    const bool wasOn = m_recorder.IsOn();
    const int exitCode = RunMeaningful(line);
    if (wasOn && (exitCode != EXIT_USAGE || !m_result.isKnown) && first != "record")
        m_recorder.Add(line, m_result, m_database);
    return exitCode;
}

int Session::RunMeaningful(const std::string& line) {
    const Words words = Split(line);
    if (HardwareCommands::Find(words.first) != nullptr)
        return RunHardware(Trimmed(line), words.first);
    const vocabulary::ConsoleCommand* const command = vocabulary::FindConsoleCommand(words.first);
    if (command == nullptr)
        return RunDriverCommand(Trimmed(line));
    if (*command->topic.arguments == '\0' && !words.rest.empty())
        return Complain("usage: " + words.first + ", without " + Quoted(words.rest));
    return RunVerb(command->verb, words.rest);
}

int Session::RunVerb(vocabulary::Verb verb, const std::string& rest) {
    using vocabulary::Verb;
    switch (verb) {
        case Verb::CHANNELS:
            return ShowChannels(AllWords(rest));
        case Verb::READ:
            return RunRead(rest);
        case Verb::WATCH:
            return RunWatch(rest);
        case Verb::WRITE:
            return RunWrite(rest);
        case Verb::SET:
            return RunSet(rest);
        case Verb::VARS:
            return ShowVariables();
        case Verb::PANEL:
            return ShowPanel();
        case Verb::NTP:
            return ShowTime();
        case Verb::HELP:
            return PrintHelp(m_pOut, rest, AsJson());
        case Verb::RECORD:
            return RunRecord(rest);
        case Verb::PAGE:
            return ShowPage();
        case Verb::QUIT:
            m_bEnded = true;
    }
    return EXIT_DONE;
}

int Session::RunRead(const std::string& rest) {
    const std::vector<std::string> words = AllWords(rest);
    return words.size() == 1 ? Read(words[0])
                             : Complain("usage: read CHANNEL, for example read 21");
}

// "changes" and "every S" may stand anywhere among the channels.
int Session::RunWatch(const std::string& rest) {
    WatchOptions options;
    std::vector<std::string> channels;
    const std::vector<std::string> words = AllWords(rest);
    for (std::size_t i = 0; i < words.size(); ++i) {
        HostValue seconds;
        if (words[i] == "changes") {
            options.changes = true;
        } else if (words[i] != "every") {
            channels.push_back(words[i]);
        } else if (i + 1 < words.size() && ConvertValue(words[++i], DATATYPE_DOUBLE, seconds) &&
                   seconds.number >= 0.01 && seconds.number <= 86400.0) {
            options.interval = seconds.number;
        } else {
            return Complain("usage: watch [CHANNEL...] [every SECONDS], from 0.01 to 86400");
        }
    }
    return WatchChannels(options, channels, nullptr);
}

int Session::RunWrite(const std::string& rest) {
    std::string text = rest;
    const std::string channel = TakeWord(text);
    if (channel.empty() || text.empty())
        return Complain(
            "usage: write CHANNEL VALUE, for example write 21 40; \"\" is the empty text");
    if (HasOpenQuote(text))
        return Complain(OPEN_QUOTE);
    Unquote(text);
    return Write(channel, text);
}

// "set NAME VALUE" and "set NAME=VALUE"; quotes around a value make it a text.
int Session::RunSet(const std::string& rest) {
    const std::size_t end = std::min(rest.find_first_of(" \t="), rest.size());
    std::string name = rest.substr(0, end);
    std::string text = Trimmed(rest.substr(std::min(end + 1, rest.size())));
    if (HasOpenQuote(text))
        return Complain(OPEN_QUOTE);
    const bool quoted = Unquote(text);
    if (quoted && name.find(':') == std::string::npos)
        name += ":text";
    Definition definition;
    std::string error;
    if (name.empty())
        return Complain("usage: set NAME[:TYPE] VALUE, for example set result 0");
    if (!ParseDefinition(name, text, definition, error))
        return Complain(error);
    return SetVariable(definition);
}

int Session::RunRecord(const std::string& rest) {
    std::string name = rest;
    std::string error;
    bool done = true;
    if (rest.empty())
        return Complain("usage: record FILE, or record off");
    if (HasOpenQuote(name))
        return Complain(OPEN_QUOTE);
    Unquote(name);
    const std::string stopped = m_recorder.Stop(done);
    if (!done)
        return Complain("not all of " + Quoted(stopped) + " could be written");
    if (!stopped.empty())
        std::fprintf(m_pOut, "recorded %s\n", Visible(stopped).c_str());
    if (rest == "off")
        return stopped.empty() ? Complain("nothing is being recorded") : EXIT_DONE;
    if (!m_recorder.Start(m_files.userFolder, name, error))
        return Complain(error);
    std::fprintf(m_pOut, "recording %s until record off\n", Visible(name).c_str());
    return EXIT_DONE;
}

// The socket is opened outside the sandbox, so it is there from the start or not at all.
int Session::ShowPage() {
    if (m_shared.pageAddress.empty())
        return Complain("there is no page: start hxdpanel with --page to have one");
    if (m_bJson)
        PrintJson(m_pOut, m_eLayout, "page", {{"address", m_shared.pageAddress}});
    else
        std::fprintf(m_pOut, "%s\n", m_shared.pageAddress.c_str());
    return EXIT_DONE;
}
