#include "sysinfo/DevLiunxBase.h"

#include "common/File.h"
#include "common/ResultCodes.h"
#include "sysinfo/Trace.h"

#include <fcntl.h>
#include <unistd.h>
#include <cstring>
#include <new>

namespace {

// Lengths of this many KiB and more do not fit the 32-bit byte count.
constexpr int LENGTH_LIMIT_KIB = 2097152;

// One line with its end, or what fits.
std::string FirstLine(HXDCTRL::File& file) {
    char line[128] = {};
    file.Read(line, sizeof line - 1);
    char* const end = std::strchr(line, '\n');
    return end == nullptr ? std::string(line) : std::string(line, end + 1);
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
    // O_NONBLOCK: opening a pipe that lies in the file's place would wait for its other end.
    HXDCTRL::File file;
    if (!file.open(fileName, O_RDONLY | O_NONBLOCK)) {
        DEV_TRACE("DevReadFile end", "Read strFileName = %s error", fileName.c_str());
        return std::string();
    }
    if (mode == READ_FIRST_LINE) {
        std::string line = FirstLine(file);
        DEV_TRACE("DevReadFile end", "Read strFileContext = %s ", line.c_str());
        return line;
    }
    const long long size = ::lseek(file.Descriptor(), 0, SEEK_END);  // -1: it has no positions
    DEV_TRACE("DevReadFile begin", "strFileName = %s,flen = %d", fileName.c_str(),
              static_cast<int>(size));
    std::string text;
    if (!Allocate(text, size)) {
        DEV_TRACE("DevReadFile end", "Read strFileName = %s error", fileName.c_str());
        return std::string();
    }
    file.seek(0);
    text.resize(file.Read(&text[0], text.size()));
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
