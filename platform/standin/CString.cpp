#include "mfc/CString.h"

#include <strings.h>
#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace {

const char* const WHITE_SPACE = " \t\n\r\v\f";

const char* OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

}  // namespace

CString::CString(const char* text) : m_strText(OrEmpty(text)) {}

CString::CString(const char* text, int length)
    : m_strText(OrEmpty(text), text != nullptr && length > 0 ? static_cast<size_t>(length) : 0) {}

int CString::GetLength() const {
    return static_cast<int>(m_strText.size());
}

bool CString::IsEmpty() const {
    return m_strText.empty();
}

CString::operator const char*() const {
    return m_strText.c_str();
}

int CString::Find(const char* text, int start) const {
    const std::size_t found =
        m_strText.find(OrEmpty(text), static_cast<std::size_t>(std::max(start, 0)));
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

int CString::Find(char character, int start) const {
    const std::size_t found =
        m_strText.find(character, static_cast<std::size_t>(std::max(start, 0)));
    return found == std::string::npos ? -1 : static_cast<int>(found);
}

CString CString::Left(int count) const {
    return Mid(0, count);
}

CString CString::Right(int count) const {
    return Mid(GetLength() - std::min(std::max(count, 0), GetLength()));
}

CString CString::Mid(int first) const {
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
    const int from = std::min(std::max(first, 0), GetLength());
    const int length = std::min(std::max(count, 0), GetLength() - from);
    return CString(m_strText.data() + from, length);
}

CString& CString::Trim() {
    return TrimRight().TrimLeft();
}

CString& CString::TrimLeft() {
    m_strText.erase(0, m_strText.find_first_not_of(WHITE_SPACE));
    return *this;
}

CString& CString::TrimRight() {
    m_strText.erase(m_strText.find_last_not_of(WHITE_SPACE) + 1);
    return *this;
}

CString& CString::MakeUpper() {
    for (char& character : m_strText) {
        if (character >= 'a' && character <= 'z')
            character = static_cast<char>(character - 'a' + 'A');
    }
    return *this;
}

void CString::Format(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::vsnprintf(&text[0], text.size() + 1, format, again);
    va_end(again);
    m_strText.swap(text);
}

int CString::CompareNoCase(const char* other) const {
    return ::strcasecmp(m_strText.c_str(), OrEmpty(other));
}

CString& CString::operator+=(const CString& other) {
    m_strText += other.m_strText;
    return *this;
}

CString& CString::operator+=(const char* other) {
    m_strText += OrEmpty(other);
    return *this;
}

CString& CString::operator+=(char other) {
    m_strText += other;
    return *this;
}

CString operator+(const CString& left, const CString& right) {
    return CString(left) += right;
}

CString operator+(const CString& left, const char* right) {
    return CString(left) += right;
}

CString operator+(const char* left, const CString& right) {
    return CString(left) += right;
}

bool operator==(const CString& left, const CString& right) {
    return left.GetLength() == right.GetLength() &&
           std::equal(static_cast<const char*>(left),
                      static_cast<const char*>(left) + left.GetLength(),
                      static_cast<const char*>(right));
}

bool operator==(const CString& left, const char* right) {
    return left == CString(right);
}

bool operator==(const char* left, const CString& right) {
    return CString(left) == right;
}

bool operator!=(const CString& left, const CString& right) {
    return !(left == right);
}

bool operator!=(const CString& left, const char* right) {
    return !(left == right);
}
