#include <gtest/gtest.h>

#include <string>

#include "mg/memory.h"
#include "mg/mxexcept.h"
#include "mg/stringoutput.h"
#include "platform/faults.h"
#include "support/memory_env.h"

namespace {

std::string TextOf(const LStrOutput& out) {
    const LStr* l = *out.Text();
    return std::string(reinterpret_cast<const char*>(l->text), static_cast<size_t>(l->count));
}

int32_t ViaVPrintf(StringOutput& out, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int32_t r = out.VPrintf(format, args);
    va_end(args);
    return r;
}

TEST(LStrOutput, CollectsOnlyWhileEnabled) {
    LStrOutput out;
    EXPECT_EQ(out.Printf("ignored %ld", 1), 0);
    EXPECT_EQ(TextOf(out), "");
    out.SetEnabled(1);
    const std::string big(700, 'b');  // no 512 limit here
    EXPECT_EQ(out.Printf("%ld|%s|", 12, "ab"), 0);
    EXPECT_EQ(ViaVPrintf(out, "%x\\n", 255), 0);
    EXPECT_EQ(out.Printf("%s", big.c_str()), 0);
    out.SetEnabled(0);
    out.Printf("dropped");
    EXPECT_EQ(TextOf(out), "12|ab|FF\r\n" + big);
}

TEST(LStrOutput, CopiesTakeTextAndSwitch) {
    LStrOutput a;
    a.SetEnabled(1);
    a.Printf("abc");
    LStrOutput b(a);
    b.Printf("d");
    EXPECT_EQ(TextOf(a), "abc");
    EXPECT_EQ(TextOf(b), "abcd");

    LStrOutput c;
    c = b;
    LStrOutput& same = c;
    c = same;  // self-assignment keeps the text
    EXPECT_EQ(c.IsEnabled(), 1);
    c.Printf("e");
    EXPECT_EQ(TextOf(c), "abcde");
    EXPECT_EQ(TextOf(b), "abcd");
}

TEST(LStrOutput, MemoryFailures) {
    LStrOutput out;
    out.SetEnabled(1);
    out.Printf("kept");
    plat::FailAllocationAt(1);  // the block can't grow: the text is lost without a word
    out.Printf("%s", std::string(500, 'x').c_str());
    plat::ResetFaults();
    EXPECT_EQ(TextOf(out), "kept");

    // Construction, copy and assignment throw when their block can't be had.
    for (int form = 0; form < 3; ++form) {
        LStrOutput target;
        plat::FailAllocationAt(1);
        try {
            if (form == 2) {
                target = out;
            } else {
                LStrOutput none = form ? LStrOutput(out) : LStrOutput();
            }
            ADD_FAILURE() << "made without memory";
        } catch (const MXExcept& e) {
            EXPECT_EQ(e.GetError(), 2);
            EXPECT_STREQ(e.GetDetail(), "LStrOutput could not allocate LStr Handle");
        }
        plat::ResetFaults();
    }
}

}  // namespace
