// What became of a script's lines, for its user and for a build server.
#ifndef HXDPANEL_SCRIPTREPORT_H
#define HXDPANEL_SCRIPTREPORT_H

#include <cstdio>
#include <string>
#include <vector>

struct ScriptCheck {
    std::string file;
    int line;
    std::string text;     // the line
    std::string failure;  // "wanted ..., got ..."; empty: it held
};

class ScriptReport {
public:
    enum Form { SUMMARY, TAP };

    // results: where the report goes; failures go to standard error, too, unless the form says
    // them.
    ScriptReport(std::FILE* results, Form form) : m_results(results), m_form(form) {}

    void Begin();
    void Add(const ScriptCheck& check);
    // ended: whether every line of the file was run.
    void EndFile(const std::string& file, int lines, bool ended);
    void End();
    bool HasFailures() const;

    // As a build server reads it; a suite for each file.
    void PrintJunit(std::FILE* out) const;

private:
    std::FILE* m_results;
    Form m_form;
    std::vector<ScriptCheck> m_checks;
    std::vector<std::string> m_files;
};

#endif
