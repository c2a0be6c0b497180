// What differs between Qt 4 and Qt 5, and the conversions between the host's 8-bit text and Qt's.
#ifndef HXD_QTTEXT_H
#define HXD_QTTEXT_H

#include "mfc/CString.h"

#include <QByteArray>
#include <QString>

namespace hxd {

// Bytes to characters as QString::fromAscii does it on the panel (Latin-1): no byte is lost or
// joined with its neighbours, so FromHost and ToHost undo each other.
inline QString FromHost(const char* text, int length) {
#if QT_VERSION < 0x050000
    return QString::fromAscii(text, length);
#else
    return QString::fromLatin1(text, length);
#endif
}
inline QString FromHost(const CString& text) {
    return FromHost(static_cast<const char*>(text), text.GetLength());
}

inline QByteArray ToHostBytes(const QString& text) {
#if QT_VERSION < 0x050000
    return text.toAscii();
#else
    return text.toLatin1();
#endif
}
inline CString ToHost(const QString& text) {
    const QByteArray bytes = ToHostBytes(text);
    return CString(bytes.constData(), bytes.size());
}

}  // namespace hxd

#endif
