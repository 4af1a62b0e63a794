// Packed PStr lists: pinned indices, sizing, replacement in both directions, search.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mg/lists.h"
#include "platform/faults.h"
#include "support/handles.h"
#include "support/pstr.h"

namespace {

using mgtest::P;
using V = std::vector<std::string>;

Handle Make(const V& items) {
    Handle list = MemNewHandleClear(4);
    for (const auto& s : items) EXPECT_EQ(PListInsert(list, P(s).b, 1 << 30, 0), MgNoError);
    return list;
}

// The elements, and the handle's size after them when it differs from the bytes in use.
std::string Items(Handle list) {
    std::string out;
    int32_t at = 4;
    for (int32_t i = 0; i < *reinterpret_cast<int32_t*>(*list); at += 1 + (*list)[at], ++i)
        out += "[" +
               P(std::string(reinterpret_cast<const char*>(*list + at + 1), (*list)[at])).str() +
               "]";
    return MemHandleSize(list) == at ? out : out + std::to_string(MemHandleSize(list));
}

TEST(PList, InsertReplaceDeleteFitTheHandle) {
    // clang-format off
    const struct { char op; int32_t index; std::string s; const char* want; } cases[] = {
        {'i', -3, "x", "[x][a][bbb]"}, {'i', 1000000, "x", "[a][bbb][x]"}, {'r', 1, "BBBBB", "[a][BBBBB]"},
        {'r', 7, "", "[a][]"}, {'r', -1, "yy", "[yy][bbb]"}, {'d', 99, "", "[a]"}, {'d', -7, "", "[bbb]"}};
    // clang-format on
    for (const auto& c : cases) {
        Handle list = Make({"a", "bbb"});
        const int32_t result = c.op == 'i'   ? PListInsertExact(list, P(c.s).b, c.index)
                               : c.op == 'r' ? PListReplace(list, P(c.s).b, c.index)
                                             : PListDelete(list, c.index) - 1;
        EXPECT_EQ(result, 0) << c.op << " " << c.index;
        EXPECT_EQ(Items(list), c.want) << c.op << " " << c.index;
        MemDisposeHandle(list);
    }
}

TEST(PList, SizingAndFailedGrowth) {
    Handle list = Make({"a"});
    ASSERT_EQ(MemResizeHandle(list, 64), MgNoError);
    ASSERT_EQ(PListInsert(list, P("bc").b, 9, 0), MgNoError);  // roomy enough: kept
    for (int which = 0; which < 2; ++which) {
        plat::FailAllocationAt(1);
        EXPECT_EQ(which ? PListReplace(list, P("longer").b, 0)
                        : PListInsertExact(list, P("long string").b, 0),
                  MgNoMemory);
        plat::ResetFaults();
    }
    EXPECT_EQ(Items(list), "[a][bc]64");
    EXPECT_EQ(PListSetEmptyString(list), MgNoError);
    EXPECT_EQ(Items(list), "[]");
    ASSERT_EQ(PListReplace(list, P("z").b, 0), MgNoError);  // the only one is replaced
    EXPECT_EQ(Items(list), "[z]");
    EXPECT_EQ(PListClear(list), MgNoError);
    EXPECT_EQ(Items(list), "");
    EXPECT_EQ(PListDelete(list, 0), 0);  // empty: left alone
    ASSERT_EQ(PListReplace(list, P("hi").b, 0), MgNoError);
    EXPECT_EQ(mgtest::Contents(list), std::string("\0\0\0\0\2hi", 7));  // at the start, count 0
    EXPECT_EQ(PListClear(nullptr), MgBadArgument);
    EXPECT_EQ(PListSetEmptyString(nullptr), MgBadArgument);
    MemDisposeHandle(list);
}

TEST(PList, FindDuplicatesAndTheShortForm) {
    Handle list = Make({"one", "Two"});
    const P two("two");
    ConstPStr key = two.b;
    EXPECT_EQ(PListFind(list, &key, PStringOrderNoCaseIndirect), 1);
    EXPECT_EQ(PListFind(list, &key, PStringOrderIndirect), -1);
    EXPECT_EQ(PListGet(list, -1), *list + 4);  // indices are pinned
    EXPECT_EQ(PListGet(list, 9), PListGet(list, 1));
    MemDisposeHandle(list);
    for (const auto& [items, want] :
         {std::pair<V, int32_t>{{"b", "a", "a"}, 2}, {{"a", "A", "b"}, 0}}) {
        Handle l = Make(items);
        EXPECT_EQ(PListFirstDuplicate(*l), want);
        MemDisposeHandle(l);
    }
    uint8_t block[] = {0, 0, 1, 'a', 2, 'b', 'c'};
    const int16_t count = 2;
    memcpy(block, &count, 2);
    const ConstPStr got[] = {PList16Get(block, 0), PList16Get(block, 1), PList16Get(block, 2),
                             PList16Get(block, -1)};
    EXPECT_TRUE(got[0] == block + 2 && got[1] == block + 4 && !got[2] && !got[3]);
}

}  // namespace
