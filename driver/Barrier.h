// The border to the host: no exception crosses it.
#ifndef HXD_BARRIER_H
#define HXD_BARRIER_H

namespace hxd {

// The call's result, or the given one when the call throws.
template <class RESULT, class CALL>
auto NoThrow(RESULT resultOnThrow, CALL call) noexcept -> decltype(call()) {
    try {
        return call();
    } catch (...) {
        return resultOnThrow;
    }
}

}  // namespace hxd

#endif
