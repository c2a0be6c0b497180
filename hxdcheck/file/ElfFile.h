// What the loader looks at in a program or library: an ELF file, read without its help.
#ifndef HXDCHECK_ELFFILE_H
#define HXDCHECK_ELFFILE_H

#include <set>
#include <string>
#include <vector>

struct ElfFile {
    // A version of another library's functions, "GLIBC_2.34" of "libc.so.6".
    struct VersionNeed {
        std::string library;
        std::string version;
    };

    // False, with the reason in error, when the file is not there or is no ELF file of this byte
    // order with a section table. Whatever the file holds is read within its bounds.
    bool Read(const std::string& file, std::string& error);

    bool SameProcessor(const ElfFile& other) const;
    std::string Processor() const;  // in words

    std::string path;
    std::string version;   // what the driver says of itself; "" in other files
    unsigned machine = 0;  // EM_...
    int bits = 0;
    unsigned flags = 0;
    std::string interpreter;  // the loader that a program asks for; "" for a library
    std::string soname;
    std::string searchPath;  // DT_RUNPATH or DT_RPATH
    std::vector<std::string> needed;
    std::vector<VersionNeed> versionNeeds;
    std::set<std::string> versions;   // defined here
    std::set<std::string> defined;    // functions and objects for others
    std::set<std::string> undefined;  // those that another library has to have
};

#endif
