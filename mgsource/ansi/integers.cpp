// Integer and byte-order tools.
#include <math.h>
#include <string.h>

#include "mg/ansi.h"

extern "C" {

int32_t MinInt32(int32_t a, int32_t b) {
    return a < b ? a : b;
}
int32_t MaxInt32(int32_t a, int32_t b) {
    return a > b ? a : b;
}

int32_t ModFloored(int32_t a, int32_t b) {
    int32_t r = a % b;
    if (r < 0) r += b < 0 ? -b : b;
    return r;
}

int32_t PinToRange(int32_t value, int32_t low, int32_t high) {
    if (high <= low) return low;
    return value < low ? low : (value > high ? high : value);
}

// Half of m, signed like the value, is added before the truncating division, so ties go away
// from zero. The sum wraps in 32 bits as the machine's addition does.
int32_t RoundToMultiple(int32_t value, int32_t m) {
    int32_t half = m / 2;
    if (half < 0) half = -half;
    if (value < 0) half = -half;
    int32_t sum = static_cast<int32_t>(static_cast<uint32_t>(value) + static_cast<uint32_t>(half));
    return sum / m * m;
}

// Round to nearest, ties to even. Values out of range give the processor's "integer
// indefinite", 0x80000000, as the hardware conversion does.
int32_t DoubleToInt32(double x) {
    if (IsNaNValue(x)) return 0x7FFFFFFF;
    double r = nearbyint(x);
    if (!(r >= -2147483648.0 && r <= 2147483647.0)) return INT32_MIN;
    return static_cast<int32_t>(r);
}

char ToHexDigit(int32_t i) {
    return "0123456789ABCDEF"[i & 15];
}

void Swap16(void* p) {
    uint8_t* b = static_cast<uint8_t*>(p);
    uint8_t t = b[0];
    b[0] = b[1];
    b[1] = t;
}

void Swap32(void* p) {
    uint32_t v;
    memcpy(&v, p, 4);
    v = __builtin_bswap32(v);
    memcpy(p, &v, 4);
}

void Swap64(void* p) {
    uint64_t v;
    memcpy(&v, p, 8);
    v = __builtin_bswap64(v);
    memcpy(p, &v, 8);
}

void SwapHalves32(void* p) {
    uint32_t v;
    memcpy(&v, p, 4);
    v = (v << 16) | (v >> 16);
    memcpy(p, &v, 4);
}

}  // extern "C"
