// Start-up of the number layer: its handles and constants, the decimal mark, the seeds and
// the random sequence, and the version text.
#include <gtest/gtest.h>
#include <locale.h>
#include <math.h>
#include <string.h>

#include <string>

#include "mg/memory.h"
#include "mg/support.h"
#include "platform/faults.h"

namespace {

class Startup : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { InitMemoryManager(); }
    void TearDown() override {
        // Start-up hands number and time formatting to the user's locale; the other suites
        // compare with the C library's text in the C locale.
        setlocale(LC_NUMERIC, "C");
        setlocale(LC_TIME, "C");
        plat::ResetFaults();
        SupportExit();
        SetSeedSource(nullptr);
    }
};

std::string LStrText(LStrHandle h) {
    return std::string(reinterpret_cast<const char*>((*h)->text), (*h)->count);
}

TEST_F(Startup, FillsHandlesPathsAndConstants) {
    ASSERT_EQ(SupportInit(), MgNoError);
    EXPECT_EQ(LStrText(LStrCR), "\r");
    EXPECT_EQ(LStrText(LStrLF), "\n");
    EXPECT_EQ(LStrText(LStrCRLF), "\r\n");
    EXPECT_EQ(LStrText(LStrTab), "\t");
    EXPECT_EQ(LStrText(LStrEmpty), "");
    EXPECT_EQ(MemHandleSize(reinterpret_cast<Handle>(LStrCRLF)), 6);
    EXPECT_EQ(MemHandleSize(reinterpret_cast<Handle>(LStrEmpty)), 4);
    int16_t fields[2];
    memcpy(fields, *EmptyPathValue, 4);
    EXPECT_EQ(fields[0], 0);
    EXPECT_EQ(fields[1], 0);
    memcpy(fields, *NotAPathValue, 4);
    EXPECT_EQ(fields[0], 2);
    EXPECT_EQ(fields[1], 0);
    EXPECT_EQ(AMTextLength, 2);
    EXPECT_STREQ(PMText, "PM");
    EXPECT_EQ(DoubleNaN, ~0ull);
    EXPECT_EQ(FloatNegInfinity, 0xFF800000u);
    EXPECT_NE(ProcessId, 0);
    // The host stub has no answer for the locale switch: the mark is a point.
    EXPECT_EQ(SystemDecimalMark, '.');
    SupportExit();
    EXPECT_EQ(LStrCR, nullptr);
    EXPECT_EQ(EmptyPathValue, nullptr);
}

TEST_F(Startup, OutOfMemoryAtEachHandleGivesStatus2) {
    for (int64_t n = 1;; ++n) {
        SupportExit();
        plat::ResetFaults();
        plat::FailAllocationAt(n);
        MgStatus status = SupportInit();
        if (status == MgNoError) {
            EXPECT_GE(n, 8) << "seven handles need allocations";
            break;
        }
        EXPECT_EQ(status, MgNoMemory) << n;
    }
}

// The default seeds are pinned by the generator's sequence below.
TEST_F(Startup, SeedsFollowTheSource) {
    ASSERT_EQ(SupportInit(), MgNoError);
    SetSeedSource([] { return 3 * 16384; });
    RandomInitSeeds();
    EXPECT_EQ(RandomSeed[0], 1234);
    SetSeedSource([] { return 16384 + 5; });
    RandomInitSeeds();
    EXPECT_EQ(RandomSeed[0], 5);
}

// The generator computed apart: exact integer steps, and the sum of the three fractions
// taken modulo 1 by division.
TEST_F(Startup, RandomUnitMatchesAnIndependentGenerator) {
    ASSERT_EQ(SupportInit(), MgNoError);
    long long a = 1, b = 8191, c = 8191LL * 8191 % 16384;
    for (int i = 0; i < 1000; ++i) {
        a = a * 171 % 30269;
        b = b * 172 % 30307;
        c = c * 170 % 30323;
        long double sum = (long double)a / 30269 + (long double)b / 30307 + (long double)c / 30323;
        long double expected = sum - floorl(sum);
        double got = -1;
        EXPECT_EQ(RandomUnit(&got), &got);
        EXPECT_NEAR(got, (double)expected, 1e-15) << i;
        EXPECT_GE(got, 0.0);
        EXPECT_LT(got, 1.0);
    }
    // A fresh start repeats the sequence.
    double first, again;
    RandomInitSeeds();
    RandomUnit(&first);
    RandomInitSeeds();
    RandomUnit(&again);
    EXPECT_EQ(first, again);
}

TEST(VersionText, Forms) {
    const struct {
        uint32_t version;
        const char* text;
    } cases[] = {
        {0x01234056, "1.2.3a56"}, {0x06100000, "6.1"}, {0x12300000, "12.3"}, {0x08502001, "8.5d1"},
        {0x08506010, "8.5b10"},   {0x08508099, "8.5"}, {0x08504000, "8.5a"}, {0x00000000, "0.0"},
    };
    for (const auto& c : cases) {
        uint8_t out[256];
        EXPECT_EQ(VersionText(c.version, out), out);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(out) + 1, out[0]), c.text)
            << std::hex << c.version;
    }
}

}  // namespace
