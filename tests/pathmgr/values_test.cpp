#include "path_helpers.h"

namespace {

using PathValues = PathTest;

// A raw block with arbitrary kind and count, for the validity tests.
Path RawPath(int16_t kind, int16_t count) {
    Path p = MemNewHandleClear(4);
    memcpy(*p, &kind, 2);
    memcpy(*p + 2, &count, 2);
    return p;
}

TEST_F(PathValues, ValidityTestsFollowKindAndCount) {
    struct Row {
        int16_t kind, count;
        int valid, usable, rooted;
    } rows[] = {
        {0, 0, 1, 1, 1}, {1, 0, 1, 1, 0}, {3, 0, 1, 1, 1},  {2, 0, 1, 0, 0},
        {2, -5, 1, 0, 0}, {0, -1, 0, 0, 0}, {4, 0, 0, 0, 0}, {-1, 0, 0, 0, 0},
    };
    for (const Row& r : rows) {
        OwnedPath p(RawPath(r.kind, r.count));
        SCOPED_TRACE(testing::Message() << "kind " << r.kind << " count " << r.count);
        EXPECT_EQ(FPathValid(p), r.valid);
        EXPECT_EQ(FPathUsable(p), r.usable);
        EXPECT_EQ(FPathRooted(p), r.rooted);
        EXPECT_EQ(FPathHasNoNames(p), r.usable);
        EXPECT_EQ(FPathIsKind(p, r.kind), r.usable);
        EXPECT_EQ(FPathDepth(p), r.usable ? r.count : -1);
    }
    EXPECT_FALSE(FPathValid(nullptr));
    EXPECT_FALSE(FPathUsable(nullptr));
    EXPECT_EQ(FPathDepth(nullptr), -1);
}

TEST_F(PathValues, EmptyAndNoPathReuseAnyHandle) {
    OwnedPath big(Parse("C:\\alpha\\beta"));
    EXPECT_EQ(FEmptyPath(big), big.p);
    EXPECT_EQ(MemHandleSize(big), 4);
    EXPECT_EQ(Describe(big), "A:");
    EXPECT_EQ(FMakeNoPath(big), big.p);
    EXPECT_EQ(Describe(big), "N:");
    OwnedPath fresh(FEmptyPath(nullptr));
    EXPECT_EQ(Describe(fresh), "A:");
    EXPECT_EQ(Text(fresh), "");
    EXPECT_EQ(FPathRelease(nullptr), MgNoError);

    plat::FailAllocationAt(1);
    EXPECT_EQ(FEmptyPath(nullptr), nullptr);
}

TEST_F(PathValues, CloneAndAssignCopyTheBlock) {
    OwnedPath a(Parse("C:\\a\\b"));
    Path var = a;
    ASSERT_EQ(FPathClone(&var), MgNoError);
    OwnedPath clone(var);
    EXPECT_NE(clone.p, a.p);
    EXPECT_EQ(Describe(clone), "A:C|a|b");

    OwnedPath dst(FEmptyPath(nullptr));
    EXPECT_EQ(FPathAssign(dst, a), MgNoError);
    EXPECT_EQ(Describe(dst), "A:C|a|b");
    EXPECT_EQ(FPathAssign(nullptr, a), MgBadArgument);
    OwnedPath bad(RawPath(7, 0));
    EXPECT_EQ(FPathAssign(dst, bad), MgBadArgument);
    Path badVar = bad;
    EXPECT_EQ(FPathClone(&badVar), MgBadArgument);
    EXPECT_EQ(badVar, bad.p);
}

TEST_F(PathValues, BuildPath) {
    OwnedPath p(FBuildPath(nullptr, PathKindAbsolute, P("C").b, P("x").b, nullptr));
    EXPECT_EQ(Describe(p), "A:C|x");
    EXPECT_EQ(MemHandleSize(p), 8);
    EXPECT_EQ(FBuildPath(p, PathKindRelative, P("").b, P("y").b, nullptr), p.p);
    EXPECT_EQ(Describe(p), "R:..|y");
    EXPECT_EQ(FBuildPath(nullptr, 4, P("a").b, nullptr), nullptr);

    // An absolute path can't start with an up-level component; a path passed in is released.
    Path doomed = FBuildPath(nullptr, PathKindRelative, P("a").b, nullptr);
    int64_t liveBefore = gBytesAllocated;
    EXPECT_EQ(FBuildPath(doomed, PathKindAbsolute, P("").b, P("a").b, nullptr), nullptr);
    EXPECT_LT(gBytesAllocated, liveBefore);
}

TEST_F(PathValues, FieldsAndComponents) {
    OwnedPath p(Parse("C:\\one\\two"));
    int32_t kind = -1;
    EXPECT_EQ(FPathKind(p, &kind), MgNoError);
    EXPECT_EQ(kind, PathKindAbsolute);
    EXPECT_EQ(FPathKind(nullptr, &kind), MgBadArgument);
    EXPECT_EQ(kind, PathKindNone);
    EXPECT_EQ(FPathByteSize(p), 4 + 2 + 4 + 4);

    uint8_t name[256];
    EXPECT_EQ(FLastName(p, name), MgNoError);
    EXPECT_EQ(std::string((char*)name + 1, name[0]), "two");
    EXPECT_EQ(FNameAt(p, 1, name), MgNoError);
    EXPECT_EQ(std::string((char*)name + 1, name[0]), "one");
    EXPECT_EQ(FNameAt(p, -4, name), MgNoError);  // negative reads the first
    EXPECT_EQ(std::string((char*)name + 1, name[0]), "C");
    EXPECT_EQ(FNameAt(p, 3, name), MgBadArgument);

    Handle h = MemNewHandle(0);
    EXPECT_EQ(FLastNameHandle(p, h), MgNoError);
    EXPECT_EQ(MemHandleSize(h), 4);
    EXPECT_EQ(memcmp(*h, "\003two", 4), 0);
    MemDisposeHandle(h);

    OwnedPath empty(FEmptyPath(nullptr));
    name[0] = 9;
    EXPECT_EQ(FLastName(empty, name), MgBadArgument);
    EXPECT_EQ(name[0], 0);

    EXPECT_EQ(FPathSetKind(p, PathKindNone), MgBadArgument);
    EXPECT_EQ(FPathSetKind(p, PathKindRelative), MgNoError);
    EXPECT_EQ(Describe(p), "R:C|one|two");
}

TEST_F(PathValues, ReplaceNameGrowsAndShrinks) {
    OwnedPath p(Parse("C:\\one\\two\\three"));
    EXPECT_EQ(FReplaceNameAt(p, P("a-much-longer-name").b, 1), MgNoError);
    EXPECT_EQ(Describe(p), "A:C|a-much-longer-name|two|three");
    EXPECT_EQ(MemHandleSize(p), FPathByteSize(p));
    EXPECT_EQ(FReplaceNameAt(p, P("x").b, 1), MgNoError);
    EXPECT_EQ(Describe(p), "A:C|x|two|three");
    EXPECT_EQ(MemHandleSize(p), FPathByteSize(p));
    EXPECT_EQ(FReplaceNameAt(p, P("4").b, 3), MgNoError);
    EXPECT_EQ(Describe(p), "A:C|x|two|4");
    EXPECT_EQ(FReplaceNameAt(p, P("y").b, 4), MgBadArgument);
    EXPECT_EQ(FReplaceNameAt(p, P("y").b, -1), MgBadArgument);
    EXPECT_EQ(FReplaceNameAt(p, nullptr, 0), MgBadArgument);
}

TEST_F(PathValues, AppendName) {
    OwnedPath abs(Parse("C:\\a"));
    EXPECT_EQ(FAppendName(abs, P("").b), MgBadArgument);
    EXPECT_EQ(FAppendName(abs, nullptr), MgBadArgument);
    EXPECT_EQ(FAppendName(abs, P("b").b), MgNoError);
    EXPECT_EQ(Describe(abs), "A:C|a|b");

    // Not normalised: the up-level component stays in the value.
    OwnedPath rel(Parse("a"));
    EXPECT_EQ(FAppendName(rel, P("").b), MgNoError);
    EXPECT_EQ(Describe(rel), "R:a|..");

    OwnedPath none(FMakeNoPath(nullptr));
    EXPECT_EQ(FAppendName(none, P("x").b), MgBadArgument);

    plat::FailAllocationAt(1);
    EXPECT_EQ(FAppendName(abs, P("a-name-long-enough-to-move").b), MgNoMemory);
    EXPECT_EQ(Describe(abs), "A:C|a|b");
}

TEST_F(PathValues, DirName) {
    struct Row {
        const char *text, *parent;
        MgStatus status;
    } rows[] = {
        {"C:\\", "A:", MgNoError},       {"C:\\a\\b", "A:C|a", MgNoError},
        {"a", "R:", MgNoError},          {"..\\..", "R:..", MgNoError},
        {"\\\\s\\v", "-", MgBadArgument}, {"\\\\s\\v\\a", "U:\\\\s\\v", MgNoError},
        {"", "-", MgBadArgument},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.text);
        OwnedPath p(Parse(r.text));
        OwnedPath out(FMakeNoPath(nullptr));
        EXPECT_EQ(FDirName(p, out), r.status);
        EXPECT_EQ(Describe(out), r.status == MgNoError ? r.parent : "N:");
        // In place as well.
        EXPECT_EQ(FDirName(p, p), r.status);
        if (r.status == MgNoError) EXPECT_EQ(Describe(p), r.parent);
    }
}

