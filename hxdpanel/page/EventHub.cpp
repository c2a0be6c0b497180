#include "hxdpanel/page/EventHub.h"

#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/page/HttpServer.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <ctime>

namespace page {

namespace {

std::string NameOfRun() {
    return std::to_string(std::time(nullptr)) + "." + std::to_string(::getpid());
}

std::string Unnumbered(const EventHub::Event& event) {
    return std::string("event: ") + event.first + "\ndata: " + JsonLine(event.second) + "\n\n";
}

}  // namespace

// Its members are the hub's, under the hub's lock.
class EventHub::Listener : public Stream {
public:
    explicit Listener(EventHub& hub) : m_hub(hub) {}
    ~Listener() override { m_hub.Leave(*this); }
    bool Read(std::string& more) override { return m_hub.Read(*this, more); }

    std::string waiting;
    bool isNew = true;  // to be told everything; until then nothing else

private:
    EventHub& m_hub;
};

EventHub::EventHub() : m_strRun(NameOfRun()) {}

std::string EventHub::Line(const Event& event) {
    return "id: " + m_strRun + "-" + std::to_string(m_ullNewest) + "\n" + Unnumbered(event);
}

void EventHub::Queue(Listener& listener, const std::string& text) {
    if (listener.isNew)
        return;
    listener.waiting += text;
    if (listener.waiting.size() <= MAX_QUEUED)
        return;
    listener.waiting = std::string();
    listener.isNew = true;
}

void EventHub::Remember(const std::string& text) {
    m_remembered.push_back({m_ullNewest, text});
    m_nRememberedBytes += text.size();
    while (m_remembered.size() > MAX_REMEMBERED || m_nRememberedBytes > MAX_REMEMBERED_BYTES) {
        m_nRememberedBytes -= m_remembered.front().text.size();
        m_remembered.pop_front();
    }
}

void EventHub::Publish(const char* name, const Json& content) {
    const hxd::MutexLock lock(m_lock);
    ++m_ullNewest;
    const std::string text = Line({name, content});
    Remember(text);
    for (Listener* listener : m_listeners)
        Queue(*listener, text);
    m_changed.notify_all();
}

void EventHub::PublishEverything(const std::vector<Event>& events) {
    const hxd::MutexLock lock(m_lock);
    std::string text;
    for (const Event& event : events)
        text += Line(event);
    for (Listener* listener : m_listeners) {
        if (!listener->isNew)
            continue;
        listener->isNew = false;
        listener->waiting += text;
    }
    m_changed.notify_all();
}

void EventHub::PublishNothing() {
    const hxd::MutexLock lock(m_lock);
    for (Listener* listener : m_listeners)
        Queue(*listener, ":\n\n");
    m_changed.notify_all();
}

bool EventHub::HasListeners() const {
    const hxd::MutexLock lock(m_lock);
    return !m_listeners.empty();
}

bool EventHub::HasNewListeners() const {
    const hxd::MutexLock lock(m_lock);
    return std::any_of(m_listeners.begin(), m_listeners.end(),
                       [](const Listener* listener) { return listener->isNew; });
}

// True when all that the listener has missed is remembered.
bool EventHub::Resume(Listener& listener, const std::string& lastId) {
    const std::string run = m_strRun + "-";
    long long last = 0;
    const long long newest = static_cast<long long>(m_ullNewest);
    if (lastId.compare(0, run.size(), run) != 0 ||
        !ParseWhole(lastId.substr(run.size()), 0, newest, last))
        return false;
    const bool isComplete =
        last == newest ||
        (!m_remembered.empty() && static_cast<long long>(m_remembered.front().number) <= last + 1);
    for (const Remembered& event : m_remembered) {
        if (isComplete && static_cast<long long>(event.number) > last)
            listener.waiting += event.text;
    }
    return isComplete;
}

std::unique_ptr<Stream> EventHub::Listen(const std::string& lastId, const Event& first) {
    std::unique_ptr<Listener> listener = std::make_unique<Listener>(*this);
    listener->waiting = Unnumbered(first);
    const hxd::MutexLock lock(m_lock);
    if (m_listeners.size() >= MAX_LISTENERS || m_bClosed)
        return nullptr;
    listener->isNew = !Resume(*listener, lastId);
    m_listeners.push_back(listener.get());
    return listener;
}

void EventHub::Leave(Listener& listener) {
    const hxd::MutexLock lock(m_lock);
    m_listeners.remove(&listener);
}

bool EventHub::Read(Listener& listener, std::string& more) {
    hxd::MutexLock lock(m_lock);
    while (!m_bClosed && listener.waiting.empty())
        lock.Wait(m_changed);
    more.clear();
    more.swap(listener.waiting);
    return !m_bClosed;
}

void EventHub::Close() {
    const hxd::MutexLock lock(m_lock);
    m_bClosed = true;
    m_changed.notify_all();
}

}  // namespace page
