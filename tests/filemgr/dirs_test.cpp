#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "platform/faults.h"
#include "support/memory_env.h"
#include "support/run_tool.h"

namespace fs = std::filesystem;

namespace {

// Seconds from 1904 to 1970.
constexpr uint32_t kUnixEpochSeconds = 2082844800u;

struct OwnedPath {
    Path p = nullptr;
    explicit OwnedPath(const std::string& text) {
        EXPECT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(text.data()),
                              static_cast<int32_t>(text.size()), &p),
                  MgNoError);
    }
    ~OwnedPath() { FPathRelease(p); }
    operator Path() const { return p; }
};

struct OwnedHandle {
    Handle h = MemNewHandle(0);
    ~OwnedHandle() { MemDisposeHandle(h); }
    operator Handle() const { return h; }
};

std::vector<std::string> Names(Handle names) {
    int32_t count = 0;
    memcpy(&count, *names, 4);
    std::vector<std::string> out;
    for (int32_t i = 0, at = 4; i < count; ++i, at += 1 + (*names)[at])
        out.emplace_back(reinterpret_cast<char*>(*names + at + 1), (*names)[at]);
    return out;
}

DirEntryRecord Record(Handle types, int32_t i) {
    DirEntryRecord r;
    memcpy(&r, *types + 8 * i, 8);
    return r;
}

std::string PathText(Path p) {
    Handle text = nullptr;
    EXPECT_EQ(FPathToLStr(p, &text), MgNoError);
    std::string s(reinterpret_cast<char*>(*text + 4), reinterpret_cast<LStr*>(*text)->count);
    MemDisposeHandle(text);
    return s;
}

// Descriptors this process holds.
std::ptrdiff_t OpenFiles() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

bool IsVolumeKind(ResType t) {
    return t == MgResType("hdsk") || t == MgResType("flpy") || t == MgResType("srvr");
}

class DirsTest : public ::testing::Test {
  protected:
    TempDir dir;
    std::string Name(const std::string& leaf) { return (dir.path / leaf).string(); }
    std::string Make(const std::string& leaf, const std::string& bytes = "x") {
        std::ofstream(dir.path / leaf, std::ios::binary) << bytes;
        return Name(leaf);
    }
    std::string MakeDir(const std::string& leaf) {
        fs::create_directories(dir.path / leaf);
        return Name(leaf);
    }
    void TearDown() override { plat::ResetFaults(); }
};

