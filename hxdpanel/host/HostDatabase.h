// The host's data objects: the variables of its scripts, by name, and the channels it has received.
#ifndef HXDPANEL_HOSTDATABASE_H
#define HXDPANEL_HOSTDATABASE_H

#include "common/Mutex.h"
#include "hxdpanel/host/HostValue.h"

#include <map>
#include <set>
#include <string>
#include <vector>

// Every operation may be called from any thread, from within another call into the driver too, and
// answers wrong use (null, negative or huge indices, a value of another type) with a status.
class HostDatabase final : public IRtdb {
public:
    static constexpr int MAX_CHANNELS = 65536;

    // A channel as it was last delivered.
    struct Received {
        bool delivered = false;
        HostValue value;
    };
    // What a driver's command did with the variables.
    struct Trace {
        std::vector<std::string> written;  // in the order of the first write
        std::set<std::string> unknown;     // names that the driver asked for and nobody has set
    };

    int GetParamType(const char* name, DATATYPE* type) override;
    int GetParamInt(const char* name, int* value) override;
    int GetParamDouble(const char* name, double* value) override;
    int GetParamString(const char* name, std::string* value) override;
    int SetParamInt(const char* name, int value) override;
    int SetParamDouble(const char* name, double value) override;
    int SetParamString(const char* name, const std::string* value) override;
    int GetChannelType(int channel, int* type) override;
    int ReservedSlot9() override { return HOST_BAD_ARGUMENT; }
    int ReservedSlot10() override { return HOST_BAD_ARGUMENT; }
    int ReservedSlot11() override { return HOST_BAD_ARGUMENT; }
    int SetChannelInt(int channel, int value) override;
    int SetChannelDouble(int channel, double value) override;
    int SetChannelString(int channel, const std::string* value) override;

    void SetVariable(const std::string& name, const HostValue& value);
    bool FindVariable(const std::string& name, HostValue& value) const;
    std::map<std::string, HostValue> Variables() const;
    Trace TakeTrace();  // since the last call

    Received Channel(int number) const;  // 1-based
    int ChannelCount() const;            // the highest number that was delivered

private:
    int Read(const char* name, DATATYPE type, HostValue& value) const;
    int Write(const char* name, const HostValue& value);
    int Deliver(int channel, const HostValue& value);

    mutable hxd::Mutex m_lock;
    std::map<std::string, HostValue> m_variables HXD_GUARDED_BY(m_lock);
    Trace m_trace HXD_GUARDED_BY(m_lock);
    std::vector<Received> m_channels HXD_GUARDED_BY(m_lock);
};

#endif
