#include "hxdpanel/console/Recorder.h"

#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/report/PanelReport.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

// These differ from run to run.
const int VOLATILE[] = {CHANNEL_CPU_USE, CHANNEL_MEMORY_AVAILABLE, CHANNEL_STORAGE_FREE};

bool IsVolatile(int channel) {
    return std::find(std::begin(VOLATILE), std::end(VOLATILE), channel) != std::end(VOLATILE);
}

}  // namespace

bool Recorder::Start(int folder, const std::string& name, std::string& error) {
    if (name.find('/') != std::string::npos || folder == -1) {
        error = folder == -1
                    ? "record is for the console and for pipes"
                    : "the sandbox shows only the folder where hxdpanel was started: give a name "
                      "without /";
        return false;
    }
    const int file =
        ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    m_file.reset(file >= 0 ? ::fdopen(file, "w") : nullptr);
    if (m_file == nullptr) {
        error = "cannot write " + Quoted(name) + ": " + std::strerror(errno);
        return false;
    }
    m_strName = name;
    m_events.clear();
    for (const std::string& verb : PanelVerbs())
        m_events[verb] = PanelEvents(verb).size();
    std::fprintf(m_file.get(), "# recorded by hxdpanel; run it with: hxdpanel script %s\n",
                 Visible(name).c_str());
    return true;
}

std::string Recorder::Stop(bool& done) {
    done = m_file == nullptr || IsWritten(m_file.get());
    m_file.reset();
    std::string name;
    name.swap(m_strName);
    return name;
}

void Recorder::Add(const std::string& line, const LineResult& result,
                   const HostDatabase& database) {
    if (m_file == nullptr || Trimmed(line).empty())
        return;
    std::fprintf(m_file.get(), "%s%s\n", result.isKnown ? "" : "allow unknown\n",
                 Trimmed(line).c_str());
    if (result.hasStatus)
        std::fprintf(m_file.get(), "expect status %d\n", result.status);
    for (const std::string& name : result.variables) {
        HostValue value;
        if (database.FindVariable(name, value))
            std::fprintf(m_file.get(), "expect %s = %s\n", name.c_str(),
                         ExpectationText(value).c_str());
    }
    AddChannels(result, database);
    AddEvents();
    std::fflush(m_file.get());
}

void Recorder::AddChannels(const LineResult& result, const HostDatabase& database) {
    for (const int number : result.channels) {
        const HostDatabase::Received received = database.Channel(number);
        if (received.delivered)
            std::fprintf(m_file.get(), "%sexpect %d = %s\n", IsVolatile(number) ? "# " : "", number,
                         ExpectationText(received.value).c_str());
    }
}

// A restart forgets the events, so there may be fewer than before.
void Recorder::AddEvents() {
    for (const std::string& verb : PanelVerbs()) {
        const std::vector<std::string> events = PanelEvents(verb);
        std::size_t& known = m_events[verb];
        for (std::size_t i = std::min(known, events.size()); i < events.size(); ++i) {
            if (verb != "failed")  // the line that made it fail stands above
                std::fprintf(m_file.get(), "%sexpect panel %s %s\n",
                             verb == "ran" || verb == "clocked" ? "# " : "", verb.c_str(),
                             events[i].c_str());
        }
        known = events.size();
    }
}
