// Out-of-memory at every allocation of an edit session, and the handle index against a walk
// of every open map.
#include <random>
#include <set>

#include "resource/resource_env.h"

namespace {

class RobustnessTest : public ResourceTest {};

bool Ok(MgStatus s) {
    return s == MgNoError || s == MgNoMemory;
}

// Opens a file, changes one resource, adds one, removes one and closes, with the Nth
// allocation failing. Every step succeeds or reports 2; the file then closes cleanly, and
// holds exactly what the successful steps made of it.
TEST_F(RobustnessTest, OutOfMemoryAtEveryAllocation) {
    const Bytes original = BuildFile({{"AAAA", {{1, "one", {1}}, {2, "", {2, 2}}, {3, "", {3}}}}});
    int64_t total = 0;
    for (int64_t n = 1;; ++n) {
        WriteFile("o", original);
        Path path = MakePath("o");
        Handle added = MemNewHandle(3);
        memcpy(*added, "new", 3);
        const std::string name = P("added");
        plat::ResetFaults();
        plat::FailAllocationAt(n);

        bool changed = false, addedOk = false, removed = false;
        ResFile f = 0;
        MgStatus s = ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr);
        ASSERT_TRUE(Ok(s)) << n << " open " << s;
        if (s == MgNoError) {
            Handle h = nullptr;
            s = RGet(f, T("AAAA"), 2, &h);
            ASSERT_TRUE(Ok(s)) << n << " get " << s;
            if (!s) {
                (*h)[0] = 9;
                ASSERT_EQ(RChanged(h), MgNoError);
                changed = true;
            }
            s = RAdd(added, f, T("BBBB"), 5, PS(name));
            ASSERT_TRUE(Ok(s)) << n << " add " << s;
            addedOk = s == MgNoError;
            Handle one = nullptr;
            s = RGet(f, T("AAAA"), 1, &one);
            ASSERT_TRUE(Ok(s)) << n << " get one " << s;
            if (!s) {
                s = RRemove(one, f);
                ASSERT_TRUE(Ok(s)) << n << " remove " << s;
                if (!s) {
                    removed = true;
                    MemDisposeHandle(one);
                }
            }
            s = RCloseFile(f);
            ASSERT_TRUE(Ok(s)) << n << " close " << s;
            if (s) {
                plat::ResetFaults();
                ASSERT_EQ(RCloseFile(f), MgNoError) << n;
            }
        }
        const bool failed = plat::AllocationCount() >= n;
        plat::ResetFaults();
        if (!addedOk) MemDisposeHandle(added);

        ASSERT_EQ(ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr), MgNoError) << n;
        Handle h = nullptr;
        int32_t found = 0;
        EXPECT_EQ(RExists(f, T("AAAA"), 1, &found), removed ? MgResourceNotFound : MgNoError);
        EXPECT_EQ(Load(f, "AAAA", 2), (Bytes{uint8_t(changed ? 9 : 2), 2})) << n;
        EXPECT_EQ(Load(f, "AAAA", 3), Bytes{3}) << n;
        EXPECT_EQ(RGetNamed(f, T("BBBB"), PS(name), &h), addedOk ? MgNoError : MgResourceNotFound);
        ASSERT_EQ(RCloseFile(f), MgNoError);
        if (!failed) {
            total = n - 1;
            break;
        }
    }
    EXPECT_GE(total, 5);
}

// What RFindHandle must answer: the first reference of any open file holding the handle.
struct WalkResult {
    ResFile file = 0;
    ResRefEntry* ref = nullptr;
    ResType type = 0;
};
WalkResult Walk(Handle h) {
    WalkResult w;
    const ResFileEntry* slots = reinterpret_cast<const ResFileEntry*>(*RFileTable);
    for (int32_t i = 0; i < RFileTableSize; ++i) {
        if (slots[i].fileId == 0 || slots[i].reserved != 0) continue;
        Ptr map = slots[i].map;
        if (reinterpret_cast<ResFileHeader*>(map)->mapSize <= 32) continue;
        Ptr typeList = map + *reinterpret_cast<int32_t*>(map + 44);
        const int32_t types = *reinterpret_cast<int32_t*>(typeList) + 1;
        for (int32_t t = 0; t < types; ++t) {
            ResTypeEntry* te = reinterpret_cast<ResTypeEntry*>(typeList + 4 + 12 * t);
            ResRefEntry* refs = reinterpret_cast<ResRefEntry*>(typeList + te->listOffset);
            for (int32_t r = 0; r <= te->count; ++r) {
                if (refs[r].handle && MemHandleFromToken(refs[r].handle) == h)
                    return {slots[i].fileId, &refs[r], te->type};
            }
        }
    }
    return w;
}

