#include "mg/mxexcept.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <tuple>

#include "platform/faults.h"
#include "support/host_rules.h"

// Functions that construct exceptions, with exported names for the trace.
namespace thrower {

[[gnu::noinline]] MXExcept Make(int32_t err) {
    MXExcept e(err, "made", "thrower.cpp", 7);
    return e;
}

}  // namespace thrower

namespace {

using Fields = std::tuple<int32_t, std::string, std::string, int32_t, std::string>;

// Error, detail, file, line and message of an exception.
Fields FieldsOf(const MXExcept& e) {
    return {e.GetError(), e.GetDetail(), e.GetFile(), e.GetLine(), e.what()};
}

std::vector<StackAddress> TraceOf(const StackTrace& t) {
    return std::vector<StackAddress>(t.Addresses(), t.Addresses() + t.Count());
}

// Throws `thrown` and converts it in a catch-all.
template <typename T>
MXExcept Converted(const T& thrown) {
    try {
        throw thrown;
    } catch (...) {
        return ConvertCurrentException();
    }
}

// Texts are cut (detail 127, file 31) and never escaped; bad_alloc becomes 2, anything else
// but an MXExcept 42, an MXExcept a copy with its trace, which starts at the constructing
// code; a hardware fault is thrown on.
TEST(MXExcept, FieldsMessagesAndConversions) {
    const std::string d127(127, 'd'), f31(31, 'f'), convert = "mgsource\\mxexcept\\convert.cpp";
    // Converted rows (file `convert`) have no line or message worth a check.
    const std::tuple<MXExcept, int32_t, std::string, std::string, int32_t> rows[] = {
        {{7, "Path too long", "mgsource\\x.cpp", 12}, 7, "Path too long", "mgsource\\x.cpp", 12},
        {{-1, nullptr, nullptr, -3}, -1, "", "", -3},
        {{2, std::string(200, 'd').c_str(), std::string(40, 'f').c_str(), 0}, 2, d127, f31, 0},
        {{0, "a\\n%d", "", 1}, 0, "a\\n%d", "", 1},
        {Converted(std::bad_alloc()), 2, "converted from std::bad_alloc", convert, 0},
        {Converted(17), 42, "caught unknown exception", convert, 0},
        {Converted(std::runtime_error("x")), 42, "caught unknown exception", convert, 0}};
    for (const auto& [e, err, detail, file, line] : rows) {
        const bool converted = file == convert;
        EXPECT_EQ(
            FieldsOf(e),
            Fields(err, detail, file, converted ? e.GetLine() : line,
                   converted ? e.what()
                             : "MXExcept. Err=" + std::to_string(err) + ", File=" + file +
                                   ", Line=" + std::to_string(line) + ", Detail='" + detail + "'"));
    }
    // A null text empties its field, and a cut one and the message end, whatever the memory
    // held before.
    alignas(MXExcept) unsigned char dirty[sizeof(MXExcept)];
    memset(dirty, 'x', sizeof dirty);
    const MXExcept* blank = new (dirty) MXExcept(1, nullptr, std::string(40, 'f').c_str(), 0);
    EXPECT_EQ(FieldsOf(*blank),
              Fields(1, "", f31, 0, "MXExcept. Err=1, File=" + f31 + ", Line=0, Detail=''"));
    blank->~MXExcept();
    const MXExcept original = thrower::Make(5);
    const MXExcept copy = Converted(original);
    EXPECT_EQ(FieldsOf(copy), FieldsOf(original));
    EXPECT_EQ(TraceOf(copy.GetStackTrace()), TraceOf(original.GetStackTrace()));
    EXPECT_GT(original.GetStackTrace().Count(), 1);
    EXPECT_EQ(std::string(original.GetStackTrace().MakeDecoder()->Decode()[0].name),
              "test_mxexcept " + TracedFunctionName("thrower::Make", "int"));
    EXPECT_THROW(Converted(SEH_Exception(0xC0000005u)), SEH_Exception);
}

// The trace starts at the fault's address when there is a fault record, and walks on from
// its frame when that is complete. POSIX offers no translator, nor does MinGW-w64's default
// runtime.
TEST(SEHTranslator, TraceStartsAtTheFault) {
    // A frame pointer into memory that is never mapped: the fault's address alone.
    const std::tuple<bool, SEHFaultInfo, std::vector<StackAddress>> rows[] = {
        {false, {}, {}}, {true, {false, 16, 0xABC}, {}}, {true, {true, 16, 0xABC}, {0xABC}}};
    for (const auto& [given, info, trace] : rows) {
        try {
            SEHTranslator(0xC0000094u, given ? &info : nullptr);
        } catch (const SEH_Exception& e) {
            EXPECT_EQ(std::make_pair(e.GetCode(), TraceOf(e.GetStackTrace())),
                      std::make_pair(0xC0000094u, trace));
        }
    }
    EXPECT_EQ(InstallSEHTranslator(), 0);
}

int gHandlerCalls = 0, gHandlerAnswer = 0;
size_t gHandlerSize = 0;
int Handler(size_t size) {
    ++gHandlerCalls;
    gHandlerSize = size;
    return gHandlerAnswer;
}

// Zero bytes give a block of their own. A failure goes through the replaced handler once:
// without one, or when it answers no, it is a bad_alloc (null for the nothrow form); its yes
// gives the null pointer, not a retry.
TEST(GlobalNew, ZeroBytesAndFailures) {
    void *a = ::operator new(0), *b = ::operator new(0);
    EXPECT_TRUE(a != nullptr && a != b);
    ::operator delete(a);
    ::operator delete(b);
    ::operator delete(nullptr);
    const auto saved = gPreviousNewHandler;
    gPreviousNewHandler = nullptr;
    EXPECT_EQ((plat::FailGlobalNewAt(1), ::operator new(16, std::nothrow)), nullptr);
    plat::FailGlobalNewAt(1);
    try {
        void* volatile block = ::operator new(16);
        ADD_FAILURE() << "got " << block;
    } catch (const std::bad_alloc& e) {
        EXPECT_STREQ(e.what(), "bad allocation");
    }
    gPreviousNewHandler = Handler;
    for (int answer : {1, 0}) {
        gHandlerCalls = 0;
        gHandlerAnswer = answer;
        plat::FailGlobalNewAt(1);
        void* volatile block = ::operator new(24, std::nothrow);
        EXPECT_EQ(std::make_tuple(block, gHandlerCalls, gHandlerSize),
                  std::make_tuple(nullptr, 1, size_t(24)));
    }
    gHandlerAnswer = 1;
    EXPECT_EQ(MXNewHandler(8), 1);  // what the runtime sees when it registered the handler
    gPreviousNewHandler = saved;
    plat::ResetFaults();
}

}  // namespace
