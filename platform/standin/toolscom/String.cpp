#include "toolscom.h"

namespace {
const char* const WHITE_SPACE = " \t\n\r\v\f";
}

FF::utils::String& FF::utils::String::trim() {
    erase(find_last_not_of(WHITE_SPACE) + 1);  // npos + 1 is 0: nothing but white space
    erase(0, find_first_not_of(WHITE_SPACE));
    return *this;
}
