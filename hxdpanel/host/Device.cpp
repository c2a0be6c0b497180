#include "hxdpanel/host/Device.h"

#include <numeric>

Device::Device(const DriverLibrary& library, IRtdb& host, const std::vector<unsigned char>& blob,
               int channelCount)
    : m_library(library),
      m_pDevice(library.Create("hxdpanel", &host)),
      m_channels(static_cast<std::size_t>(channelCount)),
      m_nInitStatus(HOST_BAD_ARGUMENT) {
    std::iota(m_channels.begin(), m_channels.end(), 0);
    if (m_pDevice == nullptr)
        return;
    m_pDevice->UpdataCommunication(&m_link);
    m_nInitStatus = m_pDevice->InitDevice(blob.data(), static_cast<int>(blob.size()));
}

Device::~Device() {
    if (m_pDevice == nullptr)
        return;
    m_pDevice->CleanupDevice();
    m_library.Destroy(m_pDevice);
}

int Device::Collect() {
    if (m_nInitStatus != HOST_OK)
        return HOST_BAD_ARGUMENT;
    return m_pDevice->CollectDevData(m_channels.data(), static_cast<int>(m_channels.size()));
}

int Device::Command(const std::string& text) {
    if (m_nInitStatus != HOST_OK)
        return HOST_BAD_ARGUMENT;
    return m_pDevice->DevIOCtrl(text.c_str());
}

int Device::Write(int number, const HostValue& value) {
    if (m_nInitStatus != HOST_OK)
        return HOST_BAD_ARGUMENT;
    HostValue copy = value;  // the driver's interface takes a pointer to non-const
    void* data = &copy.integer;
    if (value.type == DATATYPE_DOUBLE)
        data = &copy.number;
    else if (value.type == DATATYPE_TEXT)
        data = &copy.text[0];
    return m_pDevice->WriteChannel(number - 1, value.type, data);
}
