#include "hxdpanel/sandbox/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>

namespace {

constexpr unsigned GRACE_SECONDS = 5;  // for the child to end by itself

// What the signal handlers need.
volatile sig_atomic_t g_child = 0;
volatile sig_atomic_t g_stopWrite = -1;

void AskToEnd(int) {
    const int savedError = errno;
    const ssize_t written = ::write(g_stopWrite, "", 1);
    static_cast<void>(written);  // a full pipe has been written to before
    ::alarm(GRACE_SECONDS);
    errno = savedError;
}

void Kill(int) {
    if (g_child > 0)
        ::kill(g_child, SIGTERM);
}

// Await() is all that they interrupt, and begins again by itself: ThreadSanitizer calls a handler
// when the interrupted call has returned.
void Handle(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    action.sa_handler = handler;
    ::sigaction(signal, &action, nullptr);
}

void PassSignalsOn(bool terminal) {
    Handle(SIGINT, terminal ? SIG_IGN : AskToEnd);
    Handle(SIGQUIT, SIG_IGN);
    Handle(SIGTERM, AskToEnd);
    Handle(SIGHUP, AskToEnd);
    Handle(SIGALRM, Kill);
}

void RestoreSignals() {
    ::alarm(0);
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGALRM})
        Handle(signal, SIG_DFL);
}

// In the child. Without a terminal it leaves the process group, because Ctrl-C would end the
// launcher in there before the program.
[[noreturn]] void Execute(const std::vector<std::string>& words, pid_t parent, bool terminal) {
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (!terminal)
        ::setpgid(0, 0);
    if (::getppid() == parent)
        ::execv(arguments[0], arguments.data());
    ::_exit(ChildProcess::NOT_STARTED);
}

int Await(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

ChildProcess::ChildProcess() {
    int ends[2] = {-1, -1};
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return;
    m_nStopRead = ::fcntl(ends[0], F_DUPFD, FIRST_HANDED_OVER);
    m_nStopWrite = ends[1];
    ::close(ends[0]);
    ::fcntl(m_nStopWrite, F_SETFL, O_NONBLOCK);
}

ChildProcess::~ChildProcess() {
    for (const int descriptor : {m_nStopRead, m_nStopWrite}) {
        if (descriptor >= 0)
            ::close(descriptor);
    }
}

int ChildProcess::Run(const std::vector<std::string>& words) {
    const bool terminal = ::isatty(STDIN_FILENO) != 0;
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child < 0)
        return NOT_STARTED;
    if (child == 0)
        Execute(words, parent, terminal);
    g_child = child;
    g_stopWrite = m_nStopWrite;
    PassSignalsOn(terminal);
    const int exitCode = Await(child);
    g_child = 0;
    RestoreSignals();
    return exitCode;
}
