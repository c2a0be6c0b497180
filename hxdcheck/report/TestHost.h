// Starts the test host, passes on what it finds, and tells what became of it.
#ifndef HXDCHECK_TESTHOST_H
#define HXDCHECK_TESTHOST_H

#include "hxdcheck/report/Report.h"

#include <string>
#include <vector>

// command: the program and its arguments. A test host that crashes or stays in a check is ended and
// becomes a finding of its own. Returns when the test host has ended.
void RunTestHost(Report& report, const std::vector<std::string>& command);

#endif
