#include "hxdcheck/report/TestHost.h"

#include "hxdcheck/report/Wire.h"

#include "common/File.h"
#include "common/Retry.h"
#include "hxdpanel/base/Text.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <sstream>

namespace {

constexpr int START_LIMIT_SECONDS = 30;
constexpr int NOT_STARTED = 127;

struct Pipe {
    Pipe() {
        int ends[2] = {-1, -1};
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return;
        reading = std::make_unique<HXDCTRL::File>(ends[0]);
        writing = std::make_unique<HXDCTRL::File>(ends[1]);
    }
    std::unique_ptr<HXDCTRL::File> reading;
    std::unique_ptr<HXDCTRL::File> writing;
};

std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, wire::SEPARATOR);)
        fields.push_back(field);
    fields.resize(6);  // an empty last field leaves none
    return fields;
}

double Now() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Standard error: standard output may be a file.
char Ask(const std::string& question) {
    char answer[16] = "";
    std::fprintf(stderr, "%s [y/N] ", question.c_str());
    if (std::fgets(answer, sizeof answer, stdin) == nullptr)
        std::fputs("\n", stderr);
    return answer[0] == 'Y' ? 'y' : answer[0];
}

class TestHost {
public:
    explicit TestHost(Report& report) : m_report(report) {}

    void Run(const std::vector<std::string>& command) {
        if (!Start(command)) {
            m_report.Run("start",
                         [&] { return Wrong("no pipe or process to be had", "free some memory"); });
            return;
        }
        const int status = Listen();
        TakeLine(m_strPartLine);
        if (!m_bDone)
            ReportDeath(status);
    }

private:
    bool Start(const std::vector<std::string>& command);
    int Listen();
    bool ReadSome();
    void TakeLine(const std::string& line);
    void Take(const std::string& line);
    void ReportDeath(int status);

    Report& m_report;
    Pipe m_output;
    Pipe m_answers;
    std::string m_strPartLine;
    pid_t m_nProcess = -1;
    bool m_bDone = false;
    bool m_bLate = false;
    bool m_bInCheck = false;
    double m_dDeadline = 0.0;  // 0: none
    std::string m_strIfItDies;
};

bool TestHost::Start(const std::vector<std::string>& command) {
    if (!m_output.writing || !m_answers.writing)
        return false;
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    m_dDeadline = Now() + START_LIMIT_SECONDS;
    std::fflush(stdout);
    m_nProcess = ::fork();
    if (m_nProcess == 0) {
        ::dup2(m_answers.reading->Descriptor(), STDIN_FILENO);
        ::dup2(m_output.writing->Descriptor(), STDOUT_FILENO);
        ::dup2(m_output.writing->Descriptor(), STDERR_FILENO);
        std::signal(SIGPIPE, SIG_DFL);
        ::execvp(words[0], words.data());
        std::perror(words[0]);
        ::_exit(NOT_STARTED);
    }
    m_output.writing->close();
    m_answers.reading->close();
    return m_nProcess > 0;
}

bool TestHost::ReadSome() {
    char buffer[4096];
    const ssize_t got = hxd::RetryInterrupted(
        [&] { return ::read(m_output.reading->Descriptor(), buffer, sizeof buffer); });
    if (got <= 0)
        return false;
    m_strPartLine.append(buffer, static_cast<std::size_t>(got));
    for (std::size_t end = 0; (end = m_strPartLine.find('\n')) != std::string::npos;) {
        const std::string line = m_strPartLine.substr(0, end);
        m_strPartLine.erase(0, end + 1);
        TakeLine(line);
    }
    return true;
}

// Until the test host has ended; its status as of waitpid(). The end of the pipe would not do:
// commands that the driver has started may hold it open.
int TestHost::Listen() {
    constexpr int LOOK_AGAIN_MS = 100;
    pollfd wanted = {m_output.reading->Descriptor(), POLLIN, 0};
    int status = 0;
    for (bool ended = false; !ended;) {
        ended = ::waitpid(m_nProcess, &status, WNOHANG) != 0;
        while (::poll(&wanted, 1, ended ? 0 : LOOK_AGAIN_MS) > 0 && ReadSome()) {
        }
        if (!ended && m_dDeadline > 0.0 && Now() > m_dDeadline) {
            m_bLate = true;
            ::kill(m_nProcess, SIGKILL);
        }
    }
    return status;
}

// A finding may follow a line of the driver that has no end.
void TestHost::TakeLine(const std::string& line) {
    const std::size_t mark = line.find(wire::MARK);
    if (mark != 0 && !line.empty())
        m_report.Output(line.substr(0, mark));
    if (mark != std::string::npos)
        Take(line.substr(mark + 1));
}

void TestHost::Take(const std::string& line) {
    const std::vector<std::string> field = Fields(line);
    switch (field[0][0]) {
        case wire::GROUP:
            return m_report.Group(field[1]);
        case wire::BEGIN: {
            const int limit = std::atoi(field[2].c_str());
            m_bInCheck = true;
            m_dDeadline = limit > 0 ? Now() + limit : 0.0;
            m_strIfItDies = field[3];
            return m_report.Begin(field[1], limit, field[3]);
        }
        case wire::END:
            m_bInCheck = false;
            m_dDeadline = Now() + START_LIMIT_SECONDS;
            return m_report.End({static_cast<Finding::Status>(std::atoi(field[1].c_str()) % 3),
                                 field[2], field[3], std::strtof(field[4].c_str(), nullptr)});
        case wire::CHANNEL:
            return m_report.Channel({field[1], field[2], field[3], field[4], field[5]});
        case wire::QUESTION: {
            const char answer = Ask(field[1]);
            if (::write(m_answers.writing->Descriptor(), &answer, 1) != 1)
                m_dDeadline = Now();
            return;
        }
        case wire::DONE:
            m_bDone = true;
            return;
        default:
            return;
    }
}

void TestHost::ReportDeath(int status) {
    std::string text = "ended with exit code " + std::to_string(WEXITSTATUS(status));
    if (m_bLate)
        text = "did not come to an end in time";
    else if (WIFSIGNALED(status))
        text = std::string("crashed: ") + ::strsignal(WTERMSIG(status));
    if (!m_bInCheck) {
        m_report.Group("The test host");
        m_report.Begin("hxdcheck-host", 0, "");
    }
    m_report.End(
        Wrong(text, m_strIfItDies.empty() ? "what was printed above may tell why" : m_strIfItDies));
}

}  // namespace

void RunTestHost(Report& report, const std::vector<std::string>& command) {
    TestHost(report).Run(command);
}
