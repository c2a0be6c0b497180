// Files that are written with <cstdio>.
#ifndef HXDPANEL_STREAM_H
#define HXDPANEL_STREAM_H

#include <cstdio>
#include <memory>

struct StreamCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using OwnedStream = std::unique_ptr<std::FILE, StreamCloser>;

// False when a part of what was written did not get out.
inline bool IsWritten(std::FILE* stream) {
    return std::fflush(stream) == 0 && std::ferror(stream) == 0;
}

#endif
