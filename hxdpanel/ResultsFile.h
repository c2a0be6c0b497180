// The file that --csv and --junit name.
#ifndef HXDPANEL_RESULTSFILE_H
#define HXDPANEL_RESULTSFILE_H

#include "hxdpanel/base/Stream.h"
#include "hxdpanel/sandbox/Setup.h"

#include <string>

class ResultsFile {
public:
    // Empties it: there is something now to take the place of what was in it. standard: where
    // results go that have no file. False, after a message, when it cannot be written.
    bool Open(const sandbox::Setup& setup, std::FILE* standard);
    std::FILE* Stream() const { return m_pStream; }  // null: none is asked for
    // exitCode, or EXIT_USAGE, after a message, when a part did not get out.
    int Finish(int exitCode) const;

private:
    std::string m_strName;
    OwnedStream m_owned;  // null for standard output
    std::FILE* m_pStream = nullptr;
};

// The same for any stream.
int FinishStream(std::FILE* stream, const std::string& name, int exitCode);

#endif
