// mgrsrc on packages that mxsbutil makes: list, extract and verify them, and compare builds.
// Then verify on damaged and odd files: the crafted files shared with the resource suite, and
// faults of the header and the map's placement. Each unsound file is reported with the offset
// of the first fault, as the reader meets it; nothing crashes, and no command of the tool
// trusts what verify refuses.
#include <set>

#include "mg/version.h"
#include "mgrsrc/mgrsrc_env.h"

// The names of the files in `dir`.
static std::set<std::string> Listed(const fs::path& dir) {
    std::set<std::string> names;
    for (const auto& e : fs::directory_iterator(dir)) names.insert(e.path().filename().string());
    return names;
}

TEST(MgrsrcPackage, ListsExtractsAndVerifies) {
    // A package of an odd-sized module (the pad must not come out) named "mod", with the
    // resources of extra.rsrc copied in by -r.
    TempDir dir;
    const Bytes module = Fill(4093, 7);
    WriteBytes(dir.path / "mod.dll", module);
    WriteBytes(dir.path / "extra.rsrc",
               BuildFile({{"STR ", {{128, "Greeting", B("hello")}, {-3, "", {}}}},
                          {"ICN#", {{5, "icon", Bytes(130, 0x5A), 0x08}}}}));
    const std::vector<std::string> withR = {"-c", "mod",
                                            "-d", dir.path.string() + plat::DirectorySeparator(),
                                            "-r", (dir.path / "extra.rsrc").string()};
    ASSERT_EQ(RunTool(withR, dir.path).status, 0);
    ExpectRuns(dir.path,
               {{"list mod.msb", 0,
                 "...file type  MXSB\ncreator    MXDX\n...\nresources  5\n...\n"
                 "PLAT 0 \"mod\" 4 none\nMXSB 0 \"mod\" 4093 none\nSTR  -3 - 0 none\n"
                 "STR  128 \"Greeting\" 5 none\nICN# 5 \"icon\" 130 protected\n"},
                {"list --json mod.msb", 0,
                 "...\"name\":null...{\"type\":\"ICN#\",\"id\":5,\"name\":\"icon\",\"size\":130,"
                 "\"attributes\":[\"protected\"],\"attributeBits\":8}..."},
                {"verify mod.msb", 0, "mod.msb: sound: 5 resources, 0 warnings\n"}});
    // By name (any case), by id, and all at once: the module comes out as it went in.
    for (const std::string key : {"MOD", "0"}) {
        ExpectRuns(dir.path, {{"extract -o out.dll mod.msb MXSB " + key, 0, "..."}});
        EXPECT_EQ(B(SlurpFile(dir.path / "out.dll")), module) << key;
    }
    ASSERT_EQ(Mgrsrc({"extract", "--all", "mod.msb", "res"}, dir.path).status, 0);
    EXPECT_EQ(Listed(dir.path / "res"),
              (std::set<std::string>{"PLAT_0.bin", "MXSB_0.bin", "STR%20_-3.bin", "STR%20_128.bin",
                                     "ICN%23_5.bin"}));
    EXPECT_EQ(SlurpFile(dir.path / "res" / "STR%20_128.bin"), "hello");
    // A package of a module beyond 16 bits comes back byte for byte.
    WriteBytes(dir.path / "mod.dll", Fill(70000, 3));
    ASSERT_EQ(RunTool(withR, dir.path).status, 0);
    EXPECT_EQ(RoundTrip(dir.path, "mod.msb"), B(SlurpFile(dir.path / "mod.msb")));
}

