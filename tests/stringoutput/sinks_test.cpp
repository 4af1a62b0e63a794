#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "mg/mxexcept.h"
#include "mg/stringoutput.h"
#include "platform/faults.h"
#include "platform/platform.h"
#include "support/host_rules.h"
#include "support/scoped_variable.h"

namespace {

// Collects what reaches the debugger channel.
struct DebuggerText {
    DebuggerText() { plat::CaptureDebuggerOutput(Sink, this); }
    ~DebuggerText() { plat::CaptureDebuggerOutput(nullptr, nullptr); }
    static void Sink(const char* text, void* self) {
        static_cast<DebuggerText*>(self)->texts.push_back(text);
    }
    std::vector<std::string> texts;
};

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

// A sink that prints into itself from inside its output.
struct SelfPrinting : FormattingStringOutput {
    void Output(const char* format, va_list args) override {
        text.append(buffer, static_cast<size_t>(FormatInto(buffer, kOutputLimit, format, args)));
        nested = Printf("lost");
    }
    int32_t nested = -1;
    std::string text;
    char buffer[kBufferSize];
};

TEST(FormattingSink, CountsCallsAndDropsNestedOnes) {
    SelfPrinting sink;
    EXPECT_EQ(sink.Printf("one %ld", 1), 1);
    EXPECT_EQ(sink.nested, 0);  // the count before the outer call ends
    EXPECT_EQ(sink.Printf("two"), 2);
    EXPECT_EQ(sink.nested, 1);
    EXPECT_EQ(sink.text, "one 1two");
}

TEST(FormattingSink, CutsEachCallAt512Characters) {
    DebuggerText channel;
    std::unique_ptr<StringOutput> sink(MakeDebuggerOutput());
    ASSERT_NE(sink, nullptr);
    const std::string text(600, 'x');
    EXPECT_EQ(sink->Printf("%s", text.c_str()), 1);
    EXPECT_EQ(sink->Printf("a\\nb"), 2);  // the engine's escape: CR LF
    ASSERT_EQ(channel.texts.size(), 2u);
    EXPECT_EQ(channel.texts[0], std::string(512, 'x'));
    EXPECT_EQ(channel.texts[1], "a\r\nb");
}

TEST(FormattingSink, StandardStreams) {
    StdErrStringOutput err;
    std::unique_ptr<StringOutput> console(MakeConsoleOutput());
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    err.Printf("%ld-%s", 42, "e");
    console->Printf("%x", 255);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), ConsoleTextInStandardOutput("FF"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "42-e");
}

class FileSink : public testing::Test {
  protected:
    void SetUp() override {
        path = testing::TempDir() + "sink_" +
               testing::UnitTest::GetInstance()->current_test_info()->name() + ".txt";
        std::remove(path.c_str());
        name = std::make_unique<OutputFileName>(kOutputNameAsGiven, path.c_str(), 0);
    }
    void TearDown() override { std::remove(path.c_str()); }

    // Opens the file in `mode`, writes `text`, and closes it.
    void Write(int32_t mode, const char* text) {
        std::unique_ptr<StringOutput> sink(MakeFileOutput(name.get()));
        ASSERT_NE(sink, nullptr);
        sink->Open(mode);
        sink->Printf("%s", text);
    }

    std::string path;
    std::unique_ptr<OutputFileName> name;
};

TEST_F(FileSink, TruncatesOrAppendsByMode) {
    const struct {
        int32_t mode;
        const char* text;
        const char* file;
    } rows[] = {
        {0, "first", "first"}, {1, "+one", "first+one"},   {2, "+two", "first+one+two"},
        {0, "again", "again"}, {5, "+five", "again+five"},
    };
    for (const auto& r : rows) {
        Write(r.mode, r.text);
        EXPECT_EQ(ReadFile(path), r.file) << "mode " << r.mode;
    }
}

TEST_F(FileSink, StaysSilentWhenNotOpen) {
    const std::string missing = testing::TempDir() + "no_such_directory/x.txt";
    const OutputFileName unreachable(kOutputNameAsGiven, missing.c_str(), 0);
    const struct {
        const OutputName* name;
        bool open;
    } rows[] = {{&unreachable, true}, {nullptr, true}, {name.get(), false}};
    for (const auto& r : rows) {
        FileStringOutput sink(r.name);
        if (r.open) sink.Open(0);
        EXPECT_EQ(sink.Printf("a"), 1);
        EXPECT_EQ(sink.Printf("b"), 2);
    }
    EXPECT_FALSE(std::ifstream(missing).good());
    EXPECT_FALSE(std::ifstream(path).good());
}

