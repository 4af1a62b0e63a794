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

struct L {
    std::vector<uint8_t> mem;
    explicit L(const std::string& s) : mem(4 + s.size() + 1) {
        get()->count = int32_t(s.size());
        memcpy(get()->text, s.data(), s.size());
    }
    LStr* get() { return reinterpret_cast<LStr*>(mem.data()); }
};

using V = std::vector<std::string>;

std::string Str(const LStr* l) {
    return std::string(reinterpret_cast<const char*>(l->text), l->count);
}

V Items(Handle list) {
    V out;
    int32_t n;
    memcpy(&n, *list, 4);
    for (int32_t i = 0; i < n; ++i) out.push_back(Str(LListGet(*list, i)));
    return out;
}

Handle Make(const V& items, bool mainZone = true) {
    Handle list = mainZone ? MemNewHandleClear(4) : CompactNewHandleClear(4);
    for (const auto& s : items) EXPECT_EQ(LListInsert(list, L(s).get(), 99, mainZone, 0), 0);
    return list;
}

TEST(LList, InsertPadsWithZerosAndKeepsAlignment) {
    Handle list = MemNewHandle(4);
    memset(*list, 0, 4);
    ASSERT_EQ(LListInsert(list, L("hello").get(), 0, 1, 1), MgNoError);
    ASSERT_EQ(LListInsert(list, L("xy").get(), 5, 1, 1), MgNoError);
    // count 2 | 5 "hello" 0 0 0 | 2 "xy" 0 0
    std::vector<uint8_t> want(24, 0);
    const int32_t words[][2] = {{0, 2}, {4, 5}, {16, 2}};
    for (const auto& w : words) memcpy(&want[w[0]], &w[1], 4);
    memcpy(&want[8], "hello", 5);
    memcpy(&want[20], "xy", 2);
    ASSERT_EQ(MemHandleSize(list), 24);
    EXPECT_EQ(std::vector<uint8_t>(*list, *list + 24), want);
    EXPECT_EQ(LListBytes(*list), 24);
    EXPECT_EQ(reinterpret_cast<uint8_t*>(LListGet(*list, 1)) - *list, 16);
    ASSERT_EQ(LListInsert(list, L("").get(), -4, 1, 0), MgNoError);
    EXPECT_EQ(Items(list), (V{"", "hello", "xy"}));
    EXPECT_EQ(Str(LListGet(*list, 7)), "xy");
    MemDisposeHandle(list);
}

TEST(LList, SizingByZoneAndExactness) {
    for (bool mainZone : {true, false}) {
        Handle list = Make({"abc"}, mainZone);
        auto size = [&] { return mainZone ? MemHandleSize(list) : CompactHandleSize(list); };
        EXPECT_EQ(size(), 12);
        mainZone ? MemResizeHandle(list, 100) : CompactResizeHandle(list, 100);
        ASSERT_EQ(LListInsert(list, L("d").get(), 0, mainZone, 0), MgNoError);
        EXPECT_EQ(size(), 100);
        ASSERT_EQ(LListInsert(list, L("e").get(), 0, mainZone, 1), MgNoError);
        EXPECT_EQ(size(), 28);
        EXPECT_EQ(LListDelete(list, 1, mainZone), 2);
        EXPECT_EQ(size(), 20);
        EXPECT_EQ(Items(list), (V{"e", "abc"}));
        mainZone ? MemDisposeHandle(list) : CompactDisposeHandle(list);
    }
    Handle list = Make({"a"});
    plat::FailAllocationAt(1);
    EXPECT_EQ(LListInsert(list, L("a much longer string").get(), 0, 1, 1), MgNoMemory);
    plat::ResetFaults();
    EXPECT_EQ(Items(list), (V{"a"}));
    MemDisposeHandle(list);
}

TEST(LList, SortedInsert) {
    struct {
        std::string s;
        int32_t allow;
        int32_t found, inserted;
        V after;
    } cases[] = {
        {"b", 0, 1, 0, {"a", "b", "d"}},      {"b", 1, 1, 1, {"a", "b", "b", "d"}},
        {"c", 0, 2, 1, {"a", "b", "c", "d"}}, {"z", 0, 3, 1, {"a", "b", "d", "z"}},
        {"", 0, 0, 1, {"", "a", "b", "d"}},   {"ba", 0, 2, 1, {"a", "b", "ba", "d"}},
    };
    for (const auto& c : cases) {
        Handle list = Make({"a", "b", "d"});
        int32_t found = -1, inserted = -1;
        ASSERT_EQ(LListInsertSorted(list, L(c.s).get(), c.allow, &found, &inserted, 1, 0), 0);
        EXPECT_EQ(found, c.found) << c.s;
        EXPECT_EQ(inserted, c.inserted) << c.s;
        EXPECT_EQ(Items(list), c.after) << c.s;
        MemDisposeHandle(list);
    }
}

