// Whole files read and written in one call.
#ifndef TESTFILES_H
#define TESTFILES_H

#include <fstream>
#include <sstream>
#include <string>

inline std::string readFile(const std::string& path) {  // "" when it cannot be read
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

#endif
