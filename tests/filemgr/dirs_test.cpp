// Listings, entry information, permissions, making and removing, places and range locks: what
// every host does alike. Each host's own decisions are in posix/ and win32/.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "filemgr/dirs_env.h"
#include "mg/filetypes.h"
#include "mg/resource.h"
#include "platform/childprocess.h"
#include "platform/platform.h"
#include "support/host_rules.h"
#include "support/memory_env.h"
#include "support/run_tool.h"
#include "support/scoped_variable.h"

namespace fs = std::filesystem;

namespace {

// 100-nanosecond units since 1601 of a time in seconds since 1970.
uint64_t FileTimeOfUnix(int64_t seconds) {
    return uint64_t(seconds + 11644473600) * 10000000u;
}

// Seconds since 1970 of a file's modification time.
int64_t UnixModTime(const std::string& name) {
    const auto t = std::chrono::file_clock::to_sys(fs::last_write_time(name));
    return std::chrono::duration_cast<std::chrono::seconds>(t.time_since_epoch()).count();
}

int32_t PermissionsOf(const std::string& name) {
    return int32_t(fs::status(name).permissions() & fs::perms::mask) & 0777;
}

void SetPermissions(const std::string& name, int32_t bits) {
    fs::permissions(name, fs::perms(bits), fs::perm_options::replace);
}

TEST_F(DirsTest, ListingOrderAndFlags) {
    Make("b.txt");
    Make("Beta");
    Make("A.dat");
    MakeDir("c");
    OwnedPath p(dir.path.string());
    OwnedHandle names, types;
    ASSERT_EQ(FDirEntries(p, names, types), MgNoError);
    struct Row {
        const char* name;
        uint32_t flags;
    } expected[] = {
        {"A.dat", EntryIsFile}, {"b.txt", EntryIsFile}, {"Beta", EntryIsFile}, {"c", 0}};
    std::vector<std::string> listed = Names(names);
    ASSERT_EQ(listed.size(), std::size(expected));
    EXPECT_EQ(MemHandleSize(types), 4 * 8);
    for (int32_t i = 0; i < 4; ++i) {
        SCOPED_TRACE(expected[i].name);
        EXPECT_EQ(listed[i], expected[i].name);
        EXPECT_EQ(Record(types, i).flags, expected[i].flags);
        EXPECT_EQ(Record(types, i).type, 0u);
    }
    // The same names without types, and the list's handle sized exactly.
    OwnedHandle plain;
    ASSERT_EQ(FDirEntries(p, plain, nullptr), MgNoError);
    EXPECT_EQ(Names(plain), listed);
    EXPECT_EQ(MemHandleSize(plain), MemHandleSize(names));
}

TEST_F(DirsTest, ListingEdges) {
    OwnedHandle names, types;
    OwnedPath empty(MakeDir("empty"));
    ASSERT_EQ(FDirEntries(empty, names, types), MgNoError);
    EXPECT_EQ(MemHandleSize(names), 4);
    EXPECT_EQ(Names(names).size(), 0u);
    EXPECT_EQ(MemHandleSize(types), 0);
    OwnedPath missing(Name("missing"));
    EXPECT_EQ(FDirEntries(missing, names, types), MgNotFound);
    OwnedPath relative(std::string("a") + plat::DirectorySeparator() + "b");
    EXPECT_EQ(FDirEntries(relative, names, types), MgBadArgument);
}

TEST_F(DirsTest, ListingReadsResourceHeadersOnlyWhenAsked) {
    std::string rsrc = Name("pack.msb");
    OwnedPath p(rsrc);
    ASSERT_EQ(RCreateCorrectFile(p, 1, MgResType("MXDX"), MgResType("MXSB"), 0644), MgNoError);
    OwnedPath d(dir.path.string());
    OwnedHandle names, types;
    ASSERT_EQ(FDirEntriesWith(d, names, types, FDirReadResourceHeaders), MgNoError);
    EXPECT_EQ(Record(types, 0).flags, uint32_t(EntryIsFile | EntryHasType));
    EXPECT_EQ(Record(types, 0).type, MgResType("MXSB"));
    ASSERT_EQ(FDirEntriesWith(d, names, types, 0), MgNoError);
    EXPECT_EQ(Record(types, 0).flags, uint32_t(EntryIsFile));
}

// A listing that fails midway keeps what it had and closes the directory.
TEST_F(DirsTest, ListingFailingMidway) {
    for (int i = 0; i < 10; ++i) Make("f" + std::to_string(i));
    OwnedPath p(dir.path.string());
    OwnedHandle names, types;
    auto before = plat::OpenHandleCount();
    plat::FailFileOpAt(plat::kFileListNext, 5, MgIOError);
    EXPECT_EQ(FDirEntries(p, names, types), MgIOError);
    EXPECT_EQ(Names(names).size(), 4u - ListedDotEntries());
    EXPECT_GE(MemHandleSize(types), 4 * 8);
    EXPECT_EQ(plat::OpenHandleCount(), before);
}

// Every allocation of a listing of 1000 entries fails in turn: each run gives the listing or
// 2, and leaves no block behind.
TEST_F(DirsTest, ListingOutOfMemoryAtEveryAllocation) {
    for (int i = 0; i < 1000; ++i) Make("entry" + std::to_string(i));
    OwnedPath p(dir.path.string());
    for (bool withTypes : {true, false}) {
        bool done = false;
        for (int64_t n = 1; !done; ++n) {
            OwnedHandle names, types;
            int64_t before = plat::LiveBlockCount();
            plat::FailAllocationAt(n);
            MgStatus status = FDirEntries(p, names, withTypes ? types.h : nullptr);
            done = status == MgNoError && plat::AllocationCount() < n;
            plat::FailAllocationAt(0);
            ASSERT_TRUE(status == MgNoError || status == MgNoMemory) << n;
            if (status == MgNoError) {
                EXPECT_EQ(Names(names).size(), 1000u);
            }
            EXPECT_EQ(plat::LiveBlockCount(), before) << "allocation " << n;
        }
    }
}

TEST_F(DirsTest, FileInfo) {
    std::string file = Make("plain.bin", "12345");
    SetPermissions(file, 0444);
    ASSERT_TRUE(plat::SetFileDates(file.c_str(), 0, FileTimeOfUnix(1000000000)));
    std::string sub = MakeDir("sub");
    for (const char* leaf : {"sub/1", "sub/2", "sub/3"}) Make(leaf);
    SetPermissions(sub, 0750);
    struct Row {
        std::string name;
        int32_t size, isDirectory, permissions;
    } rows[] = {{file, 5, 0, 0444}, {sub, 3, 1, 0750}};
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        OwnedPath p(r.name);
        FileInfo info;
        memset(&info, 0xAB, sizeof info);
        ASSERT_EQ(FFileInfoOf(p, &info), MgNoError);
        EXPECT_EQ(info.size, r.size);
        EXPECT_EQ(info.isDirectory, r.isDirectory);
        EXPECT_EQ(info.permissions, HostPermissions(r.permissions, r.isDirectory));
        EXPECT_EQ(info.type, MgResType("????"));
        EXPECT_EQ(info.creator, MgResType("????"));
        EXPECT_EQ(info.hiddenFlag, int32_t(0xABABABAB));  // cleared for the empty path alone
        EXPECT_EQ(info.spareWord2, 0xABAB);
        EXPECT_EQ(info.owner[0], 0);
        EXPECT_NE(info.created, 0u);
        if (!r.isDirectory) {
            EXPECT_EQ(info.modified, 1000000000u + kUnixEpochSeconds);
        }
    }
    SetPermissions(file, 0644);  // so that a Windows host lets the directory go
    OwnedPath missing(Name("missing"));
    FileInfo info;
    EXPECT_EQ(FFileInfoOf(missing, &info), MgNotFound);
}

