// Packed LStr lists and the LStr appends: padding, sorted insert, byte-order swap, zones.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "mg/ansi.h"
#include "mg/lists.h"
#include "mg/memory.h"
#include "platform/faults.h"
#include "support/memory_env.h"

namespace {

using V = std::vector<std::string>;

// An LStr in a byte vector.
std::vector<uint8_t> L(const std::string& s) {
    std::vector<uint8_t> b(4 + s.size());
    const int32_t n = int32_t(s.size());
    memcpy(b.data(), &n, 4);
    memcpy(b.data() + 4, s.data(), s.size());
    return b;
}
const LStr* LS(const std::vector<uint8_t>& b) {
    return reinterpret_cast<const LStr*>(b.data());
}

V Items(Handle list) {
    int32_t n;
    memcpy(&n, *list, 4);
    V out;
    for (int32_t i = 0; i < n; ++i) {
        const LStr* l = LListGet(*list, i);
        out.emplace_back(reinterpret_cast<const char*>(l->text), l->count);
    }
    return out;
}

Handle Make(const V& items, bool mainZone = true) {
    Handle list = mainZone ? MemNewHandleClear(4) : CompactNewHandleClear(4);
    for (const auto& s : items) EXPECT_EQ(LListInsert(list, LS(L(s)), 99, mainZone, 0), 0);
    return list;
}

TEST(LList, InsertPadsWithZerosAndSizesByZone) {
    for (bool mainZone : {true, false}) {
        Handle list = Make({"hello"}, mainZone);
        auto size = [&] { return mainZone ? MemHandleSize(list) : CompactHandleSize(list); };
        ASSERT_EQ(size(), 16);  // count, length, 5 + 3 zeros
        EXPECT_EQ(memcmp(*list + 8, "hello\0\0\0", 8), 0);
        mainZone ? MemResizeHandle(list, 100) : CompactResizeHandle(list, 100);
        ASSERT_EQ(LListInsert(list, LS(L("xy")), -4, mainZone, 0), MgNoError);
        EXPECT_EQ(size(), 100);
        ASSERT_EQ(LListInsert(list, LS(L("")), 1, mainZone, 1), MgNoError);
        EXPECT_EQ(size(), 28);
        EXPECT_EQ(Items(list), (V{"xy", "", "hello"}));
        EXPECT_EQ(LListDelete(list, 0, mainZone), 2);
        EXPECT_EQ(size(), 20);
        mainZone ? MemDisposeHandle(list) : CompactDisposeHandle(list);
    }
    Handle list = Make({"a"});
    plat::FailAllocationAt(1);
    EXPECT_EQ(LListInsert(list, LS(L("a much longer string")), 0, 1, 1), MgNoMemory);
    plat::ResetFaults();
    EXPECT_EQ(LListDelete(list, 5, 1), 0);  // the last one goes too
    EXPECT_EQ(Items(list), V{});
    MemDisposeHandle(list);
}

TEST(LList, SortedInsert) {
    struct {
        std::string s;
        int32_t allow, found, inserted;
        V after;
    } cases[] = {
        {"b", 0, 1, 0, {"a", "b", "d"}},
        {"b", 1, 1, 1, {"a", "b", "b", "d"}},
        {"z", 0, 3, 1, {"a", "b", "d", "z"}},
        {"ba", 0, 2, 1, {"a", "b", "ba", "d"}},
    };
    for (const auto& c : cases) {
        Handle list = Make({"a", "b", "d"});
        int32_t found = -1, inserted = -1;
        ASSERT_EQ(LListInsertSorted(list, LS(L(c.s)), c.allow, &found, &inserted, 1, 0), 0);
        EXPECT_EQ(found, c.found) << c.s;
        EXPECT_EQ(inserted, c.inserted) << c.s;
        EXPECT_EQ(Items(list), c.after) << c.s;
        MemDisposeHandle(list);
    }
}

// The bytes of `list` with every count word reversed, walking by the host counts.
std::vector<uint8_t> Foreign(Handle list) {
    std::vector<uint8_t> b(*list, *list + MemHandleSize(list));
    size_t at = 4;
    for (const auto& s : Items(list)) {
        Swap32(&b[at]);
        at += 4 + ((s.size() + 3) & ~size_t{3});
    }
    Swap32(b.data());
    return b;
}

TEST(LListDeathTest, SwapWalksByTheSwappedCountsToTheEnd) {
    // The empty last string puts a count word at the very end of the block.
    Handle list = Make({"one", "three, and more", ""});
    const std::vector<uint8_t> host(*list, *list + MemHandleSize(list));
    const std::vector<uint8_t> foreign = Foreign(list);
    memcpy(*list, foreign.data(), foreign.size());
    LListSwap(list);
    EXPECT_EQ(std::vector<uint8_t>(*list, *list + MemHandleSize(list)), host);
    EXPECT_DEATH(LListSwap(list), "");  // host counts, read swapped, run past the end
    MemResizeHandle(list, int32_t(foreign.size()) + 4);  // bytes the walk never reaches
    memcpy(*list, foreign.data(), foreign.size());
    EXPECT_DEATH(LListSwap(list), "");
    MemDisposeHandle(list);
}

TEST(LStringAppend, GrowsOnlyWhenNeededAndExactFits) {
    struct {
        bool mainZone, exact;
        MgStatus (*append)(LStrHandle, const LStr*);
    } forms[] = {{true, false, LStringAppend},
                 {true, true, LStringAppendExact},
                 {false, false, LStringAppendCompact},
                 {false, true, LStringAppendCompactExact}};
    for (const auto& f : forms) {
        Handle h = f.mainZone ? MemNewHandleClear(40) : CompactNewHandleClear(40);
        auto size = [&] { return f.mainZone ? MemHandleSize(h) : CompactHandleSize(h); };
        LStrHandle l = reinterpret_cast<LStrHandle>(h);
        ASSERT_EQ(f.append(l, LS(L("abc"))), MgNoError);
        EXPECT_EQ(size(), f.exact ? 7 : 40);
        ASSERT_EQ(f.append(l, nullptr), MgNoError);  // appends nothing
        ASSERT_EQ(f.append(l, LS(L(std::string(40, 'z')))), MgNoError);
        EXPECT_EQ((*l)->count, 43);
        EXPECT_EQ(memcmp((*l)->text, "abczz", 5), 0);
        EXPECT_EQ(size(), 47);
        ASSERT_EQ(f.append(l, LS(L("!"))), MgNoError);
        EXPECT_EQ(std::string(reinterpret_cast<char*>((*l)->text) + 42, 2), "z!");
        f.mainZone ? MemDisposeHandle(h) : CompactDisposeHandle(h);
    }
    // A count beyond the handle, or a negative count on either side, is refused.
    Handle h = MemNewHandleClear(8);
    LStrHandle l = reinterpret_cast<LStrHandle>(h);
    std::vector<uint8_t> negative = L("");
    negative[0] = negative[1] = negative[2] = negative[3] = 0xFF;
    for (int32_t count : {5, -1, 0}) {
        (*l)->count = count;
        EXPECT_EQ(LStringAppend(l, LS(count ? L("a") : negative)), MgBadArgument) << count;
    }
    MemDisposeHandle(h);
}

TEST(LStringAssign, MakesResizesAndDisposes) {
    LStrHandle h = nullptr;
    const uint8_t* text = reinterpret_cast<const uint8_t*>("hello");
    EXPECT_EQ(LStringAssign(nullptr, 3, text), MgBadArgument);
    for (int32_t n : {3, 5}) {
        ASSERT_EQ(LStringAssign(&h, n, text), MgNoError);
        EXPECT_EQ(CompactHandleSize(reinterpret_cast<Handle>(h)), n + 4);
        EXPECT_EQ(std::string(reinterpret_cast<const char*>((*h)->text), (*h)->count),
                  std::string("hello", n));
    }
    EXPECT_EQ(LStringAssign(&h, -1, text), MgBadArgument);
    EXPECT_EQ(LStringAssign(&h, 5, nullptr), MgNoError);
    EXPECT_EQ(h, nullptr);
}

}  // namespace
