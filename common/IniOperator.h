// Single values of INI files that other processes share.
#ifndef HXD_INIOPERATOR_H
#define HXD_INIOPERATOR_H

#include <QString>

// Each call opens the file anew (UTF-8) and keeps nothing itself; see ModificationMark for what
// QSettings keeps. The caller holds the file's lock (FileLocker) meanwhile. Nothing throws.
class IniOperator {
public:
    // -1 when file, section or key is empty; otherwise 0. A file that cannot be written is not
    // noticed. On return the data have reached the storage.
    static int FileIniWriteValue(const QString& file, const QString& section, const QString& key,
                                 const QString& value);

    // 0 when file, section or key is empty (value is left alone); otherwise 1 with the stored text,
    // or defaultValue when the key is absent.
    static int FileIniReadValue(const QString& file, const QString& section, const QString& key,
                                QString& value, const QString& defaultValue);
};

namespace hxd {

// Remembers a file's modification time; Settle() makes sure that it has moved on since, for
// settings files that several processes rewrite in turn: QSettings keeps a process-wide cache keyed
// by size and time, and serves a stale value after two writes within the clock's resolution. Both
// under the file's lock.
class ModificationMark {
public:
    explicit ModificationMark(const QString& file);
    void Settle() const;

private:
    QString m_strFile;
    long long m_llBeforeMs;  // since 1970; -1: no such file
};

}  // namespace hxd

#endif
