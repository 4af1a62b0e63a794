// The object list: pinned indices, back-to-front search, and the 16-byte growth steps.
#include "mg/objlist.h"

#include <gtest/gtest.h>

#include <vector>

#include "mg/memory.h"
#include "support/memory_env.h"

namespace {

using V = std::vector<uint32_t>;

HObjList Make(int32_t blockSize, const V& items) {
    HObjList list = MemNewHandleClear(blockSize);
    for (uint32_t item : items) EXPECT_EQ(HObjListInsert(list, item, 1 << 30), MgNoError);
    return list;
}

V Items(HObjList list) {
    const int32_t* words = reinterpret_cast<const int32_t*>(*list);
    return V(words + 1, words + 1 + words[0]);
}

TEST(HObjList, GrowsAndShrinksBySixteenWithSlack) {
    HObjList list = Make(16, {});
    std::vector<int32_t> sizes;
    for (uint32_t i = 1; i <= 8; ++i) {
        HObjListInsert(list, i, i % 2 ? -5 : 99);  // odd ones first, even ones last
        sizes.push_back(MemHandleSize(list));
    }
    EXPECT_EQ(sizes, (std::vector<int32_t>{16, 16, 16, 32, 32, 32, 32, 48}));
    EXPECT_EQ(Items(list), (V{7, 5, 3, 1, 2, 4, 6, 8}));
    sizes.clear();
    while (!Items(list).empty()) {
        HObjListRemoveAt(list, 0);
        sizes.push_back(MemHandleSize(list));
    }
    EXPECT_EQ(sizes, (std::vector<int32_t>{48, 32, 32, 32, 32, 16, 16, 16}));
    EXPECT_EQ(HObjListRemoveAt(list, 0), 0u);
    MemDisposeHandle(list);
}

TEST(HObjList, SearchRemovalAndFrontWorkFromTheBack) {
    HObjList list = Make(16, {7, 8, 7, 9});
    EXPECT_EQ(HObjListIndexOf(list, 7), 2);
    EXPECT_EQ(HObjListBringToFront(list, 7), 1);
    EXPECT_EQ(Items(list), (V{7, 7, 8, 9}));
    EXPECT_EQ(HObjListBringToFront(list, 9), 1);
    EXPECT_EQ(HObjListBringToFront(list, 9), 0);
    EXPECT_EQ(HObjListBringToFront(list, 5), 0);
    EXPECT_EQ(Items(list), (V{9, 7, 7, 8}));
    EXPECT_EQ(HObjListRemove(list, 5), 0);
    EXPECT_EQ(HObjListRemoveAt(list, 99), 8u);
    EXPECT_EQ(Items(list), (V{9, 7, 7}));
    MemDisposeHandle(list);
}

TEST(HObjList, CompactDropsZerosAndFitsTheBlock) {
    HObjList list = Make(16, {0, 4, 0, 0, 5, 0, 6, 0, 0});
    ASSERT_EQ(MemHandleSize(list), 48);
    EXPECT_EQ(HObjListCompact(list), MgNoError);
    EXPECT_EQ(Items(list), (V{4, 5, 6}));
    EXPECT_EQ(MemHandleSize(list), 16);  // (12 + 19) with the low bits cleared
    MemDisposeHandle(list);
    list = Make(16, {0, 4, 5});
    EXPECT_EQ(HObjListCompact(list), MgNoError);
    EXPECT_EQ(reinterpret_cast<const int32_t*>(*list)[3], 0);  // the freed slot is cleared
    MemDisposeHandle(list);
}

}  // namespace
