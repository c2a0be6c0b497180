#include "common/File.h"

#include "common/Retry.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace HXDCTRL {

File::~File() {
    close();
}

void File::close() {
    if (m_nFd >= 0)
        ::close(m_nFd);
    m_nFd = -1;
}

int File::Release() {
    const int descriptor = m_nFd;
    m_nFd = -1;
    return descriptor;
}

void File::Swap(File& other) {
    std::swap(m_nFd, other.m_nFd);
    std::swap(m_nErrno, other.m_nErrno);
}

bool File::open(const std::string& path, int flags, mode_t mode) {
    close();
    m_nFd = hxd::RetryInterrupted([&] {
        return (flags & O_CREAT) != 0 ? ::open(path.c_str(), flags | O_CLOEXEC, mode)
                                      : ::open(path.c_str(), flags | O_CLOEXEC);
    });
    if (m_nFd < 0)
        m_nErrno = errno;
    return m_nFd >= 0;
}

bool File::is_file_exist(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool File::seek(unsigned offset) {
    if (::lseek(m_nFd, static_cast<off_t>(offset), SEEK_SET) >= 0)
        return true;
    m_nErrno = errno;
    return false;
}

std::size_t File::Read(char* buffer, std::size_t size) {
    std::size_t total = 0;
    while (total < size) {
        const ssize_t count =
            hxd::RetryInterrupted([&] { return ::read(m_nFd, buffer + total, size - total); });
        if (count < 0)
            m_nErrno = errno;
        if (count <= 0)
            break;
        total += static_cast<std::size_t>(count);
    }
    return total;
}

std::string File::readAll() {
    std::string content;
    const off_t before = ::lseek(m_nFd, 0, SEEK_CUR);
    seek(0);
    char buffer[1024];
    for (;;) {
        const ssize_t count =
            hxd::RetryInterrupted([&] { return ::read(m_nFd, buffer, sizeof buffer - 1); });
        if (count == 0)
            return content;
        if (count < 0)
            break;
        content.append(buffer, static_cast<std::size_t>(count));
    }
    m_nErrno = errno;
    ::lseek(m_nFd, before, SEEK_SET);
    return content;
}

bool File::Write(const std::string& content) {
    for (std::size_t done = 0; done < content.size();) {
        const ssize_t count = hxd::RetryInterrupted(
            [&] { return ::write(m_nFd, content.data() + done, content.size() - done); });
        if (count <= 0) {
            m_nErrno = errno;
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace HXDCTRL
