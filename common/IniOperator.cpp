#include "common/IniOperator.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QFile>
#include <QSettings>

namespace {

QString KeyPath(const QString& section, const QString& key) {
    return QLatin1Char('/') + section + QLatin1Char('/') + key;
}

// Milliseconds since 1970, or -1 when there is no such file.
long long ModificationTimeMs(const QString& file) {
    struct stat status = {};
    if (::stat(QFile::encodeName(file).constData(), &status) != 0)
        return -1;
    return static_cast<long long>(status.st_mtim.tv_sec) * 1000 + status.st_mtim.tv_nsec / 1000000;
}

#if QT_VERSION < 0x050000
constexpr long long TIME_STEP_MS = 1000;  // what this Qt can tell apart
#else
constexpr long long TIME_STEP_MS = 1;
#endif

}  // namespace

namespace hxd {

ModificationMark::ModificationMark(const QString& file)
    : m_strFile(file), m_llBeforeMs(ModificationTimeMs(file)) {}

void ModificationMark::Settle() const {
    // Always forward, never just different: a third process may remember any earlier time.
    if (m_llBeforeMs < 0 ||
        ModificationTimeMs(m_strFile) / TIME_STEP_MS > m_llBeforeMs / TIME_STEP_MS)
        return;
    const long long nextMs = m_llBeforeMs + TIME_STEP_MS;
    struct timespec times[2] = {};
    times[0].tv_nsec = UTIME_OMIT;
    times[1].tv_sec = static_cast<time_t>(nextMs / 1000);
    times[1].tv_nsec = static_cast<long>(nextMs % 1000 * 1000000);
    ::utimensat(AT_FDCWD, QFile::encodeName(m_strFile).constData(), times, 0);
}

}  // namespace hxd

int IniOperator::FileIniWriteValue(const QString& file, const QString& section, const QString& key,
                                   const QString& value) {
    if (file.isEmpty() || section.isEmpty() || key.isEmpty())
        return -1;
    const hxd::ModificationMark mark(file);
    {
        QSettings settings(file, QSettings::IniFormat);
        settings.setIniCodec("UTF-8");
        settings.setValue(KeyPath(section, key), value);
    }
    mark.Settle();
    ::sync();  // a power cut must not lose it, and the next holder of the lock must see it
    return 0;
}

int IniOperator::FileIniReadValue(const QString& file, const QString& section, const QString& key,
                                  QString& value, const QString& defaultValue) {
    if (file.isEmpty() || section.isEmpty() || key.isEmpty())
        return 0;
    QSettings settings(file, QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    value = settings.value(KeyPath(section, key), defaultValue).toString();
    return 1;
}
