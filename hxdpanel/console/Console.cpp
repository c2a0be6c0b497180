#include "hxdpanel/console/Console.h"

#include "common/File.h"
#include "common/Retry.h"
#include "hxdpanel/base/ExitCode.h"
#include "hxdpanel/base/Interrupt.h"
#include "hxdpanel/base/Terminal.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/console/Session.h"
#include "hxdpanel/console/Vocabulary.h"
#include "hxdpanel/host/DriverOutput.h"

#include <fcntl.h>
#include <histedit.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <memory>

namespace {

const char* const GREETING[] = {
    "hxdpanel: a simulated touch panel with the real driver in it.",
    "Type channels to see the panel's values, help for all commands, quit to leave."};
constexpr int HISTORY_SIZE = 1000;
const char* const PROMPT = "panel> ";

// While it lives no other run reads or writes the history.
class HistoryLock {
public:
    explicit HistoryLock(const std::string& file) {
        if (!file.empty() && m_file.open(file, O_RDWR | O_CREAT))
            hxd::RetryInterrupted([this] { return ::flock(m_file.Descriptor(), LOCK_EX); });
    }
    bool HasFile() const { return m_file.IsOpen(); }

private:
    HXDCTRL::File m_file;
};

// The line editor with its history, and what its callbacks need.
class Editor {
public:
    Editor(Session& session, DriverOutput& output, const std::string& historyFolder);
    ~Editor();
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    enum Result { LINE, CANCELLED, END };
    Result Read(std::string& line);

private:
    static Editor& Of(EditLine* edit);
    static char* Prompt(EditLine* edit);
    static int ReadCharacter(EditLine* edit, wchar_t* character);
    static unsigned char Complete(EditLine* edit, int character);
    int NextCharacter(wchar_t& character);
    bool WaitForInput();
    void LoadHistory();
    void Remember(const std::string& line);
    void EraseLine();
    void ListCandidates(const std::vector<std::string>& candidates);

