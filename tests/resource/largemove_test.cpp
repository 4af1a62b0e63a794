// Data larger than a copy piece, moved into a new file by a write-back without being loaded,
// comes out with the same bytes as any other move.
#include "resource/resource_env.h"

namespace {

TEST_F(ResourceTest, LargeDataMovesInPieces) {
    Bytes large(2 * 1024 * 1024 + 3);
    for (size_t i = 0; i < large.size(); ++i) large[i] = uint8_t(i * 7 + i / 4096);
    const std::vector<TypeLayout> before = {{"AAAA", {{1, "a", {1, 2, 3, 4, 5}}, {2, "b", large}}},
                                            {"BBBB", {{1, "c", {9}}}}};
    std::vector<TypeLayout> after = before;
    after[0].refs.erase(after[0].refs.begin());
    Bytes expected = BuildFile(after);
    PutBig32(expected, Big32At(expected, 16) + 40, RFileDirty);
    WriteFile("l", BuildFile(before));
    ResFile f = Open("l");
    Handle h = nullptr;
    ASSERT_EQ(RGet(f, T("AAAA"), 1, &h), MgNoError);
    ASSERT_EQ(RRemove(h, f), MgNoError);
    MemDisposeHandle(h);
    EXPECT_EQ(RCloseFile(f), MgNoError);
    EXPECT_TRUE(ReadFile("l") == expected);
}

}  // namespace
