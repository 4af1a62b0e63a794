#include "path_helpers.h"

namespace {

using PathText = PathTest;

struct TextRow {
    const char* text;
    const char* path;  // as Describe prints it
};

// Every text is read with D:\work as the current directory.
const std::vector<TextRow> kWindowsRows = {
    {"", "A:"},
    {"C:\\", "A:C"},
    {"C:", "A:C"},
    {"C:\\a\\b", "A:C|a|b"},
    {"c:\\a\\", "A:c|a"},
    {"C:a", "A:C|a"},
    {"C::\\a", "A:C|a"},
    {"abc:\\d", "A:abc|d"},
    {"C:\\a\\\\b", "A:C|a|b"},
    {"C:\\a:b", "A:C|a:b"},
    {"\\a", "A:D|a"},
    {"\\", "A:D"},
    {":a", "A:D|a"},
    {"a", "R:a"},
    {"C", "R:C"},
    {"a\\b\\", "R:a|b"},
    {"a/b", "R:a/b"},
    {".", "R:"},
    {".\\a", "R:a"},
    {"..", "R:.."},
    {"..\\..\\a", "R:..|..|a"},
    {"a\\.\\b", "R:a|b"},
    {"a\\..\\b", "R:b"},
    {"C:\\a\\..", "A:C"},
    {"C:\\..", "A:"},
    {"C:\\..\\a", "A:a"},
    {"C:\\..\\..", "R:.."},
    {"\\\\s\\v", "U:\\\\s\\v"},
    {"\\\\s\\v\\a\\", "U:\\\\s\\v|a"},
    {"\\\\\\s\\\\v", "U:\\\\s\\v"},
    {"\\\\s", "U:\\\\s\\"},
    {"\\\\", "U:\\\\\\"},
    // Not in the grammar's own table, but fixed by its rules.
    {"a b\\ c ", "R:a b| c "},
    {"C:\\a\\...", "A:C|a|..."},
    {".:x", "A:x"}};

const std::vector<TextRow> kPosixRows = {{"", "A:"},
                                         {"/", "A:"},
                                         {"/a/b", "A:a|b"},
                                         {"//a///b//", "A:a|b"},
                                         {"a", "R:a"},
                                         {"a/b/", "R:a|b"},
                                         {".", "R:"},
                                         {"./a", "R:a"},
                                         {"..", "R:.."},
                                         {"../../a", "R:..|..|a"},
                                         {"a/./b", "R:a|b"},
                                         {"a/../b", "R:b"},
                                         {"a/../../b", "R:..|b"},
                                         {"/a/..", "A:"},
                                         {"/..", "A:"},
                                         {"/../a", "A:a"},
                                         {"/a/../../b", "A:b"},
                                         {"a\\b", "R:a\\b"},
                                         {"C:/x", "R:C:|x"},
                                         {"/...", "A:..."}};

TEST_F(PathText, TextToPath) {
    for (int32_t syntax : {PathSyntaxWindows, PathSyntaxPosix}) {
        for (const TextRow& r : syntax == PathSyntaxPosix ? kPosixRows : kWindowsRows) {
            SCOPED_TRACE(testing::Message() << r.text << " in syntax " << syntax);
            OwnedPath p(Parse(r.text, syntax));
            EXPECT_EQ(Describe(p), r.path);
            EXPECT_EQ(MemHandleSize(p), FPathByteSize(p));
        }
    }
    // Appended, as GCC 12 at -O3 warns falsely (-Wrestrict) about "/" + std::string.
    OwnedPath cut(Parse(std::string(1, '/').append(256, 'x'), PathSyntaxPosix));
    EXPECT_EQ(Describe(cut), "A:" + std::string(255, 'x'));
}

TEST_F(PathText, CurrentDriveIsTheFirstByteOfTheDirectoryUppercased) {
    plat::SetCurrentDirectoryForTest("e:\\x");
    OwnedPath p(Parse("\\a"));
    EXPECT_EQ(Describe(p), "A:E|a");
    // On a share the volume is the backslash itself, which makes the path a network one.
    plat::SetCurrentDirectoryForTest("\\\\s\\v");
    OwnedPath q(Parse("\\a"));
    EXPECT_EQ(Describe(q), "U:\\|a");
}

TEST_F(PathText, ReadsOnlyTheGivenLengthAndReusesTheVariable) {
    const char text[] = "C:\\abc\\def";
    OwnedPath p;
    ASSERT_EQ(FTextToPathSyntax(reinterpret_cast<const uint8_t*>(text), 5, &p.p, PathSyntaxWindows),
              MgNoError);
    EXPECT_EQ(Describe(p), "A:C|ab");
    Path before = p.p;
    ASSERT_EQ(
        FTextToPathSyntax(reinterpret_cast<const uint8_t*>(text), -3, &p.p, PathSyntaxWindows),
        MgNoError);
    EXPECT_EQ(p.p, before);
    EXPECT_EQ(Describe(p), "A:");

    // Null text empties an existing path and leaves an empty variable empty.
    Path none = nullptr;
    EXPECT_EQ(FTextToPath(nullptr, 4, &none), MgNoError);
    EXPECT_EQ(none, nullptr);
    OwnedPath q(Parse("a\\b"));
    EXPECT_EQ(FTextToPath(nullptr, 4, &q.p), MgNoError);
    EXPECT_EQ(Describe(q), "A:");
    OwnedPath r(Parse("a"));
    EXPECT_EQ(FLStrToPath(nullptr, &r.p), MgNoError);
    EXPECT_EQ(Describe(r), "A:");

    // A count must fit the path's 16 bits.
    std::string deep;
    for (int i = 0; i < 32767; ++i) deep += "a/";
    OwnedPath deepest(Parse(deep, PathSyntaxPosix));
    EXPECT_EQ(FPathDepth(deepest), 32767);
    deep += "a";
    EXPECT_EQ(FTextToPathSyntax(reinterpret_cast<const uint8_t*>(deep.data()),
                                static_cast<int32_t>(deep.size()), &deepest.p, PathSyntaxPosix),
              MgBadArgument);

    plat::FailAllocationAt(1);
    Path fails = nullptr;
    EXPECT_EQ(
        FTextToPathSyntax(reinterpret_cast<const uint8_t*>(text), 10, &fails, PathSyntaxWindows),
        MgNoMemory);
    EXPECT_EQ(fails, nullptr);
}

TEST_F(PathText, LongNamesAreCut) {
    for (int length : {255, 256, 300}) {
        SCOPED_TRACE(length);
        OwnedPath p(Parse("C:\\" + std::string(length, 'n') + "\\z"));
        EXPECT_EQ(Describe(p), "A:C|" + std::string(length < 255 ? length : 255, 'n') + "|z");
    }
    // Server cut to 251 leaves room for one byte of share.
    OwnedPath unc(Parse("\\\\" + std::string(300, 's') + "\\share\\x"));
    EXPECT_EQ(Describe(unc), "U:\\\\" + std::string(251, 's') + "\\s|x");
    // A long share shrinks to what the server leaves.
    OwnedPath share(Parse("\\\\srv\\" + std::string(300, 'v')));
    EXPECT_EQ(Describe(share), "U:\\\\srv\\" + std::string(249, 'v'));
    // A long server and no share: the stored length matches the bytes stored.
    OwnedPath alone(Parse("\\\\" + std::string(300, 's')));
    EXPECT_EQ(Describe(alone), "U:\\\\" + std::string(251, 's') + "\\");
    EXPECT_EQ(MemHandleSize(alone), 4 + 1 + 254);
}

TEST_F(PathText, PathToText) {
    constexpr int32_t W = PathSyntaxWindows, X = PathSyntaxPosix;
    struct Row {
        const char* in;
        int32_t from, to;
        const char *out, *portable;
    } rows[] = {{"C:", W, W, "C:\\", "/C"},
                {"C:\\a", W, W, "C:\\a", "/C/a"},
                {"..\\a", W, W, "..\\a", "../a"},
                {".", W, W, ".", "."},
                {"", W, W, "", "/"},
                {"\\\\s\\v\\a", W, W, "\\\\s\\v\\a", "\\\\s\\v/a"},
                {"a\\b", W, W, "a\\b", "a/b"},
                {"C:\\a\\b:c", W, W, "C:\\a\\b:c", "/C/a/b:c"},
                {"\\\\s\\v\\a", W, X, "\\\\s\\v/a", "\\\\s\\v/a"},
                {"C:\\a", W, X, "/C/a", "/C/a"},
                {"/", X, X, "/", "/"},
                {"/a/b", X, X, "/a/b", "/a/b"},
                {"a/b", X, X, "a/b", "a/b"},
                {".", X, X, ".", "."},
                {"../a", X, X, "../a", "../a"}};
    for (const auto& r : rows) {
        SCOPED_TRACE(testing::Message() << r.in << " " << r.from << " to " << r.to);
        OwnedPath p(Parse(r.in, r.from));
        EXPECT_EQ(Text(p, r.to), r.out);
        if (r.from == r.to) {
            // The text reads back as the same path.
            OwnedPath back(Parse(r.out, r.to));
            EXPECT_TRUE(FPathSame(p, back));
        }
        EXPECT_EQ(PortableText(p), r.portable);
    }
}

TEST_F(PathText, NotAPathAndNullTexts) {
    uint8_t mem[64] = {};
    auto* l = reinterpret_cast<LStr*>(mem);
    OwnedPath none(FMakeNoPath(nullptr));
    l->count = -1;
    EXPECT_EQ(FPathTextInto(none, l), MgNoError);
    EXPECT_EQ(l->count, 0);
    l->count = 7;  // writing leaves the length as it was
    EXPECT_EQ(FPathTextInto(nullptr, l), MgNoError);
    EXPECT_EQ(l->count, 7);
    EXPECT_EQ(FPathPortableTextInto(nullptr, l), MgBadArgument);
    EXPECT_EQ(FPathPortableTextInto(none, l), MgNoError);
    Path corrupt = MemNewHandleClear(4);
    (*corrupt)[0] = 9;
    EXPECT_EQ(FPathTextInto(corrupt, l), MgBadArgument);
    FPathRelease(corrupt);
    // A network path with no names measures one byte and writes none.
    OwnedPath unc(FBuildPath(nullptr, PathKindUNC, nullptr));
    l->count = -1;
    EXPECT_EQ(FPathPortableTextInto(unc, l), MgNoError);
    EXPECT_EQ(l->count, 1);
    l->count = 0;
    EXPECT_EQ(FPathPortableTextInto(unc, l), MgNoError);
    EXPECT_EQ(l->count, 0);
}

TEST_F(PathText, HandleAndBufferForms) {
    OwnedPath p(Parse("/x/yz", PathSyntaxPosix));
    std::string host = Text(p, FHostPathSyntax());
    Handle text = nullptr;
    ASSERT_EQ(FPathToPortableLStr(p, &text), MgNoError);
    EXPECT_EQ(MemHandleSize(text), 4 + 5);
    EXPECT_EQ(memcmp(*text + 4, "/x/yz", 5), 0);
    MemDisposeHandle(text);
    Handle c = FPathToCHandle(p);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(*c)), host);
    EXPECT_EQ(MemHandleSize(c), static_cast<int32_t>(host.size()) + 1);
    MemDisposeHandle(c);
    char* buffer = nullptr;
    ASSERT_EQ(FPathToCBuffer(p, &buffer), MgNoError);
    EXPECT_EQ(std::string(buffer), host);
    MemDisposePtr(reinterpret_cast<Ptr>(buffer));
    // Too long for the buffer: 2, and the block stays, empty.
    OwnedPath longer(FBuildPath(nullptr, PathKindRelative, P(std::string(200, 'a')).b,
                                P(std::string(100, 'b')).b, nullptr));
    EXPECT_EQ(FPathToCBuffer(longer, &buffer), MgNoMemory);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer[0], 0);
    MemDisposePtr(reinterpret_cast<Ptr>(buffer));
    plat::FailAllocationAt(1);
    Handle failed = nullptr;
    EXPECT_EQ(FPathToCompactLStr(p, &failed), MgNoMemory);
    EXPECT_EQ(failed, nullptr);
}

}  // namespace
