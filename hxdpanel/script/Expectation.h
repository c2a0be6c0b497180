// What a script says about a value, apart from where the value comes from.
#ifndef HXDPANEL_EXPECTATION_H
#define HXDPANEL_EXPECTATION_H

#include "hxdpanel/host/HostValue.h"

#include <string>

struct Expectation {
    enum Subject { STATUS, PANEL, VALUE };
    enum Comparison { EQUAL, UNEQUAL, LESS, LESS_OR_EQUAL, GREATER, GREATER_OR_EQUAL };

    Subject subject = VALUE;
    std::string name;  // channel or variable; of the panel: what it did, "beeped"
    Comparison comparison = EQUAL;
    std::string wanted;      // without quotes or slashes; of the panel: words
    bool isPattern = false;  // wanted is a regular expression, to be found in the text
    bool isQuoted = false;   // wanted is a text, also where it looks like a number
    double tolerance = 0.0;  // of equal numbers
    int times = -1;          // how often the panel did it; -1: at least once
};

// "26 = 80", "10 = 0.8 ~ 0.05", "11 > 100", "serial = /^HX/", "status 4", "panel beeped 900 Hz 50
// ms", "panel not ran reboot", "panel beeped 900 Hz 2 times". False with the reason.
bool ParseExpectation(const std::string& text, Expectation& expectation, std::string& error);

// For STATUS and VALUE. False with the reason in error when the two cannot be compared.
bool Holds(const Expectation& expectation, const HostValue& value, std::string& error);
// Whether an event of the panel's is the one that is meant: its words hold the wanted ones.
bool IsEvent(const Expectation& expectation, const std::string& event);

#endif