TEST_F(PathValues, RootOf) {
    OwnedPath p(Parse("\\\\s\\v\\a\\b"));
    OwnedPath out(FMakeNoPath(nullptr));
    EXPECT_EQ(FRootOf(p, out), MgNoError);
    EXPECT_EQ(Describe(out), "U:\\\\s\\v");
    OwnedPath q(Parse("C:\\x\\y"));
    EXPECT_EQ(FRootOf(q, q), MgNoError);
    EXPECT_EQ(Describe(q), "A:C");
    EXPECT_EQ(MemHandleSize(q), 6);
    OwnedPath rel(Parse("x\\y"));
    EXPECT_EQ(FRootOf(rel, out), MgBadArgument);
    OwnedPath empty(FEmptyPath(nullptr));
    EXPECT_EQ(FRootOf(empty, out), MgBadArgument);
}

TEST_F(PathValues, NormaliseCollapsesNamesBeforeUpLevels) {
    struct Row {
        const char* in;  // built with FBuildPath-like text: kind letter then names
        const char* out;
    } rows[] = {
        {"R:a|b|..|..|..|c", "R:..|c"}, {"A:C|..", "A:"},      {"A:C|..|x", "A:x"},
        {"A:C|..|..|x", "R:..|x"},       {"A:C|a|..", "A:C"},   {"R:..|..|a", "R:..|..|a"},
        {"A:C|..|\\\\s\\v|a", "U:\\\\s\\v|a"}, {"U:\\\\s\\v|..|x", "A:x"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.in);
        std::string spec = r.in;
        int32_t kind = spec[0] == 'A' ? PathKindAbsolute : spec[0] == 'R' ? PathKindRelative
                                                                          : PathKindUNC;
        OwnedPath p(FBuildPath(nullptr, kind, nullptr));
        size_t pos = 2;
        while (pos < spec.size()) {
            size_t bar = spec.find('|', pos);
            if (bar == std::string::npos) bar = spec.size();
            std::string name = spec.substr(pos, bar - pos);
            // FAppendName refuses an empty name on a rooted path, so go through relative.
            FPathSetKind(p, PathKindRelative);
            ASSERT_EQ(FAppendName(p, P(name == ".." ? "" : name).b), MgNoError);
            pos = bar + 1;
        }
        FPathSetKind(p, kind);
        EXPECT_EQ(FPathNormalize(p), MgNoError);
        EXPECT_EQ(Describe(p), r.out);
        EXPECT_EQ(MemHandleSize(p), FPathByteSize(p));
    }
    EXPECT_EQ(FPathNormalize(nullptr), MgBadArgument);
}

