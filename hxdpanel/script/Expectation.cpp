#include "hxdpanel/script/Expectation.h"

#include "hxdpanel/base/Amounts.h"
#include "hxdpanel/base/Text.h"

#include <cmath>
#include <limits>
#include <sstream>

#include <QRegExp>
#include <QString>

namespace {

struct Operator {
    const char* sign;
    Expectation::Comparison comparison;
};
// Longer signs before their beginnings.
const Operator OPERATORS[] = {
    {"!=", Expectation::UNEQUAL},
    {"<=", Expectation::LESS_OR_EQUAL},
    {">=", Expectation::GREATER_OR_EQUAL},
    {"=", Expectation::EQUAL},
    {"<", Expectation::LESS},
    {">", Expectation::GREATER},
};

const char* const FORM =
    "expect CHANNEL = VALUE, expect VARIABLE = VALUE, expect status N, or expect panel ...; = may "
    "be != < <= > >=, a number may have ~ TOLERANCE, and /.../ is a pattern";

bool IsBetween(const std::string& text, char mark) {
    return text.size() >= 2 && text.front() == mark && text.back() == mark;
}

QString Unicode(const std::string& text) {
    return QString::fromUtf8(text.c_str(), static_cast<int>(text.size()));
}

bool TakeWanted(const std::string& text, Expectation& expectation, std::string& error) {
    expectation.wanted = text;
    if (IsBetween(text, '"') || IsBetween(text, '/')) {
        expectation.isPattern = text[0] == '/';
        expectation.isQuoted = !expectation.isPattern;
        expectation.wanted = text.substr(1, text.size() - 2);
        if (expectation.isPattern && !QRegExp(Unicode(expectation.wanted)).isValid())
            error = Quoted(text) + " is no regular expression";
        return error.empty();
    }
    const std::size_t tilde = text.rfind('~');
    double number = 0.0;
    if (tilde != std::string::npos && ParseNumber(Trimmed(text.substr(0, tilde)), number)) {
        expectation.wanted = Trimmed(text.substr(0, tilde));
        if (!ParseNumber(Trimmed(text.substr(tilde + 1)), expectation.tolerance) ||
            expectation.tolerance < 0.0)
            error = "after ~ comes how far the number may be away";
    }
    if (HasOpenQuote(text))
        error = "the quote is not closed at the end of the line";
    if (text.empty())
        error = "a value is missing; \"\" is the empty text";
    return error.empty();
}

// What follows "panel".
bool ParsePanel(const std::string& text, Expectation& expectation, std::string& error) {
    std::istringstream words(text);
    std::string word;
    words >> word;
    if (word == "not") {
        expectation.times = 0;
        words >> word;
    }
    expectation.subject = Expectation::PANEL;
    expectation.name = word;
    std::string rest;
    std::getline(words, rest);
    QRegExp count(QLatin1String("^(.*)\\s(\\d{1,6}) times$"));
    if (count.exactMatch(Unicode(rest))) {
        expectation.times = count.cap(2).toInt();
        rest = count.cap(1).toUtf8().constData();
    }
    expectation.wanted = Trimmed(rest);
    if (expectation.name.empty())
        error = "what the panel did is missing, for example: expect panel beeped 900 Hz 50 ms";
    return error.empty();
}

// The words between blanks, with one between any two and around all; "for" is for reading only.
std::string SingleSpaced(const std::string& text) {
    std::istringstream stream(text);
    std::string words = " ";
    for (std::string word; stream >> word;)
        words += word == "for" ? "" : word + " ";
    return words;
}

bool Compare(double actual, const Expectation& expectation, double wanted) {
    switch (expectation.comparison) {
        case Expectation::EQUAL:
            return std::fabs(actual - wanted) <= expectation.tolerance * (1 + 1e-9);
        case Expectation::UNEQUAL:
            return std::fabs(actual - wanted) > expectation.tolerance * (1 + 1e-9);
        case Expectation::LESS:
            return actual < wanted;
        case Expectation::LESS_OR_EQUAL:
            return actual <= wanted;
        case Expectation::GREATER:
            return actual > wanted;
        case Expectation::GREATER_OR_EQUAL:
            return actual >= wanted;
    }
    return false;
}

}  // namespace

bool ParseExpectation(const std::string& text, Expectation& expectation, std::string& error) {
    expectation = Expectation();
    std::istringstream stream(text);
    std::string first;
    stream >> first;
    const std::size_t sign = text.find_first_of("!=<>");
    const std::string rest = Trimmed(Trimmed(text).substr(first.size()));
    if (first == "panel" && !rest.empty() && rest.find_first_of("=<>!") != 0)
        return ParsePanel(rest, expectation, error);
    long long number = 0;
    if (first == "status" && ParseWhole(rest, std::numeric_limits<int>::min(),
                                        std::numeric_limits<unsigned>::max(), number)) {
        expectation.subject = Expectation::STATUS;
        expectation.wanted = std::to_string(static_cast<int>(number));
        return true;
    }
    for (const Operator& candidate : OPERATORS) {
        const std::string chars = candidate.sign;
        if (sign == std::string::npos || text.compare(sign, chars.size(), chars) != 0)
            continue;
        expectation.comparison = candidate.comparison;
        expectation.name = Trimmed(text.substr(0, sign));
        if (expectation.name.empty())
            break;
        return TakeWanted(Trimmed(text.substr(sign + chars.size())), expectation, error);
    }
    error = std::string("usage: ") + FORM;
    return false;
}

bool Holds(const Expectation& expectation, const HostValue& value, std::string& error) {
    const bool isText = value.type == DATATYPE_TEXT;
    const bool isSize = expectation.comparison != Expectation::EQUAL &&
                        expectation.comparison != Expectation::UNEQUAL;
    const std::string shown = isText ? value.text : ValueText(value);
    double actual = value.type == DATATYPE_INTEGER ? value.integer : value.number;
    double wanted = 0.0;
    if (!expectation.isPattern && !expectation.isQuoted && (!isText || isSize)) {
        if (!ParseNumber(expectation.wanted, wanted))
            error = "the value is a number, " + shown;
        else if (isText && !ParseNumber(value.text, actual))
            error = "the value is a text, " + Quoted(value.text);
        return error.empty() && Compare(actual, expectation, wanted);
    }
    if (isSize) {
        error = "only numbers are less or greater";
        return false;
    }
    // A text with a line feed or the like is written as it is shown.
    const bool matches = expectation.isPattern
                             ? QRegExp(Unicode(expectation.wanted)).indexIn(Unicode(shown)) >= 0
                             : shown == expectation.wanted || Visible(shown) == expectation.wanted;
    return matches == (expectation.comparison == Expectation::EQUAL);
}

bool IsEvent(const Expectation& expectation, const std::string& event) {
    if (IsBetween(expectation.wanted, '/')) {
        const std::string pattern = expectation.wanted.substr(1, expectation.wanted.size() - 2);
        return QRegExp(Unicode(pattern)).indexIn(Unicode(event)) >= 0;
    }
    return SingleSpaced(event).find(SingleSpaced(expectation.wanted)) != std::string::npos;
}
