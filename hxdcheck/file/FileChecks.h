// The driver's file, and the program that will load it: what the loader will make of them.
#ifndef HXDCHECK_FILECHECKS_H
#define HXDCHECK_FILECHECKS_H

#include "hxdcheck/report/Finding.h"

#include <string>

// host: the program that will start the driver here; runtime: the panel's HMI runtime, "" when not
// named. True when the driver can be loaded.
bool CheckFiles(Findings& findings, const std::string& driver, const std::string& host,
                const std::string& runtime);

#endif
