// A value, or none: what a function returns that may find nothing.
#ifndef HXD_MAYBE_H
#define HXD_MAYBE_H

#include <utility>

namespace hxd {

// VALUE can be made without arguments. Without a value, -> and * give one made so.
template <class VALUE>
class Maybe {
public:
    Maybe() = default;  // none
    Maybe(VALUE value) : m_value(std::move(value)), m_bKnown(true) {}

    explicit operator bool() const { return m_bKnown; }
    const VALUE& operator*() const { return m_value; }
    const VALUE* operator->() const { return &m_value; }

private:
    VALUE m_value = VALUE();
    bool m_bKnown = false;
};

}  // namespace hxd

#endif
