#include "common/SettingsFile.h"

#include "common/File.h"
#include "common/Mutex.h"
#include "common/Retry.h"
#include "common/ScratchFolder.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStringList>

#include <algorithm>
#include <atomic>
#include <cstdio>

namespace hxd {

namespace {

using HXDCTRL::File;

constexpr off_t MAX_BYTES = 4 << 20;
constexpr int MAX_LINKS = 40;

#if QT_VERSION < 0x050000
constexpr long long TIME_STEP_MS = 1000;  // what QSettings can tell apart
#else
constexpr long long TIME_STEP_MS = 1;
#endif

std::string Join(const std::string& folder, const std::string& name) {
    return folder + '/' + name;
}

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// Where the links at the end of the path lead to, whether there is anything or not; empty when they
// lead round in circles.
std::string Resolve(std::string path) {
    for (int links = 0; links < MAX_LINKS; ++links) {
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0)
            return path;
        const std::string next(target, static_cast<std::size_t>(length));
        path = !next.empty() && next[0] == '/' ? next : Join(FolderOf(path), next);
    }
    return std::string();
}

bool WriteAll(const File& file, const std::string& content) {
    for (std::size_t done = 0; done < content.size();) {
        const ssize_t count = RetryInterrupted([&] {
            return ::write(file.Descriptor(), content.data() + done, content.size() - done);
        });
        if (count <= 0)
            return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

// One look at a file.
struct FileView {
    bool exists = false;
    struct stat status = {};
    std::string content;

    // False when there is something at the path that cannot be read as a settings file. O_NONBLOCK:
    // a pipe in its place must not be waited for.
    bool Read(const std::string& path, int access) {
        File file;
        if (!file.open(path, access | O_NONBLOCK))
            return file.LastError() == ENOENT;
        exists = true;
        if (::fstat(file.Descriptor(), &status) != 0 || !S_ISREG(status.st_mode) ||
            status.st_size > MAX_BYTES)
            return false;
        content.resize(static_cast<std::size_t>(status.st_size));
        content.resize(file.Read(&content[0], content.size()));
        return file.LastError() == 0;
    }
};

// A file without a name.
int AnonymousFile() {
#ifdef SYS_memfd_create
    constexpr unsigned CLOSE_ON_EXEC = 1;
    const long descriptor = ::syscall(SYS_memfd_create, "settings", CLOSE_ON_EXEC);
    if (descriptor >= 0)
        return static_cast<int>(descriptor);
#endif
#ifdef O_TMPFILE
    const int nameless = ::open("/tmp", O_RDWR | O_TMPFILE | O_CLOEXEC, 0600);
    if (nameless >= 0)
        return nameless;
#endif
    char path[] = "/tmp/hxd_settings.XXXXXX";  // for kernels before 3.11
    const int file = ::mkostemp(path, O_CLOEXEC);
    if (file >= 0)
        ::unlink(path);
    return file;
}

// Gives the file a time that no file had before it: so QSettings, which knows it by its
// descriptor's path and may have met another file there, reads it anew.
bool MakeUnknown(const File& file) {
    static std::atomic<long> seconds{0};
    struct timespec times[2] = {};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = ++seconds;
    return ::futimens(file.Descriptor(), times) == 0;
}

bool Parse(const std::string& content, const char* codec, SettingsValues& values) {
    values.clear();
    const File file(AnonymousFile());
    if (!file.IsOpen() || !WriteAll(file, content) || !MakeUnknown(file))
        return false;
    QSettings settings(QString::fromLatin1("/proc/self/fd/%1").arg(file.Descriptor()),
                       QSettings::IniFormat);
    if (settings.status() == QSettings::AccessError)
        return false;
    if (codec != nullptr)
        settings.setIniCodec(codec);
    const QStringList keys = settings.allKeys();
    for (int i = 0; i < keys.size(); ++i)
        values[keys.at(i)] = settings.value(keys.at(i));
    return true;
}

}  // namespace

struct ParsedSettings {
    std::string content;
    std::string codec;
    SettingsValues values;
};

namespace {

using Parsed = std::shared_ptr<const ParsedSettings>;

std::string CodecName(const char* codec) {
    return codec != nullptr ? codec : "";
}

// The last texts and what is in them, for all threads: every reading of the panel asks for the same
// two files, and parsing costs ten times what reading does.
class ParsedTexts {
public:
    Parsed Find(const std::string& content, const char* codec) {
        const MutexLock guard(m_mutex);
        for (const Parsed& known : m_known) {
            if (known != nullptr && known->content == content && known->codec == CodecName(codec))
                return known;
        }
        return nullptr;
    }

    void Keep(const Parsed& parsed) {
        if (parsed->content.size() > KEPT_BYTES)
            return;
        const MutexLock guard(m_mutex);
        m_known[m_nOldest] = parsed;
        m_nOldest = (m_nOldest + 1) % KEPT_TEXTS;
    }

private:
    static constexpr std::size_t KEPT_TEXTS = 4;
    static constexpr std::size_t KEPT_BYTES = 64 << 10;  // of each

    Mutex m_mutex;
    Parsed m_known[KEPT_TEXTS] HXD_GUARDED_BY(m_mutex);
    std::size_t m_nOldest HXD_GUARDED_BY(m_mutex) = 0;
};

// Null when it cannot be parsed.
Parsed ParseOnce(const std::string& content, const char* codec) {
    // Never destroyed: a host may exit while the driver's threads still read settings.
    static ParsedTexts& texts = *new ParsedTexts;
    Parsed known = texts.Find(content, codec);
    if (known != nullptr)
        return known;
    const auto parsed = std::make_shared<ParsedSettings>();
    if (!Parse(content, codec, parsed->values))
        return nullptr;
    parsed->content = content;
    parsed->codec = CodecName(codec);
    texts.Keep(parsed);
    return parsed;
}

// QSettings writes a few odd keys, an encoded word in a line of its own or one in a section without
// a name for example, in a way in which it does not find them again.
bool IsFoundAgain(const QString& key) {
    return !key.startsWith(QLatin1String("/")) && !key.endsWith(QLatin1String("/")) &&
           !key.contains(QLatin1String("//")) && !key.contains(QChar(0));
}

// Qt's part of a change, on a file that nobody else knows. How many keys there are to be then.
bool Change(const std::string& path, const char* codec, const SettingsValues& changes,
            std::size_t& keyCount) {
    QSettings settings(QFile::decodeName(path.c_str()), QSettings::IniFormat);
    if (codec != nullptr)
        settings.setIniCodec(codec);
    for (const auto& change : changes)
        settings.setValue(change.first, change.second);
    const QStringList keys = settings.allKeys();
    keyCount = static_cast<std::size_t>(std::count_if(keys.begin(), keys.end(), IsFoundAgain));
    settings.sync();
    return settings.status() != QSettings::AccessError;  // a malformed line before is none of ours
}

// Qt 4 does not notice a full disk. What that leaves is the beginning of the text: either the last
// line is not ended or whole lines, which are keys, are missing.
bool IsComplete(const std::string& content, const char* codec, const SettingsValues& changes,
                std::size_t keyCount) {
    SettingsValues values;
    if (content.empty() || content.back() != '\n' || !Parse(content, codec, values) ||
        values.size() < keyCount)
        return false;
    for (const auto& change : changes) {
        const auto found = values.find(change.first);
        if (found == values.end() || found->second.toString() != change.second.toString())
            return false;
    }
    return true;
}

long long Milliseconds(const struct timespec& time) {
    return static_cast<long long>(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

// Always forward, never just different: a third process may remember any earlier time.
bool MakeLater(const File& file, const struct stat& status, const struct stat& old) {
    const long long oldMs = Milliseconds(old.st_mtim);
    if (Milliseconds(status.st_mtim) / TIME_STEP_MS > oldMs / TIME_STEP_MS)
        return true;
    const long long nextMs = oldMs + TIME_STEP_MS;
    struct timespec times[2] = {};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(nextMs / 1000);
    times[1].tv_nsec = static_cast<long>(nextMs % 1000 * 1000000);
    return ::futimens(file.Descriptor(), times) == 0;
}

// Where that is not permitted or unknown, a file of ours is better than a setting that is lost.
// (EINVAL: a user whom this container does not have.)
bool GiveTo(const File& file, const struct stat& owner) {
    return ::fchown(file.Descriptor(), owner.st_uid, owner.st_gid) == 0 || errno == EPERM ||
           errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
}

// Mode, owner and time, and all of it on the storage.
bool Finish(const std::string& path, mode_t mode, const FileView& old) {
    File file;
    struct stat status = {};
    if (!file.open(path, O_RDONLY) || ::fstat(file.Descriptor(), &status) != 0)
        return false;
    if (old.exists && (!GiveTo(file, old.status) || !MakeLater(file, status, old.status)))
        return false;
    return ::fchmod(file.Descriptor(), mode) == 0 &&
           RetryInterrupted([&] { return ::fsync(file.Descriptor()); }) == 0;
}

bool Replace(const std::string& path, const char* codec, const SettingsValues& changes) {
    FileView old;
    if (path.empty() || !old.Read(path, O_RDWR))  // one that may not be written is not replaced
        return false;
    if (!old.exists && !QDir().mkpath(QFile::decodeName(FolderOf(path).c_str())))
        return false;
    const ScratchFolder scratch(path);
    // The name is new to Qt even if the folder's were to return.
    static std::atomic<unsigned long> count{0};
    const std::string copy = Join(scratch.Path(), std::to_string(++count));

    struct stat status = {};
    {
        const File file(::open(copy.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
        if (!file.IsOpen() || !WriteAll(file, old.content) ||
            ::fstat(file.Descriptor(), &status) != 0)
            return false;
    }
    const mode_t mode = (old.exists ? old.status.st_mode : status.st_mode) & 0777;
    std::size_t keyCount = 0;
    FileView written;
    return Change(copy, codec, changes, keyCount) && written.Read(copy, O_RDONLY) &&
           IsComplete(written.content, codec, changes, keyCount) && Finish(copy, mode, old) &&
           std::rename(copy.c_str(), path.c_str()) == 0;
}

}  // namespace

SettingsFile::SettingsFile(const QString& path, const char* codec)
    : m_strFile(path), m_pCodec(codec) {}

void SettingsFile::Load() {
    FileView file;
    if (!file.Read(QFile::encodeName(m_strFile).constData(), O_RDONLY))
        file.content.clear();
    if (m_pParsed == nullptr || m_pParsed->content != file.content)
        m_pParsed = file.content.empty() ? nullptr : ParseOnce(file.content, m_pCodec);
}

QString SettingsFile::Value(const QString& key, const QString& defaultValue) const {
    if (m_pParsed == nullptr)
        return defaultValue;
    const auto found = m_pParsed->values.find(key);
    return found != m_pParsed->values.end() ? found->second.toString() : defaultValue;
}

bool SettingsFile::Store(const SettingsValues& changes) {
    const bool stored =
        Replace(Resolve(QFile::encodeName(m_strFile).constData()), m_pCodec, changes);
    ::sync();  // the new name of the file, too
    return stored;
}

}  // namespace hxd
