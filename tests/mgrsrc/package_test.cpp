// mgrsrc on packages that mxsbutil makes: list, extract and verify them, and compare builds.
#include <gtest/gtest.h>

#include <set>

#include "mgrsrc/mgrsrc_env.h"

namespace {

namespace fs = std::filesystem;

// The names of the files in `dir`.
std::set<std::string> Listed(const fs::path& dir) {
    std::set<std::string> names;
    for (const auto& e : fs::directory_iterator(dir)) names.insert(e.path().filename().string());
    return names;
}

TEST(MgrsrcPackage, ListsExtractsAndVerifies) {
    // A package of an odd-sized module (the pad must not come out) named "mod", with the
    // resources of extra.rsrc copied in by -r.
    TempDir dir;
    const fs::path msb = dir.path / "mod.msb";
    const Bytes module = Fill(4093, 7);
    WriteBytes(dir.path / "mod.dll", module);
    WriteBytes(dir.path / "extra.rsrc",
               BuildFile({{"STR ", {{128, "Greeting", AsBytes("hello")}, {-3, "", {}}}},
                          {"ICN#", {{5, "icon", Bytes(130, 0x5A), 0x08}}}}));
    ASSERT_EQ(RunTool({"-c", "mod", "-d", dir.path.string() + plat::DirectorySeparator(), "-r",
                       (dir.path / "extra.rsrc").string()},
                      dir.path)
                  .status,
              0);
    ToolResult list = Mgrsrc({"list", msb.string()}, dir.path);
    ASSERT_EQ(std::make_pair(list.status, list.err), std::make_pair(0, std::string()));
    const std::vector<std::string> lines = Lines(list.out);
    EXPECT_EQ(std::vector<std::string>(lines.end() - 5, lines.end()),
              (std::vector<std::string>{"PLAT 0 \"mod\" 4 none", "MXSB 0 \"mod\" 4093 none",
                                        "STR  -3 - 0 none", "STR  128 \"Greeting\" 5 none",
                                        "ICN# 5 \"icon\" 130 protected"}));
    EXPECT_NE(list.out.find(Lined("file type  MXSB\ncreator    MXDX\n")), std::string::npos);
    EXPECT_NE(list.out.find(Lined("\nresources  5\n")), std::string::npos) << list.out;
    ToolResult json = Mgrsrc({"list", "--json", msb.string()}, dir.path);
    ASSERT_EQ(json.status, 0);
    EXPECT_NE(json.out.find("{\"type\":\"ICN#\",\"id\":5,\"name\":\"icon\",\"size\":130,"
                            "\"attributes\":[\"protected\"],\"attributeBits\":8}"),
              std::string::npos)
        << json.out;
    EXPECT_NE(json.out.find("\"name\":null"), std::string::npos);
    // By name (any case), by id, and all at once: the module comes out as it went in.
    for (const char* key : {"MOD", "0"}) {
        ToolResult x = Mgrsrc({"extract", "-o", "out.dll", msb.string(), "MXSB", key}, dir.path);
        ASSERT_EQ(x.status, 0) << x.err;
        EXPECT_EQ(AsBytes(SlurpFile(dir.path / "out.dll")), module) << key;
    }
    ASSERT_EQ(Mgrsrc({"extract", "--all", msb.string(), "res"}, dir.path).status, 0);
    EXPECT_EQ(Listed(dir.path / "res"),
              (std::set<std::string>{"PLAT_0.bin", "MXSB_0.bin", "STR%20_-3.bin", "STR%20_128.bin",
                                     "ICN%23_5.bin"}));
    EXPECT_EQ(AsBytes(SlurpFile(dir.path / "res" / "MXSB_0.bin")), module);
    EXPECT_EQ(SlurpFile(dir.path / "res" / "STR%20_128.bin"), "hello");
    ToolResult verify = Mgrsrc({"verify", msb.string()}, dir.path);
    EXPECT_EQ(verify.status, 0) << verify.out;
    EXPECT_EQ(verify.out, Lined(msb.string() + ": sound: 5 resources, 0 warnings\n"));
}

TEST(MgrsrcPackage, DiffAddedRemovedChanged) {
    TempDir dir;
    WriteBytes(
        dir.path / "a",
        BuildFile(
            {{"AAAA",
              {{1, "x", {1}}, {2, "", {2}}, {3, "n", {3}}, {5, "", {5, 5, 5}}, {6, "", {6}}}}}));
    // AAAA 5 differs in its last byte only; AAAA 6 is the same.
    WriteBytes(
        dir.path / "b",
        BuildFile(
            {{"AAAA",
              {{1, "x", {1, 1}}, {3, "N", {3}, 8}, {4, "", {}}, {5, "", {5, 5, 4}}, {6, "", {6}}}},
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

// Bytes that aren't plain text are escaped, in the listing and in its JSON form; file names
// made from types that no host could take as they stand, and two that differ only in case,
// are safe on every host.
TEST(MgrsrcPackage, EscapedTextsAndSafeFileNames) {
    TempDir dir;
    WriteBytes(dir.path / "e",
               BuildFile({{std::string("T\1\\\"", 4), {{1, "a\"b\\ \x1F~", {1}}}}}));
    EXPECT_EQ(Lines(Mgrsrc({"list", "e"}, dir.path).out).back(),
              "T\\x01\\\\\" 1 \"a\\\"b\\\\ \\x1F~\" 1 none");
    const std::string json = Mgrsrc({"list", "--json", "e"}, dir.path).out;
    EXPECT_NE(json.find("{\"type\":\"T\\u0001\\\\\\\"\",\"id\":1,\"name\":\"a\\\"b\\\\ \\u001F~\""),
              std::string::npos)
        << json;
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
        std::string args;
        int status;
        std::string out;
    } rows[] = {
        {"TEXT SAME", 0, "\4"},   // the first in id order, case aside
        {"TEXT 12", 0, "\n\14"},  // a LF byte arrives as it is
        {"--name TEXT 12", 2, ""}, {"TEXT 13", 2, ""},
        {"TEX 9", 2, ""},  // blanks fill: "TEX " isn't "TEXT"
        {"TEXTS 9", 1, ""},
    };
    for (const auto& row : rows) {
        ToolResult r = Mgrsrc(Words("extract -o - f " + row.args), dir.path);
        EXPECT_EQ(std::make_tuple(r.status, r.out, r.err.empty()),
                  std::make_tuple(row.status, row.out, row.status == 0))
            << row.args << r.err;
    }
}

// Usage errors say so on standard error and print nothing else; --help works everywhere.
TEST(MgrsrcCommandLine, UsageAndHelp) {
    TempDir dir;
    WriteBytes(dir.path / "f", BuildFile({{"AAAA", {{1, "", {1}}}}}));
    for (const char* bad :
         {"", "frob", "list", "list f f", "list --jsn f", "extract f AAAA", "extract --all f",
          "extract --all -o x f d", "extract f AAAA 1 -o", "verify", "diff f"}) {
        ToolResult r = Mgrsrc(Words(bad), dir.path);
        EXPECT_EQ(std::make_tuple(r.status, r.out, r.err.find("--help") != std::string::npos),
                  std::make_tuple(1, "", true))
            << bad;
    }
    for (const std::string command : {"list", "extract", "verify", "diff"}) {
        ToolResult r = Mgrsrc({command, "--help"}, dir.path);
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(r.out.rfind("usage: mgrsrc " + command, 0), 0u) << r.out;
        EXPECT_NE(r.out.find("exit status"), std::string::npos) << command;
    }
    ToolResult missing = Mgrsrc({"list", "no-such-file"}, dir.path);
    EXPECT_EQ(std::make_pair(missing.status, missing.err),
              std::make_pair(2, Lined("mgrsrc list: cannot read no-such-file\n")));
}

}  // namespace
