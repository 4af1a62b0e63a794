// SortArray and SortArrayStride: the sort with a plain two-element comparison.
#include "mg/sort.h"

#include "ansi/sortengine.h"
#include "ansi/swappers.h"

namespace {

struct PlainCompare {
    SortCompare f;
    int32_t operator()(const uint8_t* a, const uint8_t* b) const { return f(a, b); }
};

}  // namespace

void SortArrayStride(void* base, int32_t count, int32_t swapSize, int32_t stride,
                     SortCompare compare) {
    if (compare == nullptr) return;
    mgsort::SortWithSwapper(static_cast<uint8_t*>(base), count, swapSize, stride,
                            PlainCompare{compare});
}

void SortArray(void* base, int32_t count, int32_t size, SortCompare compare) {
    SortArrayStride(base, count, size, size, compare);
}
