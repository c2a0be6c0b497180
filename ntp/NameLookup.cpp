#include "ntp/NameLookup.h"

#include "common/File.h"
#include "common/Retry.h"
#include "network/ResolverText.h"

#include <netdb.h>
#include <poll.h>
#include <string.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <system_error>
#include <thread>

namespace {

// As many as the workers of eight devices need.
constexpr int MOST_LOOK_UPS = 32;
std::atomic<int> g_lookUps{0};

// Silent name servers take less, unless the resolver's file asks for more. What never ends is the C
// library's own lock: its first look-up keeps it when it finds no memory, and every later one
// waits.
constexpr int LONGEST_MS = 10 * 60 * 1000;

// Of the thread that looks up and of the one that waits for it; released by the last of them.
struct LookUp {
    explicit LookUp(const std::string& wanted)
        : name(wanted), rank(++g_lookUps), doneEvent(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}
    ~LookUp() { --g_lookUps; }
    LookUp(const LookUp&) = delete;
    LookUp& operator=(const LookUp&) = delete;

    const std::string name;
    const int rank;  // among those under way
    const HXDCTRL::File doneEvent;
    // Written before done is set, read after.
    int error = EAI_AGAIN;
    std::vector<sockaddr_in> addresses;
    std::atomic<bool> done{false};
};

int Resolve(const std::string& name, std::vector<sockaddr_in>& addresses) {
    addrinfo hints = {};
    hints.ai_family = AF_INET;
    addrinfo* found = nullptr;
    const int error = ::getaddrinfo(name.c_str(), nullptr, &hints, &found);
    if (error != 0 || found == nullptr)
        return error;
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> list(found, ::freeaddrinfo);
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        sockaddr_in address = {};
        ::memcpy(&address, entry->ai_addr,
                 std::min<std::size_t>(entry->ai_addrlen, sizeof address));
        addresses.push_back(address);
    }
    return error;
}

void Run(const std::shared_ptr<LookUp>& lookUp) {
    try {
        lookUp->error = Resolve(lookUp->name, lookUp->addresses);
    } catch (...) {
        lookUp->error = EAI_MEMORY;
    }
    lookUp->done = true;
    ::eventfd_write(lookUp->doneEvent.Descriptor(), 1);
}

bool Start(const std::shared_ptr<LookUp>& lookUp) {
    try {
        std::thread(Run, lookUp).detach();
        return true;
    } catch (const std::system_error&) {
        return false;  // too many threads just now
    }
}

}  // namespace

int LookUpName(const std::string& name, int stopDescriptor, std::vector<sockaddr_in>& addresses) {
    if (IsDottedAddress(name))
        return Resolve(name, addresses);  // nobody is asked
    const auto lookUp = std::make_shared<LookUp>(name);
    if (lookUp->rank > MOST_LOOK_UPS || !lookUp->doneEvent.IsOpen() || !Start(lookUp))
        return EAI_AGAIN;
    pollfd watched[] = {{lookUp->doneEvent.Descriptor(), POLLIN, 0}, {stopDescriptor, POLLIN, 0}};
    const int ready = hxd::RetryInterrupted([&] { return ::poll(watched, 2, LONGEST_MS); });
    if (!lookUp->done)
        return ready <= 0 ? EAI_AGAIN : LOOK_UP_STOPPED;
    addresses.swap(lookUp->addresses);
    return lookUp->error;
}
