// What is checked with the panel's libraries and the driver loaded, in this order.
#ifndef HXDCHECK_HOSTCHECKS_H
#define HXDCHECK_HOSTCHECKS_H

#include "hxdcheck/host/FindingPipe.h"

class DriverLibrary;

// What the process takes of the machine.
struct Usage {
    long memoryKiB;
    long threads;
};
Usage CurrentUsage();

void CheckQt(Findings& findings);
void CheckPlatform(Findings& findings);  // every function that only reads; sizes of its records
void CheckClock(Findings& findings);
void CheckFolders(Findings& findings);
void CheckNames(Findings& findings);  // name server, time servers
// The host interface, without starting the device. False when going on makes no sense.
bool CheckInterface(Findings& findings, const DriverLibrary& driver);
// Starts the device and reads the channels. Where starting it would set the panel's clock it asks
// first, or, unless mayAsk, leaves it. before: without the driver.
void CheckDevice(FindingPipe& findings, const DriverLibrary& driver, const Usage& before,
                 bool mayAsk);
void ActVisibly(FindingPipe& findings);  // asks before each act

#endif
