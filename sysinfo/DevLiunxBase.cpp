#include "sysinfo/DevLiunxBase.h"

#include "common/File.h"
#include "common/ResultCodes.h"
#include "sysinfo/Trace.h"

#include <fcntl.h>
#include <unistd.h>
#include <cstring>

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

// O_NONBLOCK: opening a pipe that lies in the file's place would wait for its other end.
bool Open(HXDCTRL::File& file, const std::string& fileName) {
    return file.open(fileName, O_RDONLY | O_NONBLOCK);
}

}  // namespace

DevLiunxBase::DevLiunxBase() : m_pOpearDb(new DevLinuxOpearDb) {}

DevLiunxBase::~DevLiunxBase() = default;

int DevLiunxBase::DevOpear(OLMA_DATA& /*data*/, std::vector<std::string>& /*args*/) {
    return RESULT_DONE;
}

std::string DevLiunxBase::DevReadFile(std::string& fileName, long /*length*/, int mode) {
    if (mode != READ_FIRST_LINE) {
        const FileText text = DevReadFile(fileName);
        return std::string(text.Data(), text.Data() + text.Size());
    }
    DEV_TRACE("DevReadFile begin", "strFileName = %s", fileName.c_str());
    HXDCTRL::File file;
    if (!Open(file, fileName)) {
        DEV_TRACE("DevReadFile end", "Read strFileName = %s error", fileName.c_str());
        return std::string();
    }
    std::string line = FirstLine(file);
    DEV_TRACE("DevReadFile end", "Read strFileContext = %s ", line.c_str());
    return line;
}

FileText DevLiunxBase::DevReadFile(const std::string& fileName) {
    DEV_TRACE("DevReadFile begin", "strFileName = %s", fileName.c_str());
    FileText text;
    HXDCTRL::File file;
    if (!Open(file, fileName)) {
        DEV_TRACE("DevReadFile end", "Read strFileName = %s error", fileName.c_str());
        return text;
    }
    const long long size = ::lseek(file.Descriptor(), 0, SEEK_END);  // -1: it has no positions
    DEV_TRACE("DevReadFile begin", "strFileName = %s,flen = %d", fileName.c_str(),
              static_cast<int>(size));
    if (!text.Read(file, size)) {
        DEV_TRACE("DevReadFile end", "Read strFileName = %s error", fileName.c_str());
        return text;
    }
    DEV_TRACE("DevReadFile end", "Read strFileName = %s,len = %d", fileName.c_str(),
              static_cast<int>(text.Size()));
    return text;
}

int DevLiunxBase::DevSetContext(OLMA_DATA& data, const std::string& text,
                                const std::vector<std::string>& args) {
    return DevSetContext(data, FileText(text), args);
}

int DevLiunxBase::DevSetContext(OLMA_DATA& data, FileText text,
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
    CString tail = text.TakeTail(limit);
    const int written = m_pOpearDb->DevSetParaValue(data, args[2], tail);
    m_pOpearDb->DevSetParaValue(data, args[3], written == 0 ? STATUS_DELIVERED : STATUS_FAILED);
    return written == 0 ? RESULT_DONE : RESULT_REFUSED;
}
