// Start-up of the number layer: its handles and constants, the decimal mark, the seeds and
// the random sequence, and the version text.
#include <gtest/gtest.h>
#include <locale.h>
#include <math.h>

#include "mg/support.h"
#include "platform/faults.h"
#include "support/handles.h"
#include "support/pstr.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

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
// handles. Out of memory at any of the seven handles gives status 2.
TEST_F(Startup, HandlesConstantsRandomSequenceAndVersionText) {
    ASSERT_EQ(SupportInit(), MgNoError);
    auto bytes = [](void* h) { return Contents(reinterpret_cast<Handle>(h)); };
    // The path values are two 16-bit words; both hosts are little-endian.
    ExpectRows({Row(bytes(LStrCR), LStrBytes("\r")), Row(bytes(LStrLF), LStrBytes("\n")),
                Row(bytes(LStrCRLF), LStrBytes("\r\n")), Row(bytes(LStrTab), LStrBytes("\t")),
                Row(bytes(LStrEmpty), LStrBytes("")),
                Row(bytes(EmptyPathValue), std::string(4, '\0')),
                Row(bytes(NotAPathValue), std::string("\2\0\0\0", 4)), Row(AMTextLength, 2),
                Row(PMText, "PM"), Row(DoubleNaN, ~0ull), Row(FloatNegInfinity, 0xFF800000u),
                Row(ProcessId != 0, 1), Row(SystemDecimalMark, '.'),
                Row((SupportExit(), LStrCR == nullptr && EmptyPathValue == nullptr), 1)});
    for (int64_t n = 1; n <= 7; ++n) {
        EXPECT_EQ((plat::FailAllocationAt(n), SupportInit()), MgNoMemory) << n;
        SupportExit();
    }
    // The seed is the source's low 14 bits, 1234 for 0, and the default source gives 1. The
    // generator computed apart: exact integer steps, the sum of the fractions modulo 1.
    static int32_t source;
    const int32_t sources[][2] = {{0, 1}, {3 * 16384, 1234}, {16384 + 5, 5}};  // and the seed
    for (const auto& [s, seed] : sources) {
        source = s;
        SetSeedSource(s ? +[] { return source; } : nullptr);
        RandomInitSeeds();
        long long a = seed, b = a * 8191 % 16384, c = b * 8191 % 16384;
        for (int i = 0; i < 300; ++i) {
            a = a * 171 % 30269, b = b * 172 % 30307, c = c * 170 % 30323;
            const long double sum =
                (long double)a / 30269 + (long double)b / 30307 + (long double)c / 30323;
            double got = -1;
            ASSERT_EQ(RandomUnit(&got), &got);
            ASSERT_NEAR(got, (double)(sum - floorl(sum)), 1e-15) << s << " " << i;
        }
    }
    // clang-format off
    const struct { uint32_t version; const char* text; } cases[] = {
        {0x01234056, "1.2.3a56"}, {0x06100000, "6.1"}, {0x12300000, "12.3"}, {0x08502001, "8.5d1"},
        {0x08506010, "8.5b10"}, {0x08508099, "8.5"}, {0x08504000, "8.5a"}, {0x00000000, "0.0"}};
    // clang-format on
    uint8_t out[256];
    for (const auto& c : cases)
        EXPECT_TRUE(VersionText(c.version, out) == out && P::Text(out) == c.text)
            << std::hex << c.version << " " << P::Text(out);
}

}  // namespace
