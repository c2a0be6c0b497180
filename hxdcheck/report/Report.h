// The findings as people read them, line by line as they come, or as JSON at the end.
#ifndef HXDCHECK_REPORT_H
#define HXDCHECK_REPORT_H

#include "hxdcheck/report/Finding.h"

#include <array>
#include <string>
#include <vector>

class Report : public Findings {
public:
    enum Form { TEXT, TEXT_FAULTS_ONLY, JSON };  // the second: findings that are ok are left out

    explicit Report(Form form) : m_eForm(form) {}

    void Group(const std::string& title) override;
    void Begin(const std::string& name, int limitSeconds, const std::string& ifItDies) override;
    void End(const Finding& finding) override;
    void Channel(const ChannelLine& line) override;
    // A line that the driver or a library has printed.
    void Output(const std::string& line);

    // Prints the summary; driver: the file that was looked at. False when not all got out.
    bool Finish(const std::string& driver);

    Finding::Status Worst() const;

private:
    struct Entry {
        std::string group;
        std::string name;
        Finding finding;
    };

    void PrintTitle();
    std::string Json(const std::string& driver) const;

    Form m_eForm;
    std::string m_strGroup;
    bool m_bTitlePrinted = false;
    std::string m_strName;
    std::array<int, 3> m_counts = {};
    std::vector<Entry> m_entries;
    std::vector<ChannelLine> m_channels;
    std::vector<std::string> m_output;
};

#endif
