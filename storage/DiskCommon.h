// Files that the storage managers read.
#ifndef HXD_DISKCOMMON_H
#define HXD_DISKCOMMON_H

#include <QString>
#include <QVector>

class DiskCommon {
public:
    // Appends the file's lines, of any length, without surrounding white space. Works for files
    // that do not tell their size (/proc, sysfs). False, with a message on standard output, when
    // the file cannot be opened.
    static bool readFileOfLine(const QString& path, QVector<QString>& lines);

    // The file's first line; false when the file cannot be opened or has none.
    static bool readFirstLine(const QString& path, QString& line);
};

#endif
