// Backslash codes: reading one code, and writing one byte or 16-bit character back.
#include <gtest/gtest.h>

#include <string>

#include "mg/format.h"

namespace {

TEST(Escapes, ParseTable) {
    struct Case {
        const char* text;  // what follows the backslash, up to the end given
        int32_t length;
        uint8_t byte;
        int32_t consumed;
    };
    const Case cases[] = {
        {"b", 1, 8, 1},      {"f", 1, 12, 1},    {"n", 1, 10, 1},    {"r", 1, 13, 1},
        {"s", 1, 32, 1},     {"t", 1, 9, 1},     {"\\", 1, '\\', 1}, {"a", 1, 'a', 1},
        {"41x", 3, 0x41, 2}, {"FF", 2, 0xFF, 2}, {"7G", 2, 7, 1},    {"9f", 2, 9, 1},
        {"3C4", 3, 0x3C, 2}, {"A0", 2, 0xA0, 2}, {"e", 1, 'e', 1},   {"", 0, '\\', 0},
        {"41", 1, 4, 1},
    };
    for (const Case& c : cases) {
        const uint8_t* start = reinterpret_cast<const uint8_t*>(c.text);
        const uint8_t* p = start;
        EXPECT_EQ(ParseEscape(&p, start + c.length), c.byte) << c.text;
        EXPECT_EQ(p - start, c.consumed) << c.text;
    }
}

TEST(Escapes, EmitTable) {
    struct Case {
        uint8_t byte;
        const char* text;
    };
    const Case cases[] = {
        {8, "\\b"},  {9, "\\t"},   {10, "\\n"},  {12, "\\f"},   {13, "\\r"},
        {32, "\\s"}, {92, "\\\\"}, {33, "!"},    {'a', "a"},    {126, "~"},
        {0, "\\00"}, {11, "\\0B"}, {31, "\\1F"}, {127, "\\7F"}, {200, "\\C8"},
    };
    for (const Case& c : cases) {
        uint8_t buffer[4] = {};
        uint8_t* out = buffer;
        int32_t n = EmitEscape(c.byte, &out);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), static_cast<size_t>(n)), c.text);
        EXPECT_EQ(out, buffer + n);
        EXPECT_EQ(EmitEscape(c.byte, nullptr), n);
    }
}

TEST(Escapes, WideHasNoHexForm) {
    const uint16_t named[][2] = {{8, 'b'},  {9, 't'},  {10, 'n'}, {12, 'f'},
                                 {13, 'r'}, {32, 's'}, {92, '\\'}};
    for (const auto& c : named) {
        uint16_t buffer[2] = {}, *out = buffer;
        EXPECT_EQ(EmitEscapeWide(c[0], &out), 4);
        EXPECT_EQ(buffer[0], '\\');
        EXPECT_EQ(buffer[1], c[1]);
        EXPECT_EQ(out, buffer + 2);
    }
    for (uint16_t c : {0, 7, 65, 127, 0x263A}) {
        uint16_t buffer[2] = {0xEEEE, 0xEEEE}, *out = buffer;
        EXPECT_EQ(EmitEscapeWide(c, &out), 2);
        EXPECT_EQ(buffer[0], c);
        EXPECT_EQ(buffer[1], 0xEEEE);
        EXPECT_EQ(out, buffer + 1);
        EXPECT_EQ(EmitEscapeWide(c, nullptr), 2);
    }
}

}  // namespace
