// The host's utility library (libtoolscom), C++ linkage.
#ifndef TOOLSCOM_H
#define TOOLSCOM_H

#include <string>
#include <vector>

namespace FF {
namespace utils {

class String : public std::string {
public:
    String() = default;
    String(const char* text) : std::string(text) {}
    String(const std::string& text) : std::string(text) {}

    // Removes white space from both ends, in place.
    String& trim();
};

}  // namespace utils
}  // namespace FF

// Appends the pieces of text between separators; empty pieces are kept, so there is always one
// piece more than there are separators. Returns the number of pieces appended.
int SplitCsvStr(const std::string& text, char separator, std::vector<FF::utils::String>& pieces);

#endif
