// What may run outside the sandbox.
#ifndef HXDPANEL_HARMLESSCOMMAND_H
#define HXDPANEL_HARMLESSCOMMAND_H

#include <string>

namespace guard {

// True for the shell commands that guarded mode runs: find and mkdir -p with plain or single-quoted
// words. A list of what is allowed, so that a command nobody has thought of is refused.
bool IsHarmless(const std::string& command);

}  // namespace guard

#endif
