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
#include "support/handles.h"
#include "support/pstr.h"
#include "support/rows.h"

namespace {

using mgtest::ExpectRows;
using mgtest::Row;

class Startup : public ::testing::Test {
  protected:
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

// The host stub has no answer for the locale switch: the mark is a point. Exit clears the
// handles.
TEST_F(Startup, FillsHandlesPathsAndConstants) {
    ASSERT_EQ(SupportInit(), MgNoError);
    auto bytes = [](void* h) { return mgtest::Contents(reinterpret_cast<Handle>(h)); };
    const int16_t emptyPath[2] = {0, 0}, notAPath[2] = {2, 0};
    ExpectRows(
        {Row(bytes(LStrCR), mgtest::LStrBytes("\r")), Row(bytes(LStrLF), mgtest::LStrBytes("\n")),
         Row(bytes(LStrCRLF), mgtest::LStrBytes("\r\n")),
         Row(bytes(LStrTab), mgtest::LStrBytes("\t")), Row(bytes(LStrEmpty), mgtest::LStrBytes("")),
         Row(bytes(EmptyPathValue), std::string(reinterpret_cast<const char*>(emptyPath), 4)),
         Row(bytes(NotAPathValue), std::string(reinterpret_cast<const char*>(notAPath), 4)),
         Row(AMTextLength, 2), Row(PMText, "PM"), Row(DoubleNaN, ~0ull),
         Row(FloatNegInfinity, 0xFF800000u), Row(ProcessId != 0, 1), Row(SystemDecimalMark, '.'),
         Row((SupportExit(), LStrCR == nullptr && EmptyPathValue == nullptr), 1)});
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
        EXPECT_TRUE(got >= 0 && got < 1) << got;
    }
    // A fresh start repeats the sequence.
    double first, again;
    RandomUnit((RandomInitSeeds(), &first));
    RandomUnit((RandomInitSeeds(), &again));
    EXPECT_EQ(first, again);
}

TEST(VersionText, Forms) {
    // clang-format off
    const struct { uint32_t version; const char* text; } cases[] = {
        {0x01234056, "1.2.3a56"}, {0x06100000, "6.1"}, {0x12300000, "12.3"}, {0x08502001, "8.5d1"},
        {0x08506010, "8.5b10"}, {0x08508099, "8.5"}, {0x08504000, "8.5a"}, {0x00000000, "0.0"}};
    // clang-format on
    for (const auto& c : cases) {
        uint8_t out[256];
        EXPECT_EQ(VersionText(c.version, out), out);
        EXPECT_EQ(mgtest::P::Text(out), c.text) << std::hex << c.version;
    }
}

}  // namespace
