// Result codes of commands and channel writes.
//
// Inside the driver they are negative; the dispatcher stores the negation in element 0 of the value
// array, so the host sees 0 for success and a positive status number otherwise.
#ifndef HXD_RESULTCODES_H
#define HXD_RESULTCODES_H

enum ResultCode : int {
    RESULT_DONE = 0,
    RESULT_MALFORMED = -1,           // no "=" in a channel write, or the channel is not writable
    RESULT_KERNEL_LOG_FAILED = -3,   // dmesg failed
    RESULT_REFUSED = -4,             // value out of range, or variable not readable or writable
    RESULT_BAD_ARGUMENTS = -5,       // wrong number or form of arguments
    RESULT_NO_INTERFACE = -6,        // network interfaces cannot be listed or read
    RESULT_INTERFACE_NOT_SET = -7,   // the address could not be applied
    RESULT_INTERFACE_MISSING = -8,   // the panel has fewer interfaces
    RESULT_BACKLIGHT_FAILED = -9,    // the light could not be switched
    RESULT_TIME_SYNC_FAILED = -10,   // no server answered, or the clock could not be set
    RESULT_BRIGHTNESS_FAILED = -15,  // the brightness could not be set
    RESULT_NO_BRIGHTNESS = -16,      // the panel has no brightness control
    RESULT_HARDWARE_FAILED = -17,    // the hardware layer failed
};

// What the hardware layer answers for a device that the panel does not have; brightness control, as
// far as the driver looks at it.
constexpr int HAL_NO_SUCH_DEVICE = -19;

// What a status number that the host sees (0, 4, 0x80000001, ...) means, in a few words; never
// null.
const char* StatusMeaning(int status);

#endif
