// Whole runs in-process with the Nth allocation failing (-r runs) or the Nth write failing as
// on a full disk (new packages and -vi), for every N the run reaches: each must end with one
// of the tool's statuses, cleanly under the sanitizers, and leave its source or target as it
// was. The memory manager starts once per process, so each run is a child.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <sstream>

#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "mxsbutil/options.h"
#include "platform/faults.h"
#include "support/run_tool.h"

// A sanitizer report must not pass for one of the tool's own statuses 0, 1 or 2.
extern "C" const char* __asan_default_options() {
    return "exitcode=99";
}
extern "C" const char* __ubsan_default_options() {
    return "exitcode=98:halt_on_error=1";
}

namespace {

// The memory manager starts once per process, so each run is a child: this program again,
// running only the child test below with its orders in this variable.
constexpr const char* kOrders = "MXSB_OOM_CHILD";

// Runs one order in a child and gives its exit status (-1 when it did not exit by itself).
int InChild(const std::string& order) {
    int64_t child = StartTestChild("OutOfMemoryChild.DISABLED_Run", kOrders + ("=" + order));
    return child ? plat::WaitChild(child, 20000) : -1;  // a run that loops forever shows as -1
}

Path ToPath(const std::string& text) {
    Path p = nullptr;
    FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &p);
    return p;
}

// Makes the -r source with the library, in a child so that this process stays unstarted.
int MakeSource(const std::string& file) {
    if (InitMemoryManager() != MgNoError || RInit() != MgNoError) return 10;
    Path path = ToPath(file);
    ResFile f = 0;
    if (!path || RCreateCorrectFile(path, 1, MgResType("CRTR"), MgResType("TEST"), 0644) ||
        ROpenFile(path, FMModeReadWrite, &f, nullptr, nullptr))
        return 11;
    const struct {
        const char* type;
        int32_t id;
        const char* name;
        int32_t size;
    } rows[] = {{"STR ", 1, "\3one", 10},
                {"STR ", 2, nullptr, 0},
                {"ICON", 5, "\4icon", 3000},
                {"DATA", -1, "\1d", 7}};
    for (const auto& r : rows) {
        Handle h = MemNewHandle(r.size);
        if (!h) return 12;
        for (int32_t i = 0; i < r.size; ++i) (*h)[i] = uint8_t(i * 7 + r.id);
        if (RAdd(h, f, MgResType(r.type), r.id, reinterpret_cast<ConstPStr>(r.name))) return 13;
    }
    return RCloseFile(f) ? 14 : 0;
}

TEST(OutOfMemory, EveryFailingAllocationOfAnImportRun) {
    TempDir s;
    const std::string source = (s.path / "src.rsrc").string();
    ASSERT_EQ(InChild("source|" + source), 0);
    const std::string before = SlurpFile(source);
    ASSERT_GT(before.size(), 3000u);

    bool completed = false;
    for (int64_t n = 1; n <= 400 && !completed; ++n) {
        const std::filesystem::path dir = s.path / ("run" + std::to_string(n));
        std::filesystem::create_directory(dir);
        std::ofstream(dir / "foo.dll", std::ios::binary) << "MODULE";
        const int status = InChild("run|" + std::to_string(n) + "|" + dir.string() + "|" + source);
        const std::string reached = SlurpFile(dir / "reached");

        ASSERT_EQ(SlurpFile(source), before) << "N=" << n;
        // Keep going after a bad run, so that one report lists every allocation that fails.
        if (reached.empty() || status < 0 || status > 2) {
            ADD_FAILURE() << "N=" << n << " status " << status
                          << " (-1: no exit of its own; 98/99: sanitizer report)";
            continue;
        }
        if (reached == "n") {
            completed = true;
            EXPECT_EQ(status, 0) << "N=" << n;
            // Untouched run: the two own resources and the four imported ones, data included.
            EXPECT_GT(std::filesystem::file_size(dir / "foo.msb"), before.size());
        }
        std::filesystem::remove_all(dir);
    }
    EXPECT_TRUE(completed) << "still failing allocations after 400";
}

// Runs the tool on `args` in a child with the Nth write failing; gives its exit status and
// whether the run reached that write.
std::pair<int, bool> RunWithWriteFailing(const std::filesystem::path& dir,
                                         const std::vector<std::string>& args, int64_t n,
                                         bool inPlace = false) {
    std::string order = (inPlace ? "inplace|" : "write|") + std::to_string(n) + "|" + dir.string();
    for (const auto& a : args) order += "|" + a;
    std::filesystem::remove(dir / "reached");
    const int status = InChild(order);
    return {status, SlurpFile(dir / "reached") == "y"};
}

