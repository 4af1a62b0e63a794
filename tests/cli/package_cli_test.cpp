// Whole runs of the built tool: the bytes of the packages it writes, and its exit statuses.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/run_tool.h"

namespace {

std::string Be32(uint32_t v) {
    return std::string{static_cast<char>(v >> 24), static_cast<char>(v >> 16),
                       static_cast<char>(v >> 8), static_cast<char>(v)};
}

void WriteFile(const std::filesystem::path& p, const std::string& bytes) {
    std::ofstream(p, std::ios::binary) << bytes;
}

// The package of code name "foo" and the module "HELLO", as it must stand byte for byte.
std::string WorkedPackage() {
    std::string header = std::string("RSRC\r\n") + std::string("\0\3", 2) + "MXSB" + "MXDX" +
                         Be32(52) + Be32(128) + Be32(32) + Be32(20);
    std::string data = Be32(4) + "i386" + Be32(5) + "HELLO" + std::string(3, '\0');
    std::string map = header + Be32(0) + Be32(0) + Be32(0x20) + Be32(52) + Be32(120) + Be32(1) +
                      "PLAT" + Be32(0) + Be32(28) + "MXSB" + Be32(0) + Be32(48) +
                      // references: id, name, attributes, data, run-time handle word
                      Be32(0) + Be32(0) + Be32(0) + Be32(0) + Be32(0) +  //
                      Be32(0) + Be32(4) + Be32(0) + Be32(8) + Be32(0) +  //
                      "\3foo\3foo";
    return header + data + map;
}

TEST(PackageCli, WorkedPackageByteForByte) {
    TempDir dir;
    WriteFile(dir.path / "foo.dll", "HELLO");
    ToolResult r = RunTool({"-c", "foo", "-d", dir.path.string() + "/"}, dir.path);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "");
    std::string got = SlurpFile(dir.path / "foo.msb");
    ASSERT_EQ(got.size(), 180u);
    std::string want = WorkedPackage();
    for (size_t i = 0; i < want.size(); ++i) EXPECT_EQ(got[i], want[i]) << "offset " << i;
}

TEST(PackageCli, ModuleSizesArePackedWhole) {
    for (size_t size : {0u, 3u, 4u, 4092u, 4093u, 4096u, 1u << 20, (5u << 20) + 3}) {
        TempDir dir;
        std::string module(size, '\0');
        for (size_t i = 0; i < size; ++i) module[i] = static_cast<char>(i * 31 + 7);
        WriteFile(dir.path / "m.dll", module);
        ToolResult r = RunTool({"m", "-d", dir.path.string()}, dir.path);
        ASSERT_EQ(r.status, 0) << size;
        std::string got = SlurpFile(dir.path / "m.msb");
        size_t pad = (4 - size % 4) % 4;
        ASSERT_EQ(got.size(), 32 + 8 + 4 + size + pad + 128 - 8 + 4) << size;  // names "\1m" x2
        EXPECT_EQ(got.substr(40, 4), Be32(static_cast<uint32_t>(size))) << size;
        EXPECT_EQ(got.substr(44, size), module) << size;
        EXPECT_EQ(got.substr(44 + size, pad), std::string(pad, '\0')) << size;
    }
}

// The one line the tool prints, on the error stream; failed runs print nothing at all.
TEST(PackageCli, SuccessLineOnlyWhenThePackageIsMade) {
    TempDir dir;
    WriteFile(dir.path / "foo.dll", "HELLO");
    const struct {
        std::vector<std::string> args;
        int status;
        const char* err;
    } rows[] = {
        {{"-c", "foo", "-t", "CIN"},
         0,
         "Meridax resource file, type 'CIN ', name 'foo.msb', created properly.\n"},
        {{"-c", "foo", "-t", "DRVR"},
         0,
         "Meridax resource file, type 'DRVR', name 'foo.msb', created properly.\n"},
        {{"-c", "foo", "-t", "'CIN"},
         0,
         "Meridax resource file, type 'CIN ', name 'foo.msb', created properly.\n"},
        {{"-c", "foo", "-t", "MXSB"}, 1, ""},
        {{"-c", "gone"}, 2, ""},
        {{"-c", "foo", "-r", (dir.path / "gone.rsrc").string()}, 2, ""},
    };
    for (const auto& row : rows) {
        ToolResult r = RunTool(row.args, dir.path);
        EXPECT_EQ(r.status, row.status) << row.args.back();
        EXPECT_EQ(r.out, "") << row.args.back();
        EXPECT_EQ(r.err, row.err) << row.args.back();
    }
}

TEST(PackageCli, MissingModuleGivesTwoAndNoPackage) {
    TempDir dir;
    ToolResult r = RunTool({"-c", "nothing"}, dir.path);
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "");
    EXPECT_FALSE(std::filesystem::exists(dir.path / "nothing.msb"));
}

TEST(PackageCli, ExistingPackageIsReplacedWhole) {
    TempDir dir;
    WriteFile(dir.path / "foo.dll", "HELLO");
    WriteFile(dir.path / "foo.msb", std::string(5000, 'x'));
    ASSERT_EQ(RunTool({"foo"}, dir.path).status, 0);
    EXPECT_EQ(SlurpFile(dir.path / "foo.msb"), WorkedPackage());
}

// Long names: the ".dll" and ".msb" appends clip at 255 characters and 4 is taken off anyway.
TEST(PackageCli, LongCodeNames) {
    const struct {
        size_t length;
        size_t moduleNameLength;   // the file looked up
        size_t packageBaseLength;  // characters before ".msb"
    } rows[] = {{251, 255, 251}, {252, 255, 251}, {254, 255, 251}, {255, 255, 251}};
    for (const auto& row : rows) {
        TempDir dir;
        std::string name(row.length, 'n');
        std::string module =
            name + std::string(".dll").substr(0, row.moduleNameLength - row.length);
        WriteFile(dir.path / module, "CODE");
        ToolResult r = RunTool({name}, dir.path);
        EXPECT_EQ(r.status, 0) << row.length;
        std::string package = std::string(row.packageBaseLength, 'n') + ".msb";
        EXPECT_TRUE(std::filesystem::exists(dir.path / package)) << row.length;
    }
}

}  // namespace