// A shortcut's information is its target's, type included.
std::string gShortcut, gShortcutTarget;
bool ResolveOne(char* name) {
    if (name != gShortcut) return false;
    strcpy(name, gShortcutTarget.c_str());
    return true;
}

TEST_F(DirsTest, FileInfoThroughShortcut) {
    OwnedHandle table;
    ASSERT_EQ(MemResizeHandle(table, 12), MgNoError);
    const uint8_t record[12] = {1, 0, 0, 0, 'M', 'X', 'S', 'B', 'm', 's', 'b', 0};
    memcpy(*table.h, record, 12);
    FSetTypeTables(table, nullptr);
    gShortcut = Name("doc.lnk");
    gShortcutTarget = Make("real.msb", "123");
    plat::SetShortcutResolverForTest(ResolveOne);
    OwnedPath p(gShortcut);
    FileInfo info;
    EXPECT_EQ(FFileInfoOf(p, &info), MgNoError);
    FSetTypeTables(nullptr, nullptr);
    EXPECT_EQ(info.type, MgResType("MXSB"));
    EXPECT_EQ(info.creator, MgResType("MXDX"));
    EXPECT_EQ(info.size, 3);
}

// Sizes beyond 31 bits keep the signed field's reading; beyond 32 they read 0x7FFFFFFF.
TEST_F(DirsTest, FileInfoSizeOfSparseFiles) {
    struct Row {
        uintmax_t size;
        int32_t reported;
    } rows[] = {{uintmax_t(5) << 30, 0x7FFFFFFF}, {uintmax_t(3) << 30, int32_t(0xC0000000u)}};
    for (const Row& r : rows) {
        std::string name = Make("sparse");
        fs::resize_file(name, r.size);
        OwnedPath p(name);
        FileInfo info;
        ASSERT_EQ(FFileInfoOf(p, &info), MgNoError);
        EXPECT_EQ(info.size, r.reported);
    }
}

