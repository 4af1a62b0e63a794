// SortArray, SortArrayStride and SortArrayContext order any elements as std::sort does.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "mg/sort.h"

namespace {

using Element = std::vector<uint8_t>;

// Records of `stride` bytes sorted by their first `size` bytes, 1 to 13 (each exchanger: by
// bytes, 16-bit and 32-bit units, 4 and 8), which alone move: the bytes behind them stay. A
// narrow byte range gives many equal keys. A comparison of the whole key has one sorted order,
// so equality with std::sort proves both the order and the permutation; the comparison reads
// its size from the context, which must reach every call.
RC_GTEST_PROP(SortProperty, MatchesStdSort, ()) {
    const int32_t size = *rc::gen::inRange(1, 14), stride = size + *rc::gen::inRange(0, 4);
    const int32_t count = *rc::gen::inRange(0, 300);
    const int range = *rc::gen::element(2, 256);
    const auto bytes = *rc::gen::container<Element>(
        stride * count,
        rc::gen::map(rc::gen::arbitrary<uint8_t>(), [range](uint8_t b) { return b % range; }));
    std::vector<Element> keys;
    for (int32_t i = 0; i < count; ++i)
        keys.emplace_back(bytes.begin() + i * stride, bytes.begin() + i * stride + size);
    std::sort(keys.begin(), keys.end());
    Element expected = bytes, sorted = bytes, again = bytes;
    for (int32_t i = 0; i < count; ++i)
        std::copy(keys[i].begin(), keys[i].end(), expected.begin() + i * stride);
    size_t n = size;
    auto compare = [](void* n, const void* a, const void* b) {
        return memcmp(a, b, *static_cast<size_t*>(n));
    };
    SortArrayContext(sorted.data(), count, size, stride, compare, &n);
    RC_ASSERT(sorted == expected);
    static size_t plainSize;  // the plain form's comparison has no context
    plainSize = n;
    auto plain = [](const void* a, const void* b) { return memcmp(a, b, plainSize); };
    stride == size ? SortArray(again.data(), count, size, plain)
                   : SortArrayStride(again.data(), count, size, stride, plain);
    RC_ASSERT(again == expected);
}

}  // namespace
