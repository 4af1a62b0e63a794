// Opening, reading, seeking and the share modes of open files; the status of each errno. File
// types by extension: the dot search, the two tables, the four-character quirk, and the limits
// of adding and stripping.
#include <sys/stat.h>

#include <cerrno>

#include "filemgr/dirs_env.h"
#include "support/handles.h"
#include "support/pstr.h"
#include "support/rows.h"

using mgtest::ExpectRows, mgtest::Row;

class FilesTest : public DirsTest {
  protected:
    FileRef Open(const std::string& name, int32_t mode, int32_t deny, MgStatus want = MgNoError) {
        OwnedPath p(name);
        FileRef ref = -1;
        EXPECT_EQ(FMOpen(&ref, p, mode, deny), want) << name;
        EXPECT_EQ(ref == 0, want != MgNoError);
        return ref;
    }
    int32_t Size(FileRef ref) {
        int32_t size = -1;
        EXPECT_EQ(FGetEOF(ref, &size), MgNoError);
        return size;
    }
};

// Bad modes, paths that name no file, and the reference 0, refused before any platform call.
TEST_F(FilesTest, RefusedOpensAndDenyModes) {
    const std::string f = Make("a", "x");
    const std::tuple<std::string, int32_t, int32_t, MgStatus> rows[] = {
        {f, 4, FMShareAll, MgBadArgument},
        {f, -1, FMShareAll, MgBadArgument},
        {f, FMModeRead, 3, MgBadArgument},
        {"a/b", FMModeRead, FMShareAll, MgBadArgument},
        {"/", FMModeRead, FMShareAll, MgBadArgument},  // a volume root
        {Name("missing"), FMModeRead, FMShareAll, MgNotFound},
        {dir.path.string(), FMModeRead, FMShareAll, MgNoPermission}};  // a directory
    for (const auto& [name, mode, deny, want] : rows) Open(name, mode, deny, want);
    int32_t v = 0;
    char b[4];
    for (MgStatus s :
         {FMClose(0), FMRead(0, 1, &v, b), FMWriteBytes(0, 1, &v, b), FMSeek(0, 0, FMSeekCurrent),
          FMTell(0, &v), FGetEOF(0, &v), FSetFileEnd(0, 1), FMFlush(0), FMFlushFile(0)})
        EXPECT_EQ(s, MgBadArgument);

    // Second opener against a first one, by their share modes: a table of the deny rules. A
    // refused truncating open changes nothing.
    const std::tuple<int32_t, int32_t, int32_t, int32_t, MgStatus> shares[] = {
        {FMModeRead, FMShareNone, FMModeRead, FMShareAll, MgNoPermission},
        {FMModeRead, FMShareRead, FMModeRead, FMShareAll, MgNoError},
        {FMModeRead, FMShareRead, FMModeRead, FMShareRead, MgNoError},
        {FMModeRead, FMShareRead, FMModeWrite, FMShareAll, MgNoPermission},
        {FMModeRead, FMShareAll, FMModeReadWrite, FMShareAll, MgNoError},
        {FMModeReadWrite, FMShareAll, FMModeRead, FMShareRead, MgNoPermission},
        {FMModeRead, FMShareAll, FMModeRead, FMShareNone, MgNoPermission},
        {FMModeRead, FMShareNone, FMModeTruncate, FMShareAll, MgNoPermission}};
    const std::string shared = Make("s", "shared");
    for (const auto& [mode1, deny1, mode2, deny2, want] : shares) {
        FileRef first = Open(shared, mode1, deny1);
        if (FileRef second = Open(shared, mode2, deny2, want)) FMClose(second);
        FMClose(first);
    }
    EXPECT_EQ(SlurpFile(shared), "shared");
}

