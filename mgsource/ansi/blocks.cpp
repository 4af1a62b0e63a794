// Block moves, swaps and clears: the innermost copies of the library, plain count-driven loops
// with no per-byte tests.
#include <string.h>

#include "mg/ansi.h"

extern "C" {

// The direction rule (downward when the destination lies within the source, upward otherwise)
// is the one that makes overlapping moves come out whole; memmove yields that same result
// with the host's fastest copy.
void BlockMove(const void* src, void* dst, int32_t n) {
    if (n > 0 && src != dst) memmove(dst, src, static_cast<size_t>(n));
}

// Exchanges in 8-byte steps through registers, then the odd tail bytes. The blocks must not
// overlap.
void BlockSwap(void* a, void* b, int32_t n) {
    uint8_t* pa = static_cast<uint8_t*>(a);
    uint8_t* pb = static_cast<uint8_t*>(b);
    int32_t i = 0;
    for (; i + 8 <= n; i += 8) {
        uint64_t x, y;
        memcpy(&x, pa + i, 8);
        memcpy(&y, pb + i, 8);
        memcpy(pa + i, &y, 8);
        memcpy(pb + i, &x, 8);
    }
    for (; i < n; ++i) {
        uint8_t t = pa[i];
        pa[i] = pb[i];
        pb[i] = t;
    }
}

int32_t BlockClear(void* p, int32_t n) {
    if (n > 0) memset(p, 0, static_cast<size_t>(n));
    return 0;
}

}  // extern "C"
