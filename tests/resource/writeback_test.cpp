// The write-back pass: what reaches the disk, and how failures leave the file.
#include <filesystem>

#include "resource/resource_env.h"

namespace {

class WriteBackTest : public ResourceTest {
  protected:
    std::filesystem::file_time_type ModTime(const std::string& leaf) {
        return std::filesystem::last_write_time(FilePath(leaf));
    }
    // Offset of resource `id` of `type` in the data section, read from the file's map.
    static int32_t DataOffset(const Bytes& file, const char* type, int32_t id) {
        const uint32_t map = Big32At(file, 16);
        const uint32_t typeList = map + Big32At(file, map + 44);
        const int32_t types = int32_t(Big32At(file, typeList)) + 1;
        for (int32_t i = 0; i < types; ++i) {
            const uint32_t t = typeList + 4 + 12 * uint32_t(i);
            if (memcmp(&file[t], type, 4) != 0) continue;
            const int32_t refs = int32_t(Big32At(file, t + 4)) + 1;
            for (int32_t r = 0; r < refs; ++r) {
                const uint32_t ref = typeList + Big32At(file, t + 8) + 20 * uint32_t(r);
                if (int32_t(Big32At(file, ref)) == id) return int32_t(Big32At(file, ref + 12));
            }
        }
        return -1;
    }
};

const std::vector<TypeLayout> kThree = {
    {"AAAA", {{1, "", Bytes(10, 1)}, {2, "two", Bytes(6, 2)}, {3, "", Bytes(3, 3)}}},
};

// Loading leaves a file as it was; changing attributes alone makes it dirty.
TEST_F(WriteBackTest, OnlyADirtyFileIsWritten) {
    const Bytes original = BuildFile(kThree);
    WriteFile("u", original);
    const auto before = ModTime("u");
    ResFile f = Open("u");
    Handle h = nullptr;
    ASSERT_EQ(RGet(f, T("AAAA"), 2, &h), MgNoError);
    const int64_t writes = plat::FileOpCount(plat::kFileWrite);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    EXPECT_EQ(plat::FileOpCount(plat::kFileWrite), writes);
    EXPECT_EQ(ReadFile("u"), original);
    EXPECT_EQ(ModTime("u"), before);

    f = Open("u");
    ASSERT_EQ(RGet(f, T("AAAA"), 3, &h), MgNoError);
    ASSERT_EQ(RSetAttrs(h, RAttrProtected), MgNoError);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    f = Open("u", FMModeRead);
    ASSERT_EQ(RGet(f, T("AAAA"), 3, &h), MgNoError);
    int32_t attrs = 0;
    EXPECT_EQ(RGetAttrs(h, &attrs), MgNoError);
    EXPECT_EQ(attrs, RAttrProtected);
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

TEST_F(WriteBackTest, NewFileMatchesAHandBuiltOne) {
    ResFile f = CreateAndOpen("n");
    AddData(f, "BBBB", 4, {4, 4, 4, 4, 4});
    AddData(f, "AAAA", 2, {2}, "two");
    AddData(f, "BBBB", 1, {});
    ASSERT_EQ(RCloseFile(f), MgNoError);
    Bytes expected =
        BuildFile({{"BBBB", {{1, "", {}}, {4, "", {4, 4, 4, 4, 4}}}}, {"AAAA", {{2, "two", {2}}}}});
    // The map goes out with its dirty bit, as the bit is cleared only after the write.
    expected[Big32At(expected, 16) + 43] = RFileDirty;
    EXPECT_EQ(ReadFile("n"), expected);
}

TEST_F(WriteBackTest, ChangedMiddleMovesToTheEnd) {
    WriteFile("m", BuildFile(kThree));
    ResFile f = Open("m");
    Handle h = nullptr;
    ASSERT_EQ(RGet(f, T("AAAA"), 2, &h), MgNoError);
    (*h)[0] = 0x55;
    ASSERT_EQ(RChanged(h), MgNoError);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    const Bytes file = ReadFile("m");
    EXPECT_EQ(DataOffset(file, "AAAA", 1), 0);   // in front: untouched
    EXPECT_EQ(DataOffset(file, "AAAA", 3), 16);  // moved down into the gap
    EXPECT_EQ(DataOffset(file, "AAAA", 2), 24);  // behind all unchanged data
    EXPECT_EQ(Big32At(file, 28), 36u);
    f = Open("m");
    EXPECT_EQ(Load(f, "AAAA", 2), (Bytes{0x55, 2, 2, 2, 2, 2}));
    EXPECT_EQ(Load(f, "AAAA", 3), Bytes(3, 3));
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

// A file that held resources and lost them all is cut to its header, which still describes
// the old map: it can't be opened again. One that never held any stays valid.
TEST_F(WriteBackTest, EmptiedFileBecomesThirtyTwoBytes) {
    WriteFile("e", BuildFile({{"AAAA", {{1, "", {1}}}}}));
    ResFile f = Open("e");
    Handle h = nullptr;
    ASSERT_EQ(RGet(f, T("AAAA"), 1, &h), MgNoError);
    ASSERT_EQ(RRemove(h, f), MgNoError);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    MemDisposeHandle(h);
    EXPECT_EQ(ReadFile("e").size(), 32u);
    Open("e", FMModeReadWrite, MgEndOfFile);
}

TEST_F(WriteBackTest, WritesPerResourceSize) {
    struct Case {
        int32_t size;
        int64_t dataWrites;
    };
    for (const Case c : {Case{0, 1}, Case{4092, 1}, Case{4093, 2}, Case{8188, 2}, Case{8190, 3}}) {
        ResFile f = CreateAndOpen("w");
        Bytes data(size_t(c.size));
        for (size_t i = 0; i < data.size(); ++i) data[i] = uint8_t(i * 7 + 1);
        AddData(f, "AAAA", 1, data);
        const int64_t before = plat::FileOpCount(plat::kFileWrite);
        ASSERT_EQ(RCloseFile(f), MgNoError);
        // Data, then the map and the header.
        EXPECT_EQ(plat::FileOpCount(plat::kFileWrite) - before, c.dataWrites + 2) << c.size;
        const Bytes file = ReadFile("w");
        const size_t taken = size_t((c.size + 7) & ~3);
        EXPECT_EQ(Big32At(file, 28), taken);
        EXPECT_EQ(Big32At(file, 32), uint32_t(c.size));
        EXPECT_EQ(Bytes(file.begin() + 36, file.begin() + 36 + c.size), data);
        for (size_t pad = 36 + size_t(c.size); pad < 32 + taken; ++pad) EXPECT_EQ(file[pad], 0);
    }
}

TEST_F(WriteBackTest, FailedWriteLeavesTheFileOpenAndDirty) {
    for (int64_t failAt = 1; failAt <= 4; ++failAt) {
        ResFile f = CreateAndOpen("x");
        AddData(f, "AAAA", 1, {1, 2, 3});
        AddData(f, "BBBB", 2, Bytes(5000, 9), "big");
        plat::FailFileOpAt(plat::kFileWrite, failAt, MgDiskFull);
        EXPECT_EQ(RCloseFile(f), MgDiskFull) << failAt;
        int32_t attrs = 0;
        ASSERT_EQ(RGetFileAttrs(f, &attrs), MgNoError);
        EXPECT_TRUE(attrs & RFileDirty);
        plat::ResetFaults();
        ASSERT_EQ(RCloseFile(f), MgNoError);
        f = Open("x");
        EXPECT_EQ(LoadNamed(f, "BBBB", "big"), Bytes(5000, 9));
        EXPECT_EQ(Load(f, "AAAA", 1), (Bytes{1, 2, 3}));
        EXPECT_EQ(RCloseFile(f), MgNoError);
    }
}

TEST_F(WriteBackTest, WriteNowAndPreAlloc) {
    ResFile f = CreateAndOpen("n");
    Handle h = AddData(f, "AAAA", 1, {7, 7});
    ASSERT_EQ(RWriteNow(h), MgNoError);
    int32_t attrs = 0;
    ASSERT_EQ(RGetAttrs(h, &attrs), MgNoError);
    EXPECT_EQ(attrs & RAttrChanged, 0);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    f = Open("n");
    EXPECT_EQ(Load(f, "AAAA", 1), (Bytes{7, 7}));
    const size_t size = ReadFile("n").size();
    ASSERT_EQ(RPreAllocFile(f, 100), MgNoError);
    EXPECT_EQ(ReadFile("n").size(), size + 100);
    ASSERT_EQ(RCloseFile(f), MgNoError);
    // The room taken at the end does not spoil the file.
    f = Open("n");
    EXPECT_EQ(Load(f, "AAAA", 1), (Bytes{7, 7}));
    EXPECT_EQ(RCloseFile(f), MgNoError);
}

}  // namespace
