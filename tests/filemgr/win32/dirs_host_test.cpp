// What a Windows host decides: the drives are letters, the empty path is the level above them,
// a path's volume is its drive, and the grammar refuses the names the host reserves.

#include <algorithm>

#include "filemgr/dirs_env.h"

TEST_F(DirsTest, DrivesAreLettersUnderTheEmptyPathAndVolumes) {
    OwnedHandle names, types;
    ASSERT_EQ(FDriveEntries(names, types), MgNoError);
    const std::vector<std::string> drives = Names(names);
    const std::string ours = dir.path.root_name().string().substr(0, 1);
    EXPECT_NE(std::find(drives.begin(), drives.end(), ours), drives.end()) << ours;
    for (const auto& [name, flags, type] : EntriesOf(names, types))
        EXPECT_TRUE(name.size() == 1 && name[0] >= 'A' && name[0] <= 'Z' && flags == EntryHasType &&
                    IsVolumeKind(type))
            << name;
    Path top = FEmptyPath(nullptr);
    OwnedHandle listed;
    ASSERT_EQ(FDirEntries(top, listed, nullptr), MgNoError);
    EXPECT_EQ(Names(listed), drives);
    FileInfo info;
    memset(&info, 0xAB, sizeof info);
    ASSERT_EQ(FFileInfoOf(top, &info), MgNoError);
    EXPECT_EQ(std::make_tuple(info.isDirectory, info.size, info.permissions, info.hiddenFlag,
                              FPathExistsAs(top)),
              std::make_tuple(1, int32_t(drives.size()), 0, 0, 2));
    FPathRelease(top);

    OwnedPath p(Make("f"));
    const std::string root = dir.path.root_path().make_preferred().string();
    Path volume = nullptr;
    double freeBytes = -1, totalBytes = -1;
    uint32_t figures[3] = {};
    // The last call cuts the path to its volume.
    EXPECT_EQ(
        (std::vector<MgStatus>{FVolumeOf(p, &volume), FVolumeBytes(p, &freeBytes, &totalBytes),
                               FVolumeSpace(p, figures)}),
        (std::vector<MgStatus>{0, 0, 0}));
    EXPECT_EQ(std::make_pair(PathText(volume), PathText(p)), std::make_pair(root, root));
    EXPECT_TRUE(totalBytes > 0 && freeBytes <= totalBytes && figures[2] <= figures[0]);
    FPathRelease(volume);
}

TEST_F(DirsTest, ReservedNamesAreRefused) {
    for (const char* name : {"\3aux", "\4com1", "\3a:b", "\2q?"}) {
        OwnedPath p(dir.path.string());
        EXPECT_EQ((std::vector<int32_t>{FAppendName(p, reinterpret_cast<ConstPStr>(name)),
                                        FMakeDirectory(p, 0), FPathExistsAs(p)}),
                  (std::vector<int32_t>{0, MgBadArgument, 0}))
            << name + 1;
    }
}