// A new file can't be made over an old one, but can replace it whole; a read-only
// reference can't write, and truncating empties the file.
TEST_F(FilesTest, CreateModesReadsSeeksAndFailures) {
    OwnedPath p(Name("new"));
    FileRef ref = -1;
    EXPECT_EQ((std::vector<int32_t>{
                  FMCreateNew(&ref, p, FMPermissionMask(0666), FMModeReadWrite, FMShareAll, 0),
                  FMWriteBytes(ref, 5, nullptr, "hello"), FMClose(ref),
                  FMCreateNew(&ref, p, 0666, FMModeReadWrite, FMShareAll, 0), ref,
                  FMCreateNew(&ref, p, 0666, FMModeTruncate, FMShareAll, 0)}),
              (std::vector<int32_t>{0, 0, 0, MgDuplicate, 0, MgBadArgument}));
    FileRef r = Open(Name("new"), FMModeRead, FMShareAll);
    EXPECT_EQ((std::vector<int32_t>{FMWriteBytes(r, 1, nullptr, "x"), FMClose(r),
                                    FMCreateOver(&ref, p, 0666, FMModeWrite, FMShareAll, 0),
                                    Size(ref), FMClose(ref)}),
              (std::vector<int32_t>{WriteToReadOnlyStatus(), 0, 0, 0, 0}));
    r = Open(Make("new", "abcdef"), FMModeTruncate, FMShareAll);
    EXPECT_EQ(Size(r), 0);
    FMClose(r);

    // Reads, seeks and ends.
    std::string data(100, 'z');
    for (int i = 0; i < 100; ++i) data[i] = static_cast<char>(i);
    ref = Open(Make("d", data), FMModeReadWrite, FMShareNone);
    char buf[200];
    int32_t actual = -1;
    // A short read gives what there was.
    EXPECT_EQ(
        (std::vector<int32_t>{FMRead(ref, 0, &actual, buf), actual, FMSeek(ref, -40, FMSeekEnd),
                              FMRead(ref, 100, &actual, buf), actual, buf[0]}),
        (std::vector<int32_t>{0, 0, 0, MgEndOfFile, 40, 60}));
    // Seeks (or, with a negative mode, the end set) and the position after each. Seeks beyond
    // either end stop there; any other mode counts from the end. Setting the end keeps a
    // position inside the file and pulls one beyond it back; a file can grow this way, not by
    // seeking.
    // (4: the end of the file, 1: a bad argument.)
    auto step = [&](int32_t offset, int32_t mode) {
        const MgStatus status = mode < 0 ? FSetFileEnd(ref, offset) : FMSeek(ref, offset, mode);
        int32_t at = -1;
        EXPECT_EQ(FMTell(ref, &at), MgNoError);
        return std::to_string(status) + " " + std::to_string(at);
    };
    ExpectRows({Row(step(100, FMSeekStart), "0 100"), Row(step(101, FMSeekStart), "4 100"),
                Row(step(-1, FMSeekStart), "4 0"), Row(step(10, FMSeekCurrent), "0 10"),
                Row(step(-5, 0), "0 95"), Row(step(10, -1), "0 10"),
                Row(step(5, FMSeekStart), "0 5"), Row(step(8, -1), "0 5"), Row(step(50, -1), "0 5"),
                Row(step(-1, -1), "1 5")});
    EXPECT_EQ((std::vector<int32_t>{Size(ref), FMSeek(12345, 0, FMSeekCurrent), FMFlush(ref),
                                    FMClose(ref)}),
              (std::vector<int32_t>{50, 0, 0, 0}));
    // Failures injected at the platform's calls, and their counts.
    ref = Open(Make("f", "0123456789"), FMModeReadWrite, FMShareAll);
    plat::FailFileOpAt(plat::kFileRead, 2, MgIOError);
    EXPECT_EQ((std::vector<int64_t>{
                  FMRead(ref, 2, &actual, buf), FMRead(ref, 2, &actual, buf), actual,
                  plat::FileOpCount(plat::kFileRead),
                  (plat::FailFileOpAt(plat::kFileWrite, 1, MgDiskFull),
                   FMWriteBytes(ref, 1, &actual, "w")),
                  (plat::FailFileOpAt(plat::kFileTruncate, 1, MgNoPermission), FSetFileEnd(ref, 3)),
                  (plat::FailFileOpAt(plat::kFileSeek, 1, MgIOError), FMSeek(ref, 1, FMSeekStart)),
                  FMClose(ref)}),
              (std::vector<int64_t>{0, MgIOError, 0, 2, MgDiskFull, MgNoPermission, MgIOError, 0}));
}

