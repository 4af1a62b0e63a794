// The command line read in-process: which lines pass, and what they leave in the options.
#include <gtest/gtest.h>

#include <tuple>

#include "mxsbutil/options.h"
#include "platform/platform.h"
#include "support/pstr.h"
#include "support/run_tool.h"

// Reads the words of `line` ('' is an empty argument). The options point into the arguments,
// so they are kept until the next read, as argv is.
static int32_t Read(const std::string& line) {
    static std::vector<std::string> kept;
    static std::vector<char*> argv;
    kept = Words("mxsbutil " + line);
    argv.clear();
    for (auto& a : kept) argv.push_back((a = a == "''" ? "" : a).data());
    argv.push_back(nullptr);
    return ReadArguments(static_cast<int>(kept.size()), argv.data());
}

// Statuses, and the type left where it matters; the packager's messages suite has the other
// lines that fail. An empty bare name leaves the name empty; the last -t wins; the type is
// checked before the directory; a value is never read as an option. The rows give the type
// left after reading.
TEST(ReadArguments, StatusesAndOptions) {
    const std::tuple<int, const char*, std::vector<const char*>> groups[] = {
        {0,
         "CIN ",
         {"-c foo", "foo", "-c foo -t 'CIN", "-c foo -t CIN", "-c foo -t DRVR -t CIN", "-c -t",
          "-c foo -V 1", "-c foo -v 9", "-c foo -v x", "-c foo -vi x.vi", "-c foo -VI x.vi",
          "-c foo -r", "-c foo -vi"}},
        {0, "DRVR", {"-C foo -D /tmp -T DRVR", "-c foo -t DRVRX"}},
        {1,
         "CIN ",
         {"", "''", "-c foo -v ''", "-c foo -vix x.vi", "-c foo -vx x", "-c foo -", "-c foo -v",
          "-c"}},
        {1, "MXSB", {"-c foo -t MXSB"}},
        {1, "foo ", {"-c foo -t foo", "-c foo -t foo -d"}},
        {1, "cin ", {"-c foo -t cin"}},
        {1, "ab' ", {"-c foo -t 'ab'"}}};
    for (const auto& [status, type, lines] : groups)
        for (const char* line : lines) {
            EXPECT_EQ(Read(line), status) << line;
            EXPECT_EQ(std::string(reinterpret_cast<char*>(&gOptions.codeType), 4), type) << line;
        }

    // Defaults are made afresh on every read: the directory is the current one and a separator.
    // A -r at the end is as if not given; the name is cut at 255.
    auto options = [] {
        auto text = [](const char* s) { return std::string(s ? s : "-"); };
        return std::make_tuple(mgtest::P::Text(gOptions.codeName), text(gOptions.codeDir),
                               text(gOptions.resFileName), text(gOptions.viName),
                               gOptions.codePath);
    };
    ASSERT_EQ(Read("-c foo -d /x/y -r res.rsrc -vi a.vi"), 0);
    EXPECT_EQ(options(), std::make_tuple("foo", "/x/y", "res.rsrc", "a.vi", nullptr));
    ASSERT_EQ(Read("-r a " + std::string(300, 'n') + " -r"), 0);
    EXPECT_EQ(options(),
              std::make_tuple(std::string(255, 'n'), gOptions.startDir, "-", "-", nullptr));
    EXPECT_EQ(gOptions.codeDir, gOptions.startDir);
    EXPECT_EQ(std::string(gOptions.codeDir).back(), plat::DirectorySeparator());
}
