// The border to the host: no exception crosses it.
#ifndef HXD_BARRIER_H
#define HXD_BARRIER_H

#include <exception>

namespace hxd {

// The call's result, or the given one when the call throws. What passes is the end of the thread
// itself (pthread_exit or a cancellation in a host callback): whoever stops that aborts the
// process. (So would an exception of another language; no such host is known.)
template <class RESULT, class CALL>
auto NoThrow(RESULT resultOnThrow, CALL call) -> decltype(call()) {
    try {
        return call();
    } catch (...) {
        if (std::current_exception() == nullptr)
            throw;  // no exception, but such an end
        return resultOnThrow;
    }
}

}  // namespace hxd

#endif
