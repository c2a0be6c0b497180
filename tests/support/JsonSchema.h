// Holds a value against a JSON Schema of the keywords that docs/json-schema.json uses; any other
// one is a mismatch. Stricter than the standard: a member that the schema does not name is one,
// too.
#ifndef JSONSCHEMA_H
#define JSONSCHEMA_H

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>

class JsonSchema {
    using Json = nlohmann::json;

public:
    explicit JsonSchema(const Json& schema) : m_schema(schema) {}

    // "" for none. A value's kind says which of the schema's alternatives it is held against.
    std::string Mismatch(const Json& value) const {
        const Json rule = {{"$ref", "#/$defs/" + value.value("kind", "")}};
        const Json& kinds = m_schema["oneOf"];
        return std::count(kinds.begin(), kinds.end(), rule) == 1 ? Find(rule, value, "")
                                                                 : "no such kind";
    }

private:
    static bool IsOfType(const Json& value, const std::string& type) {
        return type == value.type_name() || (type == "integer" && value.is_number_integer());
    }

    static bool IsOfTypes(const Json& value, const Json& types) {
        if (types.is_string())
            return IsOfType(value, types);
        return std::any_of(types.begin(), types.end(),
                           [&](const Json& type) { return IsOfType(value, type); });
    }

    bool FitsOneOf(const Json& rules, const Json& value) const {
        return 1 == std::count_if(rules.begin(), rules.end(),
                                  [&](const Json& rule) { return Find(rule, value, "").empty(); });
    }

    std::string FindInMembers(const Json& rules, const Json& value, const std::string& path) const {
        std::string found;
        for (const auto& member : value.items()) {
            const std::string place = path + "/" + member.key();
            if (found.empty())
                found = rules.contains(member.key())
                            ? Find(rules[member.key()], member.value(), place)
                            : place + " is not in the schema";
        }
        return found;
    }

    std::string FindByKeyword(const std::string& keyword, const Json& rule, const Json& value,
                              const std::string& path) const {
        const auto unless = [&](bool fits) {
            return fits ? "" : path + ": " + value.dump() + " is not " + rule.dump();
        };
        if (keyword == "$ref")
            return Find(m_schema[Json::json_pointer(rule.get<std::string>().substr(1))], value,
                        path);
        if (keyword == "const")
            return unless(value == rule);
        if (keyword == "enum")
            return unless(std::count(rule.begin(), rule.end(), value) == 1);
        if (keyword == "type")
            return unless(IsOfTypes(value, rule));
        if (keyword == "oneOf")
            return unless(FitsOneOf(rule, value));
        if (keyword == "required")
            return unless(!value.is_object() ||
                          std::all_of(rule.begin(), rule.end(), [&](const Json& name) {
                              return value.contains(name.get<std::string>());
                          }));
        if (keyword == "properties")
            return value.is_object() ? FindInMembers(rule, value, path) : "";
        if (keyword == "items") {
            std::string found;
            for (const Json& item : value.is_array() ? value : Json::array())
                found = found.empty() ? Find(rule, item, path + "[]") : found;
            return found;
        }
        return "unknown keyword " + keyword;
    }

    std::string Find(const Json& schema, const Json& value, const std::string& path) const {
        std::string found;
        for (const auto& rule : schema.items()) {
            if (found.empty())
                found = FindByKeyword(rule.key(), rule.value(), value, path);
        }
        return found;
    }

    Json m_schema;
};

#endif
