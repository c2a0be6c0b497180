// Hardware abstraction library (libolma-hal): display, network interfaces, real-time clock and
// serial ports of the panel.
//
// All functions have C linkage, never throw, and may be called from any thread. Unless a comment
// says otherwise, 0 means done and any other number is the library's own error code.
#ifndef OLMA_HAL_H
#define OLMA_HAL_H

#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

// One network interface. The layout is the library's.
struct hal_network_t {
    char name[32];     // zero-terminated, for example "eth0"
    uint32_t address;  // IPv4, network byte order
    uint32_t netmask;  // IPv4, network byte order
    uint32_t gateway;  // IPv4, network byte order; the driver leaves it alone
    uint8_t flags;     // two lowest bits: addressing mode, 0 or 1; the rest is the library's
    uint8_t reserved[3];
    uint32_t mode1_param;  // set to 5000 by the driver when it switches the interface to mode 1
};

// Counters of one serial port. The driver shows fourth * 100 / (first + second) as the port's use.
struct hal_uart_info_t {
    int32_t first;
    int32_t second;
    int32_t third;
    int32_t fourth;
};

// Brightness in per cent, 0 to 100, or -19 when the panel has no brightness control.
int hal_display_get_backlight_brightness(void);
int hal_display_set_backlight_brightness(int percent);

// Switches the light behind the display: 0 = on, 1 = off.
int hal_set_lcd_status(int off);

// Number of network interfaces; valid indices for hal_get_network are 0 to *count - 1.
int hal_get_network_count(unsigned int* count);
int hal_get_network(unsigned int index, struct hal_network_t* record);
int hal_get_network_byname(const char* name, struct hal_network_t* record);
// Applies address, netmask and mode of the record to the interface it names.
int hal_set_ip_addr(const struct hal_network_t* record);
// text: at least 20 bytes; receives the zero-terminated MAC address, "aa:bb:cc:dd:ee:ff".
int hal_get_mac_address(const char* name, char* text);

// Sets the battery-backed clock to a broken-down local time, as localtime() returns it.
int hal_set_rtc_time(const struct tm* time);

// Counters of serial port 1 to 4 (COM1 to COM4).
int hal_uart_info(int port, struct hal_uart_info_t* info);

#ifdef __cplusplus
}
#endif

#endif
