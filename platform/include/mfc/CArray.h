// Arrays of the host's MFC-compatible layer (libMfcToQt), C++ linkage.
//
// Indices outside 0 to GetSize() - 1 are a mistake of the caller: the program stops there. One
// object must not be used from two threads at once.
#ifndef MFC_CARRAY_H
#define MFC_CARRAY_H

#include "mfc/CString.h"

#include <cstddef>
#include <vector>

namespace mfc {
// Reports the index on standard error and stops the program.
[[noreturn]] void StopAtBadIndex(int index, int size);
}  // namespace mfc

template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray {
public:
    int GetSize() const { return static_cast<int>(m_elements.size()); }

    // New elements are zero or empty; a negative size empties the array. Throws std::bad_alloc.
    void SetSize(int size) { m_elements.resize(size > 0 ? static_cast<std::size_t>(size) : 0); }
    void RemoveAll() { m_elements.clear(); }

    const TYPE& GetAt(int index) const { return m_elements[Checked(index)]; }
    void SetAt(int index, ARG_TYPE element) { m_elements[Checked(index)] = element; }
    TYPE& ElementAt(int index) { return m_elements[Checked(index)]; }
    TYPE& operator[](int index) { return m_elements[Checked(index)]; }
    const TYPE& operator[](int index) const { return m_elements[Checked(index)]; }

    // Returns the index of the new element.
    int Add(ARG_TYPE element) {
        m_elements.push_back(element);
        return GetSize() - 1;
    }

    // Null when the array is empty; valid until the next change of size.
    TYPE* GetData() { return m_elements.data(); }
    const TYPE* GetData() const { return m_elements.data(); }

private:
    std::size_t Checked(int index) const {
        if (index < 0 || index >= GetSize())
            mfc::StopAtBadIndex(index, GetSize());
        return static_cast<std::size_t>(index);
    }

    std::vector<TYPE> m_elements;
};

class CStringArray : public CArray<CString, const CString&> {};
class CByteArray : public CArray<unsigned char, unsigned char> {};

#endif
