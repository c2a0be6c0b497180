// The text of a log of many MiB, held once and not filled with anything before it is read.
#ifndef HXD_FILETEXT_H
#define HXD_FILETEXT_H

#include "common/File.h"
#include "mfc/CString.h"

#include <cstddef>
#include <memory>
#include <string>

class FileText {
public:
    FileText() = default;
    explicit FileText(const std::string& text);

    // Takes size bytes from the start of the file in one read, and of them those before the first
    // zero byte. False when there is no memory for them.
    bool Read(HXDCTRL::File& file, long long size);

    const char* Data() const { return m_pBytes.get(); }  // null: nothing was read
    std::size_t Size() const { return m_nSize; }

    // The last bytes of the text, at most limit, which is below 2 GiB. Everything else is given
    // back to the system.
    CString TakeTail(std::size_t limit);

private:
    bool Allocate(long long size);

    std::unique_ptr<char[]> m_pBytes;
    std::size_t m_nSize = 0;
};

#endif
