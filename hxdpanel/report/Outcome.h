// What a command of the driver or a write to a channel has led to.
#ifndef HXDPANEL_OUTCOME_H
#define HXDPANEL_OUTCOME_H

#include "hxdpanel/host/HostDatabase.h"
#include "hxdpanel/report/Json.h"

#include <cstdio>
#include <string>
#include <vector>

struct Outcome {
    std::string command;  // as given; empty: a write
    int channel = 0;      // of a write
    int status = 0;
    std::string meaning;
    std::vector<std::string> variables = {};  // names of those that the command wrote
    std::vector<std::string> files = {};      // saved, as they are found on the machine
    bool filesVanish = false;                 // with the end of this run
    std::vector<std::string> notes = {};      // what the status does not tell

    const char* Kind() const { return channel != 0 ? "write" : "command"; }
};

// "0 (done)"; the host interface's own codes in hexadecimal, as they are documented.
std::string StatusText(int status, const std::string& meaning);
// Notes go to standard error.
void PrintOutcome(std::FILE* out, const HostDatabase& database, const Outcome& outcome);
Json OutcomeJson(const HostDatabase& database, const Outcome& outcome);

#endif
