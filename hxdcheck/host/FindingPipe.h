// The test host's way to tell its findings to hxdcheck, and to ask the user.
#ifndef HXDCHECK_FINDINGPIPE_H
#define HXDCHECK_FINDINGPIPE_H

#include "hxdcheck/report/Finding.h"

#include <chrono>
#include <string>
#include <vector>

class FindingPipe : public Findings {
public:
    void Group(const std::string& title) override;
    void Begin(const std::string& name, int limitSeconds, const std::string& ifItDies) override;
    void End(const Finding& finding) override;
    void Channel(const ChannelLine& line) override;

    bool Ask(const std::string& question);
    void Done();

private:
    void Send(char kind, const std::vector<std::string>& fields);
};

// Runs a check that tells how long it took; longer than limitMs is something to look at.
template <class CHECK>
Finding Timed(float limitMs, CHECK check) {
    const auto start = std::chrono::steady_clock::now();
    Finding finding = check();
    const std::chrono::duration<float, std::milli> took = std::chrono::steady_clock::now() - start;
    finding.milliseconds = took.count();
    if (finding.status == Finding::OK && finding.milliseconds > limitMs)
        return {Finding::LOOK, finding.text + ", but slow",
                "the driver waits for it, and the host for the driver", finding.milliseconds};
    return finding;
}

#endif
