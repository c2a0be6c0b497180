// The panel's flash: what has been written to it and how worn it is.
#ifndef HXDPANEL_STORAGEWEAR_H
#define HXDPANEL_STORAGEWEAR_H

#include "hxdpanel/panel/HardwareResult.h"

#include <string>
#include <vector>

namespace storagewear {

using Words = std::vector<std::string>;

struct Flash {
    enum Kind { NONE, EMMC, NAND };
    Kind kind = NONE;
    // eMMC: as its files tell it; empty: they do not.
    std::string lifeTime, preEolInfo, eraseSize;
    long long sectorsWritten = 0;
    // NAND
    long long blocks = 0, erasures = 0, badBlocks = 0, reservedBlocks = 0;
};
Flash State();
std::string StateText();

HardwareResult Disk(const Words& words);  // write SIZE, wear WHAT VALUE..., or nothing
Words Candidates(const Words& words);

}  // namespace storagewear

#endif