TEST_F(DirsTest, ApplyFileInfoAndModDate) {
    std::string file = Make("f");
    OwnedPath p(file);
    FileInfo info;
    ASSERT_EQ(FFileInfoOf(p, &info), MgNoError);
    info.permissions = 0400;
    info.modified = 3000000000u;
    ASSERT_EQ(FApplyFileInfo(p, &info), MgNoError);
    EXPECT_EQ(PermissionsOf(file), HostPermissions(0400, false));
    EXPECT_EQ(UnixModTime(file) + kUnixEpochSeconds, 3000000000u);
    uint32_t date = 0;
    int32_t readOnly = -1;
    ASSERT_EQ(FMFileModDate(p, 0, &date, &readOnly), MgNoError);
    EXPECT_EQ(date, 3000000000u);
    EXPECT_EQ(readOnly, 1);
    FileRef ref = 0;
    ASSERT_EQ(FMOpen(&ref, p, FMModeRead, FMShareAll), MgNoError);
    OwnedPath relative("x");
    date = 0;
    EXPECT_EQ(FMFileModDate(relative, ref, &date, nullptr), MgNoError);  // by the open file
    EXPECT_EQ(date, 3000000000u);
    FMClose(ref);
    EXPECT_EQ(FMFileModDate(relative, 0, &date, nullptr), MgBadArgument);
    EXPECT_EQ(FMFileModDate(p, 0, nullptr, &readOnly), MgBadArgument);
    SetPermissions(file, 0644);
}

TEST_F(DirsTest, ExistenceAndPermissions) {
    std::string file = Make("f");
    std::string sub = MakeDir("d");
    const std::string rootName = dir.path.root_path().make_preferred().string();
    OwnedPath pf(file), pd(sub), missingFile(Name("no")), relative("rel"), root(rootName),
        bad(rootName);
    FAppendName(bad, reinterpret_cast<ConstPStr>("\003a/b"));  // no host name has a '/'
    struct Row {
        Path path;
        int32_t existsAs;
        MgStatus isDirectory;
    } rows[] = {{pf, 1, MgBadArgument},    {pd, 2, MgNoError},   {missingFile, 0, MgNotFound},
                {relative, 0, MgNotFound}, {root, 2, MgNoError}, {bad, 0, MgNotFound}};
    for (const Row& r : rows) {
        EXPECT_EQ(FPathExistsAs(r.path), r.existsAs);
        EXPECT_EQ(FIsDirectory(r.path), r.isDirectory);
    }

    OwnedPath p(file);
    int32_t bits = 0640;
    ASSERT_EQ(FApplyPermissions(p, nullptr, nullptr, &bits), MgNoError);
    uint8_t owner[256] = {9}, group[256] = {9};
    int32_t got = 0;
    ASSERT_EQ(FPermissionsOf(p, owner, group, &got), MgNoError);
    EXPECT_EQ(got, HostPermissions(0640, false));
    EXPECT_EQ(owner[0], 0);
    EXPECT_EQ(FPermissionsOf(p, owner, nullptr, &got), MgBadArgument);
    EXPECT_EQ(FPermissionsOf(relative, owner, group, &got), MgBadArgument);
    EXPECT_EQ(FApplyPermissions(p, nullptr, nullptr, nullptr), MgNoError);
    OwnedPath missing(Name("missing"));
    EXPECT_EQ(FApplyPermissions(missing, nullptr, nullptr, &bits), MgNotFound);
    EXPECT_EQ(FPermissionsOf(missing, owner, group, &got), MgNotFound);
}

