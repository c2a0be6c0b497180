// Entry of every test program. The driver reboots, sets clocks and mounts, so no case runs outside
// the sandbox; the names of the cases are told anywhere.
#include <gtest/gtest.h>

#include <QCoreApplication>

#include <unistd.h>

#include <cstdio>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const bool inside = access("/run/hxd-panel", F_OK) == 0;
    if (!inside && !::testing::GTEST_FLAG(list_tests)) {
        std::fprintf(stderr, "%s runs in the sandbox only: hxdpanel/in-panel %s\n", argv[0],
                     argv[0]);
        return 1;
    }
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
