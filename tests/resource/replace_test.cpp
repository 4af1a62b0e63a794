// A write-back replaces the file in one step: whatever stops it - a failing write, flush or
// rename, or the process being killed - the file afterwards is the old one or the new one.
// Out of memory at any allocation of an edit session leaves a file just as sound.
#include <chrono>
#include <cstring>
#include <set>
#include <thread>

#include "resource/resource_env.h"
#include "support/host_rules.h"
#include "support/run_tool.h"

namespace {

// Data in front that stays (1, 2), one resource changed (3), data behind it that moves (4, 5),
// one resource gone and one added.
std::vector<Res> Version(bool newer) {
    return {{"AAAA", 1, "", Fill(1300000, 1)},
            {"AAAA", 2, "two", Fill(10, 2)},
            {"AAAA", 3, "", newer ? Fill(6000, 33) : Fill(5000, 3)},
            {"AAAA", 4, "", Fill(70000, 4)},
            {"AAAA", 5, "", Fill(3, 5)},
            newer ? Res{"CCCC", 9, "nine", Fill(9, 9)} : Res{"BBBB", 1, "", Fill(7, 6)}};
}

// The old and the new records of the file that a child rewrites: every resource made new, and
// one added; 6 MB, or 50 MB rewritten in place.
std::vector<Res> KillRecords(bool newer, bool inPlace) {
    std::vector<Res> records;
    for (int32_t id = 1; id <= (inPlace ? 25 : 12); ++id)
        records.push_back({"AAAA", id, "", Fill(inPlace ? 2 << 20 : 1 << 19, id + newer * 100)});
    if (newer) records.push_back({"CCCC", 1, "", Fill(5, 1)});
    return records;
}

// The file the child rewrites. The child makes "<file>.ready" when all is set, and starts the
// write-back as soon as "<file>.go" appears, so that the parent's clock starts with it.
constexpr const char* kChildFile = "MXSB_REPLACE_CHILD";
constexpr const char* kInPlace = "inplace:";

class ReplaceTest : public ResourceTest {
  protected:
    // Old or new, by everything the file holds.
    std::string Which(const std::vector<Res>& older, const std::vector<Res>& newer) {
        const std::vector<Res> held = FileRecords(FilePath("f"));
        return held == older ? "old" : held == newer ? "new" : "neither";
    }
    // Makes Version(true) of Version(false) in memory.
    ResFile Edit(ResFile f) {
        const std::vector<Res> news = Version(true);
        Handle h = Get(f, "AAAA", 3);
        EXPECT_EQ(MemSetHandleBytes(&h, news[2].data.data(), 6000), MgNoError);
        EXPECT_EQ(RChanged(h), MgNoError);
        h = Get(f, "BBBB", 1);
        EXPECT_EQ(RRemove(h, f), MgNoError);
        MemDisposeHandle(h);
        AddData(f, "CCCC", 9, news[5].data, "nine");
        return f;
    }
    // Writes `original` as "f" and has a child rewrite it (in place: no new file can be made
    // beside it), killed `killAfterMs` after the go, or let run to its end when negative. Gives
    // the milliseconds from the go to the child's end or kill.
    int32_t RunChild(const Bytes& original, bool inPlace, int32_t killAfterMs) {
        WriteFile("f", original);
        const std::string ready = FilePath("f") + ".ready", go = FilePath("f") + ".go";
        for (const std::string& old : {ready, go}) std::filesystem::remove(old);
        const int64_t child =
            StartTestChild("ReplaceTest.DISABLED_WriteBackChild",
                           kChildFile + ("=" + ((inPlace ? kInPlace : "") + FilePath("f"))));
        EXPECT_NE(child, 0);
        for (int i = 0; i < 60000 && !std::filesystem::exists(ready); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::ofstream(go) << "g";
        const auto start = std::chrono::steady_clock::now();
        const int32_t status = plat::WaitChild(child, killAfterMs < 0 ? 120000 : killAfterMs);
        EXPECT_TRUE(killAfterMs >= 0 || status == 0);
        return int32_t((std::chrono::steady_clock::now() - start) / std::chrono::milliseconds(1));
    }
    // Kills the rewriting child at `points` moments spread over a whole run, the last few after
    // its end: each time the file is the old one or the new one, and both are seen.
    void KillAtPoints(bool inPlace, int32_t points) {
        const std::vector<Res> older = KillRecords(false, inPlace),
                               newer = KillRecords(true, inPlace);
        const Bytes original = BuildFile(Layout(older));
        const int32_t whole = RunChild(original, inPlace, -1);
        ASSERT_EQ(Which(older, newer), "new");
        int32_t olds = 0, news = 0;
        for (int32_t k = 0; k < points; ++k) {
            RunChild(original, inPlace, whole * k / (points - 4));
            const std::string which = Which(older, newer);
            ASSERT_TRUE(which == "old" || which == "new") << which << " at point " << k;
            (which == "old" ? olds : news) += 1;
            // Beside the go and ready files: nothing in place; on Linux, where the new file is
            // named only just before the rename, maybe the hidden files of runs killed in
            // between, which the next whole write-back removes (the caller's last run).
            if (inPlace || !WindowsHost()) {
                const int32_t hidden = Strays("f", ".f.");
                EXPECT_EQ(std::make_pair(Strays("f") - hidden, inPlace ? hidden : 0),
                          std::make_pair(2, 0))
                    << "at point " << k;
            }
        }
        EXPECT_GT(olds, 0);
        EXPECT_GT(news, 0);
    }
};

TEST_F(ReplaceTest, FailureAtEveryStepLeavesTheOldFile) {
    const std::vector<Res> olds = Version(false), news = Version(true);
    const Bytes original = BuildFile(Layout(olds));
    for (plat::FileOp op :
         {plat::kFileWrite, plat::kFileFlush, plat::kFileReplace, plat::kFileTruncate}) {
        for (int64_t n = 1;; ++n) {
            SCOPED_TRACE(testing::Message() << "op " << op << " call " << n);
            ResFile f = Edit(Put("f", original));
            plat::FailFileOpAt(op, n, MgDiskFull);
            const MgStatus closed = RCloseFile(f);
            const bool reached = plat::FileOpCount(op) >= n;
            plat::ResetFaults();
            if (closed) {
                EXPECT_EQ(closed, MgDiskFull);
                EXPECT_EQ(std::make_pair(ReadFile("f"), Strays("f")), std::make_pair(original, 0));
                EXPECT_TRUE(FileAttrs(f) & RFileDirty);
                // The map in memory still describes the old file: its data loads.
                EXPECT_EQ(Load(f, "AAAA", 4), olds[3].data);
                ASSERT_EQ(RCloseFile(f), MgNoError);
            }
            EXPECT_EQ(Which(olds, news), "new");
            if (!reached) break;
        }
    }
}

// Opens a file, changes one resource, adds one, removes one and closes, with the Nth
// allocation failing. Every step succeeds or reports 2; the file then closes cleanly, and
// holds exactly what the successful steps made of it.
TEST_F(ReplaceTest, OutOfMemoryAtEveryAllocation) {
    // The file holds the first type; the session changes AAAA 2, adds the second and removes
    // AAAA 1.
    const std::vector<TypeLayout> all = {{"AAAA", {{1, "one", {1}}, {2, "", {2, 2}}, {3, "", {3}}}},
                                         {"BBBB", {{5, "added", B("new")}}}};
    const Bytes original = BuildFile({all[0]});
    int64_t n = 0;
    for (bool failed = true; failed;) {
        WriteFile("o", original);
        Path path = MakePath("o");
        Handle added = MemNewHandle(3), h = nullptr, one = nullptr;
        memcpy(*added, "new", 3);
        plat::ResetFaults();
        plat::FailAllocationAt(++n);
        auto ok = [&](MgStatus s) {
            EXPECT_TRUE(s == MgNoError || s == MgNoMemory) << n << " " << s;
            return s == MgNoError;
        };
        std::vector<Res> want = Flat(all);
        bool addedOk = false;
        ResFile f = 0;
        if (ok(ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr))) {
            if (ok(RGet(f, T("AAAA"), 2, &h))) {
                (*h)[0] = want[1].data[0] = 9;
                ASSERT_EQ(RChanged(h), MgNoError);
            }
            addedOk = ok(RAdd(added, f, T("BBBB"), 5, PS(P("added"))));
            if (ok(RGet(f, T("AAAA"), 1, &one)) && ok(RRemove(one, f)))
                want.erase(want.begin()), MemDisposeHandle(one);
            if (!ok(RCloseFile(f))) {
                plat::ResetFaults();
                ASSERT_EQ(RCloseFile(f), MgNoError) << n;
            }
        }
        failed = plat::AllocationCount() >= n;
        plat::ResetFaults();
        if (!addedOk) MemDisposeHandle(added), want.pop_back();
        ASSERT_EQ(FileRecords(FilePath("o")), want) << n;
    }
    EXPECT_GE(n, 6);
}

// Opening and loading 1,000 resources of many sizes with the Nth allocation failing: each step
// succeeds or gives 2, whatever loads holds its bytes, and the close gives back every block
// the open and the loads took.
TEST_F(ReplaceTest, OutOfMemoryAtEveryAllocationOfALoad) {
    constexpr int32_t kCount = 1000;
    std::vector<Res> records;
    for (int32_t id = 1; id <= kCount; ++id)
        records.push_back({"DATA", id, "", Bytes(size_t(id * 7 % 1100), uint8_t(id))});
    WriteFile("m", BuildFile(Layout(records)));
    Path path = MakePath("m");
    int64_t live = -1;
    for (int64_t n = 0;; ++n) {  // 0: a first pass without faults makes what stays for good
        plat::ResetFaults();
        plat::FailAllocationAt(n);
        int32_t loaded = 0;
        ResFile f = 0;
        MgStatus s = ROpenFile(path, FMModeRead, &f, nullptr, nullptr);
        ASSERT_TRUE(s == MgNoError || s == MgNoMemory) << n << " open " << s;
        for (int32_t i = 1; s == MgNoError && i <= kCount; ++i) {
            Handle h = nullptr;
            const MgStatus got = RGetInd(f, T("DATA"), i, &h);
            ASSERT_TRUE(got == MgNoError || got == MgNoMemory) << n << " load " << i << " " << got;
            ASSERT_TRUE(got || Contents(h) == records[size_t(i - 1)].data) << n << " " << i;
            loaded += !got;
        }
        ASSERT_TRUE(s || RCloseFile(f) == MgNoError) << n;  // a file that opened closes
        const bool failed = plat::AllocationCount() >= n && n > 0;
        plat::ResetFaults();
        if (live < 0) live = plat::LiveBlockCount();
        ASSERT_EQ(plat::LiveBlockCount(), live) << n;
        if (n > 0 && !failed) {
            EXPECT_EQ(loaded, kCount);
            EXPECT_GT(n, kCount);
            break;
        }
    }
}

// Kills a child rewriting the file at 30 points spread over its write-back. Where the host can
// make the new file without a name (Linux), or none is made, nothing is left beside it;
// elsewhere the next write-back removes what the killed ones left.
TEST_F(ReplaceTest, KilledWriteBackLeavesOldOrNew) {
    KillAtPoints(false, 30);
    RunChild(BuildFile(Layout(KillRecords(false, false))), false, -1);
    EXPECT_EQ(Strays("f"), 2);
}

// Where no new file can be made beside the file, the write-back appends to it and writes the
// header last: the same, for a 50 MB rewrite.
TEST_F(ReplaceTest, KilledInPlaceWriteBackLeavesOldOrNew) {
    KillAtPoints(true, 18);
}

// The child's side: ends at once with a status that says how far it got. A file name after
// "inplace:" is rewritten in place, with the larger records.
TEST_F(ReplaceTest, DISABLED_WriteBackChild) {
    const char* name = std::getenv(kChildFile);
    if (name == nullptr) GTEST_SKIP() << "the child's side, started by its parent";
    const bool inPlace = strncmp(name, kInPlace, strlen(kInPlace)) == 0;
    if (inPlace) name += strlen(kInPlace);
    const std::vector<Res> newer = KillRecords(true, inPlace);
    ResFile f = 0;
    if (ROpenFile(NewPath(name), FMModeReadWrite, &f, nullptr, nullptr)) std::_Exit(3);
    for (size_t i = 0; i + 1 < newer.size(); ++i) {
        Handle h = nullptr;
        if (RGet(f, T("AAAA"), newer[i].id, &h)) std::_Exit(4);
        memcpy(*h, newer[i].data.data(), newer[i].data.size());
        RChanged(h);
    }
    AddData(f, "CCCC", 1, newer.back().data);
    std::ofstream(std::string(name) + ".ready") << "r";
    const std::filesystem::path go = std::string(name) + ".go";
    for (auto until = std::chrono::steady_clock::now() + std::chrono::seconds(20);
         !std::filesystem::exists(go);)
        if (std::chrono::steady_clock::now() > until) std::_Exit(6);
    // No new file can be made beside the file, as in a directory the run may not write to.
    if (inPlace) plat::FailFileOpAt(plat::kFileReplace, 1, MgNoPermission);
    std::_Exit(RCloseFile(f) ? 7 : 0);
}

// Hidden files of earlier write-backs of the same file whose writers are gone go with the next
// write-back; other names stay.
TEST_F(ReplaceTest, WriteBackRemovesLeftoversOfDeadWriters) {
    ResFile f = Edit(Put("f", BuildFile(Layout(Version(false)))));
    for (const char* name : {".f.Ab12cD.new", ".f.keep", ".g.Ab12cD.new", ".f.Ab12cDe.new"})
        WriteFile(name, Bytes(100, 1));
    ASSERT_EQ(RCloseFile(f), MgNoError);
    std::set<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(dir_.path))
        names.insert(e.path().filename().string());
    EXPECT_EQ(names, (std::set<std::string>{"f", ".f.keep", ".g.Ab12cD.new", ".f.Ab12cDe.new"}));
}

}  // namespace
