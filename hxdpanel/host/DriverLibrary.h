// Owner of the loaded driver library: found, loaded and released as a host does it.
#ifndef HXDPANEL_DRIVERLIBRARY_H
#define HXDPANEL_DRIVERLIBRARY_H

#include "host.h"

#include <memory>
#include <string>

class DriverLibrary {
public:
    // Null, with the reason in error, when the file cannot be loaded or is no driver.
    static std::unique_ptr<DriverLibrary> Load(const std::string& file, std::string& error);
    ~DriverLibrary();
    DriverLibrary(const DriverLibrary&) = delete;
    DriverLibrary& operator=(const DriverLibrary&) = delete;

    IDeviceCtrl* Create(const char* name, IRtdb* host) const { return m_pfnCreate(name, host); }
    int Destroy(IDeviceCtrl* device) const { return m_pfnDestroy(device); }

private:
    explicit DriverLibrary(void* handle) : m_pHandle(handle) {}

    void* m_pHandle;
    decltype(&CreateDeviceCtrl) m_pfnCreate = nullptr;
    decltype(&DestroyDeviceCtrl) m_pfnDestroy = nullptr;
};

#endif
