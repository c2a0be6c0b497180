// Single values of INI files that other processes share.
#ifndef HXD_INIOPERATOR_H
#define HXD_INIOPERATOR_H

#include <QString>

// Reads and writes by names, in the form that the settings' other programs know; the driver's own
// settings go through SettingsFile. Each call opens the file anew (UTF-8) and keeps nothing. The
// caller holds the file's lock (FileLocker) meanwhile. Neither section nor key begins or ends with
// a slash.
class IniOperator {
public:
    // -1 when file, section or key is empty; otherwise 0. A file that cannot be written is not
    // reported and stays as it was. On return the data have reached the storage.
    static int FileIniWriteValue(const QString& file, const QString& section, const QString& key,
                                 const QString& value);

    // 0 when file, section or key is empty (value is left alone); otherwise 1 with the stored text,
    // or defaultValue when the key is absent.
    static int FileIniReadValue(const QString& file, const QString& section, const QString& key,
                                QString& value, const QString& defaultValue);
};

#endif
