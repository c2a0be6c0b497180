// Host runtime services (libolma-hal): directories, clock, sleep and buzzer.
//
// All functions have C linkage, never throw, and may be called from any thread.
#ifndef OLMA_HOST_H
#define OLMA_HOST_H

#ifdef __cplusplus
extern "C" {

// A directory of the host runtime, without a trailing slash; never null, "" when unknown. The text
// belongs to the runtime and stays valid until the next call with the same arguments.
//   kind 1: settings shared with the GUI (olma_app_conf.ini, vncConfig.ini)
//   kind 2: the project's data directory; its subdirectory "config" holds the time settings. The
//           time settings ask with option 1, the free-space channel without
//   kind 8: where the GUI's directory macro "$OLMA_DIR_USER" points
const char* Olma_GetDirectory(int kind, int option = 0);
#else
const char* Olma_GetDirectory(int kind, int option);
#endif

// Milliseconds of a clock that never steps; only differences mean anything.
long long Olma_GetTickCount(void);

// Suspends the calling thread.
void Olma_Sleep(unsigned int milliseconds);

// Sounds the buzzer and returns without waiting for the tone to end; 0 = done.
int Olma_Beep(unsigned int frequencyHz, unsigned int milliseconds);

// 0: the directory lies on the root file system; otherwise on a storage mounted separately.
int Olma_Check_Mount_Path(const char* directory);

#ifdef __cplusplus
}
#endif

#endif
