// When the clock is due for a synchronisation.
#ifndef HXD_NTPTRIGGERS_H
#define HXD_NTPTRIGGERS_H

#include "ntp/ntpCfgParam.h"

// What a change of the settings asks for; a change of the servers alone asks for nothing.
struct NtpTriggers {
    bool justEnabled;
    bool switchedToAutomatic;
    bool periodChanged;
};

NtpTriggers CompareSettings(const ntpCfgParam& before, const ntpCfgParam& now);

// True while switched on and automatic, with a trigger or when the period has elapsed. It counts
// from the start of the control thread or from the end of the last synchronisation that this thread
// has made; those on demand do not count. A period of 0 or less, which only a hand-edited file can
// have, is always over.
bool SynchronisationDue(const ntpCfgParam& now, const NtpTriggers& triggers, long long elapsedMs);

#endif
