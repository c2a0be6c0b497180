// What the user of the console types, and his scripts.
#include "SimPanel.h"
#include "fuzz/Fuzz.h"
#include "fuzz/FuzzPanel.h"
#include "hxdpanel/Options.h"
#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/report/ChannelChoice.h"
#include "hxdpanel/report/CommandHints.h"
#include "hxdpanel/script/Echo.h"
#include "hxdpanel/script/Script.h"

#include <sstream>

void fuzz::Expectations(Input& input) {
    HostValue value = GuessValue(input.ConsumeRandomLengthString(64));
    value.type = input.PickValueInArray({DATATYPE_INTEGER, DATATYPE_DOUBLE, DATATYPE_TEXT});
    const std::string text = input.ConsumeRemainingBytesAsString();
    Expectation expectation;
    std::string error;
    if (ParseExpectation(text, expectation, error)) {
        Holds(expectation, value, error);
        IsEvent(expectation, value.text);
    } else {
        FUZZ_EXPECT(!error.empty());
    }
    long long number = 0;
    ParseDuration(text, number);
    ParseSize(text, number);
    Definition definition;
    ParseDefinition(value.text, text, definition, error);
    HostValue converted;
    ConvertValue(text, value.type, converted);
    ValueText(converted);
    CommandText parsed;
    ParseCommandText(text, parsed);
    std::vector<int> numbers;
    std::string rest = text;
    while (!rest.empty())
        TakeWord(rest);
    ChooseChannels({text, value.text}, 40, numbers, error);
    Shortened(Visible(text), text.size() / 2);
}

void fuzz::CommandLine(Input& input) {
    std::vector<std::string> words = {"hxdpanel"};
    while (input.remaining_bytes() > 0)
        words.push_back(
            input.ConsumeRandomLengthString(200).c_str());  // without zeros, as they come
    std::vector<const char*> arguments;
    for (const std::string& word : words)
        arguments.push_back(word.c_str());
    arguments.push_back(nullptr);
    Options options;
    int exitCode = 0;
    ParseOptions(static_cast<int>(words.size()), arguments.data(), options, exitCode);
}

// Each input has variables and a session of its own; the panel is what the inputs before have left.
void fuzz::Scripts(Input& input) {
    const bool asJson = input.ConsumeBool();
    const bool echo = input.ConsumeBool();
    SharedRun shared;
    Session session(FuzzPanel::Instance().Parts(shared));
    static std::FILE* const nowhere = std::fopen("/dev/null", "w");
    ScriptReport report(nowhere, asJson ? ScriptReport::TAP : ScriptReport::SUMMARY);
    Echo shown(nowhere, asJson ? "# " : "");
    session.BeScript(echo ? shown.Stream() : nullptr);
    if (asJson)
        session.UseJson(JsonLayout::LINE);
    const std::string text = input.ConsumeRemainingBytesAsString();
    session.Completions(text.substr(0, text.find('\n')));
    std::istringstream lines(text);
    Script script(session, {true}, report, echo ? &shown : nullptr);
    script.Run("input", lines);
    report.PrintJunit(nowhere);
    sim::SimPanel::Instance().Reset();
}
