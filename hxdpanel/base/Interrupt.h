// Ctrl-C and the request to end, as something to wait for beside other things.
#ifndef HXDPANEL_INTERRUPT_H
#define HXDPANEL_INTERRUPT_H

namespace interrupt {

// From now on SIGINT interrupts what is under way, and SIGTERM and SIGHUP end the program in good
// order. A third signal that nobody has answered ends it at once, for a driver that hangs.
void Install();

// Takes it as a request to end when this descriptor becomes readable, or its other end is closed.
void EndWith(int descriptor);

bool Pending();       // a signal has come
bool EndRequested();  // ... and it was not SIGINT
void Clear();         // Ctrl-C has been answered

// Waits until the time is over, the descriptor (-1: none) is readable or a signal is pending; true
// if one is.
bool Wait(int milliseconds, int descriptor = -1);
// A descriptor that is readable while a signal is pending, for poll().
int Descriptor();

}  // namespace interrupt

#endif
