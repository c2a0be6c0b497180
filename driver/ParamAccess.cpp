// The record's way to the host's parameters.
#include "driver/CDevCtrl.h"
#include "driver/Operation.h"

namespace {

int GetText(IRtdb& host, const CString& name, CString& out) {
    std::string text;
    const int status = host.GetParamString(name, &text);
    out = CString(text.data(), static_cast<int>(text.size()));
    return status;
}

int SetText(IRtdb& host, const CString& name, const CString& value) {
    const std::string text(value, static_cast<std::size_t>(value.GetLength()));
    return host.SetParamString(name, &text);
}

// What is wrong with a call before the host is asked; the name comes before the host.
int CheckCall(const OLMA_DATA& record, const CString& name) {
    if (name.IsEmpty())
        return HOST_BAD_ARGUMENT;
    return record.m_pParamHost == nullptr ? HOST_NO_PARAM_HOST : HOST_OK;
}

}  // namespace

int CDevCtrl::GetParamType_Fun(OLMA_DATA& record, CString name, DATATYPE& type) {
    const int wrong = CheckCall(record, name);
    if (wrong != HOST_OK)
        return wrong;
    const hxd::HostTurn turn;
    return record.m_pParamHost->GetParamType(name, &type);
}

int CDevCtrl::GetParamValue_Fun(OLMA_DATA& record, CString name, DATATYPE type, void* out) {
    const int wrong = out == nullptr ? HOST_BAD_ARGUMENT : CheckCall(record, name);
    if (wrong != HOST_OK)
        return wrong;
    const hxd::HostTurn turn;
    IRtdb& host = *record.m_pParamHost;
    switch (type) {
        case DATATYPE_INTEGER:
            return host.GetParamInt(name, static_cast<int*>(out));
        case DATATYPE_DOUBLE:
            return host.GetParamDouble(name, static_cast<double*>(out));
        case DATATYPE_TEXT:
            return GetText(host, name, *static_cast<CString*>(out));
        default:
            return HOST_BAD_ARGUMENT;
    }
}

int CDevCtrl::SetParamValue_Fun(OLMA_DATA& record, CString name, DATATYPE type, void* value) {
    const int wrong = value == nullptr ? HOST_BAD_ARGUMENT : CheckCall(record, name);
    if (wrong != HOST_OK)
        return wrong;
    const hxd::HostTurn turn;
    IRtdb& host = *record.m_pParamHost;
    switch (type) {
        case DATATYPE_INTEGER:
            return host.SetParamInt(name, *static_cast<const int*>(value));
        case DATATYPE_DOUBLE:
            return host.SetParamDouble(name, *static_cast<const double*>(value));
        case DATATYPE_TEXT:
            return SetText(host, name, *static_cast<const CString*>(value));
        default:
            return HOST_BAD_ARGUMENT;
    }
}
