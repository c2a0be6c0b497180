#include "hxdpanel/base/Terminal.h"

#include "hxdpanel/base/Text.h"

#include <signal.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace terminal {

namespace {

constexpr std::size_t NARROWEST_TEXT = 16;  // beside what is indented

int g_sizeEvent = -1;

void OnSize(int) {
    const int savedError = errno;
    const std::uint64_t one = 1;
    const ssize_t written = ::write(g_sizeEvent, &one, sizeof one);
    static_cast<void>(written);  // fails when it is readable already
    errno = savedError;
}

bool IsTerminal(std::FILE* file) {
    return ::isatty(::fileno(file)) != 0;
}

const char* Code(Style style) {
    switch (style) {
        case TITLE:
            return "1";
        case GOOD:
            return "32";
        case BAD:
            return "1;31";
        case SPECIAL:
            return "33";
        case FAINT:
            return "2";
    }
    return "0";
}

}  // namespace

bool CanRedraw(std::FILE* file) {
    const char* const kind = std::getenv("TERM");
    return IsTerminal(file) && kind != nullptr && *kind != '\0' && std::strcmp(kind, "dumb") != 0;
}

Size SizeOf(std::FILE* file) {
    winsize window = {};
    if (::ioctl(::fileno(file), TIOCGWINSZ, &window) != 0 || window.ws_row == 0 ||
        window.ws_col == 0)
        return {24, 80};
    return {window.ws_row, window.ws_col};
}

void NoticeSize() {
    g_sizeEvent = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    struct sigaction action = {};
    action.sa_handler = OnSize;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGWINCH, &action, nullptr);
}

int SizeEvent() {
    return g_sizeEvent;
}

void ClearSizeEvent() {
    std::uint64_t count = 0;
    const ssize_t length = ::read(g_sizeEvent, &count, sizeof count);
    static_cast<void>(length);  // nothing to read: it had not changed
}

std::string Styled(std::FILE* file, Style style, const std::string& text) {
    const char* const unwanted = std::getenv("NO_COLOR");
    if (!CanRedraw(file) || (unwanted != nullptr && *unwanted != '\0'))
        return text;
    return std::string("\033[") + Code(style) + "m" + text + "\033[0m";
}

std::string Wrapped(std::FILE* file, const std::string& text, std::size_t indent) {
    return IsTerminal(file)
               ? WrappedTo(static_cast<std::size_t>(SizeOf(file).columns), text, indent)
               : text;
}

std::string WrappedTo(std::size_t columns, const std::string& text, std::size_t indent) {
    if (indent + NARROWEST_TEXT > columns)
        indent = std::min({indent, std::size_t{4}, columns / 2});
    std::string wrapped;
    std::string rest = text;
    std::size_t used = 0;
    while (Columns(rest) + used > columns) {
        // The last blank within the line that has a word before it.
        const std::size_t firstWord = std::min(rest.find_first_not_of(' '), rest.size());
        std::size_t end = std::string::npos;
        for (std::size_t blank = rest.find(' ', firstWord);
             blank != std::string::npos &&
             (end == std::string::npos || Columns(rest.substr(0, blank)) + used <= columns);
             blank = rest.find(' ', blank + 1))
            end = blank;
        if (end == std::string::npos)
            break;  // one long word
        wrapped += rest.substr(0, end) + '\n' + std::string(indent, ' ');
        rest.erase(0, std::min(rest.find_first_not_of(' ', end), rest.size()));
        used = indent;
    }
    return wrapped + rest;
}

}  // namespace terminal
