// BinarySearch: found indices, insertion indices and bad arguments.
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

// Every key on and between the elements of every count: found keys give their index, the
// others -(insertion index) - 1.
TEST(BinarySearch, EveryKeyOfEveryCount) {
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

TEST(BinarySearch, BadArgumentsSearchAnEmptyArray) {
    const int32_t values[] = {1, 3, 5};
    int32_t key = 3;
    EXPECT_EQ(BinarySearch(nullptr, 3, 4, &key, CompareKey), -1);
    EXPECT_EQ(BinarySearch(values, 3, 4, &key, nullptr), -1);
    EXPECT_EQ(BinarySearch(values, 3, 0, &key, CompareKey), -1);
}

}  // namespace
