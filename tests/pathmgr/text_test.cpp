// Path text both ways, and native names with the checks of names.
#include <string.h>

#include <algorithm>

#include "path_helpers.h"
#include "platform/platform.h"

namespace {

using PathText = PathTest;
using NativeNames = PathTest;
constexpr int32_t W = PathSyntaxWindows, X = PathSyntaxPosix;
using namespace mgtest;

// Texts and their paths as Describe prints them. Every text is read with D:\work as the current
// directory. The last rows of the Windows table are not in the grammar's own table, but fixed by
// its rules.
// clang-format off
const std::vector<std::pair<const char*, const char*>> kWindowsRows = {
    {"", "A:"}, {"C:\\", "A:C"}, {"C:", "A:C"}, {"c:\\a\\", "A:c|a"}, {"C:a", "A:C|a"},
    {"C::\\a", "A:C|a"}, {"abc:\\d", "A:abc|d"}, {"C:\\a\\\\b", "A:C|a|b"}, {"C:\\a:b", "A:C|a:b"},
    {"\\a", "A:D|a"}, {"\\", "A:D"}, {":a", "A:D|a"}, {"C", "R:C"}, {"a\\b\\", "R:a|b"},
    {"a/b", "R:a/b"}, {".", "R:"}, {"..", "R:.."}, {"..\\..\\a", "R:..|..|a"}, {"a\\.\\b", "R:a|b"},
    {"a\\..\\b", "R:b"}, {"C:\\a\\..", "A:C"}, {"C:\\..", "A:"}, {"C:\\..\\a", "A:a"},
    {"C:\\..\\..", "R:.."}, {"\\\\s\\v", "U:\\\\s\\v"}, {"\\\\s\\v\\a\\", "U:\\\\s\\v|a"},
    {"\\\\\\s\\\\v", "U:\\\\s\\v"}, {"\\\\s", "U:\\\\s\\"}, {"\\\\", "U:\\\\\\"},
    {"a b\\ c ", "R:a b| c "}, {"C:\\a\\...", "A:C|a|..."}, {".:x", "A:x"}};
const std::vector<std::pair<const char*, const char*>> kPosixRows = {
    {"", "A:"}, {"/", "A:"}, {"//a///b//", "A:a|b"}, {"a/b/", "R:a|b"}, {".", "R:"},
    {"..", "R:.."}, {"a/./b", "R:a|b"}, {"a/../b", "R:b"}, {"a/../../b", "R:..|b"}, {"/a/..", "A:"},
    {"/..", "A:"}, {"/../a", "A:a"}, {"/a/../../b", "A:b"}, {"a\\b", "R:a\\b"},
    {"C:/x", "R:C:|x"}, {"/...", "A:..."}};
// clang-format on

TEST_F(PathText, BothWays) {
    for (int32_t syntax : {PathSyntaxWindows, PathSyntaxPosix})
        for (const auto& [text, path] : syntax == PathSyntaxPosix ? kPosixRows : kWindowsRows) {
            OwnedPath p(Parse(text, syntax));
            EXPECT_EQ(Describe(p) + " " + std::to_string(MemHandleSize(p) - FPathByteSize(p)),
                      std::string(path) + " 0")
                << text << " in syntax " << syntax;
        }
    // The current drive is the first byte of the directory, upper-cased; on a share the volume is
    // the backslash itself, which makes the path a network one.
    // Names are cut at 255; a server at 251 leaves room for one byte of share, a long share
    // shrinks to what the server leaves, and a long server with no share stores what it counts.
    OwnedPath alone(Parse("\\\\" + std::string(300, 's')));
    ExpectRows(
        {Row((plat::SetCurrentDirectoryForTest("e:\\x"), Read("\\a")), "A:E|a"),
         Row((plat::SetCurrentDirectoryForTest("\\\\s\\v"), Read("\\a")), "U:\\|a"),
         Row(Read("C:\\" + std::string(255, 'n') + "\\z"), "A:C|" + std::string(255, 'n') + "|z"),
         Row(Read("C:\\" + std::string(300, 'n') + "\\z"), "A:C|" + std::string(255, 'n') + "|z"),
         Row(Read("\\\\" + std::string(300, 's') + "\\share\\x"),
             "U:\\\\" + std::string(251, 's') + "\\s|x"),
         Row(Read("\\\\srv\\" + std::string(300, 'v')), "U:\\\\srv\\" + std::string(249, 'v')),
         Row(Describe(alone), "U:\\\\" + std::string(251, 's') + "\\"),
         Row(MemHandleSize(alone), 4 + 1 + 254)});
    // Only the given length is read, and the variable's handle is reused; null text empties an
    // existing path and leaves an empty variable empty; a count must fit the path's 16 bits.
    const uint8_t* text = reinterpret_cast<const uint8_t*>("C:\\abc\\def");
    OwnedPath p, q(Parse("a\\b")), r(Parse("a"));
    Path none = nullptr, before = nullptr, fails = nullptr;
    ExpectRows(
        {Row(After(FTextToPathSyntax(text, 5, &p.p, PathSyntaxWindows), p), "0 A:C|ab"),
         Row((before = p.p) != nullptr, 1),
         Row(After(FTextToPathSyntax(text, -3, &p.p, PathSyntaxWindows), p), "0 A:"),
         Row(p.p == before, 1), Row(After(FTextToPath(nullptr, 4, &none), none), "0 null"),
         Row(After(FTextToPath(nullptr, 4, &q.p), q), "0 A:"),
         Row(After(FLStrToPath(nullptr, &r.p), r), "0 A:"),
         Row(After((plat::FailAllocationAt(1), FTextToPath(text, 10, &fails)), fails), "2 null")});
    std::string deep;
    for (int i = 0; i < 32767; ++i) deep += "a/";
    OwnedPath deepest(Parse(deep, PathSyntaxPosix));
    EXPECT_EQ(FPathDepth(deepest), 32767);
    deep += "a";
    EXPECT_EQ(FTextToPathSyntax(reinterpret_cast<const uint8_t*>(deep.data()),
                                static_cast<int32_t>(deep.size()), &deepest.p, PathSyntaxPosix),
              MgBadArgument);
    // A path's text in a syntax, and its portable text; the text reads back as the same path.
    // clang-format off
    const struct { const char* in; int32_t from, to; const char *out, *portable; } rows[] = {
        {"C:", W, W, "C:\\", "/C"}, {"C:\\a", W, W, "C:\\a", "/C/a"},
        {"..\\a", W, W, "..\\a", "../a"}, {".", W, W, ".", "."}, {"", W, W, "", "/"},
        {"\\\\s\\v\\a", W, W, "\\\\s\\v\\a", "\\\\s\\v/a"}, {"C:\\a", W, X, "/C/a", "/C/a"},
        {"C:\\a\\b:c", W, W, "C:\\a\\b:c", "/C/a/b:c"}, {"/", X, X, "/", "/"},
        {"\\\\s\\v\\a", W, X, "\\\\s\\v/a", "\\\\s\\v/a"}, {"a/b", X, X, "a/b", "a/b"},
        {"../a", X, X, "../a", "../a"}};
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(testing::Message() << r.in << " " << r.from << " to " << r.to);
        OwnedPath p(Parse(r.in, r.from));
        EXPECT_EQ(Text(p, r.to) + " " + PortableText(p), std::string(r.out) + " " + r.portable);
    }
    // No path writes nothing and leaves the length; a corrupt one is refused; a network path with
    // no names measures one byte of portable text and writes none. A drive takes its colon
    // whatever its first byte.
    uint8_t mem[64] = {};
    auto* l = reinterpret_cast<LStr*>(mem);
    OwnedPath noPath(FMakeNoPath(nullptr)), corrupt(MemNewHandleClear(4));
    OwnedPath unc(FBuildPath(nullptr, PathKindUNC, nullptr)),
        nulDrive(FBuildPath(nullptr, PathKindAbsolute, P(std::string(1, '\0')).b, nullptr));
    (*corrupt.p)[0] = 9;
    ExpectRows({Row((l->count = -1, FPathTextInto(noPath, l)), MgNoError), Row(l->count, 0),
                Row((l->count = 7, FPathTextInto(nullptr, l)), MgNoError), Row(l->count, 7),
                Row(FPathPortableTextInto(nullptr, l), MgBadArgument),
                Row(FPathPortableTextInto(noPath, l), MgNoError),
                Row(FPathTextInto(corrupt, l), MgBadArgument),
                Row((l->count = -1, FPathPortableTextInto(unc, l)), MgNoError), Row(l->count, 1),
                Row((l->count = 0, FPathPortableTextInto(unc, l)), MgNoError), Row(l->count, 0),
                Row(Text(nulDrive, W), std::string(1, '\0') + ":\\")});
    // Too long for the C buffer: 2, and the block stays, empty. A failed allocation gives no
    // handle.
    OwnedPath yz(Parse("/x/yz", PathSyntaxPosix));
    OwnedPath longer(FBuildPath(nullptr, PathKindRelative, P(std::string(200, 'a')).b,
                                P(std::string(100, 'b')).b, nullptr));
    const std::string host = Text(yz, FHostPathSyntax());
    Handle lstr = nullptr, c = FPathToCHandle(yz), failed = nullptr;
    char *buffer = nullptr, *tooLong = nullptr;
    ExpectRows({Row(FPathToPortableLStr(yz, &lstr), MgNoError),
                Row(Contents(lstr), LStrBytes("/x/yz")), Row(Contents(c), host + '\0'),
                Row(FPathToCBuffer(yz, &buffer), MgNoError), Row(buffer, host),
                Row(FPathToCBuffer(longer, &tooLong), MgNoMemory),
                Row(tooLong != nullptr && tooLong[0] == 0, 1),
                Row((plat::FailAllocationAt(1), FPathToCompactLStr(yz, &failed)), MgNoMemory),
                Row(failed == nullptr, 1)});
    for (Handle h : {lstr, c}) MemDisposeHandle(h);
    for (char* b : {buffer, tooLong}) MemDisposePtr(reinterpret_cast<Ptr>(b));
}

