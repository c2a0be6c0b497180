#include "hxdpanel/panel/SharedNote.h"

#include "common/Retry.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

void SharedNote::Open(const std::string& path, bool create) {
    m_file.open(path, O_RDWR | O_NOFOLLOW | (create ? O_CREAT : 0));
}

bool SharedNote::TakeAlone() const {
    if (!m_file.IsOpen() || ::flock(m_file.Descriptor(), LOCK_EX | LOCK_NB) == 0)
        return true;
    Share();
    return false;
}

void SharedNote::Share() const {
    hxd::RetryInterrupted([this] { return ::flock(m_file.Descriptor(), LOCK_SH); });
}

bool SharedNote::Read(std::string& text) {
    text = m_file.IsOpen() ? m_file.readAll() : "";
    if (text.empty() || text.back() != '\n')  // or one that was not written to its end
        return false;
    text.pop_back();
    return true;
}

// In place: a replacement would not carry the locks.
bool SharedNote::Write(const std::string& text) const {
    const std::string line = text + '\n';
    return ::ftruncate(m_file.Descriptor(), 0) == 0 &&
           ::pwrite(m_file.Descriptor(), line.data(), line.size(), 0) ==
               static_cast<ssize_t>(line.size()) &&
           ::fsync(m_file.Descriptor()) == 0;
}

void SharedNote::Erase() const {
    const int result = ::ftruncate(m_file.Descriptor(), 0);
    static_cast<void>(result);  // what is left is judged again by the next run
}
