#include "hxdpanel/host/DriverOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "hxdpanel/base/Text.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace {

using Locker = std::lock_guard<std::mutex>;

// A driver that prints without ever ending a line must not fill the memory.
constexpr std::size_t MAX_LINE = 65536;
// One that never stops printing must not keep anybody waiting for the end of it.
constexpr int MAX_READS = 1000;

void Signal(int event) {
    const std::uint64_t one = 1;
    if (::write(event, &one, sizeof one) < 0) {
        // The counter is full: the event is set already.
    }
}

void Reset(int event) {
    std::uint64_t count = 0;
    if (::read(event, &count, sizeof count) < 0) {
        // It was not set.
    }
}

// Said by threads of the driver whenever they start and end, so it may come at any time.
bool IsRoutine(const std::string& line) {
    return line == "task start......." || line == "task exit.....";
}

// Qt's messages take the way of everything that the driver prints.
#if QT_VERSION < 0x050000
void PrintQtMessage(QtMsgType, const char* message) {
    std::fprintf(stdout, "%s\n", message);
}
void RedirectQtMessages(bool redirect) {
    ::qInstallMsgHandler(redirect ? PrintQtMessage : nullptr);
}
#else
void PrintQtMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
    std::fprintf(stdout, "%s\n", message.toLocal8Bit().constData());
}
void RedirectQtMessages(bool redirect) {
    ::qInstallMessageHandler(redirect ? PrintQtMessage : nullptr);
}
#endif

}  // namespace

DriverOutput::DriverOutput() {
    int ends[2] = {-1, -1};
    const int results = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    m_pResults = results >= 0 ? ::fdopen(results, "w") : nullptr;
    if (m_pResults == nullptr || ::pipe2(ends, O_CLOEXEC) != 0) {
        std::perror("hxdpanel: standard output");
        std::exit(EXIT_FAILURE);
    }
    m_nPipe = ends[0];
    ::fcntl(m_nPipe, F_SETFL, O_NONBLOCK);
    ::dup2(ends[1], STDOUT_FILENO);
    ::close(ends[1]);
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    m_nWakeEvent = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    m_nHeldEvent = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    RedirectQtMessages(true);
    m_reader = std::thread([this] { Run(); });
}

DriverOutput::~DriverOutput() {
    RedirectQtMessages(false);
    Release();
    Settle();
    {
        const Locker locker(m_lock);
        m_bStop = true;
    }
    Signal(m_nWakeEvent);
    m_reader.join();
    std::fflush(m_pResults);
    ::dup2(::fileno(m_pResults), STDOUT_FILENO);
    std::fclose(m_pResults);
    for (const int descriptor : {m_nPipe, m_nWakeEvent, m_nHeldEvent})
        ::close(descriptor);
}

void DriverOutput::Settle() {
    std::fflush(stdout);
    std::unique_lock<std::mutex> locker(m_lock);
    const unsigned asked = ++m_nSettleAsked;
    Signal(m_nWakeEvent);
    m_settled.wait(locker, [&] { return m_nSettleDone >= asked; });
}

void DriverOutput::Mute() {
    Settle();
    const Locker locker(m_lock);
    m_bMuted = !m_bShowAll;
}

void DriverOutput::Unmute() {
    Settle();
    const Locker locker(m_lock);
    m_bMuted = false;
}

void DriverOutput::Hold() {
    const Locker locker(m_lock);
    m_bHold = true;
}

void DriverOutput::Release() {
    const Locker locker(m_lock);
    m_bHold = false;
    Reset(m_nHeldEvent);
    for (const std::string& line : m_held)
        std::fputs(line.c_str(), stderr);
    m_held.clear();
}

void DriverOutput::Run() {
    for (;;) {
        pollfd events[2] = {{m_nPipe, POLLIN, 0}, {m_nWakeEvent, POLLIN, 0}};
        ::poll(events, 2, -1);
        unsigned asked = 0;
        bool stop = false;
        {
            const Locker locker(m_lock);
            Reset(m_nWakeEvent);
            asked = m_nSettleAsked;
            stop = m_bStop;
        }
        for (int reads = 0; reads < MAX_READS && ReadSome(); ++reads) {
        }
        if (stop && !m_partLine.empty())
            Show(m_partLine);
        const Locker locker(m_lock);
        m_nSettleDone = asked;
        m_settled.notify_all();
        if (stop)
            return;
    }
}

// False when there is nothing more to read now.
bool DriverOutput::ReadSome() {
    std::array<char, 4096> buffer;
    const ssize_t length = ::read(m_nPipe, buffer.data(), buffer.size());
    if (length <= 0)
        return length < 0 && errno == EINTR;
    for (ssize_t i = 0; i < length; ++i) {
        const char character = buffer[static_cast<std::size_t>(i)];
        if (character != '\n')
            m_partLine += character;
        if (character == '\n' || m_partLine.size() >= MAX_LINE) {
            Show(m_partLine);
            m_partLine.clear();
        }
    }
    return true;
}

void DriverOutput::Show(const std::string& line) {
    const std::string marked = "driver: " + Visible(line) + "\n";
    const Locker locker(m_lock);
    if (m_bMuted || (IsRoutine(line) && !m_bShowAll))
        return;
    // A thread that tries again and again would push what the user types off the screen.
    if (m_bHold && marked == m_lastLine)
        return;
    m_lastLine = marked;
    if (!m_bHold) {
        std::fputs(marked.c_str(), stderr);
        return;
    }
    m_held.push_back(marked);
    Signal(m_nHeldEvent);
}
