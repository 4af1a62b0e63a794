// A module too long for the format's 32-bit words ends the run with 2 and writes no package.
// Inputs that aren't files are in posix/.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/run_tool.h"

namespace {

namespace fs = std::filesystem;

// Sparse files: their length costs no disk.
TEST(InputsCli, ModulesTooLongForTheFormat) {
    for (uintmax_t size : {(uintmax_t{4} << 30) + 61, uintmax_t{2} << 30}) {
        TempDir dir;
        std::ofstream(dir.path / "big.dll").close();
        fs::resize_file(dir.path / "big.dll", size);
        EXPECT_EQ(RunTool({"big", "-d", dir.path.string()}, dir.path).status, 2) << size;
        EXPECT_FALSE(fs::exists(dir.path / "big.msb")) << size;
    }
}

}  // namespace
