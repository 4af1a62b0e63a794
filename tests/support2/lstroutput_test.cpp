// The LStr sink: collects while enabled, copies take text and switch, memory failures.
#include <gtest/gtest.h>

#include <string>

#include "mg/mxexcept.h"
#include "mg/stringoutput.h"
#include "platform/faults.h"
#include "support/handles.h"
#include "support/rows.h"

namespace {

using namespace mgtest;

int32_t ViaVPrintf(StringOutput& out, const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int32_t r = out.VPrintf(format, args);
    va_end(args);
    return r;
}

TEST(LStrOutput, CollectsOnlyWhileEnabledAndCopies) {
    LStrOutput out;
    const std::string big(700, 'b'), text = "12|ab|FF\r\n" + big;  // no 512 limit here
    ExpectRows({Row(out.Printf("ignored %ld", 1), 0), Row(LText(*out.Text()), ""),
                Row((out.SetEnabled(1), out.Printf("%ld|%s|", 12, "ab")), 0),
                Row(ViaVPrintf(out, "%x\\n", 255), 0), Row(out.Printf("%s", big.c_str()), 0)});
    LStrOutput copy(out), assigned;
    out.SetEnabled(0);
    out.Printf("dropped");
    copy.Printf("d");
    assigned = copy;
    LStrOutput& same = assigned;
    assigned = same;  // self-assignment keeps the text
    EXPECT_EQ(assigned.IsEnabled(), 1);
    assigned.Printf("e");
    ExpectRows({Row(LText(*copy.Text()), text + "d"), Row(LText(*assigned.Text()), text + "de"),
                Row(LText(*out.Text()), text)});
}

// Text that can't get room is lost without a word; construction, copy and assignment throw
// when their block can't be had.
TEST(LStrOutput, MemoryFailures) {
    LStrOutput out;
    out.SetEnabled(1);
    out.Printf("kept");
    plat::FailAllocationAt(1);
    out.Printf("%s", std::string(500, 'x').c_str());
    plat::ResetFaults();
    EXPECT_EQ(LText(*out.Text()), "kept");
    for (int form = 0; form < 3; ++form) {
        LStrOutput target;
        plat::FailAllocationAt(1);
        try {
            form == 2 ? void(target = out) : void(form ? LStrOutput(out) : LStrOutput());
            ADD_FAILURE() << "made without memory";
        } catch (const MXExcept& e) {
            EXPECT_EQ(std::to_string(e.GetError()) + e.GetDetail(),
                      "2LStrOutput could not allocate LStr Handle");
        }
        plat::ResetFaults();
    }
}

}  // namespace
