#include "path_helpers.h"

namespace {

using PathValues = PathTest;

// A raw block of any kind and names ("" is an up-level component), never normalised.
Path Raw(int16_t kind, std::vector<std::string> names = {}) {
    Path p = MemNewHandleClear(4);
    int16_t count = static_cast<int16_t>(names.size());
    memcpy(*p, &kind, 2);
    memcpy(*p + 2, &count, 2);
    for (const std::string& n : names) {
        int32_t size = MemHandleSize(p);
        MemResizeHandle(p, size + 1 + static_cast<int32_t>(n.size()));
        (*p)[size] = static_cast<uint8_t>(n.size());
        memcpy(*p + size + 1, n.data(), n.size());
    }
    return p;
}

TEST_F(PathValues, ValidityTests) {
    struct Row {
        int16_t kind, count;
        int valid, usable, rooted;
    } rows[] = {{0, 0, 1, 1, 1},  {1, 0, 1, 1, 0},  {3, 0, 1, 1, 1}, {2, 0, 1, 0, 0},
                {2, -5, 1, 0, 0}, {0, -1, 0, 0, 0}, {4, 0, 0, 0, 0}, {-1, 0, 0, 0, 0}};
    for (const Row& r : rows) {
        OwnedPath p(Raw(r.kind));
        memcpy(*p.p + 2, &r.count, 2);
        SCOPED_TRACE(testing::Message() << "kind " << r.kind << " count " << r.count);
        EXPECT_EQ(FPathValid(p), r.valid);
        EXPECT_EQ(FPathUsable(p), r.usable);
        EXPECT_EQ(FPathRooted(p), r.rooted);
        EXPECT_EQ(FPathHasNoNames(p), r.usable);
        EXPECT_EQ(FPathDepth(p), r.usable ? r.count : -1);
    }
    EXPECT_FALSE(FPathValid(nullptr));
    EXPECT_EQ(FPathDepth(nullptr), -1);
}

TEST_F(PathValues, Construction) {
    OwnedPath p(Parse("C:\\alpha\\beta"));
    Path var = p;
    ASSERT_EQ(FPathClone(&var), MgNoError);
    OwnedPath clone(var);
    EXPECT_NE(clone.p, p.p);
    EXPECT_EQ(Describe(clone), "A:C|alpha|beta");
    EXPECT_EQ(FEmptyPath(p), p.p);
    EXPECT_EQ(MemHandleSize(p), 4);
    EXPECT_EQ(Describe(p), "A:");
    EXPECT_EQ(FPathAssign(p, clone), MgNoError);
    EXPECT_EQ(Describe(p), "A:C|alpha|beta");
    EXPECT_EQ(Describe(FMakeNoPath(p)), "N:");
    OwnedPath bad(Raw(7));
    EXPECT_EQ(FPathAssign(p, bad), MgBadArgument);

    EXPECT_EQ(FBuildPath(p, PathKindRelative, P("").b, P("y").b, nullptr), p.p);
    EXPECT_EQ(Describe(p), "R:..|y");
    EXPECT_EQ(FBuildPath(nullptr, 4, P("a").b, nullptr), nullptr);
    // An absolute path can't start one level up; the path passed in is released.
    int32_t before = gBytesAllocated;
    EXPECT_EQ(FBuildPath(clone, PathKindAbsolute, P("").b, nullptr), nullptr);
    EXPECT_LT(gBytesAllocated, before);
    clone.p = nullptr;

    plat::FailAllocationAt(1);
    EXPECT_EQ(FEmptyPath(nullptr), nullptr);
}

TEST_F(PathValues, Components) {
    OwnedPath p(Parse("C:\\one\\two"));
    EXPECT_EQ(FPathByteSize(p), 4 + 2 + 4 + 4);
    uint8_t name[256];
    EXPECT_EQ(FLastName(p, name), MgNoError);
    EXPECT_EQ(memcmp(name, "\003two", 4), 0);
    EXPECT_EQ(FNameAt(p, -4, name), MgNoError);  // a negative index reads the first
    EXPECT_EQ(memcmp(name, "\001C", 2), 0);
    EXPECT_EQ(FNameAt(p, 3, name), MgBadArgument);

    EXPECT_EQ(FReplaceNameAt(p, P("a-much-longer-name").b, 1), MgNoError);
    EXPECT_EQ(Describe(p), "A:C|a-much-longer-name|two");
    EXPECT_EQ(FReplaceNameAt(p, P("x").b, 1), MgNoError);
    EXPECT_EQ(Describe(p), "A:C|x|two");
    EXPECT_EQ(MemHandleSize(p), FPathByteSize(p));
    EXPECT_EQ(FReplaceNameAt(p, P("y").b, 3), MgBadArgument);

    EXPECT_EQ(FAppendName(p, P("").b), MgBadArgument);
    OwnedPath rel(Parse("a"));
    EXPECT_EQ(FAppendName(rel, P("").b), MgNoError);
    EXPECT_EQ(Describe(rel), "R:a|..");  // not normalised
    plat::FailAllocationAt(1);
    EXPECT_EQ(FAppendName(p, P("a-name-long-enough-to-move").b), MgNoMemory);
    EXPECT_EQ(Describe(p), "A:C|x|two");
}

TEST_F(PathValues, DirNameAndRoot) {
    // Where names have no volume, an absolute path's root is "/", the path with no names.
    const bool posix = FHostPathSyntax() == PathSyntaxPosix;
    struct Row {
        const char *text, *parent, *root, *posixRoot;
    } rows[] = {{"C:\\", "A:", "A:C", "A:"},
                {"C:\\a\\b", "A:C|a", "A:C", "A:"},
                {"a", "R:", nullptr, nullptr},
                {"..\\..", "R:..", nullptr, nullptr},
                {"\\\\s\\v", nullptr, "U:\\\\s\\v", "U:\\\\s\\v"},
                {"\\\\s\\v\\a", "U:\\\\s\\v", "U:\\\\s\\v", "U:\\\\s\\v"},
                {"", nullptr, nullptr, "A:"}};
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        OwnedPath p(Parse(r.text));
        OwnedPath out(FMakeNoPath(nullptr));
        EXPECT_EQ(FDirName(p, out), r.parent ? MgNoError : MgBadArgument);
        EXPECT_EQ(Describe(out), r.parent ? r.parent : "N:");
        const char* root = posix ? r.posixRoot : r.root;
        EXPECT_EQ(FRootOf(p, out), root ? MgNoError : MgBadArgument);
        EXPECT_EQ(FRootOf(p, p), root ? MgNoError : MgBadArgument);  // in place
        if (root) {
            EXPECT_EQ(Describe(out), root);
            EXPECT_EQ(Describe(p), root);
        }
    }
}

