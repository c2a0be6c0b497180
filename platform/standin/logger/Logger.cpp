#include "logger.h"

#include "SimPanel.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

using sim::LogLine;
using sim::PanelState;
using sim::SimPanel;

namespace {

const std::size_t LONGEST_TEXT = 64 * 1024;  // bytes; what is beyond is counted, not kept

const char* OrEmpty(const char* text) {
    return text ? text : "";
}

__attribute__((format(printf, 1, 0))) std::string Formatted(const char* format,
                                                            std::va_list arguments) {
    char shortText[512];  // holds nearly every line
    std::va_list forLength;
    va_copy(forLength, arguments);
    const int measured = std::vsnprintf(shortText, sizeof shortText, format, forLength);
    va_end(forLength);
    if (measured < 0)
        return std::string("(cannot be formatted) ") + format;

    const std::size_t length = static_cast<std::size_t>(measured);
    if (length < sizeof shortText)
        return shortText;
    std::vector<char> buffer(std::min(length, LONGEST_TEXT) + 1);
    std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    std::string text(buffer.data());
    if (length > LONGEST_TEXT)
        text += "... (" + std::to_string(length - LONGEST_TEXT) + " bytes more)";
    return text;
}

// "12:34:56 error [TAG] function: text (file:line)", in one write so that threads do not mix.
void Echo(const LogLine& line) {
    static const char* const levelNames[] = {"?", "error", "warning", "info", "trace"};
    const bool known = line.level >= 1 && line.level <= 4;
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    std::fprintf(stderr, "%02d:%02d:%02d %s [%s] %s: %s (%s:%d)\n", local.tm_hour, local.tm_min,
                 local.tm_sec, levelNames[known ? line.level : 0], line.tag.c_str(),
                 line.function.c_str(), line.text.c_str(), line.file.c_str(), line.line);
}

}  // namespace

void logger_printf(const char* function, const char* file, int line, int level, const char* tag,
                   const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    try {
        const LogLine entry = {OrEmpty(function),
                               OrEmpty(file),
                               line,
                               level,
                               OrEmpty(tag),
                               format ? Formatted(format, arguments) : ""};
        bool echo = false;
        SimPanel::Instance().Change([&](PanelState& state) {
            sim::Keep(state.log, entry);
            echo = state.echoLogLevel > 0 && level <= state.echoLogLevel;
        });
        if (echo)
            Echo(entry);
    } catch (...) {
        // A line that finds no memory is lost; the caller goes on.
    }
    va_end(arguments);
}
