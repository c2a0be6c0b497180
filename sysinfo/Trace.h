// Log lines of the system-information operations, in the format the host's log tools search for.
#ifndef HXD_TRACE_H
#define HXD_TRACE_H

#include "logger.h"

// tag, then a printf format and its arguments; the function name is the enclosing function's.
#define DEV_TRACE(...) logger_printf(__func__, "devliunxsys", __LINE__, 4, __VA_ARGS__)
#define DEV_ERROR(...) logger_printf(__func__, "devliunxsys", __LINE__, 1, __VA_ARGS__)

#endif