TEST_F(PathValues, Normalise) {
    // Windows rules let a rooted path climb out of its volume and turn relative; under POSIX
    // rules the root is its own parent.
    struct Row {
        int16_t kind;
        std::vector<std::string> names;
        const char *windows, *posix;
    } rows[] = {{1, {"a", "b", "", "", "", "c"}, "R:..|c", "R:..|c"},
                {0, {"C", ""}, "A:", "A:"},
                {0, {"C", "", "x"}, "A:x", "A:x"},
                {0, {"C", "", "", "x"}, "R:..|x", "A:x"},
                {0, {"", "", "a", "", "b"}, "R:..|..|b", "A:b"},
                {1, {"", "", "a"}, "R:..|..|a", "R:..|..|a"},
                {0, {"C", "", "\\\\s\\v", "a"}, "U:\\\\s\\v|a", "U:\\\\s\\v|a"},
                {3, {"\\\\s\\v", "", "x"}, "A:x", "A:x"}};
    for (const Row& r : rows) {
        for (int32_t syntax : {PathSyntaxWindows, PathSyntaxPosix}) {
            OwnedPath p(Raw(r.kind, r.names));
            EXPECT_EQ(FPathNormalizeSyntax(p, syntax), MgNoError);
            EXPECT_EQ(Describe(p), syntax == PathSyntaxPosix ? r.posix : r.windows);
            EXPECT_EQ(MemHandleSize(p), FPathByteSize(p));
        }
        OwnedPath host(Raw(r.kind, r.names));
        EXPECT_EQ(FPathNormalize(host), MgNoError);
        EXPECT_EQ(Describe(host), FHostPathSyntax() == PathSyntaxPosix ? r.posix : r.windows);
    }
    EXPECT_EQ(FPathNormalize(nullptr), MgBadArgument);
}

// A count that runs past the block: the missing components read as up-level components that
// take no bytes, collapse names like any other and, when left over, stay counted with the
// bytes of the first of them.
TEST_F(PathValues, NormaliseACountBeyondTheBlock) {
    struct Row {
        std::vector<std::string> names;
        int16_t count;
        std::string tail;  // bytes behind the names
        int16_t countAfter;
        std::string namesAfter;
    } rows[] = {{{"a", "b"}, 3, "", 1, std::string("\1a", 2)},
                {{"a", "b"}, 5, "", 1, ""},
                {{"", "x", ""}, 6, "", 4, std::string(1, '\0')},
                {{"a"}, 3, "\7xy", 1, "\7xy"},
                {{}, 2, "", 2, ""}};
    for (const Row& r : rows) {
        OwnedPath p(Raw(1, r.names));
        int32_t size = MemHandleSize(p);
        MemResizeHandle(p, size + static_cast<int32_t>(r.tail.size()));
        memcpy(*p.p + size, r.tail.data(), r.tail.size());
        memcpy(*p.p + 2, &r.count, 2);
        EXPECT_EQ(FPathNormalizeSyntax(p, PathSyntaxWindows), MgNoError);
        EXPECT_EQ(FPathDepth(p), r.countAfter);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(*p.p) + 4, MemHandleSize(p) - 4),
                  r.namesAfter);
    }
}

