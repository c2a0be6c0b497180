// Owns the texts that platform functions hand out as plain pointers.
#ifndef TEXTSTORE_H
#define TEXTSTORE_H

#include "common/Mutex.h"

#include <cstddef>
#include <list>
#include <string>

namespace sim {

class TextStore {
public:
    // The most recently asked for texts that are kept; an older one loses its place.
    static const std::size_t CAPACITY = 256;

    // The stored copy of text, the same pointer every time while it is kept. Any thread.
    const char* Keep(const std::string& text);

private:
    hxd::Mutex m_lock;
    std::list<std::string> m_texts HXD_GUARDED_BY(m_lock);  // most recently asked for first
};

}  // namespace sim

#endif
