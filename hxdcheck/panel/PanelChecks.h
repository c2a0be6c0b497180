// What can be told of the panel without its libraries.
#ifndef HXDCHECK_PANELCHECKS_H
#define HXDCHECK_PANELCHECKS_H

#include "hxdcheck/report/Finding.h"

void CheckPaths(Findings& findings);
void CheckRights(Findings& findings);  // of the account that runs this program
void CheckTimeZone(Findings& findings);

#endif
