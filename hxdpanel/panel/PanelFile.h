// Files of the panel that stand for hardware, below /proc, /sys and /dev. Those below /proc are
// mounts of their own and are rewritten in place. Without the sandbox they are the machine's, and
// nothing is changed.
#ifndef HXDPANEL_PANELFILE_H
#define HXDPANEL_PANELFILE_H

#include <string>
#include <vector>

namespace panelfile {

bool Read(const std::string& path, std::string& text);
// In place, so that a reader sees the old or the new text, or for a moment one with the other's
// end.
bool Write(const std::string& path, const std::string& text);
bool Remove(const std::string& path);

// Paths of the files of this name below a folder.
std::vector<std::string> Find(const std::string& folder, const std::string& name);

}  // namespace panelfile

#endif
