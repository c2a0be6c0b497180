// Files that the storage managers read.
#ifndef HXD_DISKCOMMON_H
#define HXD_DISKCOMMON_H

#include "common/Maybe.h"

#include <QString>
#include <QVector>

class DiskCommon {
public:
    // Appends the file's lines, of any length, without surrounding white space. Works for files
    // that do not tell their size (/proc, sysfs). False, with a message on standard output, when
    // the file cannot be opened.
    static bool readFileOfLine(const QString& path, QVector<QString>& lines);

    // None when the file cannot be opened or has no line.
    static hxd::Maybe<QString> FirstLineOf(const QString& path);
};

#endif
