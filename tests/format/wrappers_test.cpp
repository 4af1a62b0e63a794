// The string forms around the engine (NUL-terminated, PStr, handle, LStr), its file and
// notification outputs, and path text, which need the memory manager.
#include <gtest/gtest.h>

#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>

#include "format/format_helpers.h"
#include "mg/filemgr.h"
#include "mg/format.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "platform/faults.h"
#include "support/memory_env.h"
#include "support/run_tool.h"

namespace {

using formattest::Format;

class FormatWrappers : public ::testing::Test {
  protected:
    void TearDown() override { plat::ResetFaults(); }
};

TEST_F(FormatWrappers, TerminatedAndPStr) {
    char buffer[32];
    EXPECT_EQ(StrFormat(buffer, "%s=%d", "x", 12), 4);
    EXPECT_STREQ(buffer, "x=12");
    EXPECT_EQ(StrFormat(nullptr, "%5d\\n", 1), 7);

    uint8_t result[256];
    EXPECT_EQ(StrFormatP(result, "%300d", 1), 255);
    EXPECT_EQ(result[0], 255);
    EXPECT_EQ(result[255], ' ');
    const uint8_t pformat[] = {4, '%', '0', '3', 'x'};
    EXPECT_EQ(StrFormatPP(result, pformat, 10), 3);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(result + 1), result[0]), "00A");
    EXPECT_EQ(StrFormatFromP(buffer, pformat, 10), 3);
    EXPECT_STREQ(buffer, "00A");
}

TEST_F(FormatWrappers, HandleNewAndGiven) {
    Handle h = StrFormatHandle(nullptr, "%s-%d", "abc", 42);
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(MemHandleSize(h), 7);
    EXPECT_STREQ(reinterpret_cast<char*>(*h), "abc-42");

    Handle same = StrFormatHandle(h, "%d", 5);
    EXPECT_EQ(same, h);
    EXPECT_EQ(MemHandleSize(h), 2);
    EXPECT_STREQ(reinterpret_cast<char*>(*h), "5");

    // A failed resize gives the handle back untouched.
    plat::FailAllocationAt(1);
    EXPECT_EQ(StrFormatHandle(h, "%400s", "long"), h);
    plat::ResetFaults();
    EXPECT_EQ(MemHandleSize(h), 2);
    EXPECT_STREQ(reinterpret_cast<char*>(*h), "5");
    MemDisposeHandle(h);

    plat::FailAllocationAt(1);
    EXPECT_EQ(StrFormatHandle(nullptr, "%d", 1), nullptr);
}

std::string LText(LStrHandle h) {
    return std::string(reinterpret_cast<char*>((*h)->text), static_cast<size_t>((*h)->count));
}

TEST_F(FormatWrappers, LStrSetAndAppend) {
    LStrHandle h = nullptr;
    ASSERT_EQ(StrFormatSetLStr(&h, "%s:%d", "n", 1), MgNoError);
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(LText(h), "n:1");
    EXPECT_EQ(MemHandleSize(reinterpret_cast<Handle>(h)), 4 + 3);

    EXPECT_EQ(StrFormatAppendLStr(h, "+%x\\n", 255), MgNoError);
    EXPECT_EQ(LText(h), "n:1+FF\r\n");
    EXPECT_EQ(MemHandleSize(reinterpret_cast<Handle>(h)), 4 + 8);

    EXPECT_EQ(StrFormatSetLStr(&h, "%.2s", "xyz"), MgNoError);
    EXPECT_EQ(LText(h), "xy");

    plat::FailAllocationAt(1);
    EXPECT_EQ(StrFormatAppendLStr(h, "%500d", 1), MgNoMemory);
    plat::ResetFaults();
    EXPECT_EQ(LText(h), "xy");
    MemDisposeHandle(reinterpret_cast<Handle>(h));

    LStrHandle none = nullptr;
    plat::FailAllocationAt(1);
    EXPECT_EQ(StrFormatSetLStr(&none, "x"), MgNoMemory);
    EXPECT_EQ(none, nullptr);
}

