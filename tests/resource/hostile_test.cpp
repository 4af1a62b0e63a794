// Files from outside: maps that would make a trusting reader overrun or misread its own
// memory are refused on opening; bad data fails only its own load; odd layouts that open are
// written back correctly. Each case leaves everything else as it was.
#include "mg/rescheck.h"
#include "resource/crafted_files.h"
#include "resource/resource_env.h"

namespace {

class HostileTest : public ResourceTest {
  protected:
    static int32_t OpenSlots() {
        const ResFileEntry* slots = reinterpret_cast<const ResFileEntry*>(*RFileTable);
        int32_t n = 0;
        for (int32_t i = 0; i < RFileTableSize; ++i) n += slots[i].fileId != 0;
        return n;
    }
    // Refused with `status` in `mode`, taking no slot and leaving the last get and the file.
    void Refused(const Bytes& b, int32_t mode, MgStatus status) {
        WriteFile("m", b);
        const int32_t slots = OpenSlots();
        const Handle last = RLastGot.handle;
        EXPECT_EQ(Open("m", mode, status), 0);
        EXPECT_EQ(std::make_pair(OpenSlots(), RLastGot.handle), std::make_pair(slots, last));
        EXPECT_EQ(ReadFile("m"), b);
    }
};

TEST_F(HostileTest, UntrustworthyMapsAreRefused) {
    for (const auto& row : crafted::BadMaps()) {
        SCOPED_TRACE(row.what);
        Bytes b = crafted::Base();
        row.spoil(b);
        for (int32_t mode : {FMModeRead, FMModeReadWrite}) Refused(b, mode, row.open);
    }
}

// A file carried at the end of another one, whose offsets, moved by where it stands (8), are
// past any 32-bit position: the header's, or the map copy's, which aren't compared, and which
// in a file with no map are the header's moved twice. The check of the bytes says so too.
TEST_F(HostileTest, EmbeddedOffsetsPastAnyPositionAreRefused) {
    const Bytes base = crafted::Base(), empty = BuildFile({});
    const struct {
        const Bytes& inner;
        uint32_t at, value;
    } rows[] = {{base, 16, 0x7FFFFFFC},  // map offset
                {base, 24, 0x7FFFFFFC},  // data offset
                {base, crafted::MapAt(base) + 24, 0x7FFFFFFC},
                {empty, 24, 0x7FFFFFF4}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.at);
        Bytes inner = row.inner;
        PutBig32(inner, row.at, row.value);
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
TEST_F(HostileTest, BadDataFailsOnlyItsOwnLoadAndKeepsTheFileOpen) {
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
            EXPECT_EQ(LoadNamed(f, "BBBB", "seven"), (Bytes{5, 6, 7, 8, 9}));
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
    WriteFile("n", b);
    ResFile f = Open("n");
    EXPECT_EQ(RWriteNow(AddData(f, "CCCC", 1, Bytes(8, 1))), MgEndOfFile);
    EXPECT_EQ(ReadFile("n"), b);
    Drop(f);
}

// A changed bit or handle word stored in the file is run-time state of another writer: it is
// dropped, so detaching and releasing work and closing writes nothing.
TEST_F(HostileTest, RunTimeBitsFromTheFileAreDropped) {
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
// behind a gap. A write-back (a new file, or in place when no new file can be made) either
// writes them out correctly or refuses with 6 and leaves the file as it was.
TEST_F(HostileTest, OddLayoutsAreWrittenBackCorrectly) {
    const struct {
        Bytes file;
        Bytes a2;          // what AAAA 2 holds
        MgStatus inPlace;  // the pass in place
    } rows[] = {{crafted::SharedData(), {1, 2, 3}, MgIOError},
                {crafted::DataBehindAGap(16), {4}, MgNoError}};
    for (const auto& row : rows) {
        for (bool inPlace : {false, true}) {
            SCOPED_TRACE(testing::Message() << row.a2.size() << (inPlace ? " in place" : " new"));
            WriteFile("o", row.file);
            ResFile f = Open("o");
            Handle b7 = Get(f, "BBBB", 7);
            ASSERT_EQ(MemSetHandleBytes(&b7, "\5\6\7\10\11\12", 6), MgNoError);
            ASSERT_EQ(RChanged(b7), MgNoError);
            AddData(f, "CCCC", 3, {3, 3, 3});
            // The new file can't be made: the pass falls back to working in place.
            if (inPlace) plat::FailFileOpAt(plat::kFileReplace, 1, MgNoPermission);
            const MgStatus closed = RCloseFile(f);
            plat::ResetFaults();
            EXPECT_EQ(closed, inPlace ? row.inPlace : MgNoError);
            if (closed) {
                EXPECT_EQ(ReadFile("o"), row.file);
                ASSERT_EQ(RCloseFile(f), MgNoError);
            }
            EXPECT_EQ(Strays("o"), 0);
            EXPECT_EQ(FileRecords(FilePath("o")),
                      (std::vector<Res>{{"AAAA", 1, "one", {1, 2, 3}},
                                        {"AAAA", 2, "", row.a2},
                                        {"BBBB", 7, "seven", {5, 6, 7, 8, 9, 10}},
                                        {"CCCC", 3, "", {3, 3, 3}}}));
        }
    }
}

}  // namespace
