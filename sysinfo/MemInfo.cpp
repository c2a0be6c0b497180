#include "sysinfo/MemInfo.h"

#include "common/Numbers.h"

#include <cstdint>
#include <cstring>

namespace meminfo {

hxd::Maybe<int> ParseAvailable(const std::string& content) {
    const std::string key = "MemAvailable:";
    const std::size_t found = content.find(key);
    if (found == std::string::npos)
        return {};
    const std::size_t start = found + key.size();
    const std::size_t newline = content.find('\n', start);
    if (newline == std::string::npos || newline <= start)
        return {};
    return hxd::ParseInt(content.substr(start, newline - start).c_str());
}

OldEstimate::State OldEstimate::Feed(char* line) {
    // Substrings, tested in this order: a "SwapCached" line before the "Cached" line is taken for
    // it; after it, the scan has already stopped.
    struct Row {
        const char* key;
        int* value;
        bool added;
    };
    const Row rows[] = {{"MemTotal", &m_nTotal, false},
                        {"MemFree", &m_nFree, true},
                        {"Buffers", &m_nBuffers, true},
                        {"Cached", &m_nCached, true}};

    char* rest = nullptr;
    const char* const name = ::strtok_r(line, " ", &rest);
    if (name == nullptr)
        return MORE;
    for (const Row& row : rows) {
        if (std::strstr(name, row.key) == nullptr)
            continue;
        const char* const value = ::strtok_r(nullptr, " ", &rest);
        if (value == nullptr)
            return BROKEN;
        *row.value = hxd::ParseInt(value);
        if (row.added)
            m_nFreeKb = static_cast<int>(static_cast<std::uint32_t>(m_nFreeKb) +
                                         static_cast<std::uint32_t>(*row.value));
        break;
    }
    const bool complete = m_nTotal != -1 && m_nFree != -1 && m_nBuffers != -1 && m_nCached != -1;
    return complete ? COMPLETE : MORE;
}

}  // namespace meminfo
