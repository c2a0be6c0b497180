#include "hxdpanel/panel/SimulatedPanel.h"

#include "SimPanel.h"
#include "hxdpanel/sandbox/GuardedCalls.h"
#include "hxdpanel/sandbox/Sandbox.h"
#include "hxdpanel/sandbox/Setup.h"

#include <ftw.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include <QDir>
#include <QFile>

namespace {

constexpr char MEMORY_FILE[] = "/root/panel-hardware.ini";
constexpr char SETTINGS_FOLDER[] = "/usr/olma_app";

bool RemoveTree(const std::string& path) {
    constexpr int MAX_DESCRIPTORS = 16;
    const auto remove = [](const char* file, const struct stat*, int, FTW*) {
        return std::remove(file);
    };
    return ::nftw(path.c_str(), remove, MAX_DESCRIPTORS, FTW_DEPTH | FTW_PHYS) == 0;
}

// A folder that lasts as long as the object.
class TemporaryFolder {
public:
    TemporaryFolder() {
        if (::mkdtemp(&m_strPath[0]) == nullptr)
            m_strPath.clear();
    }
    ~TemporaryFolder() {
        if (!m_strPath.empty())
            RemoveTree(m_strPath);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return m_strPath; }  // empty: it could not be made

private:
    std::string m_strPath = "/tmp/hxdpanel-XXXXXX";
};

bool MakeFolder(const std::string& path) {
    if (QDir().mkpath(QFile::decodeName(path.c_str())))
        return true;
    std::fprintf(stderr, "hxdpanel: cannot create %s\n", path.c_str());
    return false;
}

// In guarded mode there is no private root: the directories that the platform names go below the
// panel's folder.
bool UseFolder(const std::string& root) {
    const std::pair<int, const char*> directories[] = {
        {1, "/usr/olma_app/config"}, {2, "/usr/olma_app"}, {8, "/tmp/olma_user"}};
    for (const auto& directory : directories) {
        const std::string path = root + directory.second;
        if (!MakeFolder(path))
            return false;
        sim::SimPanel::Instance().Change(
            [&](sim::PanelState& state) { state.directories[directory.first] = path; });
    }
    return MakeFolder(root + "/root");
}

bool SetUpGuarded(const sandbox::Setup& setup, PanelFiles& files) {
    static const TemporaryFolder temporary;  // removed at the end
    files.outside = sandbox::RootFolder(setup);
    files.guardedRoot = files.outside.empty() ? temporary.Path() : files.outside;
    if (files.guardedRoot.empty()) {
        std::perror("hxdpanel: cannot create a folder for the panel's files");
        return false;
    }
    files.memory = files.guardedRoot + MEMORY_FILE;
    return UseFolder(files.guardedRoot);
}

// The launcher passes the full paths on, one a line; relative ones mean nothing in the sandbox.
std::vector<std::string> Folders(const sandbox::Setup& setup) {
    if (!setup.inside.launched)
        return setup.panel.empty() ? std::vector<std::string>() : sandbox::PanelFolders(setup);
    const char* const handedOver = std::getenv("HXD_PANEL_DIR");
    std::istringstream lines(handedOver != nullptr ? handedOver : "");
    std::vector<std::string> folders;
    for (std::string line; std::getline(lines, line);)
        folders.push_back(line);
    return folders;
}

}  // namespace

bool SetUpPanel(const sandbox::Setup& setup, int logLevel, PanelFiles& files) {
    files.panels = Folders(setup);
    files.outside = setup.inside.filesOutside;
    files.memory = MEMORY_FILE;
    std::string error;
    if (!LoadDescription(files, error)) {
        std::fprintf(stderr, "hxdpanel: the panel is not described properly:\n%s", error.c_str());
        return false;
    }
    sim::SimPanel::Instance().Change(
        [&](sim::PanelState& state) { state.echoLogLevel = logLevel; });
    return !guard::Enabled() || SetUpGuarded(setup, files);
}

bool ResetSettings(const PanelFiles& files) {
    return RemoveTree(files.guardedRoot + SETTINGS_FOLDER) && UseFolder(files.guardedRoot);
}

bool LoadDescription(const PanelFiles& files, std::string& error) {
    for (const std::string& folder : files.panels) {
        const std::string ini = folder + "/panel.ini";
        if (::access(ini.c_str(), F_OK) == 0 && !sim::SimPanel::Instance().LoadIni(ini, error))
            return false;
    }
    return true;
}
