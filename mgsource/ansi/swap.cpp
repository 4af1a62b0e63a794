// The three element exchangers offered to callers.
#include "ansi/swappers.h"
#include "mg/sort.h"

void SwapLongs(void* a, void* b, int32_t size) {
    mgsort::UnitSwap<uint32_t>{size}(static_cast<uint8_t*>(a), static_cast<uint8_t*>(b));
}

void SwapShorts(void* a, void* b, int32_t size) {
    mgsort::UnitSwap<uint16_t>{size}(static_cast<uint8_t*>(a), static_cast<uint8_t*>(b));
}

void SwapBytes(void* a, void* b, int32_t size) {
    mgsort::UnitSwap<uint8_t>{size}(static_cast<uint8_t*>(a), static_cast<uint8_t*>(b));
}
