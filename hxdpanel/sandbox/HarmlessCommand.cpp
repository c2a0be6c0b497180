#include "hxdpanel/sandbox/HarmlessCommand.h"

#include <QRegExp>
#include <QString>

namespace guard {

bool IsHarmless(const std::string& command) {
    // The actions of find that run or remove something begin with "-exec", "-ok", "-delete", ...;
    // only the tests that the driver uses are let through.
    const QRegExp pattern(
        QLatin1String("find( /[A-Za-z0-9._/-]*)+( -(name|maxdepth|type) [A-Za-z0-9._*]+)*"
                      "|mkdir -p( ([A-Za-z0-9._/][A-Za-z0-9._/-]*|'([^']|'\\\\'')*'))+"));
    return pattern.exactMatch(QString::fromLatin1(command.c_str()));
}

}  // namespace guard
