#include "hal/TextStore.h"

#include <algorithm>

const char* sim::TextStore::Keep(const std::string& text) {
    const hxd::MutexLock guard(m_lock);
    const auto found = std::find(m_texts.begin(), m_texts.end(), text);
    if (found != m_texts.end()) {
        m_texts.splice(m_texts.begin(), m_texts, found);
    } else {
        m_texts.push_front(text);
        if (m_texts.size() > CAPACITY)
            m_texts.pop_back();
    }
    return m_texts.front().c_str();
}
