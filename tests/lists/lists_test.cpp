// Packed string lists: PStr lists (pinned indices, sizing, replacement both ways, search), LStr
// lists (padding, sorted insert, byte-order swap, zones) and the LStr appends.
#include "mg/lists.h"

#include <gtest/gtest.h>

#include <string>

#include "mg/ansi.h"
#include "platform/faults.h"
#include "support/handles.h"
#include "support/pstr.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

Handle MakePList(std::initializer_list<std::string> items) {
    Handle list = MemNewHandleClear(4);
    for (const auto& s : items) EXPECT_EQ(PListInsert(list, P(s).b, 1 << 30, 0), MgNoError);
    return list;
}

// The elements as "[a][b]", then the handle's size when it differs from the bytes in use.
std::string PItems(Handle list) {
    std::string out;
    int32_t at = 4;
    for (int32_t i = 0; i < *reinterpret_cast<int32_t*>(*list); at += 1 + (*list)[at], ++i)
        out += "[" + P::Text(*list + at) + "]";
    return MemHandleSize(list) == at ? out : out + std::to_string(MemHandleSize(list));
}

// Insert, replace and delete with pinned indices keep the handle at the bytes in use.
TEST(PList, InsertReplaceDeleteFitTheHandle) {
    // clang-format off
    const struct { char op; int32_t index; std::string s; const char* want; } cases[] = {
        {'i', -3, "x", "[x][a][bbb]"}, {'i', 1000000, "x", "[a][bbb][x]"},
        {'r', 1, "BBBBB", "[a][BBBBB]"}, {'r', 7, "", "[a][]"}, {'r', -1, "yy", "[yy][bbb]"},
        {'d', 99, "", "[a]"}, {'d', -7, "", "[bbb]"}};
    // clang-format on
    for (const auto& c : cases) {
        Handle list = MakePList({"a", "bbb"});
        const int32_t result = c.op == 'i'   ? PListInsertExact(list, P(c.s).b, c.index)
                               : c.op == 'r' ? PListReplace(list, P(c.s).b, c.index)
                                             : PListDelete(list, c.index) - 1;
        EXPECT_TRUE(result == 0 && PItems(list) == c.want) << c.op << " " << c.index;
        MemDisposeHandle(list);
    }
}

// A roomy handle is kept; failed growth leaves the list; the only element is replaced; a
// replace on an empty list stores at the start with count 0.
TEST(PList, SizingAndFailedGrowth) {
    Handle list = MakePList({"a"});
    ExpectRows({Row(MemResizeHandle(list, 64), MgNoError),
                Row(PListInsert(list, P("bc").b, 9, 0), MgNoError),
                Row((plat::FailAllocationAt(1), PListReplace(list, P("longer").b, 0)), MgNoMemory),
                Row((plat::FailAllocationAt(1), PListInsertExact(list, P("long string").b, 0)),
                    MgNoMemory),
                Row((plat::ResetFaults(), PItems(list)), "[a][bc]64"),
                Row(PListSetEmptyString(list), MgNoError), Row(PItems(list), "[]"),
                Row(PListReplace(list, P("z").b, 0), MgNoError), Row(PItems(list), "[z]"),
                Row(PListClear(list), MgNoError), Row(PItems(list), ""),
                Row(PListDelete(list, 0), 0), Row(PListReplace(list, P("hi").b, 0), MgNoError),
                Row(Contents(list), std::string("\0\0\0\0\2hi", 7)),
                Row(PListClear(nullptr), MgBadArgument),
                Row(PListSetEmptyString(nullptr), MgBadArgument)});
    MemDisposeHandle(list);
}

// Search by a predicate, pinned gets, the first duplicate, and the 16-bit form's gets.
TEST(PList, FindDuplicatesAndTheShortForm) {
    Handle list = MakePList({"one", "Two"}),
           dups[] = {MakePList({"b", "a", "a"}), MakePList({"a", "A", "b"})};
    const P two("two");
    ConstPStr key = two.b;
    const uint8_t block[] = {2, 0, 1, 'a', 2, 'b', 'c'};  // both hosts are little-endian
    uint8_t* purged = nullptr;
    ExpectRows(
        {Row(PListFind(list, &key, PStringOrderNoCaseIndirect), 1),
         Row(PListFind(list, &key, PStringOrderIndirect), -1),
         Row(PListFind(&purged, &key, PStringOrderIndirect), -1),
         Row(PListGet(list, -1) == *list + 4, 1), Row(PListGet(list, 9) == PListGet(list, 1), 1),
         Row(PListFirstDuplicate(*dups[0]), 2), Row(PListFirstDuplicate(*dups[1]), 0),
         Row(PList16Get(block, 0) == block + 2, 1), Row(PList16Get(block, 1) == block + 4, 1),
         Row(PList16Get(block, 2) == nullptr, 1), Row(PList16Get(block, -1) == nullptr, 1)});
    for (Handle h : {list, dups[0], dups[1]}) MemDisposeHandle(h);
}

// The elements as "[a][b]", read through LListGet.
std::string Items(Handle list) {
    std::string out;
    for (int32_t i = 0; i < *reinterpret_cast<int32_t*>(*list); ++i)
        out += "[" + LText(LListGet(*list, i)) + "]";
    return out;
}

