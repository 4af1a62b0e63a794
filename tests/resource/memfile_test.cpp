// Memory images and dates: files in memory, the image of an open file against what the disk
// gets, and modification dates by file and by path.

#include <chrono>
#include <filesystem>
#include <random>

#include "resource/resmap.h"
#include "resource/resource_env.h"

namespace {

struct Entry {
    ResType type;
    int32_t id;
    std::string name;
    int32_t attrs;
    Bytes data;
    bool operator==(const Entry&) const = default;
};

class MemImage : public ResourceTest {
  protected:
    // Every resource in enumeration order, loaded.
    static std::vector<Entry> Snapshot(ResFile f) {
        std::vector<Entry> out;
        int32_t types = 0;
        EXPECT_EQ(RCountTypes(f, &types), MgNoError);
        for (int32_t t = 1; t <= types; ++t) {
            ResType type = 0;
            EXPECT_EQ(RGetIndType(f, &type, t), MgNoError);
            int32_t n = 0;
            RCount(f, type, &n);
            for (int32_t i = 1; i <= n; ++i) {
                Handle h = nullptr;
                EXPECT_EQ(RGetInd(f, type, i, &h), MgNoError);
                Entry e{type, 0, "", 0, Contents(h)};
                uint8_t name[256];
                EXPECT_EQ(RGetInfo(h, &e.id, nullptr, name), MgNoError);
                e.name.assign(reinterpret_cast<char*>(name + 1), name[0]);
                RGetAttrs(h, &e.attrs);
                out.push_back(e);
            }
        }
        return out;
    }
    static Bytes Image(ResFile f) {
        Handle image = nullptr;
        EXPECT_EQ(RGetMemFileHandle(f, &image), MgNoError);
        if (!image) return {};
        Bytes b = Contents(image);
        MemDisposeHandle(image);
        return b;
    }
    // Closes a file whose map no longer matches its disk without writing anything.
    static void Drop(ResFile f) {
        ASSERT_EQ(RSetFileAttrs(f, 0), MgNoError);
        ASSERT_EQ(RCloseFile(f), MgNoError);
    }
    static Bytes RandomData(std::mt19937& rng) {
        const int32_t sizes[] = {0, 1, 3, 4, 17, 4092, 4093, 6000};
        Bytes b(static_cast<size_t>(sizes[rng() % 8]));
        for (auto& c : b) c = uint8_t(rng());
        return b;
    }
    // The run-time words of an image's map: unused, file id, and the handle word of each of
    // the `refs` references, whose lists follow the type list without gaps.
    static void ExpectRunTimeWordsZero(const Bytes& image, size_t refs) {
        const uint32_t map = Big32At(image, 16);
        EXPECT_EQ(Big32At(image, map + 32) | Big32At(image, map + 36), 0u);
        const uint32_t typeList = map + Big32At(image, map + 44);
        const uint32_t first = typeList + 4 + 12 * (Big32At(image, typeList) + 1);
        for (size_t r = 0; r < refs; ++r) EXPECT_EQ(Big32At(image, first + 20 * r + 16), 0u);
    }
};

const char* const kTypes[] = {"AAAA", "BBBB", "CCCC"};

// A letter and a number. Built by appending, as GCC 12 at -O3 warns falsely (-Wrestrict)
// about "x" + std::string.
std::string Named(char letter, uint32_t n) {
    return std::string(1, letter).append(std::to_string(n));
}

TEST_F(MemImage, AddsAloneGiveTheFileThatClosingWrites) {
    for (uint32_t seed = 1; seed <= 6; ++seed) {
        std::mt19937 rng(seed);
        ResFile a = CreateAndOpen(Named('a', seed));
        ResFile b = CreateAndOpen(Named('b', seed));
        for (int32_t i = 0; i < 12; ++i) {
            const char* type = kTypes[rng() % 3];
            const std::string name = rng() % 2 ? Named('n', rng() % 50) : "";
            const Bytes data = RandomData(rng);
            for (ResFile f : {a, b}) AddData(f, type, 40 - i * 7, data, name);
        }
        const Bytes image = Image(b);
        ASSERT_EQ(RCloseFile(a), MgNoError);
        EXPECT_EQ(image, ReadFile(Named('a', seed))) << seed;
        Drop(b);
    }
}

TEST_F(MemImage, EditedFilesReopenFromTheirImage) {
    for (uint32_t seed = 1; seed <= 12; ++seed) {
        std::mt19937 rng(seed * 7919);
        const std::string leaf = Named('f', seed);
        ResFile f = CreateAndOpen(leaf);
        for (int32_t step = 0; step < 40; ++step) {
            const char* type = kTypes[rng() % 3];
            int32_t count = 0;
            RCount(f, T(type), &count);
            Handle h = nullptr;
            const uint32_t op = rng() % 6;
            if (op < 2) {
                const std::string name = rng() % 2 ? Named('r', rng() % 9) : "";
                Handle d = MemNewHandle(0);
                const Bytes data = RandomData(rng);
                MemSetHandleBytes(&d, data.data(), int32_t(data.size()));
                const std::string p = P(name);
                if (RAdd(d, f, T(type), int32_t(rng() % 64), name.empty() ? nullptr : PS(p)))
                    MemDisposeHandle(d);
            } else if (op == 4) {
                ASSERT_EQ(RUpdateFile(f), MgNoError);
            } else if (count && RGetInd(f, T(type), 1 + int32_t(rng() % count), &h) == 0) {
                int32_t attrs = 0;
                RGetAttrs(h, &attrs);
                if (op == 2) {  // new contents of another size
                    const Bytes data = RandomData(rng);
                    MemSetHandleBytes(&h, data.data(), int32_t(data.size()));
                    ASSERT_EQ(RChanged(h), MgNoError);
                } else if (op == 3) {
                    ASSERT_EQ(RRemove(h, f), MgNoError);
                    MemDisposeHandle(h);
                } else if (!(attrs & RAttrChanged)) {  // unloaded again
                    ASSERT_EQ(RRelease(h), MgNoError);
                }
            }
        }
        Snapshot(f);  // loads everything
        const Bytes image = Image(f);
        const std::vector<Entry> before = Snapshot(f);
        WriteFile(Named('g', seed), image);
        ResFile copy = Open(Named('g', seed), FMModeRead);
        EXPECT_EQ(Snapshot(copy), before) << seed;
        if (!before.empty()) ExpectRunTimeWordsZero(image, before.size());
        ASSERT_EQ(RCloseFile(copy), MgNoError);
        Drop(f);
    }
}

TEST_F(MemImage, AnUnloadedResourceStopsTheImageAfterEarlierOffsetsMoved) {
    WriteFile(
        "u",
        BuildFile({{"DATA", {{1, "", Bytes(8, 1)}, {2, "", Bytes(4, 2)}, {3, "", Bytes(4, 3)}}}}));
    ResFile f = Open("u");
    Handle first = nullptr, second = nullptr;
    ASSERT_EQ(RGet(f, T("DATA"), 1, &first), MgNoError);
    ASSERT_EQ(RGet(f, T("DATA"), 2, &second), MgNoError);
    ASSERT_EQ(MemResizeHandle(first, 100), MgNoError);
    Handle image = reinterpret_cast<Handle>(1);
    EXPECT_EQ(RGetMemFileHandle(f, &image), MgBadArgument);
    EXPECT_EQ(image, nullptr);
    ResFileEntry* entry = nullptr;
    ASSERT_EQ(RLookupFile(f, &entry), MgNoError);
    Ptr typeList = rsrc::TypeListOf(entry->map);
    const ResRefEntry* refs = rsrc::RefsOf(typeList, rsrc::TypeAt(typeList, 0));
    EXPECT_EQ(refs[1].dataOffset, 104);  // was 12 in the file
    EXPECT_EQ(refs[2].dataOffset, 20);   // untouched
    Drop(f);
}

TEST_F(MemImage, MemoryFileHoldsResourcesItCannotFindByHandle) {
    ResFile id = -1;
    ASSERT_EQ(RCreateMemFile(&id, T("CRTR"), T("MEMF")), MgNoError);
    EXPECT_EQ(id, 0);
    // No resources: the image is the file that creating an empty one writes.
    ASSERT_EQ(RCreateCorrectFile(MakePath("empty"), 1, T("CRTR"), T("MEMF"), 0644), MgNoError);
    EXPECT_EQ(Image(id), ReadFile("empty"));
    Handle a = AddData(id, "TXT ", 5, {'h', 'i'}, "greeting");
    AddData(id, "TXT ", 2, {'a'});
    AddData(id, "BIN ", 9, Bytes(5000, 7));
    EXPECT_EQ(RGetInfo(a, nullptr, nullptr, nullptr), MgResourceNotFound);
    EXPECT_EQ(RChanged(a), MgResourceNotFound);

    WriteFile("mem.img", Image(id));
    // Nothing can take its changes: it closes only once its dirty bit is cleared. It goes
    // before the copy opens, which would take its slot over.
    EXPECT_EQ(RCloseFile(id), MgBadArgument);
    Drop(id);

    ResFile copy = Open("mem.img", FMModeRead);
    const std::vector<Entry> want = {{T("TXT "), 2, "", 0, {'a'}},
                                     {T("TXT "), 5, "greeting", 0, {'h', 'i'}},
                                     {T("BIN "), 9, "", 0, Bytes(5000, 7)}};
    EXPECT_EQ(Snapshot(copy), want);
    ResType type = 0, creator = 0;
    EXPECT_EQ(RGetFileTypeCreator(MakePath("mem.img"), &type, &creator), MgNoError);
    EXPECT_EQ(type, T("MEMF"));
    EXPECT_EQ(creator, T("CRTR"));
    ASSERT_EQ(RCloseFile(copy), MgNoError);
}

TEST_F(MemImage, ModificationDateByPathAndByFile) {
    ResFile f = CreateAndOpen("dated");
    ASSERT_EQ(RCloseFile(f), MgNoError);
    // 2020-01-01 00:00:00.7 UTC: rounds up; 1904 lies 2082844800 seconds before 1970. Some
    // runtimes set whole seconds only (the Windows one does), and then there is nothing to round.
    using namespace std::chrono;
    std::filesystem::last_write_time(
        FilePath("dated"),
        file_clock::from_sys(sys_time<milliseconds>(seconds(1577836800) + milliseconds(700))));
    const auto stored = std::filesystem::last_write_time(FilePath("dated")).time_since_epoch();
    const bool fraction = stored % seconds(1) != stored.zero();
    const uint32_t want = 1577836800u + 2082844800u + (fraction ? 1 : 0);

    uint32_t date = 0;
    int32_t readOnly = -1;
    EXPECT_EQ(RGetModDate(MakePath("dated"), 0, &date, &readOnly), MgNoError);
    EXPECT_EQ(date, want);
    EXPECT_EQ(readOnly, 0);
    using std::filesystem::perms;
    std::filesystem::permissions(FilePath("dated"),
                                 perms::owner_read | perms::group_read | perms::others_read);
    f = Open("dated", FMModeRead);
    date = 0;
    EXPECT_EQ(RGetModDate(nullptr, f, &date, &readOnly), MgNoError);  // by the open file
    EXPECT_EQ(date, want);
    EXPECT_EQ(readOnly, 1);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    struct {
        Path path;
        ResFile id;
        MgStatus want;
        uint32_t date;
    } cases[] = {{MakePath("missing"), 0, MgNotFound, 9},
                 {MakePath("dated"), 12345, MgBadResourceFile, 9},
                 {nullptr, 0, MgBadArgument, 9},
                 {FEmptyPath(nullptr), 0, MgNoError, 0}};
    for (const auto& c : cases) {
        date = 9;
        EXPECT_EQ(RGetModDate(c.path, c.id, &date, nullptr), c.want);
        // Where everything hangs off one root, the empty path is "/", a directory with a date.
        if (c.path == nullptr || !FPathHasNoNames(c.path) || FHostPathSyntax() != PathSyntaxPosix) {
            EXPECT_EQ(date, c.date);
        }
    }
    FPathRelease(cases[3].path);
    // Writable again, so that a Windows host lets the directory go.
    std::filesystem::permissions(FilePath("dated"), perms::owner_write,
                                 std::filesystem::perm_options::add);
}

}  // namespace
