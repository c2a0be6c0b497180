#include "hxdcheck/report/Report.h"

#include "HxdVersion.h"
#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"

#include <cstdio>

namespace {

constexpr std::size_t LINE_COLUMNS = 80;
const char* const STATUS_TEXTS[] = {"ok", "look at this", "WRONG"};
const char* const STATUS_NAMES[] = {"ok", "look", "wrong"};

void PrintWrapped(const std::string& text, std::size_t indent) {
    std::printf("%s\n", terminal::WrappedTo(LINE_COLUMNS, text, indent).c_str());
}

std::string Milliseconds(float milliseconds) {
    char text[32];
    std::snprintf(text, sizeof text, milliseconds < 10.0F ? "%.2f" : "%.0f",
                  static_cast<double>(milliseconds));
    return text;
}

std::string JsonText(const std::string& text) {
    std::string quoted = "\"";
    for (const char byte : Visible(text)) {
        if (byte == '"' || byte == '\\')
            quoted += '\\';
        quoted += byte;
    }
    return quoted + '"';
}

std::string JsonList(const char* name, const std::vector<std::string>& elements) {
    std::string list = std::string("  \"") + name + "\": [";
    const char* separator = "\n    ";
    for (const std::string& element : elements) {
        list += separator + element;
        separator = ",\n    ";
    }
    return list + (elements.empty() ? "]" : "\n  ]");
}

}  // namespace

void Report::Group(const std::string& title) {
    m_strGroup = title;
    m_bTitlePrinted = false;
}

void Report::PrintTitle() {
    if (!m_bTitlePrinted)
        std::printf("%s%s\n", m_entries.size() > 1 ? "\n" : "", m_strGroup.c_str());
    m_bTitlePrinted = true;
}

void Report::Begin(const std::string& name, int /*limitSeconds*/, const std::string& /*ifItDies*/) {
    m_strName = name;
}

void Report::End(const Finding& finding) {
    ++m_counts[finding.status];
    m_entries.push_back({m_strGroup, m_strName, finding});
    if (m_eForm == JSON || (m_eForm == TEXT_FAULTS_ONLY && finding.status == Finding::OK))
        return;
    PrintTitle();
    std::string text = Visible(finding.text);
    if (finding.milliseconds >= 0.0F)
        text += " (" + Milliseconds(finding.milliseconds) + "\u00a0ms)";
    const std::string status = "  " + PadRight(STATUS_TEXTS[finding.status], 14);
    PrintWrapped(status + Visible(m_strName) + ": " + text, status.size() + 2);
    if (!finding.remedy.empty())
        PrintWrapped(std::string(status.size() + 2, ' ') + "-> " + Visible(finding.remedy),
                     status.size() + 5);
    std::fflush(stdout);
}

void Report::Channel(const ChannelLine& line) {
    m_channels.push_back(line);
    if (m_eForm == JSON)
        return;
    m_bTitlePrinted = m_bTitlePrinted && m_channels.size() > 1;
    PrintTitle();
    std::string value = Visible(line.value) + (line.unit.empty() ? "" : " " + line.unit);
    if (!line.meaning.empty())
        value += " (" + line.meaning + ")";
    std::printf("  %2s  %s %s\n", line.number.c_str(), PadRight(line.name, 22).c_str(),
                value.c_str());
}

void Report::Output(const std::string& line) {
    m_output.push_back(line);
    if (m_eForm == TEXT)
        std::printf("                | %s\n", Visible(line).c_str());
}

Finding::Status Report::Worst() const {
    if (m_counts[Finding::WRONG] > 0)
        return Finding::WRONG;
    return m_counts[Finding::LOOK] > 0 ? Finding::LOOK : Finding::OK;
}

std::string Report::Json(const std::string& driver) const {
    std::vector<std::string> checks;
    for (const Entry& entry : m_entries) {
        const Finding& finding = entry.finding;
        checks.push_back("{\"group\": " + JsonText(entry.group) +
                         ", \"name\": " + JsonText(entry.name) + ", \"status\": \"" +
                         STATUS_NAMES[finding.status] + "\", \"text\": " + JsonText(finding.text) +
                         ", \"remedy\": " + JsonText(finding.remedy) + ", \"milliseconds\": " +
                         (finding.milliseconds < 0 ? "null" : Milliseconds(finding.milliseconds)) +
                         "}");
    }
    std::vector<std::string> channels;
    for (const ChannelLine& line : m_channels) {
        channels.push_back("{\"number\": " + line.number + ", \"name\": " + JsonText(line.name) +
                           ", \"unit\": " + JsonText(line.unit) + ", \"value\": " +
                           JsonText(line.value) + ", \"meaning\": " + JsonText(line.meaning) + "}");
    }
    std::vector<std::string> output;
    for (const std::string& line : m_output)
        output.push_back(JsonText(line));
    return "{\n  \"format\": 1,\n  \"hxdcheck\": " + JsonText(HXD_VERSION_TEXT) +
           ",\n  \"driver\": " + JsonText(driver) + ",\n  \"result\": \"" + STATUS_NAMES[Worst()] +
           "\",\n" + JsonList("checks", checks) + ",\n" + JsonList("channels", channels) + ",\n" +
           JsonList("output", output) + "\n}\n";
}

bool Report::Finish(const std::string& driver) {
    if (m_eForm == JSON)
        std::fputs(Json(driver).c_str(), stdout);
    if (m_eForm == TEXT)
        std::printf("\n%d ok, %d to look at, %d wrong.%s\n", m_counts[Finding::OK],
                    m_counts[Finding::LOOK], m_counts[Finding::WRONG],
                    m_counts[Finding::WRONG] > 0 ? " Begin with the first that is wrong;\n"
                                                   "it may explain the others."
                                                 : "");
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}
