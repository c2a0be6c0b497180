#include "hxdpanel/script/Script.h"

#include "SimPanel.h"
#include "common/ResultCodes.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Interrupt.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/console/Session.h"
#include "hxdpanel/console/Vocabulary.h"
#include "hxdpanel/report/ChannelChoice.h"
#include "hxdpanel/report/ChannelReport.h"
#include "hxdpanel/report/PanelReport.h"
#include "hxdpanel/script/Echo.h"

#include <algorithm>

namespace {

constexpr int MOST_LOOKS = 60;  // of one wait
constexpr long long SHORTEST_STEP_MS = 200;
constexpr int REAL_PATIENCE_MS = 3000;  // for what takes real time, like a synchronisation
constexpr int REAL_STEP_MS = 50;

const char* const SIGNS[] = {"=", "!=", "<", "<=", ">", ">="};  // by Expectation::Comparison

std::string WantedText(const Expectation& expectation, const std::string& subject) {
    const char mark = expectation.isPattern ? '/' : '"';
    std::string wanted = Visible(expectation.wanted);
    if (expectation.isPattern || expectation.isQuoted)
        wanted = mark + wanted + mark;
    if (expectation.tolerance > 0.0)
        wanted += " ~ " + NumberText(expectation.tolerance);
    return subject + " " + SIGNS[expectation.comparison] + " " + wanted;
}

bool IsWhole(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

Script::Script(Session& session, const ScriptOptions& options, ScriptReport& report, Echo* echo)
    : m_session(session), m_options(options), m_report(report), m_pEcho(echo) {}

bool Script::Run(const std::string& name, std::istream& lines) {
    sim::SimPanel::Instance().HoldClock();
    m_strFile = name;
    m_report.BeginFile(name);
    m_nLine = m_nStatusLine = 0;
    m_bAllowUnknown = m_bFailed = false;
    bool ended = false;
    while (!m_session.Ended() && !interrupt::Pending() && (!m_bFailed || m_options.keepGoing)) {
        ended = !std::getline(lines, m_strText);
        if (ended)
            break;
        if (++m_nLine == 1 && m_strText.compare(0, 3, "\xEF\xBB\xBF") == 0)
            m_strText.erase(0, 3);  // some editors begin so
        m_strText = Trimmed(m_strText);
        if (!m_strText.empty() && m_strText[0] != '#')
            RunLine(m_strText);
    }
    JudgeStatus();
    if (interrupt::Pending())
        Fail("interrupted");
    m_report.EndFile(m_nLine, ended || m_session.Ended());
    return !m_bFailed && (ended || m_session.Ended());
}

void Script::RunLine(const std::string& line) {
    if (m_pEcho != nullptr) {
        std::fprintf(m_pEcho->Stream(), "%s:%d: %s\n", Visible(m_strFile).c_str(), m_nLine,
                     Visible(line).c_str());
        m_pEcho->Show();
    }
    std::string rest = line;
    const std::string word = line.substr(0, line.find_first_of(" \t"));
    rest = Trimmed(line.substr(word.size()));
    if (word == "expect")
        return RunExpectation(rest);
    JudgeStatus();
    if (m_bFailed && !m_options.keepGoing)
        return;
    if (word == "wait")
        RunWait(rest);
    else if (word == "allow")
        Allow(rest);
    else
        RunOther(line);
}

void Script::RunOther(const std::string& line) {
    m_bRead = false;
    std::string error;
    if (!vocabulary::Understands(line, error))
        return Fail("wanted a line that means something, got: " + error);
    if (vocabulary::PlaceOf(line) > vocabulary::Place::SCRIPT)
        return Fail("wanted a line with an end, got " + Visible(line));
    const int exitCode = m_session.Run(line);
    if (m_pEcho != nullptr)
        m_pEcho->Show();
    const LineResult& result = m_session.Result();
    if (!result.isKnown && !m_bAllowUnknown)
        return Fail("wanted a command that the driver knows, got " + Visible(line) +
                    ", to which it does nothing and answers 0; allow unknown lets it pass");
    if (exitCode == EXIT_USAGE && result.isKnown)
        return Fail("wanted a line that can be run, got what is said above");
    if (result.hasStatus && result.status != RESULT_DONE) {
        m_nStatusLine = m_nLine;
        m_strStatus = m_strText;
    }
}

// A status other than 0 has to be expected, by the lines that follow.
void Script::JudgeStatus() {
    if (m_nStatusLine == 0)
        return;
    const int line = m_nStatusLine;
    m_nStatusLine = 0;
    Fail("wanted status 0, got " + m_session.Result().statusText +
             "; expect status N after it lets it pass",
         line, m_strStatus);
}

void Script::Allow(const std::string& what) {
    if (what != "unknown")
        return Fail("wanted allow unknown, got allow " + Visible(what));
    m_bAllowUnknown = true;
}

void Script::RunExpectation(const std::string& text) {
    Expectation expectation;
    std::string error;
    if (!ParseExpectation(text, expectation, error))
        return Fail("wanted an expectation, got " + Quoted(text) + "; " + error);
    if (expectation.subject == Expectation::STATUS)
        m_nStatusLine = 0;
    Judge(Observe(expectation));
}

// "EXPECTATION within TIME".
void Script::RunWait(const std::string& text) {
    const std::string word = " within ";
    const std::size_t within = text.rfind(word);
    const std::string time =
        within == std::string::npos ? "" : Trimmed(text.substr(within + word.size()));
    Expectation expectation;
    std::string error;
    long long withinMs = 0;
    if (!ParseDuration(time, withinMs))
        error = "usage: wait 27 = 4 within 2h";
    if (!error.empty() || !ParseExpectation(text.substr(0, within), expectation, error))
        return Fail("wanted an expectation and a time, got " + Quoted(text) + "; " + error);
    Observed observed = Await(expectation, withinMs);
    observed.wanted += " within " + time;
    Judge(observed);
}

Script::Observed Script::Await(const Expectation& expectation, long long withinMs) {
    const long long step = std::max(SHORTEST_STEP_MS, withinMs / MOST_LOOKS);
    Observed observed = Observe(expectation);
    const auto isDone = [&] {
        return observed.holds || !observed.error.empty() || interrupt::Pending();
    };
    for (long long left = withinMs; left > 0 && !isDone(); left -= step) {
        sim::SimPanel::Instance().PassClock(std::min(step, left));
        m_bRead = false;
        observed = Observe(expectation);
    }
    for (int waited = 0; waited < REAL_PATIENCE_MS && !isDone(); waited += REAL_STEP_MS) {
        interrupt::Wait(REAL_STEP_MS);
        m_bRead = false;
        observed = Observe(expectation);
    }
    return observed;
}

void Script::Judge(const Observed& observed) {
    if (!observed.error.empty())
        Fail("wanted " + observed.wanted + ", but " + observed.error);
    else if (!observed.holds)
        Fail("wanted " + observed.wanted + ", got " + observed.got);
    else
        m_report.Add({m_nLine, m_strText, ""});
}

Script::Observed Script::Observe(const Expectation& expectation) {
    switch (expectation.subject) {
        case Expectation::STATUS:
            return ObserveStatus(expectation);
        case Expectation::PANEL:
            return ObservePanel(expectation);
        default:
            return ObserveValue(expectation);
    }
}

Script::Observed Script::ObserveStatus(const Expectation& expectation) const {
    Observed observed;
    const LineResult& result = m_session.Result();
    observed.wanted = "status " + expectation.wanted;
    observed.got = result.hasStatus ? result.statusText : "a line without a status";
    observed.holds = result.hasStatus && expectation.wanted == std::to_string(result.status);
    return observed;
}

Script::Observed Script::ObservePanel(const Expectation& expectation) const {
    Observed observed;
    const std::vector<std::string> verbs = PanelVerbs();
    if (std::find(verbs.begin(), verbs.end(), expectation.name) == verbs.end())
        observed.error = "of what the panel does one can expect: " + Joined(verbs, "; ");
    const std::vector<std::string> events = PanelEvents(expectation.name);
    const auto count = std::count_if(events.begin(), events.end(), [&](const std::string& event) {
        return IsEvent(expectation, event);
    });
    const std::string times = std::to_string(expectation.times);
    observed.wanted = "panel " + std::string(expectation.times == 0 ? "not " : "") +
                      expectation.name + (expectation.wanted.empty() ? "" : " ") +
                      Visible(expectation.wanted) +
                      (expectation.times > 0 ? " " + times + " times" : "");
    observed.got = events.empty() ? "nothing" : Visible(Joined(events, "; "));
    observed.holds = expectation.times < 0 ? count > 0 : count == expectation.times;
    return observed;
}

// A number is a channel's; a word is a variable if there is one of this name, else a channel.
Script::Observed Script::ObserveValue(const Expectation& expectation) {
    Observed observed;
    HostValue value;
    std::string subject = Visible(expectation.name);
    int number = 0;
    if (IsWhole(expectation.name) || !m_session.Database().FindVariable(expectation.name, value)) {
        if (!m_bRead) {
            const Session::Turn turn(m_session);
            m_session.Refresh();
        }
        m_bRead = true;
        if (ChooseChannel(expectation.name, HighestChannel(m_session.Database()), number,
                          observed.error)) {
            const ShownChannel channel = ShowChannel(m_session.Database(), number);
            value = channel.received.value;
            subject = std::to_string(number) + " " + channel.name;
        }
    }
    observed.wanted = WantedText(expectation, subject);
    observed.got = ExpectationText(value);
    observed.holds = observed.error.empty() && Holds(expectation, value, observed.error);
    return observed;
}

void Script::Fail(const std::string& failure, int line, const std::string& text) {
    m_bFailed = true;
    m_report.Add({line, text, failure});
}
