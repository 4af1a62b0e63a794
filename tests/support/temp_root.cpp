// Linked into every test program: one temporary directory for the program and every process it
// starts, removed when the program ends. A child that ends without unwinding (a death test's,
// one that runs a test afresh, one that stops with _Exit) leaves its fixtures' directories and
// the failure log behind; they lie in here, and go with the directory.
#include <cstdlib>
#include <string>

#include "platform/childprocess.h"
#include "platform/platform.h"
#include "support/temp_dir.h"

namespace {

constexpr const char* kRootVariable = "MXSB_TEST_TEMP";

class TempRoot {
  public:
    TempRoot() {
        // A child of a test program: the temporary directory it inherits is its parent's.
        if (std::getenv(kRootVariable) != nullptr) return;
        path_ = NewTempDirectory();
        // Every host's variable for the temporary directory: the layer, the runtime and the
        // test framework read different ones.
        for (const char* name : {kRootVariable, "TMPDIR", "TMP", "TEMP"})
            plat::SetVariable(name, path_.string().c_str());
        owner_ = plat::ProcessId();
    }
    // A forked death-test child runs this too: there the directory is its parent's to remove.
    ~TempRoot() {
        if (owner_ != 0 && owner_ == plat::ProcessId()) RemoveTree(path_);
    }
    TempRoot(const TempRoot&) = delete;
    TempRoot& operator=(const TempRoot&) = delete;

  private:
    std::filesystem::path path_;
    int32_t owner_ = 0;
};

const TempRoot gTempRoot;

}  // namespace
