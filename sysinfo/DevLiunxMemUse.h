// Operation "GetMemUse": the memory available to applications.
#ifndef HXD_DEVLIUNXMEMUSE_H
#define HXD_DEVLIUNXMEMUSE_H

#include "sysinfo/DevLiunxBase.h"

// The result, whole MiB, goes to the context's m_dMemAvail. Argument: the channel number, for the
// log only; without it nothing is stored. 0 = measured; -1 = not, and nothing is stored.
class DevLiunxMemUse : public DevLiunxBase {
public:
    int DevOpear(OLMA_DATA& data, std::vector<std::string>& args) override;

    // The estimate of kernels that do not name the figure themselves; 0, or -1 on failure.
    int DevCalcMemNoUseOld(int& freeKb);
};

#endif
