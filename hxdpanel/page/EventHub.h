// Events on their way to whoever listens. Nobody who publishes ever waits for a listener: each has
// a queue of its own, and one that does not keep up loses it and is told everything anew.
#ifndef HXDPANEL_EVENTHUB_H
#define HXDPANEL_EVENTHUB_H

#include "common/Mutex.h"
#include "hxdpanel/report/Json.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace page {

class Stream;

class EventHub {
public:
    static constexpr std::size_t MAX_LISTENERS = 16;
    static constexpr std::size_t MAX_QUEUED = 512 * 1024;  // bytes that wait for one listener
    static constexpr std::size_t MAX_REMEMBERED = 256;     // events for who comes back ...
    static constexpr std::size_t MAX_REMEMBERED_BYTES = 512 * 1024;  // ... and their size

    using Event = std::pair<const char*, Json>;  // name and content

    EventHub();
    EventHub(const EventHub&) = delete;
    EventHub& operator=(const EventHub&) = delete;

    void Publish(const char* name, const Json& content);
    // To those who are to be told everything, after which they get what is published.
    void PublishEverything(const std::vector<Event>& events);
    // Keeps proxies from closing connections, and finds those whose other end has gone.
    void PublishNothing();

    // Somebody listens; ... and has not been told everything yet.
    bool HasListeners() const;
    bool HasNewListeners() const;

    // What a connection to the events is sent: first this event, then all from the one after lastId
    // on if that is remembered. Null when there are too many. The hub outlives the stream.
    std::unique_ptr<Stream> Listen(const std::string& lastId, const Event& first);
    // Ends all streams, those that come later too.
    void Close();

private:
    class Listener;
    struct Remembered {
        unsigned long long number;
        std::string text;
    };

    bool Read(Listener& listener, std::string& more);
    void Leave(Listener& listener);
    std::string Line(const Event& event) HXD_REQUIRES(m_lock);
    static void Queue(Listener& listener, const std::string& text);
    void Remember(const std::string& text) HXD_REQUIRES(m_lock);
    bool Resume(Listener& listener, const std::string& lastId) HXD_REQUIRES(m_lock);

    const std::string m_strRun;  // begins each event's id: those of another run are not ours

    mutable hxd::Mutex m_lock;
    std::condition_variable m_changed;
    bool m_bClosed HXD_GUARDED_BY(m_lock) = false;
    unsigned long long m_ullNewest HXD_GUARDED_BY(m_lock) = 0;
    std::deque<Remembered> m_remembered HXD_GUARDED_BY(m_lock);
    std::size_t m_nRememberedBytes HXD_GUARDED_BY(m_lock) = 0;
    std::list<Listener*> m_listeners HXD_GUARDED_BY(m_lock);
};

}  // namespace page

#endif
