#include "mfc/CArray.h"

#include <cstdio>
#include <cstdlib>

void mfc::StopAtBadIndex(int index, int size) {
    std::fprintf(stderr, "array index %d is outside an array of %d elements\n", index, size);
    std::abort();
}