Handle Make(std::initializer_list<std::string> items, bool mainZone = true) {
    Handle list = mainZone ? MemNewHandleClear(4) : CompactNewHandleClear(4);
    for (const auto& s : items) EXPECT_EQ(LListInsert(list, L(s), 99, mainZone, 0), 0);
    return list;
}

// Elements are padded with zeros to a multiple of 4; a roomy handle is kept unless the insert
// is exact; indices are pinned; failed growth leaves the list.
TEST(LList, InsertPadsWithZerosAndSizesByZone) {
    for (bool z : {true, false}) {
        Handle list = Make({"hello"}, z);
        ExpectRows(
            {Row(Contents(list, z),
                 std::string("\1\0\0\0", 4) + LStrBytes("hello") + '\0' + '\0' + '\0'),
             Row((z ? MemResizeHandle(list, 100) : CompactResizeHandle(list, 100)), MgNoError),
             Row(LListInsert(list, L("xy"), -4, z, 0), MgNoError), Row(HandleBytes(list, z), 100),
             Row(LListInsert(list, L(""), 1, z, 1), MgNoError), Row(HandleBytes(list, z), 28),
             Row(Items(list), "[xy][][hello]"), Row(LListDelete(list, 0, z), 2),
             Row(HandleBytes(list, z), 20),
             Row((plat::FailAllocationAt(1), LListInsert(list, L("a much longer string"), 0, z, 1)),
                 MgNoMemory),
             Row((plat::ResetFaults(), LListDelete(list, 5, z)), 1), Row(Items(list), "[]")});
        DisposeIn(list, z);
    }
}

// Before the first element that isn't below, which a duplicate is unless allowed.
TEST(LList, SortedInsert) {
    // clang-format off
    const struct { std::string s; int32_t allow, found, inserted; const char* after; } cases[] = {
        {"b", 0, 1, 0, "[a][b][d]"}, {"b", 1, 1, 1, "[a][b][b][d]"}, {"z", 0, 3, 1, "[a][b][d][z]"},
        {"ba", 0, 2, 1, "[a][b][ba][d]"}};
    // clang-format on
    for (const auto& c : cases) {
        Handle list = Make({"a", "b", "d"});
        int32_t found = -1, inserted = -1;
        ExpectRows({Row(LListInsertSorted(list, L(c.s), c.allow, &found, &inserted, 1, 0), 0),
                    Row(found, c.found), Row(inserted, c.inserted), Row(Items(list), c.after)});
        MemDisposeHandle(list);
    }
}

// The swap walks by the swapped counts to the end: host counts read swapped run past it, and
// bytes the walk never reaches are as bad. The empty last string puts a count word at the
// very end of the block.
TEST(LListDeathTest, SwapWalksByTheSwappedCountsToTheEnd) {
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

// Appends grow the handle only when needed, or to the exact size; null appends nothing. A
// count beyond the handle, or a negative count on either side, is refused.
TEST(LStringAppend, GrowsOnlyWhenNeededAndExactFitsAndAssigns) {
    // clang-format off
    const struct { bool mainZone, exact; MgStatus (*append)(LStrHandle, const LStr*); } forms[] = {
        {true, false, LStringAppend}, {true, true, LStringAppendExact},
        {false, false, LStringAppendCompact}, {false, true, LStringAppendCompactExact}};
    // clang-format on
    L negative("");
    negative.get()->count = -1;
    for (const auto& [z, exact, append] : forms) {
        Handle h = z ? MemNewHandleClear(40) : CompactNewHandleClear(40);
        LStrHandle l = reinterpret_cast<LStrHandle>(h);
        ExpectRows({Row(append(l, L("abc")), MgNoError), Row(HandleBytes(h, z), exact ? 7 : 40),
                    Row(append(l, nullptr), MgNoError),
                    Row(append(l, L(std::string(40, 'z'))), MgNoError),
                    Row(append(l, L("!")), MgNoError),
                    Row(Contents(h, z), LStrBytes("abc" + std::string(40, 'z') + "!")),
                    Row(((*l)->count = HandleBytes(h, z) - 3, append(l, L("a"))), MgBadArgument),
                    Row(((*l)->count = -1, append(l, L("a"))), MgBadArgument),
                    Row(((*l)->count = 0, append(l, negative)), MgBadArgument)});
        DisposeIn(h, z);
    }
    // Assigning makes a compact handle, resizes it, and disposes it for null bytes.
    LStrHandle h = nullptr;
    const uint8_t* text = reinterpret_cast<const uint8_t*>("hello");
    auto bytes = [&] { return Contents(reinterpret_cast<Handle>(h), false); };
    ExpectRows({Row(LStringAssign(nullptr, 3, text), MgBadArgument),
                Row(LStringAssign(&h, 3, text), MgNoError), Row(bytes(), LStrBytes("hel")),
                Row(LStringAssign(&h, 5, text), MgNoError), Row(bytes(), LStrBytes("hello")),
                Row(LStringAssign(&h, -1, text), MgBadArgument),
                Row(LStringAssign(&h, 5, nullptr), MgNoError), Row(h == nullptr, 1)});
}

}  // namespace
