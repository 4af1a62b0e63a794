// SortArray and SortArrayContext order any elements as std::sort does.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "mg/sort.h"

namespace {

using Element = std::vector<uint8_t>;

// Elements of 1 to 13 bytes (each exchanger: by bytes, 16-bit and 32-bit units, 4 and 8), of a
// narrow byte range for many equal keys or a wide one. A full-element comparison has one sorted
// order, so equality with std::sort proves both the order and the permutation.
RC_GTEST_PROP(SortProperty, MatchesStdSort, ()) {
    const int32_t size = *rc::gen::inRange(1, 14);
    const int range = *rc::gen::element(2, 256);
    const auto bytes = *rc::gen::container<Element>(
        size * *rc::gen::inRange(0, 300),
        rc::gen::map(rc::gen::arbitrary<uint8_t>(), [range](uint8_t b) { return b % range; }));
    std::vector<Element> expected;
    for (size_t i = 0; i < bytes.size(); i += size)
        expected.emplace_back(bytes.begin() + i, bytes.begin() + i + size);
    std::sort(expected.begin(), expected.end());
    Element sorted = bytes, again = bytes;
    const int32_t count = static_cast<int32_t>(bytes.size()) / size;
    auto compare = [](void* n, const void* a, const void* b) {
        return memcmp(a, b, *static_cast<size_t*>(n));
    };
    size_t n = size;
    SortArrayContext(sorted.data(), count, size, size, compare, &n);
    for (int32_t i = 0; i < count; ++i)
        RC_ASSERT(Element(sorted.begin() + i * size, sorted.begin() + (i + 1) * size) ==
                  expected[i]);
    static size_t plainSize;  // the plain form's comparison has no context
    plainSize = n;
    SortArray(again.data(), count, size,
              [](const void* a, const void* b) { return memcmp(a, b, plainSize); });
    RC_ASSERT(again == sorted);
}

}  // namespace
