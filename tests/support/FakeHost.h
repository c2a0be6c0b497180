// A host for tests: its parameters, and the channel values it was given.
#ifndef HXD_TESTS_FAKEHOST_H
#define HXD_TESTS_FAKEHOST_H

#include "host.h"

#include <functional>
#include <map>
#include <string>

class FakeHost final : public IRtdb {
public:
    std::map<std::string, int> ints;
    std::map<std::string, double> doubles;
    std::map<std::string, std::string> texts;
    std::map<int, double> numberChannels;
    std::map<int, int> intChannels;
    std::map<int, std::string> textChannels;
    std::function<int(int)> channelType = [](int) { return DATATYPE_DOUBLE; };
    std::function<void()> onDelivery = [] {};
    std::function<void()> onParameter = [] {};  // when a parameter's type is asked
    std::string asked;                          // its name
    std::function<void()> onValue = [] {};      // when a parameter is read or written
    int status = 0;                             // of every call

    int GetParamType(const char* name, DATATYPE* type) override {
        asked = name;
        onParameter();
        if (ints.count(name) != 0)
            *type = DATATYPE_INTEGER;
        else if (doubles.count(name) != 0)
            *type = DATATYPE_DOUBLE;
        else if (texts.count(name) != 0)
            *type = DATATYPE_TEXT;
        else
            return -1;
        return status;
    }
    int GetParamInt(const char* name, int* value) override { return Get(ints, name, *value); }
    int GetParamDouble(const char* name, double* value) override {
        return Get(doubles, name, *value);
    }
    int GetParamString(const char* name, std::string* value) override {
        return Get(texts, name, *value);
    }
    int SetParamInt(const char* name, int value) override { return Set(ints, name, value); }
    int SetParamDouble(const char* name, double value) override {
        return Set(doubles, name, value);
    }
    int SetParamString(const char* name, const std::string* value) override {
        return Set(texts, name, *value);
    }
    int GetChannelType(int channel, int* type) override {
        *type = channelType(channel);
        return status;
    }
    int ReservedSlot9() override { return Unexpected(); }
    int ReservedSlot10() override { return Unexpected(); }
    int ReservedSlot11() override { return Unexpected(); }
    int SetChannelInt(int channel, int value) override {
        intChannels[channel] = value;
        onDelivery();
        return status;
    }
    int SetChannelDouble(int channel, double value) override {
        numberChannels[channel] = value;
        onDelivery();
        return status;
    }
    int SetChannelString(int channel, const std::string* value) override {
        textChannels[channel] = *value;
        onDelivery();
        return status;
    }

    int unexpectedCalls = 0;

private:
    template <class VALUE>
    int Get(const std::map<std::string, VALUE>& values, const char* name, VALUE& value) {
        onValue();
        const auto found = values.find(name);
        if (found == values.end())
            return -1;
        value = found->second;
        return status;
    }
    template <class VALUE>
    int Set(std::map<std::string, VALUE>& values, const char* name, const VALUE& value) {
        onValue();
        values[name] = value;
        return status;
    }
    int Unexpected() { return ++unexpectedCalls; }
};

#endif