// Share modes between two processes: a child of this program holds the file open for reading,
// denying writes, while this process opens it again. A refused open comes after FMOpen's two
// waits. Once the child is gone the file is free again.
TEST_F(FilesTest, DenyModesHoldAgainstAnotherProcess) {
    const std::string f = Make("x", "locked");
    const int64_t child = StartTestChild("HoldOpen.DISABLED_Child", "MXSB_HOLD=" + f);
    ASSERT_NE(child, 0);
    for (int i = 0; i < 3000 && !std::filesystem::exists(f + ".ready"); ++i)
        plat::SleepMilliseconds(10);
    EXPECT_EQ(SlurpFile(f + ".ready"), "y");
    for (const auto& [mode, want] :
         {std::pair{FMModeRead, MgNoError}, {FMModeReadWrite, MgNoPermission}}) {
        const auto start = std::chrono::steady_clock::now();
        if (FileRef ref = Open(f, mode, FMShareAll, want)) FMClose(ref);
        EXPECT_GE(std::chrono::steady_clock::now() - start,
                  std::chrono::milliseconds(want ? 90 : 0));
    }
    std::ofstream(f + ".done") << "y";
    EXPECT_EQ(plat::WaitChild(child, 30000), 0);
    FMClose(Open(f, FMModeRead, FMShareNone));
}

// The holder: opens the file that MXSB_HOLD names, says in <file>.ready whether it could, and
// keeps it open until <file>.done appears.
TEST(HoldOpen, DISABLED_Child) {
    const char* name = std::getenv("MXSB_HOLD");
    if (name == nullptr) GTEST_SKIP() << "the child's side, started by its parent";
    const std::string file = name;
    FileRef ref = 0;
    OwnedPath p(file);
    std::ofstream(file + ".tmp") << (FMOpen(&ref, p, FMModeRead, FMShareRead) ? "n" : "y");
    std::filesystem::rename(file + ".tmp", file + ".ready");
    for (int i = 0; i < 3000 && !std::filesystem::exists(file + ".done"); ++i)
        plat::SleepMilliseconds(10);
    FMClose(ref);
}

TEST(FileErrors, ErrnoTable) {
    const std::tuple<int, int, MgStatus> rows[] = {
        {0, 0, 0},      {ENOENT, 1, 1}, {ENOENT, 0, 7},  {EBADF, 0, 1},   {EINVAL, 0, 1},
        {ENOMEM, 0, 2}, {EACCES, 0, 8}, {EEXIST, 0, 10}, {ENFILE, 0, 11}, {EMFILE, 0, 11},
        {ENOSPC, 0, 9}, {ESPIPE, 0, 4}, {EIO, 0, 6}};
    for (const auto& [err, arg, want] : rows) EXPECT_EQ((errno = err, FMapErrno(arg)), want) << err;
    mode_t old = umask(022);
    EXPECT_EQ(FMPermissionMask(0666), 0644);
    umask(old);
}

using mgtest::NewHandleOf;
using Leaf = mgtest::P;
const auto T = MgResType;

