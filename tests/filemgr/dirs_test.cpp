// Listings, entry information, permissions, making and removing, places and range locks: what
// every host does alike. Each host's own decisions are in posix/ and win32/.

#include "filemgr/dirs_env.h"
#include "mg/resource.h"
#include "support/scoped_variable.h"

// Seconds since 1970 of a file's modification time.
static int64_t UnixModTime(const std::string& name) {
    const auto t = std::chrono::file_clock::to_sys(fs::last_write_time(name));
    return std::chrono::duration_cast<std::chrono::seconds>(t.time_since_epoch()).count();
}

static int32_t PermissionsOf(const std::string& name) {
    return int32_t(fs::status(name).permissions() & fs::perms::mask) & 0777;
}

// Names sort without case, equal ones in listed order; a resource file's type is read only
// when asked; the names alone fill a handle of the same size.
TEST_F(DirsTest, Listings) {
    for (const char* leaf : {"b.txt", "Beta", "A.dat"}) Make(leaf);
    MakeDir("c");
    OwnedPath p(dir.path.string()), pack(Name("pack.msb")), empty(Name("c")),
        missing(Name("missing")), relative(std::string("a") + plat::DirectorySeparator() + "b");
    ASSERT_EQ(RCreateCorrectFile(pack, 1, MgResType("MXDX"), MgResType("MXSB"), 0644), MgNoError);
    OwnedHandle names, types, plain;
    Entries want = {{"A.dat", EntryIsFile, 0},
                    {"b.txt", EntryIsFile, 0},
                    {"Beta", EntryIsFile, 0},
                    {"c", 0, 0},
                    {"pack.msb", EntryIsFile | EntryHasType, MgResType("MXSB")}};
    ASSERT_EQ(FDirEntriesWith(p, names, types, FDirReadResourceHeaders), MgNoError);
    EXPECT_EQ(EntriesOf(names, types), want);
    want.back() = {"pack.msb", EntryIsFile, 0};
    ASSERT_EQ(FDirEntries(p, names, types), MgNoError);
    EXPECT_EQ(EntriesOf(names, types), want);
    ASSERT_EQ(FDirEntries(p, plain, nullptr), MgNoError);
    EXPECT_EQ(std::make_tuple(Names(plain), MemHandleSize(plain), MemHandleSize(types)),
              std::make_tuple(Names(names), MemHandleSize(names), 5 * 8));
    ASSERT_EQ(FDirEntries(empty, names, types), MgNoError);
    EXPECT_EQ(std::make_pair(MemHandleSize(names), MemHandleSize(types)), std::make_pair(4, 0));
    EXPECT_EQ(FDirEntries(missing, names, types), MgNotFound);
    EXPECT_EQ(FDirEntries(relative, names, types), MgBadArgument);
}

// A listing that fails midway keeps what it had and closes the directory. With every
// allocation of a listing of 1000 entries failing in turn, each run gives the listing or 2,
// and leaves no block behind.
TEST_F(DirsTest, ListingFaults) {
    for (int i = 0; i < 1000; ++i) Make("entry" + std::to_string(i));
    OwnedPath p(dir.path.string());
    OwnedHandle some, someTypes;
    auto open = plat::OpenHandleCount();
    plat::FailFileOpAt(plat::kFileListNext, 5, MgIOError);
    EXPECT_EQ(FDirEntries(p, some, someTypes), MgIOError);
    EXPECT_EQ(Names(some).size(), 4u - ListedDotEntries());
    EXPECT_GE(MemHandleSize(someTypes), 4 * 8);
    EXPECT_EQ(plat::OpenHandleCount(), open);
    plat::ResetFaults();
    for (bool withTypes : {true, false})
        for (int64_t n = 1, done = 0; !done; ++n) {
            OwnedHandle names, types;
            int64_t before = plat::LiveBlockCount();
            plat::FailAllocationAt(n);
            MgStatus status = FDirEntries(p, names, withTypes ? types.h : nullptr);
            done = status == MgNoError && plat::AllocationCount() < n;
            plat::FailAllocationAt(0);
            ASSERT_TRUE(status == MgNoMemory || (!status && Names(names).size() == 1000u)) << n;
            EXPECT_EQ(plat::LiveBlockCount(), before) << "allocation " << n;
        }
}

