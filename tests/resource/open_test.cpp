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
        {"trailer of an embedded file pointing nowhere",
         [](Bytes& b) { b = crafted::Embedded(Base(), 100), b[b.size() - 4] = 5; },
         MgBadResourceFile},
    };
    for (const auto& c : cases) {
        for (int32_t mode : {FMModeReadWrite, FMModeRead}) {
            SCOPED_TRACE(c.what);
            Bytes b = Base();
            c.spoil(b);
            WriteFile("f", b);
            if (ResFile f = Open("f", mode, c.status)) {
                EXPECT_EQ(Records(f), Flat(crafted::BaseLayout()));
                EXPECT_EQ(RCloseFile(f), MgNoError);
            }
        }
    }
}

// A new file is an empty header, in which nothing is found; without replace, an existing file
// stays as it was.
TEST_F(OpenTest, FreshFileIsAnEmptyHeader) {
    ResFile f = CreateAndOpen("new");
    EXPECT_EQ(ReadFile("new"), BuildFile({}));
    EXPECT_EQ(Records(f), std::vector<Res>{});
    Handle h = nullptr;
    for (MgStatus s : {RGet(f, T("AAAA"), 1, &h), RGetInd(f, T("AAAA"), 1, &h),
                       RGetNamed(f, T("AAAA"), PS(P("x")), &h)})
        EXPECT_EQ(s, MgResourceNotFound);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(RCloseFile(f), MgBadResourceFile);
    EXPECT_EQ(RCreateCorrectFile(MakePath("new"), 0, T("CRTR"), T("TEST"), 0644), MgDuplicate);
    EXPECT_EQ(ReadFile("new"), BuildFile({}));
}

// A resource file carried at the end of another file, found through its last four bytes.
TEST_F(OpenTest, EmbeddedFileOpensForReadingOnly) {
    const Bytes outer = crafted::Embedded(Base(), 100);
    WriteFile("outer", outer);
    Open("outer", FMModeReadWrite, MgBadResourceFile);
    ResFile f = Open("outer", FMModeRead);
    EXPECT_EQ(Records(f), Flat(crafted::BaseLayout()));
    EXPECT_EQ(LoadNamed(f, "AAAA", "ONE"), (Bytes{1, 2, 3}));
    EXPECT_EQ(RChanged(Get(f, "AAAA", 1)), MgNoPermission);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(ReadFile("outer"), outer);
    ResType type = 0, creator = 0;
    EXPECT_EQ(RGetFileTypeCreator(MakePath("outer"), &type, &creator), MgNoError);
    EXPECT_EQ(std::make_pair(type, creator), std::make_pair(T("TEST"), T("CRTR")));
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
        EXPECT_EQ(Load(f, "AAAA", 1), Bytes{1});
        EXPECT_EQ(RCloseFile(f), MgNoError);
        EXPECT_EQ(ReadFile("u"), b) << version;
    }
}

// Also: the table of open files grows beyond twenty, the type and creator that opening
// reports, a bad mode, and a read-only file's flags.
TEST_F(OpenTest, SetTypeCreatorRewritesBothHeaders) {
    WriteFile("s", Base());
    EXPECT_EQ(RSetFileTypeCreator(MakePath("s"), T("NEWT"), T("NEWC")), MgNoError);
    ResType type = 0, creator = 0;
    ResFile f = 7;
    EXPECT_EQ(ROpenFile(MakePath("s"), 2, &f, nullptr, nullptr), MgBadArgument);
    EXPECT_EQ(f, 0);
    std::vector<ResFile> files;
    for (int i = 0; i < 25; ++i) files.push_back(Open("s", FMModeRead));
    EXPECT_GE(RFileTableSize, 28);
    for (ResFile g : files) EXPECT_EQ(RCloseFile(g), MgNoError);
    ASSERT_EQ(ROpenFile(MakePath("s"), FMModeRead, &f, &type, &creator), MgNoError);
    EXPECT_EQ(std::make_tuple(type, creator, FileAttrs(f)),
              std::make_tuple(T("NEWT"), T("NEWC"), int32_t(RFileReadOnly)));
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
