// Fixed sequences of edits on a new file, replayed against the files that the map edits wrote
// for them before adds were deferred (fixtures/edits_<n>.rsrc): the model agrees at every
// step, and the closed file holds the same bytes.
#include <random>

#include "resource/edit_model.h"

namespace {

using edits::Step;

std::vector<Step> FixedSteps(uint32_t seed) {
    // The first sequence makes the name-list offset negative (an unnamed resource removed from
    // a map without names) before names arrive, with lookups through the broken offset.
    if (seed == 0)
        return {{edits::kAdd, 0, 0, 0, 3, 1, false},   {edits::kAdd, 0, 1, 0, 1, 2, false},
                {edits::kRemove, 0, 0, 0, 0, 0, true}, {edits::kAdd, 0, 2, 0, 2, 5, false},
                {edits::kAdd, 1, 4, 0, 4, 0, false},   {edits::kAdd, 0, 5, 0, 0, 3, false},
                {edits::kLookup, 0, 2, 0, 0, 0, true}, {edits::kLookup, 0, 0, 1, 1, 0, true},
                {edits::kRemove, 0, 0, 1, 0, 0, true}, {edits::kAdd, 2, 3, 0, 5, 7, true}};
    std::mt19937 random(seed);
    std::vector<Step> steps;
    for (int i = 0; i < 150; ++i)
        steps.push_back(edits::MakeStep([&](size_t n) { return random() % n; }));
    return steps;
}

TEST_F(ResourceTest, FixedEditSequencesWriteTheEarlierBytes) {
    for (uint32_t seed : {0u, 1u, 2u, 3u}) {
        const std::string leaf = "edits_" + std::to_string(seed) + ".rsrc";
        Bytes closed;
        EXPECT_EQ(edits::RunSteps(MakePath(leaf), FilePath(leaf), FixedSteps(seed), &closed), "")
            << seed;
        std::ifstream in(std::string(MG_SOURCE_DIR) + "/tests/resource/fixtures/" + leaf,
                         std::ios::binary);
        EXPECT_EQ(closed, Bytes(std::istreambuf_iterator<char>(in), {})) << seed;
    }
}

// A named add that would wait, to a map whose name-list offset a removal took below 0 and the
// add brings back to 0: the name is read through that offset, from the map's start, as when
// the add goes in at once.
TEST_F(ResourceTest, NamedAddBehindABrokenNameListOffset) {
    const std::vector<Step> steps = {{edits::kAdd, 0, 0, 0, 0, -3, false},
                                     {edits::kAdd, 0, 0, 0, 0, -2, false},
                                     {edits::kRemove, 0, 0, 0, 0, -3, false},
                                     {edits::kAdd, 0, 0, 0, 0, -2, false},  // a duplicate
                                     {edits::kAdd, 0, 2, 0, 0, -3, false},
                                     {edits::kLookup, 0, 0, 0, 1, 0, false}};
    Bytes closed;
    EXPECT_EQ(edits::RunSteps(MakePath("broken"), FilePath("broken"), steps, &closed), "");
    EXPECT_EQ(RCloseFile(Open("broken")), MgNoError);  // written with that offset, it opens
}

}  // namespace
