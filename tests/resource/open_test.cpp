// Headers, maps and the table of open files.

#include "resource/crafted_files.h"
#include "resource/resource_env.h"

namespace {

using crafted::Base;
using crafted::MapAt;

class OpenTest : public ResourceTest {};

TEST_F(OpenTest, HeaderValidity) {
    const struct {
        const char* what;
        std::function<void(Bytes&)> spoil;
        MgStatus status;
    } cases[] = {
        {"valid", [](Bytes&) {}, MgNoError},
        {"short file", [](Bytes& b) { b.resize(31); }, MgBadResourceFile},
        {"bad signature", [](Bytes& b) { b[0] = 'X'; }, MgBadResourceFile},
        {"version 1", [](Bytes& b) { b[7] = 1; }, MgBadResourceFile},
        {"negative version", [](Bytes& b) { b[6] = 0xFF; }, MgBadResourceFile},
        {"version 3, bad line end", [](Bytes& b) { b[5] = 'x'; }, MgBadResourceFile},
        {"version 2, garbage line end, same in map",
         [](Bytes& b) {
             for (uint32_t at : {0u, MapAt(b)}) b[at + 7] = 2, b[at + 4] = 'g', b[at + 5] = 'g';
         },
         MgNoError},
        {"version 5 in both", [](Bytes& b) { b[7] = 5, b[MapAt(b) + 7] = 5; }, MgNoError},
        {"map copy names another creator", [](Bytes& b) { b[MapAt(b) + 12] = 'Z'; }, MgIOError},
        {"map copy with other version", [](Bytes& b) { b[MapAt(b) + 7] = 4; }, MgIOError},
        {"type list beyond the map", [](Bytes& b) { PutBig32(b, MapAt(b) + 44, 5000); }, MgIOError},
        {"name list beyond the map", [](Bytes& b) { PutBig32(b, MapAt(b) + 48, 5000); }, MgIOError},
        {"type count running off the map", [](Bytes& b) { PutBig32(b, MapAt(b) + 52, 900); },
         MgIOError},
        {"reference list off the map", [](Bytes& b) { PutBig32(b, MapAt(b) + 64, 100000); },
         MgIOError},
        {"map smaller than its header",
         [](Bytes& b) { PutBig32(b, 20, 40), b.resize(MapAt(b) + 40); }, MgIOError},
        {"map beyond the file", [](Bytes& b) { PutBig32(b, 20, Big32At(b, 20) + 100); },
         MgEndOfFile},
    };
    for (const auto& c : cases) {
        for (int32_t mode : {FMModeReadWrite, FMModeRead}) {
            SCOPED_TRACE(c.what);
            Bytes b = Base();
            c.spoil(b);
            WriteFile("f", b);
            ResFile f = Open("f", mode, c.status);
            EXPECT_EQ(f != 0, c.status == MgNoError);
            if (f) {
                EXPECT_EQ(Records(f), Flat(crafted::BaseLayout()));
                EXPECT_EQ(RCloseFile(f), MgNoError);
            }
        }
    }
}

TEST_F(OpenTest, FreshFileIsAnEmptyHeader) {
    ResFile f = CreateAndOpen("new");
    EXPECT_EQ(ReadFile("new"), BuildFile({}));
    ResFileEntry* e;
    ASSERT_EQ(RLookupFile(f, &e), MgNoError);
    EXPECT_EQ(MemHandleSize(e->mapHandle), 52);
    int32_t n = -1;
    ResType t = 1;
    Handle h = nullptr;
    EXPECT_EQ(RCount(f, T("AAAA"), &n), MgNoError);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(Records(f), std::vector<Res>{});
    EXPECT_EQ(RGetIndType(f, &t, 1), MgResourceNotFound);
    EXPECT_EQ(t, 0u);
    EXPECT_EQ(RGet(f, T("AAAA"), 1, &h), MgResourceNotFound);
    EXPECT_EQ(RGetInd(f, T("AAAA"), 1, &h), MgResourceNotFound);
    EXPECT_EQ(RGetNamed(f, T("AAAA"), PS(P("x")), &h), MgResourceNotFound);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(RCloseFile(f), MgBadResourceFile);
    // Without replace, an existing file stays as it was.
    EXPECT_EQ(RCreateCorrectFile(MakePath("new"), 0, T("CRTR"), T("TEST"), 0644), MgDuplicate);
    EXPECT_EQ(ReadFile("new"), BuildFile({}));
}

// A resource file carried at the end of another file, found through its last four bytes.
TEST_F(OpenTest, EmbeddedFileOpensForReadingOnly) {
    Bytes outer = crafted::Embedded(Base(), 100);
    WriteFile("outer", outer);

    Open("outer", FMModeReadWrite, MgBadResourceFile);
    ResFile f = Open("outer", FMModeRead);
    EXPECT_EQ(Records(f), Flat(crafted::BaseLayout()));
    EXPECT_EQ(LoadNamed(f, "AAAA", "ONE"), (Bytes{1, 2, 3}));
    Handle h = Get(f, "AAAA", 1);
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

// Each reference keeps its own data through the sort, which alone doesn't make the map dirty;
// ids that appear twice both stay.
TEST_F(OpenTest, UnsortedListsAreSortedOnlyBelowVersionFour) {
    const std::vector<TypeLayout> unsorted = {
        {"AAAA", {{5, "", {5}}, {1, "", {1}}, {3, "", {3}}, {1, "", {1}}}}};
    for (int16_t version : {2, 3, 4}) {
        const Bytes b = BuildFile(unsorted, version);
        WriteFile("u", b);
        ResFile f = Open("u");
        std::vector<Res> want = Flat(unsorted);
        if (version < 4) want = {want[1], want[3], want[2], want[0]};
        EXPECT_EQ(Records(f), want) << version;
        if (version < 4) {
            EXPECT_EQ(Load(f, "AAAA", 1), Bytes{1});  // found by id once sorted
        }
        EXPECT_EQ(RCloseFile(f), MgNoError);
        EXPECT_EQ(ReadFile("u"), b) << version;
    }
}

TEST_F(OpenTest, TableGrowsBeyondTwentyFiles) {
    WriteFile("g", Base());
    std::vector<ResFile> files;
    for (int i = 0; i < 25; ++i) files.push_back(Open("g", FMModeRead));
    EXPECT_GE(RFileTableSize, 28);
    for (ResFile f : files) EXPECT_EQ(RCloseFile(f), MgNoError);
}

// Also: the type and creator that opening reports, a bad mode, and a read-only file's flags.
TEST_F(OpenTest, SetTypeCreatorRewritesBothHeaders) {
    WriteFile("s", Base());
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
