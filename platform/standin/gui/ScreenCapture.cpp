#include "Guarded.h"
#include "gui/PanelScreen.h"
#include "gui/ScreenPicture.h"
#include "olma_gui.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <string>

using sim::PanelState;
using sim::ScreenContent;
using sim::SimPanel;

namespace {

const char* const USER_DIRECTORY_MACRO = "$OLMA_DIR_USER";
const int USER_DIRECTORY_KIND = 8;

// A path with ".." could lead out of the user directory.
bool StaysBelow(const QString& relativePath) {
    return !relativePath.isEmpty() && !relativePath.endsWith(QLatin1Char('/')) &&
           !relativePath.split(QLatin1Char('/')).contains(QLatin1String(".."));
}

int Save(const QImage& picture, const std::string& directory, const QString& relativePath) {
    const QString path = QFile::decodeName(directory.c_str()) + QLatin1Char('/') + relativePath;
    if (!QDir().mkpath(QFileInfo(path).path()))
        return -EACCES;
    return picture.save(path, "BMP") ? 0 : -EIO;
}

int Capture(const std::string& dirMacro, const std::string& relativePath) {
    int result = 0;
    if (SimPanel::Instance().ShallFail("__gui_screen_capture", result))
        return result;
    const QString path = QFile::decodeName(relativePath.c_str());
    if (dirMacro != USER_DIRECTORY_MACRO || !StaysBelow(path))
        return -EINVAL;

    std::string directory;
    ScreenContent content;
    SimPanel::Instance().Change([&](PanelState& state) {
        const auto found = state.directories.find(USER_DIRECTORY_KIND);
        if (found != state.directories.end())
            directory = found->second;
        content = sim::ContentOf(state);
    });
    if (directory.empty())
        return -ENOENT;
    return Save(sim::DrawScreen(content), directory, path);
}

}  // namespace

int __gui_screen_capture(const char* dirMacro, const char* relativePath, int flag, int x, int y,
                         int width, int height) {
    try {
        const sim::Capture request = {
            dirMacro ? dirMacro : "", relativePath ? relativePath : "", flag, x, y, width, height};
        SimPanel::Instance().Change([&](PanelState& state) { sim::Keep(state.captures, request); });
        return Capture(request.dirMacro, request.relativePath);
    } catch (...) {
        return -ENOMEM;
    }
}
