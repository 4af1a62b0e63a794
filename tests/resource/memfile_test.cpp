// Memory images and dates: files in memory, the image of an open file against what the disk
// gets, and modification dates by file and by path.

#include <chrono>
#include <filesystem>
#include <random>

#include "platform/platform.h"
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
};

// Random sizes around the 4-byte pad and the 4096-byte copy steps.
Bytes RandomData(std::mt19937& rng) {
    const int32_t sizes[] = {0, 1, 3, 4, 17, 4093, 6000};
    Bytes b(static_cast<size_t>(sizes[rng() % 7]));
    for (auto& c : b) c = uint8_t(rng());
    return b;
}

// A letter and a number. Built by appending, as GCC 12 at -O3 warns falsely (-Wrestrict)
// about "x" + std::string.
std::string Named(char letter, uint32_t n) {
    return std::string(1, letter).append(std::to_string(n));
}

// Adds alone give the very file that closing writes, run-time words zero included. Changes,
// removals, releases and updates after them give an image that reopens the same.
TEST_F(MemImage, RandomEditsReopenFromTheirImage) {
    const char* const types[] = {"AAAA", "BBBB", "CCCC"};
    for (uint32_t seed = 1; seed <= 6; ++seed) {
        std::mt19937 rng(seed);
        ResFile a = CreateAndOpen(Named('a', seed)), f = CreateAndOpen(Named('f', seed));
        for (int32_t i = 0; i < 10; ++i) {
            const char* type = types[rng() % 3];
            const std::string name = rng() % 2 ? Named('n', rng() % 50) : "";
            const Bytes data = RandomData(rng);
            for (ResFile to : {a, f}) AddData(to, type, 40 - i * 7, data, name);
        }
        const Bytes added = Image(f);
        ASSERT_EQ(RCloseFile(a), MgNoError);
        EXPECT_EQ(added, ReadFile(Named('a', seed))) << seed;
        Drop(f);  // its map now describes the image
        f = Open(Named('a', seed));
        for (int32_t step = 0; step < 40; ++step) {
            const char* type = types[rng() % 3];
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
        Snapshot(f);  // loads everything; the image then clears the changed bits
        const Bytes image = Image(f);
        const std::vector<Entry> before = Snapshot(f);
        WriteFile(Named('g', seed), image);
        ResFile copy = Open(Named('g', seed), FMModeRead);
        EXPECT_EQ(Snapshot(copy), before) << seed;
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
    // Seconds since 1904 of 2020-01-01 00:00:00 UTC, an even number: fractions round to the
    // nearest second, and exact halves to the even one.
    const uint32_t even = 1577836800u + 2082844800u;
    // The same instant in 100-nanosecond units since 1601.
    const uint64_t evenFileTime = (1577836800ull + 11644473600ull) * 10000000ull;
    struct {
        uint64_t extra;  // 100-nanosecond units
        uint32_t want;
    } rounding[] = {{4000000, even}, {5000000, even}, {15000000, even + 2}, {7000000, even + 1}};
    uint32_t date = 0;
    int32_t readOnly = -1;
    for (const auto& r : rounding) {
        ASSERT_TRUE(plat::SetFileDates(FilePath("dated").c_str(), 0, evenFileTime + r.extra));
        EXPECT_EQ(RGetModDate(MakePath("dated"), 0, &date, &readOnly), MgNoError);
        EXPECT_EQ(date, r.want) << r.extra;
        EXPECT_EQ(readOnly, 0);
    }
    using std::filesystem::perms;
    std::filesystem::permissions(FilePath("dated"),
                                 perms::owner_write | perms::group_write | perms::others_write,
                                 std::filesystem::perm_options::remove);
    f = Open("dated", FMModeRead);
    date = 0;
    EXPECT_EQ(RGetModDate(nullptr, f, &date, &readOnly), MgNoError);  // by the open file
    EXPECT_EQ(date, even + 1);
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
    std::filesystem::permissions(FilePath("dated"), std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
}

}  // namespace
