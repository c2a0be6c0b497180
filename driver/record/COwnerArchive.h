// A growable byte archive with a version header, through which the device's configuration blob is
// read. Not for two threads at once.
#ifndef HXD_COWNERARCHIVE_H
#define HXD_COWNERARCHIVE_H

#include "mfc/CArray.h"

enum ARCHIVESTATUS : int { ARCHIVE_LOAD = 0, ARCHIVE_STORE = 1 };

// What the archive itself writes as its two-byte header. A smaller number than ARCHIVE_FIRST_MARK
// in the first two bytes is no mark but data.
constexpr unsigned ARCHIVE_VERSION = 20001;
constexpr unsigned ARCHIVE_FIRST_MARK = 20000;

// Refused reads and writes change nothing and are not reported: callers preset their variables.
// Counts below 0 are refused.
class COwnerArchive {
public:
    COwnerArchive() = default;  // empty, in store mode at position 0
    virtual ~COwnerArchive() = default;

    // Writes n bytes at the position; in load mode it switches to store mode first.
    void SvrWrite(const unsigned char* data, int n);
    // Reads n bytes from the position; in store mode it switches to load mode first.
    void SvrRead(unsigned char* data, int n);
    // A new mode cuts the archive at the position (unless that is 0) and starts at 0; store mode
    // writes the header, load mode skips a mark if there is one. The same mode at position 0 does
    // the same without cutting; elsewhere it does nothing.
    void SvrChangeMode(ARCHIVESTATUS mode);
    // Makes room for n bytes at the position; new bytes are zero. Always 1.
    int mfCheckBuffer(int n);

    int GetSize() const { return m_arrBuffer.GetSize(); }
    int GetPosition() const { return m_nPosition; }
    void SetPosition(int position) { m_nPosition = position; }
    ARCHIVESTATUS GetMode() const { return m_eMode; }

private:
    void EnterMode();
    bool Fits(int n) const;

    CByteArray m_arrBuffer;
    int m_nPosition = 0;
    ARCHIVESTATUS m_eMode = ARCHIVE_STORE;
};

#endif