TEST_F(DirsTest, RenameAndCopyNeverReplace) {
    auto before = plat::OpenHandleCount();
    std::string a = Make("a", "alpha"), b = Make("b", "beta");
    SetPermissions(a, 0604);
    OwnedPath pa(a), pb(b), pc(Name("c")), pd(Name("d")),
        root(dir.path.root_path().make_preferred().string());
    EXPECT_EQ(FCopyFile(pa, pb), MgDuplicate);
    EXPECT_EQ(FRenameFile(pa, pb), MgDuplicate);
    EXPECT_EQ(SlurpFile(b), "beta");
    ASSERT_EQ(FCopyFile(pa, pc), MgNoError);
    EXPECT_EQ(SlurpFile(Name("c")), "alpha");
    EXPECT_EQ(PermissionsOf(Name("c")), HostPermissions(0604, false));
    EXPECT_EQ(UnixModTime(Name("c")), UnixModTime(a));
    ASSERT_EQ(FRenameFile(pc, pd), MgNoError);
    EXPECT_FALSE(fs::exists(Name("c")));
    EXPECT_EQ(FRenameFile(pc, pd), MgNotFound);
    EXPECT_EQ(FRenameFile(root, pd), MgBadArgument);
    EXPECT_EQ(FCopyFile(root, pd), MgBadArgument);
    OwnedPath relative("rel");
    EXPECT_EQ(FCopyFile(pa, relative), MgBadArgument);
    EXPECT_EQ(FRenameFile(pa, relative), MgBadArgument);
    OwnedPath sub(MakeDir("sub"));
    EXPECT_EQ(FCopyFile(sub, pc), MgNoPermission);
    EXPECT_FALSE(fs::exists(Name("c")));
    EXPECT_EQ(plat::OpenHandleCount(), before);
}

TEST_F(DirsTest, DeleteAndMakeDirectories) {
    OwnedPath file(Make("f")), full(MakeDir("full")), empty(MakeDir("empty"));
    Make("full/x");
    EXPECT_EQ(FDeleteEntry(file), MgNoError);
    EXPECT_EQ(FDeleteEntry(file), MgNotFound);
    EXPECT_EQ(FDeleteEntry(empty), MgNoError);
    EXPECT_EQ(FDeleteEntry(full), MgIOError);  // not empty
    EXPECT_TRUE(fs::exists(Name("full/x")));

    OwnedPath made(Name("made")), again(Name("made"));
    EXPECT_EQ(FMakeDirectory(made, 0), MgNoError);
    EXPECT_TRUE(fs::is_directory(Name("made")));
    EXPECT_EQ(FMakeDirectory(again, 0), MgDuplicate);

    OwnedPath chain(Name("full/b/c/d"));
    ASSERT_EQ(FMakeDirectoryChain(chain), MgNoError);
    EXPECT_TRUE(fs::is_directory(Name("full/b/c/d")));
    EXPECT_EQ(FMakeDirectoryChain(chain), MgNoError);
    for (const char* over : {"full/x", "full/x/y", "full/x/y/z"}) {
        OwnedPath p(Name(over));
        EXPECT_EQ(FMakeDirectoryChain(p), MgNotADirectory) << over;
    }
}

