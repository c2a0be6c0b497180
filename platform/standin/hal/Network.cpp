#include "Guarded.h"
#include "olma_hal.h"

#include <cstdio>
#include <cstring>

using sim::Guarded;
using sim::Interface;
using sim::PanelState;

namespace {

const std::size_t MAC_TEXT_SIZE = 20;

// Names may fill the record's field without a terminating zero.
Interface* FindInterface(PanelState& state, const char* name) {
    for (Interface& candidate : state.interfaces) {
        if (candidate.plugged &&
            std::strncmp(candidate.record.name, name, sizeof candidate.record.name) == 0)
            return &candidate;
    }
    return nullptr;
}

std::vector<const Interface*> Plugged(const PanelState& state) {
    std::vector<const Interface*> plugged;
    for (const Interface& candidate : state.interfaces) {
        if (candidate.plugged)
            plugged.push_back(&candidate);
    }
    return plugged;
}

}  // namespace

int hal_get_network_count(unsigned int* count) {
    return Guarded(__func__, [count](PanelState& state) {
        if (!count)
            return -EINVAL;
        *count = static_cast<unsigned int>(Plugged(state).size());
        return 0;
    });
}

int hal_get_network(unsigned int index, struct hal_network_t* record) {
    return Guarded(__func__, [index, record](PanelState& state) {
        if (!record)
            return -EINVAL;
        const std::vector<const Interface*> plugged = Plugged(state);
        if (index >= plugged.size())
            return -ENODEV;
        *record = plugged[index]->record;
        return 0;
    });
}

int hal_get_network_byname(const char* name, struct hal_network_t* record) {
    return Guarded(__func__, [name, record](PanelState& state) {
        if (!name || !record)
            return -EINVAL;
        const Interface* const found = FindInterface(state, name);
        if (!found)
            return -ENODEV;
        *record = found->record;
        return 0;
    });
}

int hal_set_ip_addr(const struct hal_network_t* record) {
    return Guarded(__func__, [record](PanelState& state) {
        if (!record)
            return -EINVAL;
        Interface* const found = FindInterface(state, record->name);
        if (!found)
            return -ENODEV;
        found->record = *record;
        sim::Keep(state.appliedRecords, *record);
        return 0;
    });
}

int hal_get_mac_address(const char* name, char* text) {
    return Guarded(__func__, [name, text](PanelState& state) {
        if (!name || !text)
            return -EINVAL;
        const Interface* const found = FindInterface(state, name);
        if (!found)
            return -ENODEV;
        if (found->macAddress.empty())
            return -EIO;
        std::snprintf(text, MAC_TEXT_SIZE, "%s", found->macAddress.c_str());
        return 0;
    });
}
