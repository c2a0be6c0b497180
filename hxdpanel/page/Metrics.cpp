#include "hxdpanel/page/Metrics.h"

#include "HxdVersion.h"
#include "SimPanel.h"
#include "driver/record/ChannelTable.h"
#include "hxdpanel/base/Text.h"
#include "hxdpanel/report/ChannelReport.h"

#include <cctype>

namespace page {

namespace {

const std::string PREFIX = "hxdpanel_";

// Metrics are in base units.
const struct Unit {
    const char* shown;
    const char* name;
    double factor;
} UNITS[] = {
    {"%", "ratio", 0.01},     {"0..1", "ratio", 1.0}, {"MiB", "bytes", 1048576.0},
    {"ms", "seconds", 0.001}, {"s", "seconds", 1.0},  {"h", "seconds", 3600.0},
};

const Unit* UnitOf(const std::string& shown) {
    for (const Unit& unit : UNITS) {
        if (shown == unit.shown)
            return &unit;
    }
    return nullptr;
}

// "Memory available" as memory_available.
std::string MetricName(const std::string& name) {
    std::string metric;
    for (const char character : name) {
        const auto plain = static_cast<unsigned char>(character);
        metric += std::isalnum(plain) != 0 ? static_cast<char>(std::tolower(plain)) : '_';
    }
    return metric;
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char character : Visible(text)) {
        if (character == '"' || character == '\\')
            escaped += '\\';
        escaped += character;
    }
    return escaped;
}

class Writer {
public:
    explicit Writer(bool open) : m_bOpen(open) {}

    // unit: null for none; name ends with it.
    void Gauge(const std::string& name, const char* unit, const std::string& help,
               const std::string& value) {
        Begin(PREFIX + name, "gauge", unit, help);
        Sample(PREFIX + name, "", value);
    }
    void Counter(const std::string& name, const std::string& help) {
        Begin(m_bOpen ? PREFIX + name : PREFIX + name + "_total", "counter", nullptr, help);
    }
    void Count(const std::string& name, const std::string& labels, const std::string& value) {
        Sample(PREFIX + name + "_total", labels, value);
    }
    // Always 1: what it tells stands in the labels.
    void Info(const std::string& name, const std::string& help, const std::string& labels) {
        Begin(m_bOpen ? PREFIX + name : PREFIX + name + "_info", m_bOpen ? "info" : "gauge",
              nullptr, help);
        Sample(PREFIX + name + "_info", labels, "1");
    }
    std::string Text() const { return m_strText + (m_bOpen ? "# EOF\n" : ""); }

private:
    void Begin(const std::string& family, const char* type, const char* unit,
               const std::string& help) {
        m_strText += "# TYPE " + family + " " + type + "\n";
        if (m_bOpen && unit != nullptr)
            m_strText += "# UNIT " + family + " " + unit + "\n";
        m_strText += "# HELP " + family + " " + help + "\n";
    }
    void Sample(const std::string& name, const std::string& labels, const std::string& value) {
        m_strText += name + (labels.empty() ? "" : "{" + labels + "}") + " " + value + "\n";
    }

    const bool m_bOpen;
    std::string m_strText;
};

// A special value such as "not measured" is no number of its unit and is left out.
void WriteChannel(Writer& writer, const ShownChannel& channel) {
    if (channel.isText || !channel.received.delivered || channel.Meaning() != nullptr)
        return;
    const HostValue& value = channel.received.value;
    const double number = value.type == DATATYPE_INTEGER ? value.integer : value.number;
    const Unit* const unit = UnitOf(channel.unit);
    writer.Gauge(MetricName(channel.name) + (unit != nullptr ? std::string("_") + unit->name : ""),
                 unit != nullptr ? unit->name : nullptr,
                 "Channel " + std::to_string(channel.number) + ", " + channel.name + ".",
                 NumberText(unit != nullptr ? number * unit->factor : number));
}

void WriteFaults(Writer& writer) {
    const auto failures = sim::SimPanel::Instance().State().failures;
    writer.Counter("fault_hits", "Calls of the platform that a fault set by hand concerned.");
    for (const auto& failure : failures)
        writer.Count("fault_hits", "function=\"" + failure.first + "\"",
                     std::to_string(failure.second.hits));
}

}  // namespace

std::string MetricsText(const HostDatabase& database, const Counts& counts, bool open) {
    Writer writer(open);
    writer.Info("build", "The driver's and hxdpanel's version.",
                "version=\"" + Escaped(HXD_VERSION_TEXT) + "\"");
    writer.Info("panel", "The simulated panel.",
                "serial_number=\"" + Escaped(counts.serialNumber) + "\"");
    writer.Gauge("collection_status", nullptr, "Status of this reading, 0 when it is done.",
                 std::to_string(counts.status));
    writer.Counter("collections", "Collections that the driver has been asked for.");
    writer.Count("collections", "", std::to_string(counts.collections));
    writer.Counter("restarts", "How often the panel was switched off and on.");
    writer.Count("restarts", "", std::to_string(counts.restarts));
    WriteFaults(writer);
    for (int number = 1; number <= CHANNEL_COUNT; ++number)
        WriteChannel(writer, ShowChannel(database, number));
    return writer.Text();
}

const char* MetricsType(bool open) {
    return open ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                : "text/plain; version=0.0.4; charset=utf-8";
}

}  // namespace page
