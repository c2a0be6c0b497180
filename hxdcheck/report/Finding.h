// What a check has found, and where it is told.
#ifndef HXDCHECK_FINDING_H
#define HXDCHECK_FINDING_H

#include <string>

struct Finding {
    enum Status { OK, LOOK, WRONG };  // by weight; the program's exit code

    Status status;
    std::string text;
    std::string remedy;          // what to do about it; "" when it is ok
    float milliseconds = -1.0F;  // how long the check took; negative: of no interest
};

inline Finding Ok(const std::string& text) {
    return {Finding::OK, text, ""};
}
inline Finding Look(const std::string& text, const std::string& remedy) {
    return {Finding::LOOK, text, remedy};
}
inline Finding Wrong(const std::string& text, const std::string& remedy) {
    return {Finding::WRONG, text, remedy};
}

// A channel's value with what is known about it; all texts are printable.
struct ChannelLine {
    std::string number;
    std::string name;
    std::string unit;
    std::string value;
    std::string meaning;  // of a special value; "" for an ordinary one
};

class Findings {
public:
    virtual ~Findings() = default;

    virtual void Group(const std::string& title) = 0;
    // Every Begin is followed by one End, unless the process ends or stays in the check: then
    // ifItDies says what to do about it. limitSeconds 0: the check waits for the user.
    virtual void Begin(const std::string& name, int limitSeconds, const std::string& ifItDies) = 0;
    virtual void End(const Finding& finding) = 0;
    virtual void Channel(const ChannelLine& line) = 0;

    template <class CHECK>
    Finding Run(const std::string& name, CHECK check, int limitSeconds = 10,
                const std::string& ifItDies = "") {
        Begin(name, limitSeconds, ifItDies);
        Finding finding = check();
        End(finding);
        return finding;
    }
};

// A row of a table of checks.
struct Check {
    const char* name;
    Finding (*run)();
};

template <std::size_t COUNT>
void RunAll(Findings& findings, const char* title, const Check (&checks)[COUNT]) {
    findings.Group(title);
    for (const Check& check : checks)
        findings.Run(check.name, check.run);
}

#endif
