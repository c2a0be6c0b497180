#include "sysinfo/DevLiunxBase.h"

#include "common/ResultCodes.h"
#include "common/Retry.h"
#include "sysinfo/Trace.h"

#include <fcntl.h>
#include <unistd.h>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

namespace {

struct FileCloser {
    void operator()(FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<FILE, FileCloser>;

// Not fopen: opening a pipe that lies in a file's place would wait for its other end.
OpenFile Open(const std::string& path) {
    const int descriptor = hxd::RetryInterrupted(
        [&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); });
    if (descriptor < 0)
        return nullptr;
    OpenFile file(::fdopen(descriptor, "r"));
    if (file == nullptr)
        ::close(descriptor);
    return file;
}

// Lengths of this many KiB and more do not fit the 32-bit byte count.
constexpr int LENGTH_LIMIT_KIB = 2097152;

constexpr double STATUS_DELIVERED = 0.0;
constexpr double STATUS_FAILED = 4.0;

// The size that seeking to the end reports; -1 when the file has no positions.
long long SizeOf(FILE* file) {
    if (::fseeko(file, 0, SEEK_END) != 0)
        return -1;
    return ::ftello(file);
}

// A text of size bytes, or false when there is no memory for it. A directory reports the largest
// possible size.
bool Allocate(std::string& text, long long size) {
    if (size < 0 || static_cast<unsigned long long>(size) >= text.max_size())
        return false;
    try {
        text.resize(static_cast<std::size_t>(size));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

DevLiunxBase::DevLiunxBase() : m_pOpearDb(new DevLinuxOpearDb) {}

DevLiunxBase::~DevLiunxBase() = default;

int DevLiunxBase::DevOpear(OLMA_DATA& /*data*/, std::vector<std::string>& /*args*/) {
    return RESULT_DONE;
}

std::string DevLiunxBase::DevReadFile(std::string& fileName, long /*length*/, int mode) {
    DEV_TRACE("DevReadFile begin", "strFileName = %s", fileName.c_str());
    const OpenFile file = Open(fileName);
    if (file == nullptr) {
        DEV_TRACE("DevReadFile end", "Read strFileName = %s error", fileName.c_str());
        return std::string();
    }
    if (mode == READ_FIRST_LINE) {
        char line[128] = {};
        if (std::fgets(line, sizeof line, file.get()) == nullptr)
            line[0] = '\0';
        DEV_TRACE("DevReadFile end", "Read strFileContext = %s ", line);
        return line;
    }
    const long long size = SizeOf(file.get());
    DEV_TRACE("DevReadFile begin", "strFileName = %s,flen = %d", fileName.c_str(),
              static_cast<int>(size));
    std::string text;
    if (!Allocate(text, size)) {
        DEV_TRACE("DevReadFile end", "Read strFileName = %s error", fileName.c_str());
        return std::string();
    }
    std::rewind(file.get());
    text.resize(std::fread(&text[0], 1, text.size(), file.get()));
    text.resize(std::strlen(text.c_str()));
    DEV_TRACE("DevReadFile end", "Read strFileName = %s,len = %d", fileName.c_str(),
              static_cast<int>(text.size()));
    return text;
}

int DevLiunxBase::DevSetContext(OLMA_DATA& data, const std::string& text,
                                const std::vector<std::string>& args) {
    if (args.size() != 4)
        return RESULT_BAD_ARGUMENTS;
    int lengthKib = 0;
    const int readResult = m_pOpearDb->DevGetParaValue(data, args[1], lengthKib);
    DEV_TRACE("AppAppLog DevOpear begin", "getLen = %d", lengthKib);
    if (readResult != 0 || lengthKib < 0 || lengthKib >= LENGTH_LIMIT_KIB) {
        m_pOpearDb->DevSetParaValue(data, args[3], STATUS_FAILED);
        return RESULT_REFUSED;
    }
    const std::size_t limit = static_cast<std::size_t>(lengthKib) << 10;
    const int written = text.size() > limit ? m_pOpearDb->DevSetParaValue(
                                                  data, args[2], text.substr(text.size() - limit))
                                            : m_pOpearDb->DevSetParaValue(data, args[2], text);
    m_pOpearDb->DevSetParaValue(data, args[3], written == 0 ? STATUS_DELIVERED : STATUS_FAILED);
    return written == 0 ? RESULT_DONE : RESULT_REFUSED;
}
