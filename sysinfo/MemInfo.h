// Available memory from the text of /proc/meminfo, in KiB.
#ifndef HXD_MEMINFO_H
#define HXD_MEMINFO_H

#include "common/Maybe.h"

#include <string>

namespace meminfo {

// The kernel's own figure. None when the text has no "MemAvailable:" line, or has it as its last
// line without a newline: such a text is cut off, and its number may be as well.
hxd::Maybe<int> ParseAvailable(const std::string& content);

// The estimate for kernels without that figure: MemFree + Buffers + Cached - 1. Fed line by line.
class OldEstimate {
public:
    enum State {
        MORE,      // needs further lines
        COMPLETE,  // FreeKb() is valid
        BROKEN,    // a known line has no value
    };

    // The line is changed (it is cut into its words).
    State Feed(char* line);

    int FreeKb() const { return m_nFreeKb; }

private:
    // Starts at -1, the mark for "not known", and stays in the sum: panels in the field report the
    // figure one KiB low, and projects compare against it.
    int m_nFreeKb = -1;
    int m_nTotal = -1;  // must be there, is not added
    int m_nFree = -1;
    int m_nBuffers = -1;
    int m_nCached = -1;
};

}  // namespace meminfo

#endif
