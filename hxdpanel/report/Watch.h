// The channels, read again and again.
#ifndef HXDPANEL_WATCH_H
#define HXDPANEL_WATCH_H

#include <cstdio>
#include <functional>

class HostDatabase;

struct WatchOptions {
    double interval = 1.0;  // seconds from one reading to the next
    int count = 0;          // readings; 0: until interrupted
    bool csv = false;       // a line for each reading instead of a table
};

// read() brings the database up to date and returns the status; watching goes on after a failure.
// Returns the first status that was not 0, or 0.
int Watch(std::FILE* out, const HostDatabase& database, const WatchOptions& options,
          const std::function<int()>& read);

#endif
