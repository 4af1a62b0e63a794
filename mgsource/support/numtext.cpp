// Numbers as text: the entry NumToText with its format codes, the writer of the packed
// decimal form, the radix writers and the 32-bit readers.
#include "mg/numtext.h"

#include <string.h>

#include "mg/dbgtools.h"
#include "mg/support.h"

MG_SOURCE_IDENTITY("mgsource\\support\\numtext.cpp", "$Revision: 1 $");

namespace {

const char kDigits[] = "0123456789ABCDEF";

// Builds the digits backward from a fixed place in the buffer, then moves them to the front.
int32_t WriteRadix(uint32_t value, uint32_t radix, int32_t place, bool negative, char* out) {
    int32_t p = place;
    out[p] = 0;
    do {
        out[--p] = kDigits[value % radix];
        value /= radix;
    } while (value != 0);
    if (negative) out[--p] = '-';
    int32_t length = place - p;
    memmove(out, out + p, static_cast<size_t>(length) + 1);
    return length;
}

// Appends within a limit: what does not fit is dropped, so a short buffer never overflows.
struct Writer {
    char* out;
    int32_t limit;
    int32_t n = 0;
    void Put(char c) {
        if (n < limit) out[n++] = c;
    }
    void Put(const char* s) {
        while (*s) Put(*s++);
    }
};

// Copies text with a NUL into a buffer of outSize bytes; the result is the text's length.
int32_t CopyOut(const char* text, int32_t length, char* out, int32_t outSize) {
    if (outSize > 0) {
        int32_t n = length < outSize - 1 ? length : outSize - 1;
        memcpy(out, text, static_cast<size_t>(n));
        out[n] = 0;
    }
    return length;
}

void Terminate(char* out, int32_t length, int32_t outSize) {
    if (length >= 0 && length < outSize) out[length] = 0;
}

int32_t IntegerText(const void* number, NumType type, int32_t code, char* out, int32_t outSize) {
    char scratch[40];
    int32_t t = type & 15, length;
    switch (code) {
        case NumCodeDecimal:
            if (NumTypeClass(type) == 1 && (type & 0xFF) >= 1 && (type & 0xFF) <= 30)
                length = UInt32ToDecimalText(NumToUInt32(type, number), scratch);
            else
                length = Int32ToDecimalText(NumToInt32(type, number), scratch);
            break;
        case NumCodeUnsigned:
            length = UInt32ToDecimalText(NumToUInt32(type, number), scratch);
            break;
        default: {
            uint32_t v = static_cast<uint32_t>(NumToInt32(type, number));
            if (t == NumIB || t == NumUB) v &= 0xFF;
            if (t == NumIW || t == NumUW) v &= 0xFFFF;
            length = code == NumCodeHex     ? UInt32ToHexText(v, scratch)
                     : code == NumCodeOctal ? UInt32ToOctalText(v, scratch)
                                            : UInt32ToBinaryText(v, scratch);
            break;
        }
    }
    return CopyOut(scratch, length, out, outSize);
}

// One real value through the decimal form.
int32_t RealText(Extended value, int32_t code, char* out, int32_t maxLength, char mark,
                 DecimalNumber* decimal) {
    ExtendedToDecimal(value, code >= 18 ? 17 : code, decimal);
    return DecimalToText(decimal, code, out, maxLength, mark);
}

enum Notation { kPlain, kEngineering, kSI };

// One part of a complex number in engineering or SI notation, through the real type of the
// same precision.
int32_t PartNotation(Notation notation, Extended value, NumType realType, int32_t frac, char* out,
                     int32_t outSize, char mark, int32_t* prefixExponent) {
    alignas(16) uint8_t cell[32];
    NumStore(realType, cell, ExtendedPair{value, 0});
    return notation == kEngineering
               ? NumToEngineering(cell, realType, frac, outSize, out, mark, prefixExponent)
               : NumToSIOrEngineering(cell, realType, frac, outSize, out, mark, prefixExponent);
}

int32_t ComplexText(const void* number, NumType type, int32_t code, Notation notation, int32_t frac,
                    char* out, int32_t outSize, char mark, int32_t* prefixExponent) {
    ExtendedPair v = NumLoad(type, number);
    bool polar = code < -64;
    if (polar) {
        code += 100;
        Extended magnitude, argument;
        RectangularToPolar(v.re, v.im, &magnitude, &argument);
        v = ExtendedPair{magnitude, argument};
    }
    NumType realType = (type & 15) - 3;
    int32_t firstSpace = outSize / 2, n, second;
    DecimalNumber first, last;
    bool secondNegative = false;
    if (notation == kPlain) {
        n = RealText(v.re, code, out, firstSpace, mark, &first);
        ExtendedToDecimal(v.im, code >= 18 ? 17 : code, &last);
    } else {
        int32_t saved = prefixExponent ? *prefixExponent : 0;
        n = PartNotation(notation, v.re, realType, frac, out, firstSpace, mark, prefixExponent);
        if (prefixExponent) {
            int32_t firstExponent = *prefixExponent;
            *prefixExponent = saved;
            char probe[1024];
            PartNotation(notation, v.im, realType, frac, probe, sizeof probe, mark, prefixExponent);
            if (*prefixExponent != firstExponent) {
                // No common power of ten: each part shows its own exponent.
                *prefixExponent = saved;
                n = PartNotation(notation, v.re, realType, frac, out, firstSpace, mark, nullptr);
                prefixExponent = nullptr;
            } else {
                *prefixExponent = saved;
            }
        }
        if (n < 0) n = 0;
    }
    Writer w{out, outSize, n};
    w.Put(' ');
    if (polar) {
        w.Put("arg ");
    } else {
        if (notation == kPlain) {
            // The sign of the second part stands at its digits; a NaN has none.
            secondNegative =
                (last.sign & DecimalSignNegative) && last.exponent != DecimalExponentNaN;
        } else {
            secondNegative = v.im < 0;
        }
        if (!secondNegative) w.Put('+');
    }
    int32_t room = outSize - w.n - 2;
    if (room < 0) room = 0;
    if (notation == kPlain)
        second = DecimalToText(&last, code, out + w.n, room, mark);
    else
        second =
            PartNotation(notation, v.im, realType, frac, out + w.n, room, mark, prefixExponent);
    w.n += second > 0 ? second : 0;
    if (!polar && outSize - w.n >= 2) w.Put(" i");
    Terminate(out, w.n, outSize);
    return w.n;
}

uint8_t Nibble(const DecimalNumber* d, int32_t i) {
    if (i < 0 || i > 17) return 0;
    return static_cast<uint8_t>((d->digits[i / 2] >> (i & 1 ? 4 : 0)) & 15);
}

}  // namespace

