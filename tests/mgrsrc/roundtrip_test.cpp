// mgrsrc unpack and pack: files the manager wrote come back byte for byte, other sound layouts
// come back with the same resources; bad manifests are refused with their line, and nothing is
// written. add, remove and set leave the old file or the new one, never anything between.
#include "mgrsrc/mgrsrc_env.h"

// Every byte value in names and types, through the manifest's \u00HH and back.
TEST(MgrsrcRoundTrip, EveryByteAndOtherLayouts) {
    TempDir dir;
    std::string low, high;
    for (int c = 0; c < 128; ++c) low += char(c), high += char(c + 128);
    MakeWithLibrary(dir.path / "f", {{Edit::kAdd, std::string("\0\x7F\x80\xFF", 4), 1, low, {1}},
                                     {Edit::kAdd, "AAAA", 2, high, {2}},
                                     {Edit::kAdd, "AAAA", 3, "\"\\/", {}}});
    EXPECT_EQ(RoundTrip(dir.path, "f"), B(SlurpFile(dir.path / "f")));
    const std::string manifest = SlurpFile(dir.path / "unpacked" / "resources.json");
    for (char c : manifest) EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F)) << int(c);

    // Sound files of layouts the manager doesn't write, and one whose names were all removed,
    // come back with the same resources (diff finds nothing but the changed bit, which isn't
    // kept) in the manager's layout.
    using namespace crafted;
    MakeWithLibrary(dir.path / "g", {{Edit::kAdd, "AAAA", 0, "", {}},
                                     {Edit::kAdd, "AAAA", 1, "x", {}},
                                     {Edit::kRemove, "AAAA", 1, "", {}}});
    const std::tuple<const char*, Bytes, std::string> rows[] = {
        {"file attribute word 0", Base(), ""},
        {"shared data", SharedData(), ""},
        {"a gap before the data", DataBehindAGap(8), ""},
        {"version 2", BuildFile(BaseLayout(), 2), ""},
        {"unsorted version 4", BuildFile({{"AAAA", {{5, "", {1}}, {2, "b", {2}}}}}, 4), ""},
        {"embedded", Embedded(Base(), 100), ""},
        {"names all gone", B(SlurpFile(dir.path / "g")), ""},
        {"changed bit stored", RunTimeBitsFromTheFile(),
         "~ AAAA 1 \"one\" 3 -> 3 bytes: attributes protected,changed -> protected\n"}};
    for (const auto& [what, file, diff] : rows) {
        SCOPED_TRACE(what);
        TempDir dir;
        WriteBytes(dir.path / "f", file);
        RoundTrip(dir.path, "f");
        EXPECT_EQ(Mgrsrc({"diff", "f", "packed"}, dir.path).out, Lined(diff));
        EXPECT_EQ(Mgrsrc({"verify", "packed"}, dir.path).status, 0);
    }
}

