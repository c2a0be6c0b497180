// User-mode emulation of ARM waits for a process descriptor but cannot make one. Qt asks for the
// first, concludes that it may rely on both, takes -1 for the id of a process it started, and would
// kill that: every process there is. So in ARM test programs waiting for a descriptor is refused,
// as by the kernels of the panels, and Qt goes the way it goes there.
#ifdef __arm__

#include <dlfcn.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstdarg>

extern "C" __attribute__((visibility("default"))) long syscall(long number, ...) noexcept {
    using Call = long (*)(long, ...);
    static const Call next = reinterpret_cast<Call>(::dlsym(RTLD_NEXT, "syscall"));
    constexpr long WAIT_FOR_DESCRIPTOR = 3;

    long words[6];
    va_list arguments;
    va_start(arguments, number);
    for (long& word : words)
        word = va_arg(arguments, long);
    va_end(arguments);

    if (number == SYS_waitid && words[0] == WAIT_FOR_DESCRIPTOR) {
        errno = EINVAL;
        return -1;
    }
    return next(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}

#endif
