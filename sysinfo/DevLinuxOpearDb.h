// The host's parameters as the system-information operations see them.
#ifndef HXD_DEVLINUXOPEARDB_H
#define HXD_DEVLINUXOPEARDB_H

#include "driver/record/OlmaData.h"

#include <string>

// Works through the record's function pointers only; the host's status of a single access is not
// looked at. 0 = done, -1 = the parameter's type does not fit.
class DevLinuxOpearDb {
public:
    // An integer parameter, or the decimal number that name itself is (0 if it is none). A double
    // or text parameter is refused.
    int DevGetParaValue(OLMA_DATA& data, const std::string& name, int& value) const;

    // A numeric parameter; integers receive the value rounded half away from zero.
    int DevSetParaValue(OLMA_DATA& data, const std::string& name, double value) const;
    // A text parameter.
    int DevSetParaValue(OLMA_DATA& data, const std::string& name, const std::string& value) const;
    int DevSetParaValue(OLMA_DATA& data, const std::string& name, CString& value) const;
};

#endif
