#include "mg/mxexcept.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

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

std::string FirstFrameName(const StackTrace& trace) {
    auto decoder = trace.MakeDecoder();
    const FixedList<DecodedFrame> frames = decoder->Decode();
    return frames.Length() > 0 ? frames[0].name : "";
}

TEST(MXExcept, CutsTextsAndFormatsTheMessage) {
    const std::string d200(200, 'd'), f40(40, 'f');
    const struct {
        int32_t err;
        const char* detail;
        const char* file;
        int32_t line;
        std::string storedDetail, storedFile, message;
    } rows[] = {
        {7, "Path too long", "mgsource\\x.cpp", 12, "Path too long", "mgsource\\x.cpp",
         "MXExcept. Err=7, File=mgsource\\x.cpp, Line=12, Detail='Path too long'"},
        {-1, nullptr, nullptr, -3, "", "", "MXExcept. Err=-1, File=, Line=-3, Detail=''"},
        {2, d200.c_str(), f40.c_str(), 0, std::string(127, 'd'), std::string(31, 'f'),
         "MXExcept. Err=2, File=" + std::string(31, 'f') + ", Line=0, Detail='" +
             std::string(127, 'd') + "'"},
        // The engine's escapes are not applied to the arguments.
        {0, "a\\n%d", "", 1, "a\\n%d", "", "MXExcept. Err=0, File=, Line=1, Detail='a\\n%d'"},
    };
    for (const auto& r : rows) {
        const MXExcept e(r.err, r.detail, r.file, r.line);
        EXPECT_EQ(e.GetError(), r.err);
        EXPECT_EQ(e.GetDetail(), r.storedDetail);
        EXPECT_EQ(e.GetFile(), r.storedFile);
        EXPECT_EQ(e.GetLine(), r.line);
        EXPECT_EQ(e.what(), r.message);
    }
}

TEST(MXExcept, TraceStartsAtTheConstructingCode) {
    const MXExcept e = thrower::Make(3);
    EXPECT_GT(e.GetStackTrace().Count(), 1);
    EXPECT_EQ(FirstFrameName(e.GetStackTrace()),
              "test_mxexcept " + TracedFunctionName("thrower::Make", "int"));
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

TEST(ConvertCurrentException, EachArm) {
    const struct {
        MXExcept converted;
        int32_t err;
        const char* detail;
    } rows[] = {
        {Converted(std::bad_alloc()), 2, "converted from std::bad_alloc"},
        {Converted(17), 42, "caught unknown exception"},
        {Converted(std::runtime_error("x")), 42, "caught unknown exception"},
    };
    for (const auto& r : rows) {
        EXPECT_EQ(r.converted.GetError(), r.err);
        EXPECT_STREQ(r.converted.GetDetail(), r.detail);
        EXPECT_STREQ(r.converted.GetFile(), "mgsource\\mxexcept\\convert.cpp");
    }

    const MXExcept original = thrower::Make(5);
    const MXExcept copy = Converted(original);
    EXPECT_EQ(copy.GetError(), 5);
    EXPECT_STREQ(copy.GetFile(), "thrower.cpp");
    EXPECT_EQ(copy.GetLine(), 7);
    EXPECT_STREQ(copy.GetDetail(), "made");
    EXPECT_STREQ(copy.what(), original.what());
    const StackTrace& a = copy.GetStackTrace();
    const StackTrace& b = original.GetStackTrace();
    ASSERT_EQ(a.Count(), b.Count());
    EXPECT_EQ(memcmp(a.Addresses(), b.Addresses(), sizeof(StackAddress) * a.Count()), 0);

    try {
        Converted(SEH_Exception(0xC0000005u));
        ADD_FAILURE() << "a hardware fault was converted";
    } catch (const SEH_Exception& e) {
        EXPECT_EQ(e.GetCode(), 0xC0000005u);
    }
}

TEST(SEHTranslator, TraceStartsAtTheFault) {
    const struct {
        bool given;
        SEHFaultInfo info;
        int32_t count;
    } rows[] = {
        {false, {}, 0},
        {true, {false, 16, 0xABC}, 0},
        // A frame pointer into memory that is never mapped: the fault's address alone.
        {true, {true, 16, 0xABC}, 1},
    };
    for (const auto& r : rows) {
        try {
            SEHTranslator(0xC0000094u, r.given ? &r.info : nullptr);
        } catch (const SEH_Exception& e) {
            EXPECT_EQ(e.GetCode(), 0xC0000094u);
            ASSERT_EQ(e.GetStackTrace().Count(), r.count);
            if (r.count) {
                EXPECT_EQ(e.GetStackTrace().Addresses()[0], 0xABCu);
            }
        }
    }
    // POSIX offers no translator, nor does MinGW-w64's default runtime.
    EXPECT_EQ(InstallSEHTranslator(), 0);
}

int gHandlerCalls = 0;
size_t gHandlerSize = 0;
int gHandlerAnswer = 0;
int Handler(size_t size) {
    ++gHandlerCalls;
    gHandlerSize = size;
    return gHandlerAnswer;
}

class GlobalNew : public testing::Test {
  protected:
    void SetUp() override { saved = gPreviousNewHandler; }
    void TearDown() override {
        gPreviousNewHandler = saved;
        plat::ResetFaults();
    }
    int (*saved)(size_t) = nullptr;
};

TEST_F(GlobalNew, ZeroBytesGiveABlock) {
    void* a = ::operator new(0);
    void* b = ::operator new(0);
    EXPECT_NE(a, nullptr);
    EXPECT_NE(a, b);
    ::operator delete(a);
    ::operator delete(b);
    ::operator delete(nullptr);
}

TEST_F(GlobalNew, FailuresGoThroughTheHandlerOnce) {
    gPreviousNewHandler = nullptr;
    plat::FailGlobalNewAt(1);
    EXPECT_EQ(::operator new(16, std::nothrow), nullptr);
    plat::FailGlobalNewAt(1);
    try {
        void* volatile block = ::operator new(16);
        ADD_FAILURE() << "got " << block;
    } catch (const std::bad_alloc& e) {
        EXPECT_STREQ(e.what(), "bad allocation");
    }

    // The replaced handler is asked once; its yes gives the null pointer, not a retry.
    gPreviousNewHandler = Handler;
    for (int answer : {1, 0}) {
        gHandlerCalls = 0;
        gHandlerAnswer = answer;
        plat::FailGlobalNewAt(1);
        void* volatile block = ::operator new(24, std::nothrow);
        EXPECT_EQ(block, nullptr);
        EXPECT_EQ(gHandlerCalls, 1);
        EXPECT_EQ(gHandlerSize, 24u);
    }
    gHandlerAnswer = 1;
    EXPECT_EQ(MXNewHandler(8), 1);  // what the runtime sees when it registered the handler
}

}  // namespace
