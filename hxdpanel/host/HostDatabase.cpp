#include "hxdpanel/host/HostDatabase.h"

#include "driver/record/ChannelTable.h"

#include <algorithm>

namespace {

constexpr int UNKNOWN_NAME = 1;  // any number but 0 tells the driver that the name is no variable

}  // namespace

int HostDatabase::GetParamType(const char* name, DATATYPE* type) {
    if (name == nullptr || type == nullptr)
        return HOST_BAD_ARGUMENT;
    const hxd::MutexLock locker(m_lock);
    const auto found = m_variables.find(name);
    if (found == m_variables.end()) {
        m_trace.unknown.insert(name);
        return UNKNOWN_NAME;
    }
    *type = found->second.type;
    return HOST_OK;
}

int HostDatabase::Read(const char* name, DATATYPE type, HostValue& value) const {
    if (name == nullptr)
        return HOST_BAD_ARGUMENT;
    const hxd::MutexLock locker(m_lock);
    const auto found = m_variables.find(name);
    if (found == m_variables.end())
        return UNKNOWN_NAME;
    value = found->second;
    return value.type == type ? HOST_OK : HOST_BAD_ARGUMENT;
}

int HostDatabase::GetParamInt(const char* name, int* value) {
    HostValue found;
    const int status = Read(name, DATATYPE_INTEGER, found);
    if (status == HOST_OK && value != nullptr)
        *value = found.integer;
    return value != nullptr ? status : HOST_BAD_ARGUMENT;
}

int HostDatabase::GetParamDouble(const char* name, double* value) {
    HostValue found;
    const int status = Read(name, DATATYPE_DOUBLE, found);
    if (status == HOST_OK && value != nullptr)
        *value = found.number;
    return value != nullptr ? status : HOST_BAD_ARGUMENT;
}

int HostDatabase::GetParamString(const char* name, std::string* value) {
    HostValue found;
    const int status = Read(name, DATATYPE_TEXT, found);
    if (status == HOST_OK && value != nullptr)
        *value = found.text;
    return value != nullptr ? status : HOST_BAD_ARGUMENT;
}

// A variable keeps its type: a driver cannot turn a number into a text.
int HostDatabase::Write(const char* name, const HostValue& value) {
    if (name == nullptr)
        return HOST_BAD_ARGUMENT;
    const hxd::MutexLock locker(m_lock);
    const auto found = m_variables.find(name);
    if (found == m_variables.end()) {
        m_trace.unknown.insert(name);
        return UNKNOWN_NAME;
    }
    if (found->second.type != value.type)
        return HOST_BAD_ARGUMENT;
    found->second = value;
    std::vector<std::string>& written = m_trace.written;
    if (std::find(written.begin(), written.end(), name) == written.end())
        written.emplace_back(name);
    return HOST_OK;
}

int HostDatabase::SetParamInt(const char* name, int value) {
    return Write(name, HostValue::Integer(value));
}

int HostDatabase::SetParamDouble(const char* name, double value) {
    return Write(name, HostValue::Double(value));
}

int HostDatabase::SetParamString(const char* name, const std::string* value) {
    return value != nullptr ? Write(name, HostValue::Text(*value)) : HOST_BAD_ARGUMENT;
}

int HostDatabase::GetChannelType(int channel, int* type) {
    if (type == nullptr || channel < 0 || channel >= MAX_CHANNELS)
        return HOST_BAD_ARGUMENT;
    const ChannelRow* const row = FindChannel(channel + 1);
    *type = row != nullptr && row->kind == ChannelRow::TEXT ? DATATYPE_TEXT : DATATYPE_DOUBLE;
    return HOST_OK;
}

int HostDatabase::Deliver(int channel, const HostValue& value) {
    if (channel < 0 || channel >= MAX_CHANNELS)
        return HOST_BAD_ARGUMENT;
    const hxd::MutexLock locker(m_lock);
    const std::size_t index = static_cast<std::size_t>(channel);
    if (index >= m_channels.size())
        m_channels.resize(index + 1);
    m_channels[index] = {true, value};
    return HOST_OK;
}

int HostDatabase::SetChannelInt(int channel, int value) {
    return Deliver(channel, HostValue::Integer(value));
}

int HostDatabase::SetChannelDouble(int channel, double value) {
    return Deliver(channel, HostValue::Double(value));
}

int HostDatabase::SetChannelString(int channel, const std::string* value) {
    return value != nullptr ? Deliver(channel, HostValue::Text(*value)) : HOST_BAD_ARGUMENT;
}

void HostDatabase::SetVariable(const std::string& name, const HostValue& value) {
    const hxd::MutexLock locker(m_lock);
    m_variables[name] = value;
}

bool HostDatabase::FindVariable(const std::string& name, HostValue& value) const {
    const hxd::MutexLock locker(m_lock);
    const auto found = m_variables.find(name);
    if (found == m_variables.end())
        return false;
    value = found->second;
    return true;
}

std::map<std::string, HostValue> HostDatabase::Variables() const {
    const hxd::MutexLock locker(m_lock);
    return m_variables;
}

HostDatabase::Trace HostDatabase::TakeTrace() {
    const hxd::MutexLock locker(m_lock);
    Trace taken;
    std::swap(taken, m_trace);
    return taken;
}

HostDatabase::Received HostDatabase::Channel(int number) const {
    const hxd::MutexLock locker(m_lock);
    const std::size_t index = static_cast<std::size_t>(number) - 1;
    return index < m_channels.size() ? m_channels[index] : Received();
}

int HostDatabase::ChannelCount() const {
    const hxd::MutexLock locker(m_lock);
    return static_cast<int>(m_channels.size());
}
