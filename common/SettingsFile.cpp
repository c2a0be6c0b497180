#include "common/SettingsFile.h"

#include "common/File.h"
#include "common/Retry.h"
#include "common/ScratchFolder.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
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
    if (content.empty() || content.back() != '\n' || !ParseAnew(content, codec, values) ||
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
        File file;
        if (!file.open(copy, O_WRONLY | O_CREAT | O_EXCL, 0644) || !file.Write(old.content) ||
            ::fstat(file.Descriptor(), &status) != 0)
            return false;
    }
    const mode_t mode = (old.exists ? old.status.st_mode : status.st_mode) & 0777;
    std::size_t keyCount = 0;
    FileView written;
    if (!Change(copy, codec, changes, keyCount) || !written.Read(copy, O_RDONLY) ||
        !IsComplete(written.content, codec, changes, keyCount))
        return false;
    return Finish(copy, mode, old) && std::rename(copy.c_str(), path.c_str()) == 0;
}

}  // namespace

SettingsFile::SettingsFile(const QString& path, const char* codec)
    : m_strFile(path), m_pCodec(codec) {}

void SettingsFile::Load() {
    FileView file;
    if (!file.Read(QFile::encodeName(m_strFile).constData(), O_RDONLY))
        file.content.clear();
    if (m_pParsed == nullptr || m_pParsed->content != file.content)
        m_pParsed = file.content.empty() ? nullptr : ParseSettings(file.content, m_pCodec);
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
