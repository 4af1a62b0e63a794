// Whole runs with -r (resources copied into the package) and -vi (an existing file updated in
// place). Source files are made and packages read back with the resource manager itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "resource/crafted_files.h"
#include "support/run_tool.h"

namespace {

class ResourceEnvironment : public ::testing::Environment {
  public:
    void SetUp() override {
        ASSERT_EQ(InitMemoryManager(), MgNoError);
        ASSERT_EQ(RInit(), MgNoError);
    }
};
const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new ResourceEnvironment);

struct Res {
    std::string type;
    int32_t id;
    std::string name;  // empty: none
    std::string data;
    int32_t attrs = 0;
    bool operator==(const Res&) const = default;
};

std::ostream& operator<<(std::ostream& os, const Res& r) {
    return os << "'" << r.type << "' " << r.id << " \"" << r.name << "\" [" << r.data.size()
              << " bytes] attrs " << r.attrs;
}

Path ToPath(const std::filesystem::path& p) {
    const std::string text = p.string();
    Path path = nullptr;
    EXPECT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(text.data()),
                          static_cast<int32_t>(text.size()), &path),
              MgNoError);
    return path;
}

std::string PStrText(const uint8_t* p) {
    return std::string(reinterpret_cast<const char*>(p + 1), p[0]);
}

// Makes a resource file holding `resources`, added in the order given.
void MakeResourceFile(const std::filesystem::path& file, const std::vector<Res>& resources) {
    Path path = ToPath(file);
    ASSERT_EQ(RCreateCorrectFile(path, 1, MgResType("CRTR"), MgResType("TEST"), 0644), MgNoError);
    ResFile f = 0;
    ASSERT_EQ(ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr), MgNoError);
    for (const Res& r : resources) {
        Handle h = MemNewHandle(static_cast<int32_t>(r.data.size()));
        ASSERT_NE(h, nullptr);
        if (!r.data.empty()) memcpy(*h, r.data.data(), r.data.size());
        uint8_t name[256] = {static_cast<uint8_t>(r.name.size())};
        memcpy(name + 1, r.name.data(), r.name.size());
        ASSERT_EQ(RAdd(h, f, MgResType(r.type.c_str()), r.id, r.name.empty() ? nullptr : name),
                  MgNoError)
            << r;
        if (r.attrs) {
            ASSERT_EQ(RSetAttrs(h, r.attrs | RAttrChanged), MgNoError) << r;
        }
    }
    ASSERT_EQ(RCloseFile(f), MgNoError);
    FPathRelease(path);
}

// Every resource of `file` in type-list order, and within a type in index order.
std::vector<Res> ReadResourceFile(const std::filesystem::path& file) {
    std::vector<Res> out;
    Path path = ToPath(file);
    ResFile f = 0;
    EXPECT_EQ(ROpenFile(path, FMModeRead, &f, nullptr, nullptr), MgNoError) << file;
    FPathRelease(path);
    if (!f) return out;
    int32_t types = 0;
    EXPECT_EQ(RCountTypes(f, &types), MgNoError);
    for (int32_t t = 1; t <= types; ++t) {
        ResType type = 0;
        int32_t count = 0;
        EXPECT_EQ(RGetIndType(f, &type, t), MgNoError);
        EXPECT_EQ(RCount(f, type, &count), MgNoError);
        for (int32_t i = 1; i <= count; ++i) {
            Handle h = nullptr;
            Res r;
            uint8_t name[256] = {0};
            EXPECT_EQ(RGetInd(f, type, i, &h), MgNoError);
            EXPECT_EQ(RGetInfo(h, &r.id, &type, name), MgNoError);
            EXPECT_EQ(RGetAttrs(h, &r.attrs), MgNoError);
            r.type.assign(reinterpret_cast<const char*>(&type), 4);
            r.name = PStrText(name);
            r.data.assign(*h, *h + MemHandleSize(h));
            out.push_back(r);
        }
    }
    EXPECT_EQ(RCloseFile(f), MgNoError);
    return out;
}

void WriteFile(const std::filesystem::path& p, const std::string& bytes) {
    std::ofstream(p, std::ios::binary) << bytes;
}

