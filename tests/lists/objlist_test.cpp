// The object list: pinned indices, back-to-front search, and the 16-byte growth steps.
#include "mg/objlist.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/handles.h"

namespace {

using V = std::vector<uint32_t>;

HObjList Make(const V& items) {
    HObjList list = MemNewHandleClear(16);
    for (uint32_t item : items) EXPECT_EQ(HObjListInsert(list, item, 1 << 30), MgNoError);
    return list;
}

// The items, then the block's size and, with `slot`, the first word behind the items.
V Items(HObjList list, bool slot = false) {
    const int32_t* words = reinterpret_cast<const int32_t*>(*list);
    V out(words + 1, words + 1 + words[0]);
    out.push_back(MemHandleSize(list));
    if (slot) out.push_back(words[words[0] + 1]);
    return out;
}

TEST(HObjList, GrowsAndShrinksBySixteenWithSlack) {
    HObjList list = Make({});
    V sizes, removed;
    for (uint32_t i = 1; i <= 8; ++i) {
        HObjListInsert(list, i, i % 2 ? -5 : 99);  // odd ones first, even ones last
        sizes.push_back(MemHandleSize(list));
    }
    while (*reinterpret_cast<int32_t*>(*list) > 0) {
        removed.push_back(HObjListRemoveAt(list, -3));
        sizes.push_back(MemHandleSize(list));
    }
    EXPECT_EQ(sizes, (V{16, 16, 16, 32, 32, 32, 32, 48, 48, 32, 32, 32, 32, 16, 16, 16}));
    EXPECT_TRUE(removed == V({7, 5, 3, 1, 2, 4, 6, 8}) && HObjListRemoveAt(list, 0) == 0u);
    MemDisposeHandle(list);
}

// The freed slot is cleared.
TEST(HObjList, SearchRemovalFrontAndCompact) {
    HObjList list = Make({7, 8, 7, 9});
    EXPECT_TRUE(HObjListIndexOf(list, 7) == 2 && HObjListBringToFront(list, 7) == 1);
    EXPECT_EQ(Items(list), (V{7, 7, 8, 9, 32}));
    const int32_t results[] = {HObjListBringToFront(list, 9), HObjListBringToFront(list, 9),
                               HObjListBringToFront(list, 5), HObjListRemove(list, 5),
                               HObjListRemove(list, 7),       int32_t(HObjListRemoveAt(list, 99))};
    EXPECT_EQ(std::vector<int32_t>(results, results + 6), (std::vector<int32_t>{1, 0, 0, 0, 1, 8}));
    EXPECT_EQ(Items(list, true), (V{9, 7, 16, 0}));
    MemDisposeHandle(list);
    // Compacting drops the zeros and fits the block: (12 + 19) with the low bits cleared, and
    // a cleared slot behind two items.
    for (const auto& [items, want] : {std::pair<V, V>{{0, 4, 0, 0, 5, 0, 6, 0, 0}, {4, 5, 6, 16}},
                                      {{0, 4, 5}, {4, 5, 16, 0}}}) {
        list = Make(items);
        EXPECT_TRUE(HObjListCompact(list) == MgNoError && Items(list, items.size() == 3) == want);
        MemDisposeHandle(list);
    }
}

}  // namespace
