#include "common/ResultCodes.h"

#include "host.h"

namespace {

struct Meaning {
    int status;
    const char* text;
};

constexpr Meaning MEANINGS[] = {
    {HOST_OK, "done"},
    {-RESULT_MALFORMED, "not writable, or the command or its source cannot be read"},
    {-RESULT_KERNEL_LOG_FAILED, "the kernel log could not be captured"},
    {-RESULT_REFUSED, "value out of range, or a variable cannot be read or written"},
    {-RESULT_BAD_ARGUMENTS, "wrong number or form of arguments"},
    {-RESULT_NO_INTERFACE, "no network interface can be read"},
    {-RESULT_INTERFACE_NOT_SET, "the network setting could not be applied"},
    {-RESULT_INTERFACE_MISSING, "the panel does not have this network interface"},
    {-RESULT_BACKLIGHT_FAILED, "the backlight could not be switched"},
    {-RESULT_TIME_SYNC_FAILED, "the time could not be synchronised"},
    {-RESULT_BRIGHTNESS_FAILED, "the brightness could not be set"},
    {-RESULT_NO_BRIGHTNESS, "the panel has no brightness control"},
    {-RESULT_HARDWARE_FAILED, "the hardware layer failed"},
    {HOST_NO_PARAM_HOST, "the host offers no parameters"},
    {HOST_BAD_ARGUMENT, "bad argument"},
    {HOST_NO_CHANNEL_HOST, "the host takes no channel values"},
};

}  // namespace

const char* StatusMeaning(int status) {
    for (const Meaning& meaning : MEANINGS) {
        if (meaning.status == status)
            return meaning.text;
    }
    return "unknown status";
}
