// The simulated panel's network, as far as the driver asks whether there is one.
#ifndef HXDPANEL_PANELNETWORK_H
#define HXDPANEL_PANELNETWORK_H

// Has the addresses that the driver pings before it asks a time server answer, until the sandbox
// ends: they become addresses of the panel's loopback interface. Where that is refused, or this
// machine has no ping, a script in place of the panel's ping answers for these addresses; one that
// is there already stays. False when neither can be done. Sandbox only.
bool AnswerReachCheck();
// Whether anything answers a ping: not without a cable.
void SetReachable(bool reachable);

#endif
