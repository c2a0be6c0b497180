#include "hxdpanel/script/Echo.h"

#include <cstdlib>
#include <sstream>

Echo::Echo(std::FILE* results, const std::string& prefix)
    : m_pResults(results), m_strPrefix(prefix), m_pStream(::open_memstream(&m_pText, &m_nLength)) {}

Echo::~Echo() {
    if (m_pStream != nullptr)
        std::fclose(m_pStream);
    std::free(m_pText);
}

void Echo::Show() {
    if (m_pStream == nullptr || std::fflush(m_pStream) != 0)
        return;
    std::istringstream lines(std::string(m_pText, m_nLength));
    for (std::string line; std::getline(lines, line);)
        std::fprintf(m_pResults, "%s%s\n", m_strPrefix.c_str(), line.c_str());
    std::fflush(m_pResults);
    std::rewind(m_pStream);
}