TEST_F(PathValues, JoinAndRelativeFromAreInverse) {
    struct Row {
        const char *base, *target, *rel;
    } rows[] = {
        {"C:\\a\\b", "C:\\a\\c\\d", "R:..|c|d"},
        {"C:\\a", "D:\\b", "R:..|..|D|b"},
        {"C:\\a\\b", "C:\\a\\b", "R:"},
        {"C:\\a\\b\\c", "C:\\a", "R:..|.."},
        {"c:\\A", "C:\\a\\x", "R:x"},
        {"\\\\s\\v\\a", "C:\\x", "R:..|..|C|x"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.base) + " -> " + r.target);
        OwnedPath base(Parse(r.base));
        OwnedPath target(Parse(r.target));
        OwnedPath rel(FEmptyPath(nullptr));
        ASSERT_EQ(FPathRelativeFrom(base, target, rel), MgNoError);
        EXPECT_EQ(Describe(rel), r.rel);
        OwnedPath joined(FEmptyPath(nullptr));
        ASSERT_EQ(FPathJoin(base, rel, joined), MgNoError);
        EXPECT_TRUE(FPathSame(joined, target)) << Describe(joined);
        // Writing the result over the target itself.
        ASSERT_EQ(FPathRelativeFrom(base, target, target), MgNoError);
        EXPECT_EQ(Describe(target), r.rel);
    }
}