TEST_F(DirsTest, WellKnownPlaces) {
    MakeDir("real");
    OwnedPath exact(Name("real"));
    std::string before = PathText(exact);
    EXPECT_EQ(FExactCasePath(exact), MgNoError);
    EXPECT_EQ(PathText(exact), before);
    OwnedPath missing(Name("nothing/here"));
    EXPECT_EQ(FExactCasePath(missing), MgNotFound);

    Path cwd = nullptr;
    ASSERT_EQ(FCurrentDirectory(&cwd), MgNoError);
    EXPECT_EQ(PathText(cwd), fs::current_path().string());
    FPathRelease(cwd);

    ScopedVariable tmp(TempVariable(), dir.path.string());
    Path temp = FEmptyPath(nullptr);
    EXPECT_EQ(FTempDirectory(temp), MgNoError);
    EXPECT_EQ(PathText(temp), dir.path.string());
    tmp.Set(Name("absent"));
    EXPECT_EQ(FTempDirectory(temp), MgNoError);  // falls back to the program's directory
    EXPECT_EQ(PathText(temp), ThisProgram().parent_path().string());

    // The host has no preferred directory: the fallback stands when it is a directory.
    Path preferred = nullptr;
    EXPECT_EQ(FPreferredDirectory("any", &preferred, exact), MgNoError);
    EXPECT_TRUE(FPathSame(preferred, exact));
    EXPECT_EQ(FPreferredDirectory("any", &preferred, missing), MgNotFound);
    EXPECT_EQ(preferred, nullptr);
    EXPECT_EQ(FPreferredDirectory("any", &preferred, nullptr), 20);
    FPathRelease(temp);
}

// The child's side of the test below: opens the file that MXSB_LOCK_CHILD names
// ("<file>|<offset>|<count>"), locks the range and ends with the status.
constexpr const char* kLockChild = "MXSB_LOCK_CHILD";

TEST(DirsChild, DISABLED_Lock) {
    const char* orders = std::getenv(kLockChild);
    if (orders == nullptr) GTEST_SKIP() << "the child's side, started by its parent";
    const std::string order = orders;
    const size_t bar1 = order.find('|'), bar2 = order.find('|', bar1 + 1);
    OwnedPath p(order.substr(0, bar1));
    FileRef other = 0;
    if (FMOpen(&other, p, FMModeReadWrite, FMShareAll) != MgNoError) std::_Exit(99);
    std::_Exit(FMLockRange(other, FMSeekStart, std::stoi(order.substr(bar1 + 1, bar2 - bar1 - 1)),
                           std::stoi(order.substr(bar2 + 1)), 1));
}

// Range locks hold against another process, which opens the file for itself.
TEST_F(DirsTest, RangeLocksBetweenProcesses) {
    const std::string name = Make("locked", std::string(100, 'x'));
    OwnedPath p(name);
    FileRef ref = 0;
    ASSERT_EQ(FMOpen(&ref, p, FMModeReadWrite, FMShareAll), MgNoError);
    EXPECT_EQ(FMLockRange(ref, FMSeekStart, 10, 20, 1), MgNoError);
    EXPECT_EQ(FMLockRange(ref, FMSeekEnd, -10, 5, 1), MgNoError);  // 90..94
    EXPECT_EQ(FMLockRange(ref, 0, 0, 1, 1), MgBadArgument);
    EXPECT_EQ(FMLockRange(0, FMSeekStart, 0, 1, 1), MgBadArgument);
    auto inChild = [&](int32_t offset, int32_t count) {
        const std::string order = name + "|" + std::to_string(offset) + "|" + std::to_string(count);
        const int64_t child = StartTestChild("DirsChild.DISABLED_Lock", kLockChild + ("=" + order));
        return child ? plat::WaitChild(child, 20000) : -1;
    };
    EXPECT_EQ(inChild(25, 10), MgNoPermission);
    EXPECT_EQ(inChild(92, 1), MgNoPermission);
    EXPECT_EQ(inChild(30, 60), MgNoError);
    EXPECT_EQ(FMLockRange(ref, FMSeekStart, 10, 20, 0), MgNoError);
    EXPECT_EQ(inChild(25, 10), MgNoError);
    FMClose(ref);
}

