// Backslash codes of format texts, read and written.
#include "mg/format.h"

namespace {

// Upper-case only: lower-case a to f are letters here, not digits.
int32_t HexValue(uint8_t c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The letter of a byte with a named code, or 0.
uint8_t NamedCode(uint32_t c) {
    switch (c) {
        case 8:
            return 'b';
        case 9:
            return 't';
        case 10:
            return 'n';
        case 12:
            return 'f';
        case 13:
            return 'r';
        case 32:
            return 's';
        case '\\':
            return '\\';
        default:
            return 0;
    }
}

const char kHexDigits[] = "0123456789ABCDEF";

}  // namespace

extern "C" {

uint8_t ParseEscape(const uint8_t** position, const uint8_t* end) {
    const uint8_t* p = *position;
    if (p >= end) return '\\';  // a trailing backslash stands for itself
    uint8_t c = *p++;
    uint8_t result;
    switch (c) {
        case 'b':
            result = 8;
            break;
        case 'f':
            result = 12;
            break;
        case 'n':
            result = 10;
            break;
        case 'r':
            result = 13;
            break;
        case 's':
            result = 32;
            break;
        case 't':
            result = 9;
            break;
        default: {
            int32_t high = HexValue(c);
            if (high < 0) {
                result = c;
                break;
            }
            result = static_cast<uint8_t>(high);
            if (p < end) {
                int32_t low = HexValue(*p);
                if (low >= 0) {
                    result = static_cast<uint8_t>(high * 16 + low);
                    ++p;
                }
            }
            break;
        }
    }
    *position = p;
    return result;
}

int32_t EmitEscape(uint8_t byte, uint8_t** out) {
    uint8_t* p = out ? *out : nullptr;
    uint8_t letter = NamedCode(byte);
    int32_t count;
    if (letter) {
        if (p) {
            p[0] = '\\';
            p[1] = letter;
        }
        count = 2;
    } else if (byte > 32 && byte < 127) {
        if (p) p[0] = byte;
        count = 1;
    } else {
        if (p) {
            p[0] = '\\';
            p[1] = static_cast<uint8_t>(kHexDigits[byte >> 4]);
            p[2] = static_cast<uint8_t>(kHexDigits[byte & 15]);
        }
        count = 3;
    }
    if (p) *out = p + count;
    return count;
}

int32_t EmitEscapeWide(uint16_t character, uint16_t** out) {
    uint16_t* p = out ? *out : nullptr;
    uint8_t letter = NamedCode(character);
    if (letter) {
        if (p) {
            p[0] = '\\';
            p[1] = letter;
            *out = p + 2;
        }
        return 4;
    }
    if (p) {
        p[0] = character;
        *out = p + 1;
    }
    return 2;
}

}  // extern "C"
