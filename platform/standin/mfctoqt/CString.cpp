#include "mfc/CString.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <vector>

namespace {

const char* const WHITE_SPACE = " \t\n\r\v\f";

const char* OrEmpty(const char* text) {
    return text ? text : "";
}

// The position within 0 to length that a caller's number stands for.
std::size_t Clamped(int position, std::size_t length) {
    return position <= 0 ? 0 : std::min(static_cast<std::size_t>(position), length);
}

int AsResult(std::size_t position) {
    return position == std::string::npos ? -1 : static_cast<int>(position);
}

// Not toupper() and tolower(): the results must not depend on the process's locale.
char AsciiUpper(char character) {
    return character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A')
                                                : character;
}

char AsciiLower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

}  // namespace

CString::CString(const char* text) : m_strText(OrEmpty(text)) {}

CString::CString(const char* text, int length) {
    if (text && length > 0)
        m_strText.assign(text, static_cast<std::size_t>(length));
}

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
    return AsResult(m_strText.find(OrEmpty(text), Clamped(start, m_strText.size())));
}

int CString::Find(char character, int start) const {
    return AsResult(m_strText.find(character, Clamped(start, m_strText.size())));
}

CString CString::Left(int count) const {
    return Mid(0, count);
}

CString CString::Right(int count) const {
    return Mid(GetLength() - static_cast<int>(Clamped(count, m_strText.size())));
}

CString CString::Mid(int first) const {
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
    CString piece;
    const std::size_t from = Clamped(first, m_strText.size());
    piece.m_strText = m_strText.substr(from, Clamped(count, m_strText.size()));
    return piece;
}

CString& CString::Trim() {
    return TrimRight().TrimLeft();
}

CString& CString::TrimLeft() {
    m_strText.erase(0, m_strText.find_first_not_of(WHITE_SPACE));
    return *this;
}

CString& CString::TrimRight() {
    // npos + 1 is 0: text of white space only is erased whole.
    m_strText.erase(m_strText.find_last_not_of(WHITE_SPACE) + 1);
    return *this;
}

CString& CString::MakeUpper() {
    std::transform(m_strText.begin(), m_strText.end(), m_strText.begin(), AsciiUpper);
    return *this;
}

// The arguments may point into this text, so it changes only once the new one is complete.
void CString::Format(const char* format, ...) {
    if (!format)
        format = "";
    std::va_list arguments, forLength;
    va_start(arguments, format);
    va_copy(forLength, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, forLength);
    va_end(forLength);

    std::string text;
    if (length > 0) {
        std::vector<char> buffer(static_cast<std::size_t>(length) + 1);
        std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
        text.assign(buffer.data(), static_cast<std::size_t>(length));
    }
    va_end(arguments);
    m_strText.swap(text);
}

int CString::CompareNoCase(const char* other) const {
    const char* left = m_strText.c_str();
    const char* right = OrEmpty(other);
    while (*left && AsciiLower(*left) == AsciiLower(*right)) {
        ++left;
        ++right;
    }
    return static_cast<unsigned char>(AsciiLower(*left)) -
           static_cast<unsigned char>(AsciiLower(*right));
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

CString operator+(const CString& left, char right) {
    return CString(left) += right;
}

CString operator+(char left, const CString& right) {
    return CString(&left, 1) += right;
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
