// Shared set-up of the resource suites (resource, and the packager's command-line runs):
// managers started once per process, a fresh temporary directory per test, short ways to
// make, open, fill and read resource files, and resources as whole records: what a file
// holds, read through the manager and compared at once, and the layout that writes them.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "platform/faults.h"
#include "resource/file_builder.h"
#include "support/run_tool.h"
#include "support/temp_dir.h"

struct Res {
    std::string type;
    int32_t id;
    std::string name;  // empty: none
    Bytes data;
    int32_t attrs = 0;
    bool operator==(const Res&) const = default;
};

inline void PrintTo(const Res& r, std::ostream* os) {
    *os << "'" << r.type << "' " << r.id << " \"" << r.name << "\" [" << r.data.size()
        << " bytes] attrs " << r.attrs;
}

inline Bytes B(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

inline Path NewPath(const std::string& text) {
    Path p = nullptr;
    EXPECT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &p),
              MgNoError);
    return p;
}

// Every resource of an open file, loaded, in type-list order and within a type in index order.
inline std::vector<Res> Records(ResFile f) {
    std::vector<Res> out;
    int32_t types = 0, n = 0;
    EXPECT_EQ(RCountTypes(f, &types), MgNoError);
    for (int32_t t = 1; t <= types; ++t) {
        ResType type = 0;
        EXPECT_EQ(RGetIndType(f, &type, t), MgNoError);
        EXPECT_EQ(RCount(f, type, &n), MgNoError);
        for (int32_t i = 1; i <= n; ++i) {
            Handle h = nullptr;
            uint8_t name[256] = {0};
            Res r{std::string(reinterpret_cast<const char*>(&type), 4), 0, "", {}};
            if (RGetInd(f, type, i, &h) || !h || RGetInfo(h, &r.id, nullptr, name) ||
                RGetAttrs(h, &r.attrs))
                ADD_FAILURE() << r.type << " " << i;
            else
                out.push_back({r.type, r.id, std::string(name + 1, name + 1 + name[0]),
                               Bytes(*h, *h + MemHandleSize(h)), r.attrs});
        }
    }
    return out;
}

// The records of the file named `file`, opened for reading; none when it doesn't open.
inline std::vector<Res> FileRecords(const std::string& file) {
    Path p = NewPath(file);
    ResFile f = 0;
    const MgStatus opened = ROpenFile(p, FMModeRead, &f, nullptr, nullptr);
    FPathRelease(p);
    if (opened) return {};
    std::vector<Res> records = Records(f);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    return records;
}

// The layout that holds `records`: each run of one type becomes one type entry.
inline std::vector<TypeLayout> Layout(const std::vector<Res>& records) {
    std::vector<TypeLayout> layout;
    for (const Res& r : records) {
        if (layout.empty() || layout.back().type != r.type) layout.push_back({r.type, {}});
        layout.back().refs.push_back({r.id, r.name, r.data, r.attrs});
    }
    return layout;
}

// The records a layout holds, in its own order.
inline std::vector<Res> Flat(const std::vector<TypeLayout>& layout) {
    std::vector<Res> records;
    for (const auto& t : layout)
        for (const auto& r : t.refs) records.push_back({t.type, r.id, r.name, r.data, r.attrs});
    return records;
}

inline ResType T(const char* s) {
    return MgResType(s);
}

// A PStr in a std::string: count byte first.
inline std::string P(const std::string& text) {
    return std::string(1, static_cast<char>(text.size())) + text;
}
inline ConstPStr PS(const std::string& p) {
    return reinterpret_cast<ConstPStr>(p.data());
}

class ResourceEnvironment : public ::testing::Environment {
  public:
    void SetUp() override {
        ASSERT_EQ(InitMemoryManager(), MgNoError);
        ASSERT_EQ(RInit(), MgNoError);
    }
};
inline const auto* const kResourceEnvironment =
    ::testing::AddGlobalTestEnvironment(new ResourceEnvironment);