// The shortcut of the test below.
static std::string gShortcut, gShortcutTarget;
static bool ResolveOne(char* name) {
    if (name != gShortcut) return false;
    strcpy(name, gShortcutTarget.c_str());
    return true;
}

// A file's and a directory's information, a shortcut's (its target's, type included), sizes
// beyond 31 bits (the signed field's reading; beyond 32, 0x7FFFFFFF), and information applied.
TEST_F(DirsTest, FileInfo) {
    const std::string file = Make("plain.bin", "12345", 0444), sub = MakeDir("sub");
    ASSERT_TRUE(plat::SetFileDates(file.c_str(), 0, (1000000000ull + 11644473600ull) * 10000000));
    for (const char* leaf : {"sub/1", "sub/2", "sub/3"}) Make(leaf);
    fs::permissions(sub, fs::perms(0750), fs::perm_options::replace);
    const std::string sparse = Make("sparse", "", 0644);
    fs::resize_file(sparse, uintmax_t(3) << 30);
    OwnedHandle table;
    ASSERT_EQ(MemSetHandleBytes(&table.h, "\1\0\0\0MXSBmsb", 12), MgNoError);
    FSetTypeTables(table, nullptr);
    gShortcut = Name("doc.lnk");
    gShortcutTarget = Make("real.msb", "123", 0644);
    plat::SetShortcutResolverForTest(ResolveOne);
    const std::tuple<std::string, int32_t, int32_t, int32_t, ResType> rows[] = {
        {file, 5, 0, 0444, MgResType("????")},
        {sub, 3, 1, 0750, MgResType("????")},
        {sparse, int32_t(0xC0000000u), 0, 0644, MgResType("????")},
        {gShortcut, 3, 0, 0644, MgResType("MXSB")}};
    for (const auto& [name, size, isDirectory, permissions, type] : rows) {
        SCOPED_TRACE(name);
        OwnedPath p(name);
        FileInfo info;
        memset(&info, 0xAB, sizeof info);
        ASSERT_EQ(FFileInfoOf(p, &info), MgNoError);
        // hiddenFlag is cleared for the empty path alone.
        EXPECT_EQ(std::make_tuple(info.size, info.isDirectory, info.permissions, info.type,
                                  info.creator, info.hiddenFlag, info.spareWord2, info.owner[0]),
                  std::make_tuple(size, isDirectory, HostPermissions(permissions, isDirectory),
                                  type, type == MgResType("MXSB") ? MgResType("MXDX") : type,
                                  int32_t(0xABABABAB), 0xABAB, 0));
        EXPECT_NE(info.created, 0u);
        EXPECT_TRUE(name != file || info.modified == 1000000000u + kUnixEpochSeconds);
    }
    FSetTypeTables(nullptr, nullptr);
    fs::resize_file(sparse, uintmax_t(5) << 30);
    OwnedPath big(sparse), missing(Name("missing"));
    FileInfo info;
    ASSERT_EQ(FFileInfoOf(big, &info), MgNoError);
    EXPECT_EQ(info.size, 0x7FFFFFFF);
    EXPECT_EQ(FFileInfoOf(missing, &info), MgNotFound);

    // Applied: permissions and the modification date (read back by path and by open file in
    // the resource suite's dates).
    // Writable first, so that a Windows host lets the directory go.
    fs::permissions(file, fs::perms(0644), fs::perm_options::replace);
    OwnedPath p(file);
    ASSERT_EQ(FFileInfoOf(p, &info), MgNoError);
    info.permissions = 0400;
    info.modified = 3000000000u;
    ASSERT_EQ(FApplyFileInfo(p, &info), MgNoError);
    EXPECT_EQ(std::make_pair(PermissionsOf(file), UnixModTime(file) + kUnixEpochSeconds),
              std::make_pair(HostPermissions(0400, false), int64_t(3000000000u)));
    fs::permissions(file, fs::perms(0644), fs::perm_options::replace);
}

