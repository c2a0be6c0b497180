// liblogger: the host's log, kept in the simulated panel.
#include "logger.h"

#include "Remember.h"
#include "SimPanel.h"

#include <cstdarg>
#include <cstdio>

namespace {

std::string FormatText(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(&text[0], text.size() + 1, format, again);
    va_end(again);
    return text;
}

// Long lines (a command of 1 MiB is one) are kept to what somebody may want to read.
constexpr std::size_t MAX_LINE = 65536;

const char* OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

}  // namespace

void logger_printf(const char* function, const char* file, int line, int level, const char* tag,
                   const char* format, ...) try {
    va_list arguments;
    va_start(arguments, format);
    std::string text = FormatText(format, arguments);
    va_end(arguments);
    if (text.size() > MAX_LINE)
        text.replace(MAX_LINE, std::string::npos, " ...");
    const sim::LogLine entry = {OrEmpty(function), OrEmpty(file), line, level, OrEmpty(tag), text};
    bool echo = false;
    sim::SimPanel::instance().change([&](sim::PanelState& state) {
        sim::Remember(state.log, entry);
        echo = level <= state.echoLogLevel;
    });
    if (echo)
        std::fprintf(stderr, "%d %s:%d %s [%s] %s\n", level, entry.file.c_str(), line,
                     entry.function.c_str(), entry.tag.c_str(), text.c_str());
} catch (...) {
    // A log that has no memory for its line drops it.
}
