// Random sequences of adds (named and not), removes, changes and lookups on a new file,
// against the model: after every step that looks, the map seen through RLookupFile is the
// model's, byte for byte, and the closed file holds the model's bytes. Steps that don't look
// let adds pile up unobserved, so that the map is also seen after many at once.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>

#include "resource/edit_model.h"

namespace {

class EditProperty : public ResourceTest {};

RC_GTEST_FIXTURE_PROP(EditProperty, MapAndFileFollowTheModel, ()) {
    const auto raw = *rc::gen::container<std::vector<std::array<uint32_t, 7>>>(
        rc::gen::arbitrary<std::array<uint32_t, 7>>());
    std::vector<edits::Step> steps;
    for (const auto& r : raw) {
        size_t i = 0;
        steps.push_back(edits::MakeStep([&](size_t n) { return r[i++] % n; }));
    }
    Bytes closed;
    RC_ASSERT(edits::RunSteps(MakePath("edits"), FilePath("edits"), steps, &closed) == "");
}

}  // namespace
