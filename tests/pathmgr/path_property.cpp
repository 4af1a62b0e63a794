// Path text and flattened paths read back as the paths they came from, whatever the names.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "path_helpers.h"

namespace {

// A path of up to 8 names of 1 to 20 letters, digits and a few punctuation characters that
// neither syntax treats specially, under any kind but "no path".
Path Generated(int32_t syntax) {
    const auto names = *rc::gen::container<std::vector<std::string>>(
        *rc::gen::inRange(0, 9),
        rc::gen::container<std::string>(*rc::gen::inRange(1, 21),
                                        rc::gen::elementOf(std::string("abcXYZ019_-+ ~"))));
    std::string text =
        syntax == PathSyntaxPosix ? "" : *rc::gen::element<std::string>("C:", "\\\\s\\v", "");
    const bool absolute = text.size() > 0 || *rc::gen::arbitrary<bool>();
    const char separator = syntax == PathSyntaxPosix ? '/' : '\\';
    if (syntax == PathSyntaxPosix && absolute) text = "/";
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0 || (absolute && syntax != PathSyntaxPosix)) text += separator;
        text += names[i];  // a blank at either end of a name is kept
    }
    return Parse(text, syntax);
}

// Written in its syntax and read back, a path is the same path; so it is flattened, into a new
// handle and over an existing, larger one, with the size query agreeing.
RC_GTEST_PROP(PathProperty, TextAndFlatFormsReadBack, ()) {
    for (int32_t syntax : {int32_t(PathSyntaxWindows), int32_t(PathSyntaxPosix)}) {
        plat::SetCurrentDirectoryForTest("D:\\work");
        OwnedPath p(Generated(syntax));
        OwnedPath back(Parse(Text(p, syntax), syntax));
        RC_ASSERT(Describe(back) == Describe(p));
        int32_t size = FPathFlatten(p, nullptr);
        std::vector<uint8_t> flat(size);
        FPathFlatten(p, flat.data());
        OwnedPath fresh, reused(Parse("C:\\some\\longer\\path\\than\\most"));
        RC_ASSERT(FPathUnflatten(flat.data(), &fresh.p) == size);
        RC_ASSERT(FPathUnflattenOrder(flat.data(), &reused.p, size, 1) == size);
        RC_ASSERT(FPathUnflatten(flat.data(), nullptr) == size);
        RC_ASSERT(Describe(fresh) == Describe(p) && Describe(reused) == Describe(p));
        RC_ASSERT(MemHandleSize(fresh) == MemHandleSize(p));
        plat::SetCurrentDirectoryForTest(nullptr);
    }
}

}  // namespace
