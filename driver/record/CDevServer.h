// Access to the host's parameters by name, and the conversions of texts into numbers behind it.
#ifndef HXD_CDEVSERVER_H
#define HXD_CDEVSERVER_H

#include "driver/record/OlmaData.h"
#include "toolscom.h"

#include <vector>

// The type of a parameter that the host does not know.
constexpr DATATYPE PARAMETER_UNKNOWN = static_cast<DATATYPE>(-2);

// Command arguments are names of host parameters; a name that the host does not know stands for
// itself as a literal when it is read, and cannot be written. All functions work through the
// record's function pointers, which may be null; the host's status of a single access is not looked
// at. They run on the calling thread and keep nothing.
class CDevServer {
public:
    // The parameter's value, or the literal. Numbers are rounded half away from zero to int.
    // 1 = read; 0 = a text parameter was asked for a number, or the reverse (out is 0 or empty).
    static int SvrGetParaValue(OLMA_DATA& record, CString name, int& out);
    static int SvrGetParaValue(OLMA_DATA& record, CString name, double& out);
    static int SvrGetParaValue(OLMA_DATA& record, CString name, CString& out);

    // 1 = the parameter exists with a fitting type and was written; 0 = not.
    static int SvrSetParaValue(OLMA_DATA& record, CString name, int value);
    static int SvrSetParaValue(OLMA_DATA& record, CString name, CString value);

    // The first count characters as a number; 0.0 when the text has fewer.
    static double SvrStr2Double(CString text, int count);

    // Splits at the first separator; both halves are trimmed. 1 = found; 0 = not (left and right
    // are unchanged). The right half begins after the separator's first character: the rest of a
    // longer separator stays in it. The arguments may be the same object.
    static int SvrGetCmdStr(const CString& text, const CString& separator, CString& left,
                            CString& right);

    // Converts by one of the formats %d %u %ld %x %o (32-bit integer), %f (float), %lf (double),
    // letter case ignored. 0 = written to out; 1 = unknown format, nothing written. One leading "-"
    // is understood, except by %x and %o, which lose it; text without digits gives 0.
    static int cstringToNumeric(CString text, const CString& format, void* out);
};

namespace CDevBas {

// The type that the host gives the parameter; the record's function pointer may be null.
DATATYPE ParameterType(OLMA_DATA& record, const CString& name);

// Appends the pieces of text between separators, trimmed, empty ones included; returns 1. A null
// text appends one empty piece and returns 0.
int splitString(const char* text, char separator, std::vector<FF::utils::String>& pieces);

}  // namespace CDevBas

#endif
