// Shared set-up of the resource suite: managers started once per process, a fresh temporary
// directory per test, and short ways to make, open, fill and read resource files.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "mg/filemgr.h"
#include "platform/faults.h"
#include "resource/records.h"
#include "support/temp_dir.h"

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
    Bytes ReadFile(const std::string& leaf) const {
        std::ifstream in(FilePath(leaf), std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
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
    static Bytes Contents(Handle h) { return Bytes(*h, *h + MemHandleSize(h)); }
    // A resource loaded by id; null when the load fails.
    static Handle Get(ResFile f, const char* type, int32_t id) {
        Handle h = nullptr;
        EXPECT_EQ(RGet(f, T(type), id, &h), MgNoError) << type << " " << id;
        return h;
    }
    // The contents of a resource, loaded by id or by name; empty when the load fails.
    static Bytes Load(ResFile f, const char* type, int32_t id) {
        Handle h = Get(f, type, id);
        return h ? Contents(h) : Bytes();
    }
    static Bytes LoadNamed(ResFile f, const char* type, const std::string& name) {
        Handle h = nullptr;
        EXPECT_EQ(RGetNamed(f, T(type), PS(P(name)), &h), MgNoError) << type << " " << name;
        return h ? Contents(h) : Bytes();
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
    // Files in the test's directory other than `leaf`: a write-back leaves none behind.
    int32_t Strays(const std::string& leaf) const {
        int32_t n = 0;
        for (const auto& e : std::filesystem::directory_iterator(dir_.path))
            n += e.path().filename() != leaf;
        return n;
    }

    TempDir dir_;
    std::vector<Path> paths_;
};
