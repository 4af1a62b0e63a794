#include <vector>

#include "path_helpers.h"

namespace {

using FlatPaths = PathTest;
using Bytes = std::vector<uint8_t>;

Bytes Flatten(Path p) {
    int32_t size = FPathFlatten(p, nullptr);
    Bytes out(size + 4, 0xEE);
    EXPECT_EQ(FPathFlatten(p, out.data()), size);
    EXPECT_EQ(out[size], 0xEE) << "wrote beyond its size";
    out.resize(size);
    return out;
}

TEST_F(FlatPaths, FlattenedBytes) {
    OwnedPath a(Parse("C:\\a"));
    EXPECT_EQ(Flatten(a),
              (Bytes{0x50, 0x54, 0x48, 0x30, 0, 0, 0, 8, 0, 0, 0, 2, 1, 0x43, 1, 0x61}));
    OwnedPath empty(FEmptyPath(nullptr));
    EXPECT_EQ(Flatten(empty), (Bytes{0x50, 0x54, 0x48, 0x30, 0, 0, 0, 4, 0, 0, 0, 0}));
    EXPECT_EQ(Flatten(nullptr), (Bytes{0x50, 0x54, 0x48, 0x30, 0, 0, 0, 0, 0, 0, 0, 0}));
    OwnedPath unc(Parse("\\\\s\\v"));
    EXPECT_EQ(Flatten(unc),
              (Bytes{'P', 'T', 'H', '0', 0, 0, 0, 10, 0, 3, 0, 1, 5, '\\', '\\', 's', '\\', 'v'}));
    // Unswapped, the fields keep the host's order.
    uint8_t host[16];
    EXPECT_EQ(FPathFlattenOrder(a, host, 0), 16);
    int16_t kind, count;
    uint32_t size;
    memcpy(&size, host + 4, 4);
    memcpy(&kind, host + 8, 2);
    memcpy(&count, host + 10, 2);
    EXPECT_EQ(size, 8u);
    EXPECT_EQ(kind, 0);
    EXPECT_EQ(count, 2);
}

TEST_F(FlatPaths, RoundTrip) {
    for (const char* text : {"C:\\a\\b", "..\\x", "\\\\s\\v\\a", "", "."}) {
        SCOPED_TRACE(text);
        OwnedPath p(Parse(text));
        Bytes flat = Flatten(p);
        OwnedPath back;
        EXPECT_EQ(FPathUnflatten(flat.data(), &back.p), static_cast<int32_t>(flat.size()));
        EXPECT_EQ(Describe(back), Describe(p));
        EXPECT_EQ(MemHandleSize(back), MemHandleSize(p));
        // Into an existing, larger handle.
        OwnedPath reuse(Parse("C:\\some\\longer\\path"));
        EXPECT_EQ(FPathUnflattenOrder(flat.data(), &reuse.p, static_cast<int32_t>(flat.size()), 1),
                  static_cast<int32_t>(flat.size()));
        EXPECT_EQ(Describe(reuse), Describe(p));
        // The size query.
        EXPECT_EQ(FPathUnflatten(flat.data(), nullptr), static_cast<int32_t>(flat.size()));
    }
}

TEST_F(FlatPaths, NullForm) {
    Bytes flat = Flatten(nullptr);
    Path var = nullptr;
    EXPECT_EQ(FPathUnflatten(flat.data(), &var), 12);
    EXPECT_EQ(var, nullptr);
    EXPECT_EQ(FPathUnflatten(flat.data(), nullptr), 8);  // the size query says 8
    // Only 8 bytes are needed to read it.
    EXPECT_EQ(FPathUnflattenOrder(flat.data(), &var, 8, 1), 12);
    OwnedPath existing(Parse("C:\\a"));
    EXPECT_EQ(FPathUnflattenOrder(flat.data(), &existing.p, 12, 1), 13);
}

TEST_F(FlatPaths, FailuresAreAvailablePlusOne) {
    OwnedPath a(Parse("C:\\a"));
    Bytes flat = Flatten(a);
    struct Row {
        int32_t available;
        int32_t result;
    } rows[] = {{0, 1}, {3, 4}, {7, 8}, {15, 16}, {16, 16}};
    for (const Row& r : rows) {
        SCOPED_TRACE(r.available);
        OwnedPath out;
        EXPECT_EQ(FPathUnflattenOrder(flat.data(), &out.p, r.available, 1), r.result);
    }
    OwnedPath out;
    plat::FailAllocationAt(1);
    EXPECT_EQ(FPathUnflattenOrder(flat.data(), &out.p, 16, 1), 17);
    EXPECT_EQ(out.p, nullptr);
}

TEST_F(FlatPaths, OldForm) {
    const Bytes relative{0, 0, 0, 8, 0, 0, 0, 2, 0, 0, 1, 'a'};
    OwnedPath p;
    EXPECT_EQ(FPathUnflattenOrder(relative.data(), &p.p, 12, 1), 12);
    EXPECT_EQ(Describe(p), "R:a");
    EXPECT_EQ(MemHandleSize(p), 8);  // the old form leaves slack behind the names
    EXPECT_EQ(FPathUnflatten(relative.data(), nullptr), 12);

    // Absolute, with odd and even component sizes.
    const Bytes absolute{0, 0, 0, 12, 0, 0, 0, 2, 1, 'C', 2, 'a', 'b', 0};
    OwnedPath q;
    EXPECT_EQ(FPathUnflatten(absolute.data(), &q.p), 14);
    EXPECT_EQ(Describe(q), "A:C|ab");

    const Bytes none{0, 0, 0, 4, 0, 0, 0, 0};
    OwnedPath e;
    EXPECT_EQ(FPathUnflattenOrder(none.data(), &e.p, 8, 1), 8);
    EXPECT_EQ(Describe(e), "A:");

    // L below 4: no path at all, and an error when one was expected.
    const Bytes nothing{0, 0, 0, 2, 0, 0};
    Path var = nullptr;
    EXPECT_EQ(FPathUnflattenOrder(nothing.data(), &var, 6, 1), 8);
    EXPECT_EQ(var, nullptr);
    OwnedPath existing(Parse("a"));
    EXPECT_EQ(FPathUnflattenOrder(nothing.data(), &existing.p, 6, 1), 7);

    // A component that runs past the data fails, leaving the partial handle to the caller.
    const Bytes cut{0, 0, 0, 8, 0, 0, 0, 2, 1, 'C', 5, 'a'};
    OwnedPath partial;
    EXPECT_EQ(FPathUnflattenOrder(cut.data(), &partial.p, 12, 1), 13);
    EXPECT_NE(partial.p, nullptr);
    OwnedPath tiny;
    EXPECT_EQ(FPathUnflattenOrder(relative.data(), &tiny.p, 7, 1), 8);
}

}  // namespace
