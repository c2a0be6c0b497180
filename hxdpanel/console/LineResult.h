// What a line has done, beyond what was printed: for scripts and recordings.
#ifndef HXDPANEL_LINERESULT_H
#define HXDPANEL_LINERESULT_H

#include <string>
#include <vector>

struct LineResult {
    bool hasStatus = false;  // the driver has answered
    int status = 0;
    std::string statusText;  // "4 (value out of range)"
    bool isKnown = true;     // false: a command that the driver does not know, and answers 0 to
    std::vector<std::string> variables;  // written by the driver
    std::vector<int> channels;           // shown
};

#endif
