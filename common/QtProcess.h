// What differs between Qt 4 and Qt 5 about processes.
#ifndef HXD_QTPROCESS_H
#define HXD_QTPROCESS_H

#include <QProcess>

namespace hxd {

// The number of a process that runs; 0 when none does.
inline qint64 ProcessId(const QProcess& process) {
#if QT_VERSION < 0x050000
    return process.pid();
#else
    return process.processId();
#endif
}

}  // namespace hxd

#endif
