// What programs are shown: one object for each result, as docs/json.md describes it.
#ifndef HXDPANEL_JSON_H
#define HXDPANEL_JSON_H

#include "hxdpanel/host/HostValue.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>

using Json = nlohmann::ordered_json;

// Grows when a member is removed or changes its meaning; new members do not change it.
constexpr int JSON_FORMAT = 1;

enum class JsonLayout {
    DOCUMENT,  // a member a line, and an element a line where it is a list of objects
    LINE,
};

// kind: what the object is about. Bytes that are no UTF-8 become replacement characters.
Json JsonObject(const char* kind, const Json& members);
std::string JsonLine(const Json& value);  // without a line feed
void PrintJson(std::FILE* out, JsonLayout layout, const char* kind, const Json& members);

Json JsonStatus(int status, const std::string& meaning);
// Whole numbers without a fraction.
Json JsonValue(const HostValue& value);
Json JsonVariable(const std::string& name, const HostValue& value);
Json JsonText(const char* text);           // null for null
Json TextOrNull(const std::string& text);  // null for an empty one

#endif
