// What the system-information operations have in common.
#ifndef HXD_DEVLIUNXBASE_H
#define HXD_DEVLIUNXBASE_H

#include "common/ResultCodes.h"
#include "driver/record/OlmaData.h"
#include "sysinfo/DevLinuxOpearDb.h"
#include "sysinfo/FileText.h"

#include <memory>
#include <string>
#include <vector>

// What the status variable of a log command receives.
constexpr double STATUS_DELIVERED = 0.0;
constexpr double STATUS_FAILED = -RESULT_REFUSED;

// One operation. Not for two threads at once: the callers of the registry take turns.
class DevLiunxBase {
public:
    enum ReadMode {
        READ_WHOLE_FILE = 0,
        READ_FIRST_LINE = 1,  // at most 127 bytes, its newline kept
    };

    DevLiunxBase();
    virtual ~DevLiunxBase();

    // Runs the operation with the command's arguments; 0 or a negative ResultCode.
    virtual int DevOpear(OLMA_DATA& data, std::vector<std::string>& args);

    // The file's text up to its first zero byte, or the empty text when it cannot be read. The
    // whole file is read in one piece of the size that the file system reports, so files under
    // /proc, which report 0, read as empty; their readers take the first line. length is not used.
    virtual std::string DevReadFile(std::string& fileName, long length, int mode);

    // Delivers a text to the caller of a log command. args: mode, largest length in KiB, name of
    // the text parameter, name of the status parameter. The newest part of a longer text is kept.
    // 0 and status 0.0; -4 and status 4.0 when the length or the text parameter is unusable; -5
    // when there are not four arguments.
    virtual int DevSetContext(OLMA_DATA& data, const std::string& text,
                              const std::vector<std::string>& args);

protected:
    // The two as one, for files of any size: there is one copy of the file, and it is gone before
    // the host makes its own of the text that is kept.
    int DevSetContext(OLMA_DATA& data, FileText text, const std::vector<std::string>& args);
    FileText DevReadFile(const std::string& fileName);

    std::unique_ptr<DevLinuxOpearDb> m_pOpearDb;
};

#endif