// The commands on small files: what they print and their statuses. diff names each kind of
// difference; bytes that aren't plain text are escaped in the listing and its JSON form; a
// lookup takes the first in id order, case aside, a blank filling a short type; usage errors
// say so on standard error alone, and --help works everywhere; the commands say what they did.
TEST(MgrsrcCommandLine, Runs) {
    TempDir dir;
    WriteBytes(dir.path / "f", crafted::Base());
    // AAAA 5 differs in its last byte only; AAAA 6 is the same.
    const std::vector<RefLayout> a = {
        {1, "x", {1}}, {2, "", {2}}, {3, "n", {3}}, {5, "", {5, 5, 5}}, {6, "", {6}}};
    const std::vector<RefLayout> b = {
        {1, "x", {1, 1}}, {3, "N", {3}, 8}, {4, "", {}}, {5, "", {5, 5, 4}}, {6, "", {6}}};
    WriteBytes(dir.path / "a", BuildFile({{"AAAA", a}}));
    WriteBytes(dir.path / "b",
               BuildFile({{"AAAA", b}, {"BBBB", {{0, "", {}}}}}, 3, "TEST", "OTHR"));
    // Version 4: the list stays as written.
    WriteBytes(dir.path / "t",
               BuildFile({{"TEXT", {{9, "same", {9}}, {4, "Same", {4}}, {12, "", {10, 12}}}}}, 4));
    WriteBytes(dir.path / "e",
               BuildFile({{std::string("T\1\\\"", 4), {{1, "a\"b\\ \x1F~", {1}}}}}));
    std::vector<ToolRun> runs = {
        {"diff a b", 3,
         "~ creator CRTR -> OTHR\n"
         "~ AAAA 1 \"x\" 1 -> 2 bytes: content\n"
         "- AAAA 2 - 1 bytes\n"
         "~ AAAA 3 \"n\" 1 -> 1 bytes: name \"n\" -> \"N\", attributes none -> protected\n"
         "+ AAAA 4 - 0 bytes\n"
         "~ AAAA 5 - 3 -> 3 bytes: content\n"
         "+ BBBB 0 - 0 bytes\n"},
        {"list e", 0, "...\nT\\x01\\\\\" 1 \"a\\\"b\\\\ \\x1F~\" 1 none\n"},
        {"list --json e", 0,
         "...{\"type\":\"T\\u0001\\\\\\\"\",\"id\":1,\"name\":\"a\\\"b\\\\ \\u001f~\"..."},
        {"extract -o - t TEXT SAME", 0, "\4"},
        {"extract -o - t --name TEXT 12", 2, "", "..."},
        {"extract -o - t TEX 9", 2, "", "..."},
        {"extract -o - t TEXTS 9", 1, "", "..."},
        {"list no-such-file", 2, "",
         "mgrsrc list: cannot read no-such-file: no such file or directory\n"},
        {"--version", 0, "mgrsrc " MG_VERSION "\n"},
        {"--help", 0, "usage: mgrsrc COMMAND...extract [-o OUT] [--name]..."},
        {"extract -o x f AAAA 1", 0, "wrote AAAA 1, 3 bytes, to x\n"},
        {"extract --all f all", 0, "wrote 3 resources into all\n"},
        {"unpack f u", 0, "unpacked 3 resources of f into u\n"},
        {"pack u p", 0, "packed 3 resources into p\n"},
        {"add f AAAA 9 no-such-file", 2, "", "..."}};
    for (const char* bad : {"", "frob", "list", "list f f", "list --jsn f", "extract f AAAA",
                            "extract --all f", "extract f AAAA 1 -o", "verify", "diff f",
                            "add f AAAAA 1 x", "add f AAAA 1.5 x", "set f AAAA 1 --attrs shiny"})
        runs.push_back({bad, 1, "", "...--help..."});
    for (const std::string usage :
         {"list [--json] FILE\n", "extract [-o OUT]", "verify FILE\n", "diff A B\n",
          "unpack FILE DIR\n", "pack DIR FILE\n", "add FILE", "remove FILE", "set FILE"})
        runs.push_back({usage.substr(0, usage.find(' ')) + " --help", 0,
                        "usage: mgrsrc " + usage + "...exit status..."});
    ExpectRuns(dir.path, runs);
    // A LF byte arrives as it is; help COMMAND is COMMAND --help.
    EXPECT_EQ(Mgrsrc(Words("extract -o - t TEXT 12"), dir.path).out, "\n\14");
    EXPECT_EQ(Mgrsrc({"help", "list"}, dir.path).out, Mgrsrc({"list", "--help"}, dir.path).out);
    // File names made from types that no host could take as they stand, and two that differ
    // only in case, are safe on every host.
    WriteBytes(dir.path / "s", BuildFile({{"a/b\\", {{1, "../../x", {1}}}},
                                          {"CON ", {{0, "", {2}}}},
                                          {std::string("NU\0:", 4), {{-1, "", {3}}}},
                                          {"abcd", {{1, "", {4}}}},
                                          {"ABCD", {{1, "", {5}}}},
                                          {"Z-9z", {{2, "", {6}}}}}));
    ASSERT_EQ(Mgrsrc({"extract", "--all", "s", "out"}, dir.path).status, 0);
    EXPECT_EQ(Listed(dir.path / "out"),
              (std::set<std::string>{"a%2Fb%5C_1.bin", "CON%20_0.bin", "NU%00%3A_-1.bin",
                                     "abcd_1.bin", "ABCD_1~2.bin", "Z-9z_2.bin"}));
    EXPECT_EQ(SlurpFile(dir.path / "out" / "ABCD_1~2.bin"), "\5");
}

using namespace crafted;

struct Verified {
    ToolResult verify;
    long long first = -1;  // the offset of the first "error" line, -1 when there is none
    size_t warnings = 0;
};

// Writes `file` as "f" in `dir` and verifies it.
static Verified VerifyBytes(const TempDir& dir, const Bytes& file) {
    WriteBytes(dir.path / "f", file);
    Verified v{Mgrsrc({"verify", "f"}, dir.path)};
    std::istringstream out(v.verify.out);
    for (std::string line; std::getline(out, line);) {
        const size_t at = line.find(": offset ");
        if (at != std::string::npos && line.find(": error: ") != std::string::npos && v.first < 0)
            v.first = std::stoll(line.substr(at + 9));
        v.warnings += line.find(": warning: ") != std::string::npos;
    }
    return v;
}

