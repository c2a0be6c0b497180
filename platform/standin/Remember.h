// Bounded memories of the stand-ins.
#ifndef STANDIN_REMEMBER_H
#define STANDIN_REMEMBER_H

#include <deque>
#include <mutex>
#include <set>
#include <string>

namespace sim {

// Appends to a list of events and drops the oldest beyond 1,000.
template <class EVENT>
void Remember(std::deque<EVENT>& events, const EVENT& event) {
    events.push_back(event);
    if (events.size() > 1000)
        events.pop_front();
}

// Texts handed out as plain pointers: each stays where it is, and equal texts share one place. A
// caller that goes on inventing texts gets "" after 10,000 of them.
class TextPool {
public:
    const char* Keep(const std::string& text) {
        const std::lock_guard<std::mutex> locker(m_lock);
        if (m_texts.size() >= 10000 && m_texts.count(text) == 0)
            return "";
        return m_texts.insert(text).first->c_str();
    }

private:
    std::mutex m_lock;
    std::set<std::string> m_texts;
};

}  // namespace sim

#endif
