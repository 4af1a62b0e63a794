// Path values: validity, construction, components, normalisation, relative paths and joins,
// comparison; then flattened paths.
#include "path_helpers.h"

namespace {

using namespace mgtest;
using PathValues = PathTest;
using FlatPaths = PathTest;
using Bytes = std::vector<uint8_t>;

// A raw block of any kind and names ("" is an up-level component), never normalised.
Path Raw(int16_t kind, std::vector<std::string> names = {}) {
    const int16_t count = static_cast<int16_t>(names.size());
    std::string bytes(reinterpret_cast<const char*>(&kind), 2);
    bytes.append(reinterpret_cast<const char*>(&count), 2);
    for (const std::string& n : names) bytes += P(n).bytes();
    return NewHandleOf(bytes);
}

TEST_F(PathValues, ValidityConstructionAndComponents) {
    // clang-format off
    const struct { int16_t kind, count; int valid, usable, rooted; } rows[] = {
        {0, 0, 1, 1, 1}, {1, 0, 1, 1, 0}, {3, 0, 1, 1, 1}, {2, 0, 1, 0, 0}, {2, -5, 1, 0, 0},
        {0, -1, 0, 0, 0}, {4, 0, 0, 0, 0}, {-1, 0, 0, 0, 0}};
    // clang-format on
    for (const auto& r : rows) {
        OwnedPath p(Raw(r.kind));
        memcpy(*p.p + 2, &r.count, 2);
        EXPECT_EQ(
            (std::vector<int>{FPathValid(p), FPathUsable(p), FPathRooted(p), FPathHasNoNames(p),
                              FPathDepth(p)}),
            (std::vector<int>{r.valid, r.usable, r.rooted, r.usable, r.usable ? r.count : -1}))
            << "kind " << r.kind << " count " << r.count;
    }
    EXPECT_TRUE(!FPathValid(nullptr) && FPathDepth(nullptr) == -1);
    OwnedPath kind5(Raw(5));
    EXPECT_DEATH(FPathByteSize(kind5), "");
    // An absolute path can't start one level up: the path passed in is released. A negative index
    // reads the first name; appending an up-level name to a relative path doesn't normalise it; a
    // failed growth leaves the path.
    OwnedPath p(Parse("C:\\alpha\\beta")), bad(Raw(7)), q(Parse("C:\\one\\two")), rel(Parse("a"));
    Path var = p;
    ASSERT_EQ(FPathClone(&var), MgNoError);
    OwnedPath clone(var);
    const int32_t before = gBytesAllocated;
    uint8_t name[256];
    auto named = [&](MgStatus status) { return std::to_string(status) + " " + P::Text(name); };
    const P up(""), y("y"), longer("a-much-longer-name"), moving("a-name-long-enough-to-move");
    ExpectRows({Row(clone.p != p.p, 1), Row(Describe(clone), "A:C|alpha|beta"),
                Row(FEmptyPath(p) == p.p, 1), Row(MemHandleSize(p), 4), Row(Describe(p), "A:"),
                Row(After(FPathAssign(p, clone), p), "0 A:C|alpha|beta"),
                Row(Describe(FMakeNoPath(p)), "N:"), Row(FPathAssign(p, bad), MgBadArgument),
                Row(FBuildPath(p, PathKindRelative, up.b, y.b, nullptr) == p.p, 1),
                Row(Describe(p), "R:..|y"), Row(FBuildPath(nullptr, 4, y.b, nullptr) == nullptr, 1),
                Row(FBuildPath(clone, PathKindAbsolute, up.b, nullptr) == nullptr, 1),
                Row(gBytesAllocated < before, 1),
                Row((plat::FailAllocationAt(1), FEmptyPath(nullptr)) == nullptr, 1)});
    ExpectRows(
        {Row(FPathByteSize(q), 4 + 2 + 4 + 4), Row(named(FLastName(q, name)), "0 two"),
         Row(named(FNameAt(q, -4, name)), "0 C"), Row(FNameAt(q, 3, name), MgBadArgument),
         Row(After(FReplaceNameAt(q, longer.b, 1), q), "0 A:C|a-much-longer-name|two"),
         Row(After(FReplaceNameAt(q, P("x").b, 1), q), "0 A:C|x|two"),
         Row(MemHandleSize(q), FPathByteSize(q)), Row(FReplaceNameAt(q, y.b, 3), MgBadArgument),
         Row(FAppendName(q, up.b), MgBadArgument),
         Row(After(FAppendName(rel, up.b), rel), "0 R:a|.."),
         Row(After((plat::FailAllocationAt(1), FAppendName(q, moving.b)), q), "2 A:C|x|two")});
    clone.p = nullptr;
}

TEST_F(PathValues, RootsAndNormalisation) {
    // Where names have no volume, an absolute path's root is "/", the path with no names. The
    // root is also taken in place.
    const bool posix = FHostPathSyntax() == PathSyntaxPosix;
    // clang-format off
    const struct { const char *text, *parent, *root, *posixRoot; } roots[] = {
        {"C:\\", "0 A:", "0 A:C", "0 A:"}, {"C:\\a\\b", "0 A:C|a", "0 A:C", "0 A:"},
        {"a", "0 R:", "1 N:", "1 N:"}, {"..\\..", "0 R:..", "1 N:", "1 N:"},
        {"\\\\s\\v", "1 N:", "0 U:\\\\s\\v", "0 U:\\\\s\\v"},
        {"\\\\s\\v\\a", "0 U:\\\\s\\v", "0 U:\\\\s\\v", "0 U:\\\\s\\v"},
        {"", "1 N:", "1 N:", "0 A:"}};
    // clang-format on
    for (const auto& r : roots) {
        SCOPED_TRACE(r.text);
        OwnedPath p(Parse(r.text)), out(FMakeNoPath(nullptr)), root(FMakeNoPath(nullptr));
        const std::string want = posix ? r.posixRoot : r.root;
        const std::string inPlace = want[0] == '0' ? want : "1 " + Describe(p);
        ExpectRows({Row(After(FDirName(p, out), out), r.parent),
                    Row(After(FRootOf(p, root), root), want),
                    Row(After(FRootOf(p, p), p), inPlace)});
    }
    // Windows rules let a rooted path climb out of its volume and turn relative; under POSIX
    // rules the root is its own parent. The host's normalisation follows the host's syntax. A
    // count that runs past the block: the missing components read as up-level components that
    // take no bytes, collapse names like any other and, when left over, stay counted with the
    // bytes of the first of them.
    // clang-format off
    const struct { int16_t kind; std::vector<std::string> names; const char *windows, *posix; }
    norms[] = {
        {1, {"a", "b", "", "", "", "c"}, "R:..|c", "R:..|c"}, {0, {"C", ""}, "A:", "A:"},
        {0, {"C", "", "x"}, "A:x", "A:x"}, {0, {"C", "", "", "x"}, "R:..|x", "A:x"},
        {0, {"", "", "a", "", "b"}, "R:..|..|b", "A:b"},
        {1, {"", "", "a"}, "R:..|..|a", "R:..|..|a"},
        {0, {"C", "", "\\\\s\\v", "a"}, "U:\\\\s\\v|a", "U:\\\\s\\v|a"},
        {3, {"\\\\s\\v", "", "x"}, "A:x", "A:x"}};
    const struct { std::vector<std::string> names; int16_t count; std::string tail;
        int16_t countAfter; std::string namesAfter; } beyond[] = {
        {{"a", "b"}, 3, "", 1, std::string("\1a", 2)}, {{"a", "b"}, 5, "", 1, ""},
        {{"", "x", ""}, 6, "", 4, std::string(1, '\0')}, {{"a"}, 3, "\7xy", 1, "\7xy"}};
    // clang-format on
    for (const auto& r : norms)
        for (int32_t syntax : {int32_t(PathSyntaxWindows), int32_t(PathSyntaxPosix), -1}) {
            OwnedPath p(Raw(r.kind, r.names));
            const bool posix = (syntax < 0 ? FHostPathSyntax() : syntax) == PathSyntaxPosix;
            EXPECT_EQ(After(syntax < 0 ? FPathNormalize(p) : FPathNormalizeSyntax(p, syntax), p),
                      std::string("0 ") + (posix ? r.posix : r.windows));
            EXPECT_EQ(MemHandleSize(p), FPathByteSize(p));
        }
    EXPECT_EQ(FPathNormalize(nullptr), MgBadArgument);
    for (const auto& r : beyond) {
        OwnedPath p(Raw(1, r.names));
        MemAppendBytes(r.tail.data(), p, static_cast<int32_t>(r.tail.size()));
        memcpy(*p.p + 2, &r.count, 2);
        ExpectRows({Row(FPathNormalizeSyntax(p, PathSyntaxWindows), MgNoError),
                    Row(FPathDepth(p), r.countAfter), Row(Contents(p).substr(4), r.namesAfter)});
    }
}

TEST_F(PathValues, RelativePathsAndJoins) {
    const bool posix = FHostPathSyntax() == PathSyntaxPosix;
    // The relative path is computed over its own input; joined to the base it gives the target.
    // The volume goes like any name; one more level climbs out of the volumes (on POSIX hosts
    // nothing climbs above the root). A path joins onto itself; a rooted operand joins only onto
    // the empty path.
    // clang-format off
    const struct { const char *base, *target, *rel; } joins[] = {
        {"C:\\a\\b", "C:\\a\\c\\d", "R:..|c|d"}, {"C:\\a", "D:\\b", "R:..|..|D|b"},
        {"C:\\a\\b", "C:\\a\\b", "R:"}, {"C:\\a\\b\\c", "C:\\a", "R:..|.."},
        {"c:\\A", "C:\\a\\x", "R:x"}, {"\\\\s\\v\\a", "C:\\x", "R:..|..|C|x"},
        {"C:\\name-the-result-drops-it\\b", "C:\\name-the-result-drops-it\\c\\d\\e", "R:..|c|d|e"}};
    // clang-format on
    for (const auto& r : joins) {
        SCOPED_TRACE(std::string(r.base) + " -> " + r.target);
        OwnedPath base(Parse(r.base)), target(Parse(r.target)), joined(FEmptyPath(nullptr)),
            expected(Parse(r.target));
        EXPECT_EQ(After(FPathRelativeFrom(base, target, target), target),
                  std::string("0 ") + r.rel);
        EXPECT_TRUE(!FPathJoin(base, target, joined) && FPathSame(joined, expected))
            << Describe(joined);
    }
    OwnedPath base(Parse("C:\\a")), out(FEmptyPath(nullptr)), two(Parse("..\\..\\x")),
        three(Parse("..\\..\\..\\x")), self(Parse("x\\y")), unc(Parse("\\\\s\\v\\a"));
    ExpectRows({Row(After(FPathJoin(base, two, out), out), "0 A:x"),
                Row(After(FPathJoin(base, three, out), out), posix ? "0 A:x" : "0 R:..|x"),
                Row(After(FPathJoin(self, self, self), self), "0 R:x|y|x|y"),
                Row(After(FPathJoin(FEmptyPath(out), unc, out), out), "0 U:\\\\s\\v|a"),
                Row(FPathJoin(base, unc, out), MgBadArgument),
                Row(FPathRelativeFrom(two, base, out), MgBadArgument)});
}

TEST_F(PathValues, Comparison) {
    // Paths compare without regard to case; trimming keeps the common part; no path orders with
    // any other no path, and before a path.
    // clang-format off
    const struct { const char *a, *b; int32_t difference; int order; const char* trimmed; }
    compares[] = {
        {"C:\\a", "c:\\A", 0, 0, "A:C|a"}, {"C:\\a", "C:\\a\\b", 3, -1, "A:C|a"},
        {"C:\\a\\b", "C:\\a", 3, 1, "A:C|a"}, {"C:\\a", "a", -1, -1, "A:"},
        {"C:\\b", "\\\\s\\v", -1, 1, "A:"}, {"C:\\z", "D:\\a", 1, -1, "A:"}};
    // clang-format on
    for (const auto& r : compares) {
        SCOPED_TRACE(std::string(r.a) + " vs " + r.b);
        OwnedPath a(Parse(r.a)), b(Parse(r.b));
        const int order = FPathOrder(a, b);
        ExpectRows({Row(FPathFirstDifference(a, b), r.difference),
                    Row(FPathSame(a, b), r.difference == 0),
                    Row((order > 0) - (order < 0), r.order),
                    Row(After(FPathTrimToCommon(a, b), a), std::string("0 ") + r.trimmed),
                    Row(MemHandleSize(a), FPathByteSize(a))});
    }
    OwnedPath cPath(Parse("C:\\a")), n1(FMakeNoPath(nullptr)), n2(Raw(PathKindNone, {"junk"}));
    ExpectRows({Row(FPathSame(nullptr, nullptr), 1), Row(FPathFirstDifference(cPath, nullptr), -1),
                Row(FPathOrder(nullptr, cPath), -1), Row(FPathOrder(n1, n2), 0),
                Row(FPathOrder(cPath, n1), -1)});
}

Bytes Flatten(Path p) {
    int32_t size = FPathFlatten(p, nullptr);
    Bytes out(size + 4, 0xEE);
    EXPECT_EQ(FPathFlatten(p, out.data()), size);
    EXPECT_EQ(out[size], 0xEE) << "wrote beyond its size";
    out.resize(size);
    return out;
}

// "PTH0", the size, kind and count big-endian, then the names; unswapped, the fields keep the
// host's order.
TEST_F(FlatPaths, BytesNullFormFailuresAndOldForm) {
    OwnedPath a(Parse("C:\\a")), unc(Parse("\\\\s\\v"));
    EXPECT_EQ(Flatten(a), (Bytes{'P', 'T', 'H', '0', 0, 0, 0, 8, 0, 0, 0, 2, 1, 'C', 1, 'a'}));
    EXPECT_EQ(Flatten(nullptr), (Bytes{'P', 'T', 'H', '0', 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Flatten(unc),
              (Bytes{'P', 'T', 'H', '0', 0, 0, 0, 10, 0, 3, 0, 1, 5, '\\', '\\', 's', '\\', 'v'}));
    const int16_t fields[4] = {8, 0, 0, 2};  // size 8 as a little-endian word, kind, count
    uint8_t host[16];
    EXPECT_TRUE(FPathFlattenOrder(a, host, 0) == 16 && memcmp(host + 4, &fields, 8) == 0);
    // The null form reads back as no path; its size query says 8, and 8 bytes are enough to read
    // it. A failure gives the bytes available plus one.
    const Bytes null = Flatten(nullptr), flat = Flatten(OwnedPath(Parse("C:\\a")));
    Path var = nullptr;
    OwnedPath existing(Parse("C:\\a"));
    ExpectRows({Row(FPathUnflatten(null.data(), &var), 12), Row(var == nullptr, 1),
                Row(FPathUnflatten(null.data(), nullptr), 8),
                Row(FPathUnflattenOrder(null.data(), &var, 8, 1), 12),
                Row(FPathUnflattenOrder(null.data(), &existing.p, 12, 1), 13)});
    for (int32_t available : {0, 3, 7, 15}) {
        OwnedPath none;
        EXPECT_EQ(FPathUnflattenOrder(flat.data(), &none.p, available, 1), available + 1);
    }
    ExpectRows({Row((plat::FailAllocationAt(1), FPathUnflattenOrder(flat.data(), &var, 16, 1)), 17),
                Row(var == nullptr, 1)});
    // The old form: a size, a count and the names, with odd and even component sizes; it leaves
    // slack behind the names. L below 4 is no path at all, and an error when one was expected. A
    // component that runs past the data fails, leaving the partial handle to the caller.
    const Bytes relative{0, 0, 0, 8, 0, 0, 0, 2, 0, 0, 1, 'a'}, none{0, 0, 0, 4, 0, 0, 0, 0},
        absolute{0, 0, 0, 12, 0, 0, 0, 2, 1, 'C', 2, 'a', 'b', 0}, nothing{0, 0, 0, 2, 0, 0},
        cut{0, 0, 0, 8, 0, 0, 0, 2, 1, 'C', 5, 'a'};
    OwnedPath p, q, e, kept(Parse("a")), partial, tiny;
    ExpectRows({Row(FPathUnflattenOrder(relative.data(), &p.p, 12, 1), 12), Row(Describe(p), "R:a"),
                Row(MemHandleSize(p), 8), Row(FPathUnflatten(relative.data(), nullptr), 12),
                Row(FPathUnflatten(absolute.data(), &q.p), 14), Row(Describe(q), "A:C|ab"),
                Row(FPathUnflattenOrder(none.data(), &e.p, 8, 1), 8), Row(Describe(e), "A:"),
                Row(FPathUnflattenOrder(nothing.data(), &var, 6, 1), 8), Row(var == nullptr, 1),
                Row(FPathUnflattenOrder(nothing.data(), &kept.p, 6, 1), 7),
                Row(FPathUnflattenOrder(cut.data(), &partial.p, 12, 1), 13),
                Row(partial.p != nullptr, 1),
                Row(FPathUnflattenOrder(relative.data(), &tiny.p, 7, 1), 8)});
}

}  // namespace
