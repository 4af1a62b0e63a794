// Finding and removing by name without loading, as -vi replaces a module: RFindNamed answers
// what RGetNamed answers, the checks of the data's place included, and neither it nor
// RRemoveInd takes memory for the data.
#include "resource/crafted_files.h"
#include "resource/resmap.h"
#include "resource/resource_env.h"

namespace {

TEST_F(ResourceTest, FindAndRemoveNamedWithoutLoading) {
    Bytes badOffset = crafted::Base();
    crafted::BadData()[2].spoil(badOffset);  // AAAA 1 "one" lies beyond the data section
    const struct {
        const char* what;
        Bytes file;
        const char* type;
        const char* name;
    } rows[] = {
        {"found, case aside", crafted::Base(), "BBBB", "SEVEN"},
        {"the name in another type", crafted::Base(), "BBBB", "one"},
        {"unknown type", crafted::Base(), "CCCC", "one"},
        {"data beyond the section", badOffset, "AAAA", "one"},
    };
    for (const auto& row : rows) {
        WriteFile("f", row.file);
        ResFile f = Open("f");
        const std::string name = P(row.name);
        const int32_t loaded = rsrc::IndexCount();
        int32_t index = -1, id = -1;
        const MgStatus found = RFindNamed(f, T(row.type), PS(name), &index, &id);
        EXPECT_EQ(rsrc::IndexCount(), loaded) << row.what;
        Handle h = nullptr, byIndex = nullptr;
        EXPECT_EQ(found, RGetNamed(f, T(row.type), PS(name), &h)) << row.what;
        int32_t want = 0;
        if (h) {
            EXPECT_EQ(RGetInd(f, T(row.type), index, &byIndex), MgNoError);
            EXPECT_EQ(byIndex, h) << row.what;
            RGetInfo(h, &want, nullptr, nullptr);
            ASSERT_EQ(RRelease(h), MgNoError);
            EXPECT_EQ(RRemoveInd(f, T(row.type), index), MgNoError) << row.what;
            EXPECT_EQ(RGetNamed(f, T(row.type), PS(name), &h), MgResourceNotFound) << row.what;
            EXPECT_EQ(rsrc::IndexCount(), loaded) << row.what;
        } else {
            EXPECT_EQ(index, 0) << row.what;
        }
        EXPECT_EQ(id, want) << row.what;
        EXPECT_EQ(RRemoveInd(f, T("AAAA"), 3), MgResourceNotFound) << row.what;
        EXPECT_EQ(RCloseFile(f), MgNoError);
    }
}

}  // namespace
