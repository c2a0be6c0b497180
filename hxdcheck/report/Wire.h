// How the test host tells its findings to hxdcheck: on standard output, where the driver prints as
// well, so that all stays in order. A finding's line begins with MARK and what kind of line it is;
// fields follow, each behind SEPARATOR, all texts printable.
#ifndef HXDCHECK_WIRE_H
#define HXDCHECK_WIRE_H

namespace wire {

constexpr char MARK = '\x1e';
constexpr char SEPARATOR = '\x1f';

constexpr char GROUP = 'G';     // title
constexpr char BEGIN = 'B';     // name, limit in seconds, what to do if it dies
constexpr char END = 'E';       // status as a number, text, remedy, milliseconds
constexpr char CHANNEL = 'C';   // number, name, unit, value, meaning
constexpr char QUESTION = 'Q';  // text; standard input answers with one byte, 'y' for yes
constexpr char DONE = 'D';      // nothing more will come

}  // namespace wire

#endif
