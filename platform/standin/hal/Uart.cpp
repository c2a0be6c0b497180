#include "Guarded.h"
#include "olma_hal.h"

int hal_uart_info(int port, struct hal_uart_info_t* info) {
    return sim::Guarded(__func__, [port, info](sim::PanelState& state) {
        if (!info || port < 1 || port > 4)
            return -EINVAL;
        const sim::Uart& uart = state.uarts[port - 1];
        if (!uart.present)
            return -ENODEV;
        *info = uart.counters;
        return 0;
    });
}
