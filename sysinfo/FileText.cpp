#include "sysinfo/FileText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

FileText::FileText(const std::string& text)
    : m_pBytes(new char[text.size()]), m_nSize(text.size()) {
    text.copy(m_pBytes.get(), text.size());
}

// A directory reports the largest possible size.
bool FileText::Allocate(long long size) {
    if (size < 0 || size >= PTRDIFF_MAX)
        return false;
    m_pBytes.reset(new (std::nothrow) char[static_cast<std::size_t>(size)]);
    return m_pBytes != nullptr;
}

bool FileText::Read(HXDCTRL::File& file, long long size) {
    m_nSize = 0;
    if (!Allocate(size))
        return false;
    file.seek(0);
    const std::size_t read = file.Read(m_pBytes.get(), static_cast<std::size_t>(size));
    const void* const end = std::memchr(m_pBytes.get(), '\0', read);
    m_nSize = end == nullptr
                  ? read
                  : static_cast<std::size_t>(static_cast<const char*>(end) - m_pBytes.get());
    return true;
}

CString FileText::TakeTail(std::size_t limit) {
    const std::size_t length = std::min(m_nSize, limit);
    CString tail;
    if (length > 0)
        tail = CString(m_pBytes.get() + (m_nSize - length), static_cast<int>(length));
    m_pBytes.reset();
    m_nSize = 0;
    return tail;
}
