// How the test host tells its findings to hxdcheck: one line for each event, fields apart by
// SEPARATOR, all texts printable. The first field says what it is.
#ifndef HXDCHECK_WIRE_H
#define HXDCHECK_WIRE_H

namespace wire {

constexpr int DESCRIPTOR = 3;  // of the test host; answers to questions come on standard input
constexpr char SEPARATOR = '\x1f';

constexpr char GROUP = 'G';     // title
constexpr char BEGIN = 'B';     // name, limit in seconds, what to do if it dies
constexpr char END = 'E';       // status as a number, text, remedy, milliseconds
constexpr char CHANNEL = 'C';   // number, name, unit, value, meaning
constexpr char QUESTION = 'Q';  // text; the answer is one byte, 'y' for yes
constexpr char DONE = 'D';      // nothing more will come

}  // namespace wire

#endif
