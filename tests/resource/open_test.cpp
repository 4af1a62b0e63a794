// Headers, maps and the table of open files.
#include <functional>

#include "resource/resource_env.h"

namespace {

const std::vector<TypeLayout> kTwoTypes = {
    {"AAAA", {{1, "one", {1, 2, 3}}, {2, "", {4}}}},
    {"BBBB", {{7, "seven", {5, 6, 7, 8, 9}}}},
};

class OpenTest : public ResourceTest {};

TEST_F(OpenTest, HeaderValidity) {
    struct Case {
        const char* what;
        std::function<void(Bytes&)> spoil;
        MgStatus status;
    };
    const Case cases[] = {
        {"valid", [](Bytes&) {}, MgNoError},
        {"short file", [](Bytes& b) { b.resize(31); }, MgBadResourceFile},
        {"bad signature", [](Bytes& b) { b[0] = 'X'; }, MgBadResourceFile},
        {"version 1", [](Bytes& b) { b[7] = 1; }, MgBadResourceFile},
        {"negative version", [](Bytes& b) { b[6] = 0xFF; }, MgBadResourceFile},
        {"version 3, bad line end", [](Bytes& b) { b[5] = 'x'; }, MgBadResourceFile},
        {"version 2, garbage line end, same in map",
         [](Bytes& b) {
             b[7] = 2, b[4] = 'g', b[5] = 'g';
             const uint32_t map = Big32At(b, 16);
             b[map + 7] = 2, b[map + 4] = 'g', b[map + 5] = 'g';
         },
         MgNoError},
        {"version 5 in both", [](Bytes& b) { b[7] = 5, b[Big32At(b, 16) + 7] = 5; }, MgNoError},
        {"map copy names another creator", [](Bytes& b) { b[Big32At(b, 16) + 12] = 'Z'; },
         MgIOError},
        {"map copy with other version", [](Bytes& b) { b[Big32At(b, 16) + 7] = 4; }, MgIOError},
        {"type list beyond the map", [](Bytes& b) { PutBig32(b, Big32At(b, 16) + 44, 5000); },
         MgIOError},
        {"name list beyond the map", [](Bytes& b) { PutBig32(b, Big32At(b, 16) + 48, 5000); },
         MgIOError},
        {"type count running off the map", [](Bytes& b) { PutBig32(b, Big32At(b, 16) + 52, 900); },
         MgIOError},
        {"reference list off the map",
         [](Bytes& b) { PutBig32(b, Big32At(b, 16) + 52 + 4 + 8, 100000); }, MgIOError},
        {"map smaller than its header",
         [](Bytes& b) {
             PutBig32(b, 20, 40);
             b.resize(Big32At(b, 16) + 40);
         },
         MgIOError},
        {"map beyond the file", [](Bytes& b) { PutBig32(b, 20, Big32At(b, 20) + 100); },
         MgEndOfFile},
    };
    for (const auto& c : cases) {
        for (int32_t mode : {FMModeReadWrite, FMModeRead}) {
            Bytes b = BuildFile(kTwoTypes);
            c.spoil(b);
            WriteFile("f", b);
            ResFile f = Open("f", mode, c.status);
            SCOPED_TRACE(c.what);
            if (c.status == MgNoError) {
                int32_t n = -1;
                EXPECT_EQ(RCountTypes(f, &n), MgNoError);
                EXPECT_EQ(n, 2);
                EXPECT_EQ(RCloseFile(f), MgNoError);
            } else {
                EXPECT_EQ(f, 0);
            }
        }
    }
}

TEST_F(OpenTest, FreshFileIsThirtyTwoBytesAndEmpty) {
    ResFile f = CreateAndOpen("new");
    const Bytes bytes = ReadFile("new");
    ASSERT_EQ(bytes.size(), 32u);
    EXPECT_EQ(Big32At(bytes, 16), 32u);
    EXPECT_EQ(Big32At(bytes, 20), 0u);
    ResFileEntry* e;
    ASSERT_EQ(RLookupFile(f, &e), MgNoError);
    EXPECT_EQ(MemHandleSize(e->mapHandle), 52);
    int32_t n = -1;
    EXPECT_EQ(RCountTypes(f, &n), MgNoError);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(RCount(f, T("AAAA"), &n), MgNoError);
    EXPECT_EQ(n, 0);
    ResType t = 1;
    Handle h = nullptr;
    EXPECT_EQ(RGetIndType(f, &t, 1), MgResourceNotFound);
    EXPECT_EQ(t, 0u);
    EXPECT_EQ(RGet(f, T("AAAA"), 1, &h), MgResourceNotFound);
    EXPECT_EQ(RGetInd(f, T("AAAA"), 1, &h), MgResourceNotFound);
    EXPECT_EQ(RGetNamed(f, T("AAAA"), PS(P("x")), &h), MgResourceNotFound);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(RCloseFile(f), MgBadResourceFile);
}

TEST_F(OpenTest, CreateWithoutReplaceKeepsTheCreateError) {
    WriteFile("exists", {1, 2, 3});
    EXPECT_EQ(RCreateCorrectFile(MakePath("exists"), 0, T("CRTR"), T("TEST"), 0644), MgDuplicate);
    EXPECT_EQ(ReadFile("exists").size(), 3u);
}

// A resource file carried at the end of another file, found through its last four bytes.
TEST_F(OpenTest, EmbeddedFileOpensForReadingOnly) {
    Bytes outer(100, 0xEE);
    const int32_t base = int32_t(outer.size());
    const Bytes inner = BuildFile(kTwoTypes);
    outer.insert(outer.end(), inner.begin(), inner.end());
    outer.resize(outer.size() + 4);
    memcpy(outer.data() + outer.size() - 4, &base, 4);
    WriteFile("outer", outer);

    Open("outer", FMModeReadWrite, MgBadResourceFile);
    ResFile f = Open("outer", FMModeRead);
    EXPECT_EQ(Load(f, "BBBB", 7), (Bytes{5, 6, 7, 8, 9}));
    EXPECT_EQ(LoadNamed(f, "AAAA", "ONE"), (Bytes{1, 2, 3}));
    Handle h = nullptr;
    ASSERT_EQ(RGet(f, T("AAAA"), 1, &h), MgNoError);
    EXPECT_EQ(RChanged(h), MgNoPermission);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(ReadFile("outer"), outer);

    ResType type = 0, creator = 0;
    EXPECT_EQ(RGetFileTypeCreator(MakePath("outer"), &type, &creator), MgNoError);
    EXPECT_EQ(type, T("TEST"));
    EXPECT_EQ(creator, T("CRTR"));

    // A trailer pointing nowhere useful is no resource file.
    const int32_t wrong = 5;
    memcpy(outer.data() + outer.size() - 4, &wrong, 4);
    WriteFile("outer", outer);
    Open("outer", FMModeRead, MgBadResourceFile);
}

TEST_F(OpenTest, UnsortedListsAreSortedOnlyBelowVersionFour) {
    const std::vector<TypeLayout> unsorted = {{"AAAA", {{5, "", {5}}, {1, "", {1}}, {3, "", {3}}}}};
    for (int16_t version : {2, 3, 4}) {
        Bytes b = BuildFile(unsorted, version);
        WriteFile("u", b);
        ResFile f = Open("u");
        EXPECT_EQ(Ids(f, "AAAA"),
                  version < 4 ? (std::vector<int32_t>{1, 3, 5}) : (std::vector<int32_t>{5, 1, 3}))
            << version;
        // Each reference keeps its own data through the sort; looked up by index, as an id
        // search needs the sorted order.
        for (int32_t i = 1; i <= 3; ++i) {
            Handle h = nullptr;
            int32_t id = 0;
            ASSERT_EQ(RGetInd(f, T("AAAA"), i, &h), MgNoError);
            ASSERT_EQ(RGetInfo(h, &id, nullptr, nullptr), MgNoError);
            EXPECT_EQ(Contents(h), Bytes{uint8_t(id)});
        }
        EXPECT_EQ(RCloseFile(f), MgNoError);
        // Sorting alone doesn't make the map dirty.
        EXPECT_EQ(ReadFile("u"), b) << version;
    }
}

TEST_F(OpenTest, DuplicateIdsInAFileStillLoad) {
    WriteFile("d", BuildFile({{"AAAA", {{4, "", {1}}, {4, "", {2}}}}}));
    ResFile f = Open("d");
    EXPECT_EQ(Load(f, "AAAA", 4).size(), 1u);
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

TEST_F(OpenTest, TableGrowsBeyondTwentyFiles) {
    WriteFile("g", BuildFile(kTwoTypes));
    std::vector<ResFile> files;
    for (int i = 0; i < 25; ++i) files.push_back(Open("g", FMModeRead));
    EXPECT_GE(RFileTableSize, 28);
    for (ResFile f : files) EXPECT_NE(f, 0);
    for (ResFile f : files) EXPECT_EQ(RCloseFile(f), MgNoError);
}

// Also: the type and creator that opening reports, a bad mode, and a read-only file's flags.
TEST_F(OpenTest, SetTypeCreatorRewritesBothHeaders) {
    WriteFile("s", BuildFile(kTwoTypes));
    EXPECT_EQ(RSetFileTypeCreator(MakePath("s"), T("NEWT"), T("NEWC")), MgNoError);
    ResType type = 0, creator = 0;
    ResFile f = 7;
    EXPECT_EQ(ROpenFile(MakePath("s"), 2, &f, nullptr, nullptr), MgBadArgument);
    EXPECT_EQ(f, 0);
    ASSERT_EQ(ROpenFile(MakePath("s"), FMModeRead, &f, &type, &creator), MgNoError);
    EXPECT_EQ(type, T("NEWT"));
    EXPECT_EQ(creator, T("NEWC"));
    int32_t attrs = 0;
    EXPECT_EQ(RGetFileAttrs(f, &attrs), MgNoError);
    EXPECT_EQ(attrs, RFileReadOnly);
    EXPECT_EQ(RSetFileAttrs(f, 0), MgNoPermission);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    // An empty file has no map to read at its map offset.
    EXPECT_EQ(RCreateCorrectFile(MakePath("e"), 1, T("CRTR"), T("TEST"), 0644), MgNoError);
    EXPECT_EQ(RSetFileTypeCreator(MakePath("e"), T("NEWT"), T("NEWC")), MgEndOfFile);
    WriteFile("bad", {1, 2, 3});
    EXPECT_EQ(RGetFileTypeCreator(MakePath("bad"), &type, &creator), MgBadResourceFile);
    EXPECT_EQ(type, 0u);
}

}  // namespace
