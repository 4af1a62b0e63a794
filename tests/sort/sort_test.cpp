// SortArray, SortArrayStride and SortArrayContext against std::sort, and the exchangers.
#include "mg/sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace {

// The element size of the current comparison, for the plain (context-free) form.
int32_t gElementSize = 0;
int64_t gCompareCalls = 0;

int32_t CompareBytes(const void* a, const void* b) {
    ++gCompareCalls;
    return memcmp(a, b, static_cast<size_t>(gElementSize));
}

int32_t CompareInts(const void* a, const void* b) {
    ++gCompareCalls;
    int32_t x, y;
    memcpy(&x, a, 4);
    memcpy(&y, b, 4);
    return (x > y) - (x < y);
}

using Element = std::vector<uint8_t>;

std::vector<Element> Split(const std::vector<uint8_t>& bytes, size_t size) {
    std::vector<Element> out;
    for (size_t i = 0; i + size <= bytes.size(); i += size) {
        out.emplace_back(bytes.begin() + i, bytes.begin() + i + size);
    }
    return out;
}

TEST(SortArray, MatchesStdSortForEverySizeAndManyCounts) {
    std::mt19937 rng(12345);
    const int32_t counts[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 100, 257, 999, 2000};
    for (int32_t size = 1; size <= 13; size++) {
        for (int32_t count : counts) {
            // Narrow byte values give many duplicates; wide ones give distinct keys.
            for (int range : {2, 256}) {
                std::vector<uint8_t> bytes(static_cast<size_t>(count) * size);
                for (auto& b : bytes) b = static_cast<uint8_t>(rng() % range);
                std::vector<Element> expected = Split(bytes, size);
                std::sort(expected.begin(), expected.end(),
                          [size](const Element& a, const Element& b) {
                              return memcmp(a.data(), b.data(), size) < 0;
                          });
                gElementSize = size;
                SortArray(bytes.data(), count, size, CompareBytes);
                // A full-element comparison has one sorted order, so equality with std::sort
                // proves both order and permutation.
                EXPECT_EQ(Split(bytes, size), expected) << "size " << size << " count " << count;
            }
        }
    }
}

TEST(SortArray, ShortArraysAreNotCompared) {
    int32_t values[2] = {5, 1};
    gCompareCalls = 0;
    SortArray(values, 0, 4, CompareInts);
    SortArray(values, 1, 4, CompareInts);
    SortArray(values, -3, 4, CompareInts);
    EXPECT_EQ(gCompareCalls, 0);
    EXPECT_EQ(values[0], 5);
}

TEST(SortArray, EqualPairIsNotExchanged) {
    // The key is the first 4 bytes; the tag behind it shows whether the two were exchanged.
    struct Tagged {
        int32_t key;
        int32_t tag;
    } pair[2] = {{7, 1}, {7, 2}};
    SortArray(pair, 2, sizeof(Tagged), CompareInts);
    EXPECT_EQ(pair[0].tag, 1);
    EXPECT_EQ(pair[1].tag, 2);
}

TEST(SortArray, AwkwardInputsStayNearNLogN) {
    const int32_t n = 100000;
    std::vector<std::vector<int32_t>> inputs(4, std::vector<int32_t>(n));
    for (int32_t i = 0; i < n; i++) {
        inputs[0][i] = i;                      // sorted
        inputs[1][i] = n - i;                  // reversed
        inputs[2][i] = 42;                     // all equal
        inputs[3][i] = i < n / 2 ? i : n - i;  // organ pipe
    }
    for (auto& v : inputs) {
        std::vector<int32_t> expected = v;
        std::sort(expected.begin(), expected.end());
        gCompareCalls = 0;
        SortArray(v.data(), n, 4, CompareInts);
        EXPECT_EQ(v, expected);
        // Quadratic behaviour would take billions; median-of-three keeps these near n log n.
        EXPECT_LT(gCompareCalls, static_cast<int64_t>(6 * n * std::log2(n)));
    }
}

TEST(SortArray, InconsistentComparisonEnds) {
    std::mt19937 rng(7);
    std::vector<int32_t> v(5000);
    for (auto& x : v) x = static_cast<int32_t>(rng());
    std::vector<int32_t> before = v;
    static std::mt19937 coin(99);
    SortArray(v.data(), static_cast<int32_t>(v.size()), 4,
              [](const void*, const void*) { return static_cast<int32_t>(coin() % 3) - 1; });
    std::sort(v.begin(), v.end());
    std::sort(before.begin(), before.end());
    EXPECT_EQ(v, before);  // still a permutation
}

// 8-byte records sorted by their first 4 bytes, exchanging only those 4: the second half of
// each record stays where it was.
TEST(SortArrayStride, ExchangesOnlySwapSizeBytes) {
    std::mt19937 rng(3);
    const int32_t n = 500;
    std::vector<int32_t> records(2 * n);
    for (int32_t i = 0; i < n; i++) {
        records[2 * i] = static_cast<int32_t>(rng() % 1000);
        records[2 * i + 1] = i;
    }
    std::vector<int32_t> keys;
    for (int32_t i = 0; i < n; i++) keys.push_back(records[2 * i]);
    std::sort(keys.begin(), keys.end());
    SortArrayStride(records.data(), n, 4, 8, CompareInts);
    for (int32_t i = 0; i < n; i++) {
        EXPECT_EQ(records[2 * i], keys[i]);
        EXPECT_EQ(records[2 * i + 1], i);
    }
}

TEST(SortArrayContext, PassesContextToEveryComparison) {
    struct Context {
        int32_t sign;
        int64_t calls;
    } context{-1, 0};
    auto compare = [](void* c, const void* a, const void* b) -> int32_t {
        auto* ctx = static_cast<Context*>(c);
        ctx->calls++;
        return ctx->sign * CompareInts(a, b);
    };
    std::mt19937 rng(11);
    for (int32_t count : {0, 2, 3, 4, 50, 1000}) {
        std::vector<int32_t> v(count);
        for (auto& x : v) x = static_cast<int32_t>(rng() % 100);
        std::vector<int32_t> expected = v;
        std::sort(expected.begin(), expected.end(), std::greater<int32_t>());
        SortArrayContext(v.data(), count, 4, 4, compare, &context);
        EXPECT_EQ(v, expected);
    }
    EXPECT_GT(context.calls, 0);
}

TEST(Swappers, ExchangeWholeElementsAtAnyAlignment) {
    struct Case {
        void (*swap)(void*, void*, int32_t);
        int32_t size;
    } cases[] = {{SwapLongs, 12}, {SwapShorts, 6}, {SwapBytes, 5}, {SwapBytes, 1}};
    for (const Case& c : cases) {
        uint8_t buffer[64];
        for (int i = 0; i < 64; i++) buffer[i] = static_cast<uint8_t>(i);
        uint8_t* a = buffer + 1;  // deliberately odd addresses
        uint8_t* b = buffer + 33;
        c.swap(a, b, c.size);
        for (int i = 0; i < c.size; i++) {
            EXPECT_EQ(a[i], 33 + i);
            EXPECT_EQ(b[i], 1 + i);
        }
        EXPECT_EQ(buffer[1 + c.size], 1 + c.size);  // nothing beyond the element
    }
}

}  // namespace
