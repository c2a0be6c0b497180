#include "hxdpanel/host/Device.h"

#include <numeric>

Device::Device(const DriverLibrary& library, IRtdb& host, const std::vector<unsigned char>& blob,
               int channelCount)
    : m_library(library),
      m_host(host),
      m_blob(blob),
      m_channels(static_cast<std::size_t>(channelCount)) {
    std::iota(m_channels.begin(), m_channels.end(), 0);
    Start();
}

Device::~Device() {
    End();
}

void Device::Start() {
    m_nInitStatus = HOST_BAD_ARGUMENT;
    m_pDevice = m_library.Create("hxdpanel", &m_host);
    if (m_pDevice == nullptr)
        return;
    m_pDevice->UpdataCommunication(&m_link);
    m_nInitStatus = m_pDevice->InitDevice(m_blob.data(), static_cast<int>(m_blob.size()));
}

void Device::End() {
    if (m_pDevice == nullptr)
        return;
    m_pDevice->CleanupDevice();
    m_library.Destroy(m_pDevice);
    m_pDevice = nullptr;
}

void Device::Restart() {
    End();
    Start();
}

bool Device::Enter() const {
    if (m_nInitStatus != HOST_OK)
        return false;
    if (m_beforeCall)
        m_beforeCall();
    return true;
}

int Device::Collect() {
    if (!Enter())
        return HOST_BAD_ARGUMENT;
    return m_pDevice->CollectDevData(m_channels.data(), static_cast<int>(m_channels.size()));
}

int Device::Command(const std::string& text) {
    if (!Enter())
        return HOST_BAD_ARGUMENT;
    return m_pDevice->DevIOCtrl(text.c_str());
}

int Device::Write(int number, const HostValue& value) {
    if (!Enter())
        return HOST_BAD_ARGUMENT;
    HostValue copy = value;  // the driver's interface takes a pointer to non-const
    void* data = &copy.integer;
    if (value.type == DATATYPE_DOUBLE)
        data = &copy.number;
    else if (value.type == DATATYPE_TEXT)
        data = &copy.text[0];
    return m_pDevice->WriteChannel(number - 1, value.type, data);
}