// The status and, when it is 0, the native name: "0 C:\\a".
std::string Native(Path p, int32_t syntax) {
    char name[FNativeNameBufferSize];
    memset(name, 0x7F, sizeof name);
    const MgStatus status = FPathToNativeNameSyntax(p, name, syntax);
    return std::to_string(status) + " " + (status == MgNoError ? name : "");
}

TEST_F(NativeNames, TableLimitsAndNameChecks) {
    // Text in the `from` syntax, the status, and the native name when it is 0. No shares in
    // POSIX names, nor a name holding '/' (which only Windows text makes).
    const MgStatus ok = MgNoError, bad = MgBadArgument;
    // clang-format off
    const struct { std::string path; int32_t from, to; MgStatus status; std::string name; } rows[] =
    {
        {"", W, W, bad, ""}, {"C:\\", W, W, ok, "C:\\"}, {"a", W, W, bad, ""},
        {"abc:\\d", W, W, bad, ""}, {"C:\\a\\con", W, W, bad, ""}, {"C:\\a.", W, W, bad, ""},
        {"C:\\a\\b?", W, W, bad, ""}, {"C:\\con.txt", W, W, ok, "C:\\con.txt"},
        {"\\\\s\\v", W, W, ok, "\\\\s\\v\\"}, {"\\\\s\\v\\a", W, W, ok, "\\\\s\\v\\a"},
        {"1:\\a", W, W, bad, ""}, {"/", X, X, ok, "/"}, {"/a\\b/c:d", X, X, ok, "/a\\b/c:d"},
        {"/a/con", X, X, ok, "/a/con"}, {"/a.", X, X, ok, "/a."}, {"..", X, X, bad, ""},
        {"\\\\s\\v\\a", W, X, bad, ""}, {"C:\\a/b", W, X, bad, ""}};
    // clang-format on
    for (const auto& r : rows)
        EXPECT_EQ(Native(OwnedPath(Parse(r.path, r.from)), r.to),
                  std::to_string(r.status) + " " + r.name)
            << r.path;
    // POSIX names take 255-byte components whole, up to the host's longest name and no further.
    const int32_t limit = std::min<int32_t>(plat::NativeNameMax(), FNativeNameBufferSize - 1);
    for (int32_t length : {limit, limit + 1}) {
        std::string text;
        while (int32_t(text.size()) < length)
            text += "/" + std::string(std::min<size_t>(255, length - text.size() - 1), 'n');
        const std::string got = Native(OwnedPath(Parse(text, X)), X);
        EXPECT_TRUE(length == limit ? got == "0 " + text : got[0] != '0') << length << got;
    }
    // "C:" and a component of 100, 100 and n bytes: 2 + 101 + 101 + (n + 1). One byte more: the
    // status is whatever the host's last error maps to, and the text is cut there. A 200-byte name
    // reads as a negative length: nothing of it is copied, and the walk goes on one byte further,
    // inside its text.
    const std::string dirs = "C:\\" + std::string(100, 'a') + "\\" + std::string(100, 'b');
    char name[FNativeNameBufferSize];
    for (int last : {55, 56}) {
        OwnedPath p(Parse(dirs + "\\" + std::string(last, 'c')));
        EXPECT_EQ(FPathToNativeNameSyntax(p, name, W) == MgNoError, last == 55);
        EXPECT_EQ(std::string(name), last == 55 ? dirs + "\\" + std::string(55, 'c') : dirs);
    }
    OwnedPath p(Parse("C:\\" + std::string(200, 'x'))), many(Parse("C:\\a"));
    EXPECT_TRUE(FPathToNativeNameSyntax(p, name, W) == MgNoError && std::string(name) == "C:\\");
    for (int i = 0; i < 300; ++i) FAppendName(many, P(std::string(130, 'y')).b);
    EXPECT_TRUE(FPathToNativeNameSyntax(many, name, W) != MgNoError || strlen(name) <= 260);
    const int32_t B = NameBadCharacter, D = NameReservedDevice, T = NameTrailingDot;
    // clang-format off
    const struct { std::string name; int32_t syntax, flags; const char* found; } names[] = {
        {"good.txt", W, 0, ""}, {"C:", W, B, ":"}, {"a?b*", W, B, "*?"}, {"a\\b/c|d", W, B, "|/\\"},
        {"x\"<>\"", W, B, "\"><\""}, {"LPT1", W, D, ""}, {"com9", W, D, ""}, {"COM", W, 0, ""},
        {"COM10", W, 0, ""}, {"clock$", W, D, ""}, {"Nul", W, D, ""}, {"con.txt", W, 0, ""},
        {"a.", W, T, ""}, {"aux.", W, T, ""}, {"\xE9t\xE9", W, 0, ""},
        {"a?b*:\\", X, 0, ""}, {"con", X, 0, ""}, {"a/b/", X, B, "//"},
        {std::string("a\0b", 3), X, B, ""}, {".", X, D, ""}, {"..", X, D, ""}, {"...", X, 0, ""}};
    // clang-format on
    for (const auto& r : names) {
        char found[256] = {}, extra[256] = {};
        // The second output is optional; POSIX rows leave it out.
        const int32_t flags =
            FCheckNameSyntax(P(r.name).b, found, r.syntax == W ? extra : nullptr, r.syntax);
        EXPECT_EQ(std::to_string(flags) + "|" + found, std::to_string(r.flags) + "|" + r.found)
            << r.name;
    }
    char found[256] = "stale", extra[256] = "stale";
    ExpectRows({Row(FCheckNewName(P("").b, nullptr, 0, found, extra), 2),
                Row(std::string(found) + "|" + extra, "|"),
                Row(FCheckNewName(P("a/b").b, nullptr, 1, found, extra), 0),
                Row(FCheckNewName(P("a/b").b, nullptr, 0, found, extra), NameBadCharacter)});
}

}  // namespace
