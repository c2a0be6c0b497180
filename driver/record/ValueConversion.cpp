// The table of text-to-number conversions behind CDevServer::cstringToNumeric.
#include "driver/record/CDevServer.h"

#include <cstdint>
#include <cstdlib>

namespace {

using Converter = int (*)(const CString& text, void* out, bool positive);

// The panel's integers have 32 bits; larger numbers keep their low ones.
std::uint32_t ParseUnsigned(const CString& text, int base) {
    return static_cast<std::uint32_t>(std::strtoull(text, nullptr, base));
}

int cstringToInt(const CString& text, void* out, bool positive) {
    const std::uint32_t value = ParseUnsigned(text, 10);
    *static_cast<std::uint32_t*>(out) = positive ? value : 0u - value;
    return 0;
}

int cstringToUInt(const CString& text, void* out, bool positive) {
    return cstringToInt(text, out, positive);
}

int cstringToLong(const CString& text, void* out, bool positive) {
    return cstringToInt(text, out, positive);
}

// Hexadecimal and octal texts are bit patterns: a sign in front of them is lost.
int cstringToHex(const CString& text, void* out, bool /*positive*/) {
    *static_cast<std::uint32_t*>(out) = ParseUnsigned(text, 16);
    return 0;
}

int cstringToOct(const CString& text, void* out, bool /*positive*/) {
    *static_cast<std::uint32_t*>(out) = ParseUnsigned(text, 8);
    return 0;
}

int cstringToFloat(const CString& text, void* out, bool positive) {
    const float value = std::strtof(text, nullptr);
    *static_cast<float*>(out) = positive ? value : -value;
    return 0;
}

int cstringToDouble(const CString& text, void* out, bool positive) {
    const double value = std::strtod(text, nullptr);
    *static_cast<double*>(out) = positive ? value : -value;
    return 0;
}

struct Conversion {
    CString m_strFormat;
    Converter m_pfnConvert;
    CString m_strDescription;  // informational
};

const Conversion CONVERSIONS[] = {
    {"%d", cstringToInt, "c string to int number"},
    {"%u", cstringToUInt, "c string to unsigned int number"},
    {"%ld", cstringToLong, "c string to long number"},
    {"%x", cstringToHex, "c string to hex number"},
    {"%o", cstringToOct, "c string to oct number"},
    {"%f", cstringToFloat, "c string to float number"},
    {"%lf", cstringToDouble, "c string to float number"},  // repeats the float's, as shipped
};

}  // namespace

int CDevServer::cstringToNumeric(CString text, const CString& format, void* out) {
    const bool positive = text.IsEmpty() || text.Left(1) != "-";
    if (!positive)
        text = text.Mid(1);
    for (const Conversion& conversion : CONVERSIONS) {
        if (conversion.m_strFormat.CompareNoCase(format) == 0)
            return conversion.m_pfnConvert(text, out, positive);
    }
    return 1;
}
