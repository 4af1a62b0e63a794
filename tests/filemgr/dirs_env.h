// Shared set-up of the directory tests: owned paths and handles, the name and record lists
// of a listing, and a fresh directory per test.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <tuple>

#include "mg/filemgr.h"
#include "mg/filetypes.h"
#include "mg/path.h"
#include "platform/faults.h"
#include "support/host_rules.h"
#include "support/memory_env.h"
#include "support/run_tool.h"

namespace fs = std::filesystem;

// Seconds from 1904 to 1970.
constexpr uint32_t kUnixEpochSeconds = 2082844800u;

struct OwnedPath {
    Path p = nullptr;
    explicit OwnedPath(const std::string& text) {
        EXPECT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(text.data()),
                              static_cast<int32_t>(text.size()), &p),
                  MgNoError);
    }
    ~OwnedPath() { FPathRelease(p); }
    operator Path() const { return p; }
};

struct OwnedHandle {
    Handle h = MemNewHandle(0);
    ~OwnedHandle() { MemDisposeHandle(h); }
    operator Handle() const { return h; }
};

inline std::vector<std::string> Names(Handle names) {
    int32_t count = 0;
    memcpy(&count, *names, 4);
    std::vector<std::string> out;
    for (int32_t i = 0, at = 4; i < count; ++i, at += 1 + (*names)[at])
        out.emplace_back(reinterpret_cast<char*>(*names + at + 1), (*names)[at]);
    return out;
}

// A listing's names with their records' flags and types.
using Entries = std::vector<std::tuple<std::string, uint32_t, ResType>>;
inline Entries EntriesOf(Handle names, Handle types) {
    Entries out;
    for (const std::string& name : Names(names)) {
        DirEntryRecord r;
        memcpy(&r, *types + 8 * out.size(), 8);
        out.emplace_back(name, r.flags, r.type);
    }
    return out;
}

inline std::string PathText(Path p) {
    Handle text = nullptr;
    EXPECT_EQ(FPathToLStr(p, &text), MgNoError);
    std::string s(reinterpret_cast<char*>(*text + 4), reinterpret_cast<LStr*>(*text)->count);
    MemDisposeHandle(text);
    return s;
}

inline bool IsVolumeKind(ResType t) {
    return t == MgResType("hdsk") || t == MgResType("flpy") || t == MgResType("srvr");
}

class DirsTest : public ::testing::Test {
  protected:
    TempDir dir;
    std::string Name(const std::string& leaf) {
        return (dir.path / leaf).make_preferred().string();
    }
    // A file of `bytes`, and with `bits` the permissions that it holds.
    std::string Make(const std::string& leaf, const std::string& bytes = "x", int bits = -1) {
        std::ofstream(dir.path / leaf, std::ios::binary) << bytes;
        if (bits >= 0) fs::permissions(dir.path / leaf, fs::perms(bits), fs::perm_options::replace);
        return Name(leaf);
    }
    std::string MakeDir(const std::string& leaf) {
        std::filesystem::create_directories(dir.path / leaf);
        return Name(leaf);
    }
    void TearDown() override { plat::ResetFaults(); }
};