extern "C" {

int32_t Int32ToDecimalText(int32_t value, char* out) {
    uint32_t u = static_cast<uint32_t>(value);
    return WriteRadix(value < 0 ? 0u - u : u, 10, 12, value < 0, out);
}

int32_t UInt32ToDecimalText(uint32_t value, char* out) {
    return WriteRadix(value, 10, 12, false, out);
}
int32_t UInt32ToHexText(uint32_t value, char* out) {
    return WriteRadix(value, 16, 8, false, out);
}
int32_t UInt32ToOctalText(uint32_t value, char* out) {
    return WriteRadix(value, 8, 12, false, out);
}
int32_t UInt32ToBinaryText(uint32_t value, char* out) {
    return WriteRadix(value, 2, 32, false, out);
}

int32_t NumToInt32(NumType type, const void* number) {
    if (!number) return 0;
    int32_t v;
    switch (type & 15) {
        case NumIB:
            return *static_cast<const int8_t*>(number);
        case NumUB:
            return *static_cast<const uint8_t*>(number);
        case NumIW: {
            int16_t s;
            memcpy(&s, number, 2);
            return s;
        }
        case NumUW: {
            uint16_t s;
            memcpy(&s, number, 2);
            return s;
        }
        case NumIL:
        case NumUL:
            memcpy(&v, number, 4);
            return v;
        case NumIQ:
        case NumUQ: {
            uint64_t q;
            memcpy(&q, number, 8);
            return static_cast<int32_t>(static_cast<uint32_t>(q));
        }
        default:
            NumConvert(type, number, NumIL, &v);
            return v;
    }
}

uint32_t NumToUInt32(NumType type, const void* number) {
    if (!number) return 0;
    switch (type & 15) {
        case NumIB:
        case NumUB:
        case NumIW:
        case NumUW:
        case NumIL:
        case NumUL:
        case NumIQ:
        case NumUQ:
            return static_cast<uint32_t>(NumToInt32(type, number));
        default: {
            uint32_t v;
            NumConvert(type, number, NumUL, &v);
            return v;
        }
    }
}

int32_t DecimalToText(const DecimalNumber* decimal, int32_t code, char* out, int32_t maxLength,
                      char mark) {
    Writer w{out, maxLength > 0 ? maxLength : 0};
    if (decimal->exponent == DecimalExponentNaN) {
        w.Put("NaN");
        return w.n;
    }
    if (decimal->exponent == DecimalExponentInfinity) {
        if (decimal->sign & DecimalSignNegative) w.Put('-');
        w.Put("Inf");
        return w.n;
    }
    if (decimal->sign & DecimalSignNegative) w.Put('-');
    int32_t mdigits = decimal->mdigits;
    int32_t e = mdigits + decimal->exponent;

    if (code < -63) code = -63;
    if (code <= 0 && (e - code > maxLength - 4 || e >= 308)) code = 1 - code;
    if (code > maxLength - 8) code = maxLength - 8 > 0 ? maxLength - 8 : 0;

    auto digit = [&](int32_t index) {
        uint8_t d = Nibble(decimal, index);
        if (d > 9) {
            const uint8_t* m = decimal->digits;
            DPrintf("sign %d, exp %d, mdigits %d, m %x %x %x %x %x %x %x %x %x", decimal->sign,
                    decimal->exponent, decimal->mdigits, m[0], m[1], m[2], m[3], m[4], m[5], m[6],
                    m[7], m[8]);
            MG_FAIL();
        }
        w.Put(static_cast<char>('0' + d));
    };

    if (code >= 1) {
        bool zero = e < -4915;
        if (zero) {
            w.n = 0;  // the sign is taken back
            e = 0;
        }
        for (int32_t j = 0; j < code; ++j) {
            if (zero)
                w.Put('0');
            else
                digit(mdigits - j);
            if (j == 0 && code > 1) w.Put(mark);
        }
        w.Put('E');
        w.Put(e < 0 ? '-' : '+');
        char exponent[16];
        Int32ToDecimalText(e < 0 ? -e : e, exponent);
        w.Put(exponent);
        return w.n;
    }

    int32_t f = -code;
    if (e >= 0) {
        bool started = false;
        for (int32_t j = 0; j <= e; ++j) {
            int32_t index = mdigits - j;
            if (!started && Nibble(decimal, index) == 0) continue;
            started = true;
            digit(index);
        }
        if (!started) w.Put('0');
        if (f != 0) w.Put(mark);
        for (int32_t j = 1; j <= f; ++j) digit(mdigits - e - j);
    } else if (f != 0) {
        w.Put('0');
        w.Put(mark);
        int32_t zeros = f < -e - 1 ? f : -e - 1;
        for (int32_t j = 0; j < zeros; ++j) w.Put('0');
        for (int32_t j = 0; j < f - zeros; ++j) digit(mdigits - j);
    } else {
        w.Put('0');
    }
    return w.n;
}

int32_t NumToText(const void* number, NumType type, int32_t code, char* out, int32_t outSize,
                  char mark, int32_t* prefixExponent) {
    int32_t typeClass = NumTypeClass(type);
    if (code >= NumCodeDecimal && code <= NumCodeBinary)
        return IntegerText(number, type, code, out, outSize);
    if (!number)
        return typeClass == 3 ? CopyOut("0 + 0i", 6, out, outSize) : CopyOut("0", 1, out, outSize);

    // Reserved forms: only complex numbers have them, as fixed forms.
    if (code >= 200 && code <= 299) {
        if (typeClass != 3) return 0;
        code = -(code - 200);
    } else if (code >= 512 && code <= 4607) {
        if (typeClass != 3) return 0;
        code = -((code - 512) % 4);
    }

    Notation notation = kPlain;
    int32_t frac = 0;
    if (code >= NumCodeEngineering && code <= 162) {
        notation = kEngineering;
        frac = code - NumCodeEngineering;
        code = frac + 1;
    } else if (code >= NumCodeSI && code <= 130) {
        notation = kSI;
        frac = code - NumCodeSI;
        code = frac + 1;
    }

    int32_t length;
    if (typeClass == 3) {
        length =
            ComplexText(number, type, code, notation, frac, out, outSize, mark, prefixExponent);
    } else if (notation == kEngineering) {
        length = NumToEngineering(number, type, frac, outSize, out, mark, prefixExponent);
    } else if (notation == kSI) {
        length = NumToSIOrEngineering(number, type, frac, outSize, out, mark, prefixExponent);
    } else {
        DecimalNumber decimal;
        length = RealText(NumLoad(type, number).re, code, out, outSize, mark, &decimal);
        Terminate(out, length, outSize);
    }
    if (length >= outSize) MG_FAIL();
    return length;
}

int32_t NumToTextSystemMark(const void* number, NumType type, int32_t code, char* out,
                            int32_t outSize, int32_t* prefixExponent) {
    return NumToText(number, type, code, out, outSize, SystemDecimalMark, prefixExponent);
}

int32_t NumToTextSimple(const void* number, NumType type, int32_t code, char* out,
                        int32_t outSize) {
    return NumToText(number, type, code, out, outSize, SystemDecimalMark, nullptr);
}

}  // extern "C"
