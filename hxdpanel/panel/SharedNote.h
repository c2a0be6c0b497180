// A short text that a run leaves in a file for the runs beside it and for the next one.
#ifndef HXDPANEL_SHAREDNOTE_H
#define HXDPANEL_SHAREDNOTE_H

#include "common/File.h"

#include <string>

// The file is made once and stays: a run that had it open while it was removed would share a file
// that the others do not see. Without an open file there is no note and nobody to share it with.
class SharedNote {
public:
    void Open(const std::string& path, bool create);
    void Close() { m_file.close(); }

    // True when no other run has the note open; none gets it then until Share(). Otherwise it is
    // shared already, perhaps after a moment.
    bool TakeAlone() const;
    void Share() const;

    bool Read(std::string& text);  // false: there is no note
    bool Write(const std::string& text) const;
    void Erase() const;

private:
    HXDCTRL::File m_file;  // empty: no note; otherwise its text and a line feed
};

#endif
