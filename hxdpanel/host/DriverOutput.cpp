#include "hxdpanel/host/DriverOutput.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <iterator>

#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace {

// A driver that prints without ever ending a line must not fill the memory.
constexpr std::size_t MAX_LINE = 65536;
// One that never stops printing must not keep anybody waiting for the end of it.
constexpr int MAX_READS = 1000;
// Work that takes longer than the first is shown, and again with the second.
constexpr std::chrono::milliseconds WORK_SHOWN_AFTER{500};
constexpr int WORK_STEP_MS = 250;

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

// Said while the clock is synchronised, which a thread of the driver's does whenever it likes.
bool IsOfClock(const std::string& line) {
    static const char* const begins[] = {"execNtp-",      "[tryToSend:", "[getServerTime:",
                                         "[sendPacketTo", "date is :",   "open event fd"};
    return std::any_of(std::begin(begins), std::end(begins), [&line](const std::string& begin) {
        return line.compare(0, begin.size(), begin) == 0;
    });
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
    m_standard.pipe = ends[0];
    ::dup2(ends[1], STDOUT_FILENO);
    ::close(ends[1]);
    m_nErrors = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    if (m_nErrors >= 0 && ::pipe2(ends, O_CLOEXEC) == 0) {
        m_errors.pipe = ends[0];
        m_nErrorsEnd = ends[1];
    }
    for (const int pipe : {m_standard.pipe, m_errors.pipe})
        ::fcntl(pipe, F_SETFL, O_NONBLOCK);
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
        const hxd::MutexLock locker(m_lock);
        m_bStop = true;
    }
    Signal(m_nWakeEvent);
    m_reader.join();
    std::fflush(m_pResults);
    ::dup2(::fileno(m_pResults), STDOUT_FILENO);
    std::fclose(m_pResults);
    for (const int descriptor :
         {m_standard.pipe, m_errors.pipe, m_nErrorsEnd, m_nErrors, m_nWakeEvent, m_nHeldEvent}) {
        if (descriptor >= 0)
            ::close(descriptor);
    }
}

void DriverOutput::Settle() {
    std::fflush(stdout);
    hxd::MutexLock locker(m_lock);
    const unsigned asked = ++m_nSettleAsked;
    Signal(m_nWakeEvent);
    while (m_nSettleDone < asked)
        locker.Wait(m_settled);
}

void DriverOutput::Mute(Muted what) {
    Settle();
    const hxd::MutexLock locker(m_lock);
    ++m_muted[what];
}

void DriverOutput::Unmute(Muted what) {
    Settle();
    const hxd::MutexLock locker(m_lock);
    --m_muted[what];
}

void DriverOutput::Hold() {
    const hxd::MutexLock locker(m_lock);
    m_bHold = true;
    std::fflush(stderr);
    if (m_nErrorsEnd >= 0)
        ::dup2(m_nErrorsEnd, STDERR_FILENO);
}

void DriverOutput::Release() {
    const hxd::MutexLock locker(m_lock);
    if (m_bHold && m_nErrorsEnd >= 0)
        ::dup2(m_nErrors, STDERR_FILENO);
    m_bHold = false;
    Reset(m_nHeldEvent);
    for (const std::string& line : m_held)
        Print(line);
    m_held.clear();
}

void DriverOutput::BeginWork(const std::string& what) {
    if (!terminal::CanRedraw(stderr))
        return;
    const hxd::MutexLock locker(m_lock);
    m_strWork = what;
    m_workBegun = std::chrono::steady_clock::now();
    Signal(m_nWakeEvent);
}

void DriverOutput::EndWork() {
    const hxd::MutexLock locker(m_lock);
    EraseWork();
    m_strWork.clear();
}

void DriverOutput::SetTap(std::function<void(const std::string& line)> tap) {
    const hxd::MutexLock locker(m_lock);
    m_tap = std::move(tap);
}

// Not over a line that is edited: then it is somebody else's work.
void DriverOutput::DrawWork() {
    const auto lasted = std::chrono::steady_clock::now() - m_workBegun;
    if (m_strWork.empty() || m_bHold || lasted < WORK_SHOWN_AFTER)
        return;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(lasted).count();
    const auto columns = static_cast<std::size_t>(terminal::SizeOf(stderr).columns);
    const std::string text = m_strWork + " is at work, " + std::to_string(seconds) + " s";
    std::fprintf(stderr, "\r%s\033[K", Shortened(text, columns - 1).c_str());
    m_bWorkDrawn = true;
}

void DriverOutput::EraseWork() {
    if (m_bWorkDrawn)
        std::fputs("\r\033[K", stderr);
    m_bWorkDrawn = false;
}

void DriverOutput::Print(const std::string& text) {
    EraseWork();
    std::fputs(text.c_str(), stderr);
}

void DriverOutput::Run() {
    for (;;) {
        pollfd events[3] = {
            {m_standard.pipe, POLLIN, 0}, {m_errors.pipe, POLLIN, 0}, {m_nWakeEvent, POLLIN, 0}};
        int patience = -1;
        {
            const hxd::MutexLock locker(m_lock);
            DrawWork();
            patience = m_strWork.empty() ? -1 : WORK_STEP_MS;
        }
        ::poll(events, 3, patience);
        unsigned asked = 0;
        bool stop = false;
        {
            const hxd::MutexLock locker(m_lock);
            Reset(m_nWakeEvent);
            asked = m_nSettleAsked;
            stop = m_bStop;
        }
        for (Source* source : {&m_standard, &m_errors}) {
            for (int reads = 0; reads < MAX_READS && ReadSome(*source); ++reads) {
            }
            if (stop && !source->partLine.empty())
                Show(*source, source->partLine);
        }
        const hxd::MutexLock locker(m_lock);
        m_nSettleDone = asked;
        m_settled.notify_all();
        if (stop)
            return;
    }
}

// False when there is nothing more to read now.
bool DriverOutput::ReadSome(Source& source) {
    std::array<char, 4096> buffer;
    const ssize_t length = ::read(source.pipe, buffer.data(), buffer.size());
    if (length <= 0)
        return length < 0 && errno == EINTR;
    for (ssize_t i = 0; i < length; ++i) {
        const char character = buffer[static_cast<std::size_t>(i)];
        if (character != '\n')
            source.partLine += character;
        if (character == '\n' || source.partLine.size() >= MAX_LINE) {
            Show(source, source.partLine);
            source.partLine.clear();
        }
    }
    return true;
}

bool DriverOutput::IsMuted(const std::string& line) const {
    return m_muted[EVERYTHING] > 0 || IsRoutine(line) ||
           (m_muted[COLLECTION] > 0 && !IsOfClock(line));
}

// What goes to standard error is not the driver's alone, and nobody has muted it.
void DriverOutput::Show(const Source& source, const std::string& line) {
    const bool isDriver = &source == &m_standard;
    const std::string visible = (isDriver ? "driver: " : "") + Visible(line);
    const std::string marked = terminal::Styled(stderr, terminal::FAINT, visible) + "\n";
    const hxd::MutexLock locker(m_lock);
    if (isDriver && !m_bShowAll && IsMuted(line))
        return;
    if (isDriver && m_tap)
        m_tap(line);
    // A thread that tries again and again would push what the user types off the screen.
    if (m_bHold && marked == m_strLastLine)
        return;
    m_strLastLine = marked;
    if (!m_bHold) {
        Print(marked);
        return;
    }
    m_held.push_back(marked);
    Signal(m_nHeldEvent);
}
