// Whole runs of the built tool: the bytes of the packages it writes, its exit statuses, and its
// silence on errors; runs with -r (resources copied into the package) and -vi (an existing
// file updated in place), whose packages are read back with the resource manager itself.
#include <algorithm>
#include <cctype>

#include "resource/crafted_files.h"
#include "resource/resource_env.h"
#include "support/host_rules.h"
#include "support/run_tool.h"

namespace fs = std::filesystem;

const Bytes kHello = {'H', 'E', 'L', 'L', 'O'};

// The package of a code name and its module, as it must stand byte for byte on every host:
// the map goes out with its dirty bit (0x20), cleared only after the write.
static std::string WorkedPackage(const std::string& name = "foo", const Bytes& module = kHello) {
    Bytes b = BuildFile({{"PLAT", {{0, name, B("i386")}}}, {"MXSB", {{0, name, module}}}}, 3,
                        "MXSB", "MXDX");
    b[Big32At(b, 16) + 43] = 0x20;
    return std::string(b.begin(), b.end());
}

// Odd sizes are padded in the data section, never in the module. A module too long for the
// format's 32-bit words (a sparse file: its length costs no disk) ends the run with 2 and writes
// no package. Inputs that aren't files are in posix/.
TEST(PackageCli, ModuleSizesAndLongCodeNames) {
    const uintmax_t kGiB = uintmax_t{1} << 30;
    for (uintmax_t size :
         std::initializer_list<uintmax_t>{0, 3, 4093, (5 << 20) + 3, 4 * kGiB + 61, 2 * kGiB}) {
        TempDir dir;
        const bool fits = size < kGiB;
        const Bytes module = Fill(fits ? size : 0, 7);
        WriteBytes(dir.path / "m.dll", module);
        fs::resize_file(dir.path / "m.dll", size);
        EXPECT_EQ(RunTool({"m", "-d", dir.path.string()}, dir.path).status, fits ? 0 : 2) << size;
        EXPECT_EQ(fs::exists(dir.path / "m.msb") &&
                      SlurpFile(dir.path / "m.msb") == WorkedPackage("m", module),
                  fits)
            << size;
    }
    // Long names: the ".dll" and ".msb" appends clip at 255 characters and 4 is taken off
    // anyway, so the module looked up is 255 characters long and the package base 251. Where the
    // host's longest native name can't hold the directory and such a name, the package can't be
    // built.
    for (size_t length : {251u, 252u, 254u, 255u}) {
        TempDir dir;
        const bool fits =
            (dir.path / std::string(255, 'n')).string().size() <= size_t(plat::NativeNameMax());
        std::string name(length, 'n');
        WriteBytes(dir.path / (name + std::string(".dll").substr(0, 255 - length)),
                   {'C', 'O', 'D', 'E'});
        EXPECT_EQ(RunTool({name}, dir.path).status, fits ? 0 : 2) << length;
        EXPECT_EQ(fs::exists(dir.path / (std::string(251, 'n') + ".msb")), fits) << length;
    }
}

// The success line, on the error stream, when the tool made the package `name` of `type`.
static std::string Made(const std::string& name = "foo", const std::string& type = "CIN ") {
    return "Meridax resource file, type '" + type + "', name '" + name +
           ".msb', created properly." + TextLineEnd();
}

