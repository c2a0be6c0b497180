#include "driver/record/CDevServer.h"

#include "common/Numbers.h"

namespace {

// The value of a parameter of a known type; the preset value when it cannot be read.
template <class VALUE>
VALUE Read(OLMA_DATA& record, const CString& name, DATATYPE type) {
    VALUE value{};
    if (record.m_pfnGetParamValue != nullptr)
        record.m_pfnGetParamValue(record, name, type, &value);
    return value;
}

template <class VALUE>
int Write(OLMA_DATA& record, const CString& name, DATATYPE type, VALUE value) {
    if (record.m_pfnSetParamValue != nullptr)
        record.m_pfnSetParamValue(record, name, type, &value);
    return 1;
}

}  // namespace

// The host leaves the preset there when it does not know the name.
DATATYPE CDevBas::ParameterType(OLMA_DATA& record, const CString& name) {
    DATATYPE type = PARAMETER_UNKNOWN;
    if (record.m_pfnGetParamType != nullptr)
        record.m_pfnGetParamType(record, name, type);
    return type;
}

int CDevServer::SvrGetParaValue(OLMA_DATA& record, CString name, int& out) {
    out = 0;
    switch (CDevBas::ParameterType(record, name)) {
        case DATATYPE_DOUBLE:
            out = hxd::RoundToInt(Read<double>(record, name, DATATYPE_DOUBLE));
            return 1;
        case DATATYPE_TEXT:
            return 0;
        case DATATYPE_INTEGER:
            out = Read<int>(record, name, DATATYPE_INTEGER);
            return 1;
        default:
            cstringToNumeric(name, "%d", &out);
            return 1;
    }
}

int CDevServer::SvrGetParaValue(OLMA_DATA& record, CString name, double& out) {
    out = 0.0;
    switch (CDevBas::ParameterType(record, name)) {
        case DATATYPE_DOUBLE:
            out = Read<double>(record, name, DATATYPE_DOUBLE);
            return 1;
        case DATATYPE_TEXT:
            return 0;
        case DATATYPE_INTEGER:
            out = Read<int>(record, name, DATATYPE_INTEGER);
            return 1;
        default:
            // Only this form trims; the integer form leaves blanks to the parser.
            name.Trim();
            if (!name.IsEmpty())
                cstringToNumeric(name, "%lf", &out);
            return 1;
    }
}

int CDevServer::SvrGetParaValue(OLMA_DATA& record, CString name, CString& out) {
    out = CString();
    switch (CDevBas::ParameterType(record, name)) {
        case DATATYPE_INTEGER:
        case DATATYPE_DOUBLE:
            return 0;
        case DATATYPE_TEXT:
            out = Read<CString>(record, name, DATATYPE_TEXT);
            return 1;
        default:
            out = name;
            return 1;
    }
}

int CDevServer::SvrSetParaValue(OLMA_DATA& record, CString name, int value) {
    switch (CDevBas::ParameterType(record, name)) {
        case DATATYPE_INTEGER:
            return Write(record, name, DATATYPE_INTEGER, value);
        case DATATYPE_DOUBLE:
            return Write(record, name, DATATYPE_DOUBLE, static_cast<double>(value));
        default:
            return 0;
    }
}

int CDevServer::SvrSetParaValue(OLMA_DATA& record, CString name, CString value) {
    if (CDevBas::ParameterType(record, name) != DATATYPE_TEXT)
        return 0;
    return Write(record, name, DATATYPE_TEXT, value);
}

double CDevServer::SvrStr2Double(CString text, int count) {
    double value = 0.0;
    if (count <= text.GetLength())
        cstringToNumeric(text.Left(count), "%lf", &value);
    return value;
}
