// Lookup, enumeration and edits of the map in memory.
#include "resource/resource_env.h"

namespace {

class EditTest : public ResourceTest {
  protected:
    static Bytes MapBytes(ResFile f) {
        ResFileEntry* e;
        EXPECT_EQ(RLookupFile(f, &e), MgNoError);
        return Bytes(e->map, e->map + MemHandleSize(e->mapHandle));
    }
    static int32_t NameListOffset(ResFile f) { return int32_t(Big32At(MapBytes(f), 48)); }
};

TEST_F(EditTest, RefusedAddsChangeNothing) {
    ResFile f = CreateAndOpen("a");
    Handle h = AddData(f, "AAAA", 1, {1});
    ASSERT_EQ(RUpdateFile(f), MgNoError);
    const Bytes before = MapBytes(f);
    Handle other = MemNewHandle(1);
    EXPECT_EQ(RAdd(other, f, T("AAAA"), 1, nullptr), MgResourceDuplicate);
    EXPECT_EQ(RAdd(h, f, T("AAAA"), 2, nullptr), MgResourceDuplicate);
    EXPECT_EQ(RAdd(h, f, T("CCCC"), 2, nullptr), MgResourceDuplicate);
    EXPECT_EQ(RAdd(nullptr, f, T("AAAA"), 2, nullptr), MgResourceDuplicate);
    EXPECT_EQ(RAdd(other, 0x7777, T("AAAA"), 2, nullptr), MgBadResourceFile);
    EXPECT_EQ(MapBytes(f), before);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    MemDisposeHandle(other);
}

// A name matches whole, case aside, and only within its type; unnamed references are passed.
// Names sit at the end of the map in the order they came. (Sorted ids, the order of types and
// removals: the property test's.)
TEST_F(EditTest, NamedLookupsMatchTheWholeNameWithinTheType) {
    ResFile f = CreateAndOpen("a");
    AddData(f, "AAAA", 1, {0});
    Handle a = AddData(f, "AAAA", 4, {2}, "same");
    AddData(f, "AAAA", 2, {1}, "abc");
    Handle b = AddData(f, "BBBB", 4, {3}, "same");
    const Bytes map = MapBytes(f);
    EXPECT_EQ(std::string(map.end() - 14, map.end()), P("same") + P("abc") + P("same"));
    EXPECT_EQ(LoadNamed(f, "AAAA", "ABC"), Bytes{1});
    Handle h = nullptr;
    EXPECT_EQ(RGetNamed(f, T("AAAA"), PS(P("abd")), &h), MgResourceNotFound);
    ASSERT_EQ(RGetNamed(f, T("AAAA"), PS(P("Same")), &h), MgNoError);
    EXPECT_EQ(h, a);
    ASSERT_EQ(RGetNamed(f, T("BBBB"), PS(P("same")), &h), MgNoError);
    EXPECT_EQ(h, b);
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

TEST_F(EditTest, LoadsOnceDetachAndRelease) {
    WriteFile("a", BuildFile({{"AAAA", {{1, "", {1, 2}}, {2, "", {3}}}}}));
    ResFile f = Open("a");
    const int64_t reads = plat::FileOpCount(plat::kFileRead);
    Handle h1 = Get(f, "AAAA", 1), h2 = Get(f, "AAAA", 1);
    EXPECT_EQ(h1, h2);
    EXPECT_EQ(plat::FileOpCount(plat::kFileRead) - reads, 1);  // one window fill, once
    int32_t size = 0;
    EXPECT_EQ(RGetSize(h1, &size), MgNoError);
    EXPECT_EQ(size, 2);

    ASSERT_EQ(RDetach(h1), MgNoError);
    int32_t id = 9, attrs = 77;
    EXPECT_EQ(RGetInfo(h1, &id, nullptr, nullptr), MgResourceNotFound);
    EXPECT_EQ(id, 0);
    EXPECT_EQ(RGetAttrs(h1, &attrs), MgResourceNotFound);
    EXPECT_EQ(attrs, 77);
    ASSERT_EQ(RGetInd(f, T("AAAA"), 1, &h2), MgNoError);
    EXPECT_NE(h1, h2);
    EXPECT_EQ(Contents(h1), Contents(h2));
    MemDisposeHandle(h1);

    ASSERT_EQ(RRelease(h2), MgNoError);
    EXPECT_FALSE(RIsResource(h2));
    Handle bad = nullptr;
    for (int32_t index : {0, -1, 3})
        EXPECT_EQ(RGetInd(f, T("AAAA"), index, &bad), MgResourceNotFound);
    EXPECT_EQ(bad, nullptr);
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

TEST_F(EditTest, ProtectedReadOnlyAndUnknownHandles) {
    WriteFile("a", BuildFile({{"AAAA", {{1, "", {1}, RAttrProtected}, {2, "", {2}}}}}));
    ResFile f = Open("a");
    Handle p = Get(f, "AAAA", 1);
    EXPECT_EQ(RRemove(p, f), MgResourceNotFound);
    Handle stranger = MemNewHandle(4);
    EXPECT_EQ(RRemove(stranger, f), MgResourceNotFound);
    EXPECT_EQ(RRemove(nullptr, f), MgResourceDuplicate);
    EXPECT_EQ(RCheckResource(stranger), MgResourceNotFound);
    EXPECT_EQ(RCheckResource(p), MgNoError);
    ASSERT_EQ(RSetAttrs(p, 0), MgNoError);
    EXPECT_EQ(RRemove(p, f), MgNoError);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    MemDisposeHandle(p);

    f = Open("a", FMModeRead);
    Handle q = Get(f, "AAAA", 2);
    EXPECT_EQ(RChanged(q), MgNoPermission);
    EXPECT_EQ(RSetAttrs(q, 0), MgNoPermission);
    EXPECT_EQ(RRemove(q, f), MgNoPermission);
    EXPECT_EQ(RAdd(stranger, f, T("AAAA"), 9, nullptr), MgNoPermission);
    EXPECT_EQ(RPreAllocFile(f, 10), MgNoPermission);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    MemDisposeHandle(stranger);
}

// Removing an unnamed resource from a map with no names drives the name-list offset below
// zero; a later named add builds on that offset and reads its name from the wrong place.
TEST_F(EditTest, NegativeNameListOffsetIsKept) {
    ResFile f = CreateAndOpen("a");
    Handle a = AddData(f, "AAAA", 1, {1});
    AddData(f, "AAAA", 2, {2});
    ASSERT_EQ(RRemove(a, f), MgNoError);
    ResFileEntry* e;
    ASSERT_EQ(RLookupFile(f, &e), MgNoError);
    EXPECT_EQ(*reinterpret_cast<int32_t*>(e->map + 48), -20);
    Handle named = AddData(f, "AAAA", 3, {3}, "late");
    ASSERT_EQ(RLookupFile(f, &e), MgNoError);
    EXPECT_EQ(*reinterpret_cast<int32_t*>(e->map + 48), 0);
    uint8_t name[256] = {};
    EXPECT_EQ(RGetInfo(named, nullptr, nullptr, name), MgNoError);
    EXPECT_NE(std::string(reinterpret_cast<char*>(name), 5), P("late"));
    EXPECT_EQ(RCloseFile(f), MgNoError);
    MemDisposeHandle(a);
    // The file written with that offset opens again.
    EXPECT_EQ(RCloseFile(Open("a")), MgNoError);
}

TEST_F(EditTest, UniqueIds) {
    ResFile f = CreateAndOpen("a");
    EXPECT_EQ(RUniqueID(f, T("AAAA")), 128);
    EXPECT_EQ(RUniqueID(f, T("AAAA")), 128);
    EXPECT_EQ(RUniqueID(0x7777, T("AAAA")), 0);
    const int32_t next = gNextResId;
    AddData(f, "AAAA", next, {1});
    AddData(f, "AAAA", next + 1, {1});
    EXPECT_EQ(RUniqueID(f, T("AAAA")), next + 2);
    EXPECT_EQ(gNextResId, next + 1);
    EXPECT_EQ(RUniqueID(f, T("BBBB")), next + 1);
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

TEST_F(EditTest, StringAndPathGetters) {
    // Two LStrs, each padded to a word, behind a count; a count below zero holds no entry.
    const Bytes longList = {0,   0, 0, 2, 0, 0, 0, 5, 'h', 'e', 'l', 'l',
                            'o', 0, 0, 0, 0, 0, 0, 2, 'o', 'k', 0,   0};
    Bytes negative = longList;
    negative[0] = 0x80;
    Path p = MakePath("x/y");
    Bytes flat(1024);
    flat.resize(size_t(FPathFlattenOrder(p, flat.data(), 1)));
    WriteFile("s", BuildFile({{"STR ", {{1, "", {9, 'x', 'y'}}}},
                              {"STR#", {{1, "", {0, 2, 3, 'a', 'b', 'c', 2, 'd', 'e'}}}},
                              {"LLST", {{1, "", longList}, {2, "", negative}}},
                              {"PATH", {{1, "", flat}, {2, "", {'P', 'T', 'H', '0', 0, 0}}}}}));
    ResFile f = Open("s", FMModeRead);
    uint8_t out[256] = {};
    EXPECT_EQ(RGetStringText(f, 1, out), MgNoError);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 3), P("xy"));
    EXPECT_EQ(RGetIndString(f, out, 1, 2), MgNoError);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(out), 3), P("de"));
    for (int32_t bad : {0, 3, -1}) {
        EXPECT_EQ(RGetIndString(f, out, 1, bad), MgResourceNotFound);
        EXPECT_EQ(out[0], 0);
    }
    const uint8_t* text = nullptr;
    EXPECT_EQ(RGetIndStringPtr(f, &text, 1, 1, T("STR#")), MgNoError);
    EXPECT_EQ(text[0], 3);
    Handle l = nullptr;
    EXPECT_EQ(RGetIndLStr(f, &l, 1, 2, T("LLST")), MgNoError);
    EXPECT_EQ(reinterpret_cast<LStr*>(*l)->count, 2);
    EXPECT_EQ(memcmp(reinterpret_cast<LStr*>(*l)->text, "ok", 2), 0);
    MemDisposeHandle(l);
    EXPECT_EQ(RGetIndLStr(f, &l, 1, 3, T("LLST")), MgResourceNotFound);
    EXPECT_EQ(RGetIndLStr(f, &l, 2, 1, T("LLST")), MgResourceNotFound);
    Path out2 = nullptr;
    ASSERT_EQ(RGetPath(f, T("PATH"), 1, &out2), MgNoError);
    EXPECT_TRUE(FPathSame(out2, p));
    FPathRelease(out2);
    EXPECT_EQ(RGetPath(f, T("PATH"), 2, &out2), MgBadFlatPath);
    EXPECT_EQ(out2, nullptr);
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

}  // namespace
