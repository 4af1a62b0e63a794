// The string forms around the engine (NUL-terminated, PStr, handle, LStr), its file and
// notification outputs, and path text, which need the memory manager.
#include <gtest/gtest.h>

#include <string>

#include "format/format_helpers.h"
#include "mg/filemgr.h"
#include "mg/format.h"
#include "mg/path.h"
#include "platform/faults.h"
#include "support/handles.h"
#include "support/rows.h"
#include "support/run_tool.h"

namespace {

using formattest::Format;
using namespace mgtest;

class FormatWrappers : public ::testing::Test {
  protected:
    void TearDown() override { plat::ResetFaults(); }
};

// The PStr form cuts at 255; a failed resize gives the handle back untouched; a failed
// allocation gives no handle and no notification.
TEST_F(FormatWrappers, TerminatedPStrHandleAndNotify) {
    char buffer[32];
    uint8_t result[256];
    const uint8_t pformat[] = {4, '%', '0', '3', 'x'};
    Handle h = StrFormatHandle(nullptr, "%s-%d", "abc", 42);
    ExpectRows(
        {Row(StrFormat(buffer, "%s=%d", "x", 12), 4), Row(buffer, "x=12"),
         Row(StrFormat(nullptr, "%5d\\n", 1), 7), Row(StrFormatP(result, "%300d", 1), 255),
         Row(result[0], 255), Row(result[255], ' '), Row(StrFormatPP(result, pformat, 10), 3),
         Row(std::string(reinterpret_cast<char*>(result + 1), result[0]), "00A"),
         Row(StrFormatFromP(buffer, pformat, 10), 3), Row(buffer, "00A"),
         Row(mgtest::Contents(h), std::string("abc-42", 7)),
         Row(StrFormatHandle(h, "%d", 5) == h, 1), Row(mgtest::Contents(h), std::string("5", 2)),
         Row((plat::FailAllocationAt(1), StrFormatHandle(h, "%400s", "long")) == h, 1),
         Row(mgtest::Contents(h), std::string("5", 2)),
         Row((plat::FailAllocationAt(1), StrFormatHandle(nullptr, "%d", 1)) == nullptr, 1),
         Row(StrFormatNotify(3, "note %d", 9), 6),
         Row((plat::FailAllocationAt(1), StrFormatNotify(3, "note %d", 9)), 0)});
    MemDisposeHandle(h);
}

TEST_F(FormatWrappers, LStrSetAndAppend) {
    LStrHandle h = nullptr, none = nullptr;
    ExpectRows({Row(StrFormatSetLStr(&h, "%s:%d", "n", 1), MgNoError),
                Row(mgtest::Contents(reinterpret_cast<Handle>(h)), mgtest::LStrBytes("n:1")),
                Row(StrFormatAppendLStr(h, "+%x\\n", 255), MgNoError),
                Row(mgtest::Contents(reinterpret_cast<Handle>(h)), mgtest::LStrBytes("n:1+FF\r\n")),
                Row(StrFormatSetLStr(&h, "%.2s", "xyz"), MgNoError), Row(mgtest::LText(h), "xy"),
                Row((plat::FailAllocationAt(1), StrFormatAppendLStr(h, "%500d", 1)), MgNoMemory),
                Row(mgtest::LText(h), "xy"),
                Row((plat::FailAllocationAt(1), StrFormatSetLStr(&none, "x")), MgNoMemory),
                Row(none == nullptr, 1)});
    MemDisposeHandle(reinterpret_cast<Handle>(h));
}

// Lines into a file; a failed allocation or write (a full disk) adds nothing.
TEST_F(FormatWrappers, File) {
    TempDir dir;
    const std::string name = (dir.path / "out.txt").string();
    FileRef ref = 0;
    Path p = nullptr;
    ASSERT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(name.data()),
                          static_cast<int32_t>(name.size()), &p),
              MgNoError);
    ASSERT_EQ(FMCreateOver(&ref, p, 0666, FMModeWrite, FMShareAll, 0), MgNoError);
    FPathRelease(p);
    auto full = [] { plat::FailFileOpAt(plat::kFileWrite, 1, MgDiskFull); };
    ExpectRows({Row(StrFormatFile(ref, "%s %d\\n", "line", 1), 8),
                Row(StrFormatFileStatus(ref, "[%3d]", 2), MgNoError),
                Row(StrFormatFileStatus(ref, ""), MgNoError),
                Row((plat::FailAllocationAt(1), StrFormatFile(ref, "%d", 1)), -1),
                Row((plat::FailAllocationAt(1), StrFormatFileStatus(ref, "%d", 1)), MgNoMemory),
                Row((full(), StrFormatFile(ref, "%d", 1)), -1),
                Row((full(), StrFormatFileStatus(ref, "%d", 1)), MgDiskFull),
                Row(StrFormatFile(0, "%d", 1), -1)});
    FMClose(ref);
    EXPECT_EQ(SlurpFile(name), "line 1\r\n[  2]");
}

// Path text of the host syntax: 252 bytes fit, 253 give the empty text. No padding, and the
// limit alone cuts it.
TEST_F(FormatWrappers, PathText) {
    // Built by appending: GCC 12 at -O3 warns falsely (-Wrestrict) about "/" + std::string.
    const std::string a200 = std::string(1, '/').append(200, 'a');
    const std::pair<std::string, bool> cases[] = {
        {std::string(1, '/').append(251, 'n'), true},
        {std::string(1, '/').append(252, 'n'), false},
        {std::string(a200).append(1, '/').append(50, 'b'), true},
        {std::string(a200).append(1, '/').append(51, 'b'), false}};
    for (const auto& [text, printed] : cases) {
        Path p = nullptr;
        ASSERT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(text.data()),
                              static_cast<int32_t>(text.size()), &p),
                  MgNoError);
        char buffer[4];
        ExpectRows({Row(Format("<%z>", p), "<" + (printed ? text : "") + ">"),
                    Row(Format("%300.2z|", p), (printed ? text : "") + "|"),
                    Row(StrFormatN(buffer, 3, "%z", p), printed ? 3 : 0)});
        FPathRelease(p);
    }
    Path corrupt = MemNewHandleClear(4);
    (*corrupt)[0] = 9;  // no kind of path: its text fails and prints as nothing
    EXPECT_EQ(Format("<%z>|<%z>", static_cast<Path>(nullptr), corrupt), "<>|<>");
    FPathRelease(corrupt);
}

}  // namespace
