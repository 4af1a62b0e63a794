// The format engine: conversions, fields, the output limit, the decimal-mark form, positional
// parameters and the backslash codes read and written back; then the string forms around it
// (NUL-terminated, PStr, handle, LStr), its file and notification outputs, and path text.
#include "mg/format.h"

#include <gtest/gtest.h>
#include <stdarg.h>

#include <functional>
#include <string>

#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/path.h"
#include "platform/faults.h"
#include "support/handles.h"
#include "support/rows.h"
#include "support/run_tool.h"

namespace {

using namespace mgtest;

// The text of a format, from a bounded call into a large buffer; the counting call with a
// null destination must give the same length.
std::string Format(const char* format, ...) {
    va_list args, copy;
    va_start(args, format);
    va_copy(copy, args);
    char buffer[2048];
    const int32_t length = static_cast<int32_t>(strlen(format)),
                  written = StrFormatV(buffer, sizeof buffer, format, length, args);
    EXPECT_EQ(written, StrFormatV(nullptr, 0, format, length, copy)) << "format " << format;
    va_end(copy);
    va_end(args);
    return std::string(buffer, static_cast<size_t>(written));
}

// Integers read 32 bits, %{type} reads a number by pointer; widths are read into 32 bits with
// no limit check: a longer run wraps, and one that wraps to a negative number pads nothing.
TEST(FormatEngine, ConversionsAndEscapes) {
    int8_t minusOne8 = -1;
    int16_t minusOne16 = -1, rect[4] = {1, 2, -3, 32767};
    int64_t wide = 0x100000005;
    uint8_t byte = 200, pstr[] = {3, 'x', 'y', 'z'};
    uint64_t big = 0xFFFFFFFF00000005ULL;
    double real = 3.75;
    long double extended = 1.25L;
    const char* text = "abcdef";
    // An LStr: both hosts are little-endian.
    alignas(4) uint8_t lstr[] = {4, 0, 0, 0, 'L', 'S', 'T', 'R'};
    ExpectRows(
        {Row(Format("%d|%5d|%-5d|%05d|%2d", 42, 42, 42, 42, 42), "42|   42|42   |00042|42"),
         Row(Format("%05d|%-05d|%5d", -42, -42, -42), "-0042|-42  |  -42"),
         Row(Format("%d|%ld|%u|%.3d", INT32_MIN, -1, -1, 7), "-2147483648|-1|4294967295|7"),
         Row(Format("%x|%o|%b|%08x", -1, 8, 5, 0xBEEF), "FFFFFFFF|10|101|0000BEEF"),
         Row(Format("%{iB}x|%{iW}o|%{iB}d", &minusOne8, &minusOne16, &minusOne8), "FF|177777|-1"),
         Row(Format("%{uB}d|%{uQ}u|%{fD}d", &byte, &big, &real), "200|5|4"),
         Row(Format("%{*}x|%{x}d|%{iZ}d", int(uB), &byte, 7, 8), "C8|7|8"),
         // The low half of a 64-bit cell as iL; the } may be missing.
         Row(Format("%.0{iL}f|%{uBd|", &wide, &byte), "5|200|"),
         Row(Format("%f|%.2f|%.0f|%.0f", 1.5, 2.675, 2.5, 3.5), "1.500000|2.67|2|4"),
         Row(Format("%.2f|%8.3f|%-6.1f|%08.2f", -0.001, 3.14159, 2.0, -1.5),
             "-0.00|   3.142|2.0   |-0001.50"),
         Row(Format("%e|%E|%g|%.0e", 1.5, 1.5, 1.5, 12345.0),
             "1.500000E+0|1.500000E+0|1.500000E+0|1E+4"),
         Row(Format("%20e|%40e", 1.0, 1.0),
             " 1.00000000000000E+0|                   1.0000000000000000E+0"),
         Row(Format("%f|%e|%.1{fD}f|%.1{fX}f", 1e308, 0.0, &real, &extended),
             "1.000000E+308|0.000000E+0|3.8|1.2"),
         Row(Format("%.2147483647e|", 1.0), "1.0000000000000000E+0|"),
         Row(Format("%4294967299d|%2147483648d|%-2147483649x", 5, 5, 255), "  5|5|FF"),
         Row(Format("%2147483648f|%3000000000.1f", 1.5, 2.5), "1.500000|2.5"),
         Row(Format("%2147483648s|%-3000000000c", "ab", 'c'), "ab|c"),
         Row(Format("%8s|%-8s|%05s", text, text, "ab"), "  abcdef|abcdef  |000ab"),
         // The precision caps the whole field, padding included.
         Row(Format("%.3s|%10.3s|%-10.3s|%.0s|", text, text, text, text), "abc|   |abc||"),
         Row(Format("%5p|%.2p|%5.2p|", pstr, pstr, pstr), "  xyz|xy|  |"),
         Row(Format("%P|%lp|%{iB}p|%6H|", lstr, lstr, lstr, nullptr), "LSTR|LSTR|LSTR|      |"),
         Row(Format("%c|%5c|%2c|%4c|%4.2c", 'A', 'B', 0x4241, 0x44434241, 0x44434241),
             "A|B|AB|ABCD|AB"),
         Row(Format("%q|%Q|%-10.1q|", (3 << 16) | 4, (1 << 16) | 0xFFFF, INT32_MIN),
             "(3,4)|hv(1,-1)|(-32768,0)|"),
         Row(Format("%r|%20R", rect, rect), "(1, 2, -3, 32767)|tlbr(1, 2, -3, 32767)")});
    ExpectRows({Row(Format("x") + Format("100%") + Format("|a%%b|x%-"), "x100%|a%b|x-"),
                Row(Format("\\n|\n|\\t\\s\\\\\\q|end\\"), "\r\n|\n|\t \\q|end\\"),
                Row(Format("\\41\\4\\4G\\ff"), "A\4\4G\14f")});
    const uint8_t withNul[] = {4, 'a', 0, '%', 'd'};  // NUL is an ordinary character
    char out[8];
    ASSERT_EQ(StrFormatFromP(out, withNul, 7), 3);
    EXPECT_EQ(std::string(out, 3), std::string("a\0007", 3));
}

// Every size from 0 up gives a prefix of the full text, never a byte more.
TEST(FormatEngine, EverySizeGivesAPrefix) {
    int16_t tlbr[4] = {10, 20, 30, 40};
    uint8_t hello[] = {5, 'h', 'e', 'l', 'l', 'o'};
    const std::pair<std::string, std::function<int32_t(char*, int32_t)>> rows[] = {
        {"-0001234|FF    |tail",
         [](char* d, int32_t n) { return StrFormatN(d, n, "%08d|%-6x|%s", -1234, 255, "tail"); }},
        {"-2.500\r\n    ",
         [](char* d, int32_t n) { return StrFormatN(d, n, "%.3f\\n%10.4s", -2.5, "abcdef"); }},
        {"tlbr(10, 20, 30, 40) (0,7) hello   |",
         [&](char* d, int32_t n) { return StrFormatN(d, n, "%R %q %-8p|", tlbr, 7, hello); }},
        {"5-x", [](char* d, int32_t n) { return StrFormatN(d, n, "%1$d-%2$s", 5, "x"); }},
    };
    for (const auto& [text, call] : rows) {
        const int32_t full = static_cast<int32_t>(text.size());
        // A null destination ignores the size and counts every byte, CR of \n included.
        for (int32_t size : {0, -7, 3}) ASSERT_EQ(call(nullptr, size), full) << text;
        for (int32_t size = 0; size <= full + 2; ++size) {
            std::string buffer(static_cast<size_t>(full) + 8, '#');
            const int32_t n = call(buffer.data(), size), want = std::min(size, full);
            EXPECT_EQ(std::to_string(n) + buffer, std::to_string(want) + text.substr(0, want) +
                                                      std::string(full + 8 - want, '#'))
                << size;
        }
    }
}

// The decimal-mark form is set once per call: the second pass starts with the mark the first
// ended with. A gap in the positions gives no text at all.
TEST(FormatEngine, DecimalMarksAndPositions) {
    double half = 0.5;
    uint8_t pq[] = {2, 'p', 'q'};
    int16_t quad[4] = {1, 2, 3, 4};
    ExpectRows(
        {Row(Format("%,;%f|%.1f", 1.5, 2.25), "1,500000|2,2"),
         Row(Format("%,;%.1f%;|%.1f", 1.5, 1.5), "1,5|1.5"),
         Row(Format("%\\2C;%.2f|%';%.1{fD}f", 0.5, &half), "0,50|0'5"),
         Row(Format("%,;%d|%x", 1234, 255), "1234|FF"),
         Row(Format("%1$.1f %,;%1$.1f", 0.5), "0,5 0,5"),
         Row(Format("%1$s %2$d %1$s", "a", 7), "a 7 a"),
         Row(Format("%2$.1f|%1$5d|%1$-5d|", 42, 1.25), "1.2|   42|42   |"),
         Row(Format("%1$p %2$q %3$r %4$4c %5$lx", pq, (1 << 16) | 2, quad, 0x64636261, -1),
             "pq (1,2) (1, 2, 3, 4) abcd FFFFFFFF"),
         Row(Format("%10$d%9$d%8$d%7$d%6$d%5$d%4$d%3$d%2$d%1$d", 0, 1, 2, 3, 4, 5, 6, 7, 8, 9),
             "9876543210"),
         Row(Format("ab%2$d", 1, 2), ""), Row(Format("%1$d%3$d", 1, 2, 3), "")});
    // The first pass stops at the limit too: literal text can fill a small buffer before a
    // position is recorded, and the gap then fails the binding.
    char buffer[4];
    EXPECT_EQ(StrFormatN(buffer, 1, "%2$s-%1$d", 5, "x"), 0);
    EXPECT_EQ(StrFormatN(buffer, 3, "%2$s-%1$d", 5, "x"), 3);
    // What the counting call gives is all a writing call writes, also when the binding fails or
    // a specifier fails in a format that holds a `$`: a buffer sized by the count is enough.
    gFailureNoExit = 1;
    gFailureToHost = 0;
    const char* const formats[] = {"abc%2$d", "ab\\n%1$d%3$d", "ab%1$d%k",
                                   "$%d%k",   "%d $",          "x%1$d %d"};
    for (const char* format : formats) {
        int32_t n = StrFormat(nullptr, format, 7, 8, 9);
        std::string buffer(static_cast<size_t>(n) + 8, '#');
        EXPECT_EQ(StrFormat(buffer.data(), format, 7, 8, 9), n) << format;
        EXPECT_EQ(buffer.substr(size_t(n)), std::string(1, '\0') + std::string(7, '#')) << format;
    }
    ExpectRows({Row(Format("ab%1$d%k", 1), "ab"), Row(Format("$%d%k", 5), "$5")});
    gFailureNoExit = 0;
    gFailureToHost = 1;
}

// Each specifier failure is reported; the report ends the process with status 1.
TEST(FormatEngineDeathTest, SpecifierFailures) {
    // clang-format off
    const char* const formats[] = {
        "%k", "%X", "%i", "%n", "%a", "%h", "%l", "%ld%lh", "%5", "%-5", "%.3", "%{", "%{i", "%{iB",
        "%1$", "%0$d", "%11$d", "%1${*}d", "%1$d %d", "%d %1$d", "%1$d %1$ld", "%1$s %1$d",
        "%1$c %1$4c", "%[;d", "%\\s;d", "%5;", "%2147483648$d"};
    // clang-format on
    for (const char* format : formats) {
        char buffer[64];
        EXPECT_EXIT(StrFormatN(buffer, sizeof buffer, format, 1, 2, 3),
                    ::testing::ExitedWithCode(1), "Failure")
            << format;
    }
}

TEST(Escapes, ParseAndEmitTables) {
    // What follows the backslash, the length given, the byte read and the bytes it took.
    // clang-format off
    const struct { const char* text; int32_t length; uint8_t byte; int32_t consumed; } cases[] = {
        {"b", 1, 8, 1}, {"f", 1, 12, 1}, {"n", 1, 10, 1}, {"r", 1, 13, 1}, {"s", 1, 32, 1},
        {"t", 1, 9, 1}, {"\\", 1, '\\', 1}, {"a", 1, 'a', 1}, {"41x", 3, 0x41, 2},
        {"FF", 2, 0xFF, 2}, {"7G", 2, 7, 1}, {"9f", 2, 9, 1}, {"3C4", 3, 0x3C, 2},
        {"A0", 2, 0xA0, 2}, {"e", 1, 'e', 1}, {"", 0, '\\', 0}, {"41", 1, 4, 1}};
    // clang-format on
    for (const auto& c : cases) {
        const uint8_t* start = reinterpret_cast<const uint8_t*>(c.text);
        const uint8_t* p = start;
        EXPECT_EQ(ParseEscape(&p, start + c.length), c.byte) << c.text;
        EXPECT_EQ(p - start, c.consumed) << c.text;
    }
    // Named codes, printable ASCII as itself, other bytes in hex. The wide form has no hex form:
    // what isn't named goes out as itself.
    // clang-format off
    const struct { uint16_t c; std::string text; } emits[] = {
        {8, "\\b"}, {9, "\\t"}, {10, "\\n"}, {12, "\\f"}, {13, "\\r"}, {32, "\\s"}, {92, "\\\\"},
        {33, "!"}, {'a', "a"}, {126, "~"}, {0, "\\00"}, {11, "\\0B"}, {31, "\\1F"}, {127, "\\7F"},
        {200, "\\C8"}, {0x263A, ""}};
    // clang-format on
    for (const auto& c : emits) {
        uint8_t buffer[4] = {}, *out = buffer;
        if (c.c < 256) {
            const int32_t n = EmitEscape(uint8_t(c.c), &out);
            EXPECT_EQ(std::string(buffer, out), c.text);
            EXPECT_TRUE(n == out - buffer && n == EmitEscape(uint8_t(c.c), nullptr)) << c.c;
        }
        const std::u16string want =
            c.text.size() == 2 ? u"\\" + std::u16string(1, c.text[1]) : std::u16string(1, c.c);
        uint16_t wide[3] = {0xEEEE, 0xEEEE, 0xEEEE}, *w = wide;
        const int32_t bytes = EmitEscapeWide(c.c, &w);
        EXPECT_EQ(std::u16string(wide, wide + 3), want + std::u16string(3 - want.size(), 0xEEEE));
        EXPECT_TRUE(bytes == 2 * (w - wide) && w == wide + want.size() &&
                    bytes == EmitEscapeWide(c.c, nullptr))
            << c.c;
    }
}

// The PStr form cuts at 255; a failed resize gives the handle back untouched; a failed
// allocation gives no handle and no notification.
TEST(FormatWrappers, StringFormsFileAndPathText) {
    char buffer[32];
    uint8_t result[256];
    const uint8_t pformat[] = {4, '%', '0', '3', 'x'};
    Handle h = StrFormatHandle(nullptr, "%s-%d", "abc", 42);
    ExpectRows({Row(StrFormat(buffer, "%s=%d", "x", 12), 4), Row(buffer, "x=12"),
                Row(StrFormat(nullptr, "%5d\\n", 1), 7), Row(StrFormatP(result, "%300d", 1), 255),
                Row(result[0], 255), Row(result[255], ' '),
                Row(StrFormatPP(result, pformat, 10), 3),
                Row(std::string(reinterpret_cast<char*>(result + 1), result[0]), "00A"),
                Row(StrFormatFromP(buffer, pformat, 10), 3), Row(buffer, "00A"),
                Row(Contents(h), std::string("abc-42", 7)),
                Row(StrFormatHandle(h, "%d", 5) == h, 1), Row(Contents(h), std::string("5", 2)),
                Row((plat::FailAllocationAt(1), StrFormatHandle(h, "%400s", "long")) == h, 1),
                Row(Contents(h), std::string("5", 2)),
                Row((plat::FailAllocationAt(1), StrFormatHandle(nullptr, "%d", 1)) == nullptr, 1),
                Row(StrFormatNotify(3, "note %d", 9), 6),
                Row((plat::FailAllocationAt(1), StrFormatNotify(3, "note %d", 9)), 0)});
    MemDisposeHandle(h);
    LStrHandle lh = nullptr, none = nullptr;
    ExpectRows({Row(StrFormatSetLStr(&lh, "%s:%d", "n", 1), MgNoError),
                Row(Contents(reinterpret_cast<Handle>(lh)), LStrBytes("n:1")),
                Row(StrFormatAppendLStr(lh, "+%x\\n", 255), MgNoError),
                Row(Contents(reinterpret_cast<Handle>(lh)), LStrBytes("n:1+FF\r\n")),
                Row(StrFormatSetLStr(&lh, "%.2s", "xyz"), MgNoError), Row(LText(lh), "xy"),
                Row((plat::FailAllocationAt(1), StrFormatAppendLStr(lh, "%500d", 1)), MgNoMemory),
                Row(LText(lh), "xy"),
                Row((plat::FailAllocationAt(1), StrFormatSetLStr(&none, "x")), MgNoMemory),
                Row(none == nullptr, 1)});
    MemDisposeHandle(reinterpret_cast<Handle>(lh));
    // Lines into a file; a failed allocation or write (a full disk) adds nothing.
    auto toPath = [](const std::string& text) {
        Path p = nullptr;
        EXPECT_EQ(
            FTextToPath(reinterpret_cast<const uint8_t*>(text.data()), int32_t(text.size()), &p),
            MgNoError);
        return p;
    };
    TempDir dir;
    const std::string name = (dir.path / "out.txt").string();
    FileRef ref = 0;
    Path p = toPath(name);
    ASSERT_EQ(FMCreateOver(&ref, p, 0666, FMModeWrite, FMShareAll, 0), MgNoError);
    FPathRelease(p);
    auto full = [] { plat::FailFileOpAt(plat::kFileWrite, 1, MgDiskFull); };
    ExpectRows({Row(StrFormatFile(ref, "%s %d\\n", "line", 1), 8),
                Row(StrFormatFileStatus(ref, "[%3d]", 2), MgNoError),
                Row(StrFormatFileStatus(ref, ""), MgNoError),
                Row((plat::FailAllocationAt(1), StrFormatFile(ref, "%d", 1)), -1),
                Row((plat::FailAllocationAt(1), StrFormatFileStatus(ref, "%d", 1)), MgNoMemory),
                Row((full(), StrFormatFile(ref, "%d", 1)), -1),
                Row((full(), StrFormatFileStatus(ref, "%d", 1)), MgDiskFull),
                Row(StrFormatFile(0, "%d", 1), -1)});
    FMClose(ref);
    EXPECT_EQ(SlurpFile(name), "line 1\r\n[  2]");
    // Path text of the host syntax: 252 bytes fit, 253 give the empty text. No padding, and the
    // limit alone cuts it.
    // Built by appending: GCC 12 at -O3 warns falsely (-Wrestrict) about "/" + std::string.
    for (const std::string& text :
         {std::string(1, '/').append(251, 'n'), std::string(1, '/').append(252, 'n'),
          std::string(1, '/').append(200, 'a').append(1, '/').append(50, 'b'),
          std::string(1, '/').append(200, 'a').append(1, '/').append(51, 'b')}) {
        const bool printed = text.size() == 252;
        Path p = toPath(text);
        char buffer[4];
        ExpectRows({Row(Format("<%z>", p), "<" + (printed ? text : "") + ">"),
                    Row(Format("%300.2z|", p), (printed ? text : "") + "|"),
                    Row(StrFormatN(buffer, 3, "%z", p), printed ? 3 : 0)});
        FPathRelease(p);
    }
    Path corrupt = MemNewHandleClear(4);
    (*corrupt)[0] = 9;  // no kind of path: its text fails and prints as nothing
    EXPECT_EQ(Format("<%z>|<%z>", static_cast<Path>(nullptr), corrupt), "<>|<>");
    FPathRelease(corrupt);
    plat::ResetFaults();
}

}  // namespace