// The one line the tool prints, on the error stream, only when it made the package; failed
// runs print nothing at all (every complaint of the packager is run through the real tool in
// the packager's messages suite). Then the directory and the code name as a user may spell
// them: with or without the separator at the end, and in another case, which names on a
// Windows host ignore and on a POSIX host don't. Each package made is the same bytes; an
// older, longer package is replaced whole, not written over.
TEST(PackageCli, StatusesSpellingsAndTheSuccessLine) {
    TempDir dir;
    WriteBytes(dir.path / "foo.dll", kHello);
    std::string d = dir.path.string(), upper = d;
    std::transform(d.begin(), d.end(), upper.begin(),
                   [](unsigned char c) { return char(toupper(c)); });
    // A blank and a separator at the end: the argument is quoted where the host quotes.
    const fs::path spaced = dir.path / "a b";
    fs::create_directory(spaced);
    WriteBytes(spaced / "foo.dll", kHello);
    const bool caseBlind = WindowsHost(), upperSame = caseBlind || upper == d;
    // The rows that name a directory find an older package there, which the run must replace.
    const std::tuple<std::vector<std::string>, int, std::string, std::string> rows[] = {
        {{"foo"}, 0, Made(), ""},
        {{"-T", "DRVR", "-C", "foo", "-D", d}, 0, Made("foo", "DRVR"), ""},
        {{"-c", "foo", "-d", d}, 0, Made(), d},
        {{"-c", "foo", "-d", (dir.path / "").string()}, 0, Made(), d},
        {{"-c", "foo", "-d", upper}, upperSame ? 0 : 2, upperSame ? Made() : "", d},
        {{"-c", "FOO", "-d", d}, caseBlind ? 0 : 2, caseBlind ? Made("FOO") : "", d},
        {{"-c", "foo", "-d", (spaced / "").string()}, 0, Made(), spaced.string()}};
    for (const auto& [args, status, err, where] : rows) {
        SCOPED_TRACE(testing::PrintToString(args));
        const std::string name = where.empty() ? "" : args[1];
        const fs::path package = fs::path(where) / (name + ".msb");
        if (!where.empty() && status == 0) WriteBytes(package, Bytes(5000, 'x'));
        ToolResult r = RunTool(args, dir.path);
        EXPECT_EQ(std::make_tuple(r.status, r.out, r.err), std::make_tuple(status, "", err));
        if (where.empty() || status != 0) continue;
        EXPECT_EQ(SlurpFile(package), WorkedPackage(name));
        fs::remove(package);
    }
}

const std::vector<Res> kOwn = {{"PLAT", 0, "foo", B("i386")}, {"MXSB", 0, "foo", B("HELLO")}};

// Runs `args` on a directory holding foo.dll ("HELLO") and the file `name` with `bytes`;
// gives the status and what `name` and foo.msb hold afterwards.
struct Outcome {
    int status;
    Bytes file;
    std::vector<Res> records, package;
};
static Outcome RunWith(std::vector<std::string> args, const std::string& name, const Bytes& bytes,
                       const std::string& module = "HELLO", const std::string& code = "foo") {
    TempDir dir;
    WriteBytes(dir.path / (code + ".dll"), B(module));
    if (!bytes.empty()) WriteBytes(dir.path / name, bytes);
    args.push_back((dir.path / name).string());
    const int status = RunTool(args, dir.path).status;
    const bool replacing = args[args.size() - 2] == "-vi";
    EXPECT_FALSE(replacing && fs::exists(dir.path / (code + ".msb")));
    return {status, B(SlurpFile(dir.path / name)),
            replacing ? FileRecords((dir.path / name).string()) : std::vector<Res>{},
            FileRecords((dir.path / (code + ".msb")).string())};
}

// The module and platform entries named like the code swap ids with the new ones; other
// entries of the code's name go, the rest stay. A target not holding the module is left alone.
// What the target holds after is compared sorted by type and id: type order after removals
// is free.
TEST(ReplaceCli, IdsCrossAndOldEntriesGo) {
    const Res bar = {"LIsb", 4, "bar", B("keep me")}, vers = {"vers", 1, "", B("1.0"), 8},
              plat = {"PLAT", 9, "foo", B("i386")}, lib = {"LIsb", 3, "foo", B("lib")},
              newCode = {"MXSB", 9, "foo", B("NEWCODE")}, newPlat = {"PLAT", 7, "foo", B("i386")};
    const std::vector<Res> withModule = {{"MXSB", 7, "foo", B("oldcode")}, plat, lib, bar, vers},
                           withoutModule = {{"MXSB", 7, "bar", B("x")}, plat},
                           crossed = {bar, newCode, newPlat, vers};
    for (const auto& [target, status, after] :
         {std::tuple{withModule, 0, crossed}, {withoutModule, 2, withoutModule}}) {
        const Outcome r =
            RunWith({"-c", "foo", "-vi"}, "target.vi", BuildFile(Layout(target)), "NEWCODE");
        EXPECT_EQ(r.status, status);
        std::vector<Res> got = r.records;
        std::sort(got.begin(), got.end(),
                  [](auto& a, auto& b) { return a.type + char(a.id) < b.type + char(b.id); });
        EXPECT_EQ(got, after) << status;
    }
}

