// The host's log (liblogger).
#ifndef LOGGER_H
#define LOGGER_H

#ifdef __cplusplus
extern "C" {
#endif

// Writes one log line. level: 1 = error ... 4 = trace. format and what follows: as printf. May be
// called from any thread; never throws.
#if defined(__GNUC__)
__attribute__((format(printf, 6, 7)))
#endif
void logger_printf(const char* function, const char* file, int line, int level, const char* tag,
                   const char* format, ...);

#ifdef __cplusplus
}
#endif

#endif
