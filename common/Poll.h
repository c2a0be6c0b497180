// Waiting for descriptors.
#ifndef HXD_POLL_H
#define HXD_POLL_H

#include <errno.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace hxd {

// As poll(2), but a signal does not end the wait; by the steady clock.
template <std::size_t COUNT>
int PollUntil(pollfd (&watched)[COUNT], std::chrono::steady_clock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                              deadline - std::chrono::steady_clock::now())
                              .count();
        const int ready =
            ::poll(watched, COUNT, static_cast<int>(std::max<decltype(left)>(left, 0)));
        if (ready >= 0 || errno != EINTR)
            return ready;
    }
}

}  // namespace hxd

#endif
