#include "sysinfo/DevLinuxOpearDb.h"

#include "common/Numbers.h"
#include "driver/record/CDevServer.h"

namespace {

void Set(OLMA_DATA& data, const CString& name, DATATYPE type, void* value) {
    if (data.m_pfnSetParamValue != nullptr)
        data.m_pfnSetParamValue(data, name, type, value);
}

CString HostText(const std::string& text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

}  // namespace

int DevLinuxOpearDb::DevGetParaValue(OLMA_DATA& data, const std::string& name, int& value) const {
    const CString hostName = HostText(name);
    const DATATYPE type = CDevBas::ParameterType(data, hostName);
    if (type == DATATYPE_DOUBLE || type == DATATYPE_TEXT)
        return -1;
    if (type != DATATYPE_INTEGER)
        value = hxd::ParseInt(name.c_str());
    else if (data.m_pfnGetParamValue != nullptr)
        data.m_pfnGetParamValue(data, hostName, type, &value);
    return 0;
}

int DevLinuxOpearDb::DevSetParaValue(OLMA_DATA& data, const std::string& name, double value) const {
    const CString hostName = HostText(name);
    const DATATYPE type = CDevBas::ParameterType(data, hostName);
    if (type == DATATYPE_INTEGER) {
        int rounded = hxd::RoundToInt(value);
        Set(data, hostName, type, &rounded);
        return 0;
    }
    if (type == DATATYPE_DOUBLE) {
        Set(data, hostName, type, &value);
        return 0;
    }
    return -1;
}

int DevLinuxOpearDb::DevSetParaValue(OLMA_DATA& data, const std::string& name,
                                     const std::string& value) const {
    CString text = HostText(value);
    return DevSetParaValue(data, name, text);
}

int DevLinuxOpearDb::DevSetParaValue(OLMA_DATA& data, const std::string& name,
                                     CString& value) const {
    const CString hostName = HostText(name);
    if (CDevBas::ParameterType(data, hostName) != DATATYPE_TEXT)
        return -1;
    Set(data, hostName, DATATYPE_TEXT, &value);
    return 0;
}
