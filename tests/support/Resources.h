// What this process uses of the system.
#ifndef HXD_TESTS_RESOURCES_H
#define HXD_TESTS_RESOURCES_H

#include <dirent.h>
#include <malloc.h>

#include <chrono>
#include <climits>
#include <fstream>
#include <string>
#include <thread>

struct Resources {
    long memoryKib, descriptors, threads;

    // Once there are no more threads than these, or seconds later: a thread that has been joined is
    // counted until the kernel is through with it.
    static Resources Used(long threads = LONG_MAX) {
        Resources used = Now();
        for (int tries = 0; used.threads > threads && tries < 200; ++tries) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            used = Now();
        }
        return used;
    }

private:
    // Memory that has been allocated and not freed; what the allocator and the kernel keep besides
    // depends on which thread came when.
    static Resources Now() {
        const struct mallinfo2 heap = ::mallinfo2();
        Resources used = {static_cast<long>((heap.uordblks + heap.hblkhd) / 1024), 0, 0};
        std::ifstream status("/proc/self/status");
        for (std::string word; status >> word;) {
            if (word == "Threads:")
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
