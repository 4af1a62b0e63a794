#include "mg/stackwalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "mg/stringoutput.h"
#include "support/host_rules.h"
#include "support/memory_env.h"

// A chain of known functions, with external linkage so that the program's exported symbols
// name them. None may be inlined or end in a tail call, or its frame would vanish.
namespace chain {

[[gnu::noinline]] int Level3(StackTrace& trace, int skip) {
    trace.Capture(skip);
    return trace.Count() + 1;
}
[[gnu::noinline]] int Level2(StackTrace& trace, int skip) {
    return Level3(trace, skip) + 1;
}
[[gnu::noinline]] int Level1(StackTrace& trace, int skip) {
    return Level2(trace, skip) + 1;
}
// The volatile read behind the call keeps the optimiser from turning the recursion into a loop.
[[gnu::noinline]] int Recurse(StackTrace& trace, int depth) {
    volatile int after = 1;
    const int r = depth == 0 ? Level1(trace, 0) : Recurse(trace, depth - 1);
    return r + after;
}
[[gnu::noinline]] int AnExceedinglyLongFunctionNameThatCannotFitInTheField() {
    return 1;
}

}  // namespace chain

namespace {

// The text of a dump, through an LStr sink.
std::string Dump(const StackTrace* trace) {
    LStrOutput out;
    out.SetEnabled(1);
    DDumpStack(trace, &out);
    const LStr* text = *out.Text();
    return std::string(reinterpret_cast<const char*>(text->text), size_t(text->count));
}

std::vector<StackAddress> TraceOf(const StackTrace& t) {
    return std::vector<StackAddress>(t.Addresses(), t.Addresses() + t.Count());
}

// Each line: the whole address in upper-case digits, the module, the function and a real line
// feed. A trace holds at most its capacity; nothing to show is no line.
TEST(StackTrace, NamesAChainOfCallersInOrderUpToItsCapacity) {
    ExceptStackTrace trace;
    chain::Level1(trace, 1);  // 1 drops the address inside Capture
    ASSERT_GE(trace.Count(), 3);
    std::string dump = Dump(&trace);
    EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), trace.Count());
    for (int i = 0; i < 3; ++i, dump.erase(0, dump.find('\n') + 1)) {
        char address[32];
        snprintf(address, sizeof address, "0x%08llX - ",
                 static_cast<unsigned long long>(trace.Addresses()[i]));
        EXPECT_EQ(
            dump.substr(0, dump.find(" + ") + 3),
            address + std::string("test_stackwalk ") +
                TracedFunctionName("chain::Level" + std::to_string(3 - i), "StackTrace&, int") +
                " + ");
    }
    FailureStackTrace failure;
    chain::Recurse(trace, 40);
    chain::Recurse(failure, 40);
    EXPECT_EQ(std::make_pair(trace.Count(), failure.Count()), std::make_pair(8, 15));
    trace.Capture(100000);  // more to skip than there are frames
    EXPECT_EQ(std::to_string(trace.Count()) + Dump(&trace) + Dump(nullptr), "0");
}

TEST(StackTrace, WalksAForgedChainUntilAFrameCannotBeRead) {
    // Each frame: the next frame, then the return address. The last points into memory that
    // is never mapped; a frame that points at itself runs to the capacity.
    StackAddress frames[3][2] = {{0, 0x111}, {0, 0x222}, {16, 0x333}};
    frames[0][0] = reinterpret_cast<StackAddress>(frames[1]);
    frames[1][0] = reinterpret_cast<StackAddress>(frames[2]);
    StackAddress loop[2] = {reinterpret_cast<StackAddress>(loop), 0x444};
    const StackAddress start = reinterpret_cast<StackAddress>(frames[0]);
    const std::tuple<StackAddress, StackAddress, int32_t, std::vector<StackAddress>> rows[] = {
        {start, 0x999, 0, {0x999, 0x111, 0x222, 0x333}},
        {start, 0x999, 1, {0x111, 0x222, 0x333}},
        {start, 0, 2, {0x333}},
        {start, 0, 3, {}},
        {16, 0x999, 0, {0x999}},
        {reinterpret_cast<StackAddress>(loop), 0, 0, std::vector<StackAddress>(8, 0x444)}};
    for (const auto& [frame, pc, skip, expected] : rows) {
        ExceptStackTrace trace;
        trace.CaptureFrom(frame, pc, skip);
        EXPECT_EQ(TraceOf(trace), expected) << "skip " << skip;
    }
}

// Mode 2 names every module, mode 1 the main module alone, mode 0 nothing; a name is cut to
// 49 characters. An unmapped address is unknown in every mode.
TEST(StackDecoder, NamesByMode) {
    auto name = [](StackAddress address, int32_t mode) {
        StackDecoder decoder(&address, 1);
        decoder.SetMode(mode);
        const FixedList<DecodedFrame> frames = decoder.Decode();
        EXPECT_EQ(frames.Length(), 1);
        return std::string(frames[0].name) + " + " + std::to_string(frames[0].offset);
    };
    const StackAddress own =
        reinterpret_cast<StackAddress>(chain::AnExceedinglyLongFunctionNameThatCannotFitInTheField);
    // The C library's stream record lies in the C library's own data.
    const StackAddress library = reinterpret_cast<StackAddress>(stderr);
    const std::string unknown = "<unknown> <unknown> + 0";
    EXPECT_EQ(name(own + 3, 2), "test_stackwalk chain::AnExceedinglyLongFunctionNa + 3");
    EXPECT_EQ(name(own, 1).substr(0, 15), "test_stackwalk ");
    EXPECT_EQ(name(own, 0), unknown);
    EXPECT_NE(name(library, 2).substr(0, 10), "<unknown> ");
    EXPECT_EQ(name(library, 1), unknown);
    for (int32_t mode : {0, 1, 2}) EXPECT_EQ(name(16, mode), unknown);
}

}  // namespace

// Functions that no program exports, whatever its link: a static one, called from one in an
// anonymous namespace. This program is linked as a host's would be, without its symbols
// exported.
// The volatile reads behind the calls keep them from becoming tail calls, also where the
// optimiser drops the unused results.
[[gnu::noinline]] static int CaptureInStatic(StackTrace& trace) {
    volatile int after = 1;
    trace.Capture(1);
    return after;
}

namespace {

[[gnu::noinline]] int CallsStatic(StackTrace& trace) {
    volatile int after = 1;
    const int r = CaptureInStatic(trace);
    return r + after;
}

TEST(StackTrace, NamesFunctionsThatAreNotExported) {
    if (!plat::NamesInternalFunctions()) GTEST_SKIP() << "this build names exported functions only";
    ExceptStackTrace trace;
    CallsStatic(trace);
    const std::string dump = Dump(&trace), second = dump.substr(dump.find('\n') + 1);
    EXPECT_EQ(dump.find(" - test_stackwalk CaptureInStatic"), dump.find(" - ")) << dump;
    EXPECT_EQ(second.find(" - test_stackwalk " + InAnonymousNamespace("CallsStatic")),
              second.find(" - "))
        << dump;
}

}  // namespace
