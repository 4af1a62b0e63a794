// RCheckBytes on a file whose data lies out of map order, as write-backs leave files after
// edits, and whose ids repeat out of order: the notices come as for sorted lists, each once.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "mg/rescheck.h"
#include "resource/file_builder.h"

namespace {

using Findings = std::vector<std::pair<int64_t, std::string>>;

void Keep(void* context, const RCheckFinding* f) {
    static_cast<Findings*>(context)->push_back({f->offset, f->text});
}

TEST(CheckBytes, NoticesOfDataAndIdsOutOfOrder) {
    Bytes b =
        BuildFile({{"AAAA", {{5, "", {1, 2, 3}}, {2, "", {4}}, {5, "", {5, 6, 7, 8, 9}}}}}, 4);
    const int64_t refs = Big32At(b, 16) + 68;  // the three entries, 20 bytes apart
    PutBig32(b, size_t(refs + 12), 16);        // the first takes the third's data,
    PutBig32(b, size_t(refs + 52), 8);         // the third shares the second's
    Findings got;
    RCheckSink sink{&got, Keep, nullptr, 1};
    RCheckSummary summary;
    ASSERT_EQ(RCheckBytes(b.data(), int64_t(b.size()), &sink, &summary), MgNoError);
    const Findings want = {
        {refs + 20, "id 2 out of order in a version-4 file: lookups by id may miss it"},
        {refs + 40, "id 5 appears twice in its type; a lookup finds one of them"},
        {32, "8 bytes of data that no reference uses"},
        {refs + 52, "shares its data with the reference at " + std::to_string(refs + 20)},
    };
    EXPECT_EQ(got, want);
}

}  // namespace
