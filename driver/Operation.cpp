#include "driver/Operation.h"

#include "host.h"

#include <pthread.h>
#include <algorithm>

namespace {

thread_local hxd::Operation* t_pInnermost = nullptr;

int SwitchCancellation(int state) {
    int before = PTHREAD_CANCEL_ENABLE;
    ::pthread_setcancelstate(state, &before);
    return before;
}

}  // namespace

namespace hxd {

Operation::Operation(IDeviceCtrl& device)
    : m_device(device),
      m_pOuter(t_pInnermost),
      m_nCancelState(SwitchCancellation(PTHREAD_CANCEL_DISABLE)) {
    t_pInnermost = this;
}

Operation::~Operation() {
    t_pInnermost = m_pOuter;
    if (m_eRelease != NONE)
        m_device.CleanupDevice();
    if (m_eRelease == DESTROY)
        delete &m_device;
    SwitchCancellation(m_nCancelState);
}

Operation* Operation::Outermost(const IDeviceCtrl& device) {
    Operation* found = nullptr;
    for (Operation* inner = t_pInnermost; inner != nullptr; inner = inner->m_pOuter) {
        if (&inner->m_device == &device)
            found = inner;
    }
    return found;
}

bool Operation::Postpone(const IDeviceCtrl& device, Release release) {
    Operation* const outermost = Outermost(device);
    if (outermost != nullptr)
        outermost->m_eRelease = std::max(outermost->m_eRelease, release);
    return outermost != nullptr;
}

bool Operation::IsPostponed(const IDeviceCtrl& device) {
    const Operation* const outermost = Outermost(device);
    return outermost != nullptr && outermost->m_eRelease != NONE;
}

HostTurn::HostTurn() {
    if (t_pInnermost != nullptr)
        SwitchCancellation(t_pInnermost->m_nCancelState);
}

HostTurn::~HostTurn() {
    if (t_pInnermost != nullptr)
        SwitchCancellation(PTHREAD_CANCEL_DISABLE);
}

}  // namespace hxd