class ResourceTest : public ::testing::Test {
  protected:
    void SetUp() override { plat::ResetFaults(); }
    void TearDown() override {
        plat::ResetFaults();
        for (Path p : paths_) FPathRelease(p);
    }

    std::string FilePath(const std::string& leaf) const { return (dir_.path / leaf).string(); }
    Path MakePath(const std::string& leaf) { return paths_.emplace_back(NewPath(FilePath(leaf))); }
    void WriteFile(const std::string& leaf, const Bytes& bytes) const {
        WriteBytes(FilePath(leaf), bytes);
    }
    Bytes ReadFile(const std::string& leaf) const { return B(SlurpFile(dir_.path / leaf)); }
    // Writes `bytes` as `leaf` and opens it.
    ResFile Put(const std::string& leaf, const Bytes& bytes, int32_t mode = FMModeReadWrite,
                MgStatus expect = MgNoError) {
        WriteFile(leaf, bytes);
        return Open(leaf, mode, expect);
    }
    // Creates an empty resource file and opens it read-write.
    ResFile CreateAndOpen(const std::string& leaf) {
        EXPECT_EQ(RCreateCorrectFile(MakePath(leaf), 1, T("CRTR"), T("TEST"), 0644), MgNoError);
        return Open(leaf);
    }
    ResFile Open(const std::string& leaf, int32_t mode = FMModeReadWrite,
                 MgStatus expect = MgNoError) {
        ResFile f = 0;
        EXPECT_EQ(ROpenFile(MakePath(leaf), mode, &f, nullptr, nullptr), expect) << leaf;
        return f;
    }
    // Adds a new handle holding `data`.
    static Handle AddData(ResFile f, const char* type, int32_t id, const Bytes& data,
                          const std::string& name = "") {
        Handle h = MemNewHandle(int32_t(data.size()));
        if (!data.empty()) memcpy(*h, data.data(), data.size());
        const std::string p = P(name);
        EXPECT_EQ(RAdd(h, f, T(type), id, name.empty() ? nullptr : PS(p)), MgNoError);
        return h;
    }
    static Bytes Contents(Handle h) { return h ? Bytes(*h, *h + MemHandleSize(h)) : Bytes(); }
    // The file that an open file's memory image makes.
    static Bytes Image(ResFile f) {
        Handle image = nullptr;
        EXPECT_EQ(RGetMemFileHandle(f, &image), MgNoError);
        Bytes b = Contents(image);
        MemDisposeHandle(image);
        return b;
    }
    // A resource loaded by id; null when the load fails.
    static Handle Get(ResFile f, const char* type, int32_t id) {
        Handle h = nullptr;
        EXPECT_EQ(RGet(f, T(type), id, &h), MgNoError) << type << " " << id;
        return h;
    }
    // The contents of a resource loaded by id; empty when the load fails.
    static Bytes Load(ResFile f, const char* type, int32_t id) {
        return Contents(Get(f, type, id));
    }
    static int32_t FileAttrs(ResFile f) {
        int32_t attrs = -1;
        EXPECT_EQ(RGetFileAttrs(f, &attrs), MgNoError);
        return attrs;
    }
    static int32_t Attrs(Handle h) {
        int32_t attrs = -1;
        EXPECT_EQ(RGetAttrs(h, &attrs), MgNoError);
        return attrs;
    }
    // Closes a file whose map no longer matches its disk without writing anything.
    static void Drop(ResFile f) {
        ASSERT_EQ(RSetFileAttrs(f, FileAttrs(f) & ~RFileDirty), MgNoError);
        ASSERT_EQ(RCloseFile(f), MgNoError);
    }
    // Files in the test's directory other than `leaf` (whose names start with `prefix`): a
    // write-back leaves none behind.
    int32_t Strays(const std::string& leaf, const std::string& prefix = "") const {
        int32_t n = 0;
        for (const auto& e : std::filesystem::directory_iterator(dir_.path)) {
            const std::string name = e.path().filename().string();
            n += name != leaf && name.rfind(prefix, 0) == 0;
        }
        return n;
    }

    TempDir dir_;
    std::vector<Path> paths_;
};
