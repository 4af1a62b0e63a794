// Loads through the read window: many loads from one read, nothing stale after a write-back
// or a reused id, failures of the fill reported as the read's own, and reads that the window
// can't or needn't serve.
#include <map>

#include "resource/resmap.h"
#include "resource/resource_env.h"

namespace {

constexpr int32_t kWindow = rsrc::kDataWindowSize;

// 16 bytes that say which resource and which generation they belong to.
Bytes Payload(int32_t id, uint8_t generation) {
    Bytes b(16, generation);
    b[0] = uint8_t(id >> 8);
    b[1] = uint8_t(id);
    return b;
}

Bytes SmallResources(int32_t count, uint8_t generation = 0) {
    TypeLayout t{"DATA", {}};
    for (int32_t id = 1; id <= count; ++id) t.refs.push_back({id, "", Payload(id, generation)});
    return BuildFile({t});
}

std::map<int32_t, Bytes> ById(ResFile f) {
    std::map<int32_t, Bytes> out;
    for (const Res& r : Records(f)) out[r.id] = r.data;
    return out;
}

using DataCacheTest = ResourceTest;

// 8000 resources of 24 bytes on disk span three windows. Each edit moves data on disk at the
// write-back; every resource then reloads from its new place, not from a window filled before.
TEST_F(DataCacheTest, ReloadAfterWriteBackSeesTheNewBytes) {
    constexpr int32_t kCount = 8000;
    static_assert(kCount * 24 > 2 * kWindow);
    // Ids on both sides of the first window's end (about id 2730); edits 0 change, 1 remove,
    // 2 add.
    for (int edit : {0, 1, 2})
        for (const int32_t id : {2, 2730, 2731, 7999}) {
            SCOPED_TRACE(testing::Message() << edit << " " << id);
            ResFile f = Put("s", SmallResources(kCount));
            std::map<int32_t, Bytes> expected = ById(f);
            // Reloading the neighbour in front leaves the window over the edited place.
            ASSERT_EQ(RRelease(Get(f, "DATA", id - 1)), MgNoError);
            Get(f, "DATA", id - 1);
            Handle h = Get(f, "DATA", id);
            if (edit == 0) {
                (*h)[15] = expected[id][15] = 0xEE;
                ASSERT_EQ(RChanged(h), MgNoError);
            } else if (edit == 1) {
                ASSERT_EQ(RRemove(h, f), MgNoError);
                MemDisposeHandle(h);
                expected.erase(id);
            } else {
                expected[-id] = Payload(id, 7);
                AddData(f, "DATA", -id, expected[-id]);
            }
            ASSERT_EQ(RUpdateFile(f), MgNoError);
            for (const auto& [loaded, data] : expected)
                ASSERT_EQ(RRelease(Get(f, "DATA", loaded)), MgNoError);
            for (auto it = expected.lower_bound(id - 1);
                 it != expected.end() && it->first <= id + 2; ++it)
                EXPECT_EQ(Load(f, "DATA", it->first), it->second);
            EXPECT_EQ(ById(f), expected);
            ASSERT_EQ(RCloseFile(f), MgNoError);
        }
}

// 2000 resources fit one window; 12000 (288,000 bytes) need five going either way.
TEST_F(DataCacheTest, ManyLoadsFromFewReads) {
    for (const auto& [count, backward, maxReads] :
         {std::tuple{2000, false, 1}, {12000, false, 5}, {12000, true, 6}}) {
        // Another file's window stays while a free one is left.
        ResFile g = Put("g", SmallResources(2), FMModeRead),
                f = Put("m", SmallResources(count), FMModeRead);
        Load(g, "DATA", 1);
        plat::FailFileOpAt(plat::kFileRead, 0, 0);
        for (int32_t i = 1; i <= count; ++i) {
            const int32_t id = backward ? count + 1 - i : i;
            ASSERT_EQ(Load(f, "DATA", id), Payload(id, 0)) << id;
        }
        EXPECT_EQ(Load(g, "DATA", 2), Payload(2, 0));
        EXPECT_LE(plat::FileOpCount(plat::kFileRead), maxReads) << count << backward;
        ASSERT_TRUE(RCloseFile(f) == MgNoError && RCloseFile(g) == MgNoError);
    }
}

// Sizes around the window: data that fits is copied from it, larger data is read from the file
// into the handle; the contents are the same either way, also next to a small neighbour.
TEST_F(DataCacheTest, SizesAroundTheWindow) {
    for (const int32_t size : {kWindow - 8, kWindow - 4, kWindow - 3, kWindow, kWindow + 1}) {
        const std::vector<TypeLayout> layout = {
            {"DATA", {{1, "", Payload(1, 1)}, {2, "", Fill(size_t(size), 5)}, {3, "", {9}}}}};
        WriteFile("z", BuildFile(layout));
        EXPECT_EQ(FileRecords(FilePath("z")), Flat(layout)) << size;
    }
}

// A fill that fails gives the failing call's status, loads nothing, and leaves no window: the
// next load reads the file again and gets the right bytes. A closed file's id comes back for
// the next file opened; its window must not. Without memory for a window the loads still
// work, reading the file directly.
TEST_F(DataCacheTest, FailedFillReusedIdAndNoWindowMemory) {
    for (const auto& [op, status] :
         {std::pair{plat::kFileRead, MgNoPermission}, std::pair{plat::kFileSeek, MgIOError}}) {
        ResFile a = Put("a", SmallResources(10), FMModeRead);
        plat::FailFileOpAt(op, 1, status);
        Handle h = nullptr;
        EXPECT_EQ(RGet(a, T("DATA"), 4, &h), status);
        EXPECT_EQ(h, nullptr);
        plat::ResetFaults();
        EXPECT_EQ(Load(a, "DATA", 4), Payload(4, 0));
        EXPECT_EQ(plat::FileOpCount(plat::kFileRead), 1);
        EXPECT_EQ(Load(a, "DATA", 5), Payload(5, 0));
        ASSERT_EQ(RCloseFile(a), MgNoError);
        ResFile b = Put("b", SmallResources(10, 5), FMModeRead);
        EXPECT_EQ(b, a);  // descriptors are reused lowest first
        plat::FailAllocationAt(1);
        EXPECT_EQ(Load(b, "DATA", 2), Payload(2, 5));
        plat::ResetFaults();
        EXPECT_EQ(Load(b, "DATA", 3), Payload(3, 5));
        ASSERT_EQ(RCloseFile(b), MgNoError);
    }
}

}  // namespace
