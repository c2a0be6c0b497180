// The channels, read again and again.
#ifndef HXDPANEL_WATCH_H
#define HXDPANEL_WATCH_H

#include <cstdio>
#include <functional>
#include <vector>

class HostDatabase;

struct WatchOptions {
    enum Form {
        TABLE,  // on a terminal redrawn in place, elsewhere one below the other
        CSV,    // a line for each reading
        JSON,   // an object for each reading
    };

    double interval = 1.0;  // seconds from one reading to the next
    int count = 0;          // readings; 0: until interrupted
    Form form = TABLE;
    bool changes = false;       // only what differs from the reading before, a channel a line
    std::vector<int> channels;  // numbers
};

// read() brings the database up to date and returns the status; watching goes on after a failure.
// Returns the first status that was not 0, or 0.
int Watch(std::FILE* out, const HostDatabase& database, const WatchOptions& options,
          const std::function<int()>& read);

#endif