// Sources given to -r: a collision stops the copy where it stands; a missing source fails the
// run, an empty one doesn't. Crafted sources give a sound package or a clean status 2, never a
// crash, a failure report or a loop, and never a resource of the file changed behind its back.
TEST(HostileCli, CraftedSourcesAndTargets) {
    Bytes huge = crafted::Base(), overlapping = crafted::Base();
    crafted::BadData()[0].spoil(huge);
    crafted::BadMaps()[0].spoil(overlapping);
    std::vector<Res> copied = Flat(crafted::BaseLayout());
    copied.insert(copied.begin(), kOwn.begin(), kOwn.end());
    copied[2].attrs = RAttrProtected;  // the changed bit stored in the file is dropped
    const Res a1 = {"AAAA", 1, "", B("a")};
    // Every resource is copied after the package's own: types in an order no sort would give,
    // ids out of order within a type, and only id 0 of the package's types collides.
    const std::vector<Res> source = {{"STR ", 5, "five", B("abc")},
                                     {"STR ", 2, "", B("unnamed")},
                                     {"ICON", 128, "icon", Fill(5000, 1), RAttrProtected},
                                     {"ICON", -3, "", {}},
                                     {"DATA", 1, "d", B("xyz!")},
                                     {"PLAT", 7, "other", B("ppc ")}};
    const std::tuple<Bytes, int, std::vector<Res>> rows[] = {
        {BuildFile(Layout(source)),
         0,
         {kOwn[0], source[5], kOwn[1], source[1], source[0], source[3], source[2], source[4]}},
        {BuildFile(Layout({{"PLAT", 0, "x", B("sparc")}})), 2, kOwn},
        {BuildFile(Layout({a1, {"MXSB", 0, "", B("b")}})), 2, {kOwn[0], kOwn[1], a1}},
        {BuildFile({}), 0, kOwn},
        {{}, 2, kOwn},  // missing
        {crafted::RunTimeBitsFromTheFile(), 0, copied},
        {huge, 2, kOwn},  // a resource of nearly 2 GiB in a short source
        {overlapping, 2, kOwn}};
    for (const auto& [file, status, package] : rows) {
        const Outcome r = RunWith({"foo", "-r"}, "src.rsrc", file);
        EXPECT_EQ(std::make_tuple(r.status, r.package, r.file),
                  std::make_tuple(status, package, file));
    }
    // A target whose module shares its data with another resource: the other resources come
    // through the replacement unchanged. BBBB 7 named "seven" becomes the module of "seven".
    Bytes target = crafted::SharedData();
    memcpy(&target[crafted::MapAt(target) + crafted::kTypeB], "MXSB", 4);
    const std::vector<Res> after =
        RunWith({"seven", "-vi"}, "t.vi", target, "NEWCODE", "seven").records;
    ASSERT_EQ(after.size(), 4u);
    EXPECT_EQ((std::vector<Res>{after[0], after[1], after[3]}),
              (std::vector<Res>{{"AAAA", 1, "one", {1, 2, 3}},
                                {"AAAA", 2, "", {1, 2, 3}},
                                {"MXSB", 0, "seven", B("NEWCODE")}}));
}

// A -vi whose write-back fails (an untouched resource's data lies beyond the file) gives 2 and
// leaves the target as it was, also with an empty module, whose handle the file still holds at
// the end: a leak checker must not take it for a leak and end the run with its own status.
TEST(HostileCli, FailedWriteBackOfAViWithAnEmptyModule) {
    TempDir dir;
    WriteBytes(dir.path / "seven.dll", {});
    Bytes target = crafted::Base();
    memcpy(&target[crafted::MapAt(target) + crafted::kTypeB], "MXSB", 4);
    crafted::BadData()[2].spoil(target);
    WriteBytes(dir.path / "t.vi", target);
    ToolResult r =
        RunTool({"seven", "-d", dir.path.string(), "-vi", (dir.path / "t.vi").string()}, dir.path);
    EXPECT_EQ(r.status, 2) << r.err;
    EXPECT_TRUE(B(SlurpFile(dir.path / "t.vi")) == target);
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path), {}), 2);
}
