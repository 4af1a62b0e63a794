#include "mg/stackwalk.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
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

// The lines of a dump, through an LStr sink.
std::vector<std::string> Dump(const StackTrace* trace) {
    LStrOutput out;
    out.SetEnabled(1);
    DDumpStack(trace, &out);
    const LStr* text = *out.Text();
    std::vector<std::string> lines;
    std::string all(reinterpret_cast<const char*>(text->text), static_cast<size_t>(text->count));
    for (size_t end; (end = all.find('\n')) != std::string::npos; all.erase(0, end + 1))
        lines.push_back(all.substr(0, end + 1));
    EXPECT_EQ(all, "");
    return lines;
}

std::string NameOf(StackAddress address, int32_t mode, uint32_t* offset = nullptr) {
    StackDecoder decoder(&address, 1);
    decoder.SetMode(mode);
    const FixedList<DecodedFrame> frames = decoder.Decode();
    EXPECT_EQ(frames.Length(), 1);
    if (offset) *offset = frames[0].offset;
    return frames[0].name;
}

StackAddress AddressOf(int (*function)()) {
    return reinterpret_cast<StackAddress>(function);
}

TEST(StackTrace, NamesAChainOfCallersInOrder) {
    ExceptStackTrace trace;
    chain::Level1(trace, 1);  // 1 drops the address inside Capture
    ASSERT_GE(trace.Count(), 3);
    const char* expected[] = {"chain::Level3", "chain::Level2", "chain::Level1"};
    const std::vector<std::string> lines = Dump(&trace);
    ASSERT_EQ(lines.size(), static_cast<size_t>(trace.Count()));
    for (int i = 0; i < 3; ++i) {
        const std::string named =
            " - test_stackwalk " + TracedFunctionName(expected[i], "StackTrace&, int") + " + ";
        EXPECT_NE(lines[i].find(named), std::string::npos) << lines[i];
        // The whole address, in upper-case digits, and a real line feed.
        char address[32];
        snprintf(address, sizeof address, "0x%08llX - ",
                 static_cast<unsigned long long>(trace.Addresses()[i]));
        EXPECT_EQ(lines[i].rfind(address, 0), 0u) << lines[i];
        EXPECT_EQ(lines[i].back(), '\n');
    }
}

TEST(StackTrace, HoldsAtMostItsCapacity) {
    ExceptStackTrace except;
    FailureStackTrace failure;
    chain::Recurse(except, 40);
    chain::Recurse(failure, 40);
    EXPECT_EQ(except.Count(), 8);
    EXPECT_EQ(failure.Count(), 15);

    except.Capture(100000);  // more to skip than there are frames
    EXPECT_EQ(except.Count(), 0);
    EXPECT_TRUE(Dump(&except).empty());
    EXPECT_TRUE(Dump(nullptr).empty());
}

TEST(StackTrace, WalksAForgedChainUntilAFrameCannotBeRead) {
    // Each frame: the next frame, then the return address. The last points into memory that
    // is never mapped.
    StackAddress frames[3][2];
    frames[0][0] = reinterpret_cast<StackAddress>(frames[1]);
    frames[0][1] = 0x111;
    frames[1][0] = reinterpret_cast<StackAddress>(frames[2]);
    frames[1][1] = 0x222;
    frames[2][0] = 16;
    frames[2][1] = 0x333;
    StackAddress loop[2] = {reinterpret_cast<StackAddress>(loop), 0x444};
    const StackAddress start = reinterpret_cast<StackAddress>(frames[0]);
    const struct {
        StackAddress frame;
        StackAddress pc;
        int32_t skip;
        std::vector<StackAddress> expected;
    } rows[] = {
        {start, 0x999, 0, {0x999, 0x111, 0x222, 0x333}},
        {start, 0x999, 1, {0x111, 0x222, 0x333}},
        {start, 0, 2, {0x333}},
        {start, 0, 3, {}},
        {16, 0x999, 0, {0x999}},
        {reinterpret_cast<StackAddress>(loop), 0, 0, std::vector<StackAddress>(8, 0x444)},
    };
    for (const auto& r : rows) {
        ExceptStackTrace trace;
        trace.CaptureFrom(r.frame, r.pc, r.skip);
        EXPECT_EQ(std::vector<StackAddress>(trace.Addresses(), trace.Addresses() + trace.Count()),
                  r.expected)
            << "skip " << r.skip;
    }
}

TEST(StackDecoder, NamesByMode) {
    const StackAddress own = AddressOf(chain::AnExceedinglyLongFunctionNameThatCannotFitInTheField);
    // The C library's stream record lies in the C library's own data.
    const StackAddress library = reinterpret_cast<StackAddress>(stderr);
    const std::string unknown = "<unknown> <unknown>";

    uint32_t offset = 99;
    const std::string longName = NameOf(own + 3, 2, &offset);
    EXPECT_EQ(
        longName,
        std::string("test_stackwalk chain::AnExceedinglyLongFunctionNameThatCannot").substr(0, 49));
    EXPECT_EQ(offset, 3u);
    EXPECT_EQ(NameOf(own, 1).substr(0, 15), "test_stackwalk ");
    EXPECT_EQ(NameOf(own, 0, &offset), unknown);
    EXPECT_EQ(offset, 0u);
    // Mode 1 names the main module alone.
    EXPECT_NE(NameOf(library, 2).substr(0, 10), "<unknown> ");
    EXPECT_EQ(NameOf(library, 1), unknown);
    for (int32_t mode : {0, 1, 2}) EXPECT_EQ(NameOf(16, mode, &offset), unknown);
    EXPECT_EQ(offset, 0u);
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
    if (!plat::NamesInternalFunctions())
        GTEST_SKIP() << "this build names exported functions alone";
    ExceptStackTrace trace;
    CallsStatic(trace);
    const std::vector<std::string> lines = Dump(&trace);
    ASSERT_GE(lines.size(), 2u);
    EXPECT_NE(lines[0].find(" - test_stackwalk CaptureInStatic"), std::string::npos) << lines[0];
    EXPECT_NE(lines[1].find(" - test_stackwalk " + InAnonymousNamespace("CallsStatic")),
              std::string::npos)
        << lines[1];
}

}  // namespace
