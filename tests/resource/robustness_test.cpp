// Out-of-memory at every allocation of an edit session.
#include "resource/resource_env.h"

namespace {

class RobustnessTest : public ResourceTest {};

// Opens a file, changes one resource, adds one, removes one and closes, with the Nth
// allocation failing. Every step succeeds or reports 2; the file then closes cleanly, and
// holds exactly what the successful steps made of it.
TEST_F(RobustnessTest, OutOfMemoryAtEveryAllocation) {
    const Bytes original = BuildFile({{"AAAA", {{1, "one", {1}}, {2, "", {2, 2}}, {3, "", {3}}}}});
    const std::string name = P("added");
    for (int64_t n = 1;; ++n) {
        WriteFile("o", original);
        Path path = MakePath("o");
        Handle added = MemNewHandle(3), h = nullptr, one = nullptr;
        memcpy(*added, "new", 3);
        plat::ResetFaults();
        plat::FailAllocationAt(n);
        auto step = [&](MgStatus s, const char* what) {
            EXPECT_TRUE(s == MgNoError || s == MgNoMemory) << n << " " << what << " " << s;
            return s == MgNoError;
        };
        std::vector<Res> want = {{"AAAA", 1, "one", {1}},
                                 {"AAAA", 2, "", {2, 2}},
                                 {"AAAA", 3, "", {3}},
                                 {"BBBB", 5, "added", B("new")}};
        bool addedOk = false;
        ResFile f = 0;
        if (step(ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr), "open")) {
            if (step(RGet(f, T("AAAA"), 2, &h), "get")) {
                (*h)[0] = want[1].data[0] = 9;
                ASSERT_EQ(RChanged(h), MgNoError);
            }
            addedOk = step(RAdd(added, f, T("BBBB"), 5, PS(name)), "add");
            if (step(RGet(f, T("AAAA"), 1, &one), "get one") && step(RRemove(one, f), "remove")) {
                want.erase(want.begin());
                MemDisposeHandle(one);
            }
            if (!step(RCloseFile(f), "close")) {
                plat::ResetFaults();
                ASSERT_EQ(RCloseFile(f), MgNoError) << n;
            }
        }
        const bool failed = plat::AllocationCount() >= n;
        plat::ResetFaults();
        if (!addedOk) MemDisposeHandle(added), want.pop_back();
        ASSERT_EQ(FileRecords(FilePath("o")), want) << n;
        if (!failed) {
            EXPECT_GE(n, 6);
            break;
        }
    }
}

}  // namespace
