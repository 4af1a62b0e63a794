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

void PutBig32(Bytes& b, size_t at, uint32_t v) {
    b[at] = uint8_t(v >> 24);
    b[at + 1] = uint8_t(v >> 16);
    b[at + 2] = uint8_t(v >> 8);
    b[at + 3] = uint8_t(v);
}

void AppendBig32(Bytes& b, uint32_t v) {
    b.resize(b.size() + 4);
    PutBig32(b, b.size() - 4, v);
}

// Grows `to` first and copies after, rather than a vector range insert, which GCC 12 at -O3
// misjudges as writing out of bounds.
static void Append(Bytes& to, const Bytes& from) {
    const size_t at = to.size();
    to.resize(at + from.size());
    std::copy(from.begin(), from.end(), to.begin() + std::ptrdiff_t(at));
}

uint32_t Big32At(const Bytes& b, size_t at) {
    return (uint32_t(b[at]) << 24) | (uint32_t(b[at + 1]) << 16) | (uint32_t(b[at + 2]) << 8) |
           b[at + 3];
}

Bytes BuildFile(const std::vector<TypeLayout>& types, int16_t version, const char* fileType,
                const char* creator) {
    Bytes data, refs, names;
    Bytes typeList;
    int32_t refCount = 0;
    for (const auto& t : types) refCount += int32_t(t.refs.size());
    AppendBig32(typeList, uint32_t(int32_t(types.size()) - 1));
    int32_t listOffset = 4 + 12 * int32_t(types.size());
    for (const auto& t : types) {
        typeList.insert(typeList.end(), t.type.begin(), t.type.end());
        AppendBig32(typeList, uint32_t(int32_t(t.refs.size()) - 1));
        AppendBig32(typeList, uint32_t(listOffset));
        listOffset += 20 * int32_t(t.refs.size());
        for (const auto& r : t.refs) {
            AppendBig32(refs, uint32_t(r.id));
            if (r.name.empty()) {
                AppendBig32(refs, 0xFFFFFFFFu);
            } else {
                AppendBig32(refs, uint32_t(names.size()));
                names.push_back(uint8_t(r.name.size()));
                names.insert(names.end(), r.name.begin(), r.name.end());
            }
            AppendBig32(refs, uint32_t(r.attrs));
            AppendBig32(refs, uint32_t(data.size()));
            AppendBig32(refs, 0);
            AppendBig32(data, uint32_t(r.data.size()));
            data.insert(data.end(), r.data.begin(), r.data.end());
            while (data.size() % 4) data.push_back(0);
        }
    }
    Bytes header(32, 0);
    memcpy(header.data(), "RSRC\r\n", 6);
    header[6] = uint8_t(version >> 8);
    header[7] = uint8_t(version);
    memcpy(header.data() + 8, fileType, 4);
    memcpy(header.data() + 12, creator, 4);
    const uint32_t mapSize =
        refCount ? uint32_t(52 + typeList.size() + refs.size() + names.size()) : 0;
    PutBig32(header, 16, uint32_t(32 + data.size()));
    PutBig32(header, 20, mapSize);
    PutBig32(header, 24, 32);
    PutBig32(header, 28, uint32_t(data.size()));
    Bytes file = header;
    Append(file, data);
    if (!refCount) return file;
    Bytes map = header;
    map.resize(52, 0);
    PutBig32(map, 44, 52);
    PutBig32(map, 48, names.empty() ? 0 : uint32_t(52 + typeList.size() + refs.size()));
    map.insert(map.end(), typeList.begin(), typeList.end());
    map.insert(map.end(), refs.begin(), refs.end());
    map.insert(map.end(), names.begin(), names.end());
    Append(file, map);
    return file;
}

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
