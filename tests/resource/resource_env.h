// Shared set-up of the resource suite: managers started once per process, a fresh temporary
// directory per test, and a builder of resource files byte by byte.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "platform/faults.h"
#include "resource/file_builder.h"
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

class ResourceTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    std::string FilePath(const std::string& leaf) const { return (dir_->path / leaf).string(); }
    Path MakePath(const std::string& leaf);
    void WriteFile(const std::string& leaf, const Bytes& bytes) const;
    Bytes ReadFile(const std::string& leaf) const;
    // Creates an empty resource file and opens it read-write.
    ResFile CreateAndOpen(const std::string& leaf);
    ResFile Open(const std::string& leaf, int32_t mode = FMModeReadWrite,
                 MgStatus expect = MgNoError);
    // Adds a new handle holding `data`.
    Handle AddData(ResFile f, const char* type, int32_t id, const Bytes& data,
                   const std::string& name = "");
    static Bytes Contents(Handle h);
    // The contents of a resource, loaded by id or by name; empty when the load fails.
    static Bytes Load(ResFile f, const char* type, int32_t id);
    static Bytes LoadNamed(ResFile f, const char* type, const std::string& name);
    // The ids of a type in index order.
    static std::vector<int32_t> Ids(ResFile f, const char* type);

    std::unique_ptr<TempDir> dir_;
    std::vector<Path> paths_;
};
