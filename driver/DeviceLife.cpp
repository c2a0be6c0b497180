// The device's services: started by InitDevice, released by CleanupDevice.
#include "commands/VNCLockProxy.h"
#include "driver/Barrier.h"
#include "driver/CDevCtrl.h"
#include "driver/DeviceParameters.h"
#include "driver/Operation.h"
#include "driver/record/COwnerArchive.h"
#include "driver/record/DevContext.h"
#include "network/NetworkTask.h"
#include "ntp/NtpCtrl.h"
#include "storage/DiskManager.h"
#include "sysinfo/DevManger.h"

#include <new>

std::atomic<IRtdb*> CDevBas::m_pRtdb{nullptr};

DEV_CONTEXT::DEV_CONTEXT()
    : m_dWork2(-1.0),
      m_nWork3(0),
      m_nWork4(0),
      m_nWork5(0),
      m_nWork6(0),
      m_nWork7(1),
      m_nWork9(0),
      m_nWork10(0),
      m_bRefreshed(),
      m_nWork13(0),
      m_pRtdb(nullptr),
      m_dCpuUse(0.0),
      m_dMemAvail(0.0),
      m_bDiskReady(false),
      m_bDiskInitPending(false) {}

DEV_CONTEXT::~DEV_CONTEXT() {
    m_arrDevParam.RemoveAll();
    m_pDisk.reset();
    m_pNetworkTask.reset();
    m_pVncLock.reset();
    m_pNtpCtrl.reset();
    m_pDevManger.reset();
}

namespace {

constexpr DEVSYSOPEAR OPERATIONS[] = {SYS_OPEAR_CPU_USE,      SYS_OPEAR_MEM_USE,
                                      SYS_OPEAR_APP_LOG,      SYS_OPEAR_APP_EXECP_LOG,
                                      SYS_OPEAR_APP_DEAL_LOG, SYS_OPEAR_SYS_EXECP_LOG};

void StartServices(OLMA_DATA& record) {
    DEV_CONTEXT& context = *record.m_pContext;
    context.m_pDevManger = std::make_unique<DevManger>();
    context.m_pNtpCtrl = std::make_unique<NtpCtrl>();
    context.m_pVncLock = MakeVncLockProxy();
    for (const DEVSYSOPEAR operation : OPERATIONS)
        context.m_pDevManger->DevRegiter(operation);
    context.m_pRtdb = record.m_pRtdb;
    // A plug-in that was just asked for its locks may have collected with what there was.
    context.m_bRefreshed[0] = context.m_bRefreshed[1] = 0;
    CDevBas::ReadDeviceParameters(record);
    context.m_pNetworkTask = std::make_unique<NetworkTask>();
    context.m_pNetworkTask->start();
    context.m_pDisk = MakeDiskManager();
    context.m_bDiskInitPending = true;
}

void ReleaseArchive(OLMA_DATA& record) {
    delete record.m_pArchive;
    record.m_pArchive = nullptr;
}

void ReleaseServices(OLMA_DATA& record) {
    DEV_CONTEXT* const context = record.m_pContext;
    record.m_pContext = nullptr;
    delete context;
    ReleaseArchive(record);
}

}  // namespace

int CDevCtrl::InitDevice(const unsigned char* blob, int length) {
    if (blob == nullptr || length <= 0 || hxd::Operation::IsPostponed(*this))
        return HOST_BAD_ARGUMENT;
    const hxd::Operation operation(*this);
    if (m_record.m_pArchive != nullptr)
        return HOST_OK;  // a plug-in's call from within the first: a repeated one like any other
    const bool wasStarted = m_record.m_pContext != nullptr;
    const bool completed = hxd::NoThrow(false, [&] {
        StartDevice(blob, length);
        return true;
    });
    // A repeated call changes nothing, also when it finds no memory. After a first one that failed
    // the host cannot tell that nothing was started; every operation copes with that.
    if (completed || wasStarted)
        ReleaseArchive(m_record);
    else
        ReleaseServices(m_record);
    return HOST_OK;
}

// May throw: the caller rolls the failed start back.
void CDevCtrl::StartDevice(const unsigned char* blob, int length) {
    m_record.m_pArchive = new (std::nothrow) COwnerArchive;
    if (m_record.m_pArchive == nullptr)
        return;
    COwnerArchive& archive = *m_record.m_pArchive;
    archive.SvrWrite(blob, length);
    archive.SetPosition(0);
    archive.SvrChangeMode(ARCHIVE_LOAD);
    CDevBas::m_pRtdb = m_record.m_pRtdb;
    if (m_record.m_pContext == nullptr) {
        m_record.m_pContext = new DEV_CONTEXT;
        StartServices(m_record);
    }
}

int CDevCtrl::CleanupDevice() {
    if (hxd::Operation::Postpone(*this, hxd::Operation::CLEANUP))
        return HOST_OK;
    const hxd::Operation operation(*this);
    return hxd::NoThrow(HOST_OK, [this] {
        ReleaseServices(m_record);
        return HOST_OK;
    });
}