TEST_F(FormatWrappers, Notify) {
    EXPECT_EQ(StrFormatNotify(3, "note %d", 9), 6);
    plat::FailAllocationAt(1);
    EXPECT_EQ(StrFormatNotify(3, "note %d", 9), 0);
}

class FormatFile : public FormatWrappers {
  protected:
    TempDir dir;
    FileRef ref = 0;
    std::string name = (dir.path / "out.txt").string();
    void SetUp() override {
        Path p = nullptr;
        ASSERT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(name.data()),
                              static_cast<int32_t>(name.size()), &p),
                  MgNoError);
        ASSERT_EQ(FMCreateOver(&ref, p, 0666, FMModeWrite, FMShareAll, 0), MgNoError);
        FPathRelease(p);
    }
    std::string Contents() {
        FMClose(ref);
        ref = 0;
        std::ifstream in(name, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }
    void TearDown() override {
        if (ref) FMClose(ref);
        FormatWrappers::TearDown();
    }
};

TEST_F(FormatFile, WritesTheText) {
    EXPECT_EQ(StrFormatFile(ref, "%s %d\\n", "line", 1), 8);
    EXPECT_EQ(StrFormatFileStatus(ref, "[%3d]", 2), MgNoError);
    EXPECT_EQ(StrFormatFileStatus(ref, ""), MgNoError);
    EXPECT_EQ(Contents(), "line 1\r\n[  2]");
}

TEST_F(FormatFile, FailedAllocationAndWrite) {
    plat::FailAllocationAt(1);
    EXPECT_EQ(StrFormatFile(ref, "%d", 1), -1);
    plat::FailAllocationAt(1);
    EXPECT_EQ(StrFormatFileStatus(ref, "%d", 1), MgNoMemory);

    plat::FailFileOpAt(plat::kFileWrite, 1, MgDiskFull);
    EXPECT_EQ(StrFormatFile(ref, "%d", 1), -1);
    plat::FailFileOpAt(plat::kFileWrite, 1, MgDiskFull);
    EXPECT_EQ(StrFormatFileStatus(ref, "%d", 1), MgDiskFull);
    EXPECT_EQ(StrFormatFile(0, "%d", 1), -1);
    EXPECT_EQ(Contents(), "");
}

// Path text of the host syntax: 252 bytes fit, 253 give the empty text.
TEST_F(FormatWrappers, PathText) {
    struct Case {
        std::string text;
        bool printed;
    };
    // "/" then the names, each behind its own slash. Built by appending: GCC 12 at -O3 warns
    // falsely (-Wrestrict) about "/" + std::string.
    auto absolute = [](std::initializer_list<std::string> names) {
        std::string text;
        for (const std::string& name : names) text.append(1, '/').append(name);
        return text;
    };
    const Case cases[] = {
        {"/a/bc", true},
        {absolute({std::string(251, 'n')}), true},
        {absolute({std::string(252, 'n')}), false},
        {absolute({std::string(200, 'a'), std::string(50, 'b')}), true},
        {absolute({std::string(200, 'a'), std::string(51, 'b')}), false},
    };
    for (const Case& c : cases) {
        Path p = nullptr;
        ASSERT_EQ(FTextToPath(reinterpret_cast<const uint8_t*>(c.text.data()),
                              static_cast<int32_t>(c.text.size()), &p),
                  MgNoError);
        EXPECT_EQ(Format("<%z>", p), "<" + (c.printed ? c.text : std::string()) + ">")
            << c.text.size();
        // No padding, and the limit alone cuts it.
        EXPECT_EQ(Format("%300.2z|", p), (c.printed ? c.text : std::string()) + "|");
        char buffer[4];
        EXPECT_EQ(StrFormatN(buffer, 3, "%z", p), c.printed ? 3 : 0);
        FPathRelease(p);
    }
    EXPECT_EQ(Format("<%z>", static_cast<Path>(nullptr)), "<>");
    Path corrupt = MemNewHandleClear(4);
    (*corrupt)[0] = 9;  // no kind of path: its text fails and prints as nothing
    EXPECT_EQ(Format("<%z>", corrupt), "<>");
    FPathRelease(corrupt);
}

}  // namespace