// The byte image of `list` with every count word reversed, walking by the host counts.
std::vector<uint8_t> Foreign(Handle list) {
    std::vector<uint8_t> b(*list, *list + MemHandleSize(list));
    int32_t n;
    memcpy(&n, b.data(), 4);
    size_t at = 4;
    for (int32_t i = 0; i < n; ++i) {
        int32_t len;
        memcpy(&len, &b[at], 4);
        Swap32(&b[at]);
        at += 4 + ((len + 3) & ~3);
    }
    Swap32(b.data());
    return b;
}

TEST(LList, SwapMakesAForeignListUsable) {
    Handle list = Make({"one", "", "three, and more", "x"});
    const std::vector<uint8_t> host(*list, *list + MemHandleSize(list));
    const std::vector<uint8_t> foreign = Foreign(list);
    ASSERT_NE(foreign, host);
    memcpy(*list, foreign.data(), foreign.size());
    LListSwap(list);
    EXPECT_EQ(std::vector<uint8_t>(*list, *list + MemHandleSize(list)), host);
    MemDisposeHandle(list);
}

TEST(LListDeathTest, SwapFailsWhenTheCountsMissTheEnd) {
    Handle list = Make({"ab", "cd"});
    std::vector<uint8_t> foreign = Foreign(list);
    MemResizeHandle(list, int32_t(foreign.size()) + 4);  // four bytes the walk never reaches
    memcpy(*list, foreign.data(), foreign.size());
    EXPECT_DEATH(LListSwap(list), "");
    MemResizeHandle(list, int32_t(foreign.size()));
    memcpy(*list, foreign.data(), foreign.size());
    (*list)[4 + 3] = 0x7F;  // first element's length far beyond the block
    EXPECT_DEATH(LListSwap(list), "");
    // The walk goes by the swapped counts: a list already in host order fails.
    Handle host = Make({"ab", "cd"});
    EXPECT_DEATH(LListSwap(host), "");
    MemDisposeHandle(host);
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
        LStrHandle l = reinterpret_cast<LStrHandle>(h);
        ASSERT_EQ(f.append(l, L("abc").get()), MgNoError);
        ASSERT_EQ(f.append(l, nullptr), MgNoError);
        ASSERT_EQ(f.append(l, L(std::string(40, 'z')).get()), MgNoError);
        EXPECT_EQ(Str(*l), "abc" + std::string(40, 'z'));
        const int32_t size = f.mainZone ? MemHandleSize(h) : CompactHandleSize(h);
        EXPECT_EQ(size, 47);
        if (f.mainZone) {
            MemResizeHandle(h, 100);
        } else {
            CompactResizeHandle(h, 100);
        }
        ASSERT_EQ(f.append(l, L("!").get()), MgNoError);
        EXPECT_EQ(f.mainZone ? MemHandleSize(h) : CompactHandleSize(h), f.exact ? 48 : 100);
        f.mainZone ? MemDisposeHandle(h) : CompactDisposeHandle(h);
    }
}

TEST(LStringAssign, MakesResizesAndDisposes) {
    LStrHandle h = nullptr;
    EXPECT_EQ(LStringAssign(nullptr, 3, reinterpret_cast<const uint8_t*>("abc")), MgBadArgument);
    ASSERT_EQ(LStringAssign(&h, 3, reinterpret_cast<const uint8_t*>("abc")), MgNoError);
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(Str(*h), "abc");
    EXPECT_EQ(CompactHandleSize(reinterpret_cast<Handle>(h)), 7);
    ASSERT_EQ(LStringAssign(&h, 5, reinterpret_cast<const uint8_t*>("hello")), MgNoError);
    EXPECT_EQ(Str(*h), "hello");
    EXPECT_EQ(LStringAssign(&h, 5, nullptr), MgNoError);
    EXPECT_EQ(h, nullptr);
    plat::FailAllocationAt(1);
    EXPECT_EQ(LStringAssign(&h, 2, reinterpret_cast<const uint8_t*>("xy")), MgNoMemory);
    plat::ResetFaults();
    EXPECT_EQ(h, nullptr);
}

}  // namespace
