// Packed LStr lists and the LStr appends: padding, sorted insert, byte-order swap, zones.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mg/ansi.h"
#include "mg/lists.h"
#include "platform/faults.h"
#include "support/handles.h"

namespace {

using namespace mgtest;
using V = std::vector<std::string>;

V Items(Handle list) {
    V out;
    for (int32_t i = 0; i < *reinterpret_cast<int32_t*>(*list); ++i)
        out.push_back(LText(LListGet(*list, i)));
    return out;
}

Handle Make(const V& items, bool mainZone = true) {
    Handle list = mainZone ? MemNewHandleClear(4) : CompactNewHandleClear(4);
    for (const auto& s : items) EXPECT_EQ(LListInsert(list, L(s), 99, mainZone, 0), 0);
    return list;
}

TEST(LList, InsertPadsWithZerosAndSizesByZone) {
    for (bool mainZone : {true, false}) {
        Handle list = Make({"hello"}, mainZone);
        // The count, the length, 5 + 3 zeros.
        EXPECT_EQ(Contents(list, mainZone),
                  std::string("\1\0\0\0", 4) + LStrBytes("hello") + '\0' + '\0' + '\0');
        mainZone ? MemResizeHandle(list, 100) : CompactResizeHandle(list, 100);
        ASSERT_EQ(LListInsert(list, L("xy"), -4, mainZone, 0), MgNoError);
        EXPECT_EQ(HandleBytes(list, mainZone), 100);
        ASSERT_EQ(LListInsert(list, L(""), 1, mainZone, 1), MgNoError);
        EXPECT_EQ(HandleBytes(list, mainZone), 28);
        EXPECT_EQ(Items(list), (V{"xy", "", "hello"}));
        EXPECT_EQ(LListDelete(list, 0, mainZone), 2);
        EXPECT_EQ(HandleBytes(list, mainZone), 20);
        DisposeIn(list, mainZone);
    }
    Handle list = Make({"a"});
    plat::FailAllocationAt(1);
    EXPECT_EQ(LListInsert(list, L("a much longer string"), 0, 1, 1), MgNoMemory);
    plat::ResetFaults();
    EXPECT_EQ(LListDelete(list, 5, 1), 0);  // the last one goes too
    EXPECT_EQ(Items(list), V{});
    MemDisposeHandle(list);
}

TEST(LList, SortedInsert) {
    const struct {
        std::string s;
        int32_t allow, found, inserted;
        V after;
    } cases[] = {{"b", 0, 1, 0, {"a", "b", "d"}},
                 {"b", 1, 1, 1, {"a", "b", "b", "d"}},
                 {"z", 0, 3, 1, {"a", "b", "d", "z"}},
                 {"ba", 0, 2, 1, {"a", "b", "ba", "d"}}};
    for (const auto& c : cases) {
        Handle list = Make({"a", "b", "d"});
        int32_t found = -1, inserted = -1;
        ASSERT_EQ(LListInsertSorted(list, L(c.s), c.allow, &found, &inserted, 1, 0), 0);
        EXPECT_EQ(std::vector<int32_t>({found, inserted}),
                  std::vector<int32_t>({c.found, c.inserted}))
            << c.s;
        EXPECT_EQ(Items(list), c.after) << c.s;
        MemDisposeHandle(list);
    }
}

// The swap walks by the swapped counts to the end: host counts read swapped run past it, and
// bytes the walk never reaches are as bad.
TEST(LListDeathTest, SwapWalksByTheSwappedCountsToTheEnd) {
    // The empty last string puts a count word at the very end of the block.
    Handle list = Make({"one", "three, and more", ""});
    const std::string host = Contents(list);
    std::string foreign = host;
    for (size_t at : {0, 4, 12, 32}) Swap32(&foreign[at]);
    memcpy(*list, foreign.data(), foreign.size());
    LListSwap(list);
    EXPECT_EQ(Contents(list), host);
    EXPECT_DEATH(LListSwap(list), "");
    MemResizeHandle(list, int32_t(foreign.size()) + 4);
    memcpy(*list, foreign.data(), foreign.size());
    EXPECT_DEATH(LListSwap(list), "");
    MemDisposeHandle(list);
}

TEST(LStringAppend, GrowsOnlyWhenNeededAndExactFits) {
    const struct {
        bool mainZone, exact;
        MgStatus (*append)(LStrHandle, const LStr*);
    } forms[] = {{true, false, LStringAppend},
                 {true, true, LStringAppendExact},
                 {false, false, LStringAppendCompact},
                 {false, true, LStringAppendCompactExact}};
    for (const auto& f : forms) {
        Handle h = f.mainZone ? MemNewHandleClear(40) : CompactNewHandleClear(40);
        LStrHandle l = reinterpret_cast<LStrHandle>(h);
        ASSERT_EQ(f.append(l, L("abc")), MgNoError);
        EXPECT_EQ(HandleBytes(h, f.mainZone), f.exact ? 7 : 40);
        ASSERT_EQ(f.append(l, nullptr), MgNoError);  // appends nothing
        ASSERT_EQ(f.append(l, L(std::string(40, 'z'))), MgNoError);
        ASSERT_EQ(f.append(l, L("!")), MgNoError);
        EXPECT_EQ(Contents(h, f.mainZone), LStrBytes("abc" + std::string(40, 'z') + "!"));
        DisposeIn(h, f.mainZone);
    }
    // A count beyond the handle, or a negative count on either side, is refused.
    Handle h = MemNewHandleClear(8);
    LStrHandle l = reinterpret_cast<LStrHandle>(h);
    L negative("");
    negative.get()->count = -1;
    for (int32_t count : {5, -1, 0}) {
        (*l)->count = count;
        EXPECT_EQ(LStringAppend(l, count ? L("a").get() : negative.get()), MgBadArgument) << count;
    }
    MemDisposeHandle(h);
}

TEST(LStringAssign, MakesResizesAndDisposes) {
    LStrHandle h = nullptr;
    const uint8_t* text = reinterpret_cast<const uint8_t*>("hello");
    EXPECT_EQ(LStringAssign(nullptr, 3, text), MgBadArgument);
    for (int32_t n : {3, 5}) {
        ASSERT_EQ(LStringAssign(&h, n, text), MgNoError);
        EXPECT_EQ(Contents(reinterpret_cast<Handle>(h), false), LStrBytes(std::string("hello", n)));
    }
    EXPECT_EQ(LStringAssign(&h, -1, text), MgBadArgument);
    EXPECT_EQ(LStringAssign(&h, 5, nullptr), MgNoError);
    EXPECT_EQ(h, nullptr);
}

}  // namespace
