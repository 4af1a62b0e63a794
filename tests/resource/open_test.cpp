// Headers, maps and the table of open files. Files from outside: maps that would make a
// trusting reader overrun or misread its own memory are refused on opening; bad data fails
// only its own load; odd layouts that open are written back correctly. Each case leaves
// everything else as it was.
#include "mg/rescheck.h"
#include "resource/crafted_files.h"
#include "resource/resource_env.h"

namespace {

using crafted::Base;
using crafted::MapAt;
using crafted::PutMap32;

class OpenTest : public ResourceTest {
  protected:
    static int32_t OpenSlots() {
        const ResFileEntry* slots = reinterpret_cast<const ResFileEntry*>(*RFileTable);
        int32_t n = 0;
        for (int32_t i = 0; i < RFileTableSize; ++i) n += slots[i].fileId != 0;
        return n;
    }
    // Refused with `status` in `mode`, taking no slot and leaving the last get and the file.
    void Refused(const Bytes& b, int32_t mode, MgStatus status) {
        const int32_t slots = OpenSlots();
        const Handle last = RLastGot.handle;
        EXPECT_EQ(Put("m", b, mode, status), 0);
        EXPECT_EQ(std::make_pair(OpenSlots(), RLastGot.handle), std::make_pair(slots, last));
        EXPECT_EQ(ReadFile("m"), b);
    }
};

// Headers and maps, sound or spoiled by hand or by the crafted rows: a refused one takes no
// slot and leaves the last get and the file as they were.
TEST_F(OpenTest, HeaderValidity) {
    std::vector<crafted::Spoiled> rows = {
        {"short file", [](Bytes& b) { b.resize(31); }, MgBadResourceFile},
        {"bad signature", [](Bytes& b) { b[0] = 'X'; }, MgBadResourceFile},
        {"version 1", [](Bytes& b) { b[7] = 1; }, MgBadResourceFile},
        {"version 3, bad line end", [](Bytes& b) { b[5] = 'x'; }, MgBadResourceFile},
        {"version 2, garbage line end, same in map",
         [](Bytes& b) {
             for (uint32_t at : {0u, MapAt(b)}) b[at + 7] = 2, b[at + 4] = 'g', b[at + 5] = 'g';
         },
         MgNoError},
        {"version 5 in both", [](Bytes& b) { b[7] = 5, b[MapAt(b) + 7] = 5; }, MgNoError},
        {"map copy names another creator", [](Bytes& b) { b[MapAt(b) + 12] = 'Z'; }, MgIOError},
        {"map copy with other version", [](Bytes& b) { b[MapAt(b) + 7] = 4; }, MgIOError},
        {"type list beyond the map", [](Bytes& b) { PutMap32(b, 44, 5000); }, MgIOError},
        {"name list beyond the map", [](Bytes& b) { PutMap32(b, 48, 5000); }, MgIOError},
        {"type count running off the map", [](Bytes& b) { PutMap32(b, 52, 900); }, MgIOError},
        {"reference list off the map", [](Bytes& b) { PutMap32(b, 64, 100000); }, MgIOError},
        {"map smaller than its header",
         [](Bytes& b) { PutBig32(b, 20, 40), b.resize(MapAt(b) + 40); }, MgIOError},
        {"map beyond the file", [](Bytes& b) { PutBig32(b, 20, Big32At(b, 20) + 100); },
         MgEndOfFile},
        {"trailer of an embedded file pointing nowhere",
         [](Bytes& b) { b = crafted::Embedded(Base(), 100), b[b.size() - 4] = 5; },
         MgBadResourceFile},
    };
    rows.insert(rows.end(), crafted::BadMaps().begin(), crafted::BadMaps().end());
    for (const auto& row : rows) {
        Bytes b = Base();
        row.spoil(b);
        SCOPED_TRACE(row.what);
        for (int32_t mode : {FMModeReadWrite, FMModeRead}) {
            if (row.open) Refused(b, mode, row.open);
            if (ResFile f = row.open ? 0 : Put("f", b, mode)) {
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
    Handle h = nullptr;
    for (MgStatus s : {RGet(f, T("AAAA"), 1, &h), RGetInd(f, T("AAAA"), 1, &h),
                       RGetNamed(f, T("AAAA"), PS(P("x")), &h)})
        EXPECT_EQ(s, MgResourceNotFound);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(RCloseFile(f), MgBadResourceFile);
    EXPECT_EQ(RCreateCorrectFile(MakePath("new"), 0, T("CRTR"), T("TEST"), 0644), MgDuplicate);
    // An empty file has no map to read at its map offset.
    EXPECT_EQ(RSetFileTypeCreator(MakePath("new"), T("NEWT"), T("NEWC")), MgEndOfFile);
    EXPECT_EQ(ReadFile("new"), BuildFile({}));
}

// Each reference keeps its own data through the sort, which alone doesn't make the map dirty;
// ids that appear twice both stay.
TEST_F(OpenTest, UnsortedListsAreSortedOnlyBelowVersionFour) {
    const std::vector<TypeLayout> unsorted = {
        {"AAAA", {{5, "", {5}}, {1, "", {1}}, {3, "", {3}}, {1, "", {1}}}}};
    for (int16_t version : {2, 3, 4}) {
        const Bytes b = BuildFile(unsorted, version);
        ResFile f = Put("u", b);
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
    WriteFile("bad", {1, 2, 3});
    EXPECT_EQ(RGetFileTypeCreator(MakePath("bad"), &type, &creator), MgBadResourceFile);
    EXPECT_EQ(type, 0u);
}

// A resource file carried at the end of another file, found through its last four bytes,
// opens for reading only (what it holds: the packager's round trip). Its offsets, moved by
// where it stands (8), may be past any 32-bit position: the header's, or the map copy's, which
// aren't compared, and which in a file with no map are the header's moved twice. Such a file
// is refused, and the check of the bytes says so too.
TEST_F(OpenTest, EmbeddedFiles) {
    const Bytes base = crafted::Base(), empty = BuildFile({});
    Put("outer", crafted::Embedded(base, 100), FMModeReadWrite, MgBadResourceFile);
    EXPECT_EQ(RCloseFile(Open("outer", FMModeRead)), MgNoError);
    ResType type = 0, creator = 0;
    EXPECT_EQ(RGetFileTypeCreator(MakePath("outer"), &type, &creator), MgNoError);
    EXPECT_EQ(std::make_pair(type, creator), std::make_pair(T("TEST"), T("CRTR")));
    // The map offset, the data offset, the map copy's data offset; in a file with no map.
    for (auto [inner, at, value] : {std::tuple{base, 16u, 0x7FFFFFFCu},
                                    {base, 24u, 0x7FFFFFFCu},
                                    {base, MapAt(base) + 24, 0x7FFFFFFCu},
                                    {empty, 24u, 0x7FFFFFF4u}}) {
        SCOPED_TRACE(at);
        PutBig32(inner, at, value);
        const Bytes outer = crafted::Embedded(inner, 8);
        Refused(outer, FMModeRead, MgEndOfFile);
        RCheckSummary sum{};
        EXPECT_EQ(RCheckBytes(outer.data(), int64_t(outer.size()), nullptr, &sum), MgNoError);
        EXPECT_EQ(sum.openStatus, MgEndOfFile);
    }
}

// The bad load is refused before memory is taken for it: with the next allocation armed to
// fail, it still gives 4 rather than 2. An edit elsewhere in such a file can't be written
// back: the close fails with 4 and changes nothing, the file stays open with its edits in
// memory, and dropping the dirty bit lets it go (freeing the changed handle, an empty one
// here, which a lost file would leak). A data section claimed up to the last 32-bit position
// can't take a resource written at once behind it either.
TEST_F(OpenTest, BadDataFailsOnlyItsOwnLoadAndKeepsTheFileOpen) {
    for (const auto& row : crafted::BadData()) {
        SCOPED_TRACE(row.what);
        Bytes b = crafted::Base();
        row.spoil(b);
        WriteFile("d", b);
        for (int32_t mode : {FMModeRead, FMModeReadWrite}) {
            ResFile f = Open("d", mode, row.open);
            Handle h = nullptr;
            plat::FailAllocationAt(1);
            EXPECT_EQ(RGet(f, T("AAAA"), 1, &h), MgEndOfFile);
            plat::ResetFaults();
            EXPECT_EQ(h, nullptr);
            EXPECT_EQ(Load(f, "AAAA", 2), Bytes{4});
            EXPECT_EQ(Load(f, "BBBB", 7), (Bytes{5, 6, 7, 8, 9}));
            if (mode == FMModeReadWrite) {
                h = Get(f, "BBBB", 7);
                ASSERT_EQ(MemResizeHandle(h, 0), MgNoError);
                ASSERT_EQ(RChanged(h), MgNoError);
                EXPECT_EQ(RCloseFile(f), MgEndOfFile);
                EXPECT_EQ(std::make_pair(ReadFile("d"), Strays("d")), std::make_pair(b, 0));
                EXPECT_EQ(Attrs(h), RAttrChanged);
                Drop(f);
                EXPECT_FALSE(RIsResource(h));
            } else {
                EXPECT_EQ(RCloseFile(f), MgNoError);
            }
            EXPECT_EQ(ReadFile("d"), b);
        }
    }
    Bytes b = crafted::Base();
    crafted::PutMap32(b, 24, 0x7FFFFF00);
    crafted::PutMap32(b, 28, 0x100);
    ResFile f = Put("n", b);
    EXPECT_EQ(RWriteNow(AddData(f, "CCCC", 1, Bytes(8, 1))), MgEndOfFile);
    EXPECT_EQ(ReadFile("n"), b);
    Drop(f);
}

// A changed bit or handle word stored in the file is run-time state of another writer: it is
// dropped, so detaching and releasing work and closing writes nothing.
TEST_F(OpenTest, RunTimeBitsFromTheFileAreDropped) {
    const Bytes b = crafted::RunTimeBitsFromTheFile();
    WriteFile("r", b);
    for (int32_t mode : {FMModeRead, FMModeReadWrite}) {
        ResFile f = Open("r", mode);
        Handle h = Get(f, "AAAA", 1);
        int32_t id = 0;
        EXPECT_EQ(RGetInfo(h, &id, nullptr, nullptr), MgNoError);
        EXPECT_EQ(std::make_pair(Attrs(h), id), std::make_pair(int32_t(RAttrProtected), 1));
        EXPECT_EQ(RDetach(h), MgNoError);
        MemDisposeHandle(h);
        EXPECT_EQ(RRelease(Get(f, "AAAA", 1)), MgNoError);
        EXPECT_EQ(RCloseFile(f), MgNoError);
        EXPECT_EQ(ReadFile("r"), b);
    }
}

// Layouts the manager never writes but a reader accepts: shared data and a data section
// behind a gap. A write-back (a new file, or in place when no new file can be made) writes
// them out correctly.
TEST_F(OpenTest, OddLayoutsAreWrittenBackCorrectly) {
    for (const auto& [file, a2] : {std::pair{crafted::SharedData(), Bytes{1, 2, 3}},
                                   std::pair{crafted::DataBehindAGap(16), Bytes{4}}}) {
        for (bool inPlace : {false, true}) {
            SCOPED_TRACE(testing::Message() << a2.size() << (inPlace ? " in place" : " new"));
            ResFile f = Put("o", file);
            Handle b7 = Get(f, "BBBB", 7);
            ASSERT_EQ(MemSetHandleBytes(&b7, "\5\6\7\10\11\12", 6), MgNoError);
            ASSERT_EQ(RChanged(b7), MgNoError);
            AddData(f, "CCCC", 3, {3, 3, 3});
            // The new file can't be made: the pass falls back to working in place.
            if (inPlace) plat::FailFileOpAt(plat::kFileReplace, 1, MgNoPermission);
            EXPECT_EQ(RCloseFile(f), MgNoError);
            plat::ResetFaults();
            EXPECT_EQ(Strays("o"), 0);
            EXPECT_EQ(FileRecords(FilePath("o")),
                      (std::vector<Res>{{"AAAA", 1, "one", {1, 2, 3}},
                                        {"AAAA", 2, "", a2},
                                        {"BBBB", 7, "seven", {5, 6, 7, 8, 9, 10}},
                                        {"CCCC", 3, "", {3, 3, 3}}}));
        }
    }
}

using Notices = std::vector<std::pair<int64_t, std::string>>;
void Keep(void* context, const RCheckFinding* f) {
    static_cast<Notices*>(context)->push_back({f->offset, f->text});
}

// RCheckBytes on a file whose data lies out of map order, as write-backs leave files after
// edits, and whose ids repeat out of order: the notices come as for sorted lists, each once.
TEST(CheckBytes, NoticesOfDataAndIdsOutOfOrder) {
    Bytes b =
        BuildFile({{"AAAA", {{5, "", {1, 2, 3}}, {2, "", {4}}, {5, "", {5, 6, 7, 8, 9}}}}}, 4);
    const int64_t refs = Big32At(b, 16) + 68;  // the three entries, 20 bytes apart
    PutBig32(b, size_t(refs + 12), 16);        // the first takes the third's data,
    PutBig32(b, size_t(refs + 52), 8);         // the third shares the second's
    Notices got;
    RCheckSink sink{&got, Keep, nullptr, 1};
    RCheckSummary summary;
    ASSERT_EQ(RCheckBytes(b.data(), int64_t(b.size()), &sink, &summary), MgNoError);
    EXPECT_EQ(
        got,
        (Notices{
            {refs + 20, "id 2 out of order in a version-4 file: lookups by id may miss it"},
            {refs + 40, "id 5 appears twice in its type; a lookup finds one of them"},
            {32, "8 bytes of data that no reference uses"},
            {refs + 52, "shares its data with the reference at " + std::to_string(refs + 20)}}));
    Bytes bare = BuildFile({});  // no map, and data claimed past the end: both are told
    PutBig32(bare, 28, 64);
    EXPECT_TRUE(RCheckBytes(bare.data(), int64_t(bare.size()), nullptr, &summary) == MgNoError &&
                summary.notices == 2);
}

}  // namespace
