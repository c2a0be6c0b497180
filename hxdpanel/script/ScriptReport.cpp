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

std::string LineOf(const ScriptCheck& check) {
    return check.file + ":" + std::to_string(check.line);
}

}  // namespace

void ScriptReport::Begin() {
    if (m_form == TAP)
        std::fputs("TAP version 13\n", m_results);
}

void ScriptReport::Add(const ScriptCheck& check) {
    m_checks.push_back(check);
    const bool held = check.failure.empty();
    if (m_form == TAP)
        std::fprintf(m_results, "%sok %zu - %s %s\n%s", held ? "" : "not ", m_checks.size(),
                     TapText(LineOf(check)).c_str(), TapText(check.text).c_str(),
                     held ? "" : ("# " + Visible(check.failure) + "\n").c_str());
    if (!held)
        std::fprintf(stderr, "%s: %s\n", Visible(LineOf(check)).c_str(),
                     Visible(check.failure).c_str());
    std::fflush(m_results);
}

void ScriptReport::EndFile(const std::string& file, int lines, bool ended) {
    m_files.push_back(file);
    if (m_form == TAP)
        return;
    const auto isOfFile = [&](const ScriptCheck& check) { return check.file == file; };
    const auto failed = std::count_if(m_checks.begin(), m_checks.end(), [&](const auto& check) {
        return isOfFile(check) && !check.failure.empty();
    });
    const auto held = std::count_if(m_checks.begin(), m_checks.end(), isOfFile) - failed;
    std::fprintf(m_results, "%s: %d line%s%s, %lld expectation%s met, %lld failure%s\n",
                 Visible(file).c_str(), lines, lines == 1 ? "" : "s", ended ? "" : " (not all)",
                 static_cast<long long>(held), held == 1 ? "" : "s", static_cast<long long>(failed),
                 failed == 1 ? "" : "s");
    std::fflush(m_results);
}

void ScriptReport::End() {
    if (m_form == TAP)
        std::fprintf(m_results, "1..%zu\n", m_checks.size());
    std::fflush(m_results);
}

bool ScriptReport::HasFailures() const {
    return std::any_of(m_checks.begin(), m_checks.end(),
                       [](const ScriptCheck& check) { return !check.failure.empty(); });
}

void ScriptReport::PrintJunit(std::FILE* out) const {
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QLatin1String("testsuites"));
    for (const std::string& file : m_files) {
        xml.writeStartElement(QLatin1String("testsuite"));
        xml.writeAttribute(QLatin1String("name"), Xml(file));
        int tests = 0;
        int failures = 0;
        for (const ScriptCheck& check : m_checks) {
            tests += check.file == file ? 1 : 0;
            failures += check.file == file && !check.failure.empty() ? 1 : 0;
        }
        xml.writeAttribute(QLatin1String("tests"), QString::number(tests));
        xml.writeAttribute(QLatin1String("failures"), QString::number(failures));
        for (const ScriptCheck& check : m_checks) {
            if (check.file != file)
                continue;
            xml.writeStartElement(QLatin1String("testcase"));
            xml.writeAttribute(QLatin1String("classname"), Xml(file));
            xml.writeAttribute(QLatin1String("name"),
                               Xml(std::to_string(check.line) + ": " + check.text));
            if (!check.failure.empty()) {
                xml.writeStartElement(QLatin1String("failure"));
                xml.writeAttribute(QLatin1String("message"), Xml(check.failure));
                xml.writeCharacters(Xml(LineOf(check) + ": " + check.failure));
                xml.writeEndElement();
            }
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), out);
}
