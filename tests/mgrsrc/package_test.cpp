// mgrsrc on packages that mxsbutil makes: list, extract and verify them, and compare builds.
#include <gtest/gtest.h>

#include <set>

#include "mgrsrc/mgrsrc_env.h"

namespace {

namespace fs = std::filesystem;

Bytes Module(size_t size, uint8_t seed) {
    Bytes b(size);
    for (size_t i = 0; i < size; ++i) b[i] = uint8_t(i * 131 + seed + (i >> 9));
    return b;
}

// The names of the files in `dir`.
std::set<std::string> Listed(const fs::path& dir) {
    std::set<std::string> names;
    for (const auto& e : fs::directory_iterator(dir)) names.insert(e.path().filename().string());
    return names;
}

// A package of `module` named "mod", with the resources of extra.rsrc copied in by -r.
struct Package {
    TempDir dir;
    fs::path msb;
    explicit Package(const Bytes& module) {
        WriteBytes(dir.path / "mod.dll", module);
        WriteBytes(dir.path / "extra.rsrc",
                   BuildFile({{"STR ", {{128, "Greeting", AsBytes("hello")}, {-3, "", {}}}},
                              {"ICN#", {{5, "icon", Bytes(130, 0x5A), 0x08}}}}));
        ToolResult r = RunTool({"-c", "mod", "-d", dir.path.string() + plat::DirectorySeparator(),
                                "-r", (dir.path / "extra.rsrc").string()},
                               dir.path);
        EXPECT_EQ(r.status, 0) << r.err;
        msb = dir.path / "mod.msb";
    }
};

TEST(MgrsrcPackage, ListsExtractsAndVerifies) {
    const Bytes module = Module(4093, 7);  // an odd size: the pad must not come out
    Package p(module);

    ToolResult list = Mgrsrc({"list", p.msb.string()}, p.dir.path);
    ASSERT_EQ(list.status, 0) << list.err;
    EXPECT_EQ(list.err, "");
    const std::vector<std::string> lines = Lines(list.out);
    const std::vector<std::string> resources(lines.end() - 5, lines.end());
    EXPECT_EQ(resources,
              (std::vector<std::string>{"PLAT 0 \"mod\" 4 none", "MXSB 0 \"mod\" 4093 none",
                                        "STR  -3 - 0 none", "STR  128 \"Greeting\" 5 none",
                                        "ICN# 5 \"icon\" 130 protected"}));
    EXPECT_NE(list.out.find(Lined("file type  MXSB\ncreator    MXDX\n")), std::string::npos);
    EXPECT_NE(list.out.find(Lined("\nresources  5\n")), std::string::npos) << list.out;

    ToolResult json = Mgrsrc({"list", "--json", p.msb.string()}, p.dir.path);
    ASSERT_EQ(json.status, 0);
    EXPECT_NE(json.out.find("{\"type\":\"ICN#\",\"id\":5,\"name\":\"icon\",\"size\":130,"
                            "\"attributes\":[\"protected\"],\"attributeBits\":8}"),
              std::string::npos)
        << json.out;
    EXPECT_NE(json.out.find("\"name\":null"), std::string::npos);

    // By name (any case), by id, and all at once: the module comes out as it went in.
    for (const char* key : {"MOD", "0"}) {
        ToolResult x =
            Mgrsrc({"extract", "-o", "out.dll", p.msb.string(), "MXSB", key}, p.dir.path);
        ASSERT_EQ(x.status, 0) << x.err;
        EXPECT_EQ(AsBytes(SlurpFile(p.dir.path / "out.dll")), module) << key;
    }
    ToolResult all = Mgrsrc({"extract", "--all", p.msb.string(), "res"}, p.dir.path);
    ASSERT_EQ(all.status, 0) << all.err;
    EXPECT_EQ(Listed(p.dir.path / "res"),
              (std::set<std::string>{"PLAT_0.bin", "MXSB_0.bin", "STR%20_-3.bin", "STR%20_128.bin",
                                     "ICN%23_5.bin"}));
    EXPECT_EQ(AsBytes(SlurpFile(p.dir.path / "res" / "MXSB_0.bin")), module);
    EXPECT_EQ(SlurpFile(p.dir.path / "res" / "STR%20_128.bin"), "hello");

    ToolResult verify = Mgrsrc({"verify", p.msb.string()}, p.dir.path);
    EXPECT_EQ(verify.status, 0) << verify.out;
    EXPECT_EQ(verify.out, Lined(p.msb.string() + ": sound: 5 resources, 0 warnings\n"));
}

TEST(MgrsrcPackage, DiffAddedRemovedChanged) {
    TempDir dir;
    WriteBytes(
        dir.path / "a",
        BuildFile(
            {{"AAAA",
              {{1, "x", {1}}, {2, "", {2}}, {3, "n", {3}}, {5, "", {5, 5, 5}}, {6, "", {6, 6}}}}}));
    // AAAA 5 differs in its last byte only; AAAA 6 is the same.
    WriteBytes(dir.path / "b", BuildFile({{"AAAA",
                                           {{1, "x", {1, 1}},
                                            {3, "N", {3}, 8},
                                            {4, "", {}},
                                            {5, "", {5, 5, 4}},
                                            {6, "", {6, 6}}}},
                                          {"BBBB", {{0, "", {}}}}},
                                         3, "TEST", "OTHR"));
    ToolResult r = Mgrsrc({"diff", "a", "b"}, dir.path);
    EXPECT_EQ(r.status, 3);
    EXPECT_EQ(
        r.out,
        Lined("~ creator CRTR -> OTHR\n"
              "~ AAAA 1 \"x\" 1 -> 2 bytes: content\n"
              "- AAAA 2 - 1 bytes\n"
              "~ AAAA 3 \"n\" 1 -> 1 bytes: name \"n\" -> \"N\", attributes none -> protected\n"
              "+ AAAA 4 - 0 bytes\n"
              "~ AAAA 5 - 3 -> 3 bytes: content\n"
              "+ BBBB 0 - 0 bytes\n"));
}

// Bytes that aren't plain text are escaped, in the listing and in its JSON form.
TEST(MgrsrcPackage, ListEscapesTypesAndNames) {
    TempDir dir;
    WriteBytes(dir.path / "f",
               BuildFile({{std::string("T\1\\\"", 4), {{1, "a\"b\\ \x1F~", {1}}}}}));
    ToolResult list = Mgrsrc({"list", "f"}, dir.path);
    EXPECT_EQ(Lines(list.out).back(), "T\\x01\\\\\" 1 \"a\\\"b\\\\ \\x1F~\" 1 none");
    ToolResult json = Mgrsrc({"list", "--json", "f"}, dir.path);
    EXPECT_NE(
        json.out.find("{\"type\":\"T\\u0001\\\\\\\"\",\"id\":1,\"name\":\"a\\\"b\\\\ \\u001F~\""),
        std::string::npos)
        << json.out;
}

// Names from types that no host could take as they stand, and two that differ only in case.
TEST(MgrsrcExtract, FileNamesSafeOnEveryHost) {
    TempDir dir;
    WriteBytes(dir.path / "f", BuildFile({{"a/b\\", {{1, "../../x", {1}}}},
                                          {"CON ", {{0, "", {2}}}},
                                          {std::string("NU\0:", 4), {{-1, "", {3}}}},
                                          {"abcd", {{1, "", {4}}}},
                                          {"ABCD", {{1, "", {5}}}},
                                          {"Z-9z", {{2, "", {6}}}}}));
    ToolResult r = Mgrsrc({"extract", "--all", "f", "out"}, dir.path);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(Listed(dir.path / "out"),
              (std::set<std::string>{"a%2Fb%5C_1.bin", "CON%20_0.bin", "NU%00%3A_-1.bin",
                                     "abcd_1.bin", "ABCD_1~2.bin", "Z-9z_2.bin"}));
    EXPECT_EQ(SlurpFile(dir.path / "out" / "ABCD_1~2.bin"), "\5");
}

TEST(MgrsrcExtract, Lookups) {
    TempDir dir;
    WriteBytes(dir.path / "f",
               BuildFile({{"TEXT", {{9, "same", {9}}, {4, "Same", {4}}, {12, "", {10, 12}}}}},
                         4));  // version 4: the list stays as written
    const struct {
        std::vector<std::string> args;
        int status;
        std::string out;
    } rows[] = {
        {{"TEXT", "SAME"}, 0, "\4"},   // the first in id order, case aside
        {{"TEXT", "12"}, 0, "\n\14"},  // a LF byte arrives as it is
        {{"--name", "TEXT", "12"}, 2, ""},
        {{"TEXT", "13"}, 2, ""},
        {{"TEX", "9"}, 2, ""},  // blanks fill: "TEX " isn't "TEXT"
        {{"TEXTS", "9"}, 1, ""},
    };
    for (const auto& row : rows) {
        std::vector<std::string> args = {"extract", "-o", "-", "f"};
        args.insert(args.end(), row.args.begin(), row.args.end());
        ToolResult r = Mgrsrc(args, dir.path);
        EXPECT_EQ(r.status, row.status) << row.args.back();
        EXPECT_EQ(r.out, row.out) << row.args.back();
        EXPECT_EQ(r.err.empty(), row.status == 0) << row.args.back() << r.err;
    }
}

// Usage errors say so on standard error and print nothing else; --help works everywhere.
TEST(MgrsrcCommandLine, UsageAndHelp) {
    TempDir dir;
    WriteBytes(dir.path / "f", BuildFile({{"AAAA", {{1, "", {1}}}}}));
    const std::vector<std::vector<std::string>> bad = {{},
                                                       {"frob"},
                                                       {"list"},
                                                       {"list", "f", "f"},
                                                       {"list", "--jsn", "f"},
                                                       {"extract", "f", "AAAA"},
                                                       {"extract", "--all", "f"},
                                                       {"extract", "--all", "-o", "x", "f", "d"},
                                                       {"extract", "f", "AAAA", "1", "-o"},
                                                       {"verify"},
                                                       {"diff", "f"}};
    for (const auto& args : bad) {
        ToolResult r = Mgrsrc(args, dir.path);
        EXPECT_EQ(r.status, 1) << testing::PrintToString(args);
        EXPECT_EQ(r.out, "") << testing::PrintToString(args);
        EXPECT_NE(r.err.find("--help"), std::string::npos) << testing::PrintToString(args);
    }
    for (const std::string command : {"list", "extract", "verify", "diff"}) {
        ToolResult r = Mgrsrc({command, "--help"}, dir.path);
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.out.rfind("usage: mgrsrc " + command, 0), 0u) << r.out;
        EXPECT_NE(r.out.find("exit status"), std::string::npos) << command;
    }
    ToolResult missing = Mgrsrc({"list", "no-such-file"}, dir.path);
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.err, Lined("mgrsrc list: cannot read no-such-file\n"));
}

}  // namespace