    Session& m_session;
    DriverOutput& m_output;
    EditLine* m_pEdit;
    History* m_pHistory;
    std::string m_strHistoryFile;  // empty: none is kept
    bool m_bCancelled = false;
};

Editor::Editor(Session& session, DriverOutput& output, const std::string& historyFolder)
    : m_session(session),
      m_output(output),
      m_pEdit(::el_init("hxdpanel", stdin, output.Results(), stderr)),
      m_pHistory(::history_init()),
      m_strHistoryFile(historyFolder.empty() ? "" : historyFolder + "/history") {
    HistEvent event;
    ::history(m_pHistory, &event, H_SETSIZE, HISTORY_SIZE);
    ::history(m_pHistory, &event, H_SETUNIQUE, 1);
    LoadHistory();
    ::el_set(m_pEdit, EL_CLIENTDATA, this);
    ::el_set(m_pEdit, EL_PROMPT, Prompt);
    ::el_set(m_pEdit, EL_EDITOR, "emacs");
    ::el_set(m_pEdit, EL_HIST, ::history, m_pHistory);
    ::el_set(m_pEdit, EL_GETCFN, ReadCharacter);
    ::el_set(m_pEdit, EL_ADDFN, "complete", "Complete a name", Complete);
    ::el_set(m_pEdit, EL_BIND, "^I", "complete", nullptr);
    ::el_set(m_pEdit, EL_BIND, "^R", "em-inc-search-prev", nullptr);
}

Editor::~Editor() {
    ::history_end(m_pHistory);
    ::el_end(m_pEdit);
}

Editor& Editor::Of(EditLine* edit) {
    void* data = nullptr;
    ::el_get(edit, EL_CLIENTDATA, &data);
    return *static_cast<Editor*>(data);
}

char* Editor::Prompt(EditLine*) {
    return const_cast<char*>(PROMPT);
}

Editor::Result Editor::Read(std::string& line) {
    m_bCancelled = false;
    m_output.Hold();
    int length = 0;
    const char* const text = ::el_gets(m_pEdit, &length);
    m_output.Release();
    if (text == nullptr || length <= 0) {
        std::fputs("\n", m_output.Results());
        return m_bCancelled ? CANCELLED : END;
    }
    line.assign(text, static_cast<std::size_t>(length));
    Remember(line);
    return LINE;
}

// Rewritten with what fits the history; what other runs append waits meanwhile.
void Editor::LoadHistory() {
    HistEvent event;
    const HistoryLock lock(m_strHistoryFile);
    if (lock.HasFile() && ::history(m_pHistory, &event, H_LOAD, m_strHistoryFile.c_str()) >= 0)
        ::history(m_pHistory, &event, H_SAVE, m_strHistoryFile.c_str());
}

// Appended, so that runs beside each other keep each other's lines: a history of this line alone is
// saved behind the others.
void Editor::Remember(const std::string& line) {
    HistEvent event;
    if (Trimmed(line).empty())
        return;
    ::history(m_pHistory, &event, H_ENTER, line.c_str());
    const HistoryLock lock(m_strHistoryFile);
    std::FILE* const stream = lock.HasFile() ? std::fopen(m_strHistoryFile.c_str(), "ae") : nullptr;
    if (stream == nullptr)
        return;
    History* const alone = ::history_init();
    ::history(alone, &event, H_SETSIZE, 1);
    ::history(alone, &event, H_ENTER, line.c_str());
    std::fseek(stream, 0, SEEK_END);
    ::history(alone, &event, H_SAVE_FP, stream);
    ::history_end(alone);
    std::fclose(stream);
}

int Editor::ReadCharacter(EditLine* edit, wchar_t* character) {
    return Of(edit).NextCharacter(*character);
}

// However many lines of the window it takes.
void Editor::EraseLine() {
    if (!terminal::CanRedraw(m_output.Results())) {
        std::fputs("\n", m_output.Results());
        std::fflush(m_output.Results());
        return;
    }
    const LineInfo* const info = ::el_line(m_pEdit);
    const std::size_t width =
        static_cast<std::size_t>(terminal::SizeOf(m_output.Results()).columns);
    const std::string before = PROMPT + std::string(info->buffer, info->cursor);
    const std::size_t above = Columns(before) / width;
    if (above > 0)
        std::fprintf(m_output.Results(), "\033[%zuA", above);
    std::fputs("\r\033[J", m_output.Results());
    std::fflush(m_output.Results());
}

// False when the user has interrupted. Lines of the driver appear above the line that is edited.
bool Editor::WaitForInput() {
    pollfd events[4] = {{STDIN_FILENO, POLLIN, 0},
                        {interrupt::Descriptor(), POLLIN, 0},
                        {m_output.Descriptor(), POLLIN, 0},
                        {terminal::SizeEvent(), POLLIN, 0}};
    for (;;) {
        const int ready = ::poll(events, 4, -1);
        if (interrupt::Pending())
            return false;
        if (ready > 0 && events[3].revents != 0) {
            terminal::ClearSizeEvent();
            ::el_resize(m_pEdit);
        }
        if (ready > 0 && events[2].revents != 0) {
            EraseLine();
            m_output.Release();
            m_output.Hold();
            ::el_set(m_pEdit, EL_REFRESH);
        }
        if (ready > 0 && events[0].revents != 0)
            return true;
    }
}

int Editor::NextCharacter(wchar_t& character) {
    std::mbstate_t state = {};
    for (;;) {
        if (!WaitForInput()) {
            m_bCancelled = !interrupt::EndRequested();
            return -1;
        }
        char byte = 0;
        const ssize_t length = ::read(STDIN_FILENO, &byte, 1);
        if (length < 0 && errno == EINTR)
            continue;
        if (length <= 0)
            return static_cast<int>(length);
        const std::size_t used = std::mbrtowc(&character, &byte, 1, &state);
        if (used == 0 || used == 1)
            return 1;
        if (used == static_cast<std::size_t>(-1))  // no character of the locale: not taken
            state = {};
    }
}

unsigned char Editor::Complete(EditLine* edit, int) {
    Editor& self = Of(edit);
    const LineInfo* const info = ::el_line(edit);
    const std::string line(info->buffer, info->cursor);
    const std::vector<std::string> candidates = self.m_session.Completions(line);
    if (candidates.empty())
        return CC_REFRESH_BEEP;
    std::string common = candidates.front();
    for (const std::string& candidate : candidates) {
        while (!EqualNames(candidate.substr(0, common.size()), common))
            common.pop_back();
    }
    const std::size_t separator = line.find_last_of(" \t(,");
    const std::size_t typed =
        separator == std::string::npos ? line.size() : line.size() - separator - 1;
    if (candidates.size() > 1 && common.size() <= typed) {
        self.ListCandidates(candidates);
        return CC_REDISPLAY;
    }
    // Within parentheses a blank would become part of a name.
    const bool isArgument = line.find('(') != std::string::npos;
    if (candidates.size() == 1 && common.back() != '(' && !isArgument)
        common += ' ';
    ::el_deletestr(edit, static_cast<int>(typed));
    ::el_insertstr(edit, common.c_str());
    return CC_REFRESH;
}

void Editor::ListCandidates(const std::vector<std::string>& candidates) {
    const std::string text = Visible(Joined(candidates, "  "));
    std::fprintf(m_output.Results(), "\n%s\n",
                 terminal::Wrapped(m_output.Results(), text, 0).c_str());
}

int RunTerminal(Session& session, DriverOutput& output, const std::string& historyFolder) {
    for (const char* line : GREETING)
        std::fprintf(output.Results(), "%s\n",
                     terminal::Wrapped(output.Results(), line, 0).c_str());
    std::fflush(output.Results());
    Editor editor(session, output, historyFolder);
    std::string line;
    while (!session.Ended() && !interrupt::EndRequested()) {
        interrupt::Clear();
        const Editor::Result result = editor.Read(line);
        if (result == Editor::END)
            break;
        if (result == Editor::LINE)
            session.Run(line);
        std::fflush(output.Results());
    }
    return EXIT_DONE;
}

// What ends only with Ctrl-C would keep the lines behind it waiting for ever.
int RunPiped(Session& session, const std::string& line) {
    if (vocabulary::PlaceOf(line) <= vocabulary::Place::PIPE)
        return session.Run(line);
    std::fputs("watch has no end in a pipe; use: hxdpanel watch --count N\n", stderr);
    return EXIT_USAGE;
}

// The lines of standard input. A signal ends them whichever thread it reached, and also when it
// came just before the wait for input.
class PipedLines {
public:
    bool Next(std::string& line) {
        std::size_t end = m_strRead.find('\n');
        while (end == std::string::npos && ReadMore())
            end = m_strRead.find('\n');
        line = m_strRead.substr(0, end);
        m_strRead.erase(0, end == std::string::npos ? end : end + 1);
        return !interrupt::Pending() && (end != std::string::npos || !line.empty());
    }

private:
    // False at the end, and when the user has interrupted.
    bool ReadMore() {
        pollfd events[] = {{STDIN_FILENO, POLLIN, 0}, {interrupt::Descriptor(), POLLIN, 0}};
        hxd::RetryInterrupted([&] { return ::poll(events, 2, -1); });
        if (interrupt::Pending())
            return false;
        char text[4096];
        const ssize_t length =
            hxd::RetryInterrupted([&] { return ::read(STDIN_FILENO, text, sizeof text); });
        if (length > 0)
            m_strRead.append(text, static_cast<std::size_t>(length));
        return length > 0;
    }

    std::string m_strRead;  // what follows the last line
};

int RunPipe(Session& session, DriverOutput& output) {
    int worst = EXIT_DONE;
    PipedLines lines;
    std::string line;
    while (!session.Ended() && lines.Next(line)) {
        worst = std::max(worst, RunPiped(session, line));
        std::fflush(output.Results());
    }
    return worst;
}

}  // namespace

int RunConsole(Session& session, DriverOutput& output, const std::string& historyFolder) {
    const bool terminal = ::isatty(STDIN_FILENO) != 0 && ::isatty(::fileno(output.Results())) != 0;
    return terminal ? RunTerminal(session, output, historyFolder) : RunPipe(session, output);
}
