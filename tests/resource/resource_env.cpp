#include "resource/resource_env.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

class ResourceEnvironment : public ::testing::Environment {
  public:
    void SetUp() override {
        ASSERT_EQ(InitMemoryManager(), MgNoError);
        ASSERT_EQ(RInit(), MgNoError);
    }
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new ResourceEnvironment);

}  // namespace

void ResourceTest::SetUp() {
    plat::ResetFaults();
    dir_ = std::make_unique<TempDir>();
}

void ResourceTest::TearDown() {
    plat::ResetFaults();
    for (Path p : paths_) FPathRelease(p);
    dir_.reset();
}

Path ResourceTest::MakePath(const std::string& leaf) {
    const std::string text = FilePath(leaf);
    Path p = nullptr;
    EXPECT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &p),
              MgNoError);
    paths_.push_back(p);
    return p;
}

void ResourceTest::WriteFile(const std::string& leaf, const Bytes& bytes) const {
    std::ofstream out(FilePath(leaf), std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

Bytes ResourceTest::ReadFile(const std::string& leaf) const {
    std::ifstream in(FilePath(leaf), std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

ResFile ResourceTest::CreateAndOpen(const std::string& leaf) {
    EXPECT_EQ(RCreateCorrectFile(MakePath(leaf), 1, T("CRTR"), T("TEST"), 0644), MgNoError);
    return Open(leaf);
}

ResFile ResourceTest::Open(const std::string& leaf, int32_t mode, MgStatus expect) {
    ResFile f = 0;
    EXPECT_EQ(ROpenFile(MakePath(leaf), mode, &f, nullptr, nullptr), expect) << leaf;
    return f;
}

Handle ResourceTest::AddData(ResFile f, const char* type, int32_t id, const Bytes& data,
                             const std::string& name) {
    Handle h = MemNewHandle(int32_t(data.size()));
    if (!data.empty()) memcpy(*h, data.data(), data.size());
    const std::string p = P(name);
    EXPECT_EQ(RAdd(h, f, T(type), id, name.empty() ? nullptr : PS(p)), MgNoError);
    return h;
}

Bytes ResourceTest::Contents(Handle h) {
    const int32_t n = MemHandleSize(h);
    return Bytes(*h, *h + n);
}

Bytes ResourceTest::Load(ResFile f, const char* type, int32_t id) {
    Handle h = nullptr;
    EXPECT_EQ(RGet(f, T(type), id, &h), MgNoError) << type << " " << id;
    return h ? Contents(h) : Bytes();
}

Bytes ResourceTest::LoadNamed(ResFile f, const char* type, const std::string& name) {
    Handle h = nullptr;
    EXPECT_EQ(RGetNamed(f, T(type), PS(P(name)), &h), MgNoError) << type << " " << name;
    return h ? Contents(h) : Bytes();
}

std::vector<int32_t> ResourceTest::Ids(ResFile f, const char* type) {
    std::vector<int32_t> ids;
    int32_t n = 0;
    EXPECT_EQ(RCount(f, T(type), &n), MgNoError);
    for (int32_t i = 1; i <= n; ++i) {
        Handle h = nullptr;
        int32_t id = 0;
        EXPECT_EQ(RGetInd(f, T(type), i, &h), MgNoError) << i;
        EXPECT_EQ(RGetInfo(h, &id, nullptr, nullptr), MgNoError);
        ids.push_back(id);
    }
    return ids;
}
