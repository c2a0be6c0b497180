// A program on a terminal of its own.
#ifndef PSEUDOTERMINAL_H
#define PSEUDOTERMINAL_H

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

class PseudoTerminal {
public:
    PseudoTerminal(const std::vector<std::string>& words, const char* kind, winsize size) {
        m_process = ::forkpty(&m_descriptor, nullptr, nullptr, &size);
        if (m_process != 0)
            return;
        std::vector<char*> arguments;
        for (const std::string& word : words)
            arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        ::setenv("TERM", kind, 1);
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    ~PseudoTerminal() { End(); }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    pid_t Process() const { return m_process; }

    void Type(const std::string& text) {
        const ssize_t written = ::write(m_descriptor, text.data(), text.size());
        static_cast<void>(written);
    }
    void Resize(winsize size) { ::ioctl(m_descriptor, TIOCSWINSZ, &size); }

    // What has been shown since the last call, up to and with the text; all when it does not come.
    std::string ReadUntil(const std::string& text) {
        pollfd event = {m_descriptor, POLLIN, 0};
        char buffer[4096];
        for (;;) {
            const std::size_t found = m_shown.find(text);
            ssize_t length = 0;
            if (found == std::string::npos && ::poll(&event, 1, 20000) > 0)
                length = ::read(m_descriptor, buffer, sizeof buffer);
            if (found == std::string::npos && length > 0) {
                m_shown.append(buffer, static_cast<std::size_t>(length));
                continue;
            }
            const std::string shown = m_shown.substr(
                0, found == std::string::npos ? std::string::npos : found + text.size());
            m_shown.erase(0, shown.size());
            return shown;
        }
    }

    void End() {
        if (m_process <= 0)
            return;
        ::close(m_descriptor);
        ::kill(m_process, SIGTERM);
        ::waitpid(m_process, nullptr, 0);
        m_process = -1;
    }

private:
    pid_t m_process = -1;
    int m_descriptor = -1;
    std::string m_shown;
};

#endif
