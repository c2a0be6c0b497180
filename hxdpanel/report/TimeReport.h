// The state of time synchronisation, for people and for programs.
#ifndef HXDPANEL_TIMEREPORT_H
#define HXDPANEL_TIMEREPORT_H

#include "hxdpanel/host/HostDatabase.h"
#include "hxdpanel/report/Json.h"

#include <cstdio>
#include <string>

// lastResult: what the last ExecNTP of this run answered; empty: there was none.
void PrintTime(std::FILE* out, const HostDatabase& database, const std::string& lastResult);
Json TimeJson(const HostDatabase& database, const std::string& lastResult);

#endif
