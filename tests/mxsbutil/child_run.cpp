// The child's side of RunInChild: reads its orders, arms the fault, runs the packager, and
// ends at once with the run's status: nothing is shut down, as in the tool, and what a failed
// run leaves goes with the process instead of into the leak check.
#include "mxsbutil/child_run.h"

#include <gtest/gtest.h>

#include <sstream>

#include "mg/dbgtools.h"
#include "mg/stringoutput.h"
#include "mxsbutil/options.h"
#include "platform/faults.h"

// A sanitizer report must not pass for one of the tool's own statuses 0, 1 or 2.
extern "C" const char* __asan_default_options() {
    return "exitcode=99";
}
extern "C" const char* __ubsan_default_options() {
    return "exitcode=98:halt_on_error=1";
}

// The debug print's tee: every line as formatted, with the engine's CR LF.
struct TextSink : FormattingStringOutput {
    void Output(const char* format, va_list args) override {
        text.append(buffer, size_t(FormatInto(buffer, kOutputLimit, format, args)));
    }
    std::string text;
    char buffer[kBufferSize];
};

TEST(PackagerChild, DISABLED_Run) {
    const char* orders = std::getenv(kChildOrders);
    if (orders == nullptr) GTEST_SKIP() << "the child's side, started by its parent";
    std::vector<std::string> parts;
    std::stringstream in(SlurpFile(orders));
    for (std::string part; std::getline(in, part, '\x1F');) parts.push_back(part);
    ASSERT_GE(parts.size(), 3u);
    TextSink sink;
    if (parts[0] == "1") {
        gDebugging = 1;
        gDPrintfFileMode = 0;
        gDebugOutput = &sink;
    }
    const std::filesystem::path dir = parts[2];
    parts[2] = "mxsbutil";  // the program's name, then its arguments
    std::vector<char*> argv;
    for (auto a = parts.begin() + 2; a != parts.end(); ++a) argv.push_back(a->data());
    argv.push_back(nullptr);
    const size_t colon = parts[1].find(':');
    const int64_t n = colon == std::string::npos ? 1 : std::stoll(parts[1].substr(colon + 1));
    const std::string kind = parts[1].substr(0, colon);
    if (kind == "read") plat::FailFileOpAt(plat::kFileRead, n, 6);
    if (kind == "seek") plat::FailFileOpAt(plat::kFileSeek, n, 6);
    if (kind == "alloc") plat::FailAllocationAt(n);
    // In place: no new file can be made beside the target, as in a directory the run may not
    // write to.
    if (kind == "inplace") plat::FailFileOpAt(plat::kFileReplace, 1, MgNoPermission);
    if (kind == "write" || kind == "inplace") plat::FailFileOpAt(plat::kFileWrite, n, MgDiskFull);
    const int status = ParseArguments(static_cast<int>(argv.size() - 1), argv.data());
    std::ofstream(dir / "text", std::ios::binary) << sink.text;
    const bool reached =
        kind == "alloc" ? plat::AllocationCount() >= n : plat::FileOpCount(plat::kFileWrite) >= n;
    std::ofstream(dir / "reached") << (reached ? 'y' : 'n');
    std::_Exit(status);
}
