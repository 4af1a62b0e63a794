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

// Shortcut files of a made-up host: name -> target; and the names it was asked about.
std::map<std::string, std::string> gTargets;
std::vector<std::string> gAsked;

bool Resolve(char* name) {
    gAsked.push_back(name);
    auto it = gTargets.find(name);
    if (it == gTargets.end()) return false;
    strcpy(name, it->second.c_str());
    return true;
}

// Each level of a name is resolved in turn; only names ending in ".lnk", case aside, are
// asked about, and a prefix or result of 260 bytes or more is dropped. Every name made for the
// host has its shortcuts followed.
TEST(Shortcuts, WalkFollowsEveryLevel) {
    gTargets = {{N("/a/dir.lnk"), N("/real")},
                {N("/real/sub.LNK"), N("/other/")},
                {N("/a/.LNK"), N("/dot")},
                {N("/long.lnk"), N("/") + std::string(254 - N("/").size(), 'l')},  // 254 bytes
                {N("/a/file.lnk"), N("/b/target.txt")}};
    plat::SetShortcutResolverForTest(Resolve);
    // In, out, changed, names handed to the host (candidates only), and the call.
    const std::tuple<const char*, const char*, int32_t, int, int32_t (*)(char*)> rows[] = {
        {"/a/b.txt", "/a/b.txt", 0, 0, FResolveShortcutPath},
        {"/a/dir.lnk/x.txt", "/real/x.txt", 1, 1, FResolveShortcutPath},
        {"/a/dir.lnk/sub.LNK/f", "/other/f", 1, 2, FResolveShortcutPath},  // one separator
        {"/a/dir.lnk/sub.LNK", "/other/", 1, 2, FResolveShortcutPath},
        {"/a/.LNK/f", "/dot/f", 1, 1, FResolveShortcutPath},
        {"/a/file.lnk", "/b/target.txt", 1, 1, FResolveShortcutPath},
        {"/a/unknown.lnk/f", "/a/unknown.lnk/f", 0, 1, FResolveShortcutPath},
        {"/long.lnk/x.lnk/f", "/long.lnk/x.lnk/f", 0, 1, FResolveShortcutPath},  // x at 260
        {"/A/DIR.LNK", "/A/DIR.LNK", 0, 1, FResolveShortcut},                    // no such shortcut
        {"/a/dir.lnk", "/real", 1, 1, FResolveShortcut}};
    for (const auto& [in, out, changed, asked, resolve] : rows) {
        gAsked.clear();
        char name[FNativeNameBufferSize] = {};
        strcpy(name, N(in).c_str());
        const int32_t got = resolve(name);
        // Past the new name's NUL the buffer holds what it held.
        const std::string o = N(out), i = N(in), rest = name + o.size() + 1;
        EXPECT_EQ(
            std::make_tuple(got, std::string(name), int(gAsked.size()), rest),
            std::make_tuple(changed, o, asked, i.size() > o.size() ? i.substr(o.size() + 1) : ""))
            << in;
    }
    char name[FNativeNameBufferSize] = "lnk";
    // "lnk" is too short to be asked about.
    EXPECT_TRUE(FResolveShortcut(name) == 0 && gAsked.size() == 1u);
    Path p = nullptr;
    const std::string text = N("/a/dir.lnk/x");
    ASSERT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &p),
              MgNoError);
    EXPECT_TRUE(FPathToNativeName(p, name) == MgNoError && name == N("/real/x"));
    FPathRelease(p);
    plat::ResetFaults();
}

// Without shortcut files of the host nothing is replaced, and no name has a universal form
// beyond a copy of itself.
TEST(NoShortcuts, NamesStayAndUniversalIsACopy) {
    char name[FNativeNameBufferSize] = "/a/dir.lnk/x.lnk";
    EXPECT_TRUE(FResolveShortcutPath(name) == 0 && std::string(name) == "/a/dir.lnk/x.lnk");
    Path p = nullptr, out = nullptr;
    ASSERT_EQ(FTextToPathSyntax(reinterpret_cast<const uint8_t*>("/a/b"), 4, &p, PathSyntaxPosix),
              MgNoError);
    int64_t blocks = plat::LiveBlockCount();
    // The new path and nothing else; then into the same handle.
    EXPECT_EQ(FPathToUniversal(p, &out), MgNoError);
    EXPECT_TRUE(plat::LiveBlockCount() == blocks + 1 && out != p && FPathSame(out, p));
    plat::FailAllocationAt(1);  // not even the text: still a copy
    EXPECT_TRUE(FPathToUniversal(p, &out) == MgNoError && FPathSame(out, p));
    FPathRelease(out);
    FPathRelease(p);
}

}  // namespace
