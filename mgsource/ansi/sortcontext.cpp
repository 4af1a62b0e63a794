// SortArrayContext: the sort with a comparison that takes the caller's context first.
#include "ansi/sortengine.h"
#include "ansi/swappers.h"
#include "mg/sort.h"

namespace {

struct ContextCompare {
    SortContextCompare f;
    void* context;
    int32_t operator()(const uint8_t* a, const uint8_t* b) const { return f(context, a, b); }
};

}  // namespace

void SortArrayContext(void* base, int32_t count, int32_t swapSize, int32_t stride,
                      SortContextCompare compare, void* context) {
    if (compare == nullptr) return;
    mgsort::SortWithSwapper(static_cast<uint8_t*>(base), count, swapSize, stride,
                            ContextCompare{compare, context});
}
