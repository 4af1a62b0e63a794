// Conversion between the number types. Integers convert among themselves by their low
// bits; anything with a float on either side goes through Extended and the unit's stores.
#include <string.h>

#include "math/x87.h"
#include "mg/dbgtools.h"
#include "mg/math.h"
#include "mg/support.h"

MG_SOURCE_IDENTITY("mgsource\\math\\numconvert.cpp", "$Revision: 1 $");

namespace {

template <typename T>
T Get(const void* p) {
    T v;
    memcpy(&v, p, sizeof v);
    return v;
}

template <typename T>
void Put(void* p, T v) {
    memcpy(p, &v, sizeof v);
}

bool IsInteger(int32_t type) {
    return type >= NumIB && type <= NumUQ;
}

// The integer widened to 64 bits by the sign rule of its type.
uint64_t Widen(int32_t type, const void* p) {
    switch (type) {
        case NumIB:
            return static_cast<uint64_t>(static_cast<int64_t>(Get<int8_t>(p)));
        case NumIW:
            return static_cast<uint64_t>(static_cast<int64_t>(Get<int16_t>(p)));
        case NumIL:
            return static_cast<uint64_t>(static_cast<int64_t>(Get<int32_t>(p)));
        case NumUB:
            return Get<uint8_t>(p);
        case NumUW:
            return Get<uint16_t>(p);
        case NumUL:
            return Get<uint32_t>(p);
        default:
            return Get<uint64_t>(p);
    }
}

void StoreLowBits(int32_t type, void* p, uint64_t v) {
    switch (NumTypeSize(type)) {
        case 1:
            Put(p, static_cast<uint8_t>(v));
            break;
        case 2:
            Put(p, static_cast<uint16_t>(v));
            break;
        case 4:
            Put(p, static_cast<uint32_t>(v));
            break;
        default:
            Put(p, v);
            break;
    }
}

// The iL store with its saturation, shared by the narrow unsigned targets.
int32_t StoreLong(Extended x, int32_t* result) {
    if (x > 2147483647.0L) {
        *result = 1;
        return 0x7FFFFFFF;
    }
    if (x < -2147483648.0L) {
        *result = 1;
        return INT32_MIN;
    }
    int invalid;
    int32_t v = x87::StoreInt32(x, &invalid);
    *result = !invalid;
    return v;
}

int32_t StoreSmallSigned(Extended x, int32_t low, int32_t high, int32_t* value) {
    if (x > high) {
        *value = high;
        return 1;
    }
    if (x < low) {
        *value = low;
        return 1;
    }
    int invalid;
    *value = x87::StoreInt16(x, &invalid);
    return !invalid;
}

int32_t StoreSmallUnsigned(Extended x, int32_t high, int32_t* value) {
    int32_t result;
    int32_t v = StoreLong(x, &result);
    if (v > high) {
        *value = high;
        return 0;
    }
    if (v < 0) {
        *value = 0;
        return 0;
    }
    *value = v;
    return result;
}

// fS and fD keep an Extended infinity exact, whatever the narrowing gave.
void StoreSingle(void* p, Extended x) {
    float f = static_cast<float>(x);
    uint32_t bits;
    memcpy(&bits, &f, 4);
    int negative;
    if ((bits & 0x7FFFFF) == 0 && x87::Examine(x, &negative) == x87::ClassInfinity)
        bits = negative ? FloatNegInfinity : FloatInfinity;
    Put(p, bits);
}

void StoreDouble(void* p, Extended x) {
    double d = static_cast<double>(x);
    uint64_t bits;
    memcpy(&bits, &d, 8);
    int negative;
    if ((bits & 0xFFFFFFFFFFFFFull) == 0 && x87::Examine(x, &negative) == x87::ClassInfinity)
        bits = negative ? DoubleNegInfinity : DoubleInfinity;
    Put(p, bits);
}

}  // namespace

