// Files of ours in /tmp, a folder in which anybody may put something in their place.
#ifndef HXD_PUBLICFOLDER_H
#define HXD_PUBLICFOLDER_H

#include "common/File.h"

#include <sys/types.h>
#include <string>

namespace hxd {

// Makes a new file with this mode (before the umask) and opens it for writing. What lies there is
// removed first, whatever it is, and neither followed nor written; a folder with something in it is
// moved aside, to a folder of its own beside it. False where that is not permitted.
bool MakeAnew(const std::string& path, mode_t mode, HXDCTRL::File& file);

// Frees the path of a file that is there to stay: what is not a regular file goes as above, a
// regular one stays. True when something was removed.
bool RemoveUnlessRegular(const std::string& path);

}  // namespace hxd

#endif
