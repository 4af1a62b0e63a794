// File types by extension: the dot search, the two tables, the four-character quirk, and the
// limits of adding and stripping.
#include "mg/filetypes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "mg/memory.h"
#include "mg/path.h"
#include "support/memory_env.h"
#include "support/pstr.h"

namespace {

// A table of (type, extension) records; extensions of 4 characters fill the field unended.
Handle Table(const std::vector<std::pair<const char*, const char*>>& records) {
    Handle h = MemNewHandleClear(4 + 8 * int32_t(records.size()));
    const int32_t n = int32_t(records.size());
    memcpy(*h, &n, 4);
    for (int32_t i = 0; i < n; ++i) {
        memcpy(*h + 4 + 8 * i, records[i].first, 4);
        memcpy(*h + 8 + 8 * i, records[i].second, strnlen(records[i].second, 4));
    }
    return h;
}

using Name = mgtest::P;
const auto T = MgResType;

class FileTypes : public ::testing::Test {
  protected:
    // "jpeg" runs on into the "\0ull" record and matches; "html" runs into "TIFF" and can't;
    // "tiff" is the last record and runs into the block's end.
    Handle primary = Table({{"TEXT", "txt"},
                            {"JPEG", "jpeg"},
                            {"\0ull", ""},
                            {"HTML", "html"},
                            {"TIFF", "tiff"}}),
           secondary = Table({{"PICT", "pct"}, {"OTHR", "txt"}, {"CSRC", "c"}});
    void SetUp() override { FSetTypeTables(primary, secondary); }
    void TearDown() override {
        FSetTypeTables(nullptr, nullptr);
        MemDisposeHandle(primary);
        MemDisposeHandle(secondary);
    }
};

Path PosixPath(const std::string& text) {
    Path p = nullptr;
    EXPECT_EQ(FTextToPathSyntax(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()),
                                &p, PathSyntaxPosix),
              MgNoError);
    return p;
}

TEST_F(FileTypes, TypeOfName) {
    const std::pair<const char*, ResType> cases[] = {{"A.TXT", T("TEXT")},
                                                     {"a.b.pct", T("PICT")},
                                                     {"a.jpeg", T("JPEG")},
                                                     {"a.c", T("CSRC")},
                                                     {"a.html", 0},
                                                     {"a.tiff", 0},
                                                     {"a.toolong", 0},
                                                     {"a.", 0},
                                                     {"txt", 0}};
    for (const auto& [name, want] : cases) EXPECT_EQ(FTypeOfName(Name(name).b), want) << name;
    EXPECT_EQ(FTypeOfExtension("jpegs", 5), 0u);
    // A path's type is its last name's; the empty path has none.
    Path p = PosixPath("/dir.txt/pic.pct"), root = FEmptyPath(nullptr);
    EXPECT_EQ(std::make_pair(FTypeOfPath(p), FTypeOfPath(root)), std::make_pair(T("PICT"), 0u));
    FPathRelease(p);
    FPathRelease(root);
    FSetTypeTables(nullptr, secondary);
    EXPECT_EQ(FTypeOfName(Name("a.txt").b), T("OTHR"));
    FSetTypeTables(nullptr, nullptr);
    EXPECT_EQ(FTypeOfName(Name("a.txt").b), 0u);
}

TEST_F(FileTypes, AddAndStripExtensions) {
    const struct {
        std::string name;
        ResType type;
        MgStatus want;
        std::string after;
    } adds[] = {
        {"a", T("TEXT"), 0, "a.txt"},  // the first record of the type
        {"b", T("PICT"), 0, "b.pct"},  // after the primary answered 15
        {"c", T("NONE"), 15, "c"},
        {"d", T("HTML"), 0, "d.html"},  // a full field: four bytes, no more
        {std::string(251, 'n'), T("TEXT"), 0, std::string(251, 'n') + ".txt"},
        {std::string(252, 'n'), T("TEXT"), 1, std::string(252, 'n')},
        {std::string(254, 'n'), T("PICT"), 1, std::string(254, 'n')},
    };
    for (const auto& c : adds) {
        Name n(c.name);
        EXPECT_EQ(FAddExtension(n.b, c.type), c.want) << c.name.size();
        EXPECT_EQ(n.str(), c.after);
    }
    EXPECT_EQ(FAddExtensionFrom(Name("x").b, T("TEXT"), nullptr), 15);
    const struct {
        std::string name;
        ResType type;
        int32_t removed;
        std::string after;
    } strips[] = {{"a.abcd", 0, 5, "a"},        {"a.abcde", 0, 0, "a.abcde"},
                  {"a.txt", T("TEXT"), 4, "a"}, {"a.txt", T("PICT"), 0, "a.txt"},
                  {"noext", 0, 0, "noext"},     {"a.", 0, 1, "a"}};
    for (const auto& c : strips) {
        Name n(c.name);
        EXPECT_EQ(FStripExtension(n.b, c.type), c.removed) << c.name;
        EXPECT_EQ(n.str(), c.after);
    }
}

// Only records that lie wholly inside the block count, whatever the count word says.
TEST_F(FileTypes, CountWordIsTrustedOnlyWithinTheBlock) {
    FSetTypeTables(nullptr, secondary);
    for (int32_t claimed : {-1, 1, 99}) {
        memcpy(*secondary, &claimed, 4);
        EXPECT_EQ(FTypeOfExtension("pct", 3), claimed > 0 ? T("PICT") : 0) << claimed;
        EXPECT_EQ(FTypeOfExtension("txt", 3), claimed > 1 ? T("OTHR") : 0) << claimed;
    }
}

TEST(FileTypesDeathTest, TypeOfAnUnrootedPathIsAFailedCheck) {
    Path p = PosixPath("a/b.txt");
    EXPECT_DEATH(FTypeOfPath(p), "");
    FPathRelease(p);
}

}  // namespace