// Records move with their names; names equal but for case keep their listed order, also
// past the first sixteen bytes, where a name that another one starts comes first.
TEST(DirSort, ByNameWithoutCase) {
    const char* listed[] = {"common-prefix-long-alphabet",
                            "Common-prefix-long-Zeta",
                            "common-prefix-long-alpha",
                            "COMMON-PREFIX-LONG-ALPHA",
                            "b",
                            "B",
                            "a",
                            "abcdefghij-2",
                            "abcdefghij-1"};
    const int32_t n = int32_t(std::size(listed));
    Handle names = FNewNameList(MemNewHandle(40)), types = MemNewHandle(8 * n);
    ASSERT_EQ(MemHandleSize(names), 4);
    ASSERT_EQ(Names(names).size(), 0u);
    for (int32_t i = 0; i < n; ++i) {
        uint8_t length = uint8_t(strlen(listed[i]));
        MemAppendBytes(&length, names, 1);
        MemAppendBytes(listed[i], names, length);
        DirEntryRecord r = {uint32_t(i), 0};
        memcpy(*types + 8 * i, &r, 8);
    }
    int32_t count = n;
    memcpy(*names, &count, 4);
    FSortDirEntries(names, types);
    const uint32_t order[] = {6, 8, 7, 4, 5, 2, 3, 0, 1};
    std::vector<std::string> sorted = Names(names);
    for (int32_t i = 0; i < n; ++i) {
        EXPECT_EQ(sorted[i], listed[order[i]]);
        EXPECT_EQ(Record(types, i).flags, order[i]);
    }
    // A count that the bytes don't back leaves the list alone.
    count = 60;
    memcpy(*names, &count, 4);
    std::vector<uint8_t> before(*names, *names + MemHandleSize(names));
    FSortDirEntries(names, nullptr);
    EXPECT_EQ(std::vector<uint8_t>(*names, *names + MemHandleSize(names)), before);
    MemDisposeHandle(names);
    MemDisposeHandle(types);
}

TEST(DirPatterns, NameFitsPattern) {
    struct Row {
        const char *pattern, *name;
        int32_t fits;
    } rows[] = {{"a", "a.txt", 1},     {"*.*", "readme", 1}, {"*.txt", "A.TXT", 1},
                {"*.txt", "a.dat", 0}, {"a?c", "abc", 1},    {"a?c", "abd", 0},
                {"*.", "readme", 1},   {"b", "a.txt", 0}};
    for (const Row& r : rows) {
        EXPECT_EQ(FNameFitsPattern(reinterpret_cast<const uint8_t*>(r.pattern),
                                   reinterpret_cast<const uint8_t*>(r.name),
                                   int32_t(strlen(r.pattern)), int32_t(strlen(r.name))),
                  r.fits)
            << r.pattern << " " << r.name;
    }
    std::string longName(1000, 'a');  // longer than a name can be: cut, never overrun
    EXPECT_EQ(FNameFitsPattern(reinterpret_cast<const uint8_t*>("*"),
                               reinterpret_cast<const uint8_t*>(longName.data()), 1, 1000),
              1);
    int32_t offset = 0;
    EXPECT_EQ(FPatternHasWildcards(reinterpret_cast<const uint8_t*>("ab*c"), &offset, 4), 1);
    EXPECT_EQ(offset, 2);
}

TEST(FileTimes, SecondsSince1904) {
    struct Row {
        uint64_t fileTime;
        uint32_t seconds;
    } rows[] = {{95616288000000000ULL, 0},
                {95616288000000000ULL + 10000000ULL, 1},
                {95616288000000000ULL + 15000000ULL, 2},  // halves to the even second
                {95616288000000000ULL + 25000000ULL, 2},
                {95616288000000000ULL + 25000001ULL, 3},
                {0, 0},
                {116444736000000000ULL, kUnixEpochSeconds},
                {~0ULL, 0xFFFFFFFFu}};
    for (const Row& r : rows) EXPECT_EQ(FFileTimeToSeconds(r.fileTime), r.seconds);
    EXPECT_EQ(FSecondsToFileTime(kUnixEpochSeconds), 116444736000000000ULL);
}

}  // namespace
