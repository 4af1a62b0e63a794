// The write-back pass: what reaches the disk, and how failures leave the file. Memory images
// (files in memory, and the image of an open file against what the disk gets) and
// modification dates by file and by path. Random edit sessions and their images are the
// property test's.
#include "platform/platform.h"
#include "resource/resmap.h"
#include "resource/resource_env.h"

namespace {

using WriteBackTest = ResourceTest;

const std::vector<TypeLayout> kThree = {
    {"AAAA", {{1, "", Bytes(10, 1)}, {2, "two", Bytes(6, 2)}, {3, "", Bytes(3, 3)}}}};

// Loading leaves a file as it was; changing attributes alone makes it dirty.
TEST_F(WriteBackTest, OnlyADirtyFileIsWritten) {
    const Bytes original = BuildFile(kThree);
    ResFile f = Put("u", original);
    const auto before = std::filesystem::last_write_time(FilePath("u"));
    Get(f, "AAAA", 2);
    const int64_t writes = plat::FileOpCount(plat::kFileWrite);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(plat::FileOpCount(plat::kFileWrite), writes);
    EXPECT_EQ(ReadFile("u"), original);
    EXPECT_EQ(std::filesystem::last_write_time(FilePath("u")), before);
    f = Open("u");
    ASSERT_EQ(RSetAttrs(Get(f, "AAAA", 3), RAttrProtected), MgNoError);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(FileRecords(FilePath("u")).at(2), (Res{"AAAA", 3, "", Bytes(3, 3), RAttrProtected}));
}

// Types in the order they came, ids sorted, names in the order they came; data goes out in
// writes of at most 4096 bytes, then the map and the header. (A full disk at any write:
// ReplaceTest.)
TEST_F(WriteBackTest, NewFileMatchesAHandBuiltOne) {
    for (const auto& [size, dataWrites] :
         {std::pair<size_t, int64_t>{0, 3}, {4092, 3}, {4093, 4}, {8188, 4}, {8190, 5}}) {
        ResFile f = CreateAndOpen("n");
        const Bytes data = Fill(size, 1);
        AddData(f, "BBBB", 4, {4, 4, 4, 4, 4}, "four");
        AddData(f, "AAAA", 2, data, "two");
        AddData(f, "BBBB", 1, {});
        const int64_t before = plat::FileOpCount(plat::kFileWrite);
        ASSERT_EQ(RCloseFile(f), MgNoError);
        EXPECT_EQ(plat::FileOpCount(plat::kFileWrite) - before, dataWrites + 2) << size;
        Bytes want = BuildFile(
            {{"BBBB", {{1, "", {}}, {4, "four", {4, 4, 4, 4, 4}}}}, {"AAAA", {{2, "two", data}}}});
        want[Big32At(want, 16) + 43] = RFileDirty;  // the map goes out dirty, cleared after
        EXPECT_EQ(ReadFile("n"), want) << size;
    }
}

// Data in front stays, data behind a changed resource moves down into the gap, and the changed
// one goes behind all unchanged data.
TEST_F(WriteBackTest, ChangedMiddleMovesToTheEnd) {
    ResFile f = Put("m", BuildFile(kThree));
    Handle h = Get(f, "AAAA", 2);
    (*h)[0] = 0x55;
    ASSERT_EQ(RChanged(h), MgNoError);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    const Bytes file = ReadFile("m");
    const uint32_t refs = Big32At(file, 16) + 68;  // the data offset of each reference
    EXPECT_EQ((std::vector<uint32_t>{Big32At(file, refs + 12), Big32At(file, refs + 32),
                                     Big32At(file, refs + 52), Big32At(file, 28)}),
              (std::vector<uint32_t>{0, 24, 16, 36}));
}

// A file that held resources and lost them all is cut to its header, which still describes
// the old map: it can't be opened again. One that never held any stays valid.
TEST_F(WriteBackTest, EmptiedFileBecomesThirtyTwoBytes) {
    ResFile f = Put("e", BuildFile({{"AAAA", {{1, "", {1}}}}}));
    Handle h = Get(f, "AAAA", 1);
    ASSERT_EQ(RRemove(h, f), MgNoError);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    MemDisposeHandle(h);
    EXPECT_EQ(ReadFile("e").size(), 32u);
    Open("e", FMModeReadWrite, MgEndOfFile);
}

// Written at once, the resource is no longer changed; the room taken at the end by a
// pre-allocation doesn't spoil the file.
TEST_F(WriteBackTest, WriteNowAndPreAlloc) {
    ResFile f = CreateAndOpen("n");
    Handle h = AddData(f, "AAAA", 1, {7, 7});
    ASSERT_EQ(RWriteNow(h), MgNoError);
    EXPECT_EQ(Attrs(h) & RAttrChanged, 0);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    f = Open("n");
    const size_t size = ReadFile("n").size();
    ASSERT_EQ(RPreAllocFile(f, 100), MgNoError);
    EXPECT_EQ(ReadFile("n").size(), size + 100);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(FileRecords(FilePath("n")), (std::vector<Res>{{"AAAA", 1, "", {7, 7}}}));
}

TEST_F(WriteBackTest, AnUnloadedResourceStopsTheImageAfterEarlierOffsetsMoved) {
    ResFile f = Put("u", BuildFile({{"DATA", {{1, "", Bytes(8, 1)}, {2, "", {2}}, {3, "", {3}}}}}));
    Handle first = Get(f, "DATA", 1);
    Get(f, "DATA", 2);
    ASSERT_EQ(MemResizeHandle(first, 100), MgNoError);
    Handle image = reinterpret_cast<Handle>(1);
    EXPECT_EQ(RGetMemFileHandle(f, &image), MgBadArgument);
    EXPECT_EQ(image, nullptr);
    ResFileEntry* entry = nullptr;
    ASSERT_EQ(RLookupFile(f, &entry), MgNoError);
    Ptr typeList = rsrc::TypeListOf(entry->map);
    const ResRefEntry* refs = rsrc::RefsOf(typeList, rsrc::TypeAt(typeList, 0));
    // 104: was 12 in the file; 20: untouched.
    EXPECT_EQ(std::make_pair(refs[1].dataOffset, refs[2].dataOffset), std::make_pair(104, 20));
    Drop(f);
}

// Adds alone give the very file that closing writes, run-time words zero included.
TEST_F(WriteBackTest, MemoryFileHoldsResourcesItCannotFindByHandle) {
    // The disk file opens first: a file opened later would take the memory file's slot.
    ASSERT_EQ(RCreateCorrectFile(MakePath("disk"), 1, T("CRTR"), T("MEMF"), 0644), MgNoError);
    ResFile disk = Open("disk"), id = -1;
    ASSERT_EQ(RCreateMemFile(&id, T("CRTR"), T("MEMF")), MgNoError);
    EXPECT_EQ(id, 0);
    EXPECT_EQ(Image(id), ReadFile("disk"));  // no resources: an empty file's bytes
    const std::vector<Res> want = {{"TXT ", 2, "", {'a'}},
                                   {"TXT ", 5, "greeting", {'h', 'i'}},
                                   {"BIN ", 9, "", Bytes(5003, 7)}};
    Handle a = nullptr;
    for (size_t i : {1, 0, 2})
        for (ResFile f : {id, disk}) {
            Handle h = AddData(f, want[i].type.c_str(), want[i].id, want[i].data, want[i].name);
            if (f == id && i == 1) a = h;
        }
    EXPECT_EQ(RGetInfo(a, nullptr, nullptr, nullptr), MgResourceNotFound);
    EXPECT_EQ(RChanged(a), MgResourceNotFound);
    const Bytes image = Image(id);
    // Nothing can take its changes: it closes only once its dirty bit is cleared. It goes
    // while its slot is the first free-looking one, where the id 0 is looked up.
    EXPECT_EQ(RCloseFile(id), MgBadArgument);
    Drop(id);
    ASSERT_EQ(RCloseFile(disk), MgNoError);
    EXPECT_EQ(image, ReadFile("disk"));  // type and creator included
    EXPECT_EQ(FileRecords(FilePath("disk")), want);
}

// By path and by open file, with the read-only flag, rounded to the nearest second as the file
// layer does; and the bad arguments.
TEST_F(WriteBackTest, ModificationDateByPathAndByFile) {
    ASSERT_EQ(RCloseFile(CreateAndOpen("dated")), MgNoError);
    // 2020-01-01 00:00:00 UTC in seconds since 1904, and in 100 ns since 1601, plus 1.5 s.
    const uint32_t even = 1577836800u + 2082844800u;
    ASSERT_TRUE(plat::SetFileDates(FilePath("dated").c_str(), 0,
                                   (1577836800ull + 11644473600ull) * 10000000ull + 15000000));
    uint32_t date = 0, byFile = 0;
    int32_t readOnly = -1, byFileReadOnly = -1;
    EXPECT_EQ(RGetModDate(MakePath("dated"), 0, &date, &readOnly), MgNoError);
    using std::filesystem::perms;
    std::filesystem::permissions(FilePath("dated"),
                                 perms::owner_write | perms::group_write | perms::others_write,
                                 std::filesystem::perm_options::remove);
    ResFile f = Open("dated", FMModeRead);
    EXPECT_EQ(RGetModDate(nullptr, f, &byFile, &byFileReadOnly), MgNoError);
    EXPECT_EQ(std::make_tuple(date, readOnly, byFile, byFileReadOnly),
              std::make_tuple(even + 2, 0, even + 2, 1));
    ASSERT_EQ(RCloseFile(f), MgNoError);
    for (const auto& [path, id, want] : {std::tuple{MakePath("missing"), 0, MgNotFound},
                                         {MakePath("dated"), 12345, MgBadResourceFile},
                                         {Path(nullptr), 0, MgBadArgument}}) {
        date = 9;
        EXPECT_EQ(RGetModDate(path, id, &date, nullptr), want);
        EXPECT_EQ(date, 9u);
    }
    // Writable again, so that a Windows host lets the directory go.
    std::filesystem::permissions(FilePath("dated"), perms::owner_write,
                                 std::filesystem::perm_options::add);
}

}  // namespace