// Each crafted file is reported at its first fault; a refused map is refused by every command,
// while bad data fails only its own resource.
TEST(MgrsrcVerify, FaultsAndWarnings) {
    TempDir dir;
    Bytes b;
    WriteBytes(dir.path / "g", Base());
    for (const auto* rows : {&BadMaps(), &BadData()})
        for (const Spoiled& row : *rows) {
            SCOPED_TRACE(row.what);
            b = Base();
            row.spoil(b);
            Verified v = VerifyBytes(dir, b);
            const bool refused = row.open != MgNoError;
            const long long first = refused       ? MapAt(b) + row.faultAt
                                    : row.faultAt ? row.faultAt
                                                  : MapAt(b) + kRefA1 + 12;
            const bool refuses =
                v.verify.out.find("the reader refuses to open it") != std::string::npos;
            EXPECT_EQ(std::make_tuple(v.verify.status, v.first, refuses),
                      std::make_tuple(2, first, refused))
                << v.verify.out;
            // The other resources list and extract, the bad one shows no size, and the file
            // equals itself; a refused file is refused by every command.
            if (!refused) {
                ExpectRuns(dir.path, {{"list f", 0, "...\nAAAA 1 \"one\" ? none\n..."},
                                      {"extract -o - f BBBB 7", 0, "\5\6\7\10\11"},
                                      {"extract -o - f AAAA 1", 2, "", "..."},
                                      {"diff f f", 0, ""}});
                continue;
            }
            for (const char* other : {"list f", "extract --all f out", "diff f g", "diff g f"})
                ExpectRuns(dir.path, {{other, 2, "", "...not a sound resource file: offset ..."}});
        }
    // Faults before the map: the header, the trailer, and where the map lies.
    // Where the first fault lies: from the start of the file, or when negative, from the start
    // of the map.
    const std::tuple<std::function<void(Bytes&)>, long long> header[] = {
        {[](Bytes& b) { b.clear(); }, 0},
        {[](Bytes& b) { b.resize(31); }, 0},
        {[](Bytes& b) { b[3] = 'X'; }, 0},                     // signature
        {[](Bytes& b) { b[7] = 1; }, 6},                       // version 1
        {[](Bytes& b) { b[5] = 0x0D; }, 4},                    // line end of a version 3
        {[](Bytes& b) { b.resize(b.size() - 1); }, 16},        // map beyond the end
        {[](Bytes& b) { PutBig32(b, 20, 0xFFFFFF00); }, 20},   // negative map size
        {[](Bytes& b) { PutMap32(b, 12, 0x41414141); }, -12},  // copy with another creator
        {[](Bytes& b) { PutMap32(b, 48, 0x10000); }, -48},     // name list beyond the map
        // No size word is read before the file's start: AAAA 1's load fails there.
        {[](Bytes& b) { PutBothHeaders(b, 24, 0xFFFFFF00); }, -int(kRefA1 + 12)}};
    for (const auto& [spoil, first] : header) {
        b = Base();
        const long long mapAt = MapAt(b);
        spoil(b);
        Verified v = VerifyBytes(dir, b);
        EXPECT_EQ(std::make_pair(v.verify.status, v.first),
                  std::make_pair(2, first >= 0 ? first : mapAt - first))
            << v.verify.out;
    }
    // What a reader takes but a maker of files wants to hear about; the file stays sound. The
    // summary counts in the singular where there is one. A resource file at the end of another
    // is found through its trailer, as the reader does.
    const std::tuple<Bytes, std::vector<std::string>> sound[] = {
        {SharedData(),
         {"shares its data with the reference at", "bytes of data that no reference uses"}},
        {RunTimeBitsFromTheFile(), {"changed bit set in the file", "handle word isn't zero"}},
        {DataBehindAGap(8), {}},
        {BuildFile({{"AAAA", {{5, "", {1}}, {2, "", {2}}}}}, 4),
         {"id 2 out of order in a version-4 file"}},
        {BuildFile({{"AAAA", {{3, "", {1}}, {3, "", {2}}}}}), {"id 3 appears twice"}},
        {Embedded(Base(), 100), {}}};
    for (const auto& [file, warnings] : sound) {
        Verified v = VerifyBytes(dir, file);
        EXPECT_EQ(std::make_pair(v.verify.status, v.warnings), std::make_pair(0, warnings.size()))
            << v.verify.out;
        for (const std::string& w : warnings)
            EXPECT_NE(v.verify.out.find(w), std::string::npos) << v.verify.out;
    }
    ExpectRuns(dir.path, {{"list f", 0, "...embedded at 100\n..."},
                          {"extract -o - f BBBB seven", 0, "\5\6\7\10\11"}});
    b = BuildFile({{"AAAA", {{1, "", {1}}}}});
    PutBig32(b, MapAt(b) + 84, 0x1234);  // the handle word: one warning
    WriteBytes(dir.path / "f", b);
    ExpectRuns(dir.path, {{"verify f", 0, "...\nf: sound: 1 resource, 1 warning\n"}});
    PutBig32(b, 32, 0xFFFFFFF0);  // a negative size word: one error
    WriteBytes(dir.path / "f", b);
    ExpectRuns(dir.path, {{"verify f", 2, "...\nf: unsound: 1 error, 1 warning\n"}});
}
