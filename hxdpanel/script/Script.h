// Scripts: lines of the console with what they should lead to.
#ifndef HXDPANEL_SCRIPT_H
#define HXDPANEL_SCRIPT_H

#include "hxdpanel/script/Expectation.h"
#include "hxdpanel/script/ScriptReport.h"

#include <istream>
#include <string>

class Echo;
class Session;

struct ScriptOptions {
    bool keepGoing = false;  // after a failure
};

// Runs scripts one after the other on the same panel. The clock is held: it moves by what the
// driver and the script wait for.
class Script {
public:
    // echo: for each line and what it prints; null: these are not shown.
    Script(Session& session, const ScriptOptions& options, ScriptReport& report, Echo* echo);

    // name: for messages. False when it ended early, by a failure or an interrupt.
    bool Run(const std::string& name, std::istream& lines);

private:
    void RunLine(const std::string& line);
    void RunExpectation(const std::string& text);
    void RunWait(const std::string& text);
    void RunOther(const std::string& line);
    void Allow(const std::string& what);

    struct Observed {
        bool holds = false;
        std::string error;  // the expectation means nothing
        std::string wanted;
        std::string got;
    };
    Observed Observe(const Expectation& expectation);
    Observed ObserveStatus(const Expectation& expectation) const;
    Observed ObservePanel(const Expectation& expectation) const;
    Observed ObserveValue(const Expectation& expectation);
    Observed Await(const Expectation& expectation, long long withinMs);
    void Judge(const Observed& observed);
    void JudgeStatus();
    void Fail(const std::string& failure, int line, const std::string& text);
    void Fail(const std::string& failure) { Fail(failure, m_nLine, m_strText); }

    Session& m_session;
    const ScriptOptions m_options;
    ScriptReport& m_report;
    Echo* m_pEcho;

    std::string m_strFile;
    int m_nLine = 0;
    std::string m_strText;
    int m_nStatusLine = 0;  // whose status other than 0 nobody has expected yet; 0: none
    std::string m_strStatus;
    bool m_bRead = false;  // the channels are those of now
    bool m_bAllowUnknown = false;
    bool m_bFailed = false;
};

#endif
