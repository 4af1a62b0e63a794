// Element exchangers of the sort, as inline functors so that the sort loop can use them
// without a call. Elements need not be aligned: every unit goes through memcpy, which the
// compiler turns into plain loads and stores.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

namespace mgsort {

// Exchanges `size` bytes in units of U.
template <class U>
struct UnitSwap {
    ptrdiff_t size;
    void operator()(uint8_t* a, uint8_t* b) const {
        for (ptrdiff_t k = 0; k + static_cast<ptrdiff_t>(sizeof(U)) <= size; k += sizeof(U)) {
            U x, y;
            memcpy(&x, a + k, sizeof(U));
            memcpy(&y, b + k, sizeof(U));
            memcpy(a + k, &y, sizeof(U));
            memcpy(b + k, &x, sizeof(U));
        }
    }
};

// The same exchange for an element size known at compile time: 4 and 8 bytes are the common
// keys, and a fixed size lets the exchange become two loads and two stores.
template <size_t N>
struct FixedSwap {
    void operator()(uint8_t* a, uint8_t* b) const {
        uint8_t x[N];
        memcpy(x, a, N);
        memmove(a, b, N);
        memcpy(b, x, N);
    }
};

}  // namespace mgsort
