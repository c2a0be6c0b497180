#include "hxdpanel/script/ScriptReport.h"

#include "hxdpanel/base/Text.h"

#include <algorithm>

#include <QByteArray>
#include <QString>
#include <QXmlStreamWriter>

namespace {

QString Xml(const std::string& text) {
    return QString::fromUtf8(Visible(text).c_str());
}

// A "#" in a TAP description would begin a directive.
std::string TapText(const std::string& text) {
    std::string escaped = Visible(text);
    for (std::size_t i = escaped.find('#'); i != std::string::npos; i = escaped.find('#', i + 2))
        escaped.insert(i, 1, '\\');
    return escaped;
}

const char* Plural(std::size_t count) {
    return count == 1 ? "" : "s";
}

}  // namespace

std::size_t ScriptReport::FileRun::Failures() const {
    const auto failed = [](const ScriptCheck& check) { return !check.failure.empty(); };
    return static_cast<std::size_t>(std::count_if(checks.begin(), checks.end(), failed));
}

std::string ScriptReport::FileRun::LineOf(const ScriptCheck& check) const {
    return file + ":" + std::to_string(check.line);
}

void ScriptReport::Begin() {
    if (m_eForm == TAP)
        std::fputs("TAP version 13\n", m_pResults);
}

void ScriptReport::BeginFile(const std::string& file) {
    m_runs.push_back({file, {}});
}

void ScriptReport::Add(const ScriptCheck& check) {
    FileRun& run = m_runs.back();
    run.checks.push_back(check);
    ++m_nChecks;
    const bool held = check.failure.empty();
    if (m_eForm == TAP)
        std::fprintf(m_pResults, "%sok %zu - %s %s\n%s", held ? "" : "not ", m_nChecks,
                     TapText(run.LineOf(check)).c_str(), TapText(check.text).c_str(),
                     held ? "" : ("# " + Visible(check.failure) + "\n").c_str());
    if (!held)
        std::fprintf(stderr, "%s: %s\n", Visible(run.LineOf(check)).c_str(),
                     Visible(check.failure).c_str());
    std::fflush(m_pResults);
}

void ScriptReport::EndFile(int lines, bool ended) {
    if (m_eForm == TAP)
        return;
    const FileRun& run = m_runs.back();
    const std::size_t failed = run.Failures();
    const std::size_t held = run.checks.size() - failed;
    std::fprintf(m_pResults, "%s: %d line%s%s, %zu expectation%s met, %zu failure%s\n",
                 Visible(run.file).c_str(), lines, lines == 1 ? "" : "s", ended ? "" : " (not all)",
                 held, Plural(held), failed, Plural(failed));
    std::fflush(m_pResults);
}

void ScriptReport::End() {
    if (m_eForm == TAP)
        std::fprintf(m_pResults, "1..%zu\n", m_nChecks);
    std::fflush(m_pResults);
}

bool ScriptReport::HasFailures() const {
    return std::any_of(m_runs.begin(), m_runs.end(),
                       [](const FileRun& run) { return run.Failures() > 0; });
}

void ScriptReport::PrintJunit(std::FILE* out) const {
    QByteArray text;
    QXmlStreamWriter xml(&text);
    const auto count = [](std::size_t number) {
        return QString::number(static_cast<qulonglong>(number));
    };
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QLatin1String("testsuites"));
    for (const FileRun& run : m_runs) {
        xml.writeStartElement(QLatin1String("testsuite"));
        xml.writeAttribute(QLatin1String("name"), Xml(run.file));
        xml.writeAttribute(QLatin1String("tests"), count(run.checks.size()));
        xml.writeAttribute(QLatin1String("failures"), count(run.Failures()));
        for (const ScriptCheck& check : run.checks) {
            xml.writeStartElement(QLatin1String("testcase"));
            xml.writeAttribute(QLatin1String("classname"), Xml(run.file));
            xml.writeAttribute(QLatin1String("name"),
                               Xml(std::to_string(check.line) + ": " + check.text));
            if (!check.failure.empty()) {
                xml.writeStartElement(QLatin1String("failure"));
                xml.writeAttribute(QLatin1String("message"), Xml(check.failure));
                xml.writeCharacters(Xml(run.LineOf(check) + ": " + check.failure));
                xml.writeEndElement();
            }
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), out);
}