extern "C" {

ExtendedPair NumLoad(NumType type, const void* number) {
    ExtendedPair v{0.0L, 0.0L};
    const uint8_t* p = static_cast<const uint8_t*>(number);
    switch (type & 15) {
        case NumIB:
            v.re = Get<int8_t>(p);
            break;
        case NumIW:
            v.re = Get<int16_t>(p);
            break;
        case NumIL:
            v.re = Get<int32_t>(p);
            break;
        case NumIQ:
            v.re = static_cast<Extended>(Get<int64_t>(p));
            break;
        case NumUB:
            v.re = static_cast<int16_t>(Get<uint8_t>(p));
            break;
        case NumUW:
            v.re = static_cast<int32_t>(Get<uint16_t>(p));
            break;
        case NumUL:
            v.re = static_cast<Extended>(static_cast<int64_t>(Get<uint32_t>(p)));
            break;
        case NumUQ: {
            uint64_t u = Get<uint64_t>(p);
            if (!(u >> 63)) {
                v.re = static_cast<Extended>(static_cast<int64_t>(u));
            } else {
                // The 64 bits are the mantissa of 2^63 and up: exact.
                uint8_t raw[10];
                memcpy(raw, &u, 8);
                raw[8] = 0x3E;
                raw[9] = 0x40;
                v.re = ExtendedRead(raw);
            }
            break;
        }
        case NumFS:
            v.re = Get<float>(p);
            break;
        case NumFD:
            v.re = Get<double>(p);
            break;
        case NumFX:
            v.re = ExtendedRead(p);
            break;
        case NumCS:
            v.im = Get<float>(p + 4);
            v.re = Get<float>(p);
            break;
        case NumCD:
            v.im = Get<double>(p + 8);
            v.re = Get<double>(p);
            break;
        case NumCX:
            v.im = ExtendedRead(p + NumTypeSize(NumCX) / 2);
            v.re = ExtendedRead(p);
            break;
        default:
            break;
    }
    return v;
}

int32_t NumStore(NumType type, void* number, ExtendedPair value) {
    uint8_t* p = static_cast<uint8_t*>(number);
    Extended x = value.re;
    int32_t result = 1, small;
    int invalid;
    switch (type & 15) {
        case NumIB:
            result = StoreSmallSigned(x, -128, 127, &small);
            Put(p, static_cast<int8_t>(small));
            break;
        case NumIW:
            result = StoreSmallSigned(x, -32768, 32767, &small);
            Put(p, static_cast<int16_t>(small));
            break;
        case NumIL:
            Put(p, StoreLong(x, &result));
            break;
        case NumIQ:
            Put(p, x87::StoreInt64(x, &invalid));
            result = !invalid;
            break;
        case NumUB:
            result = StoreSmallUnsigned(x, 255, &small);
            Put(p, static_cast<uint8_t>(small));
            break;
        case NumUW:
            result = StoreSmallUnsigned(x, 65535, &small);
            Put(p, static_cast<uint16_t>(small));
            break;
        case NumUL:
            if (x > 4294967295.0L) {
                Put(p, 0xFFFFFFFFu);
            } else if (x < 0) {
                Put(p, 0u);
            } else {
                Put(p, static_cast<uint32_t>(x87::StoreInt64(x, &invalid)));
                result = !invalid;
            }
            break;
        case NumUQ:
            if (x >= 9223372036854775808.0L && x < 18446744073709551616.0L) {
                uint8_t raw[10];
                ExtendedWrite(raw, x);
                memcpy(p, raw, 8);
            } else {
                Put(p, x87::StoreInt64(x, &invalid));
                result = (x < 0 || x >= 18446744073709551616.0L || invalid) ? 0 : 1;
            }
            break;
        case NumFS:
            StoreSingle(p, x);
            break;
        case NumFD:
            StoreDouble(p, x);
            break;
        case NumFX:
            ExtendedWrite(p, x);
            break;
        case NumCS:
            StoreSingle(p, x);
            StoreSingle(p + 4, value.im);
            break;
        case NumCD:
            StoreDouble(p, x);
            StoreDouble(p + 8, value.im);
            break;
        case NumCX:
            ExtendedWrite(p, x);
            ExtendedWrite(p + NumTypeSize(NumCX) / 2, value.im);
            break;
        default:
            result = 0;
            break;
    }
    return result;
}

int32_t NumConvert(NumType sourceType, const void* source, NumType targetType, void* target) {
    int32_t s = sourceType & 0xFF, t = targetType & 0xFF;
    if (s == 0 || s > 30) MG_FAIL();
    if (t == 0 || t > 30) MG_FAIL();
    s &= 15;
    t &= 15;
    if (IsInteger(s) && IsInteger(t)) {
        StoreLowBits(t, target, Widen(s, source));
        return 1;
    }
    ExtendedPair v = NumLoad(s, source);
    if (NumTypeClass(s) == 3 && NumTypeClass(t) != 3) {
        // Only the real part has a place in the target.
        int32_t result = NumStore(t, target, ExtendedPair{v.re, 0.0L});
        double dropped;
        NumStore(NumFD, &dropped, ExtendedPair{v.im, 0.0L});
        return result;
    }
    return NumStore(t, target, v);
}

}  // extern "C"
