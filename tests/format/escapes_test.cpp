// Backslash codes: reading one code, and writing one byte or 16-bit character back.
#include <gtest/gtest.h>

#include <string>

#include "mg/format.h"

namespace {

TEST(Escapes, ParseTable) {
    // What follows the backslash, the length given, the byte read and the bytes it took.
    // clang-format off
    const struct { const char* text; int32_t length; uint8_t byte; int32_t consumed; } cases[] = {
        {"b", 1, 8, 1}, {"f", 1, 12, 1}, {"n", 1, 10, 1}, {"r", 1, 13, 1}, {"s", 1, 32, 1},
        {"t", 1, 9, 1}, {"\\", 1, '\\', 1}, {"a", 1, 'a', 1}, {"41x", 3, 0x41, 2}, {"FF", 2, 0xFF, 2},
        {"7G", 2, 7, 1}, {"9f", 2, 9, 1}, {"3C4", 3, 0x3C, 2}, {"A0", 2, 0xA0, 2}, {"e", 1, 'e', 1},
        {"", 0, '\\', 0}, {"41", 1, 4, 1}};
    // clang-format on
    for (const auto& c : cases) {
        const uint8_t* start = reinterpret_cast<const uint8_t*>(c.text);
        const uint8_t* p = start;
        EXPECT_EQ(ParseEscape(&p, start + c.length), c.byte) << c.text;
        EXPECT_EQ(p - start, c.consumed) << c.text;
    }
}

TEST(Escapes, EmitTable) {
    // clang-format off
    const struct { uint8_t byte; const char* text; } cases[] = {
        {8, "\\b"}, {9, "\\t"}, {10, "\\n"}, {12, "\\f"}, {13, "\\r"}, {32, "\\s"}, {92, "\\\\"},
        {33, "!"}, {'a', "a"}, {126, "~"}, {0, "\\00"}, {11, "\\0B"}, {31, "\\1F"}, {127, "\\7F"},
        {200, "\\C8"}};
    // clang-format on
    for (const auto& c : cases) {
        uint8_t buffer[4] = {}, *out = buffer;
        const int32_t n = EmitEscape(c.byte, &out);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), static_cast<size_t>(n)), c.text);
        EXPECT_EQ(out, buffer + n);
        EXPECT_EQ(EmitEscape(c.byte, nullptr), n);
    }
}

// The named codes only; every other character goes out as itself.
TEST(Escapes, WideHasNoHexForm) {
    const uint16_t cases[][2] = {{8, 'b'},  {9, 't'},  {10, 'n'},  {12, 'f'},
                                 {13, 'r'}, {32, 's'}, {92, '\\'}, {0, 0},
                                 {7, 0},    {65, 0},   {127, 0},   {0x263A, 0}};
    for (const auto& c : cases) {
        uint16_t buffer[2] = {0xEEEE, 0xEEEE}, *out = buffer;
        const int32_t n = c[1] ? 4 : 2;
        EXPECT_EQ(EmitEscapeWide(c[0], &out), n);
        EXPECT_EQ(EmitEscapeWide(c[0], nullptr), n);
        EXPECT_EQ(out, buffer + n / 2);
        EXPECT_EQ(buffer[0], c[1] ? '\\' : c[0]);
        EXPECT_EQ(buffer[1], c[1] ? c[1] : 0xEEEE);
    }
}

}  // namespace
