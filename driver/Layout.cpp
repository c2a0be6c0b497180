// The records' layout on the panel, checked at compile time for targets with 32-bit pointers.
// Offsets are written in terms of the host's own text and array types, whose size is its business.
#include "driver/record/DevContext.h"
#include "driver/record/OlmaData.h"

#include <cstddef>

#if __SIZEOF_POINTER__ == 4

namespace {

constexpr std::size_t TEXT = sizeof(CString);
constexpr std::size_t ARRAY = sizeof(CArray<int, int>);
constexpr std::size_t Aligned(std::size_t offset) {
    return (offset + alignof(double) - 1) / alignof(double) * alignof(double);
}

}  // namespace

// unique_ptr makes DEV_CONTEXT a type for which offsetof is only conditionally supported; the
// compilers in use support it.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

#define AT(type, member, offset) \
    static_assert(offsetof(type, member) == (offset), #member " has moved")

static_assert(TEXT % 4 == 0 && ARRAY % 4 == 0, "the layout below counts in words");
static_assert(sizeof(CArray<double, double>) == ARRAY && sizeof(CStringArray) == ARRAY,
              "the host's arrays have one size");

AT(OLMA_DATA, m_strDevName, 0);
AT(OLMA_DATA, m_strDevAux, TEXT);
AT(OLMA_DATA, m_nReserved, 2 * TEXT);
AT(OLMA_DATA, m_pArchive, 2 * TEXT + 4);
AT(OLMA_DATA, m_pContext, 2 * TEXT + 8);
AT(OLMA_DATA, m_nCommType, 2 * TEXT + 12);
AT(OLMA_DATA, m_pComm, 2 * TEXT + 16);
AT(OLMA_DATA, m_pParamHost, 2 * TEXT + 20);
AT(OLMA_DATA, m_nReserved2, 2 * TEXT + 24);
AT(OLMA_DATA, m_pfnSetParamValue, 2 * TEXT + 28);
AT(OLMA_DATA, m_pfnGetParamValue, 2 * TEXT + 32);
AT(OLMA_DATA, m_pfnGetParamType, 2 * TEXT + 36);
AT(OLMA_DATA, m_pRtdb, 2 * TEXT + 40);
AT(OLMA_DATA, m_nChannelCount, 2 * TEXT + 44);
AT(OLMA_DATA, m_arrChannelFlag, 2 * TEXT + 48);
AT(OLMA_DATA, m_arrValue, 2 * TEXT + 48 + ARRAY);
AT(OLMA_DATA, m_arrStrValue, 2 * TEXT + 48 + 2 * ARRAY);
static_assert(sizeof(OLMA_DATA) == 2 * TEXT + 48 + 3 * ARRAY, "OLMA_DATA has grown");

AT(DEV_CONTEXT, m_arrDevParam, 0);
constexpr std::size_t WORK2 = Aligned(ARRAY);
AT(DEV_CONTEXT, m_dWork2, WORK2);
AT(DEV_CONTEXT, m_nWork3, WORK2 + 8);
AT(DEV_CONTEXT, m_nWork4, WORK2 + 12);
AT(DEV_CONTEXT, m_nWork5, WORK2 + 16);
AT(DEV_CONTEXT, m_nWork6, WORK2 + 20);
AT(DEV_CONTEXT, m_nWork7, WORK2 + 24);
AT(DEV_CONTEXT, m_strWork8, WORK2 + 28);
AT(DEV_CONTEXT, m_nWork9, WORK2 + 28 + TEXT);
AT(DEV_CONTEXT, m_nWork10, WORK2 + 32 + TEXT);
AT(DEV_CONTEXT, m_bRefreshed, WORK2 + 36 + TEXT);
AT(DEV_CONTEXT, m_nWork13, WORK2 + 44 + TEXT);
AT(DEV_CONTEXT, m_pDevManger, WORK2 + 48 + TEXT);
AT(DEV_CONTEXT, m_pNtpCtrl, WORK2 + 52 + TEXT);
AT(DEV_CONTEXT, m_pRtdb, WORK2 + 56 + TEXT);
constexpr std::size_t CPU_USE = Aligned(WORK2 + 60 + TEXT);
AT(DEV_CONTEXT, m_dCpuUse, CPU_USE);
AT(DEV_CONTEXT, m_dMemAvail, CPU_USE + 8);
AT(DEV_CONTEXT, m_pVncLock, CPU_USE + 16);
AT(DEV_CONTEXT, m_pNetworkTask, CPU_USE + 20);
AT(DEV_CONTEXT, m_pDisk, CPU_USE + 24);
AT(DEV_CONTEXT, m_bDiskReady, CPU_USE + 28);
AT(DEV_CONTEXT, m_bDiskInitPending, CPU_USE + 29);
static_assert(sizeof(DEV_CONTEXT) == Aligned(CPU_USE + 30), "DEV_CONTEXT has grown");

#endif