TEST_F(DirsTest, ExistencePermissionsMakingMovingAndRemoving) {
    const std::string file = Make("f"), rootName = dir.path.root_path().make_preferred().string();
    OwnedPath pf(file), pd(MakeDir("d")), missing(Name("no")), relative("rel"), root(rootName),
        bad(rootName);
    FAppendName(bad, reinterpret_cast<ConstPStr>("\003a/b"));  // no host name has a '/'
    const std::tuple<Path, int32_t, MgStatus> rows[] = {
        {pf, 1, MgBadArgument},    {pd, 2, MgNoError},   {missing, 0, MgNotFound},
        {relative, 0, MgNotFound}, {root, 2, MgNoError}, {bad, 0, MgNotFound}};
    for (const auto& [path, existsAs, isDirectory] : rows)
        EXPECT_EQ(std::make_pair(FPathExistsAs(path), FIsDirectory(path)),
                  std::make_pair(existsAs, isDirectory));
    int32_t bits = 0640, got = 0;
    uint8_t owner[256] = {9}, group[256] = {9};
    ASSERT_EQ(FApplyPermissions(pf, nullptr, nullptr, &bits), MgNoError);
    ASSERT_EQ(FPermissionsOf(pf, owner, group, &got), MgNoError);
    EXPECT_EQ(std::make_pair(got, int(owner[0])), std::make_pair(HostPermissions(0640, false), 0));
    EXPECT_EQ((std::vector<MgStatus>{FPermissionsOf(pf, owner, nullptr, &got),
                                     FPermissionsOf(relative, owner, group, &got),
                                     FApplyPermissions(pf, nullptr, nullptr, nullptr),
                                     FApplyPermissions(missing, nullptr, nullptr, &bits),
                                     FPermissionsOf(missing, owner, group, &got)}),
              (std::vector<MgStatus>{MgBadArgument, MgBadArgument, 0, MgNotFound, MgNotFound}));

    // Renaming and copying never replace; a copy keeps the permissions and the date. Deleting
    // leaves a full directory; a chain of directories stops at a file.
    auto before = plat::OpenHandleCount();
    const std::string a = Make("a", "alpha", 0604), b = Make("b", "beta"), m = Name("m");
    OwnedPath pa(a), pb(b), pc(Name("c")), pm(m), sub(MakeDir("sub")), full(MakeDir("full")),
        empty(MakeDir("empty")), made(Name("made")), chain(Name("full/b/c/d"));
    EXPECT_EQ((std::vector<MgStatus>{
                  FCopyFile(pa, pb), FRenameFile(pa, pb), FCopyFile(pa, pc), FRenameFile(pc, pm),
                  FRenameFile(root, pm), FCopyFile(root, pm), FCopyFile(pa, relative),
                  FRenameFile(pa, relative), FRenameFile(pc, pm), FCopyFile(sub, pc)}),
              (std::vector<MgStatus>{MgDuplicate, MgDuplicate, 0, 0, MgBadArgument, MgBadArgument,
                                     MgBadArgument, MgBadArgument, MgNotFound, MgNoPermission}));
    EXPECT_EQ(std::make_tuple(SlurpFile(b), SlurpFile(m), PermissionsOf(m), UnixModTime(m)),
              std::make_tuple("beta", "alpha", HostPermissions(0604, false), UnixModTime(a)));
    EXPECT_FALSE(fs::exists(Name("c")));
    EXPECT_EQ(plat::OpenHandleCount(), before);
    Make("full/x");
    // The full directory stays: it is not empty.
    EXPECT_EQ(
        (std::vector<MgStatus>{FDeleteEntry(pm), FDeleteEntry(pm), FDeleteEntry(empty),
                               FDeleteEntry(full), FMakeDirectory(made, 0), FMakeDirectory(made, 0),
                               FMakeDirectoryChain(chain), FMakeDirectoryChain(chain)}),
        (std::vector<MgStatus>{0, MgNotFound, 0, MgIOError, 0, MgDuplicate, 0, 0}));
    EXPECT_TRUE(fs::exists(Name("full/x")) && fs::is_directory(Name("made")) &&
                fs::is_directory(Name("full/b/c/d")));
    for (const char* over : {"full/x", "full/x/y", "full/x/y/z"})
        EXPECT_EQ(FMakeDirectoryChain(OwnedPath(Name(over))), MgNotADirectory) << over;
}

