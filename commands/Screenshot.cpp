#include "commands/Screenshot.h"

#include "commands/PictureFolder.h"
#include "common/File.h"
#include "common/Numbers.h"
#include "driver/record/Call.h"
#include "olma_gui.h"
#include "olma_host.h"

#include <errno.h>
#include <strings.h>
#include <QFile>
#include <QImage>
#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

constexpr const char* USER_MACRO = "$OLMA_DIR_USR";      // in paths that scripts name
constexpr const char* CAPTURE_MACRO = "$OLMA_DIR_USER";  // what the GUI calls its directory
constexpr int USER_DIRECTORY = 8;                        // the same, for Olma_GetDirectory
constexpr const char* USER_ROOT = "/storage/user_dir/";
constexpr const char* USB_ROOT = "/media/usb0/";

struct Region {
    bool given = false;
    int x1 = 0;
    int y1 = 0;
    int x2 = 0;
    int y2 = 0;
};

struct ScreenshotRequest {
    CString path;
    Region region;
};

int ReadPixel(const Call& call, std::size_t index) {
    double value = 0.0;
    call.Read(index, value);
    return hxd::ToInt(value);
}

// One argument: the whole screen. Two to five: a rectangle; only with all five are x2 and y2 taken,
// so two to four give one that ends at (0, 0). A rectangle of no width and no height is the whole
// screen, one of negative sides saves nothing. The host sees the reads in this order.
ScreenshotRequest ReadRequest(const Call& call) {
    ScreenshotRequest request;
    call.Read(0, request.path);
    request.region.given = call.Count() > 1;
    if (call.Count() > 1)
        request.region.x1 = ReadPixel(call, 1);
    if (call.Count() > 2)
        request.region.y1 = ReadPixel(call, 2);
    if (call.Count() == 5) {
        request.region.x2 = ReadPixel(call, 3);
        request.region.y2 = ReadPixel(call, 4);
    }
    return request;
}

std::vector<std::string> SplitPath(const std::string& path) {
    std::vector<std::string> components;
    std::size_t start = 0;
    for (std::size_t slash = path.find('/'); slash != std::string::npos;
         slash = path.find('/', start)) {
        components.push_back(path.substr(start, slash - start));
        start = slash + 1;
    }
    components.push_back(path.substr(start));
    return components;
}

void MakeDirectory(const std::string& directory) {
    // The result is not needed: what counts is whether the directory is there afterwards.
    const std::string command = "mkdir -p " + panel_actions::ShellWord(directory);
    const int ignored = std::system(command.c_str());
    static_cast<void>(ignored);
}

// Makes it too, unless what is there of the way is a link that must not be followed.
bool OpenFolder(const panel_actions::ScreenshotTarget& target, PictureFolder& folder) {
    const FolderOwner owner = target.root == USER_ROOT ? FolderOwner::PANEL : FolderOwner::STRANGER;
    if (!folder.Open(target.root, target.subDirectory, owner) && errno != ENOENT)
        return false;
    MakeDirectory(target.root + target.subDirectory);
    return folder.Open(target.root, target.subDirectory, owner);
}

int Difference(int to, int from) {
    return static_cast<int>(static_cast<unsigned>(to) - static_cast<unsigned>(from));
}

// A larger picture would take all the memory of a small panel.
constexpr int MAX_SIDE = 32767;
constexpr long long MAX_PIXELS = 16 * 1024 * 1024;

bool FitsIntoMemory(const Region& region) {
    const long long width = static_cast<long long>(region.x2) - region.x1;
    const long long height = static_cast<long long>(region.y2) - region.y1;
    return std::abs(width) <= MAX_SIDE && std::abs(height) <= MAX_SIDE &&
           width * height <= MAX_PIXELS;
}

// Where a rectangle of at most MAX_SIDE begins further out, nothing of the screen is in it, nor
// when it begins here; so the numbers stay small enough for the image to add them up.
int NearScreen(int coordinate) {
    return std::min(std::max(coordinate, -MAX_SIDE), MAX_SIDE);
}

void Capture(const panel_actions::ScreenshotTarget& target, const Region& region,
             const PictureFolder& folder) {
    const std::string relativePath = target.subDirectory + target.fileName;
    const int width = Difference(region.x2, region.x1);
    const int height = Difference(region.y2, region.y1);
    __gui_screen_capture(CAPTURE_MACRO, relativePath.c_str(), 1, region.x1, region.y1, width,
                         height);

    if (!FitsIntoMemory(region))
        return;
    const std::string captured =
        std::string(Olma_GetDirectory(USER_DIRECTORY)) + "/" + relativePath;
    QImage image;
    if (HXDCTRL::File::is_file_exist(captured))  // reading a pipe would wait for its other end
        image.load(QFile::decodeName(captured.c_str()), "BMP");
    if (region.given)
        image = image.copy(QRect(NearScreen(region.x1), NearScreen(region.y1), width, height));
    folder.Save(image, target.fileName);
}

int Save(const Call& call) {
    const ScreenshotRequest request = ReadRequest(call);
    const auto target = panel_actions::ParseScreenshotPath(static_cast<const char*>(request.path));
    PictureFolder folder;
    if (target && OpenFolder(*target, folder))
        Capture(*target, request.region, folder);
    return RESULT_DONE;
}

}  // namespace

int panel_actions::SaveScreen(OLMA_DATA& data, const CString& args) {
    return RunCall(data, COMMAND_SAVE_SCREEN, args, Save);
}

hxd::Maybe<panel_actions::ScreenshotTarget> panel_actions::ParseScreenshotPath(
    const std::string& path) {
    const std::vector<std::string> components = SplitPath(path);
    const bool macro = components.front().find('$') != std::string::npos;
    if (macro && ::strcasecmp(components.front().c_str(), USER_MACRO) != 0)
        return {};
    if (std::find(components.begin(), components.end(), "..") != components.end())
        return {};
    ScreenshotTarget target;
    target.root = macro ? USER_ROOT : USB_ROOT;
    for (std::size_t i = macro ? 1 : 0; i + 1 < components.size(); ++i)
        target.subDirectory += components[i] + "/";
    target.fileName = components.back();
    return target;
}

std::string panel_actions::ShellWord(const std::string& text) {
    const char* const harmless =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._/-";
    if (text.find_first_not_of(harmless) == std::string::npos)
        return text;
    std::string quoted = "'";
    for (const char character : text)
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return quoted + "'";
}
