#include "SimPanel.h"

#include <arpa/inet.h>
#include <cstdio>
#include <thread>

namespace sim {

namespace {

Interface MakeInterface(const char* name, const char* address, const char* netmask,
                        const char* gateway, const char* macAddress) {
    Interface interface = {{}, macAddress};
    std::snprintf(interface.record.name, sizeof interface.record.name, "%s", name);
    interface.record.address = ::inet_addr(address);
    interface.record.netmask = ::inet_addr(netmask);
    interface.record.gateway = ::inet_addr(gateway);
    return interface;
}

}  // namespace

PanelState::PanelState()
    : serialNumber("HX24110017"),
      brightness(80),
      lightOn(true),
      interfaces{
          MakeInterface("eth0", "192.168.1.20", "255.255.255.0", "192.168.1.1",
                        "02:48:58:44:00:20"),
          MakeInterface("eth1", "10.0.0.20", "255.255.255.0", "10.0.0.1", "02:48:58:44:00:21")},
      directories{{1, "/usr/olma_app/config"}, {2, "/usr/olma_app"}, {8, "/tmp/olma_user"}},
      storageMounted(false) {
    uarts[0].present = true;
    uarts[0].counters = {7350, 2650, 0, 4200};
    uarts[1].present = true;
}

// Never destroyed: threads of the driver or of the host may outlive main().
SimPanel& SimPanel::instance() {
    static SimPanel* const panel = new SimPanel;
    return *panel;
}

SimPanel::SimPanel() : m_base(std::chrono::steady_clock::now()) {}

void SimPanel::reset() {
    {
        const std::lock_guard<std::mutex> locker(m_lock);
        m_state = PanelState();
    }
    runClock();
}

PanelState SimPanel::state() const {
    const std::lock_guard<std::mutex> locker(m_lock);
    return m_state;
}

void SimPanel::change(const std::function<void(PanelState&)>& edit) {
    const std::lock_guard<std::mutex> locker(m_lock);
    edit(m_state);
}

void SimPanel::fail(const std::string& function, const Failure& failure) {
    const std::lock_guard<std::mutex> locker(m_lock);
    m_state.failures[function] = failure;
}

void SimPanel::mend(const std::string& function) {
    const std::lock_guard<std::mutex> locker(m_lock);
    m_state.failures.erase(function);
}

bool SimPanel::shallFail(const char* function, int& result) {
    Failure failure;
    {
        const std::lock_guard<std::mutex> locker(m_lock);
        const auto found = m_state.failures.find(function);
        if (found == m_state.failures.end())
            return false;
        failure = found->second;
        if (failure.times > 0 && --found->second.times == 0)
            m_state.failures.erase(found);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(failure.delayMs));
    result = failure.result;
    return failure.fails;
}

long long SimPanel::tickLocked() const {
    if (m_bHeld)
        return m_llBaseTick;
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - m_base;
    return m_llBaseTick + static_cast<long long>(elapsed.count() * m_dSpeed);
}

// Moves the clock and settles where it counts from, so that what changes next begins now.
void SimPanel::rebaseLocked(long long stepMs) {
    m_llBaseTick = tickLocked() + stepMs;
    m_base = std::chrono::steady_clock::now();
    m_clockChanged.notify_all();
}

void SimPanel::holdClock() {
    const std::lock_guard<std::mutex> locker(m_lock);
    rebaseLocked(0);
    m_bHeld = true;
}

void SimPanel::advanceClock(long long milliseconds) {
    const std::lock_guard<std::mutex> locker(m_lock);
    rebaseLocked(milliseconds);
}

void SimPanel::runClock(double speed) {
    const std::lock_guard<std::mutex> locker(m_lock);
    rebaseLocked(0);
    m_bHeld = false;
    m_dSpeed = speed;
}

long long SimPanel::tick() const {
    const std::lock_guard<std::mutex> locker(m_lock);
    return tickLocked();
}

void SimPanel::sleep(unsigned int milliseconds) {
    std::unique_lock<std::mutex> locker(m_lock);
    const long long wakeTick = tickLocked() + milliseconds;
    const bool slept = tickLocked() < wakeTick;
    m_nSleepers += slept ? 1 : 0;
    while (tickLocked() < wakeTick) {
        if (m_bHeld) {
            m_clockChanged.wait(locker);
            continue;
        }
        const double leftMs = static_cast<double>(wakeTick - tickLocked()) / m_dSpeed;
        m_clockChanged.wait_for(locker, std::chrono::duration<double, std::milli>(leftMs));
    }
    m_nSleepers -= slept ? 1 : 0;
}

int SimPanel::sleepers() const {
    const std::lock_guard<std::mutex> locker(m_lock);
    return m_nSleepers;
}

}  // namespace sim
