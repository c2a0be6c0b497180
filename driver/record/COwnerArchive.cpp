#include "driver/record/COwnerArchive.h"

#include <algorithm>
#include <cstring>

namespace {

// Meant as a page, written as hexadecimal: archives in the field were sized by this step.
constexpr int GROWTH_STEP = 0x4096;

}  // namespace

bool COwnerArchive::Fits(int n) const {
    return static_cast<long long>(m_nPosition) + n <= GetSize();
}

int COwnerArchive::mfCheckBuffer(int n) {
    if (!Fits(n))
        m_arrBuffer.SetSize(std::max(m_nPosition + n, GetSize() + GROWTH_STEP));
    return 1;
}

void COwnerArchive::SvrChangeMode(ARCHIVESTATUS mode) {
    if (mode == m_eMode) {
        // Also without a change of mode: a fresh archive gets its header, a rewound one its check.
        if (m_nPosition == 0)
            EnterMode();
        return;
    }
    m_eMode = mode;
    if (m_nPosition != 0)
        m_arrBuffer.SetSize(m_nPosition);
    m_nPosition = 0;
    EnterMode();
}

void COwnerArchive::EnterMode() {
    if (m_eMode == ARCHIVE_STORE) {
        const unsigned char header[2] = {ARCHIVE_VERSION & 0xFF, ARCHIVE_VERSION >> 8};
        SvrWrite(header, sizeof header);
    } else if (m_eMode == ARCHIVE_LOAD) {
        unsigned char mark[2] = {0, 0};
        SvrRead(mark, sizeof mark);
        if ((mark[0] | mark[1] << 8) < static_cast<int>(ARCHIVE_FIRST_MARK))
            m_nPosition = 0;
    }
}

void COwnerArchive::SvrWrite(const unsigned char* data, int n) {
    if (n < 0)
        return;
    if (m_eMode == ARCHIVE_LOAD)
        SvrChangeMode(ARCHIVE_STORE);
    mfCheckBuffer(n);
    if (n > 0)
        std::memcpy(m_arrBuffer.GetData() + m_nPosition, data, static_cast<std::size_t>(n));
    m_nPosition += n;
}

void COwnerArchive::SvrRead(unsigned char* data, int n) {
    if (n < 0)
        return;
    if (m_eMode == ARCHIVE_STORE)
        SvrChangeMode(ARCHIVE_LOAD);
    if (m_eMode != ARCHIVE_LOAD)
        mfCheckBuffer(n);
    else if (!Fits(n))
        return;
    if (n > 0)
        std::memcpy(data, m_arrBuffer.GetData() + m_nPosition, static_cast<std::size_t>(n));
    m_nPosition += n;
}
