// Packed PStr lists: pinned indices, sizing, replacement in both directions, search.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "mg/lists.h"
#include "mg/memory.h"
#include "platform/faults.h"
#include "support/memory_env.h"

namespace {

struct P {
    uint8_t b[256];
    explicit P(const std::string& s) {
        b[0] = static_cast<uint8_t>(s.size());
        memcpy(b + 1, s.data(), s.size());
    }
};

std::string Str(ConstPStr p) {
    return std::string(reinterpret_cast<const char*>(p + 1), p[0]);
}

Handle Make(const std::vector<std::string>& items) {
    Handle list = MemNewHandleClear(4);
    for (const auto& s : items) EXPECT_EQ(PListInsert(list, P(s).b, 1 << 30, 0), MgNoError);
    return list;
}

int32_t Count(Handle list) {
    int32_t n;
    memcpy(&n, *list, 4);
    return n;
}

std::vector<std::string> Items(Handle list) {
    std::vector<std::string> out;
    for (int32_t i = 0; i < Count(list); ++i) out.push_back(Str(PListGet(list, i)));
    return out;
}

int32_t UsedBytes(const std::vector<std::string>& items) {
    int32_t n = 4;
    for (const auto& s : items) n += 1 + int32_t(s.size());
    return n;
}

using V = std::vector<std::string>;

TEST(PList, InsertPinsTheIndexAndSizesExactlyWhenAsked) {
    struct {
        int32_t index;
        V want;
    } cases[] = {{-3, {"x", "a", "bb"}},
                 {1, {"a", "x", "bb"}},
                 {2, {"a", "bb", "x"}},
                 {1000000, {"a", "bb", "x"}}};
    for (const auto& c : cases) {
        Handle list = Make({"a", "bb"});
        ASSERT_EQ(PListInsertExact(list, P("x").b, c.index), MgNoError);
        EXPECT_EQ(Items(list), c.want) << c.index;
        EXPECT_EQ(MemHandleSize(list), UsedBytes(c.want));
        MemDisposeHandle(list);
    }
    // Not exact: a roomy handle keeps its size; exact: fitted, even downwards.
    Handle list = Make({"a"});
    ASSERT_EQ(MemResizeHandle(list, 64), MgNoError);
    ASSERT_EQ(PListInsert(list, P("bc").b, 9, 0), MgNoError);
    EXPECT_EQ(MemHandleSize(list), 64);
    ASSERT_EQ(PListInsert(list, P("d").b, 9, 1), MgNoError);
    EXPECT_EQ(MemHandleSize(list), UsedBytes({"a", "bc", "d"}));
    EXPECT_EQ(Items(list), (V{"a", "bc", "d"}));
    MemDisposeHandle(list);
}

TEST(PList, FailedGrowthChangesNothing) {
    Handle list = Make({"a", "b"});
    plat::FailAllocationAt(1);
    EXPECT_EQ(PListInsertExact(list, P("long string").b, 0), MgNoMemory);
    plat::FailAllocationAt(1);
    EXPECT_EQ(PListReplace(list, P("longer").b, 0), MgNoMemory);
    plat::ResetFaults();
    EXPECT_EQ(Items(list), (V{"a", "b"}));
    MemDisposeHandle(list);
}

TEST(PList, GetAndDeletePinTheIndex) {
    Handle list = Make({"a", "bb", "ccc"});
    EXPECT_EQ(Str(PListGet(list, 3)), "ccc");
    EXPECT_EQ(Str(PListGet(list, -1)), "a");
    EXPECT_EQ(PListDelete(list, 1), 2);
    EXPECT_EQ(Items(list), (V{"a", "ccc"}));
    EXPECT_EQ(PListDelete(list, 99), 1);
    EXPECT_EQ(Items(list), (V{"a"}));
    EXPECT_EQ(MemHandleSize(list), UsedBytes({"a"}));
    EXPECT_EQ(PListDelete(list, -7), 0);
    EXPECT_EQ(PListDelete(list, 0), 0);  // empty: left alone
    MemDisposeHandle(list);
}

TEST(PList, ReplaceKeepsTheCountInEitherDirection) {
    struct {
        int32_t index;
        std::string with;
        V want;
    } cases[] = {{1, "BBBBB", {"a", "BBBBB", "cc"}},
                 {1, "", {"a", "", "cc"}},
                 {7, "z", {"a", "bbb", "z"}},
                 {-1, "yy", {"yy", "bbb", "cc"}}};
    for (const auto& c : cases) {
        Handle list = Make({"a", "bbb", "cc"});
        ASSERT_EQ(PListReplace(list, P(c.with).b, c.index), MgNoError);
        EXPECT_EQ(Items(list), c.want);
        EXPECT_EQ(MemHandleSize(list), UsedBytes(c.want));
        MemDisposeHandle(list);
    }
    Handle empty = Make({});
    ASSERT_EQ(PListReplace(empty, P("hi").b, 0), MgNoError);
    EXPECT_EQ(Count(empty), 0);
    EXPECT_EQ(Str(*empty + 4), "hi");
    MemDisposeHandle(empty);
}

TEST(PList, ClearAndSetEmptyString) {
    Handle list = Make({"a", "b"});
    EXPECT_EQ(PListSetEmptyString(list), MgNoError);
    EXPECT_EQ(Items(list), (V{""}));
    EXPECT_EQ(MemHandleSize(list), 5);
    EXPECT_EQ(PListClear(list), MgNoError);
    EXPECT_EQ(Count(list), 0);
    EXPECT_EQ(MemHandleSize(list), 4);
    EXPECT_EQ(PListClear(nullptr), MgBadArgument);
    EXPECT_EQ(PListSetEmptyString(nullptr), MgBadArgument);
    MemDisposeHandle(list);
}

TEST(PList, FindAndDuplicates) {
    Handle list = Make({"one", "Two", "three"});
    const P two("two");
    ConstPStr key = two.b;
    EXPECT_EQ(PListFind(list, &key, PStringOrderNoCaseIndirect), 1);
    EXPECT_EQ(PListFind(list, &key, PStringOrderIndirect), -1);
    Handle empty = Make({});
    EXPECT_EQ(PListFind(empty, &key, PStringOrderIndirect), -1);

    struct {
        V items;
        int32_t want;
    } cases[] = {{{"a", "b", "a"}, 2}, {{"a", "b"}, 0}, {{"a", "A"}, 0}, {{"x", "y", "y", "x"}, 2}};
    for (const auto& c : cases) {
        Handle l = Make(c.items);
        EXPECT_EQ(PListFirstDuplicate(*l), c.want);
        MemDisposeHandle(l);
    }
    MemDisposeHandle(list);
    MemDisposeHandle(empty);
}

TEST(PList16, GetIsNullOutsideTheCount) {
    const uint8_t block[] = {0, 0, 1, 'a', 2, 'b', 'c', 0};
    uint8_t withCount[sizeof block];
    memcpy(withCount, block, sizeof block);
    const int16_t count = 2;
    memcpy(withCount, &count, 2);
    EXPECT_EQ(Str(PList16Get(withCount, 1)), "bc");
    EXPECT_EQ(Str(PList16Get(withCount, 0)), "a");
    EXPECT_EQ(PList16Get(withCount, 2), nullptr);
    EXPECT_EQ(PList16Get(withCount, -1), nullptr);
}

}  // namespace
