// The two crossings between Extended and the packed decimal form. The way out scales by
// one power of ten formed by exponentiation and lets the unit's packed store round the
// digits; the way in multiplies table entries. They differ on purpose.
#include <string.h>

#include "math/x87.h"
#include "mg/numtext.h"

namespace {

// Ten to the s, as 2 to the (s log2 10) split into its whole and fractional parts.
Extended PowerOfTen(int32_t s) {
    Extended t = s * x87::Log2Ten();
    Extended whole = x87::RoundToInteger(t);
    return x87::Scale(x87::TwoToXMinusOne(t - whole) + 1, whole);
}

uint8_t Nibble(const DecimalNumber* d, int32_t i) {
    return static_cast<uint8_t>((d->digits[i / 2] >> (i & 1 ? 4 : 0)) & 15);
}

void SetNibble(DecimalNumber* d, int32_t i, uint8_t v) {
    uint8_t& b = d->digits[i / 2];
    b = i & 1 ? static_cast<uint8_t>((b & 0x0F) | v << 4) : static_cast<uint8_t>((b & 0xF0) | v);
}

void SetZero(DecimalNumber* decimal, int32_t digits) {
    memset(decimal->digits, 0, sizeof decimal->digits);
    decimal->sign = 0;
    int64_t wide = digits;
    decimal->mdigits = static_cast<int16_t>(wide > 0 ? wide - 1 : -wide);
    decimal->exponent = static_cast<int16_t>(-decimal->mdigits);
}

}  // namespace

extern "C" {

Extended PowerOfTenTable[14];

void PowerOfTenTableFill(void) {
    PowerOfTenTable[0] = 1;
    PowerOfTenTable[1] = PowerOfTen(1);
    for (int i = 2; i < 14; ++i)
        PowerOfTenTable[i] = PowerOfTenTable[i - 1] * PowerOfTenTable[i - 1];
}

void ExtendedToDecimal(Extended value, int32_t digits, DecimalNumber* decimal) {
    uint8_t raw[10];
    ExtendedWrite(raw, value);
    uint64_t mantissa;
    memcpy(&mantissa, raw, 8);
    uint16_t signExponent = static_cast<uint16_t>(raw[8] | raw[9] << 8);
    bool negative = signExponent & 0x8000;

    // An unnormal (exponent neither 0 nor all ones, top bit clear) is an invalid operand to
    // the unit: every operation on it gives a NaN, and so does the conversion.
    uint16_t biased = signExponent & 0x7FFF;
    bool unnormal = biased != 0 && biased != 0x7FFF && !(mantissa >> 63);
    if (biased == 0x7FFF || unnormal) {
        memset(decimal, 0, sizeof *decimal);
        if (unnormal || (mantissa != 0 && mantissa != 0x8000000000000000ull)) {
            decimal->exponent = DecimalExponentNaN;
        } else {
            decimal->exponent = DecimalExponentInfinity;
            decimal->sign = negative ? DecimalSignNegative : 0;
        }
        return;
    }
    if (value == 0) {
        SetZero(decimal, digits);
        return;
    }

    Extended magnitude = negative ? -value : value;
    int32_t log10 = x87::FloorToInt32(x87::YLog2X(x87::Log10Two(), magnitude));
    int32_t m, scale, exponent;
    if (digits >= 1) {
        // The packed store holds 18 digits: more cannot be asked of it.
        m = (digits < 18 ? digits : 18) - 1;
        scale = m - log10;
        exponent = -scale;
    } else {
        int64_t k = static_cast<int64_t>(log10) - digits;
        if (k >= 0) {
            m = k < 17 ? static_cast<int32_t>(k) : 17;
            scale = m - log10;
            exponent = -scale;
        } else if (k == -1) {
            // Below the last place, but it may still round up to one unit of it.
            value /= 10;
            m = 0;
            scale = -log10;
            exponent = log10 + 1;
        } else {
            SetZero(decimal, digits);
            return;
        }
    }

    uint8_t packed[10];
    x87::StorePacked(value * PowerOfTen(scale), packed);
    memcpy(decimal->digits, packed, 9);
    decimal->sign = packed[9];
    decimal->mdigits = static_cast<int16_t>(m);

    // The floor of the logarithm may be one off, and rounding may carry into a new digit:
    // the nibble at the leading index tells which.
    bool carry = false;
    if (m & 1) {
        if (decimal->digits[m / 2] >= 0xF0) {
            carry = true;  // the store overflowed its 18 digits
        } else if (Nibble(decimal, m) == 0) {
            if (Nibble(decimal, m - 1) == 0) {
                carry = true;
            } else {
                SetNibble(decimal, m, 9);
                --exponent;
            }
        }
        if (carry) {
            memset(decimal->digits, 0, sizeof decimal->digits);
            decimal->sign = negative ? DecimalSignNegative : 0;
            SetNibble(decimal, m, 1);
            ++exponent;
        }
    } else if (Nibble(decimal, m) == 0) {
        if (Nibble(decimal, m + 1) != 0) {
            SetNibble(decimal, m, 1);
            ++exponent;
        } else {
            SetNibble(decimal, m, 9);
            --exponent;
        }
    }
    decimal->exponent = static_cast<int16_t>(exponent);
}

Extended DecimalToExtended(const DecimalNumber* decimal) {
    bool negative = decimal->sign & DecimalSignNegative;
    if (decimal->exponent == DecimalExponentInfinity) {
        Extended inf = static_cast<Extended>(__builtin_inff());
        return negative ? -inf : inf;
    }
    if (decimal->exponent == DecimalExponentNaN) {
        uint8_t raw[10];
        memset(raw, 0xFF, 8);
        raw[8] = 0xFF;
        raw[9] = negative ? 0xFF : 0x7F;
        return ExtendedRead(raw);
    }
    if (PowerOfTenTable[0] == 0) PowerOfTenTableFill();

    uint8_t packed[10];
    memcpy(packed, decimal->digits, 9);
    packed[9] = decimal->sign;
    Extended value = x87::LoadPacked(packed);
    // Zero stays zero whatever the exponent: the top bit's power overflows the unit.
    if (value == 0) return value;

    int32_t e = decimal->exponent, a = e < 0 ? -e : e;
    Extended power = 1;
    for (int k = 0; k < 14; ++k) {
        if (!(a & (1 << k))) continue;
        // Ten to the 8192 lies beyond the table and beyond the format: the last entry
        // squared, which is infinity.
        power *= k + 1 < 14 ? PowerOfTenTable[k + 1] : PowerOfTenTable[13] * PowerOfTenTable[13];
    }
    return e < 0 ? value / power : value * power;
}

}  // extern "C"
