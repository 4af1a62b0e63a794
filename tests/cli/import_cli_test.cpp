// Whole runs with -r (resources copied into the package) and -vi (an existing file updated in
// place). Packages are read back with the resource manager itself.

#include <tuple>

#include "resource/crafted_files.h"
#include "resource/resource_env.h"
#include "support/run_tool.h"

namespace {

namespace fs = std::filesystem;

const std::vector<Res> kOwn = {{"PLAT", 0, "foo", B("i386")}, {"MXSB", 0, "foo", B("HELLO")}};

// Runs `args` on a directory holding foo.dll ("HELLO") and the file `name` with `bytes`;
// gives the status and what `name` and foo.msb hold afterwards.
struct Outcome {
    int status;
    Bytes file;
    std::vector<Res> records, package;
};
Outcome RunWith(std::vector<std::string> args, const std::string& name, const Bytes& bytes,
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

TEST(ImportCli, CopiesEveryResourceAfterThePackagesOwn) {
    const Bytes big = Fill(5000, 1);
    // Types in an order no sort would give; ids out of order within a type.
    const std::vector<Res> source = {
        {"STR ", 5, "five", B("abc")},
        {"STR ", 2, "", B("unnamed")},
        {"ICON", 128, "icon", big, RAttrProtected},
        {"ICON", -3, "", {}},
        {"DATA", 1, "d", B("xyz!")},
        {"PLAT", 7, "other", B("ppc ")},  // only id 0 of the package's types collides
    };
    const Bytes file = BuildFile(Layout(source));
    const Outcome r = RunWith({"-c", "foo", "-r"}, "src.rsrc", file);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.file, file);  // the source is only read
    EXPECT_EQ(r.package, (std::vector<Res>{kOwn[0], source[5], kOwn[1], source[1], source[0],
                                           source[3], source[2], source[4]}));
}

// The module and platform entries named like the code swap ids with the new ones; other
// entries of the code's name go, the rest stay. A target not holding the module is left alone.
TEST(ReplaceCli, IdsCrossAndOldEntriesGo) {
    const std::vector<Res> withoutModule = {{"MXSB", 7, "bar", B("x")},
                                            {"PLAT", 9, "foo", B("i386")}};
    const Res bar = {"LIsb", 4, "bar", B("keep me")}, vers = {"vers", 1, "", B("1.0"), 8};
    const struct {
        std::vector<Res> target;
        int status;
        std::vector<Res> after;  // sorted by type and id: type order after removals is free
    } rows[] = {
        {{{"MXSB", 7, "foo", B("oldcode")},
          {"PLAT", 9, "foo", B("i386")},
          {"LIsb", 3, "foo", B("lib")},
          bar,
          vers},
         0,
         {bar, {"MXSB", 9, "foo", B("NEWCODE")}, {"PLAT", 7, "foo", B("i386")}, vers}},
        {withoutModule, 2, withoutModule},
    };
    for (const auto& row : rows) {
        const Outcome r =
            RunWith({"-c", "foo", "-vi"}, "target.vi", BuildFile(Layout(row.target)), "NEWCODE");
        EXPECT_EQ(r.status, row.status);
        std::vector<Res> got = r.records;
        std::sort(got.begin(), got.end(), [](const Res& a, const Res& b) {
            return std::tie(a.type, a.id) < std::tie(b.type, b.id);
        });
        EXPECT_EQ(got, row.after) << row.status;
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
    const struct {
        Bytes source;
        int status;
        std::vector<Res> package;
    } rows[] = {
        {BuildFile(Layout({{"PLAT", 0, "x", B("sparc")}})), 2, kOwn},
        {BuildFile(Layout({a1, {"MXSB", 0, "", B("b")}})), 2, {kOwn[0], kOwn[1], a1}},
        {BuildFile({}), 0, kOwn},
        {{}, 2, kOwn},  // missing
        {crafted::RunTimeBitsFromTheFile(), 0, copied},
        {huge, 2, kOwn},  // a resource of nearly 2 GiB in a short source
        {overlapping, 2, kOwn},
    };
    for (const auto& row : rows) {
        const Outcome r = RunWith({"foo", "-r"}, "src.rsrc", row.source);
        EXPECT_EQ(std::make_tuple(r.status, r.package, r.file),
                  std::make_tuple(row.status, row.package, row.source));
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

}  // namespace
