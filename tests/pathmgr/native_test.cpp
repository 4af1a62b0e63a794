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
    const struct {
        std::string path;  // text in the `from` syntax
        int32_t from, to;
        MgStatus status;
        std::string name;  // expected native name when the status is 0
    } rows[] = {{"", W, W, MgBadArgument, ""},
                {"C:\\", W, W, MgNoError, "C:\\"},
                {"C:\\a\\b", W, W, MgNoError, "C:\\a\\b"},
                {"a", W, W, MgBadArgument, ""},
                {"abc:\\d", W, W, MgBadArgument, ""},
                {"C:\\a\\con", W, W, MgBadArgument, ""},
                {"C:\\a.", W, W, MgBadArgument, ""},
                {"C:\\a\\b?", W, W, MgBadArgument, ""},
                {"C:\\con.txt", W, W, MgNoError, "C:\\con.txt"},
                {"\\\\s\\v", W, W, MgNoError, "\\\\s\\v\\"},
                {"\\\\s\\v\\a", W, W, MgNoError, "\\\\s\\v\\a"},
                {"1:\\a", W, W, MgBadArgument, ""},
                {"/", X, X, MgNoError, "/"},
                {"/a/b", X, X, MgNoError, "/a/b"},
                {"/a\\b/c:d", X, X, MgNoError, "/a\\b/c:d"},
                {"/a/con", X, X, MgNoError, "/a/con"},
                {"/a.", X, X, MgNoError, "/a."},
                {"a", X, X, MgBadArgument, ""},
                {"..", X, X, MgBadArgument, ""},
                // No shares in POSIX names, nor a name holding '/' (which only Windows text makes).
                {"\\\\s\\v\\a", W, X, MgBadArgument, ""},
                {"C:\\a/b", W, X, MgBadArgument, ""}};
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

TEST_F(NativeNames, WindowsLengthLimitIs260) {
    // "C:" and a component of 100, 100 and n bytes: 2 + 101 + 101 + (n + 1).
    for (int last : {55, 56}) {
        SCOPED_TRACE(last);
        OwnedPath p(Parse("C:\\" + std::string(100, 'a') + "\\" + std::string(100, 'b') + "\\" +
                          std::string(last, 'c')));
        char name[FNativeNameBufferSize];
        MgStatus status = FPathToNativeNameSyntax(p, name, PathSyntaxWindows);
        if (last == 55) {
            EXPECT_EQ(status, MgNoError);
            EXPECT_EQ(strlen(name), 260u);
        } else {
            // The status is whatever the host's last error maps to; the text is cut there.
            EXPECT_NE(status, MgNoError);
            EXPECT_EQ(std::string(name),
                      "C:\\" + std::string(100, 'a') + "\\" + std::string(100, 'b'));
        }
    }
}

TEST_F(NativeNames, WindowsLongComponentsReadAsSignedLengths) {
    // A 200-byte name reads as a negative length: nothing of it is copied, and the walk goes
    // on one byte further, inside its text. The result is never longer than the limit.
    OwnedPath p(Parse("C:\\" + std::string(200, 'x')));
    char name[FNativeNameBufferSize];
    EXPECT_EQ(FPathToNativeNameSyntax(p, name, PathSyntaxWindows), MgNoError);
    EXPECT_EQ(std::string(name), "C:\\");
    OwnedPath many(Parse("C:\\a"));
    for (int i = 0; i < 300; ++i) FAppendName(many, P(std::string(130, 'y')).b);
    MgStatus status = FPathToNativeNameSyntax(many, name, PathSyntaxWindows);
    if (status == MgNoError) {
        EXPECT_LE(strlen(name), 260u);
    }
}

TEST_F(NativeNames, CheckNameAndNewName) {
    const struct {
        std::string name;
        int32_t syntax, flags;
        const char* found;
    } rows[] = {{"good.txt", W, 0, ""},
                {"C:", W, NameBadCharacter, ":"},
                {"a?b*", W, NameBadCharacter, "*?"},
                {"a\\b/c|d", W, NameBadCharacter, "|/\\"},
                {"x\"<>\"", W, NameBadCharacter, "\"><\""},
                {"LPT1", W, NameReservedDevice, ""},
                {"com9", W, NameReservedDevice, ""},
                {"COM", W, 0, ""},
                {"COM10", W, 0, ""},
                {"clock$", W, NameReservedDevice, ""},
                {"Nul", W, NameReservedDevice, ""},
                {"con.txt", W, 0, ""},
                {"a.", W, NameTrailingDot, ""},
                {"aux.", W, NameTrailingDot, ""},
                {"\xE9t\xE9", W, 0, ""},
                {"a b-c_d", W, 0, ""},
                {"a?b*:\\", X, 0, ""},
                {"con", X, 0, ""},
                {"a/b/", X, NameBadCharacter, "//"},
                {std::string("a\0b", 3), X, NameBadCharacter, ""},
                {".", X, NameReservedDevice, ""},
                {"..", X, NameReservedDevice, ""},
                {"...", X, 0, ""}};
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
