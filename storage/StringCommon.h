// Words of a text.
#ifndef HXD_STRINGCOMMON_H
#define HXD_STRINGCOMMON_H

#include <QString>
#include <QVector>

class StringCommon {
public:
    // Empties out and appends the words of text between runs of white space.
    static void splitString(const QString& text, QVector<QString>& out);

    // The word with that index, from 0; empty when the text has fewer.
    static QString WordAt(const QString& text, int index);
};

#endif