// The exact case of a path, the current and temporary directories (with a fallback to the
// program's), the preferred one (the host has none: the fallback stands when it is a
// directory), and the running program: outside mxsbutil the layer's own routine names it, as it
// was started, made absolute; with no room for it, nothing.
TEST_F(DirsTest, WellKnownPlaces) {
    OwnedPath exact(MakeDir("real")), missing(Name("nothing/here"));
    const std::string before = PathText(exact);
    Path cwd = nullptr, temp = FEmptyPath(nullptr), fallback = FEmptyPath(nullptr),
         preferred = nullptr, app = FEmptyPath(nullptr), appDir = FEmptyPath(nullptr);
    char name[4096], text[FNativeNameBufferSize], parent[FNativeNameBufferSize];
    ScopedVariable tmp(TempVariable(), dir.path.string());
    EXPECT_EQ(
        (std::vector<MgStatus>{
            FExactCasePath(exact), FExactCasePath(missing), FCurrentDirectory(&cwd),
            FTempDirectory(temp), (tmp.Set(Name("absent")), FTempDirectory(fallback)),
            FPreferredDirectory("any", &preferred, exact), MgStatus(FPathSame(preferred, exact)),
            FPreferredDirectory("any", &preferred, missing), MgStatus(preferred != nullptr),
            FPreferredDirectory("any", &preferred, nullptr), FApplicationPath(app),
            FApplicationDirectory(appDir), FPathToNativeName(app, text),
            FPathToNativeName(appDir, parent), FApplicationPath(nullptr)}),
        (std::vector<MgStatus>{0, MgNotFound, 0, 0, 0, 0, 1, MgNotFound, 0, 20, 0, 0, 0, 0,
                               MgBadArgument}));
    const std::string self =
        fs::canonical(testing::internal::GetArgvs()[0]).make_preferred().string();
    EXPECT_EQ((std::vector<std::string>{PathText(exact), PathText(cwd), PathText(temp),
                                        PathText(fallback), text, parent}),
              (std::vector<std::string>{before, fs::current_path().string(), dir.path.string(),
                                        ThisProgram().parent_path().string(), self,
                                        fs::path(self).parent_path().string()}));
    EXPECT_EQ(FApplicationName(name, sizeof name), static_cast<int32_t>(self.size()));
    EXPECT_EQ(name, self);
    EXPECT_EQ(FApplicationName(name, static_cast<int32_t>(self.size())), 0);
    for (Path p : {cwd, temp, fallback, app, appDir}) FPathRelease(p);
}

// Range locks hold against another opener of the file, and go with the unlock.
TEST_F(DirsTest, RangeLocks) {
    OwnedPath p(Make("locked", std::string(100, 'x')));
    FileRef ref = 0, other = 0;
    ASSERT_EQ(FMOpen(&ref, p, FMModeReadWrite, FMShareAll), MgNoError);
    ASSERT_EQ(FMOpen(&other, p, FMModeReadWrite, FMShareAll), MgNoError);
    // The second lock is 90..94; the other opener's 30..89 lies between the two.
    EXPECT_EQ(
        (std::vector<MgStatus>{
            FMLockRange(ref, FMSeekStart, 10, 20, 1), FMLockRange(ref, FMSeekEnd, -10, 5, 1),
            FMLockRange(ref, 0, 0, 1, 1), FMLockRange(0, FMSeekStart, 0, 1, 1),
            FMLockRange(other, FMSeekStart, 25, 10, 1), FMLockRange(other, FMSeekStart, 92, 1, 1),
            FMLockRange(other, FMSeekStart, 30, 60, 1), FMLockRange(other, FMSeekStart, 30, 60, 0),
            FMLockRange(ref, FMSeekStart, 10, 20, 0), FMLockRange(other, FMSeekStart, 25, 10, 1)}),
        (std::vector<MgStatus>{0, 0, MgBadArgument, MgBadArgument, MgNoPermission, MgNoPermission,
                               0, 0, 0, 0}));
    FMClose(other);
    FMClose(ref);
}

