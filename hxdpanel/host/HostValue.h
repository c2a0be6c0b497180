// A value of the host's: a variable of a script, or what a channel holds.
#ifndef HXDPANEL_HOSTVALUE_H
#define HXDPANEL_HOSTVALUE_H

#include "host.h"

#include <string>

struct HostValue {
    DATATYPE type = DATATYPE_INTEGER;
    int integer = 0;
    double number = 0.0;
    std::string text;

    static HostValue Integer(int value);
    static HostValue Double(double value);
    static HostValue Text(const std::string& value);
};

// Integers without superfluous digits, texts quoted where needed, control characters visible.
std::string ValueText(const HostValue& value);
// As an expectation of a script takes it: every text between quotes.
std::string ExpectationText(const HostValue& value);
const char* TypeName(DATATYPE type);  // "int", "double", "text"

// The type follows the text: integer (32 bits), else double, else text.
HostValue GuessValue(const std::string& text);
// The text as this type; false when it is none. The empty text is a zero.
bool ConvertValue(const std::string& text, DATATYPE type, HostValue& value);

// What NAME or NAME:TYPE and a text define: "x" "5", "x:text" "5". False with the reason in error.
struct Definition {
    std::string name;
    HostValue value;
};
bool ParseDefinition(const std::string& nameAndType, const std::string& text,
                     Definition& definition, std::string& error);

#endif
