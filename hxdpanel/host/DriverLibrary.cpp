#include "hxdpanel/host/DriverLibrary.h"

#include <dlfcn.h>

namespace {

// dlerror() names the file already.
std::string LoaderError() {
    const char* const text = ::dlerror();
    return text != nullptr ? text : "the loader gives no reason";
}

}  // namespace

std::unique_ptr<DriverLibrary> DriverLibrary::Load(const std::string& file, std::string& error) {
    void* const handle = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        error = "cannot load the driver: " + LoaderError();
        return nullptr;
    }
    std::unique_ptr<DriverLibrary> library(new DriverLibrary(handle));
    library->m_pfnCreate =
        reinterpret_cast<decltype(m_pfnCreate)>(::dlsym(handle, "CreateDeviceCtrl"));
    library->m_pfnDestroy =
        reinterpret_cast<decltype(m_pfnDestroy)>(::dlsym(handle, "DestroyDeviceCtrl"));
    if (library->m_pfnCreate == nullptr || library->m_pfnDestroy == nullptr) {
        error = file + " is no driver: " + LoaderError();
        return nullptr;
    }
    return library;
}

DriverLibrary::~DriverLibrary() {
    ::dlclose(m_pHandle);
}
