#include "hxdcheck/host/FindingPipe.h"

#include "common/Retry.h"
#include "hxdcheck/report/Wire.h"
#include "hxdpanel/base/Text.h"

#include <unistd.h>

#include <cstdio>

void FindingPipe::Send(char kind, const std::vector<std::string>& fields) {
    std::fflush(stdout);  // what the driver has printed before
    std::string line = {wire::MARK, kind};
    for (const std::string& field : fields)
        line += wire::SEPARATOR + Visible(field);
    line += '\n';
    for (std::size_t sent = 0; sent < line.size();) {
        const ssize_t written = hxd::RetryInterrupted(
            [&] { return ::write(STDOUT_FILENO, line.data() + sent, line.size() - sent); });
        if (written <= 0)
            ::_exit(1);  // nobody listens any more
        sent += static_cast<std::size_t>(written);
    }
}

void FindingPipe::Group(const std::string& title) {
    Send(wire::GROUP, {title});
}

void FindingPipe::Begin(const std::string& name, int limitSeconds, const std::string& ifItDies) {
    Send(wire::BEGIN, {name, std::to_string(limitSeconds), ifItDies});
}

void FindingPipe::End(const Finding& finding) {
    Send(wire::END, {std::to_string(finding.status), finding.text, finding.remedy,
                     std::to_string(finding.milliseconds)});
}

void FindingPipe::Channel(const ChannelLine& line) {
    Send(wire::CHANNEL, {line.number, line.name, line.unit, line.value, line.meaning});
}

bool FindingPipe::Ask(const std::string& question) {
    Send(wire::QUESTION, {question});
    char answer = '\0';
    const ssize_t got = hxd::RetryInterrupted([&] { return ::read(STDIN_FILENO, &answer, 1); });
    return got == 1 && answer == 'y';
}

void FindingPipe::Done() {
    Send(wire::DONE, {});
}
