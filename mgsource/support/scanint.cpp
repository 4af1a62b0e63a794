// Integer scanners. They never fail: no digits leave the position where it was, and too
// many saturate to the type.
#include <string.h>

#include "mg/dbgtools.h"
#include "mg/numscan.h"

MG_SOURCE_IDENTITY("mgsource\\support\\scanint.cpp", "$Revision: 1 $");

namespace {

bool IsBlank(char c) {
    return c == ' ';
}

int32_t DigitValue(char c, int32_t radix) {
    int32_t v;
    if (c >= '0' && c <= '9')
        v = c - '0';
    else if (c >= 'a' && c <= 'z')
        v = c - 'a' + 10;
    else if (c >= 'A' && c <= 'Z')
        v = c - 'A' + 10;
    else
        return -1;
    return v < radix ? v : -1;
}

// The unsigned type of the same size, for types 1 to 4.
NumType UnsignedForm(NumType type) {
    int32_t t = type & 15;
    return t >= NumIB && t <= NumIQ ? t + 4 : t;
}

// Blanks, then one sign when allowed; *negative tells which sign.
const char* SkipLead(const char* p, const char* end, bool takeSign, bool* negative) {
    while (p < end && IsBlank(*p)) ++p;
    *negative = false;
    if (takeSign && p < end && (*p == '+' || *p == '-')) {
        *negative = *p == '-';
        ++p;
    }
    return p;
}

int32_t ScanDecimalInteger(const char** position, int32_t length, NumType type, bool takeSign) {
    const char* p = *position;
    const char* end = p + (length > 0 ? length : 0);
    bool negative;
    p = SkipLead(p, end, takeSign, &negative);
    NumType accumulateType = takeSign ? type : UnsignedForm(type);
    uint32_t value = 0;
    int32_t digits = 0, overflow = 0;
    for (; p < end && *p >= '0' && *p <= '9'; ++p, ++digits)
        if (!overflow) overflow = DigitAccumulate(&value, *p, accumulateType, negative, 10);
    if (digits == 0) return 0;
    if (negative && !overflow) value = 0u - value;
    *position = p;
    return SaturateToType(static_cast<int32_t>(value), accumulateType, 0, 1);
}

int32_t ScanRadix(const char** position, int32_t length, NumType type, int32_t radix) {
    const char* p = *position;
    const char* end = p + (length > 0 ? length : 0);
    bool negative;
    p = SkipLead(p, end, true, &negative);
    // A signed target is read in the unsigned type of its size, so that text may fill its
    // bits; the sign is applied after the saturation.
    bool isSigned = NumTypeClass(type) == 0;
    NumType accumulateType = isSigned ? UnsignedForm(type) : type;
    uint32_t value = 0;
    int32_t digits = 0, overflow = 0;
    for (; p < end && DigitValue(*p, radix) >= 0; ++p, ++digits)
        if (!overflow) overflow = DigitAccumulate(&value, *p, accumulateType, isSigned, radix);
    if (digits == 0) return 0;
    *position = p;
    uint32_t v = static_cast<uint32_t>(SaturateToType(static_cast<int32_t>(value), type, 1, 0));
    return static_cast<int32_t>(negative ? 0u - v : v);
}

}  // namespace

extern "C" {

int32_t DigitAccumulate(uint32_t* accumulator, int32_t character, NumType type, int32_t negative,
                        int32_t radix) {
    int32_t t = type & 0xFF;
    bool isSigned = t >= 1 && t <= 30 && NumTypeClass(t) == 0;
    uint32_t old = *accumulator, r = static_cast<uint32_t>(radix);
    uint32_t product = old * r;
    bool overflow = (r != 0 && product / r != old) || (isSigned && (product & 0x80000000u));
    uint32_t digit;
    if (character >= '0' && character <= '9')
        digit = static_cast<uint32_t>(character - '0');
    else if (character >= 'A' && character <= 'Z')
        digit = static_cast<uint32_t>(character - 55);
    else
        digit = static_cast<uint32_t>(character - 87);
    uint32_t sum = product + digit;
    if (isSigned) {
        if (overflow || static_cast<int32_t>(sum) < 0) {
            *accumulator = 0x7FFFFFFFu + (negative ? 1 : 0);
            return 1;
        }
    } else if (overflow || sum < old) {
        *accumulator = negative && radix != 10 ? 0x7FFFFFFFu : 0xFFFFFFFFu;
        return 1;
    }
    *accumulator = sum;
    return 0;
}

int32_t SaturateToType(int32_t value, NumType type, int32_t fromUnsigned, int32_t clampNegative) {
    uint32_t u = static_cast<uint32_t>(value);
    switch (type & 15) {
        case NumIB:
            if (fromUnsigned) return u <= 0x7F ? value : 127;
            return value < -128 ? -128 : value > 127 ? 127 : value;
        case NumIW:
            if (fromUnsigned) return u <= 0x7FFF ? value : 32767;
            return value < -32768 ? -32768 : value > 32767 ? 32767 : value;
        case NumUB:
            if (clampNegative) return value < 0 ? 0 : value > 255 ? 255 : value;
            return value < 0 || value > 255 ? 255 : value;
        case NumUW:
            if (clampNegative) return value < 0 ? 0 : value > 65535 ? 65535 : value;
            return value < 0 || value > 65535 ? 65535 : value;
        default:
            return value;
    }
}

int32_t ScanInt(const char** position, int32_t length, NumType type) {
    return ScanDecimalInteger(position, length, type, true);
}

int32_t ScanUInt(const char** position, int32_t length, NumType type) {
    return ScanDecimalInteger(position, length, type, false);
}

int32_t ScanHex(const char** position, int32_t length, NumType type) {
    return ScanRadix(position, length, type, 16);
}

int32_t ScanOctal(const char** position, int32_t length, NumType type) {
    return ScanRadix(position, length, type, 8);
}

int32_t ScanBinary(const char** position, int32_t length, NumType type) {
    return ScanRadix(position, length, type, 2);
}

int32_t ScanNumberText(const char* text, int32_t length, NumType type, void* out, int32_t code) {
    const char* p = text;
    int32_t value;
    switch (code) {
        case NumCodeUnsigned:
            value = ScanUInt(&p, length, type);
            break;
        case NumCodeHex:
            value = ScanHex(&p, length, type);
            break;
        case NumCodeOctal:
            value = ScanOctal(&p, length, type);
            break;
        case NumCodeBinary:
            value = ScanBinary(&p, length, type);
            break;
        default:
            value = ScanInt(&p, length, type);
            break;
    }
    if (p == text) return 0;
    const char* end = text + length;
    while (p < end && IsBlank(*p)) ++p;
    int32_t result = p == end ? 1 : 0;
    int32_t t = type & 15;
    if (t < NumIB || t > NumFX) MG_FAIL();
    switch (t) {
        case NumIB:
        case NumUB:
            *static_cast<uint8_t*>(out) = static_cast<uint8_t>(value);
            break;
        case NumIW:
        case NumUW: {
            uint16_t v = static_cast<uint16_t>(value);
            memcpy(out, &v, 2);
            break;
        }
        case NumIL:
        case NumUL:
            memcpy(out, &value, 4);
            break;
        case NumIQ:
        case NumUQ: {
            int64_t v = value;
            memcpy(out, &v, 8);
            break;
        }
        default:
            NumConvert(code == NumCodeUnsigned ? NumUL : NumIL, &value, type, out);
            break;
    }
    return result;
}

}  // extern "C"
