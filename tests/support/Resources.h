// What this process uses of the system.
#ifndef HXD_TESTS_RESOURCES_H
#define HXD_TESTS_RESOURCES_H

#include <dirent.h>
#include <fstream>
#include <string>

struct Resources {
    long memoryKib, descriptors, threads;

    static Resources Used() {
        Resources used = {0, 0, 0};
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            if (word == "VmRSS:")
                status >> used.memoryKib;
            else if (word == "Threads:")
                status >> used.threads;
        }
        DIR* const directory = ::opendir("/proc/self/fd");
        while (::readdir(directory) != nullptr)
            ++used.descriptors;
        ::closedir(directory);
        return used;
    }
};

#endif
