#include <string.h>

#include "path_helpers.h"
#include "platform/platform.h"

namespace {

using NativeNames = PathTest;

struct NativeRow {
    const char* path;  // text in the row's syntax
    MgStatus status;
    const char* name;  // expected native name when the status is 0
};

std::string Native(Path p, int32_t syntax, MgStatus* status) {
    char name[FNativeNameBufferSize];
    memset(name, 0x7F, sizeof name);
    *status = FPathToNativeNameSyntax(p, name, syntax);
    return *status == MgNoError ? std::string(name) : std::string();
}

TEST_F(NativeNames, Windows) {
    const NativeRow rows[] = {{"", MgBadArgument, ""},
                              {"C:\\", MgNoError, "C:\\"},
                              {"C:\\a\\b", MgNoError, "C:\\a\\b"},
                              {"a", MgBadArgument, ""},
                              {"abc:\\d", MgBadArgument, ""},
                              {"C:\\a\\con", MgBadArgument, ""},
                              {"C:\\a.", MgBadArgument, ""},
                              {"C:\\a\\b?", MgBadArgument, ""},
                              {"C:\\con.txt", MgNoError, "C:\\con.txt"},
                              {"\\\\s\\v", MgNoError, "\\\\s\\v\\"},
                              {"\\\\s\\v\\a", MgNoError, "\\\\s\\v\\a"},
                              {"1:\\a", MgBadArgument, ""}};
    for (const NativeRow& r : rows) {
        SCOPED_TRACE(r.path);
        OwnedPath p(Parse(r.path));
        MgStatus status;
        std::string name = Native(p, PathSyntaxWindows, &status);
        EXPECT_EQ(status, r.status);
        EXPECT_EQ(name, r.name);
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

TEST_F(NativeNames, Posix) {
    const NativeRow rows[] = {{"/", MgNoError, "/"},
                              {"/a/b", MgNoError, "/a/b"},
                              {"/a\\b/c:d", MgNoError, "/a\\b/c:d"},
                              {"/a/con", MgNoError, "/a/con"},
                              {"/a.", MgNoError, "/a."},
                              {"a", MgBadArgument, ""},
                              {"..", MgBadArgument, ""}};
    for (const NativeRow& r : rows) {
        SCOPED_TRACE(r.path);
        OwnedPath p(Parse(r.path, PathSyntaxPosix));
        MgStatus status;
        EXPECT_EQ(Native(p, PathSyntaxPosix, &status), r.name);
        EXPECT_EQ(status, r.status);
    }
    // No shares in POSIX names, and a name holding '/' (which only Windows text makes).
    MgStatus status;
    for (const char* text : {"\\\\s\\v\\a", "C:\\a/b"}) {
        OwnedPath p(Parse(text));
        Native(p, PathSyntaxPosix, &status);
        EXPECT_EQ(status, MgBadArgument) << text;
    }
    // 255-byte names are whole names here.
    std::string longName(255, 'n');
    OwnedPath longer(Parse("/" + longName + "/" + longName, PathSyntaxPosix));
    EXPECT_EQ(Native(longer, PathSyntaxPosix, &status), "/" + longName + "/" + longName);
}

TEST_F(NativeNames, PosixLengthLimitComesFromTheHost) {
    int32_t limit = plat::NativeNameMax();
    ASSERT_LT(limit, FNativeNameBufferSize);
    // Components of 99 bytes ("/" + 99 = 100 each), then one that reaches exactly the limit.
    std::string text;
    while (static_cast<int32_t>(text.size()) + 100 < limit) text += "/" + std::string(99, 'p');
    std::string fits = text + "/" + std::string(limit - text.size() - 1, 'q');
    OwnedPath ok(Parse(fits, PathSyntaxPosix));
    MgStatus status;
    EXPECT_EQ(Native(ok, PathSyntaxPosix, &status), fits);
    EXPECT_EQ(status, MgNoError);
    OwnedPath over(Parse(fits + "q", PathSyntaxPosix));
    Native(over, PathSyntaxPosix, &status);
    EXPECT_NE(status, MgNoError);
}

TEST_F(NativeNames, CheckNameWindows) {
    struct Row {
        const char* name;
        int32_t flags;
        const char* found;
    } rows[] = {{"good.txt", 0, ""},
                {"C:", NameBadCharacter, ":"},
                {"a?b*", NameBadCharacter, "*?"},
                {"a\\b/c|d", NameBadCharacter, "|/\\"},
                {"x\"<>\"", NameBadCharacter, "\"><\""},
                {"LPT1", NameReservedDevice, ""},
                {"com9", NameReservedDevice, ""},
                {"COM", 0, ""},
                {"COM10", 0, ""},
                {"clock$", NameReservedDevice, ""},
                {"Nul", NameReservedDevice, ""},
                {"con.txt", 0, ""},
                {"a.", NameTrailingDot, ""},
                {"aux.", NameTrailingDot, ""},
                {"\xE9t\xE9", 0, ""},
                {"a b-c_d", 0, ""}};
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        char found[256] = {};
        char extra[256] = {};
        EXPECT_EQ(FCheckNameSyntax(P(r.name).b, found, extra, PathSyntaxWindows), r.flags);
        EXPECT_STREQ(found, r.found);
    }
}

TEST_F(NativeNames, CheckNamePosixAndNewName) {
    struct Row {
        std::string name;
        int32_t flags;
        const char* found;
    } rows[] = {{"a?b*:\\", 0, ""},
                {"con", 0, ""},
                {"a/b/", NameBadCharacter, "//"},
                {std::string("a\0b", 3), NameBadCharacter, ""},
                {".", NameReservedDevice, ""},
                {"..", NameReservedDevice, ""},
                {"...", 0, ""}};
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        char found[256] = {};
        EXPECT_EQ(FCheckNameSyntax(P(r.name).b, found, nullptr, PathSyntaxPosix), r.flags);
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
