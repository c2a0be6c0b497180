#include "hxdcheck/file/Loader.h"

#include "common/File.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace {

const char* const DEFAULT_FOLDERS =
    "/lib/" HXD_LIBRARY_ARCHITECTURE ":/usr/lib/" HXD_LIBRARY_ARCHITECTURE
    ":/lib:/usr/lib:/lib64:/usr/lib64";

void AddFolders(const std::string& folders, const std::string& name,
                std::vector<std::string>& paths) {
    std::istringstream stream(folders);
    for (std::string folder; std::getline(stream, folder, ':');)
        paths.push_back((folder.empty() ? "." : folder) + "/" + name);
}

// Paths for a name in /etc/ld.so.cache. The layout, behind its mark: the number of entries, six
// more words, then the entries of six words, the second and third of which are the offsets of name
// and path from the mark.
void AddCached(const std::string& name, std::vector<std::string>& paths) {
    static const std::string cache = [] {
        HXDCTRL::File file;
        const std::string content =
            file.open("/etc/ld.so.cache", O_RDONLY) ? file.readAll() : std::string();
        const std::size_t mark = content.find("glibc-ld.so.cache1.1");
        return mark == std::string::npos ? std::string() : content.substr(mark);
    }();
    constexpr std::size_t FIRST_ENTRY = 48;
    constexpr std::size_t ENTRY_SIZE = 24;
    const auto word = [](std::size_t offset) {
        std::uint32_t value = 0;
        if (offset + sizeof value <= cache.size())
            std::memcpy(&value, cache.data() + offset, sizeof value);
        return value;
    };
    const auto text = [](std::size_t offset) {
        return offset < cache.size() ? std::string(cache.c_str() + offset) : std::string();
    };
    const std::size_t count = word(20);
    for (std::size_t i = 0; i < count && FIRST_ENTRY + i * ENTRY_SIZE < cache.size(); ++i) {
        const std::size_t entry = FIRST_ENTRY + i * ENTRY_SIZE;
        if (text(word(entry + 4)) == name)
            paths.push_back(text(word(entry + 8)));
    }
}

// In the loader's order; $ORIGIN is not used by the platform's libraries.
std::vector<std::string> Candidates(const std::string& name, const std::string& searchPath) {
    if (name.find('/') != std::string::npos)
        return {name};
    std::vector<std::string> paths;
    const char* const environment = std::getenv("LD_LIBRARY_PATH");
    if (environment != nullptr && *environment != '\0')
        AddFolders(environment, name, paths);
    AddFolders(searchPath, name, paths);
    AddCached(name, paths);
    AddFolders(DEFAULT_FOLDERS, name, paths);
    return paths;
}

std::string BaseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

void LoadedSet::Add(const ElfFile& file) {
    std::size_t next = m_files.size();
    m_byName[file.soname.empty() ? BaseName(file.path) : file.soname] = next;
    m_files.push_back(file);
    for (; next < m_files.size(); ++next)
        Follow(next);
}

void LoadedSet::Follow(std::size_t index) {
    const std::vector<std::string> needed = m_files[index].needed;  // copies: the list grows
    const std::string searchPath = m_files[index].searchPath;
    const std::string neededBy = BaseName(m_files[index].path);
    for (const std::string& name : needed) {
        std::string unfit;
        if (m_byName.count(name) != 0 || Load(name, searchPath, unfit))
            continue;
        const bool told = std::any_of(m_missing.begin(), m_missing.end(),
                                      [&](const Missing& other) { return other.name == name; });
        if (!told)
            m_missing.push_back({name, neededBy, unfit});
    }
}

bool LoadedSet::Load(const std::string& name, const std::string& searchPath, std::string& unfit) {
    for (const std::string& path : Candidates(name, searchPath)) {
        ElfFile file;
        std::string error;
        if (::access(path.c_str(), F_OK) != 0)
            continue;
        if (file.Read(path, error) && file.SameProcessor(m_files[0])) {
            m_byName[name] = m_files.size();
            m_files.push_back(file);
            return true;
        }
        if (unfit.empty())
            unfit.append(path)
                .append(file.machine != 0 ? " is for " : " ")
                .append(file.machine != 0 ? file.Processor() : error);
    }
    return false;
}

std::vector<std::string> LoadedSet::MissingVersions() const {
    std::vector<std::string> missing;
    for (const ElfFile& file : m_files) {
        for (const ElfFile::VersionNeed& need : file.versionNeeds) {
            const auto found = m_byName.find(need.library);
            if (found == m_byName.end())
                continue;
            // The loader accepts a library that has no versions at all.
            const std::set<std::string>& offered = m_files[found->second].versions;
            if (!offered.empty() && offered.count(need.version) == 0)
                missing.push_back(need.version + " of " + need.library + ", for " +
                                  BaseName(file.path));
        }
    }
    return missing;
}

std::vector<std::string> LoadedSet::MissingFunctions(const ElfFile& file) const {
    std::vector<std::string> missing;
    for (const std::string& name : file.undefined) {
        bool found = false;
        for (std::size_t i = 0; i < m_files.size() && !found; ++i)
            found = m_files[i].defined.count(name) != 0;
        if (!found)
            missing.push_back(name);
    }
    return missing;
}
