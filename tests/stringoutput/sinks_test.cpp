#include <gtest/gtest.h>

#include <memory>

#include "mg/mxexcept.h"
#include "mg/stringoutput.h"
#include "platform/faults.h"
#include "support/host_rules.h"
#include "support/run_tool.h"
#include "support/scoped_variable.h"

namespace {

// Collects what reaches the debugger channel.
struct DebuggerText {
    DebuggerText() { plat::CaptureDebuggerOutput(Sink, this); }
    ~DebuggerText() { plat::CaptureDebuggerOutput(nullptr, nullptr); }
    static void Sink(const char* text, void* to) { static_cast<DebuggerText*>(to)->text += text; }
    std::string text;
};

// A sink that prints into itself from inside its output: the nested call is dropped and
// gives the count before the outer call ends.
struct SelfPrinting : FormattingStringOutput {
    void Output(const char* format, va_list args) override {
        text.append(buffer, static_cast<size_t>(FormatInto(buffer, kOutputLimit, format, args)));
        nested = Printf("lost");
    }
    int32_t nested = -1;
    std::string text;
    char buffer[kBufferSize];
};

// Each call is counted, cut at 512 characters, and formatted by the engine (its "\n" is
// CR LF). A tee forwards to both of its sinks and gives the second one's count.
TEST(FormattingSink, CountsCutsDropsNestedCallsAndTees) {
    SelfPrinting self;
    const int32_t first = self.Printf("one %ld", 1), firstNested = self.nested,
                  second = self.Printf("two");
    EXPECT_EQ(std::make_tuple(first, firstNested, second, self.nested, self.text),
              std::make_tuple(1, 0, 2, 1, std::string("one 1two")));
    DebuggerText channel;
    std::unique_ptr<StringOutput> out(MakeDebuggerOutput());
    EXPECT_TRUE(out->Printf("%s", std::string(600, 'x').c_str()) == 1 && out->Printf("a\\nb") == 2);
    EXPECT_EQ(channel.text, std::string(512, 'x') + "a\r\nb");
    StdErrStringOutput err;
    std::unique_ptr<StringOutput> console(MakeConsoleOutput());
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    err.Printf("%ld-%s", 42, "e");
    console->Printf("%x", 255);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), ConsoleTextInStandardOutput("FF"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "42-e");
    DebuggerStringOutput a, b;
    b.Printf("b's first");
    for (const auto& [first, second, result, texts] :
         {std::tuple<StringOutput*, StringOutput*, int32_t, const char*>{&a, &b, 2, "7,7,"},
          {&a, nullptr, 2, "7,"},
          {nullptr, &b, 3, "7,"},
          {nullptr, nullptr, 0, ""}}) {
        channel.text.clear();
        TeeStringOutput tee(first, second);
        tee.Open(1);
        EXPECT_TRUE(tee.Printf("%ld,", 7) == result && channel.text == texts);
    }
}

// Mode 0 truncates, every other mode appends; a sink that isn't open (no name, a name that
// can't be opened, or never opened) writes nothing but still counts.
TEST(FileSink, TruncatesOrAppendsByModeAndStaysSilentWhenNotOpen) {
    TempDir dir;
    const std::string path = (dir.path / "sink.txt").string();
    const OutputFileName name(kOutputNameAsGiven, path.c_str(), 0);
    for (const auto& [mode, text, file] : {std::tuple{0, "first", "first"},
                                           {1, "+one", "first+one"},
                                           {2, "+two", "first+one+two"},
                                           {0, "again", "again"},
                                           {5, "+five", "again+five"}}) {
        std::unique_ptr<StringOutput> sink(MakeFileOutput(&name));
        sink->Open(mode);
        sink->Printf("%s", text);
        sink.reset();
        EXPECT_EQ(SlurpFile(path), file) << "mode " << mode;
    }
    const std::string missing = (dir.path / "no_such_directory" / "x.txt").string();
    const OutputFileName unreachable(kOutputNameAsGiven, missing.c_str(), 0), unopened(1, "u", 0);
    for (const auto& [outputName, open] : {std::pair<const OutputName*, bool>{&unreachable, true},
                                           {nullptr, true},
                                           {&unopened, false}}) {
        FileStringOutput sink(outputName);
        if (open) sink.Open(0);
        EXPECT_EQ((std::vector<int32_t>{sink.Printf("a"), sink.Printf("b")}),
                  (std::vector<int32_t>{1, 2}));
    }
    EXPECT_FALSE(std::filesystem::exists(missing) || std::filesystem::exists("u"));
}