// Types of names and paths through the two tables, and extensions added and stripped. "jpeg"
// runs on into the "\0ull" record and matches; "html" runs into "TIFF" and can't; "tiff" is the
// last record and runs into the block's end.
TEST(FileTypes, ByExtension) {
    // A type table: its count in host order, then (type, extension) records; an extension of 4
    // characters fills its field unended.
    Handle primary = NewHandleOf(
               std::string("\5\0\0\0TEXTtxt\0JPEGjpeg\0ull\0\0\0\0HTMLhtmlTIFFtiff", 44)),
           secondary = NewHandleOf(std::string("\3\0\0\0PICTpct\0OTHRtxt\0CSRCc\0\0\0", 28));
    FSetTypeTables(primary, secondary);
    const std::pair<const char*, const char*> cases[] = {
        {"A.TXT", "TEXT"}, {"a.b.pct", "PICT"}, {"a.jpeg", "JPEG"}, {"a.c", "CSRC"}, {"a.html", ""},
        {"a.tiff", ""},    {"a.toolong", ""},   {"a.", ""},         {"txt", ""}};
    for (const auto& [name, want] : cases)
        EXPECT_EQ(FTypeOfName(Leaf(name).b), *want ? T(want) : 0) << name;
    // A path's type is its last name's; the empty path has none.
    Path p = FBuildPath(nullptr, PathKindAbsolute, Leaf("dir.txt").b, Leaf("pic.pct").b, nullptr),
         root = FEmptyPath(nullptr);
    EXPECT_EQ(std::make_pair(FTypeOfPath(p), FTypeOfPath(root)), std::make_pair(T("PICT"), 0u));
    for (Path made : {p, root}) FPathRelease(made);
    // Adding takes the first record of the type, from the secondary table after the primary
    // answered 15, and a full field: four bytes, no more.
    // Each edit as its result and the name after it.
    auto added = [](const std::string& name, ResType type, bool strip = false) {
        Leaf n(name);
        const int32_t result = strip ? FStripExtension(n.b, type) : FAddExtension(n.b, type);
        return std::to_string(result) + " " + n.str();
    };
    const std::string n251(251, 'n'), n252(252, 'n');
    ExpectRows(
        {Row(added("b", T("PICT")), "0 b.pct"), Row(added("c", T("NONE")), "15 c"),
         Row(added("d", T("HTML")), "0 d.html"), Row(added(n251, T("TEXT")), "0 " + n251 + ".txt"),
         Row(added(n252, T("TEXT")), "1 " + n252), Row(added("a.abcd", 0, true), "5 a"),
         Row(added("a.abcde", 0, true), "0 a.abcde"), Row(added("a.txt", T("TEXT"), true), "4 a"),
         Row(added("a.txt", T("PICT"), true), "0 a.txt"), Row(added("noext", 0, true), "0 noext"),
         Row(added("a.", 0, true), "1 a")});
    EXPECT_EQ(FAddExtensionFrom(Leaf("x").b, T("TEXT"), nullptr), 15);
    // Only records that lie wholly inside the block count, whatever the count word says.
    FSetTypeTables(nullptr, secondary);
    EXPECT_EQ(FTypeOfName(Leaf("a.txt").b), T("OTHR"));
    for (int32_t claimed : {-1, 1, 99}) {
        memcpy(*secondary, &claimed, 4);
        EXPECT_EQ(FTypeOfExtension("pct", 3), claimed > 0 ? T("PICT") : 0) << claimed;
        EXPECT_EQ(FTypeOfExtension("txt", 3), claimed > 1 ? T("OTHR") : 0) << claimed;
    }
    FSetTypeTables(nullptr, nullptr);
    EXPECT_EQ(FTypeOfName(Leaf("a.txt").b), 0u);
    for (Handle table : {primary, secondary}) MemDisposeHandle(table);
}

TEST(FileTypesDeathTest, TypeOfAnUnrootedPathIsAFailedCheck) {
    Path p = FBuildPath(nullptr, PathKindRelative, Leaf("a").b, Leaf("b.txt").b, nullptr);
    EXPECT_DEATH(FTypeOfPath(p), "");
    FPathRelease(p);
}
