// What a hardware command has led to.
#ifndef HXDPANEL_HARDWARERESULT_H
#define HXDPANEL_HARDWARERESULT_H

#include <string>
#include <vector>

struct HardwareResult {
    bool ok;
    std::string message;        // what changed, or why nothing did
    std::vector<int> channels;  // that may show something else from now on

    static HardwareResult Done(const std::string& message, const std::vector<int>& channels) {
        return {true, message, channels};
    }
    static HardwareResult Refused(const std::string& message) { return {false, message, {}}; }
};

#endif
