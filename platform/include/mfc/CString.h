// 8-bit text of the host's MFC-compatible layer (libMfcToQt), C++ linkage.
//
// A CString holds bytes of whatever encoding the host uses; nothing here converts them. Positions
// and lengths count bytes. One object must not be used from two threads at once.
#ifndef MFC_CSTRING_H
#define MFC_CSTRING_H

#include <string>

class CString {
public:
    CString() = default;
    CString(const char* text);  // null counts as empty
    CString(const char* text, int length);

    int GetLength() const;
    bool IsEmpty() const;
    operator const char*() const;  // zero-terminated; valid until the next change

    // Position of the first occurrence at or after start, or -1.
    int Find(const char* text, int start = 0) const;
    int Find(char character, int start = 0) const;

    // Counts and positions below 0 count as 0, those beyond the end as the end.
    CString Left(int count) const;
    CString Right(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;

    // White space: blank, tab, newline, carriage return, vertical tab, form feed.
    CString& Trim();
    CString& TrimLeft();
    CString& TrimRight();
    CString& MakeUpper();  // ASCII letters only

    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    int CompareNoCase(const char* other) const;  // ASCII letters; <0, 0, >0 as strcasecmp

    CString& operator+=(const CString& other);
    CString& operator+=(const char* other);
    CString& operator+=(char other);

private:
    std::string m_strText;
};

CString operator+(const CString& left, const CString& right);
CString operator+(const CString& left, const char* right);
CString operator+(const char* left, const CString& right);
CString operator+(const CString& left, char right);
CString operator+(char left, const CString& right);
// Neither text nor an address: convert to const char* first where a pointer is meant.
CString operator+(const CString& left, int right) = delete;

bool operator==(const CString& left, const CString& right);
bool operator==(const CString& left, const char* right);
bool operator==(const char* left, const CString& right);
bool operator!=(const CString& left, const CString& right);
bool operator!=(const CString& left, const char* right);

#endif
