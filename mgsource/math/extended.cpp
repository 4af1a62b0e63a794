// The memory and portable forms of Extended.
#include <string.h>

#include "math/x87.h"
#include "mg/math.h"

#if !MG_HAVE_X87
#include <cmath>
#endif

namespace {

struct Bits {
    uint64_t mantissa;
    uint16_t signExponent;
};

#if MG_HAVE_X87
Bits ToBits(Extended v) {
    uint8_t raw[sizeof(Extended)];
    memcpy(raw, &v, sizeof raw);
    Bits b;
    memcpy(&b.mantissa, raw, 8);
    memcpy(&b.signExponent, raw + 8, 2);
    return b;
}

Extended FromBits(Bits b) {
    uint8_t raw[sizeof(Extended)] = {};
    memcpy(raw, &b.mantissa, 8);
    memcpy(raw + 8, &b.signExponent, 2);
    Extended v;
    memcpy(&v, raw, sizeof v);
    return v;
}
#else
// Hosts without the 80-bit format build it from the value: 64-bit mantissa, 15-bit
// exponent with bias 16383, explicit top bit.
Bits ToBits(Extended v) {
    Bits b{0, static_cast<uint16_t>(std::signbit(v) ? 0x8000 : 0)};
    if (std::isnan(v)) {
        b.signExponent |= 0x7FFF;
        b.mantissa = 0xC000000000000000ull;
    } else if (std::isinf(v)) {
        b.signExponent |= 0x7FFF;
        b.mantissa = 0x8000000000000000ull;
    } else if (v != 0) {
        int e;
        long double m = std::frexp(std::fabs(v), &e);  // m in [0.5, 1)
        int biased = e - 1 + 16383;
        if (biased <= 0) {  // denormal of the 80-bit form
            m = std::ldexp(m, biased - 1);
            biased = 0;
        }
        b.mantissa = static_cast<uint64_t>(std::ldexp(m, 64));
        b.signExponent |= static_cast<uint16_t>(biased);
    }
    return b;
}

Extended FromBits(Bits b) {
    int e = b.signExponent & 0x7FFF;
    long double v;
    if (e == 0x7FFF)
        v = (b.mantissa << 1) ? NAN : INFINITY;
    else if (e != 0 && !(b.mantissa >> 63))
        // An unnormal (top bit clear under a nonzero exponent) is no number to the unit: an
        // invalid operand, which it answers with its indefinite, a negative quiet NaN.
        return -NAN;
    else
        v = std::ldexp(static_cast<long double>(b.mantissa), (e ? e : 1) - 16383 - 63);
    return (b.signExponent & 0x8000) ? -v : v;
}
#endif

}  // namespace

extern "C" {

Extended ExtendedRead(const void* bytes) {
    Bits b;
    memcpy(&b.mantissa, bytes, 8);
    memcpy(&b.signExponent, static_cast<const uint8_t*>(bytes) + 8, 2);
    return FromBits(b);
}

void ExtendedWrite(void* bytes, Extended value) {
    Bits b = ToBits(value);
    memcpy(bytes, &b.mantissa, 8);
    memcpy(static_cast<uint8_t*>(bytes) + 8, &b.signExponent, 2);
}

uint8_t* ExtendedToPortable(Extended value, uint8_t* out) {
    Bits b = ToBits(value);
    uint64_t fraction = (b.signExponent & 0x7FFF) ? b.mantissa << 1 : b.mantissa;
    out[0] = static_cast<uint8_t>(b.signExponent >> 8);
    out[1] = static_cast<uint8_t>(b.signExponent);
    for (int i = 0; i < 8; ++i) out[2 + i] = static_cast<uint8_t>(fraction >> (56 - 8 * i));
    memset(out + 10, 0, 6);
    return out + 16;
}

void ExtendedFromPortable(const uint8_t* in, Extended* value) {
    Bits b;
    b.signExponent = static_cast<uint16_t>(in[0] << 8 | in[1]);
    uint64_t fraction = 0;
    for (int i = 0; i < 8; ++i) fraction = fraction << 8 | in[2 + i];
    b.mantissa = (b.signExponent & 0x7FFF) ? (fraction >> 1) | 0x8000000000000000ull : fraction;
    *value = FromBits(b);
}

}  // extern "C"
