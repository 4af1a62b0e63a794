// Whole runs of the built tool: the bytes of the packages it writes, its exit statuses, and its
// silence on errors.
#include <gtest/gtest.h>

#include <cctype>

#include "resource/file_builder.h"
#include "support/host_rules.h"
#include "support/run_tool.h"

namespace {

namespace fs = std::filesystem;

const Bytes kHello = {'H', 'E', 'L', 'L', 'O'};

// The package of a code name and its module, as it must stand byte for byte on every host:
// the map goes out with its dirty bit (0x20), cleared only after the write.
std::string WorkedPackage(const std::string& name = "foo", const Bytes& module = kHello) {
    Bytes b =
        BuildFile({{"PLAT", {{0, name, {'i', '3', '8', '6'}}}}, {"MXSB", {{0, name, module}}}}, 3,
                  "MXSB", "MXDX");
    b[Big32At(b, 16) + 43] = 0x20;
    return std::string(b.begin(), b.end());
}

// Odd sizes are padded in the data section, never in the module.
TEST(PackageCli, ModuleSizesArePackedWhole) {
    for (size_t size : {0u, 3u, 4093u, (5u << 20) + 3}) {
        TempDir dir;
        const Bytes module = Fill(size, 7);
        WriteBytes(dir.path / "m.dll", module);
        ASSERT_EQ(RunTool({"m", "-d", dir.path.string()}, dir.path).status, 0) << size;
        EXPECT_TRUE(SlurpFile(dir.path / "m.msb") == WorkedPackage("m", module)) << size;
    }
}

// The one line the tool prints, on the error stream, only when it made the package; failed
// runs print nothing at all (every complaint of the packager is run through the real tool in
// the packager's messages suite).
TEST(PackageCli, StatusesAndTheSuccessLine) {
    TempDir dir;
    WriteBytes(dir.path / "foo.dll", kHello);
    auto made = [](const char* type) {
        return "Meridax resource file, type '" + std::string(type) +
               "', name 'foo.msb', created properly." + TextLineEnd();
    };
    const struct {
        std::vector<std::string> args;
        int status;
        std::string err;
    } rows[] = {{{"foo"}, 0, made("CIN ")},
                {{"-c", "foo", "-t", "CIN"}, 0, made("CIN ")},
                {{"-c", "foo", "-t", "'CIN"}, 0, made("CIN ")},
                {{"-T", "DRVR", "-C", "foo", "-D", dir.path.string()}, 0, made("DRVR")},
                {{"-c", "foo", "-v", "12"}, 1, ""},
                {{"-c", "foo", "-r", (dir.path / "gone.rsrc").string()}, 2, ""}};
    for (const auto& row : rows) {
        ToolResult r = RunTool(row.args, dir.path);
        EXPECT_EQ(std::make_tuple(r.status, r.out, r.err), std::make_tuple(row.status, "", row.err))
            << testing::PrintToString(row.args);
    }
}

// The directory and the code name as a user may spell them: with or without the separator
// at the end, and in another case, which names on a Windows host ignore and on a POSIX host
// don't. Each package made is the same bytes, announced by the success line; an older,
// longer package is replaced whole, not written over.
TEST(PackageCli, SpellingsOfTheDirectoryAndName) {
    TempDir dir;
    WriteBytes(dir.path / "foo.dll", kHello);
    const std::string d = dir.path.string(), upper = [](std::string t) {
        for (char& c : t) c = char(toupper(static_cast<unsigned char>(c)));
        return t;
    }(d);
    // A blank and a separator at the end: the argument is quoted where the host quotes.
    const fs::path spaced = dir.path / "a b";
    fs::create_directory(spaced);
    WriteBytes(spaced / "foo.dll", kHello);
    const bool caseBlind = WindowsHost();
    const struct {
        std::string name, directory;
        int status;
    } rows[] = {
        {"foo", d, 0},
        {"foo", (dir.path / "").string(), 0},
        {"foo", upper, caseBlind || upper == d ? 0 : 2},
        {"FOO", d, caseBlind ? 0 : 2},
        {"foo", (spaced / "").string(), 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name + " in " + row.directory);
        const fs::path package = fs::path(row.directory) / (row.name + ".msb");
        if (row.status == 0) WriteBytes(package, Bytes(5000, 'x'));
        ToolResult r = RunTool({"-c", row.name, "-d", row.directory}, dir.path);
        EXPECT_EQ(r.status, row.status);
        if (row.status != 0) continue;
        EXPECT_EQ(r.err, "Meridax resource file, type 'CIN ', name '" + row.name +
                             ".msb', created properly." + TextLineEnd());
        EXPECT_EQ(SlurpFile(package), WorkedPackage(row.name));
        fs::remove(package);
    }
}

// Long names: the ".dll" and ".msb" appends clip at 255 characters and 4 is taken off anyway,
// so the module looked up is 255 characters long and the package base 251. Where the host's
// longest native name can't hold the directory and such a name, the package can't be built.
TEST(PackageCli, LongCodeNames) {
    for (size_t length : {251u, 252u, 254u, 255u}) {
        TempDir dir;
        const bool fits =
            (dir.path / std::string(255, 'n')).string().size() <= size_t(plat::NativeNameMax());
        std::string name(length, 'n');
        WriteBytes(dir.path / (name + std::string(".dll").substr(0, 255 - length)),
                   {'C', 'O', 'D', 'E'});
        EXPECT_EQ(RunTool({name}, dir.path).status, fits ? 0 : 2) << length;
        EXPECT_EQ(std::filesystem::exists(dir.path / (std::string(251, 'n') + ".msb")), fits)
            << length;
    }
}

}  // namespace
