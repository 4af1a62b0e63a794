// mgrsrc verify on damaged and odd files: the crafted files shared with the resource suite,
// and faults of the header and the map's placement. Each unsound file is reported with the
// offset of the first fault, as the reader meets it; nothing crashes, and no command of the
// tool trusts what verify refuses.
#include <gtest/gtest.h>

#include "mgrsrc/mgrsrc_env.h"
#include "resource/crafted_files.h"

namespace {

using namespace crafted;

struct Verified {
    ToolResult verify;
    long long first = -1;  // the offset of the first "error" line, -1 when there is none
    size_t warnings = 0;
};

// Writes `file` as "f" in `dir` and verifies it.
Verified VerifyBytes(const TempDir& dir, const Bytes& file) {
    WriteBytes(dir.path / "f", file);
    Verified v{Mgrsrc({"verify", "f"}, dir.path)};
    for (const std::string& line : Lines(v.verify.out)) {
        const size_t at = line.find(": offset ");
        if (at != std::string::npos && line.find(": error: ") != std::string::npos && v.first < 0)
            v.first = std::stoll(line.substr(at + 9));
        v.warnings += line.find(": warning: ") != std::string::npos;
    }
    return v;
}

// Each crafted file is reported at its first fault; a refused map is refused by every command,
// while bad data fails only its own resource.
TEST(MgrsrcVerify, CraftedFilesAtTheirFirstFault) {
    TempDir dir;
    WriteBytes(dir.path / "g", Base());
    for (const auto* rows : {&BadMaps(), &BadData()}) {
        for (const Spoiled& row : *rows) {
            SCOPED_TRACE(row.what);
            Bytes b = Base();
            row.spoil(b);
            Verified v = VerifyBytes(dir, b);
            const bool refused = row.open != MgNoError;
            EXPECT_EQ(std::make_tuple(
                          v.verify.status, v.first,
                          v.verify.out.find("the reader refuses to open it") != std::string::npos),
                      std::make_tuple(2,
                                      refused       ? MapAt(b) + row.faultAt
                                      : row.faultAt ? row.faultAt
                                                    : MapAt(b) + kRefA1 + 12,
                                      refused))
                << v.verify.out;
            if (!refused) {  // the other resources list and extract, the bad one shows no size
                ToolResult list = Mgrsrc({"list", "f"}, dir.path);
                EXPECT_NE(list.out.find(Lined("AAAA 1 \"one\" ? none\n")), std::string::npos)
                    << list.out;
                EXPECT_EQ(Mgrsrc(Words("extract -o - f BBBB 7"), dir.path).out, "\5\6\7\10\11");
                EXPECT_EQ(Mgrsrc(Words("extract -o - f AAAA 1"), dir.path).status, 2);
                EXPECT_EQ(Mgrsrc({"diff", "f", "f"}, dir.path).status, 0);  // equal to itself
                continue;
            }
            for (const char* other : {"list f", "extract --all f out", "diff f g", "diff g f"}) {
                ToolResult r = Mgrsrc(Words(other), dir.path);
                EXPECT_EQ(std::make_tuple(r.status, r.out,
                                          r.err.find("not a sound resource file: offset ") !=
                                              std::string::npos),
                          std::make_tuple(2, "", true))
                    << other << r.err;
            }
        }
    }
}

// Faults before the map: the header, the trailer, and where the map lies.
TEST(MgrsrcVerify, HeaderFaults) {
    TempDir dir;
    const struct {
        std::function<void(Bytes&)> spoil;
        long long first;  // from the start of the file; -1: from the start of the map
    } rows[] = {
        {[](Bytes& b) { b.clear(); }, 0},
        {[](Bytes& b) { b.resize(31); }, 0},
        {[](Bytes& b) { b[3] = 'X'; }, 0},                     // signature
        {[](Bytes& b) { b[7] = 1; }, 6},                       // version 1
        {[](Bytes& b) { b[5] = 0x0D; }, 4},                    // line end of a version 3
        {[](Bytes& b) { b.resize(b.size() - 1); }, 16},        // map beyond the end
        {[](Bytes& b) { PutBig32(b, 20, 0xFFFFFF00); }, 20},   // negative map size
        {[](Bytes& b) { PutMap32(b, 12, 0x41414141); }, -12},  // copy with another creator
        {[](Bytes& b) { PutMap32(b, 48, 0x10000); }, -48},     // name list beyond the map
    };
    for (const auto& row : rows) {
        Bytes b = Base();
        const long long mapAt = MapAt(b);
        row.spoil(b);
        Verified v = VerifyBytes(dir, b);
        EXPECT_EQ(std::make_pair(v.verify.status, v.first),
                  std::make_pair(2, row.first >= 0 ? row.first : mapAt - row.first))
            << v.verify.out;
    }
}

// What a reader takes but a maker of files wants to hear about; the file stays sound. The
// summary counts in the singular where there is one. A resource file at the end of another is
// found through its trailer, as the reader does.
TEST(MgrsrcVerify, SuspiciousButSound) {
    TempDir dir;
    const struct {
        Bytes file;
        std::vector<std::string> warnings;
    } rows[] = {
        {SharedData(),
         {"shares its data with the reference at", "bytes of data that no reference uses"}},
        {RunTimeBitsFromTheFile(), {"changed bit set in the file", "handle word isn't zero"}},
        {DataBehindAGap(8), {}},
        {BuildFile({{"AAAA", {{5, "", {1}}, {2, "", {2}}}}}, 4),
         {"id 2 out of order in a version-4 file"}},
        {BuildFile({{"AAAA", {{3, "", {1}}, {3, "", {2}}}}}), {"id 3 appears twice"}},
        {Embedded(Base(), 100), {}},
    };
    for (const auto& row : rows) {
        Verified v = VerifyBytes(dir, row.file);
        EXPECT_EQ(std::make_pair(v.verify.status, v.warnings),
                  std::make_pair(0, row.warnings.size()))
            << v.verify.out;
        for (const std::string& w : row.warnings)
            EXPECT_NE(v.verify.out.find(w), std::string::npos) << v.verify.out;
    }
    EXPECT_NE(Mgrsrc({"list", "f"}, dir.path).out.find(Lined("embedded at 100\n")),
              std::string::npos);
    EXPECT_EQ(Mgrsrc(Words("extract -o - f BBBB seven"), dir.path).out, "\5\6\7\10\11");
    Bytes b = BuildFile({{"AAAA", {{1, "", {1}}}}});
    PutBig32(b, MapAt(b) + 84, 0x1234);  // the handle word: one warning
    EXPECT_EQ(Lines(VerifyBytes(dir, b).verify.out).back(), "f: sound: 1 resource, 1 warning");
    PutBig32(b, 32, 0xFFFFFFF0);  // a negative size word: one error
    EXPECT_EQ(Lines(VerifyBytes(dir, b).verify.out).back(), "f: unsound: 1 error, 1 warning");
}

}  // namespace
