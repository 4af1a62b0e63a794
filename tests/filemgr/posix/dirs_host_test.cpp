// What a POSIX host decides where the other host's notions have no POSIX meaning: links play
// shortcuts, "/" is an ordinary directory, drives and volumes are mount points, the mode bits
// are the permissions, and names the Windows grammar refuses are ordinary.
#include <sys/stat.h>

#include <algorithm>

#include "filemgr/dirs_env.h"

TEST_F(DirsTest, LinksPlayShortcuts) {
    Make("b.txt");
    MakeDir("c");
    for (const auto& [target, link] : {std::pair{dir.path / "b.txt", "link-file"},
                                       {dir.path / "c", "link-dir"},
                                       {dir.path / "gone", "dangling"},
                                       {fs::path("/"), "to-root"}})
        fs::create_symlink(target, dir.path / link);
    OwnedPath p(dir.path.string());
    OwnedHandle names, types;
    ASSERT_EQ(FDirEntries(p, names, types), MgNoError);
    Entries listed = EntriesOf(names, types);
    ASSERT_EQ(listed.size(), 6u);
    EXPECT_TRUE(IsVolumeKind(std::get<2>(listed[5])));  // the root's kind of volume
    std::get<2>(listed[5]) = 0;
    EXPECT_EQ(listed, (Entries{{"b.txt", EntryIsFile, 0},
                               {"c", 0, 0},
                               {"dangling", EntryIsFile | EntryIsShortcut | EntryUnreadable, 0},
                               {"link-dir", EntryIsShortcut, 0},
                               {"link-file", EntryIsFile | EntryIsShortcut, 0},
                               {"to-root", EntryIsShortcut | EntryHasType, 0}}));
    // A path through a link resolves to the real directory, the missing rest kept.
    OwnedPath viaLink(Name("link-dir/leaf"));
    Path resolved = FResolvedPath(nullptr, viaLink);
    ASSERT_NE(resolved, nullptr);
    EXPECT_EQ(PathText(resolved), fs::canonical(dir.path).string() + "/c/leaf");
    FPathRelease(resolved);
    // Deleting a link removes the link, never its target, also a dangling one.
    for (const char* leaf : {"link-dir", "link-file", "dangling"})
        EXPECT_TRUE(FDeleteEntry(OwnedPath(Name(leaf))) == MgNoError && !fs::is_symlink(Name(leaf)))
            << leaf;
    EXPECT_TRUE(fs::is_directory(Name("c")) && fs::exists(Name("b.txt")));
}

// "/" is a directory like any other: the empty path lists it, not the volumes, and its
// information has real dates. The drives are the mounted file systems.
TEST_F(DirsTest, TheRootDrivesAndVolumesAreMounts) {
    OwnedHandle names, drives, types;
    Path root = FEmptyPath(nullptr);
    ASSERT_EQ(FDirEntries(root, names, nullptr), MgNoError);
    const std::vector<std::string> top = Names(names);
    EXPECT_NE(std::find(top.begin(), top.end(), "tmp"), top.end());
    FileInfo info;
    memset(&info, 0xAB, sizeof info);
    ASSERT_EQ(FFileInfoOf(root, &info), MgNoError);
    EXPECT_EQ(std::make_tuple(info.isDirectory, info.hiddenFlag, info.spareWord1 | info.spareWord2),
              std::make_tuple(1, 0, 0));
    EXPECT_GT(info.modified, 0u);
    FPathRelease(root);
    ASSERT_EQ(FDriveEntries(drives, types), MgNoError);
    const std::vector<std::string> mounts = Names(drives);
    EXPECT_NE(std::find(mounts.begin(), mounts.end(), "/"), mounts.end());
    ASSERT_EQ(MemHandleSize(types), 8 * static_cast<int32_t>(mounts.size()));
    for (const auto& [name, flags, type] : EntriesOf(drives, types))
        EXPECT_TRUE(flags == EntryHasType && IsVolumeKind(type)) << name;
}

// Names the Windows grammar refuses are ordinary names here.
TEST_F(DirsTest, WindowsReservedNamesAreOrdinary) {
    for (const char* leaf : {"aux", "x.", "a:b", "com1", "q?"})
        EXPECT_TRUE(FMakeDirectory(OwnedPath(Name(leaf)), 0) == MgNoError &&
                    fs::is_directory(Name(leaf)))
            << leaf;

    // The volume of a path is the mount point of its file system.
    struct stat st;
    stat(dir.path.c_str(), &st);
    fs::path mount = dir.path;
    for (struct stat up; mount != mount.root_path() &&
                         stat(mount.parent_path().c_str(), &up) == 0 && up.st_dev == st.st_dev;)
        mount = mount.parent_path();
    Path volume = nullptr;
    OwnedPath p(Make("f")), relative("a");
    double freeBytes = -1, totalBytes = -1;
    uint32_t figures[3] = {};
    // The last call cuts the path to its volume.
    EXPECT_EQ(
        (std::vector<MgStatus>{FVolumeOf(p, &volume), FVolumeBytes(p, &freeBytes, &totalBytes),
                               FVolumeBytes(p, nullptr, nullptr), FVolumeSpace(relative, figures),
                               FVolumeSpace(p, figures)}),
        (std::vector<MgStatus>{0, 0, 0, MgBadArgument, 0}));
    const uint64_t total = fs::space(mount).capacity;
    EXPECT_EQ(std::make_tuple(PathText(volume), PathText(p), totalBytes, figures[0]),
              std::make_tuple(mount.string(), mount.string(), double(total),
                              total > 0xFFFFFFFFu ? 0xFFFFFFFFu : uint32_t(total)));
    EXPECT_LE(figures[2], figures[0]);
    FPathRelease(volume);
}