TEST(ImportCli, CopiesEveryResourceAfterThePackagesOwn) {
    TempDir dir;
    WriteFile(dir.path / "foo.dll", "HELLO");
    std::string big(5000, '\0');
    for (size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 13 + 1);
    // Types in an order no sort would give; ids added out of order within a type.
    const std::vector<Res> source = {
        {"STR ", 5, "five", "abc"},
        {"STR ", 2, "", "unnamed"},
        {"ICON", 128, "icon", big, RAttrProtected},
        {"ICON", -3, "", ""},
        {"DATA", 1, "d", "xyz!"},
        {"PLAT", 7, "other", "ppc "},  // only id 0 of the package's types collides
    };
    MakeResourceFile(dir.path / "src.rsrc", source);
    const std::string before = SlurpFile(dir.path / "src.rsrc");

    ToolResult r = RunTool(
        {"-c", "foo", "-d", dir.path.string(), "-r", (dir.path / "src.rsrc").string()}, dir.path);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(SlurpFile(dir.path / "src.rsrc"), before);  // the source is only read

    const std::vector<Res> want = {
        {"PLAT", 0, "foo", "i386"},                  //
        {"PLAT", 7, "other", "ppc "},                //
        {"MXSB", 0, "foo", "HELLO"},                 //
        {"STR ", 2, "", "unnamed"},                  //
        {"STR ", 5, "five", "abc"},                  //
        {"ICON", -3, "", ""},                        //
        {"ICON", 128, "icon", big, RAttrProtected},  //
        {"DATA", 1, "d", "xyz!"},
    };
    EXPECT_EQ(ReadResourceFile(dir.path / "foo.msb"), want);
}

TEST(ImportCli, CollisionsEmptyAndMissingSources) {
    struct Row {
        const char* what;
        bool make;
        std::vector<Res> source;
        int status;
        std::vector<Res> package;  // what foo.msb holds afterwards
    };
    const std::vector<Res> own = {{"PLAT", 0, "foo", "i386"}, {"MXSB", 0, "foo", "HELLO"}};
    const Row rows[] = {
        {"PLAT id 0 collides", true, {{"PLAT", 0, "x", "sparc"}}, 2, own},
        {"MXSB id 0 collides after one copied",
         true,
         {{"AAAA", 1, "", "a"}, {"MXSB", 0, "", "b"}},
         2,
         {own[0], own[1], {"AAAA", 1, "", "a"}}},
        {"no resources", true, {}, 0, own},
        {"missing source", false, {}, 2, own},
    };
    for (const Row& row : rows) {
        TempDir dir;
        WriteFile(dir.path / "foo.dll", "HELLO");
        if (row.make) MakeResourceFile(dir.path / "src.rsrc", row.source);
        ToolResult r = RunTool({"foo", "-r", (dir.path / "src.rsrc").string()}, dir.path);
        EXPECT_EQ(r.status, row.status) << row.what;
        EXPECT_EQ(ReadResourceFile(dir.path / "foo.msb"), row.package) << row.what;
    }
}

// The module and platform entries named like the code swap ids with the new ones; other
// entries of the code's name go, the rest stay. A target not holding the module is left alone.
TEST(ReplaceCli, IdsCrossAndOldEntriesGo) {
    const std::vector<Res> withoutModule = {{"MXSB", 7, "bar", "x"}, {"PLAT", 9, "foo", "i386"}};
    const struct {
        std::vector<Res> target;
        int status;
        std::vector<Res> after;  // sorted by type and id: type order after removals is free
    } rows[] = {
        {{
             {"MXSB", 7, "foo", "oldcode"},
             {"PLAT", 9, "foo", "i386"},
             {"LIsb", 3, "foo", "lib"},
             {"LIsb", 4, "bar", "keep me"},
             {"vers", 1, "", "1.0", RAttrProtected},
         },
         0,
         {
             {"LIsb", 4, "bar", "keep me"},
             {"MXSB", 9, "foo", "NEWCODE"},
             {"PLAT", 7, "foo", "i386"},
             {"vers", 1, "", "1.0", RAttrProtected},
         }},
        {withoutModule, 2, withoutModule},
    };
    for (const auto& row : rows) {
        TempDir dir;
        WriteFile(dir.path / "foo.dll", "NEWCODE");
        MakeResourceFile(dir.path / "target.vi", row.target);
        ToolResult r = RunTool(
            {"-c", "foo", "-d", dir.path.string(), "-vi", (dir.path / "target.vi").string()},
            dir.path);
        EXPECT_EQ(r.status, row.status) << r.err;
        EXPECT_FALSE(std::filesystem::exists(dir.path / "foo.msb"));
        std::vector<Res> got = ReadResourceFile(dir.path / "target.vi");
        std::sort(got.begin(), got.end(), [](const Res& a, const Res& b) {
            return std::tie(a.type, a.id) < std::tie(b.type, b.id);
        });
        EXPECT_EQ(got, row.after) << row.status;
    }
}

