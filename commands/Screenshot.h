// The command that saves a picture of the screen. Called by the dispatcher under g_halMutex.
#ifndef HXD_SCREENSHOT_H
#define HXD_SCREENSHOT_H

#include "common/Maybe.h"
#include "driver/record/OlmaData.h"

#include <string>

namespace panel_actions {

// Saves a picture of the screen, or of a rectangle of it. args: name of the text that holds the
// path, then optionally x1, y1, x2, y2. Always 0: what went wrong shows only in the missing file.
// On the USB stick no link is followed. A file of that name is replaced as a whole.
int SaveScreen(OLMA_DATA& data, const CString& args);

// Where a screenshot goes. The path's first component is the macro "$OLMA_DIR_USR" for the user
// data area; paths without a macro go to the USB stick.
struct ScreenshotTarget {
    std::string root;          // ends with "/"
    std::string subDirectory;  // empty or ends with "/"
    std::string fileName;
};
// None for a macro that nobody knows, and for a path with "..", which could lead anywhere.
hxd::Maybe<ScreenshotTarget> ParseScreenshotPath(const std::string& path);

// A directory name for a shell command: as it stands while it is harmless, otherwise in single
// quotes, so that nothing of it ever runs.
std::string ShellWord(const std::string& text);

}  // namespace panel_actions

#endif