// Records move with their names; names equal but for case keep their listed order, also
// past the first sixteen bytes, where a name that another one starts comes first. A count
// that the bytes don't back leaves the list alone.
TEST(DirSort, ByNameWithoutCase) {
    const std::vector<std::string> listed = Words(
        "common-prefix-long-alphabet Common-prefix-long-Zeta common-prefix-long-alpha "
        "COMMON-PREFIX-LONG-ALPHA b B a abcdefghij-2 abcdefghij-1");
    const int32_t n = int32_t(listed.size());
    // A list is made afresh, or in the handle given, which keeps its identity.
    Handle given = MemNewHandle(40), names = FNewNameList(given), fresh = FNewNameList(nullptr);
    ASSERT_TRUE(names == given && fresh && MemHandleSize(fresh) == 4 && Names(fresh).empty());
    ASSERT_EQ(MemHandleSize(names), 4);
    MemDisposeHandle(fresh);
    Handle types = MemNewHandleClear(8 * n);
    for (int32_t i = 0; i < n; ++i) {  // each record's flags hold its listed index
        const std::string counted = char(listed[i].size()) + listed[i];
        MemAppendBytes(counted.data(), names, int32_t(counted.size()));
        memcpy(*types + 8 * i, &i, 4);
    }
    memcpy(*names, &n, 4);
    FSortDirEntries(names, types);
    Entries want;
    for (uint32_t i : {6, 8, 7, 4, 5, 2, 3, 0, 1}) want.emplace_back(listed[i], i, 0);
    EXPECT_EQ(EntriesOf(names, types), want);
    **names = 60;  // the count's lowest or highest byte
    const std::vector<uint8_t> before(*names, *names + MemHandleSize(names));
    FSortDirEntries(names, nullptr);
    EXPECT_EQ(std::vector<uint8_t>(*names, *names + MemHandleSize(names)), before);
    for (Handle h : {names, types}) MemDisposeHandle(h);
}

TEST(DirPatterns, NameFitsPattern) {
    auto fits = [](const std::string& pattern, const std::string& name) {
        return FNameFitsPattern(reinterpret_cast<const uint8_t*>(pattern.data()),
                                reinterpret_cast<const uint8_t*>(name.data()),
                                int32_t(pattern.size()), int32_t(name.size()));
    };
    const std::tuple<const char*, const char*, int32_t> rows[] = {
        {"a", "a.txt", 1}, {"*.*", "readme", 1}, {"*.txt", "A.TXT", 1}, {"*.txt", "a.dat", 0},
        {"a?c", "abc", 1}, {"a?c", "abd", 0},    {"*.", "readme", 1},   {"b", "a.txt", 0}};
    for (const auto& [pattern, name, want] : rows)
        EXPECT_EQ(fits(pattern, name), want) << pattern << " " << name;
    EXPECT_EQ(fits("*", std::string(1000, 'a')), 1);  // longer than a name: cut, never overrun
    int32_t offset = 0;
    EXPECT_EQ(FPatternHasWildcards(reinterpret_cast<const uint8_t*>("ab*c"), &offset, 4), 1);
    EXPECT_EQ(offset, 2);
}

TEST(FileTimes, SecondsSince1904) {
    // From 1904 in 100-nanosecond steps: a half second goes to the even second.
    const uint64_t t1904 = 95616288000000000ULL;
    for (const auto& [after, seconds] :
         {std::pair{0ULL, 0u}, {15000000ULL, 2u}, {25000000ULL, 2u}, {25000001ULL, 3u}})
        EXPECT_EQ(FFileTimeToSeconds(t1904 + after), seconds) << after;
    EXPECT_EQ(std::make_tuple(FFileTimeToSeconds(0), FFileTimeToSeconds(116444736000000000ULL),
                              FFileTimeToSeconds(~0ULL)),
              std::make_tuple(0u, kUnixEpochSeconds, 0xFFFFFFFFu));
    EXPECT_EQ(FSecondsToFileTime(kUnixEpochSeconds), 116444736000000000ULL);
}
