#include "hxdpanel/host/HostValue.h"

#include "hxdpanel/base/Text.h"

#include <QRegExp>
#include <QString>

namespace {

struct Type {
    DATATYPE type;
    const char* name;
};
constexpr Type TYPES[] = {
    {DATATYPE_INTEGER, "int"}, {DATATYPE_DOUBLE, "double"}, {DATATYPE_TEXT, "text"}};

// "inf" and "nan", which the conversion would take as well, are more likely meant as texts.
bool ParseDouble(const QString& text, double& number) {
    const QRegExp pattern(QLatin1String("[+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][+-]?[0-9]+)?"));
    bool valid = pattern.exactMatch(text);
    if (valid)
        number = text.toDouble(&valid);
    return valid;
}

}  // namespace

HostValue HostValue::Integer(int value) {
    HostValue result;
    result.integer = value;
    return result;
}

HostValue HostValue::Double(double value) {
    HostValue result;
    result.type = DATATYPE_DOUBLE;
    result.number = value;
    return result;
}

HostValue HostValue::Text(const std::string& value) {
    HostValue result;
    result.type = DATATYPE_TEXT;
    result.text = value;
    return result;
}

std::string ValueText(const HostValue& value) {
    switch (value.type) {
        case DATATYPE_INTEGER:
            return std::to_string(value.integer);
        case DATATYPE_DOUBLE:
            return NumberText(value.number);
        default:
            return Quoted(value.text);
    }
}

std::string ExpectationText(const HostValue& value) {
    return value.type == DATATYPE_TEXT ? '"' + Visible(value.text) + '"' : ValueText(value);
}

const char* TypeName(DATATYPE type) {
    for (const Type& row : TYPES) {
        if (row.type == type)
            return row.name;
    }
    return "unknown";
}

HostValue GuessValue(const std::string& text) {
    HostValue value;
    for (const DATATYPE type : {DATATYPE_INTEGER, DATATYPE_DOUBLE}) {
        if (!text.empty() && ConvertValue(text, type, value))
            return value;
    }
    return HostValue::Text(text);
}

bool ConvertValue(const std::string& text, DATATYPE type, HostValue& value) {
    if (type == DATATYPE_TEXT) {
        value = HostValue::Text(text);
        return true;
    }
    const QString digits = QString::fromLatin1(text.empty() ? "0" : text.c_str());
    double number = 0.0;
    if (!ParseDouble(digits, number))
        return false;
    if (type == DATATYPE_DOUBLE) {
        value = HostValue::Double(number);
        return true;
    }
    bool valid = false;
    value = HostValue::Integer(digits.toInt(&valid));
    return valid;
}

bool ParseDefinition(const std::string& nameAndType, const std::string& text,
                     Definition& definition, std::string& error) {
    const std::size_t colon = nameAndType.rfind(':');
    definition.name = Trimmed(nameAndType.substr(0, colon));
    if (definition.name.empty() ||
        definition.name.find_first_of(",()=:\" \t") != std::string::npos) {
        error = (definition.name.empty() ? Quoted(nameAndType) : Visible(nameAndType)) +
                " cannot be a variable's name";
        return false;
    }
    if (colon == std::string::npos) {
        definition.value = GuessValue(text);
        return true;
    }
    const std::string typeName = nameAndType.substr(colon + 1);
    for (const Type& row : TYPES) {
        if (!EqualNames(typeName, row.name))
            continue;
        if (ConvertValue(text, row.type, definition.value))
            return true;
        error = Quoted(text) + " is not " + (row.type == DATATYPE_DOUBLE ? "a double" : "an int");
        return false;
    }
    error = Quoted(typeName) + " is not a type: int, double or text";
    return false;
}
