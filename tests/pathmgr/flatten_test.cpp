#include <vector>

#include "path_helpers.h"

namespace {

using FlatPaths = PathTest;
using Bytes = std::vector<uint8_t>;
using namespace mgtest;

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
TEST_F(FlatPaths, FlattenedBytes) {
    OwnedPath a(Parse("C:\\a")), empty(FEmptyPath(nullptr)), unc(Parse("\\\\s\\v"));
    EXPECT_EQ(Flatten(a), (Bytes{'P', 'T', 'H', '0', 0, 0, 0, 8, 0, 0, 0, 2, 1, 'C', 1, 'a'}));
    EXPECT_EQ(Flatten(empty), (Bytes{'P', 'T', 'H', '0', 0, 0, 0, 4, 0, 0, 0, 0}));
    EXPECT_EQ(Flatten(nullptr), (Bytes{'P', 'T', 'H', '0', 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Flatten(unc),
              (Bytes{'P', 'T', 'H', '0', 0, 0, 0, 10, 0, 3, 0, 1, 5, '\\', '\\', 's', '\\', 'v'}));
    const int16_t fields[4] = {8, 0, 0, 2};  // size 8 as a little-endian word, kind, count
    uint8_t host[16];
    EXPECT_TRUE(FPathFlattenOrder(a, host, 0) == 16 && memcmp(host + 4, &fields, 8) == 0);
}

// The null form reads back as no path; its size query says 8, and 8 bytes are enough to read
// it. A failure gives the bytes available plus one.
TEST_F(FlatPaths, NullFormAndFailures) {
    const Bytes null = Flatten(nullptr), flat = Flatten(OwnedPath(Parse("C:\\a")));
    Path var = nullptr;
    OwnedPath existing(Parse("C:\\a")), out;
    ExpectRows({Row(FPathUnflatten(null.data(), &var), 12), Row(var == nullptr, 1),
                Row(FPathUnflatten(null.data(), nullptr), 8),
                Row(FPathUnflattenOrder(null.data(), &var, 8, 1), 12),
                Row(FPathUnflattenOrder(null.data(), &existing.p, 12, 1), 13)});
    for (int32_t available : {0, 3, 7, 15}) {
        OwnedPath none;
        EXPECT_EQ(FPathUnflattenOrder(flat.data(), &none.p, available, 1), available + 1);
    }
    ExpectRows({Row(FPathUnflattenOrder(flat.data(), &out.p, 16, 1), 16),
                Row((plat::FailAllocationAt(1), FPathUnflattenOrder(flat.data(), &var, 16, 1)), 17),
                Row(var == nullptr, 1)});
}

// The old form: a size, a count and the names, with odd and even component sizes; it leaves
// slack behind the names. L below 4 is no path at all, and an error when one was expected. A
// component that runs past the data fails, leaving the partial handle to the caller.
TEST_F(FlatPaths, OldForm) {
    const Bytes relative{0, 0, 0, 8, 0, 0, 0, 2, 0, 0, 1, 'a'};
    const Bytes absolute{0, 0, 0, 12, 0, 0, 0, 2, 1, 'C', 2, 'a', 'b', 0};
    const Bytes none{0, 0, 0, 4, 0, 0, 0, 0}, nothing{0, 0, 0, 2, 0, 0};
    const Bytes cut{0, 0, 0, 8, 0, 0, 0, 2, 1, 'C', 5, 'a'};
    OwnedPath p, q, e, existing(Parse("a")), partial, tiny;
    Path var = nullptr;
    ExpectRows({Row(FPathUnflattenOrder(relative.data(), &p.p, 12, 1), 12), Row(Describe(p), "R:a"),
                Row(MemHandleSize(p), 8), Row(FPathUnflatten(relative.data(), nullptr), 12),
                Row(FPathUnflatten(absolute.data(), &q.p), 14), Row(Describe(q), "A:C|ab"),
                Row(FPathUnflattenOrder(none.data(), &e.p, 8, 1), 8), Row(Describe(e), "A:"),
                Row(FPathUnflattenOrder(nothing.data(), &var, 6, 1), 8), Row(var == nullptr, 1),
                Row(FPathUnflattenOrder(nothing.data(), &existing.p, 6, 1), 7),
                Row(FPathUnflattenOrder(cut.data(), &partial.p, 12, 1), 13),
                Row(partial.p != nullptr, 1),
                Row(FPathUnflattenOrder(relative.data(), &tiny.p, 7, 1), 8)});
}

}  // namespace
