// Memory images and dates: files in memory, the image of an open file against what the disk
// gets, and modification dates by file and by path. Random edit sessions and their images are
// the property test's.

#include "platform/platform.h"
#include "resource/resmap.h"
#include "resource/resource_env.h"

namespace {

class MemImage : public ResourceTest {
  protected:
    static Bytes Image(ResFile f) {
        Handle image = nullptr;
        EXPECT_EQ(RGetMemFileHandle(f, &image), MgNoError);
        if (!image) return {};
        Bytes b = Contents(image);
        MemDisposeHandle(image);
        return b;
    }
};

TEST_F(MemImage, AnUnloadedResourceStopsTheImageAfterEarlierOffsetsMoved) {
    WriteFile("u", BuildFile({{"DATA", {{1, "", Bytes(8, 1)}, {2, "", {2}}, {3, "", {3}}}}}));
    ResFile f = Open("u");
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
TEST_F(MemImage, MemoryFileHoldsResourcesItCannotFindByHandle) {
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
    for (size_t i : {1, 0, 2}) {
        for (ResFile f : {id, disk}) {
            Handle h = AddData(f, want[i].type.c_str(), want[i].id, want[i].data, want[i].name);
            if (f == id && i == 1) a = h;
        }
    }
    EXPECT_EQ(RGetInfo(a, nullptr, nullptr, nullptr), MgResourceNotFound);
    EXPECT_EQ(RChanged(a), MgResourceNotFound);
    const Bytes image = Image(id);
    WriteFile("mem.img", image);
    // Nothing can take its changes: it closes only once its dirty bit is cleared. It goes
    // while its slot is the first free-looking one, where the id 0 is looked up.
    EXPECT_EQ(RCloseFile(id), MgBadArgument);
    Drop(id);
    ASSERT_EQ(RCloseFile(disk), MgNoError);
    EXPECT_EQ(image, ReadFile("disk"));
    EXPECT_EQ(FileRecords(FilePath("mem.img")), want);
    ResType type = 0, creator = 0;
    EXPECT_EQ(RGetFileTypeCreator(MakePath("mem.img"), &type, &creator), MgNoError);
    EXPECT_EQ(std::make_pair(type, creator), std::make_pair(T("MEMF"), T("CRTR")));
}

// By path and by open file, with the read-only flag, rounded to the nearest second as the file
// layer does; and the bad arguments.
TEST_F(MemImage, ModificationDateByPathAndByFile) {
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
