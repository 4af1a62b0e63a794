#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "mg/filemgr.h"
#include "mg/path.h"
#include "support/memory_env.h"

namespace {

// Outside mxsbutil the layer's own routine names the running program, as it was started, made
// absolute; with no room for it, nothing.
TEST(ApplicationPath, NamesTheRunningProgram) {
    const std::string self =
        std::filesystem::canonical(testing::internal::GetArgvs()[0]).make_preferred().string();
    char name[4096], text[FNativeNameBufferSize], dir[FNativeNameBufferSize];
    EXPECT_EQ(FApplicationName(name, sizeof name), static_cast<int32_t>(self.size()));
    EXPECT_EQ(name, self);
    EXPECT_EQ(FApplicationName(name, static_cast<int32_t>(self.size())), 0);
    Path p = FEmptyPath(nullptr);
    ASSERT_EQ(FApplicationPath(p), MgNoError);
    EXPECT_EQ(FPathToNativeName(p, text), MgNoError);
    ASSERT_EQ(FApplicationDirectory(p), MgNoError);
    EXPECT_EQ(FPathToNativeName(p, dir), MgNoError);
    EXPECT_EQ(std::make_pair(std::string(text), std::string(dir)),
              std::make_pair(self, std::filesystem::path(self).parent_path().string()));
    FPathRelease(p);
    EXPECT_EQ(FApplicationPath(nullptr), MgBadArgument);
}

}  // namespace
