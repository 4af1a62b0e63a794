// The fields of a decimal form as "sign|exponent|mdigits|digits", the sign and the digit bytes
// in hex, for comparisons of the whole record.
#pragma once

#include <stdio.h>

#include <string>

#include "mg/numtext.h"

inline std::string DecimalFields(const DecimalNumber& d) {
    char text[64];
    snprintf(text, sizeof text, "%X|%d|%d|", d.sign, d.exponent, d.mdigits);
    std::string out = text;
    for (uint8_t b : d.digits) {
        snprintf(text, sizeof text, "%02X", b);
        out += text;
    }
    return out;
}
