// The object list: pinned indices, back-to-front search, and the 16-byte growth steps.
#include "mg/objlist.h"

#include <gtest/gtest.h>

#include <vector>

#include "mg/memory.h"
#include "support/memory_env.h"

namespace {

HObjList Make(int32_t blockSize, const std::vector<uint32_t>& items) {
    HObjList list = MemNewHandleClear(blockSize);
    for (uint32_t item : items) EXPECT_EQ(HObjListInsert(list, item, 1 << 30), MgNoError);
    return list;
}

std::vector<uint32_t> Items(HObjList list) {
    const int32_t* words = reinterpret_cast<const int32_t*>(*list);
    return std::vector<uint32_t>(words + 1, words + 1 + words[0]);
}

TEST(HObjList, InsertPinsTheIndex) {
    struct {
        int32_t index;
        std::vector<uint32_t> want;
    } cases[] = {{-5, {9, 1, 2, 3}}, {0, {9, 1, 2, 3}}, {2, {1, 2, 9, 3}}, {99, {1, 2, 3, 9}}};
    for (const auto& c : cases) {
        HObjList list = Make(16, {1, 2, 3});
        ASSERT_EQ(HObjListInsert(list, 9, c.index), MgNoError);
        EXPECT_EQ(Items(list), c.want) << c.index;
        MemDisposeHandle(list);
    }
}

TEST(HObjList, GrowsAndShrinksBySixteenWithSlack) {
    HObjList list = Make(16, {});
    std::vector<int32_t> sizes;
    for (uint32_t i = 1; i <= 8; ++i) {
        HObjListInsert(list, i, 99);
        sizes.push_back(MemHandleSize(list));
    }
    EXPECT_EQ(sizes, (std::vector<int32_t>{16, 16, 16, 32, 32, 32, 32, 48}));
    sizes.clear();
    while (Items(list).size() > 0) {
        HObjListRemoveAt(list, 0);
        sizes.push_back(MemHandleSize(list));
    }
    EXPECT_EQ(sizes, (std::vector<int32_t>{48, 32, 32, 32, 32, 16, 16, 16}));
    EXPECT_EQ(HObjListRemoveAt(list, 0), 0u);
    MemDisposeHandle(list);

    // A size off the 16-byte steps is first brought down to one.
    list = Make(40, {1});
    HObjListRemoveAt(list, 0);
    EXPECT_EQ(MemHandleSize(list), 32);
    MemDisposeHandle(list);
}

TEST(HObjList, SearchAndRemovalWorkFromTheBack) {
    HObjList list = Make(16, {7, 8, 7, 9});
    EXPECT_EQ(HObjListIndexOf(list, 7), 2);
    EXPECT_EQ(HObjListIndexOf(list, 5), -1);
    EXPECT_EQ(HObjListRemove(list, 7), 1);
    EXPECT_EQ(Items(list), (std::vector<uint32_t>{7, 8, 9}));
    EXPECT_EQ(HObjListRemove(list, 5), 0);
    EXPECT_EQ(HObjListRemoveAt(list, 99), 9u);
    EXPECT_EQ(HObjListRemoveAt(list, -3), 7u);
    EXPECT_EQ(Items(list), (std::vector<uint32_t>{8}));
    MemDisposeHandle(list);
}

TEST(HObjList, BringToFront) {
    HObjList list = Make(16, {1, 2, 3, 2});
    EXPECT_EQ(HObjListBringToFront(list, 1), 0);
    EXPECT_EQ(HObjListBringToFront(list, 5), 0);
    EXPECT_EQ(Items(list), (std::vector<uint32_t>{1, 2, 3, 2}));
    EXPECT_EQ(HObjListBringToFront(list, 2), 1);  // the one nearest the back
    EXPECT_EQ(Items(list), (std::vector<uint32_t>{2, 1, 2, 3}));
    MemDisposeHandle(list);
}

TEST(HObjList, CompactDropsZerosAndFitsTheBlock) {
    HObjList list = Make(16, {0, 4, 0, 0, 5, 0, 6, 0, 0});
    ASSERT_EQ(MemHandleSize(list), 48);
    EXPECT_EQ(HObjListCompact(list), MgNoError);
    EXPECT_EQ(Items(list), (std::vector<uint32_t>{4, 5, 6}));
    EXPECT_EQ(MemHandleSize(list), 16);  // (12 + 19) with the low bits cleared
    MemDisposeHandle(list);

    list = Make(16, {0, 4, 5});
    EXPECT_EQ(HObjListCompact(list), MgNoError);
    EXPECT_EQ(MemHandleSize(list), 16);
    EXPECT_EQ(reinterpret_cast<const int32_t*>(*list)[3], 0);  // the freed slot is cleared
    MemDisposeHandle(list);
}

}  // namespace
