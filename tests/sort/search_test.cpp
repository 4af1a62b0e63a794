// BinarySearch: found indices and insertion indices.
#include <gtest/gtest.h>

#include <cstring>

#include "mg/sort.h"

namespace {

int32_t CompareKey(const void* key, const void* element) {
    int32_t x, y;
    memcpy(&x, key, 4);
    memcpy(&y, element, 4);
    return (x > y) - (x < y);
}

TEST(BinarySearch, FoundAndInsertionIndices) {
    const int32_t values[] = {10, 20, 30, 40, 50};
    struct Case {
        int32_t count;
        int32_t key;
        int32_t expected;
    } cases[] = {
        {5, 10, 0},  {5, 30, 2},  {5, 50, 4},   // found
        {5, 5, -1},                             // before the first
        {5, 60, -6},                            // after the last: -count - 1
        {5, 25, -3}, {5, 35, -4}, {5, 11, -2},  // between: insert at 2, 3, 1
        {1, 10, 0},  {1, 9, -1},  {1, 11, -2}, {2, 15, -2}, {2, 20, 1}, {0, 10, -1},  // empty
    };
    for (const Case& c : cases) {
        EXPECT_EQ(BinarySearch(values, c.count, 4, &c.key, CompareKey), c.expected)
            << "count " << c.count << " key " << c.key;
    }
}

TEST(BinarySearch, InsertionIndexKeepsOrderOnEveryGap) {
    int32_t values[64];
    for (int32_t i = 0; i < 64; i++) values[i] = 2 * i;
    for (int32_t count = 0; count <= 64; count++) {
        for (int32_t key = -1; key <= 2 * count; key++) {
            int32_t r = BinarySearch(values, count, 4, &key, CompareKey);
            if (key >= 0 && key % 2 == 0 && key / 2 < count) {
                EXPECT_EQ(r, key / 2);
            } else {
                EXPECT_EQ(-r - 1, (key + 1) / 2) << "count " << count << " key " << key;
            }
        }
    }
}

TEST(BinarySearch, NullArrayIsEmpty) {
    int32_t key = 3;
    EXPECT_EQ(BinarySearch(nullptr, 10, 4, &key, CompareKey), -1);
}

}  // namespace