// Names by kind, clones alike, and the limits of each kind with their texts.
TEST(OutputFileName, NamesByKindAndTheirLimits) {
    char buffer[OutputFileName::kNameSize];
    ASSERT_GT(plat::TempDirectory(buffer, sizeof buffer), 0);
    const std::string temp = buffer;
    const std::string program = ThisProgram().parent_path().string() + plat::DirectorySeparator();
    // Room behind the temporary directory: its length + n + 2 may be 289.
    const int32_t room = 289 - 2 - static_cast<int32_t>(temp.size());
    const std::string n284(284, 'n'), n285(285, 'n'), n288(288, 'n'), n289(289, 'n'),
        fits(room, 'n'), over(room + 1, 'n'), beside(288 - program.size(), 'n');
    // Kind, name (none when empty), suffix, and the name or the error and detail of the exception.
    const std::tuple<int32_t, std::string, uint8_t, std::string> rows[] = {
        {0, "log", 0, temp + "log"},        {3, "log", 0, temp + "log"},
        {0, "log", 1, temp + "log.txt"},    {1, "log", 0, "log"},
        {-5, "log", 1, "log.txt"},          {2, "log", 0, program + "log"},
        {2, "log", 1, program + "log.txt"}, {1, n288, 0, n288},
        {1, n289, 0, "7 Path too long"},    {1, n288, 1, "7 GetModuleFileName failed"},
        {1, n284, 1, n284 + ".txt"},        {1, n285, 1, "7 GetModuleFileName failed"},
        {0, fits, 0, temp + fits},          {0, over, 0, "7 Path too long"},
        {3, over, 0, "7 Path too long"},    {0, "", 0, "1 inFilename is NULL"},
        {2, beside, 0, program + beside}};
    for (const auto& [kind, given, suffix, expected] : rows) {
        const char* text = given.empty() ? nullptr : given.c_str();
        SCOPED_TRACE(testing::Message() << "kind " << kind << " length " << given.size());
        std::string got;
        bool threw = false;
        try {
            const OutputFileName name(kind, text, suffix);
            std::unique_ptr<OutputName> clone(name.Clone());
            EXPECT_STREQ(clone->GetName(), name.GetName());
            got = name.GetName();
        } catch (const MXExcept& e) {
            got = std::to_string(e.GetError()) + " " + e.GetDetail();
            threw = true;
        }
        EXPECT_EQ(got, expected);
        std::unique_ptr<OutputName> made(MakeOutputName(kind, text, suffix));
        EXPECT_EQ(made ? std::string(made->GetName()) : "", threw ? "" : got);
    }
    // A temporary directory too long for the name gives no name, never a bare one that would
    // land in the current directory.
    const ScopedVariable tmp(TempVariable(), "/" + std::string(300, 't'));
    EXPECT_EQ(std::unique_ptr<OutputName>(MakeOutputName(0, "log", 1)), nullptr);
}

TEST(Factories, GiveNullWhenMemoryFails) {
    const OutputFileName name(1, "x", 0);
    for (auto make : {+[](const OutputFileName*) -> void* { return MakeDebuggerOutput(); },
                      +[](const OutputFileName*) -> void* { return MakeOutputName(1, "x", 0); },
                      +[](const OutputFileName* n) -> void* { return n->Clone(); }}) {
        plat::FailGlobalNewAt(1);
        EXPECT_EQ(make(&name), nullptr);
    }
    plat::ResetFaults();
}

}  // namespace
