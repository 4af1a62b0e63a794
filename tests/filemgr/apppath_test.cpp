#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "mg/filemgr.h"
#include "mg/path.h"
#include "support/memory_env.h"

namespace {

std::string PathText(Path p) {
    char name[FNativeNameBufferSize];
    EXPECT_EQ(FPathToNativeName(p, name), MgNoError);
    return name;
}

// Outside mxsbutil the layer's own routine names the running program.
TEST(ApplicationPath, NamesTheRunningProgram) {
    // The program as it was started, made absolute.
    const std::string self =
        std::filesystem::canonical(testing::internal::GetArgvs()[0]).make_preferred().string();
    char name[4096];
    EXPECT_EQ(FApplicationName(name, sizeof name), static_cast<int32_t>(self.size()));
    EXPECT_EQ(name, self);
    EXPECT_EQ(FApplicationName(name, static_cast<int32_t>(self.size())), 0);  // no room

    Path p = FEmptyPath(nullptr);
    ASSERT_EQ(FApplicationPath(p), MgNoError);
    EXPECT_EQ(PathText(p), self);
    ASSERT_EQ(FApplicationDirectory(p), MgNoError);
    EXPECT_EQ(PathText(p), std::filesystem::path(self).parent_path().string());
    FPathRelease(p);
    EXPECT_EQ(FApplicationPath(nullptr), MgBadArgument);
}

}  // namespace
