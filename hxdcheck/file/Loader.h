// Finds libraries as the system's loader does, and follows what each of them needs in turn.
#ifndef HXDCHECK_LOADER_H
#define HXDCHECK_LOADER_H

#include "hxdcheck/file/ElfFile.h"

#include <map>
#include <string>
#include <vector>

// A library that is needed and not there.
struct Missing {
    std::string name;
    std::string neededBy;
    std::string unfit;  // a file of this name that is for another processor, or unreadable; or ""
};

// Programs and libraries with everything that they need.
class LoadedSet {
public:
    void Add(const ElfFile& file);  // the loader's search begins with the first file

    const std::vector<ElfFile>& Files() const { return m_files; }
    const std::vector<Missing>& MissingLibraries() const { return m_missing; }

    // "GLIBCXX_3.4.30 of libstdc++.so.6, for libx.so", for each version that is not offered.
    std::vector<std::string> MissingVersions() const;
    // What the file wants and no file of the set has.
    std::vector<std::string> MissingFunctions(const ElfFile& file) const;

private:
    void Follow(std::size_t index);
    bool Load(const std::string& name, const std::string& searchPath, std::string& unfit);

    std::vector<ElfFile> m_files;
    std::map<std::string, std::size_t> m_byName;  // index in m_files
    std::vector<Missing> m_missing;
};

#endif