// Each fault of a manifest: exit 1, its line and the reason, and nothing written.
TEST(MgrsrcPack, BadManifests) {
    TempDir dir;
    WriteBytes(dir.path / "f", crafted::Base());
    ASSERT_EQ(Mgrsrc({"unpack", "f", "good"}, dir.path).status, 0);
    const std::string good = SlurpFile(dir.path / "good" / "resources.json");
    // Lines 6, 7 and 8 hold AAAA 1, AAAA 2 and BBBB 7.
    const std::tuple<std::string, std::string, int, std::string> rows[] = {
        {"\"id\": 2,", "\"id\": 2", 7, "not valid JSON: syntax error"},
        {"AAAA_2.bin", "gone.bin", 7, "data file \"gone.bin\" is missing"},
        {"\"BBBB\", \"id\": 7", "\"AAAA\", \"id\": 1", 8, "AAAA 1 is there already, at line 6"},
        {"\"BBBB\"", "\"BBB\"", 8, "type \"BBB\" is not four bytes"},
        {"\"BBBB\"", "\"BBBB\\u00e9\"", 8, "type \"BBBB\\u00e9\" is not four bytes"},
        {"\"id\": 2,", "\"id\": 2147483648,", 7, "id 2147483648 is outside 32 bits"},
        {"\"id\": 2,", "\"id\": -2147483649,", 7, "id -2147483649 is outside 32 bits"},
        {"\"name\": \"seven\"", "\"name\": \"\\u0100\"", 8, "name \"\\u0100\" is not 8-bit text"}};
    WriteBytes(dir.path / "out", B("old"));
    for (const auto& [from, to, line, reason] : rows) {
        SCOPED_TRACE(reason);
        fs::remove_all(dir.path / "bad");
        fs::copy(dir.path / "good", dir.path / "bad");
        std::string text = good;
        ASSERT_NE(text.find(from), std::string::npos);
        text.replace(text.find(from), from.size(), to);
        WriteBytes(dir.path / "bad" / "resources.json", B(text));
        ExpectRuns(dir.path,
                   {{"pack bad out", 1, "",
                     "...resources.json:" + std::to_string(line) + ": " + reason + "..."}});
        EXPECT_EQ(SlurpFile(dir.path / "out"), "old");
        EXPECT_EQ(std::distance(fs::directory_iterator(dir.path), fs::directory_iterator()), 4);
    }
}

// Each edit in a directory that is writable and in one that isn't (where the library can't
// put a new file beside the old one, it writes in place; on Windows, and for the superuser,
// the directory's mode doesn't stop either). A refusal leaves every byte; a change gives a
// sound file with exactly that change. Each row gives the diff of old and new, or a part of
// the refusal.
TEST(MgrsrcEdit, OldFileOrNewFile) {
    const Bytes base = BuildFile({{"AAAA", {{1, "one", {1, 2, 3}}, {2, "", {4}}}},
                                  {"BBBB", {{7, "seven", {5, 6, 7, 8, 9}, RAttrProtected}}}});
    const std::tuple<std::string, int, std::string> rows[] = {
        {"add AAAA 9 data --name nine", 0, "+ AAAA 9 \"nine\" 2 bytes\n"},
        {"add AAAA 1 data", 2, "the resource exists already"},
        {"remove AAAA ONE", 0, "- AAAA 1 \"one\" 3 bytes\n"},
        {"remove BBBB 7", 2, "can't be removed (MgResourceNotFound, 15)"},
        {"remove CCCC 1", 2, "has no resource CCCC 1"},
        {"set AAAA 2 --id 5 --name five", 0, "- AAAA 2 - 1 bytes\n+ AAAA 5 \"five\" 1 bytes\n"},
        {"set BBBB 7 --attrs none", 0,
         "~ BBBB 7 \"seven\" 5 -> 5 bytes: attributes protected -> none\n"}};
    TempDir dir;
    WriteBytes(dir.path / "data", {0xDA, 0x7A});
    const std::string f = (fs::path("d") / "f").string();
    for (const bool writable : {true, false}) {
        fs::create_directory(dir.path / "d");
        for (const auto& [command, status, diffOrMessage] : rows) {
            SCOPED_TRACE(command + (writable ? "" : " read-only"));
            fs::permissions(dir.path / "d", fs::perms::owner_all);
            WriteBytes(dir.path / "d" / "f", base);
            if (!writable)
                fs::permissions(dir.path / "d", fs::perms::owner_read | fs::perms::owner_exec);
            const size_t verb = command.find(' ');
            ExpectRuns(dir.path,
                       {{command.substr(0, verb) + " " + f + command.substr(verb), status,
                         status ? "" : "...", status ? "..." + diffOrMessage + "..." : "..."}});
            WriteBytes(dir.path / "old", base);
            if (status)
                EXPECT_EQ(B(SlurpFile(dir.path / "d" / "f")), base);
            else
                ExpectRuns(dir.path,
                           {{"diff old " + f, 3, diffOrMessage}, {"verify " + f, 0, "..."}});
        }
        fs::permissions(dir.path / "d", fs::perms::owner_all);
        fs::remove_all(dir.path / "d");
    }
}
