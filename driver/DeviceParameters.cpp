#include "driver/DeviceParameters.h"

#include "driver/record/COwnerArchive.h"
#include "driver/record/DevContext.h"

#include <cstdint>

namespace {

constexpr int DEFAULT_DEVICE_ADDRESS = 0;
constexpr int DEFAULT_WAIT_TIME_MS = 200;
constexpr int MAX_PARAMETERS = 1000000;

// The next BYTES bytes as a little-endian number; 0 when there are fewer.
template <std::size_t BYTES>
std::uint32_t ReadNumber(COwnerArchive& archive) {
    unsigned char bytes[BYTES] = {};
    archive.SvrRead(bytes, static_cast<int>(BYTES));
    std::uint32_t number = 0;
    for (std::size_t i = BYTES; i-- > 0;)
        number = number << 8 | bytes[i];
    return number;
}

unsigned FirstNumber(COwnerArchive& archive) {
    const int position = archive.GetPosition();
    archive.SetPosition(0);
    const unsigned number = ReadNumber<2>(archive);
    archive.SetPosition(position);
    return number;
}

}  // namespace

void CDevBas::ReadDeviceParameters(OLMA_DATA& record) {
    CArray<int, int>& parameters = record.m_pContext->m_arrDevParam;
    parameters.SetSize(2);
    parameters[0] = DEFAULT_DEVICE_ADDRESS;
    parameters[1] = DEFAULT_WAIT_TIME_MS;
    if (FirstNumber(*record.m_pArchive) <= ARCHIVE_FIRST_MARK)
        mfDeserializeFromOld(record);
}

int CDevBas::mfDeserializeFromOld(OLMA_DATA& record) {
    COwnerArchive& archive = *record.m_pArchive;
    CArray<int, int>& parameters = record.m_pContext->m_arrDevParam;
    const int count = static_cast<int>(ReadNumber<4>(archive));
    parameters.SetSize(count <= MAX_PARAMETERS ? count : 0);
    for (int i = 0; i < parameters.GetSize(); ++i)
        parameters[i] = static_cast<int>(ReadNumber<4>(archive));
    return 0;
}