TEST_F(PathValues, JoinRules) {
    OwnedPath base(Parse("C:\\a"));
    OwnedPath rel(Parse("..\\..\\x"));
    OwnedPath out(FEmptyPath(nullptr));
    EXPECT_EQ(FPathJoin(base, rel, out), MgNoError);
    EXPECT_EQ(Describe(out), "R:..|x");  // climbed out of the volume
    // Into the relative operand itself, and onto itself.
    OwnedPath b2(Parse("C:\\a"));
    OwnedPath r2(Parse("b\\c"));
    EXPECT_EQ(FPathJoin(b2, r2, r2), MgNoError);
    EXPECT_EQ(Describe(r2), "A:C|a|b|c");
    OwnedPath self(Parse("x\\y"));
    EXPECT_EQ(FPathJoin(self, self, self), MgNoError);
    EXPECT_EQ(Describe(self), "R:x|y|x|y");

    // A rooted operand joins only onto the empty path.
    OwnedPath empty(FEmptyPath(nullptr));
    OwnedPath unc(Parse("\\\\s\\v\\a"));
    EXPECT_EQ(FPathJoin(empty, unc, out), MgNoError);
    EXPECT_EQ(Describe(out), "U:\\\\s\\v|a");
    EXPECT_EQ(FPathJoin(base, unc, out), MgBadArgument);
    OwnedPath none(FMakeNoPath(nullptr));
    EXPECT_EQ(FPathJoin(none, rel, out), MgBadArgument);
    EXPECT_EQ(FPathRelativeFrom(rel, base, out), MgBadArgument);
}

TEST_F(PathValues, TrimToCommon) {
    OwnedPath a(Parse("C:\\a\\b\\c"));
    OwnedPath b(Parse("c:\\A\\B\\x\\y"));
    EXPECT_EQ(FPathTrimToCommon(a, b), MgNoError);
    EXPECT_EQ(Describe(a), "A:C|a|b");
    EXPECT_EQ(MemHandleSize(a), FPathByteSize(a));
    EXPECT_EQ(FPathTrimToCommon(a, b), MgNoError);  // all of a matches now
    EXPECT_EQ(Describe(a), "A:C|a|b");
    OwnedPath rel(Parse("x"));
    EXPECT_EQ(FPathTrimToCommon(a, rel), MgNoError);
    EXPECT_EQ(Describe(a), "A:");
    EXPECT_EQ(FPathTrimToCommon(nullptr, rel), MgBadArgument);
}

TEST_F(PathValues, FirstDifferenceSameAndOrder) {
    struct Row {
        const char *a, *b;
        int32_t difference;
        int order;  // sign
    } rows[] = {
        {"C:\\a", "c:\\A", 0, 0},     {"C:\\a", "C:\\a\\b", 3, -1}, {"C:\\a\\b", "C:\\a", 3, 1},
        {"C:\\a", "a", -1, -1},        {"a", "C:\\a", -1, 1},        {"C:\\a\\b", "C:\\a\\c", 3, -1},
        {"C:\\b", "\\\\s\\v", -1, 1}, {"C:\\z", "D:\\a", 1, -1},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.a) + " vs " + r.b);
        OwnedPath a(Parse(r.a));
        OwnedPath b(Parse(r.b));
        EXPECT_EQ(FPathFirstDifference(a, b), r.difference);
        EXPECT_EQ(FPathSame(a, b), r.difference == 0 ? 1 : 0);
        int order = FPathOrder(a, b);
        EXPECT_EQ((order > 0) - (order < 0), r.order);
    }
    OwnedPath p(Parse("C:\\a"));
    EXPECT_EQ(FPathFirstDifference(p, p), 0);
    EXPECT_EQ(FPathFirstDifference(nullptr, nullptr), 0);
    EXPECT_EQ(FPathFirstDifference(p, nullptr), -1);
    EXPECT_TRUE(FPathSame(nullptr, nullptr));
    EXPECT_EQ(FPathOrder(nullptr, p), -1);
    EXPECT_EQ(FPathOrder(p, nullptr), 1);
    OwnedPath n1(FMakeNoPath(nullptr));
    OwnedPath n2(RawPath(PathKindNone, 9));
    EXPECT_EQ(FPathOrder(n1, n2), 0);
    EXPECT_EQ(FPathOrder(p, n1), -1);
}

TEST_F(PathValues, ByteSizeOfACorruptPathIsAFailureReport) {
    OwnedPath bad(RawPath(5, 0));
    EXPECT_DEATH(FPathByteSize(bad), "");
}

}  // namespace
