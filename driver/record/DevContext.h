// The driver's private block of a device: its parameters and the services it owns.
#ifndef HXD_DEVCONTEXT_H
#define HXD_DEVCONTEXT_H

#include "driver/record/OlmaData.h"

#include <memory>

class DevManger;
class DiskInterface;
class NetworkTask;
class NtpCtrl;
class VNCLockProxy;

// Made by InitDevice, released by CleanupDevice, used only by the thread that is inside the device
// object. Each service has its own threads and locks. Field order is fixed
// (driver/Layout.cpp checks it); the members without a meaning only keep their place.
struct DEV_CONTEXT {
    DEV_CONTEXT();
    DEV_CONTEXT(const DEV_CONTEXT&) = delete;
    DEV_CONTEXT& operator=(const DEV_CONTEXT&) = delete;
    ~DEV_CONTEXT();  // releases the services: storage, network, lock, time, registry

    CArray<int, int> m_arrDevParam;  // [0] device address, [1] communication wait time (ms)
    double m_dWork2;
    int m_nWork3;
    int m_nWork4;
    int m_nWork5;
    int m_nWork6;
    int m_nWork7;
    CString m_strWork8;
    int m_nWork9;
    int m_nWork10;
    int m_bRefreshed[2];  // the collection reads every source anew while one of them is 0
    int m_nWork13;
    std::unique_ptr<DevManger> m_pDevManger;  // null: absent, as for every service
    std::unique_ptr<NtpCtrl> m_pNtpCtrl;
    IRtdb* m_pRtdb;      // not owned
    double m_dCpuUse;    // last CPU use, 0..1, stored by the operation "GetCpuUse"
    double m_dMemAvail;  // last available memory in MiB, stored by "GetMemUse"
    std::unique_ptr<VNCLockProxy> m_pVncLock;
    std::unique_ptr<NetworkTask> m_pNetworkTask;
    std::unique_ptr<DiskInterface> m_pDisk;
    bool m_bDiskReady;        // result of the storage manager's init()
    bool m_bDiskInitPending;  // the next collection initialises the storage manager
};

// A device that is only created, or was cleaned up, has no context, and one whose start failed may
// lack services. Commands and channel writes know of that only through these two functions: what
// needs a missing service gives 0 once its arguments have been counted, everything else works.

// The device's service, or null.
template <class SERVICE>
SERVICE* ServiceOf(const OLMA_DATA& device, std::unique_ptr<SERVICE> DEV_CONTEXT::*service) {
    return device.m_pContext != nullptr ? (device.m_pContext->*service).get() : nullptr;
}

// Makes the next collection read every source anew, which a device's first one does anyway.
inline void ExpireValues(const OLMA_DATA& device) {
    if (device.m_pContext != nullptr)
        device.m_pContext->m_bRefreshed[0] = 0;
}

#endif