// A package that didn't reach the disk is a failed run (2), not an empty file with status 0;
// a -vi target that couldn't be rewritten keeps its old bytes, whether a new file was to take its
// place or, where none can be made beside it, it is appended to and its header written last.
TEST(FullDisk, EveryFailingWriteOfAPackageRun) {
    TempDir s;
    const std::string dir = s.path.string();
    std::ofstream(s.path / "foo.dll", std::ios::binary) << "MODULE";
    ASSERT_EQ(RunWithWriteFailing(s.path, {"-c", "foo", "-d", dir}, 0).first, 0);
    std::filesystem::rename(s.path / "foo.msb", s.path / "t.vi");
    const std::string vi = (s.path / "t.vi").string();
    const std::string before = SlurpFile(vi);
    std::ofstream(s.path / "foo.dll", std::ios::binary) << "MODULE, VERSION 2";
    const std::filesystem::path mgrsrc = ToolPath(MGRSRC_NAME);

    enum Target { kPackage, kNewVi, kViInPlace };
    for (Target target : {kPackage, kNewVi, kViInPlace}) {
        std::ofstream(vi, std::ios::binary) << before;
        bool completed = false;
        for (int64_t n = 1; n <= 50 && !completed; ++n) {
            std::vector<std::string> args = {"-c", "foo", "-d", dir};
            if (target != kPackage) args.insert(args.end(), {"-vi", vi});
            const auto [status, reached] =
                RunWithWriteFailing(s.path, args, n, target == kViInPlace);
            EXPECT_EQ(status, reached ? 2 : 0) << "N=" << n << " target " << target;
            completed = !reached;
            if (target != kPackage && reached) {
                EXPECT_EQ(SlurpFile(vi), before) << "N=" << n << " target " << target;
            }
        }
        EXPECT_TRUE(completed);
        if (target == kPackage) continue;
        // The run that got through left a VI that verify finds sound, with the new module; in
        // place it changed nothing before the old end but the header.
        EXPECT_EQ(RunProgram(mgrsrc, {"verify", vi}, s.path).status, 0);
        EXPECT_EQ(RunProgram(mgrsrc, {"extract", "-o", "-", vi, "MXSB", "foo"}, s.path).out,
                  "MODULE, VERSION 2");
        if (target == kViInPlace) {
            const std::string after = SlurpFile(vi);
            ASSERT_GT(after.size(), before.size());
            EXPECT_EQ(after.substr(32, before.size() - 32), before.substr(32));
        }
    }
}

// The child's side: "source|<file>" makes the -r source; "run|<N>|<dir>|<source>" packages
// with the Nth allocation failing and writes to <dir>/reached whether the run got that far.
// It ends at once with the run's status: nothing is shut down, as in the tool, and what a
// failed run leaves goes with the process instead of into the leak check.
TEST(OutOfMemoryChild, DISABLED_Run) {
    const char* orders = std::getenv(kOrders);
    if (orders == nullptr) GTEST_SKIP() << "the child's side, started by its parent";
    std::vector<std::string> parts;
    std::stringstream in(orders);
    for (std::string part; std::getline(in, part, '|');) parts.push_back(part);
    if (parts.size() == 2 && parts[0] == "source") std::_Exit(MakeSource(parts[1]));
    if (parts.size() >= 3 && (parts[0] == "write" || parts[0] == "inplace")) {
        const int64_t n = std::stoll(parts[1]);
        // No new file can be made beside the target, as in a directory the run may not write to.
        if (parts[0] == "inplace") plat::FailFileOpAt(plat::kFileReplace, 1, MgNoPermission);
        std::vector<std::string> args = {"mxsbutil"};
        args.insert(args.end(), parts.begin() + 3, parts.end());
        std::vector<char*> argv;
        for (auto& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        plat::FailFileOpAt(plat::kFileWrite, n, MgDiskFull);
        int32_t status = ParseArguments(int(args.size()), argv.data());
        std::ofstream(std::filesystem::path(parts[2]) / "reached")
            << (plat::FileOpCount(plat::kFileWrite) >= n ? 'y' : 'n');
        std::_Exit(int(status));
    }
    ASSERT_EQ(parts.size(), 4u);
    const int64_t n = std::stoll(parts[1]);
    const std::filesystem::path dir = parts[2];
    std::vector<std::string> args = {"mxsbutil", "-c", "foo", "-d", parts[2], "-r", parts[3]};
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    plat::FailAllocationAt(n);
    int32_t status = ParseArguments(int(args.size()), argv.data());
    std::ofstream(dir / "reached") << (plat::AllocationCount() >= n ? 'y' : 'n');
    std::_Exit(int(status));
}

}  // namespace
