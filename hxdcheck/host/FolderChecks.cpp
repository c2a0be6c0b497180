#include "hxdcheck/host/HostChecks.h"

#include "hxdcheck/panel/Paths.h"
#include "olma_host.h"

namespace {

struct Folder {
    const char* name;
    int kind;
    int option;
    const char* ifEmpty;  // what the driver takes instead
    const char* below;
    PathNeeds::Kind needs;
    const char* usedFor;
};

const Folder FOLDERS[] = {
    {"directory 1", 1, 0, "/usr/olma_app/config", "", PathNeeds::WRITE_FOLDER,
     "settings shared with the GUI (channels 3 to 6)"},
    {"directory 1, settings", 1, 0, "/usr/olma_app/config", "/olma_app_conf.ini",
     PathNeeds::WRITE_FILE, "buzzer and light (channels 3 to 6)"},
    {"directory 2", 2, 0, nullptr, "", PathNeeds::WRITE_FOLDER, "free storage (channel 28)"},
    {"directory 2, time", 2, 1, nullptr, "/config", PathNeeds::WRITE_FOLDER,
     "settings of the time synchronisation (channels 12 to 18)"},
    {"directory 8", 8, 0, nullptr, "", PathNeeds::WRITE_FOLDER, "screenshots"},
};

Finding CheckFolder(const Folder& folder) {
    const char* const directory = Olma_GetDirectory(folder.kind, folder.option);
    std::string path = directory != nullptr ? directory : "";
    if (path.empty() && folder.ifEmpty == nullptr)
        return Wrong(std::string("the platform knows none: ") + folder.usedFor,
                     "Olma_GetDirectory must name one");
    path = (path.empty() ? folder.ifEmpty : path) + folder.below;
    Finding finding = CheckPath({path, folder.needs, Finding::OK, folder.usedFor});
    finding.text = path + " " + finding.text;
    return finding;
}

}  // namespace

void CheckFolders(Findings& findings) {
    findings.Group("The platform's directories");
    for (const Folder& folder : FOLDERS)
        findings.Run(folder.name, [&] { return CheckFolder(folder); });
}
