#include "mg/shortcut.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "mg/memory.h"
#include "mg/path.h"
#include "platform/faults.h"
#include "support/host_rules.h"
#include "support/memory_env.h"

namespace {

// A native name from its POSIX spelling: on a Windows host under drive C: with backslashes.
std::string N(std::string posix) {
    if (!WindowsHost()) return posix;
    for (char& c : posix)
        if (c == '/') c = '\\';
    return "C:" + posix;
}

// Shortcut files of a made-up host: name -> target.
std::map<std::string, std::string> gTargets;
std::vector<std::string> gAsked;

bool Resolve(char* name) {
    gAsked.push_back(name);
    auto it = gTargets.find(name);
    if (it == gTargets.end()) return false;
    strcpy(name, it->second.c_str());
    return true;
}

class Shortcuts : public ::testing::Test {
  protected:
    void SetUp() override {
        gTargets = {{N("/a/dir.lnk"), N("/real")},
                    {N("/real/sub.LNK"), N("/other/")},
                    {N("/a/.LNK"), N("/dot")},
                    {N("/long.lnk"), N("/") + std::string(259 - N("/").size(), 'l')},  // 259 bytes
                    {N("/a/file.lnk"), N("/b/target.txt")}};
        gAsked.clear();
        plat::SetShortcutResolverForTest(Resolve);
    }
    void TearDown() override { plat::ResetFaults(); }
};

TEST_F(Shortcuts, WalkFollowsEveryLevel) {
    struct Row {
        const char *in, *out;
        int32_t changed;
        int asked;  // names handed to the host, candidates only
    } rows[] = {{"/a/b.txt", "/a/b.txt", 0, 0},
                {"/a/dir.lnk/x.txt", "/real/x.txt", 1, 1},
                {"/a/dir.lnk/sub.LNK/f", "/other/f", 1, 2},  // no doubled separator
                {"/a/dir.lnk/sub.LNK", "/other/", 1, 2},
                {"/a/.LNK/f", "/dot/f", 1, 1},
                {"/a/file.lnk", "/b/target.txt", 1, 1},
                {"/a/unknown.lnk/f", "/a/unknown.lnk/f", 0, 1},
                {"/long.lnk/f", "/long.lnk/f", 0, 1}};  // a result of 260 bytes or more is dropped
    for (const Row& r : rows) {
        SCOPED_TRACE(r.in);
        gAsked.clear();
        char name[FNativeNameBufferSize];
        strcpy(name, N(r.in).c_str());
        EXPECT_EQ(FResolveShortcutPath(name), r.changed);
        EXPECT_EQ(name, N(r.out));
        EXPECT_EQ(int(gAsked.size()), r.asked);
    }
}

TEST_F(Shortcuts, OneNameAndNativeNames) {
    char name[FNativeNameBufferSize];
    strcpy(name, N("/A/DIR.LNK").c_str());
    EXPECT_EQ(FResolveShortcut(name), 0);  // a candidate, but no such shortcut
    strcpy(name, N("/a/dir.lnk").c_str());
    EXPECT_EQ(FResolveShortcut(name), 1);
    EXPECT_EQ(name, N("/real"));
    strcpy(name, "lnk");
    EXPECT_EQ(FResolveShortcut(name), 0);
    EXPECT_EQ(gAsked.size(), 2u);  // "lnk" is too short to be asked about

    // Every name made for the host has its shortcuts followed.
    Path p = nullptr;
    const std::string text = N("/a/dir.lnk/x");
    ASSERT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &p),
              MgNoError);
    ASSERT_EQ(FPathToNativeName(p, name), MgNoError);
    EXPECT_EQ(name, N("/real/x"));
    FPathRelease(p);
}

// Without shortcut files of the host nothing is replaced, and no name has a universal form
// beyond a copy of itself.
TEST(NoShortcuts, NamesStayAndUniversalIsACopy) {
    char name[FNativeNameBufferSize] = "/a/dir.lnk/x.lnk";
    EXPECT_EQ(FResolveShortcutPath(name), 0);
    EXPECT_STREQ(name, "/a/dir.lnk/x.lnk");
    Path p = nullptr;
    ASSERT_EQ(FTextToPathSyntax(reinterpret_cast<const uint8_t*>("/a/b"), 4, &p, PathSyntaxPosix),
              MgNoError);
    Path out = nullptr;
    int64_t blocks = plat::LiveBlockCount();
    EXPECT_EQ(FPathToUniversal(p, &out), MgNoError);
    EXPECT_EQ(plat::LiveBlockCount(), blocks + 1);  // the new path and nothing else
    EXPECT_NE(out, p);
    EXPECT_TRUE(FPathSame(out, p));
    EXPECT_EQ(FPathToUniversal(p, &out), MgNoError);  // into the same handle
    EXPECT_TRUE(FPathSame(out, p));
    FPathRelease(out);
    FPathRelease(p);
}

}  // namespace
