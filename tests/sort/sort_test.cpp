// SortArray at its edges, the exchangers and BinarySearch. The order itself, against std::sort
// and for every form of the sort, is in sort_property.cpp.
#include "mg/sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>
#include <vector>

namespace {

int64_t gCompareCalls = 0;

int32_t CompareInts(const void* a, const void* b) {
    ++gCompareCalls;
    int32_t x, y;
    memcpy(&x, a, 4);
    memcpy(&y, b, 4);
    return (x > y) - (x < y);
}

using Ints = std::vector<int32_t>;

Ints Sorted(Ints v) {
    std::sort(v.begin(), v.end());
    return v;
}

TEST(SortArray, ShortArraysAndEqualPairsStayPut) {
    // Records of a key and a tag: an exchange of the equal pair would show in the tags.
    int32_t records[4] = {7, 1, 7, 2};
    gCompareCalls = 0;
    for (int32_t count : {0, 1, -3}) SortArray(records, count, 4, CompareInts);
    EXPECT_EQ(gCompareCalls, 0);
    SortArray(records, 2, 8, CompareInts);
    EXPECT_EQ(Ints(records, records + 4), (Ints{7, 1, 7, 2}));
}

// Sorted, reversed, equal and organ-pipe input: quadratic behaviour would take billions of
// comparisons; the median of three keeps these near n log n.
TEST(SortArray, AwkwardInputsStayNearNLogN) {
    const int32_t n = 100000;
    for (int shape = 0; shape < 4; ++shape) {
        Ints v(n);
        for (int32_t i = 0; i < n; i++)
            v[i] = shape == 0 ? i : shape == 1 ? n - i : shape == 2 ? 42 : std::min(i, n - i);
        const Ints expected = Sorted(v);
        gCompareCalls = 0;
        SortArray(v.data(), n, 4, CompareInts);
        EXPECT_EQ(v, expected) << shape;
        EXPECT_LT(gCompareCalls, static_cast<int64_t>(6 * n * std::log2(n))) << shape;
    }
}

// A comparison that answers at random still ends, with a permutation of the input.
TEST(SortArray, InconsistentComparisonEnds) {
    Ints v(5000);
    std::iota(v.rbegin(), v.rend(), 0);
    static std::mt19937 coin(99);
    SortArray(v.data(), 5000, 4, [](const void*, const void*) { return int32_t(coin() % 3) - 1; });
    EXPECT_EQ(Sorted(v), Sorted(Ints(v.rbegin(), v.rend())));
}

// Odd addresses on purpose; nothing beyond the elements moves.
TEST(Swappers, ExchangeWholeElementsAtAnyAlignment) {
    const std::pair<void (*)(void*, void*, int32_t), int32_t> cases[] = {
        {SwapLongs, 12}, {SwapShorts, 6}, {SwapBytes, 5}, {SwapBytes, 1}};
    for (const auto& [swap, size] : cases) {
        uint8_t buffer[64], want[64];
        std::iota(buffer, buffer + 64, 0), std::iota(want, want + 64, 0);
        std::swap_ranges(want + 1, want + 1 + size, want + 33);
        swap(buffer + 1, buffer + 33, size);
        EXPECT_EQ(memcmp(buffer, want, 64), 0) << size;
    }
}

// Every key on and between the elements of every count: found keys give their index, the
// others -(insertion index) - 1. Bad arguments search an empty array.
TEST(BinarySearch, EveryKeyOfEveryCountAndBadArguments) {
    int32_t values[64];
    for (int32_t i = 0; i < 64; i++) values[i] = 2 * i;
    for (int32_t count = 0; count <= 64; count++) {
        for (int32_t key = -1; key <= 2 * count; key++) {
            const bool found = key >= 0 && key % 2 == 0 && key / 2 < count;
            EXPECT_EQ(BinarySearch(values, count, 4, &key, CompareInts),
                      found ? key / 2 : -(key + 1) / 2 - 1)
                << "count " << count << " key " << key;
        }
    }
    int32_t key = 2;
    EXPECT_EQ(BinarySearch(nullptr, 3, 4, &key, CompareInts), -1);
    EXPECT_EQ(BinarySearch(values, 3, 4, &key, nullptr), -1);
    EXPECT_EQ(BinarySearch(values, 3, 0, &key, CompareInts), -1);
}

}  // namespace
