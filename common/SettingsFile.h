// An INI file of settings that other processes read and write beside us, and that must survive a
// process killed at any moment, a full disk and a power cut.
#ifndef HXD_SETTINGSFILE_H
#define HXD_SETTINGSFILE_H

#include "common/ParsedSettings.h"

namespace hxd {

constexpr const char* CODEC_UTF8 = "UTF-8";

// QSettings remembers every file by path, size and time, also what a full disk refused, and writes
// in place with Qt 4. So it never gets to see the shared file: it works on copies under names that
// are used once. What is said here about other processes needs the lock that they share, if the
// file has one; the caller holds it meanwhile. One object is for one thread. Nothing throws but
// std::bad_alloc.
class SettingsFile {
public:
    // The codec is for texts beyond ASCII, the same for a file everywhere; null: they are escaped.
    SettingsFile(const QString& path, const char* codec);

    // Takes over what the file holds now; nothing if it is missing, unreadable, larger than 4 MiB
    // or no regular file. The file is read every time, byte for byte; QSettings parses it only when
    // these bytes are not among the last few texts that the process has parsed.
    void Load();

    // As of the last Load(); the default for a key that is not there.
    QString Value(const QString& key, const QString& defaultValue = QString()) const;

    // Replaces the file by one with these values as well, or makes it; everything else in it stays
    // as far as QSettings keeps it (no comments). A link stays a link. The new file has mode and
    // owner of the old one, as far as the process may give it away, and a later modification time,
    // by which other processes' QSettings see the change; one that was missing gets 0644 at most,
    // and its folder is made.
    // False when that fails: then the file is as it was. It fails also where the file may be
    // written, but its folder may not. On return all is on the storage. The driver's callers have
    // no code for it and go on.
    bool Store(const SettingsValues& changes);

private:
    QString m_strFile;
    const char* m_pCodec;
    std::shared_ptr<const ParsedSettings> m_pParsed;  // null: nothing
};

}  // namespace hxd

#endif
