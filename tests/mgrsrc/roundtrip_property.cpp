// Any file the library's write-back makes, after any run of adds, changes, attribute changes,
// removes and intermediate write-backs, comes back byte for byte from unpack and pack.
#include <rapidcheck.h>

#include "mgrsrc/mgrsrc_env.h"

static rc::Gen<Edit> AnyEdit() {
    // Few types and ids, so that edits meet the resources that earlier ones made.
    const auto type = rc::gen::element<std::string>("AAAA", "BBBB", std::string("\0\xFF ~", 4));
    const auto small = rc::gen::container<Bytes>(rc::gen::arbitrary<uint8_t>());
    // Data of 4093 bytes and more is written in two pieces.
    const auto data = rc::gen::weightedOneOf<Bytes>(
        {{6, small}, {1, rc::gen::map(rc::gen::inRange(4090, 4100), [](int n) {
                          return Bytes(size_t(n), uint8_t(n));
                      })}});
    const auto name = rc::gen::weightedOneOf<std::string>(
        {{1, rc::gen::just(std::string())},
         {2, rc::gen::resize(12, rc::gen::nonEmpty(rc::gen::container<std::string>(
                                     rc::gen::arbitrary<char>())))}});
    return rc::gen::build<Edit>(
        rc::gen::set(&Edit::kind, rc::gen::element(Edit::kAdd, Edit::kAdd, Edit::kAdd,
                                                   Edit::kChange, Edit::kRemove, Edit::kRemove,
                                                   Edit::kSetAttrs, Edit::kUpdate)),
        rc::gen::set(&Edit::type, type), rc::gen::set(&Edit::id, rc::gen::inRange(-2, 6)),
        rc::gen::set(&Edit::name, name), rc::gen::set(&Edit::data, data),
        rc::gen::set(&Edit::attrs, rc::gen::element(0, 0x08, 0x40, 0x1000)));
}

// Thirty cases: each runs the tool twice, and thirty have found every layout fault seen.
TEST(MgrsrcRoundTrip, LibraryEditsComeBackByteForByte) {
    rc::detail::TestParams params = rc::detail::configuration().testParams;
    params.maxSuccess = 30;
    const auto result = rc::detail::checkTestable(
        [] {
            const auto edits =
                *rc::gen::resize(60, rc::gen::container<std::vector<Edit>>(AnyEdit()));
            TempDir dir;
            MakeWithLibrary(dir.path / "f", edits);
            RC_ASSERT(RoundTrip(dir.path, "f") == B(SlurpFile(dir.path / "f")));
        },
        rc::detail::TestMetadata{}, params);
    std::ostringstream message;
    rc::detail::printResultMessage(result, message);
    EXPECT_TRUE(result.is<rc::detail::SuccessResult>()) << message.str();
}