TEST_F(DirsTest, ListingOrderAndFlags) {
    Make("b.txt");
    Make("Beta");
    Make("A.dat");
    MakeDir("c");
    fs::create_symlink(dir.path / "b.txt", dir.path / "link-file");
    fs::create_symlink(dir.path / "c", dir.path / "link-dir");
    fs::create_symlink(dir.path / "gone", dir.path / "dangling");
    fs::create_symlink("/", dir.path / "to-root");
    OwnedPath p(dir.path.string());
    OwnedHandle names, types;
    ASSERT_EQ(FDirEntries(p, names, types), MgNoError);
    struct Row {
        const char* name;
        uint32_t flags;
    } expected[] = {{"A.dat", EntryIsFile},
                    {"b.txt", EntryIsFile},
                    {"Beta", EntryIsFile},
                    {"c", 0},
                    {"dangling", EntryIsFile | EntryIsShortcut | EntryUnreadable},
                    {"link-dir", EntryIsShortcut},
                    {"link-file", EntryIsFile | EntryIsShortcut},
                    {"to-root", EntryIsShortcut | EntryHasType}};
    std::vector<std::string> listed = Names(names);
    ASSERT_EQ(listed.size(), std::size(expected));
    EXPECT_EQ(MemHandleSize(types), 8 * 8);
    for (int32_t i = 0; i < 8; ++i) {
        SCOPED_TRACE(expected[i].name);
        EXPECT_EQ(listed[i], expected[i].name);
        EXPECT_EQ(Record(types, i).flags, expected[i].flags);
        if (expected[i].flags & EntryHasType) {
            EXPECT_TRUE(IsVolumeKind(Record(types, i).type));
        } else {
            EXPECT_EQ(Record(types, i).type, 0u);
        }
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
    OwnedPath relative("a/b");
    EXPECT_EQ(FDirEntries(relative, names, types), MgBadArgument);
    // "/" is a directory like any other: the empty path lists it, not the volumes.
    Path root = FEmptyPath(nullptr);
    ASSERT_EQ(FDirEntries(root, names, nullptr), MgNoError);
    std::vector<std::string> top = Names(names);
    EXPECT_NE(std::find(top.begin(), top.end(), "tmp"), top.end());
    FPathRelease(root);
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

TEST_F(DirsTest, DrivesAreTheMountedFileSystems) {
    OwnedHandle names, types;
    ASSERT_EQ(FDriveEntries(names, types), MgNoError);
    std::vector<std::string> drives = Names(names);
    EXPECT_NE(std::find(drives.begin(), drives.end(), "/"), drives.end());
    ASSERT_EQ(MemHandleSize(types), 8 * static_cast<int32_t>(drives.size()));
    for (size_t i = 0; i < drives.size(); ++i) {
        EXPECT_EQ(Record(types, i).flags, uint32_t(EntryHasType)) << drives[i];
        EXPECT_TRUE(IsVolumeKind(Record(types, i).type)) << drives[i];
    }
}

// A listing that fails midway keeps what it had and closes the directory.
TEST_F(DirsTest, ListingFailingMidway) {
    for (int i = 0; i < 10; ++i) Make("f" + std::to_string(i));
    OwnedPath p(dir.path.string());
    OwnedHandle names, types;
    auto before = OpenFiles();
    plat::FailFileOpAt(plat::kFileListNext, 5, MgIOError);
    EXPECT_EQ(FDirEntries(p, names, types), MgIOError);
    EXPECT_EQ(Names(names).size(), 4u);
    EXPECT_GE(MemHandleSize(types), 4 * 8);
    EXPECT_EQ(OpenFiles(), before);
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
    chmod(file.c_str(), 0444);
    struct timespec times[2] = {{0, UTIME_OMIT}, {1000000000, 0}};
    utimensat(AT_FDCWD, file.c_str(), times, 0);
    std::string sub = MakeDir("sub");
    for (const char* leaf : {"sub/1", "sub/2", "sub/3"}) Make(leaf);
    chmod(sub.c_str(), 0750);
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
        EXPECT_EQ(info.permissions, r.permissions);
        EXPECT_EQ(info.type, MgResType("????"));
        EXPECT_EQ(info.creator, MgResType("????"));
        EXPECT_EQ(info.hiddenFlag, 0);
        EXPECT_EQ(info.owner[0], 0);
        EXPECT_NE(info.created, 0u);
        if (!r.isDirectory) {
            EXPECT_EQ(info.modified, 1000000000u + kUnixEpochSeconds);
        }
    }
    OwnedPath missing(Name("missing"));
    FileInfo info;
    EXPECT_EQ(FFileInfoOf(missing, &info), MgNotFound);
    Path root = FEmptyPath(nullptr);
    ASSERT_EQ(FFileInfoOf(root, &info), MgNoError);  // "/" itself, dates and all
    EXPECT_EQ(info.isDirectory, 1);
    EXPECT_GT(info.modified, 0u);
    FPathRelease(root);
}

// Sizes beyond 31 bits keep the signed field's reading; beyond 32 they read 0x7FFFFFFF.
TEST_F(DirsTest, FileInfoSizeOfSparseFiles) {
    struct Row {
        off_t size;
        int32_t reported;
    } rows[] = {{off_t(5) << 30, 0x7FFFFFFF}, {off_t(3) << 30, int32_t(0xC0000000u)}};
    for (const Row& r : rows) {
        std::string name = Make("sparse");
        ASSERT_EQ(truncate(name.c_str(), r.size), 0);
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
    struct stat st;
    ASSERT_EQ(stat(file.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0400u);
    EXPECT_EQ(uint32_t(st.st_mtime) + kUnixEpochSeconds, 3000000000u);

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
}

TEST_F(DirsTest, ExistenceAndPermissions) {
    std::string file = Make("f");
    std::string sub = MakeDir("d");
    OwnedPath pf(file), pd(sub), missingFile(Name("no")), relative("rel"), root("/"), bad("/");
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
    EXPECT_EQ(got, 0640);
    EXPECT_EQ(owner[0], 0);
    EXPECT_EQ(FPermissionsOf(p, owner, nullptr, &got), MgBadArgument);
    EXPECT_EQ(FApplyPermissions(p, nullptr, nullptr, nullptr), MgNoError);
    OwnedPath missing(Name("missing"));
    EXPECT_EQ(FApplyPermissions(missing, nullptr, nullptr, &bits), MgNotFound);
    EXPECT_EQ(FPermissionsOf(missing, owner, group, &got), MgNotFound);
}

TEST_F(DirsTest, RenameAndCopyNeverReplace) {
    auto before = OpenFiles();
    std::string a = Make("a", "alpha"), b = Make("b", "beta");
    chmod(a.c_str(), 0604);
    OwnedPath pa(a), pb(b), pc(Name("c")), pd(Name("d")), root("/");
    EXPECT_EQ(FCopyFile(pa, pb), MgDuplicate);
    EXPECT_EQ(FRenameFile(pa, pb), MgDuplicate);
    EXPECT_EQ(SlurpFile(b), "beta");
    ASSERT_EQ(FCopyFile(pa, pc), MgNoError);
    EXPECT_EQ(SlurpFile(Name("c")), "alpha");
    struct stat sa, sc;
    stat(a.c_str(), &sa);
    stat(Name("c").c_str(), &sc);
    EXPECT_EQ(sc.st_mode & 0777, 0604u);
    EXPECT_EQ(sc.st_mtime, sa.st_mtime);
    ASSERT_EQ(FRenameFile(pc, pd), MgNoError);
    EXPECT_FALSE(fs::exists(Name("c")));
    EXPECT_EQ(FRenameFile(pc, pd), MgNotFound);
    EXPECT_EQ(FRenameFile(root, pd), MgBadArgument);
    EXPECT_EQ(FCopyFile(root, pd), MgBadArgument);
    OwnedPath sub(MakeDir("sub"));
    EXPECT_EQ(FCopyFile(sub, pc), MgNoPermission);
    EXPECT_FALSE(fs::exists(Name("c")));
    EXPECT_EQ(OpenFiles(), before);
}

TEST_F(DirsTest, DeleteAndMakeDirectories) {
    OwnedPath file(Make("f")), full(MakeDir("full")), empty(MakeDir("empty"));
    Make("full/x");
    EXPECT_EQ(FDeleteEntry(file), MgNoError);
    EXPECT_EQ(FDeleteEntry(file), MgNotFound);
    EXPECT_EQ(FDeleteEntry(empty), MgNoError);
    EXPECT_EQ(FDeleteEntry(full), MgIOError);  // not empty
    EXPECT_TRUE(fs::exists(Name("full/x")));

    // Names the Windows grammar refuses are ordinary names here.
    for (const char* leaf : {"aux", "x.", "a:b", "com1", "q?"}) {
        OwnedPath p(Name(leaf));
        EXPECT_EQ(FMakeDirectory(p, 0), MgNoError) << leaf;
        EXPECT_TRUE(fs::is_directory(Name(leaf))) << leaf;
    }
    OwnedPath again(Name("aux"));
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

// The volume of a path is the mount point of its file system.
TEST_F(DirsTest, Volumes) {
    std::string file = Make("f");
    struct stat st;
    stat(dir.path.c_str(), &st);
    fs::path mount = dir.path;
    for (struct stat up; mount != mount.root_path() &&
                         stat(mount.parent_path().c_str(), &up) == 0 && up.st_dev == st.st_dev;)
        mount = mount.parent_path();
    Path volume = nullptr;
    OwnedPath p(file);
    ASSERT_EQ(FVolumeOf(p, &volume), MgNoError);
    EXPECT_EQ(PathText(volume), mount.string());
    FPathRelease(volume);

    double freeBytes = -1, totalBytes = -1;
    ASSERT_EQ(FVolumeBytes(p, &freeBytes, &totalBytes), MgNoError);
    struct statvfs v;
    statvfs(mount.c_str(), &v);
    EXPECT_EQ(totalBytes, double(v.f_blocks) * v.f_frsize);
    EXPECT_EQ(FVolumeBytes(p, nullptr, nullptr), MgNoError);

    uint32_t figures[3] = {};
    ASSERT_EQ(FVolumeSpace(p, figures), MgNoError);
    EXPECT_EQ(PathText(p), mount.string());  // cut to its volume
    uint64_t total = uint64_t(v.f_blocks) * v.f_frsize;
    EXPECT_EQ(figures[0], total > 0xFFFFFFFFu ? 0xFFFFFFFFu : uint32_t(total));
    EXPECT_LE(figures[2], figures[0]);
    OwnedPath relative("a");
    EXPECT_EQ(FVolumeSpace(relative, figures), MgBadArgument);
}

TEST_F(DirsTest, WellKnownPlaces) {
    MakeDir("real");
    fs::create_symlink(dir.path / "real", dir.path / "link");
    OwnedPath viaLink(Name("link/leaf"));
    Path resolved = FResolvedPath(nullptr, viaLink);
    ASSERT_NE(resolved, nullptr);
    EXPECT_EQ(PathText(resolved), fs::canonical(dir.path).string() + "/real/leaf");
    FPathRelease(resolved);

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

    std::string savedTmp = getenv("TMPDIR") ? getenv("TMPDIR") : "";
    setenv("TMPDIR", dir.path.c_str(), 1);
    Path temp = FEmptyPath(nullptr);
    EXPECT_EQ(FTempDirectory(temp), MgNoError);
    EXPECT_EQ(PathText(temp), dir.path.string());
    setenv("TMPDIR", Name("absent").c_str(), 1);
    EXPECT_EQ(FTempDirectory(temp), MgNoError);  // falls back to the program's directory
    EXPECT_EQ(PathText(temp), fs::read_symlink("/proc/self/exe").parent_path().string());
    savedTmp.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", savedTmp.c_str(), 1);

    // The host has no preferred directory: the fallback stands when it is a directory.
    Path preferred = nullptr;
    EXPECT_EQ(FPreferredDirectory("any", &preferred, exact), MgNoError);
    EXPECT_TRUE(FPathSame(preferred, exact));
    EXPECT_EQ(FPreferredDirectory("any", &preferred, missing), MgNotFound);
    EXPECT_EQ(preferred, nullptr);
    EXPECT_EQ(FPreferredDirectory("any", &preferred, nullptr), 20);
    FPathRelease(temp);
}

// Range locks hold against another process, which opens the file for itself.
TEST_F(DirsTest, RangeLocksBetweenProcesses) {
    OwnedPath p(Make("locked", std::string(100, 'x')));
    FileRef ref = 0;
    ASSERT_EQ(FMOpen(&ref, p, FMModeReadWrite, FMShareAll), MgNoError);
    EXPECT_EQ(FMLockRange(ref, FMSeekStart, 10, 20, 1), MgNoError);
    EXPECT_EQ(FMLockRange(ref, FMSeekEnd, -10, 5, 1), MgNoError);  // 90..94
    EXPECT_EQ(FMLockRange(ref, 0, 0, 1, 1), MgBadArgument);
    EXPECT_EQ(FMLockRange(0, FMSeekStart, 0, 1, 1), MgBadArgument);
    auto inChild = [&](int32_t offset, int32_t count) {
        pid_t pid = fork();
        if (pid == 0) {
            FileRef other = 0;
            if (FMOpen(&other, p, FMModeReadWrite, FMShareAll) != MgNoError) _exit(99);
            _exit(FMLockRange(other, FMSeekStart, offset, count, 1));
        }
        int status = 0;
        waitpid(pid, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    };
    EXPECT_EQ(inChild(25, 10), MgNoPermission);
    EXPECT_EQ(inChild(92, 1), MgNoPermission);
    EXPECT_EQ(inChild(30, 60), MgNoError);
    EXPECT_EQ(FMLockRange(ref, FMSeekStart, 10, 20, 0), MgNoError);
    EXPECT_EQ(inChild(25, 10), MgNoError);
    FMClose(ref);
}

// Records move with their names; names equal but for case keep their listed order, also
// past the first sixteen bytes.
TEST(DirSort, ByNameWithoutCase) {
    const char* listed[] = {"Common-prefix-long-Zeta",
                            "common-prefix-long-alpha",
                            "COMMON-PREFIX-LONG-ALPHA",
                            "b",
                            "B",
                            "a",
                            "abcdefghij-2",
                            "abcdefghij-1"};
    Handle names = FNewNameList(MemNewHandle(40)), types = MemNewHandle(8 * 8);
    ASSERT_EQ(MemHandleSize(names), 4);
    ASSERT_EQ(Names(names).size(), 0u);
    for (uint32_t i = 0; i < 8; ++i) {
        uint8_t n = uint8_t(strlen(listed[i]));
        MemAppendBytes(&n, names, 1);
        MemAppendBytes(listed[i], names, n);
        DirEntryRecord r = {i, 0};
        memcpy(*types + 8 * i, &r, 8);
    }
    int32_t count = 8;
    memcpy(*names, &count, 4);
    FSortDirEntries(names, types);
    const uint32_t order[] = {5, 7, 6, 3, 4, 1, 2, 0};
    std::vector<std::string> sorted = Names(names);
    for (int32_t i = 0; i < 8; ++i) {
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
    EXPECT_EQ(FUnavailableLookup(), MgNotFound);
    EXPECT_EQ(FUnsupportedCall(), MgNotSupported);
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
