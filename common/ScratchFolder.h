// A private folder for the time of one change to a file.
#ifndef HXD_SCRATCHFOLDER_H
#define HXD_SCRATCHFOLDER_H

#include "common/File.h"

#include <string>

namespace hxd {

// Lies beside the file, so that what is made in it can be renamed over the file; only its owner may
// enter it. The destructor removes it with all that is in it. What killed processes have left is
// removed by the next one: a living owner holds a lock on its folder, which no process number that
// is used again and no view into another container can pretend.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string& file);
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    // Without a slash at its end; does not exist if the folder could not be made.
    const std::string& Path() const { return m_strPath; }

private:
    std::string m_strPath;
    HXDCTRL::File m_folder;
};

}  // namespace hxd

#endif
