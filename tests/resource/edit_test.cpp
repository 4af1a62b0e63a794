// Lookup, enumeration and edits of the map in memory, and fixed sequences replayed against the
// edit model. (Sorted ids, the order of types, adds, changes, removals, detaches and releases
// at random: the property tests'.)
#include "resource/edit_model.h"

namespace {

using edits::MapBytes;

using EditTest = ResourceTest;

// Refused edits leave the map as it was: adds of no handle, to no file; removals of unknown
// handles; any edit of a read-only file. Indexes outside the list and a name that differs in
// its last letter find nothing. (Duplicate ids and handles, protected and null removals, other
// named lookups and the negative name-list offset are the edit model's.)
TEST_F(EditTest, RefusedEditsChangeNothing) {
    ResFile f = Put("a", BuildFile({{"AAAA", {{1, "", {1}, RAttrProtected}, {2, "abc", {2}}}}}));
    Handle stranger = MemNewHandle(4), bad = nullptr;
    const Bytes before = MapBytes(f);
    const MgStatus none = MgResourceNotFound;
    const std::vector<MgStatus> refused = {RAdd(nullptr, f, T("AAAA"), 3, nullptr),
                                           RAdd(stranger, 0x7777, T("AAAA"), 3, nullptr),
                                           RRemove(stranger, f),
                                           RCheckResource(stranger),
                                           RGetInd(f, T("AAAA"), 0, &bad),
                                           RGetInd(f, T("AAAA"), -1, &bad),
                                           RGetInd(f, T("AAAA"), 3, &bad),
                                           RGetNamed(f, T("AAAA"), PS(P("abd")), &bad)};
    EXPECT_EQ(refused, (std::vector<MgStatus>{MgResourceDuplicate, MgBadResourceFile, none, none,
                                              none, none, none, none}));
    EXPECT_EQ(std::make_pair(MapBytes(f), bad), std::make_pair(before, Handle(nullptr)));
    EXPECT_EQ(RCloseFile(f), MgNoError);
    f = Open("a", FMModeRead);
    Handle q = Get(f, "AAAA", 2);
    for (MgStatus s : {RChanged(q), RSetAttrs(q, 0), RRemove(q, f),
                       RAdd(stranger, f, T("AAAA"), 9, nullptr), RPreAllocFile(f, 10)})
        EXPECT_EQ(s, MgNoPermission);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    MemDisposeHandle(stranger);
}

// A resource loads once; detached, it is no longer the file's, and the next get loads it anew.
TEST_F(EditTest, LoadsOnceAndDetaches) {
    ResFile f = Put("a", BuildFile({{"AAAA", {{1, "", {1, 2}}, {2, "", {3}}}}}));
    const int64_t reads = plat::FileOpCount(plat::kFileRead);
    Handle h1 = Get(f, "AAAA", 1), h2 = Get(f, "AAAA", 1);
    EXPECT_EQ(h1, h2);
    EXPECT_EQ(plat::FileOpCount(plat::kFileRead) - reads, 1);  // one window fill, once
    int32_t size = 0, id = 9, attrs = 77;
    EXPECT_EQ(RGetSize(h1, &size), MgNoError);
    ASSERT_EQ(RDetach(h1), MgNoError);
    EXPECT_EQ(RGetInfo(h1, &id, nullptr, nullptr), MgResourceNotFound);
    EXPECT_EQ(RGetAttrs(h1, &attrs), MgResourceNotFound);
    EXPECT_EQ(std::make_tuple(size, id, attrs), std::make_tuple(2, 0, 77));
    EXPECT_NE(Get(f, "AAAA", 1), h1);
    MemDisposeHandle(h1);
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

// The counter's id or the first free one above it, while the counter itself moves on by one
// only; no file, no id. (Empty maps, types without ids and counters below 128: the model's.)
TEST_F(EditTest, UniqueIds) {
    ResFile f = CreateAndOpen("a");
    AddData(f, "AAAA", 200, {1});
    AddData(f, "AAAA", 201, {1});
    gNextResId = 200;
    const int32_t id = RUniqueID(f, T("AAAA"));
    EXPECT_EQ(std::make_tuple(id, gNextResId, RUniqueID(0x7777, T("AAAA"))),
              std::make_tuple(202, 201, 0));
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

TEST_F(EditTest, StringAndPathGetters) {
    // Two LStrs, each padded to a word, behind a count; a count below zero holds no entry.
    const Bytes lstrs = {0,   0, 0, 2, 0, 0, 0, 5, 'h', 'e', 'l', 'l',
                         'o', 0, 0, 0, 0, 0, 0, 2, 'o', 'k', 0,   0};
    Path p = MakePath("x/y");
    Bytes flat(1024), negative = lstrs;
    flat.resize(size_t(FPathFlattenOrder(p, flat.data(), 1)));
    negative[0] = 0x80;
    ResFile f = Put("s",
                    BuildFile({{"STR ", {{1, "", {9, 'x', 'y'}}}},
                               {"STR#", {{1, "", {0, 2, 3, 'a', 'b', 'c', 2, 'd', 'e'}}}},
                               {"LLST", {{1, "", lstrs}, {2, "", negative}}},
                               {"PATH", {{1, "", flat}, {2, "", {'P', 'T', 'H', '0', 0, 0}}}}}),
                    FMModeRead);
    uint8_t s1[256] = {}, s2[256] = {};
    const uint8_t* s3 = nullptr;
    Handle l = nullptr;
    EXPECT_EQ(RGetStringText(f, 1, s1), MgNoError);
    EXPECT_EQ(RGetIndString(f, s2, 1, 2), MgNoError);
    EXPECT_EQ(RGetIndStringPtr(f, &s3, 1, 1, T("STR#")), MgNoError);
    EXPECT_EQ(RGetIndLStr(f, &l, 1, 2, T("LLST")), MgNoError);
    auto text = [](const uint8_t* s, size_t n) { return std::string(s, s + n); };
    EXPECT_EQ(text(s1, 3) + text(s2, 3) + text(s3, 4) + text(*l, 6),
              P("xy") + P("de") + P("abc") + text(*l, 4) + "ok");
    EXPECT_EQ(reinterpret_cast<LStr*>(*l)->count, 2);
    MemDisposeHandle(l);
    for (int32_t bad : {0, 3, -1}) {
        EXPECT_EQ(RGetIndString(f, s1, 1, bad), MgResourceNotFound);
        EXPECT_EQ(s1[0], 0);
    }
    EXPECT_EQ(RGetIndLStr(f, &l, 1, 3, T("LLST")), MgResourceNotFound);
    EXPECT_EQ(RGetIndLStr(f, &l, 2, 1, T("LLST")), MgResourceNotFound);
    Path got = nullptr;
    ASSERT_EQ(RGetPath(f, T("PATH"), 1, &got), MgNoError);
    EXPECT_TRUE(FPathSame(got, p));
    FPathRelease(got);
    EXPECT_EQ(RGetPath(f, T("PATH"), 2, &got), MgBadFlatPath);
    EXPECT_EQ(got, nullptr);
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

// Fixed sequences of edits on a new file, against the edit model (random ones are the property
// test's). The first makes the name-list offset negative (an unnamed resource removed from a
// map without names) before names arrive, with lookups through the broken offset.
std::vector<edits::Step> FixedSteps(bool negative) {
    if (negative)
        return {{edits::kAdd, 0, 0, 0, 3, 1, false},   {edits::kAdd, 0, 1, 0, 1, 2, false},
                {edits::kRemove, 0, 0, 0, 0, 0, true}, {edits::kAdd, 0, 2, 0, 2, 5, false},
                {edits::kAdd, 1, 4, 0, 4, 0, false},   {edits::kAdd, 0, 5, 0, 0, 3, false},
                {edits::kLookup, 0, 2, 0, 0, 0, true}, {edits::kLookup, 0, 0, 1, 1, 0, true},
                {edits::kRemove, 0, 0, 1, 0, 0, true}, {edits::kAdd, 2, 3, 0, 5, 7, true}};
    // A named add that would wait, to a map whose name-list offset a removal took below 0 and
    // the add brings back to 0. The name is read through that offset, from the map's start,
    // as when the add goes in at once.
    return {{edits::kAdd, 0, 0, 0, 0, -3, false},    {edits::kAdd, 0, 0, 0, 0, -2, false},
            {edits::kRemove, 0, 0, 0, 0, -3, false}, {edits::kAdd, 0, 0, 0, 0, -2, false},
            {edits::kAdd, 0, 2, 0, 0, -3, false},    {edits::kLookup, 0, 0, 0, 1, 0, false}};
}

// The model agrees at every step and the closed files open; the first holds the bytes that
// the map edits wrote for it before adds were deferred (fixtures/edits_0.rsrc).
TEST_F(ResourceTest, FixedEditSequencesWriteTheEarlierBytes) {
    for (const std::string leaf : {"edits_0.rsrc", "edits_4.rsrc"}) {
        EXPECT_EQ(edits::RunSteps(MakePath(leaf), FilePath(leaf), FixedSteps(leaf[6] == '0')), "")
            << leaf;
        EXPECT_EQ(RCloseFile(Open(leaf)), MgNoError);
    }
    const std::string fixture = MG_SOURCE_DIR "/tests/resource/fixtures/edits_0.rsrc";
    EXPECT_EQ(ReadFile("edits_0.rsrc"), B(SlurpFile(fixture)));
}

}  // namespace
