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

using V = std::vector<std::string>;

std::string P(const std::string& s) {
    return std::string(1, char(s.size())) + s;
}
ConstPStr PS(const std::string& p) {
    return reinterpret_cast<ConstPStr>(p.data());
}

Handle Make(const V& items) {
    Handle list = MemNewHandleClear(4);
    for (const auto& s : items) EXPECT_EQ(PListInsert(list, PS(P(s)), 1 << 30, 0), MgNoError);
    return list;
}

V Items(Handle list) {
    int32_t n;
    memcpy(&n, *list, 4);
    V out;
    for (int32_t i = 0; i < n; ++i) {
        ConstPStr p = PListGet(list, i);
        out.emplace_back(reinterpret_cast<const char*>(p + 1), p[0]);
    }
    return out;
}

int32_t UsedBytes(const V& items) {
    int32_t n = 4;
    for (const auto& s : items) n += 1 + int32_t(s.size());
    return n;
}

TEST(PList, InsertReplaceDeleteFitTheHandle) {
    struct {
        const char* op;
        int32_t index;
        std::string s;
        V want;
    } cases[] = {
        {"insert", -3, "x", {"x", "a", "bbb"}},
        {"insert", 1000000, "x", {"a", "bbb", "x"}},
        {"replace", 1, "BBBBB", {"a", "BBBBB"}},
        {"replace", 7, "", {"a", ""}},
        {"replace", -1, "yy", {"yy", "bbb"}},
        {"delete", 99, "", {"a"}},
        {"delete", -7, "", {"bbb"}},
    };
    for (const auto& c : cases) {
        Handle list = Make({"a", "bbb"});
        const std::string op = c.op;
        const int32_t result = op == "insert"    ? PListInsertExact(list, PS(P(c.s)), c.index)
                               : op == "replace" ? PListReplace(list, PS(P(c.s)), c.index)
                                                 : PListDelete(list, c.index) - 1;
        EXPECT_EQ(result, 0) << op << " " << c.index;
        EXPECT_EQ(Items(list), c.want) << op << " " << c.index;
        EXPECT_EQ(MemHandleSize(list), UsedBytes(c.want)) << op << " " << c.index;
        MemDisposeHandle(list);
    }
}

TEST(PList, SizingAndFailedGrowth) {
    Handle list = Make({"a"});
    ASSERT_EQ(MemResizeHandle(list, 64), MgNoError);
    ASSERT_EQ(PListInsert(list, PS(P("bc")), 9, 0), MgNoError);
    EXPECT_EQ(MemHandleSize(list), 64);  // roomy enough: kept
    for (int which = 0; which < 2; ++which) {
        plat::FailAllocationAt(1);
        EXPECT_EQ(which ? PListReplace(list, PS(P("longer")), 0)
                        : PListInsertExact(list, PS(P("long string")), 0),
                  MgNoMemory);
        plat::ResetFaults();
    }
    EXPECT_EQ(Items(list), (V{"a", "bc"}));
    EXPECT_EQ(PListSetEmptyString(list), MgNoError);
    EXPECT_EQ(Items(list), (V{""}));
    EXPECT_EQ(PListClear(list), MgNoError);
    EXPECT_EQ(MemHandleSize(list), 4);
    EXPECT_EQ(PListDelete(list, 0), 0);  // empty: left alone
    ASSERT_EQ(PListReplace(list, PS(P("hi")), 0), MgNoError);
    EXPECT_EQ(Items(list), V{});  // stored at the start, count 0
    EXPECT_EQ(memcmp(*list + 4, "\2hi", 3), 0);
    EXPECT_EQ(PListClear(nullptr), MgBadArgument);
    EXPECT_EQ(PListSetEmptyString(nullptr), MgBadArgument);
    MemDisposeHandle(list);
}

TEST(PList, FindDuplicatesAndTheShortForm) {
    Handle list = Make({"one", "Two"});
    const std::string two = P("two");
    ConstPStr key = PS(two);
    EXPECT_EQ(PListFind(list, &key, PStringOrderNoCaseIndirect), 1);
    EXPECT_EQ(PListFind(list, &key, PStringOrderIndirect), -1);
    MemDisposeHandle(list);
    for (const auto& [items, want] :
         {std::pair<V, int32_t>{{"a", "b", "a"}, 2}, std::pair<V, int32_t>{{"a", "A", "b"}, 0}}) {
        Handle l = Make(items);
        EXPECT_EQ(PListFirstDuplicate(*l), want);
        MemDisposeHandle(l);
    }
    uint8_t block[] = {0, 0, 1, 'a', 2, 'b', 'c'};
    const int16_t count = 2;
    memcpy(block, &count, 2);
    EXPECT_EQ(PList16Get(block, 1), block + 4);
    EXPECT_EQ(PList16Get(block, 2), nullptr);
    EXPECT_EQ(PList16Get(block, -1), nullptr);
}

}  // namespace
