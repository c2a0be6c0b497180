// The panel in numbers, for Prometheus and what understands its formats.
#ifndef HXDPANEL_METRICS_H
#define HXDPANEL_METRICS_H

#include "hxdpanel/host/HostDatabase.h"

#include <string>

namespace page {

struct Counts {
    std::string serialNumber;
    int status = 0;  // of the reading
    unsigned long long collections = 0;
    int restarts = 0;
};

// open: OpenMetrics; otherwise the text format that came before it.
std::string MetricsText(const HostDatabase& database, const Counts& counts, bool open);
const char* MetricsType(bool open);  // for the Content-Type

}  // namespace page

#endif
