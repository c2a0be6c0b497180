// A script's lines and what they print, among the results or, as comments, in a TAP report.
#ifndef HXDPANEL_ECHO_H
#define HXDPANEL_ECHO_H

#include <cstdio>
#include <string>

class Echo {
public:
    // prefix: of each line.
    Echo(std::FILE* results, const std::string& prefix);
    ~Echo();
    Echo(const Echo&) = delete;
    Echo& operator=(const Echo&) = delete;

    // What is written here is shown by the next Show().
    std::FILE* Stream() const { return m_pStream; }
    void Show();

private:
    std::FILE* m_pResults;
    std::string m_strPrefix;
    char* m_pText = nullptr;  // the stream's
    std::size_t m_nLength = 0;
    std::FILE* m_pStream;
};

#endif
