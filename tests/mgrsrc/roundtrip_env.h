// Helpers of the unpack, pack and edit tests: files made through the library itself (so that
// they hold exactly what the write-back writes) and the round trip through the tool.
#pragma once

#include <ostream>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "mgrsrc/mgrsrc_env.h"

namespace fs = std::filesystem;

// Starts the managers that the in-process edits use, once per process.
class LibraryEnvironment : public ::testing::Environment {
  public:
    void SetUp() override {
        ASSERT_EQ(InitMemoryManager(), MgNoError);
        ASSERT_EQ(RInit(), MgNoError);
    }
};
inline const auto* const kLibraryEnvironment =
    ::testing::AddGlobalTestEnvironment(new LibraryEnvironment);

// One edit of an open file. Adds and changes carry `data`; kSetAttrs keeps a pending change.
struct Edit {
    enum Kind { kAdd, kChange, kRemove, kSetAttrs, kUpdate } kind = kAdd;
    std::string type = "AAAA";
    int32_t id = 0;
    std::string name;  // kAdd: empty for none
    Bytes data;
    int32_t attrs = 0;
};

inline std::ostream& operator<<(std::ostream& os, const Edit& e) {
    return os << "{" << int(e.kind) << " '" << e.type << "' " << e.id << " name of "
              << e.name.size() << " data of " << e.data.size() << " attrs " << e.attrs << "}";
}

// Makes `file` a new resource file and applies the edits in order through the library, then
// closes it. Edits the library refuses are skipped; so are removes whose result the library
// keeps wrong on purpose (an unnamed resource out of a map that never held a name makes the
// name-list offset negative) or can't open again (the last resource).
inline void MakeWithLibrary(const fs::path& file, const std::vector<Edit>& edits) {
    const std::string text = file.string();
    Path path = nullptr;
    ASSERT_EQ(
        FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &path),
        MgNoError);
    ResFile f = 0;
    ASSERT_EQ(RCreateCorrectFile(path, 1, MgResType("CRTR"), MgResType("TEST"), 0644), MgNoError);
    ASSERT_EQ(ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr), MgNoError);
    FPathRelease(path);
    int live = 0;
    bool namesStored = false;
    for (const Edit& e : edits) {
        const ResType type = MgResType(e.type.c_str());
        Handle h = nullptr;
        if (e.kind == Edit::kAdd) {
            h = MemNewHandle(int32_t(e.data.size()));
            if (!e.data.empty()) memcpy(*h, e.data.data(), e.data.size());
            const std::string name = std::string(1, char(e.name.size())) + e.name;
            if (RAdd(h, f, type, e.id, reinterpret_cast<ConstPStr>(name.data())) == MgNoError) {
                ++live;
                namesStored = namesStored || !e.name.empty();
            } else {
                MemDisposeHandle(h);
            }
        } else if (e.kind == Edit::kUpdate) {
            EXPECT_EQ(RUpdateFile(f), MgNoError);
        } else if (RGet(f, type, e.id, &h) == MgNoError) {
            int32_t id = 0, attrs = 0;
            uint8_t name[256];
            RGetInfo(h, &id, nullptr, name);
            RGetAttrs(h, &attrs);
            if (e.kind == Edit::kChange) {
                ASSERT_EQ(MemResizeHandle(h, int32_t(e.data.size())), MgNoError);
                if (!e.data.empty()) memcpy(*h, e.data.data(), e.data.size());
                RChanged(h);
            } else if (e.kind == Edit::kSetAttrs) {
                RSetAttrs(h, (e.attrs & ~RAttrChanged) | (attrs & RAttrChanged));
            } else if (live > 1 && (name[0] || namesStored) && RRemove(h, f) == MgNoError) {
                MemDisposeHandle(h);
                --live;
            }
        }
    }
    ASSERT_EQ(RCloseFile(f), MgNoError);
}

// unpack `file` (in `dir`) into `folder`, then pack it as `packed`; the packed file's bytes.
inline Bytes RoundTrip(const fs::path& dir, const std::string& file,
                       const std::string& folder = "unpacked",
                       const std::string& packed = "packed") {
    ToolResult unpack = Mgrsrc({"unpack", file, folder}, dir);
    EXPECT_EQ(unpack.status, 0) << unpack.err;
    ToolResult pack = Mgrsrc({"pack", folder, packed}, dir);
    EXPECT_EQ(pack.status, 0) << pack.err;
    return AsBytes(SlurpFile(dir / packed));
}
