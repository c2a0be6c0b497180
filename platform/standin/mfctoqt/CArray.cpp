#include "mfc/CArray.h"

#include <cstdio>
#include <cstdlib>

void mfc::StopAtBadIndex(int index, int size) {
    std::fprintf(stderr, "array index %d is outside 0 to %d\n", index, size - 1);
    std::abort();
}
