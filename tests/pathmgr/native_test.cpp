#include <string.h>

#include <algorithm>

#include "path_helpers.h"
#include "platform/platform.h"

namespace {

using NativeNames = PathTest;

constexpr int32_t W = PathSyntaxWindows, X = PathSyntaxPosix;

std::string Native(Path p, int32_t syntax, MgStatus* status) {
    char name[FNativeNameBufferSize];
    memset(name, 0x7F, sizeof name);
    *status = FPathToNativeNameSyntax(p, name, syntax);
    return *status == MgNoError ? std::string(name) : std::string();
}

TEST_F(NativeNames, Table) {
    // Text in the `from` syntax, the status, and the native name when it is 0. No shares in
    // POSIX names, nor a name holding '/' (which only Windows text makes).
    const MgStatus ok = MgNoError, bad = MgBadArgument;
    // clang-format off
    const struct {
        std::string path;
        int32_t from, to;
        MgStatus status;
        std::string name;
    } rows[] = {
        {"", W, W, bad, ""}, {"C:\\", W, W, ok, "C:\\"}, {"C:\\a\\b", W, W, ok, "C:\\a\\b"},
        {"a", W, W, bad, ""}, {"abc:\\d", W, W, bad, ""}, {"C:\\a\\con", W, W, bad, ""},
        {"C:\\a.", W, W, bad, ""}, {"C:\\a\\b?", W, W, bad, ""},
        {"C:\\con.txt", W, W, ok, "C:\\con.txt"}, {"\\\\s\\v", W, W, ok, "\\\\s\\v\\"},
        {"\\\\s\\v\\a", W, W, ok, "\\\\s\\v\\a"}, {"1:\\a", W, W, bad, ""}, {"/", X, X, ok, "/"},
        {"/a/b", X, X, ok, "/a/b"}, {"/a\\b/c:d", X, X, ok, "/a\\b/c:d"},
        {"/a/con", X, X, ok, "/a/con"}, {"/a.", X, X, ok, "/a."}, {"a", X, X, bad, ""},
        {"..", X, X, bad, ""}, {"\\\\s\\v\\a", W, X, bad, ""}, {"C:\\a/b", W, X, bad, ""}};
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(r.path);
        OwnedPath p(Parse(r.path, r.from));
        MgStatus status;
        EXPECT_EQ(Native(p, r.to, &status), r.name);
        EXPECT_EQ(status, r.status);
    }
}

// POSIX names take 255-byte components whole, up to the host's longest name and no further.
TEST_F(NativeNames, PosixNamesEndAtTheHostLimit) {
    const int32_t limit = std::min<int32_t>(plat::NativeNameMax(), FNativeNameBufferSize - 1);
    for (int32_t length : {limit, limit + 1}) {
        SCOPED_TRACE(length);
        std::string text;
        while (int32_t(text.size()) < length)
            text += "/" + std::string(std::min<size_t>(255, length - text.size() - 1), 'n');
        OwnedPath p(Parse(text, X));
        MgStatus status;
        EXPECT_EQ(Native(p, X, &status), length == limit ? text : "");
        EXPECT_EQ(status == MgNoError, length == limit);
    }
}

// "C:" and a component of 100, 100 and n bytes: 2 + 101 + 101 + (n + 1). One byte more: the
// status is whatever the host's last error maps to, and the text is cut there. A 200-byte name
// reads as a negative length: nothing of it is copied, and the walk goes on one byte further,
// inside its text.
TEST_F(NativeNames, WindowsLengthLimitIs260) {
    const std::string dirs = "C:\\" + std::string(100, 'a') + "\\" + std::string(100, 'b');
    char name[FNativeNameBufferSize];
    for (int last : {55, 56}) {
        OwnedPath p(Parse(dirs + "\\" + std::string(last, 'c')));
        EXPECT_EQ(FPathToNativeNameSyntax(p, name, W) == MgNoError, last == 55);
        EXPECT_EQ(std::string(name), last == 55 ? dirs + "\\" + std::string(55, 'c') : dirs);
    }
    OwnedPath p(Parse("C:\\" + std::string(200, 'x'))), many(Parse("C:\\a"));
    EXPECT_EQ(FPathToNativeNameSyntax(p, name, W), MgNoError);
    EXPECT_EQ(std::string(name), "C:\\");
    for (int i = 0; i < 300; ++i) FAppendName(many, P(std::string(130, 'y')).b);
    EXPECT_TRUE(FPathToNativeNameSyntax(many, name, W) != MgNoError || strlen(name) <= 260);
}

TEST_F(NativeNames, CheckNameAndNewName) {
    const int32_t B = NameBadCharacter, D = NameReservedDevice, T = NameTrailingDot;
    // clang-format off
    const struct { std::string name; int32_t syntax, flags; const char* found; } rows[] = {
        {"good.txt", W, 0, ""}, {"C:", W, B, ":"}, {"a?b*", W, B, "*?"}, {"a\\b/c|d", W, B, "|/\\"},
        {"x\"<>\"", W, B, "\"><\""}, {"LPT1", W, D, ""}, {"com9", W, D, ""}, {"COM", W, 0, ""},
        {"COM10", W, 0, ""}, {"clock$", W, D, ""}, {"Nul", W, D, ""}, {"con.txt", W, 0, ""},
        {"a.", W, T, ""}, {"aux.", W, T, ""}, {"\xE9t\xE9", W, 0, ""}, {"a b-c_d", W, 0, ""},
        {"a?b*:\\", X, 0, ""}, {"con", X, 0, ""}, {"a/b/", X, B, "//"},
        {std::string("a\0b", 3), X, B, ""}, {".", X, D, ""}, {"..", X, D, ""}, {"...", X, 0, ""}};
    // clang-format on
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        char found[256] = {};
        char extra[256] = {};
        // The second output is optional; POSIX rows leave it out.
        EXPECT_EQ(FCheckNameSyntax(P(r.name).b, found, r.syntax == W ? extra : nullptr, r.syntax),
                  r.flags);
        EXPECT_STREQ(found, r.found);
    }
    char found[256] = "stale";
    char extra[256] = "stale";
    EXPECT_EQ(FCheckNewName(P("").b, nullptr, 0, found, extra), 2);
    EXPECT_STREQ(found, "");
    EXPECT_STREQ(extra, "");
    EXPECT_EQ(FCheckNewName(P("a/b").b, nullptr, 1, found, extra), 0);
    EXPECT_EQ(FCheckNewName(P("a/b").b, nullptr, 0, found, extra), NameBadCharacter);
}

}  // namespace
