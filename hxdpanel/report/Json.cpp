#include "hxdpanel/report/Json.h"

#include <cmath>
#include <cstdint>

namespace {

std::string DumpList(const Json& list) {
    if (!list.is_array() || list.empty() || !list[0].is_object())
        return JsonLine(list);
    std::string text;
    for (const Json& element : list)
        text += (text.empty() ? "[\n    " : ",\n    ") + JsonLine(element);
    return text + "\n  ]";
}

// JSON has no word for "not a number".
Json JsonNumber(double number) {
    constexpr double EXACT = 9007199254740992.0;  // 2^53
    if (number == std::floor(number) && std::fabs(number) < EXACT)
        return static_cast<std::int64_t>(number);
    return number;
}

}  // namespace

Json JsonObject(const char* kind, const Json& members) {
    Json object = {{"format", JSON_FORMAT}, {"kind", kind}};
    object.update(members);
    return object;
}

std::string JsonLine(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void PrintJson(std::FILE* out, JsonLayout layout, const char* kind, const Json& members) {
    const Json object = JsonObject(kind, members);
    std::string text = JsonLine(object);
    if (layout == JsonLayout::DOCUMENT) {
        text.clear();
        for (const auto& member : object.items())
            text += (text.empty() ? "{\n  " : ",\n  ") + JsonLine(member.key()) + ": " +
                    DumpList(member.value());
        text += "\n}";
    }
    std::fprintf(out, "%s\n", text.c_str());
    std::fflush(out);
}

Json JsonStatus(int status, const std::string& meaning) {
    return {{"code", status}, {"meaning", meaning}};
}

Json JsonValue(const HostValue& value) {
    switch (value.type) {
        case DATATYPE_INTEGER:
            return value.integer;
        case DATATYPE_DOUBLE:
            return JsonNumber(value.number);
        default:
            return value.text;
    }
}

Json JsonVariable(const std::string& name, const HostValue& value) {
    return {{"name", name}, {"type", TypeName(value.type)}, {"value", JsonValue(value)}};
}

Json JsonText(const char* text) {
    return text != nullptr ? Json(text) : Json(nullptr);
}

Json TextOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}