TEST_F(RobustnessTest, HandleIndexAgreesWithTheWalk) {
    std::mt19937 random(12345);
    auto pick = [&](int n) { return int(random() % unsigned(n)); };
    const char* types[] = {"AAAA", "BBBB", "CCCC"};
    const char* leaves[] = {"f0", "f1"};
    ResFile files[2];
    for (int i = 0; i < 2; ++i) files[i] = CreateAndOpen(leaves[i]);
    std::set<Handle> seen;  // every handle that is still allocated and ours to look up
    auto check = [&](int step) {
        for (Handle h : seen) {
            const WalkResult w = Walk(h);
            ResFileEntry* entry = nullptr;
            ResRefEntry* ref = nullptr;
            ResType type = 0;
            const MgStatus s = RFindHandle(h, &entry, &ref, &type);
            if (!w.ref) {
                ASSERT_EQ(s, MgResourceNotFound) << step;
                continue;
            }
            ASSERT_EQ(s, MgNoError) << step;
            EXPECT_EQ(entry->fileId, w.file) << step;
            EXPECT_EQ(ref, w.ref) << step;
            EXPECT_EQ(type, w.type) << step;
        }
    };
    for (int step = 0; step < 1500; ++step) {
        const int which = pick(2);
        ResFile f = files[which];
        const char* type = types[pick(3)];
        int32_t count = 0;
        ASSERT_EQ(RCount(f, T(type), &count), MgNoError);
        switch (pick(8)) {
            case 0:
            case 1:
            case 2: {
                Handle h = MemNewHandle(1 + pick(20));
                // Appended, as GCC 12 at -O3 warns falsely (-Wrestrict) about "n" + std::string.
                const std::string name = P(std::string(1, 'n').append(std::to_string(step)));
                const MgStatus s = RAdd(h, f, T(type), pick(60) - 10, pick(2) ? PS(name) : nullptr);
                ASSERT_TRUE(s == MgNoError || s == MgResourceDuplicate);
                if (s)
                    MemDisposeHandle(h);
                else
                    seen.insert(h);
                break;
            }
            case 3:
                if (count) {
                    Handle h = nullptr;
                    ASSERT_EQ(RGetInd(f, T(type), 1 + pick(count), &h), MgNoError);
                    seen.insert(h);
                }
                break;
            case 4:
                if (count) {
                    Handle h = nullptr;
                    ASSERT_EQ(RGetInd(f, T(type), 1 + pick(count), &h), MgNoError);
                    ASSERT_EQ(RRemove(h, files[1 - which]), MgNoError);
                }
                break;
            case 5:
                if (count) {
                    Handle h = nullptr;
                    ASSERT_EQ(RGetInd(f, T(type), 1 + pick(count), &h), MgNoError);
                    int32_t attrs = 0;
                    ASSERT_EQ(RGetAttrs(h, &attrs), MgNoError);
                    if (attrs & RAttrChanged) break;
                    if (pick(2)) {
                        ASSERT_EQ(RDetach(h), MgNoError);
                    } else {
                        ASSERT_EQ(RRelease(h), MgNoError);
                        seen.erase(h);
                    }
                }
                break;
            case 6:
                ASSERT_EQ(RUpdateFile(f), MgNoError);
                break;
            case 7:
                if (pick(10) == 0) {
                    // Closing disposes every loaded handle of the file.
                    for (auto it = seen.begin(); it != seen.end();) {
                        const WalkResult w = Walk(*it);
                        it = w.file == f ? seen.erase(it) : std::next(it);
                    }
                    ASSERT_EQ(RCloseFile(f), MgNoError);
                    files[which] = Open(leaves[which]);
                }
                break;
        }
        if (step % 10 == 0) check(step);
    }
    check(-1);
    for (ResFile f : files) {
        for (auto it = seen.begin(); it != seen.end();)
            it = Walk(*it).file == f ? seen.erase(it) : std::next(it);
        ASSERT_EQ(RCloseFile(f), MgNoError);
    }
    for (Handle h : seen) MemDisposeHandle(h);
}

// Opening and loading 1,000 resources of many sizes with the Nth allocation failing: each step
// succeeds or gives 2, whatever loads holds its bytes, and the close gives back every block
// the open and the loads took.
TEST_F(RobustnessTest, OutOfMemoryAtEveryAllocationOfALoad) {
    constexpr int32_t kCount = 1000;
    TypeLayout t{"DATA", {}};
    for (int32_t id = 1; id <= kCount; ++id)
        t.refs.push_back({id, "", Bytes(size_t(id * 7 % 1100), uint8_t(id))});
    WriteFile("m", BuildFile({t}));
    Path path = MakePath("m");
    int64_t live = -1;
    for (int64_t n = 0;; ++n) {  // 0: a first pass without faults makes what stays for good
        plat::ResetFaults();
        plat::FailAllocationAt(n);
        int32_t loaded = 0;
        ResFile f = 0;
        MgStatus s = ROpenFile(path, FMModeRead, &f, nullptr, nullptr);
        ASSERT_TRUE(Ok(s)) << n << " open " << s;
        for (int32_t i = 1; s == MgNoError && i <= kCount; ++i) {
            Handle h = nullptr;
            const MgStatus got = RGetInd(f, T("DATA"), i, &h);
            ASSERT_TRUE(Ok(got)) << n << " load " << i << " " << got;
            if (got) continue;
            ASSERT_EQ(Bytes(*h, *h + MemHandleSize(h)), t.refs[size_t(i - 1)].data) << n;
            ++loaded;
        }
        if (s == MgNoError) {
            ASSERT_EQ(RCloseFile(f), MgNoError) << n;
        }
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

}  // namespace
