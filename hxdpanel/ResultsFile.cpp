#include "hxdpanel/ResultsFile.h"

#include "hxdpanel/base/ExitCode.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

// Opened by the instance outside the sandbox, or here in guarded mode.
std::FILE* OpenStream(const sandbox::Setup& setup) {
    if (setup.inside.resultsDescriptor < 0)
        return std::fopen(setup.resultsFile.c_str(), "w");
    if (::ftruncate(setup.inside.resultsDescriptor, 0) != 0) {
        // A device or a pipe, in which nothing was.
    }
    return ::fdopen(setup.inside.resultsDescriptor, "w");
}

}  // namespace

bool ResultsFile::Open(const sandbox::Setup& setup, std::FILE* standard) {
    m_strName = setup.resultsFile;
    if (m_strName.empty())
        return true;
    if (m_strName != "-")
        m_owned.reset(OpenStream(setup));
    m_pStream = m_strName == "-" ? standard : m_owned.get();
    if (m_pStream == nullptr)
        std::fprintf(stderr, "hxdpanel: cannot write %s: %s\n", m_strName.c_str(),
                     std::strerror(errno));
    return m_pStream != nullptr;
}

int ResultsFile::Finish(int exitCode) const {
    return m_owned != nullptr ? FinishStream(m_owned.get(), m_strName, exitCode) : exitCode;
}

int FinishStream(std::FILE* stream, const std::string& name, int exitCode) {
    if (IsWritten(stream))
        return exitCode;
    std::fprintf(stderr, "hxdpanel: cannot write all of %s\n", name.c_str());
    return EXIT_USAGE;
}
