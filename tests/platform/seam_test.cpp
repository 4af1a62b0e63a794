// The seam's answers about the process and its surroundings, checked against the standard
// library's view of the same host. Without room for the terminator (or the temporary
// directory's separator), nothing.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/platform.h"

namespace {

namespace fs = std::filesystem;

TEST(Seam, TempDirectoryAndModuleFileName) {
    char dir[1024], name[4096];
    const int32_t n = plat::TempDirectory(dir, sizeof dir),
                  m = plat::ModuleFileName(name, sizeof name);
    ASSERT_TRUE(n > 0 && m > 0);
    EXPECT_EQ(std::make_tuple(std::string(dir).size(), dir[n - 1], std::string(name).size()),
              std::make_tuple(size_t(n), plat::DirectorySeparator(), size_t(m)));
    EXPECT_EQ((fs::path(dir) / "").lexically_normal(),
              (fs::temp_directory_path() / "").lexically_normal());
    EXPECT_TRUE(fs::path(name).is_absolute() && fs::is_regular_file(name)) << name;
    EXPECT_EQ(fs::path(name).stem(), "test_platform");
    EXPECT_EQ(std::make_tuple(plat::TempDirectory(dir, n), plat::TempDirectory(dir, 0),
                              plat::ModuleFileName(name, m)),
              std::make_tuple(0, 0, 0));
}

}  // namespace
