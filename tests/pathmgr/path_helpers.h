// Readable construction and description of paths for the path suites.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "mg/memory.h"
#include "mg/path.h"
#include "platform/faults.h"
#include "support/handles.h"
#include "support/pstr.h"
#include "support/rows.h"

using mgtest::P;

// Owns a path for the length of a test.
struct OwnedPath {
    Path p = nullptr;
    explicit OwnedPath(Path path = nullptr) : p(path) {}
    ~OwnedPath() { FPathRelease(p); }
    operator Path() const { return p; }
};

// Reads Windows or POSIX text into a new path; fails the test on a bad status.
inline Path Parse(const std::string& text, int32_t syntax = PathSyntaxWindows) {
    Path p = nullptr;
    MgStatus status = FTextToPathSyntax(reinterpret_cast<const uint8_t*>(text.data()),
                                        static_cast<int32_t>(text.size()), &p, syntax);
    EXPECT_EQ(status, MgNoError) << text;
    return p;
}

// "A:C|a|b": the kind (A, R, N or U), then the components, with ".." for an up-level one.
inline std::string Describe(Path p) {
    if (p == nullptr) return "null";
    int16_t kind, count;
    memcpy(&kind, *p, 2);
    memcpy(&count, *p + 2, 2);
    std::string out = std::string(1, "ARNU?"[kind >= 0 && kind <= 3 ? kind : 4]) + ':';
    for (const uint8_t* name = *p + 4; count-- > 0; name += 1 + *name)
        out += (name == *p + 4 ? "" : "|") + (*name ? P::Text(name) : std::string(".."));
    return out;
}

// The status of a call and the path it left, as "0 A:C|a". The path (a Path or an OwnedPath)
// is read by reference, after the call, which may have set the variable.
template <typename T>
std::string After(MgStatus status, const T& p) {
    return std::to_string(status) + " " + Describe(p);
}

// The path that a text reads as, described.
inline std::string Read(const std::string& text, int32_t syntax = PathSyntaxWindows) {
    OwnedPath p(Parse(text, syntax));
    return Describe(p);
}

// The text a measure-then-write function gives; the write must match the measure exactly.
template <typename F>
std::string MeasuredText(F into) {
    int32_t length = -1;  // an LStr of its count alone: -1 asks for the length
    EXPECT_EQ(into(reinterpret_cast<LStr*>(&length)), MgNoError);
    std::vector<uint8_t> mem(sizeof(int32_t) + length + 1, 0xEE);
    auto* l = reinterpret_cast<LStr*>(mem.data());
    l->count = 0;
    EXPECT_EQ(into(l), MgNoError);
    EXPECT_EQ(l->count, length);
    EXPECT_EQ(mem.back(), 0xEE) << "wrote beyond its measure";
    return std::string(reinterpret_cast<const char*>(l->text), length);
}

// The user text of a path in a syntax, and its portable text.
inline std::string Text(Path p, int32_t syntax = PathSyntaxWindows) {
    return MeasuredText([&](LStr* l) { return FPathTextIntoSyntax(p, l, syntax); });
}
inline std::string PortableText(Path p) {
    return MeasuredText([&](LStr* l) { return FPathPortableTextInto(p, l); });
}

// Resets faults and points the current directory at a Windows one for the whole test.
class PathTest : public ::testing::Test {
  protected:
    void SetUp() override {
        plat::ResetFaults();
        plat::SetCurrentDirectoryForTest("D:\\work");
    }
    void TearDown() override {
        plat::SetCurrentDirectoryForTest(nullptr);
        plat::ResetFaults();
    }
};
