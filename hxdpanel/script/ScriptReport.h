// What became of a script's lines, for its user and for a build server.
#ifndef HXDPANEL_SCRIPTREPORT_H
#define HXDPANEL_SCRIPTREPORT_H

#include <cstdio>
#include <string>
#include <vector>

struct ScriptCheck {
    int line;
    std::string text;     // the line
    std::string failure;  // "wanted ..., got ..."; empty: it held
};

class ScriptReport {
public:
    enum Form { SUMMARY, TAP };

    // results: where the report goes; failures go to standard error, too, unless the form says
    // them.
    ScriptReport(std::FILE* results, Form form) : m_pResults(results), m_eForm(form) {}

    void Begin();
    void BeginFile(const std::string& file);
    void Add(const ScriptCheck& check);
    // ended: whether every line of the file was run.
    void EndFile(int lines, bool ended);
    void End();
    bool HasFailures() const;

    // As a build server reads it; a suite for each file, and each time that it was run.
    void PrintJunit(std::FILE* out) const;

private:
    struct FileRun {
        std::string file;
        std::vector<ScriptCheck> checks;

        std::size_t Failures() const;
        std::string LineOf(const ScriptCheck& check) const;  // "FILE:LINE"
    };

    std::FILE* m_pResults;
    Form m_eForm;
    std::vector<FileRun> m_runs;  // never empty between BeginFile() and the end
    std::size_t m_nChecks = 0;    // of all
};

#endif
