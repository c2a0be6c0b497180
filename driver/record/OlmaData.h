// The device record: everything a driver service knows about its device. Every service function
// takes it by reference; the device object owns it.
#ifndef HXD_OLMADATA_H
#define HXD_OLMADATA_H

#include "host.h"
#include "mfc/CArray.h"
#include "mfc/CString.h"

#include <atomic>

class COwnerArchive;
struct DEV_CONTEXT;
struct OLMA_DATA;

// Access to the host's parameters by name; results are HOST_STATUS codes or the host's own status.
// The pointer is to an int, double or CString as the type says.
using PFN_PARAM_VALUE = int (*)(OLMA_DATA& record, CString name, DATATYPE type, void* value);
using PFN_PARAM_TYPE = int (*)(OLMA_DATA& record, CString name, DATATYPE& type);

// Field order and types are shared with the host: keep them (driver/Layout.cpp checks).
struct OLMA_DATA {
    CString m_strDevName;
    CString m_strDevAux;  // not used
    int m_nReserved;
    COwnerArchive* m_pArchive;  // set only while InitDevice runs
    DEV_CONTEXT* m_pContext;    // null until InitDevice and after CleanupDevice
    int m_nCommType;            // link kind: 0 none, 1 or 2
    ICommunication* m_pComm;    // not owned
    IRtdb* m_pParamHost;        // not owned; used by the parameter functions
    int m_nReserved2;
    PFN_PARAM_VALUE m_pfnSetParamValue;
    PFN_PARAM_VALUE m_pfnGetParamValue;
    PFN_PARAM_TYPE m_pfnGetParamType;
    IRtdb* m_pRtdb;       // not owned; receives the channel values
    int m_nChannelCount;  // the result arrays hold one element more; -1 before the first sizing
    CArray<int, int> m_arrChannelFlag;  // 3: the channel is delivered to the host
    CArray<double, double> m_arrValue;  // element 0: result of the last call
    CStringArray m_arrStrValue;         // indexed like m_arrValue
};

namespace CDevBas {
// The host object of the most recent InitDevice of any device. Kept because the record's layout and
// this pointer belong to the driver's interface; delivery uses the record's own m_pRtdb.
extern std::atomic<IRtdb*> m_pRtdb;
}  // namespace CDevBas

#endif