TEST(TeeSink, ForwardsToBothAndGivesTheLastResult) {
    DebuggerText channel;
    DebuggerStringOutput a, b;
    b.Printf("b's first");
    const struct {
        StringOutput* first;
        StringOutput* second;
        int32_t result;  // a's and b's counts go up by one a call
        const char* texts;
    } rows[] = {{&a, &b, 2, "7,7,"},
                {&a, nullptr, 2, "7,"},
                {nullptr, &b, 3, "7,"},
                {nullptr, nullptr, 0, ""}};
    for (const auto& r : rows) {
        channel.texts.clear();
        TeeStringOutput tee(r.first, r.second);
        tee.Open(1);
        EXPECT_EQ(tee.Printf("%ld,", 7), r.result);
        std::string texts;
        for (const auto& t : channel.texts) texts += t;
        EXPECT_EQ(texts, r.texts);
    }
}

std::string TempDirectory() {
    char dir[OutputFileName::kNameSize];
    plat::TempDirectory(dir, sizeof dir);
    return dir;
}

std::string ProgramDirectory() {
    char path[4096];
    plat::ModuleFileName(path, sizeof path);
    std::string text = path;
    return text.substr(0, text.rfind(plat::DirectorySeparator()) + 1);
}

TEST(OutputFileName, BuildsNamesByKind) {
    const std::string temp = TempDirectory();
    ASSERT_FALSE(temp.empty());
    EXPECT_EQ(temp.back(), plat::DirectorySeparator());
    const struct {
        int32_t kind;
        uint8_t suffix;
        std::string expected;
    } rows[] = {
        {0, 0, temp + "log"},
        {3, 0, temp + "log"},
        {0, 1, temp + "log.txt"},
        {1, 0, "log"},
        {-5, 1, "log.txt"},
        {2, 0, ProgramDirectory() + "log"},
        {2, 1, ProgramDirectory() + "log.txt"},
    };
    for (const auto& r : rows) {
        const OutputFileName name(r.kind, "log", r.suffix);
        EXPECT_EQ(name.GetName(), r.expected) << "kind " << r.kind;
        std::unique_ptr<OutputName> clone(name.Clone());
        ASSERT_NE(clone, nullptr);
        EXPECT_EQ(clone->GetName(), r.expected);
    }
}

TEST(OutputFileName, LimitsAndTheirTexts) {
    // Room behind the temporary directory: its length + n + 2 may be 289.
    const int32_t tempRoom = 289 - 2 - static_cast<int32_t>(TempDirectory().size());
    const struct {
        int32_t kind;
        int32_t length;
        uint8_t suffix;
        const char* error;  // null: accepted
    } rows[] = {
        {1, 288, 0, nullptr},
        {1, 289, 0, "Path too long"},
        {1, 288, 1, "GetModuleFileName failed"},
        {1, 284, 1, nullptr},
        {1, 285, 1, "GetModuleFileName failed"},
        {0, tempRoom, 0, nullptr},
        {0, tempRoom + 1, 0, "Path too long"},
        {3, tempRoom + 1, 0, "Path too long"},
    };
    for (const auto& r : rows) {
        const std::string text(static_cast<size_t>(r.length), 'n');
        SCOPED_TRACE(testing::Message() << "kind " << r.kind << " length " << r.length);
        try {
            const OutputFileName name(r.kind, text.c_str(), r.suffix);
            EXPECT_EQ(r.error, nullptr);
            EXPECT_LT(strlen(name.GetName()), 289u);
        } catch (const MXExcept& e) {
            ASSERT_NE(r.error, nullptr);
            EXPECT_EQ(e.GetError(), 7);
            EXPECT_STREQ(e.GetDetail(), r.error);
        }
        std::unique_ptr<OutputName> made(MakeOutputName(r.kind, text.c_str(), r.suffix));
        EXPECT_EQ(made == nullptr, r.error != nullptr);
    }
    try {
        OutputFileName name(0, nullptr, 0);
        ADD_FAILURE() << "a null name was taken";
    } catch (const MXExcept& e) {
        EXPECT_EQ(e.GetError(), 1);
        EXPECT_STREQ(e.GetDetail(), "inFilename is NULL");
    }
    EXPECT_EQ(MakeOutputName(1, nullptr, 0), nullptr);
}

TEST(Factories, GiveNullWhenMemoryFails) {
    plat::FailGlobalNewAt(1);
    EXPECT_EQ(MakeDebuggerOutput(), nullptr);
    plat::FailGlobalNewAt(1);
    EXPECT_EQ(MakeOutputName(1, "x", 0), nullptr);
    const OutputFileName name(1, "x", 0);
    plat::FailGlobalNewAt(1);
    EXPECT_EQ(name.Clone(), nullptr);
    plat::ResetFaults();
}

}  // namespace

namespace {

// A temporary directory too long for the name gives no name, never a bare one that would land
// in the current directory.
TEST(OutputFileName, TemporaryDirectoryTooLongGivesNoName) {
    const ScopedVariable tmp(TempVariable(), "/" + std::string(300, 't'));
    EXPECT_EQ(std::unique_ptr<OutputName>(MakeOutputName(kOutputInTempDirectory, "log", 1)),
              nullptr);
}

}  // namespace
