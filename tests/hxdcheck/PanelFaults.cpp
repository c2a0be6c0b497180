// Loaded before the stand-ins, this library gives the test host the panel that HXD_PANEL_DIR names,
// and a platform that is broken as HXD_FAULT says.
#include "SimPanel.h"
#include "olma_gui.h"
#include "olma_hal.h"
#include "olma_host.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#define EXPORTED extern "C" __attribute__((visibility("default")))

namespace {

bool IsFault(const char* name) {
    const char* const fault = std::getenv("HXD_FAULT");
    return fault != nullptr && std::strcmp(fault, name) == 0;
}

template <class FUNCTION>
FUNCTION* Real(const char* name) {
    return reinterpret_cast<FUNCTION*>(::dlsym(RTLD_NEXT, name));
}

__attribute__((constructor)) void SetUp() {
    std::string error;
    const char* const panel = std::getenv("HXD_PANEL_DIR");
    if (panel != nullptr && ::access((std::string(panel) + "/panel.ini").c_str(), R_OK) == 0 &&
        !sim::SimPanel::Instance().LoadIni(std::string(panel) + "/panel.ini", error))
        std::fprintf(stderr, "%s", error.c_str());
}

}  // namespace

// A vendor's record with one field more at its end.
EXPORTED int hal_get_network(unsigned int index, hal_network_t* record) {
    const int result = Real<decltype(hal_get_network)>("hal_get_network")(index, record);
    if (IsFault("record"))
        std::memset(record + 1, 0, 4);
    return result;
}

EXPORTED int hal_get_mac_address(const char* name, char* text) {
    const int result = Real<decltype(hal_get_mac_address)>("hal_get_mac_address")(name, text);
    if (IsFault("mac"))
        std::memcpy(text + 17, " on board", 10);
    return result;
}

EXPORTED int hal_uart_info(int port, hal_uart_info_t* info) {
    if (IsFault("crash"))
        std::abort();
    return Real<decltype(hal_uart_info)>("hal_uart_info")(port, info);
}

EXPORTED const char* __gui_get_serial_number() {
    while (IsFault("hang"))
        ::pause();
    static std::string another;
    return IsFault("serial") ? (another += '1').c_str()
                             : Real<decltype(__gui_get_serial_number)>("__gui_get_serial_number")();
}

EXPORTED long long Olma_GetTickCount() {
    static int calls = 0;
    const long long tick = Real<decltype(Olma_GetTickCount)>("Olma_GetTickCount")();
    return IsFault("tick") && ++calls > 5 ? tick + 1000 : tick;
}