TEST_F(PathValues, RelativeFromAndJoinAreInverse) {
    struct Row {
        const char *base, *target, *rel;
    } rows[] = {{"C:\\a\\b", "C:\\a\\c\\d", "R:..|c|d"},
                {"C:\\a", "D:\\b", "R:..|..|D|b"},
                {"C:\\a\\b", "C:\\a\\b", "R:"},
                {"C:\\a\\b\\c", "C:\\a", "R:..|.."},
                {"c:\\A", "C:\\a\\x", "R:x"},
                {"\\\\s\\v\\a", "C:\\x", "R:..|..|C|x"}};
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.base) + " -> " + r.target);
        OwnedPath base(Parse(r.base));
        OwnedPath target(Parse(r.target));
        OwnedPath joined(FEmptyPath(nullptr));
        ASSERT_EQ(FPathRelativeFrom(base, target, target), MgNoError);  // over its own input
        EXPECT_EQ(Describe(target), r.rel);
        ASSERT_EQ(FPathJoin(base, target, joined), MgNoError);
        OwnedPath expected(Parse(r.target));
        EXPECT_TRUE(FPathSame(joined, expected)) << Describe(joined);
    }
}

TEST_F(PathValues, JoinRules) {
    OwnedPath base(Parse("C:\\a"));
    OwnedPath out(FEmptyPath(nullptr));
    // The volume goes like any name; one more level climbs out of the volumes.
    OwnedPath two(Parse("..\\..\\x"));
    EXPECT_EQ(FPathJoin(base, two, out), MgNoError);
    EXPECT_EQ(Describe(out), "A:x");
    OwnedPath three(Parse("..\\..\\..\\x"));
    EXPECT_EQ(FPathJoin(base, three, out), MgNoError);
    EXPECT_EQ(Describe(out), FHostPathSyntax() == PathSyntaxPosix ? "A:x" : "R:..|x");
    // POSIX text, joins and relative paths agree: nothing climbs above the root.
    if (FHostPathSyntax() == PathSyntaxPosix) {
        OwnedPath a(Parse("/a", PathSyntaxPosix));
        OwnedPath up(Parse("../../b", PathSyntaxPosix));
        EXPECT_EQ(FPathJoin(a, up, out), MgNoError);
        OwnedPath b(Parse("/a/../../b", PathSyntaxPosix));
        EXPECT_EQ(Describe(out), "A:b");
        EXPECT_TRUE(FPathSame(out, b));
        EXPECT_EQ(FPathRelativeFrom(a, b, out), MgNoError);
        EXPECT_EQ(Describe(out), "R:..|b");
    }
    OwnedPath self(Parse("x\\y"));
    EXPECT_EQ(FPathJoin(self, self, self), MgNoError);
    EXPECT_EQ(Describe(self), "R:x|y|x|y");
    // A rooted operand joins only onto the empty path.
    OwnedPath unc(Parse("\\\\s\\v\\a"));
    EXPECT_EQ(FPathJoin(FEmptyPath(out), unc, out), MgNoError);
    EXPECT_EQ(Describe(out), "U:\\\\s\\v|a");
    EXPECT_EQ(FPathJoin(base, unc, out), MgBadArgument);
    EXPECT_EQ(FPathRelativeFrom(two, base, out), MgBadArgument);
}

TEST_F(PathValues, CompareTrimAndOrder) {
    struct Row {
        const char *a, *b;
        int32_t difference;
        int order;  // sign
        const char* trimmed;
    } rows[] = {{"C:\\a", "c:\\A", 0, 0, "A:C|a"},        {"C:\\a", "C:\\a\\b", 3, -1, "A:C|a"},
                {"C:\\a\\b", "C:\\a", 3, 1, "A:C|a"},     {"C:\\a", "a", -1, -1, "A:"},
                {"C:\\a\\b", "C:\\A\\c", 3, -1, "A:C|a"}, {"C:\\b", "\\\\s\\v", -1, 1, "A:"},
                {"C:\\z", "D:\\a", 1, -1, "A:"}};
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.a) + " vs " + r.b);
        OwnedPath a(Parse(r.a));
        OwnedPath b(Parse(r.b));
        EXPECT_EQ(FPathFirstDifference(a, b), r.difference);
        EXPECT_EQ(FPathSame(a, b), r.difference == 0 ? 1 : 0);
        int order = FPathOrder(a, b);
        EXPECT_EQ((order > 0) - (order < 0), r.order);
        EXPECT_EQ(FPathTrimToCommon(a, b), MgNoError);
        EXPECT_EQ(Describe(a), r.trimmed);
        EXPECT_EQ(MemHandleSize(a), FPathByteSize(a));
    }
    OwnedPath p(Parse("C:\\a"));
    EXPECT_TRUE(FPathSame(nullptr, nullptr));
    EXPECT_EQ(FPathFirstDifference(p, nullptr), -1);
    EXPECT_EQ(FPathOrder(nullptr, p), -1);
    OwnedPath n1(FMakeNoPath(nullptr));
    OwnedPath n2(Raw(PathKindNone, {"junk"}));
    EXPECT_EQ(FPathOrder(n1, n2), 0);
    EXPECT_EQ(FPathOrder(p, n1), -1);
}

TEST_F(PathValues, ByteSizeOfACorruptPathIsAFailureReport) {
    OwnedPath bad(Raw(5));
    EXPECT_DEATH(FPathByteSize(bad), "");
}

}  // namespace
