// The seam's answers about the process and its surroundings, checked against the standard
// library's view of the same host.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/platform.h"

namespace {

namespace fs = std::filesystem;

TEST(Seam, TempDirectoryEndsInTheSeparator) {
    char dir[1024];
    const int32_t n = plat::TempDirectory(dir, sizeof dir);
    ASSERT_GT(n, 0);
    EXPECT_EQ(std::string(dir).size(), size_t(n));
    EXPECT_EQ(dir[n - 1], plat::DirectorySeparator());
    EXPECT_TRUE(fs::is_directory(dir)) << dir;
    EXPECT_EQ((fs::path(dir) / "").lexically_normal(),
              (fs::temp_directory_path() / "").lexically_normal());
    // No room for the separator or the terminator: nothing.
    EXPECT_EQ(plat::TempDirectory(dir, n), 0);
    EXPECT_EQ(plat::TempDirectory(dir, 0), 0);
}

TEST(Seam, ModuleFileNameIsThisProgram) {
    char name[4096];
    const int32_t n = plat::ModuleFileName(name, sizeof name);
    ASSERT_GT(n, 0);
    EXPECT_EQ(std::string(name).size(), size_t(n));
    EXPECT_TRUE(fs::path(name).is_absolute()) << name;
    EXPECT_EQ(fs::path(name).stem(), "test_platform");
    EXPECT_TRUE(fs::is_regular_file(name)) << name;
    EXPECT_EQ(plat::ModuleFileName(name, n), 0);  // the terminator does not fit
}

}  // namespace
