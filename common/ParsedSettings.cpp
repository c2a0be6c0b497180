#include "common/ParsedSettings.h"

#include "common/File.h"
#include "common/Mutex.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <QSettings>
#include <QStringList>

#include <atomic>

namespace hxd {

namespace {

using HXDCTRL::File;
using Parsed = std::shared_ptr<const ParsedSettings>;

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

}  // namespace

bool ParseAnew(const std::string& content, const char* codec, SettingsValues& values) {
    values.clear();
    File file(AnonymousFile());
    if (!file.IsOpen() || !file.Write(content) || !MakeUnknown(file))
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

std::shared_ptr<const ParsedSettings> ParseSettings(const std::string& content, const char* codec) {
    // Never destroyed: a host may exit while the driver's threads still read settings.
    static ParsedTexts& texts = *new ParsedTexts;
    Parsed known = texts.Find(content, codec);
    if (known != nullptr)
        return known;
    const auto parsed = std::make_shared<ParsedSettings>();
    if (!ParseAnew(content, codec, parsed->values))
        return nullptr;
    parsed->content = content;
    parsed->codec = CodecName(codec);
    texts.Keep(parsed);
    return parsed;
}

}  // namespace hxd
