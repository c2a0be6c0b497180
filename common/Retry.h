// System calls that a signal may interrupt.
#ifndef HXD_RETRY_H
#define HXD_RETRY_H

#include <errno.h>

namespace hxd {

// Repeats a call that returns -1 on error for as long as a signal interrupted it.
template <class CALL>
auto RetryInterrupted(CALL call) -> decltype(call()) {
    for (;;) {
        const auto result = call();
        if (result != -1 || errno != EINTR)
            return result;
    }
}

}  // namespace hxd

#endif
