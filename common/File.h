// An open file descriptor with its owner.
#ifndef HXD_FILE_H
#define HXD_FILE_H

#include <sys/types.h>
#include <string>

namespace HXDCTRL {

// Owns one descriptor (-1: closed); the destructor closes it. Not for two threads at once.
class File {
public:
    File() = default;
    explicit File(int descriptor) : m_nFd(descriptor) {}  // takes ownership
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File();

    // Closes what is open, then opens path with flags as open(2); close-on-exec is always added. A
    // file made by O_CREAT gets mode 0777 before the umask, unless the caller says otherwise,
    // because other processes of the panel under other accounts open it as well. False and
    // LastError() on failure.
    bool open(const std::string& path, int flags, mode_t mode = 0777);
    void close();

    // True only for a regular file.
    static bool is_file_exist(const std::string& path);

    bool seek(unsigned offset);  // from the start; false and LastError() on failure

    // Reads on until size bytes have come, or the end. Returns how many; after an error, those that
    // came before it, and LastError().
    std::size_t Read(char* buffer, std::size_t size);

    // Everything from the start of the file, whatever the current position. After a read error:
    // what was read so far, the position as it was before, and LastError().
    std::string readAll();

    bool Write(const std::string& content);  // all of it; false and LastError() on failure

    // Gives the descriptor away; the file is closed for its former owner.
    int Release();
    void Swap(File& other);  // exchanges the descriptors and their last errors

    bool IsOpen() const { return m_nFd >= 0; }
    int Descriptor() const { return m_nFd; }
    int LastError() const { return m_nErrno; }  // an errno value; 0: no error yet

private:
    int m_nFd = -1;
    int m_nErrno = 0;
};

}  // namespace HXDCTRL

#endif
