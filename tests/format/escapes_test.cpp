// Backslash codes: reading one code, and writing one byte or 16-bit character back.
#include <gtest/gtest.h>

#include <string>

#include "mg/format.h"

namespace {

struct ParseCase {
    const char* text;  // what follows the backslash
    uint8_t byte;
    int32_t consumed;
};

TEST(ParseEscape, Table) {
    const ParseCase cases[] = {
        {"b", 8, 1},      {"f", 12, 1},    {"n", 10, 1},    {"r", 13, 1},  {"s", 32, 1},
        {"t", 9, 1},      {"\\", '\\', 1}, {"a", 'a', 1},   {"q", 'q', 1}, {"0", 0, 1},
        {"41x", 0x41, 2}, {"FF", 0xFF, 2}, {"7G", 7, 1},    {"9f", 9, 1},  {"A", 10, 1},
        {"3C4", 0x3C, 2}, {"e", 'e', 1},   {"B0", 0xB0, 2},
    };
    for (const ParseCase& c : cases) {
        const uint8_t* start = reinterpret_cast<const uint8_t*>(c.text);
        const uint8_t* p = start;
        EXPECT_EQ(ParseEscape(&p, start + strlen(c.text)), c.byte) << c.text;
        EXPECT_EQ(p - start, c.consumed) << c.text;
    }
}

TEST(ParseEscape, StopsAtTheEnd) {
    const uint8_t text[] = {'4', '1'};
    const uint8_t* p = text;
    EXPECT_EQ(ParseEscape(&p, text), '\\');  // nothing behind the backslash
    EXPECT_EQ(p, text);
    p = text;
    EXPECT_EQ(ParseEscape(&p, text + 1), 4);  // the second digit lies beyond the end
    EXPECT_EQ(p, text + 1);
}

TEST(EmitEscape, TableAndCountOnly) {
    struct Case {
        uint8_t byte;
        const char* text;
    };
    const Case cases[] = {
        {8, "\\b"},   {9, "\\t"},   {10, "\\n"},   {12, "\\f"},   {13, "\\r"},   {32, "\\s"},
        {92, "\\\\"}, {33, "!"},    {'a', "a"},    {126, "~"},    {0, "\\00"},   {7, "\\07"},
        {11, "\\0B"}, {31, "\\1F"}, {127, "\\7F"}, {200, "\\C8"}, {255, "\\FF"},
    };
    for (const Case& c : cases) {
        uint8_t buffer[4] = {};
        uint8_t* out = buffer;
        int32_t n = EmitEscape(c.byte, &out);
        EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), static_cast<size_t>(n)), c.text);
        EXPECT_EQ(out, buffer + n);
        EXPECT_EQ(EmitEscape(c.byte, nullptr), n);
        uint8_t* none = nullptr;
        EXPECT_EQ(EmitEscape(c.byte, &none), n);
        EXPECT_EQ(none, nullptr);
    }
}

TEST(EmitEscape, EveryByteReadsBack) {
    for (int b = 0; b < 256; ++b) {
        uint8_t buffer[4];
        uint8_t* out = buffer;
        int32_t n = EmitEscape(static_cast<uint8_t>(b), &out);
        const uint8_t* p = buffer;
        uint8_t back = p[0] == '\\' && n > 1 ? (++p, ParseEscape(&p, buffer + n)) : *p++;
        EXPECT_EQ(back, b);
        EXPECT_EQ(p, buffer + n) << b;
    }
}

TEST(EmitEscapeWide, NamedCodesAndCopies) {
    struct Case {
        uint16_t character;
        uint16_t first, second;
        int32_t count;
    };
    const Case cases[] = {
        {8, '\\', 'b', 4},  {9, '\\', 't', 4},     {10, '\\', 'n', 4},          {12, '\\', 'f', 4},
        {13, '\\', 'r', 4}, {32, '\\', 's', 4},    {92, '\\', '\\', 4},         {0, 0, 0xEEEE, 2},
        {7, 7, 0xEEEE, 2},  {'A', 'A', 0xEEEE, 2}, {0x263A, 0x263A, 0xEEEE, 2},
    };
    for (const Case& c : cases) {
        uint16_t buffer[2] = {0xEEEE, 0xEEEE};
        uint16_t* out = buffer;
        EXPECT_EQ(EmitEscapeWide(c.character, &out), c.count) << c.character;
        EXPECT_EQ(buffer[0], c.first);
        EXPECT_EQ(buffer[1], c.second);
        EXPECT_EQ(out, buffer + c.count / 2);
        EXPECT_EQ(EmitEscapeWide(c.character, nullptr), c.count);
    }
}

}  // namespace