// Crafted files given to -r and -vi: a sound package or a clean status 2, never a crash, a
// failure report or a loop, and never a resource of the file changed behind its back.
TEST(HostileCli, CraftedSourcesAndTargets) {
    auto bytes = [](const Bytes& b) { return std::string(b.begin(), b.end()); };
    const std::vector<Res> own = {{"PLAT", 0, "foo", "i386"}, {"MXSB", 0, "foo", "HELLO"}};
    Bytes huge = crafted::Base();
    crafted::BadData()[0].spoil(huge);
    Bytes overlapping = crafted::Base();
    crafted::BadMaps()[0].spoil(overlapping);
    const Res a1 = {"AAAA", 1, "one", "\1\2\3", RAttrProtected};
    const struct {
        const char* what;
        Bytes source;
        int status;
        std::vector<Res> package;
    } rows[] = {
        {"changed bit in the source",
         crafted::RunTimeBitsFromTheFile(),
         0,
         {own[0], own[1], a1, {"AAAA", 2, "", "\4"}, {"BBBB", 7, "seven", "\5\6\7\10\11"}}},
        {"a resource of nearly 2 GiB in a short source", huge, 2, own},
        {"overlapping lists", overlapping, 2, own},
    };
    for (const auto& row : rows) {
        TempDir dir;
        WriteFile(dir.path / "foo.dll", "HELLO");
        WriteFile(dir.path / "src.rsrc", bytes(row.source));
        ToolResult r = RunTool({"foo", "-r", (dir.path / "src.rsrc").string()}, dir.path);
        EXPECT_EQ(r.status, row.status) << row.what << r.err;
        EXPECT_EQ(ReadResourceFile(dir.path / "foo.msb"), row.package) << row.what;
        EXPECT_EQ(SlurpFile(dir.path / "src.rsrc"), bytes(row.source)) << row.what;
    }
    // Targets whose module shares its data with another resource, or whose data stands behind
    // a gap: the other resources come through the replacement unchanged.
    for (const Bytes& layout : {crafted::SharedData(), crafted::DataBehindAGap(16)}) {
        TempDir dir;
        WriteFile(dir.path / "seven.dll", "NEWCODE");
        Bytes target = layout;
        // BBBB 7 named "seven" becomes the module of code "seven".
        memcpy(&target[crafted::MapAt(target) + crafted::kTypeB], "MXSB", 4);
        WriteFile(dir.path / "t.vi", bytes(target));
        const std::vector<Res> before = ReadResourceFile(dir.path / "t.vi");
        ToolResult r = RunTool(
            {"seven", "-d", dir.path.string(), "-vi", (dir.path / "t.vi").string()}, dir.path);
        EXPECT_EQ(r.status, 0) << r.err;
        std::vector<Res> after = ReadResourceFile(dir.path / "t.vi");
        ASSERT_EQ(after.size(), 4u);
        EXPECT_EQ(after[0], before[0]);
        EXPECT_EQ(after[1], before[1]);
        EXPECT_EQ(after[3], (Res{"MXSB", 0, "seven", "NEWCODE"}));
    }
}

}  // namespace

// A -vi whose write-back fails (an untouched resource's data lies beyond the file) gives 2 and
// leaves the target as it was, also with an empty module, whose handle the file still holds at
// the end: a leak checker must not take it for a leak and end the run with its own status.
TEST(HostileCli, FailedWriteBackOfAViWithAnEmptyModule) {
    TempDir dir;
    WriteFile(dir.path / "seven.dll", "");
    Bytes target = crafted::Base();
    memcpy(&target[crafted::MapAt(target) + crafted::kTypeB], "MXSB", 4);
    crafted::BadData()[2].spoil(target);
    const std::string bytes(target.begin(), target.end());
    WriteFile(dir.path / "t.vi", bytes);
    ToolResult r =
        RunTool({"seven", "-d", dir.path.string(), "-vi", (dir.path / "t.vi").string()}, dir.path);
    EXPECT_EQ(r.status, 2) << r.err;
    EXPECT_EQ(SlurpFile(dir.path / "t.vi"), bytes);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path), {}), 2);
}
