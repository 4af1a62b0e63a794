// Number text and number scanning. Input: an operation byte, then its fields:
//   0  NumToText: type word, code, buffer size (1 to 1024), mark, prefix flag and value, and
//      20 bytes of number (read as the type says, so any bit pattern of any width)
//   1  DecimalToText of 14 raw bytes of decimal form, with a code and a length
//   2  ExtendedToDecimal of 10 raw bytes with a digit count, then back and to text
//   3  the integer scanners, ScanNumberText and the float scanners on the rest as text
//   4  NumConvert of 20 bytes between two type words
// Buffers have exactly the size the call is given, so the sanitizer sees any byte beyond.
#include <stdlib.h>

#include <vector>

#include "fuzz_input.h"
#include "mg/math.h"
#include "mg/numscan.h"
#include "mg/numtext.h"

namespace {

// Any type word of 1 to 30 in the low byte: 0 and above 30 are reported failures that the
// conversions go on past.
NumType AnyType(fuzz::Input& in) {
    int32_t word = in.Int();
    int32_t low = (word & 0xFF) % 30 + 1;
    return (word & ~0xFF) | low;
}

void NumberToText(fuzz::Input& in) {
    NumType type = in.Int();
    int32_t code = in.Int();
    int32_t outSize = static_cast<int32_t>(in.Word() % 1024) + 1;
    char mark = static_cast<char>(in.Byte());
    bool withPrefix = in.Byte() & 1;
    int32_t prefix = in.Int();
    std::string bytes = in.Bytes(20);
    bytes.resize(20);
    alignas(16) uint8_t number[20];
    memcpy(number, bytes.data(), sizeof number);
    std::vector<char> out(static_cast<size_t>(outSize));
    int32_t n = NumToText(bytes[0] == 0x7F ? nullptr : number, type, code, out.data(), outSize,
                          mark, withPrefix ? &prefix : nullptr);
    if (n < -2) abort();
}

void DecimalText(fuzz::Input& in) {
    DecimalNumber d;
    std::string raw = in.Bytes(sizeof d);
    raw.resize(sizeof d);
    memcpy(&d, raw.data(), sizeof d);
    int32_t code = in.Int();
    int32_t maxLength = static_cast<int32_t>(in.Word() % 1024);
    std::vector<char> out(static_cast<size_t>(maxLength));
    int32_t n = DecimalToText(&d, code, out.data(), maxLength, '.');
    if (n < 0 || n > maxLength) abort();
    DecimalToExtended(&d);
}

void DecimalRoundTrip(fuzz::Input& in) {
    std::string raw = in.Bytes(10);
    raw.resize(10);
    int32_t digits = in.Int();
    Extended value = ExtendedRead(raw.data());
    DecimalNumber d;
    ExtendedToDecimal(value, digits, &d);
    DecimalToExtended(&d);
    char out[64];
    int32_t n = DecimalToText(&d, digits, out, sizeof out, ',');
    if (n < 0 || n > static_cast<int32_t>(sizeof out)) abort();
}

void Scanning(fuzz::Input& in) {
    NumType type = AnyType(in);
    int32_t code = in.Int();
    char mark = static_cast<char>(in.Byte());
    std::string text = in.Rest();
    int32_t length = static_cast<int32_t>(text.size());
    // A copy of exactly the text's size: scanners may not read beyond `length`.
    std::vector<char> exact(text.begin(), text.end());
    const char* start = exact.data();
    using Scanner = int32_t (*)(const char**, int32_t, NumType);
    for (Scanner scan : {ScanInt, ScanUInt, ScanHex, ScanOctal, ScanBinary}) {
        const char* p = start;
        scan(&p, length, type);
        if (p < start || p > start + length) abort();
    }
    alignas(16) uint8_t number[32];
    ScanNumberText(start, length, type, number, code);
    DecimalNumber d;
    ScanDecimal(start, length, &d, mark);
    DecimalToExtended(&d);
    const char* end = FindNumberEnd(start, length, mark);
    if (end < start || end > start + length) abort();
    const char* p = start;
    ScanFloatMark(&p, length, type, number, mark);
    if (p < start || p > start + length) abort();
    p = start;
    ScanExtended(&p, length, mark, 1);
    if (p < start || p > start + length) abort();
    char expanded[64];
    ExpandPrefix(start, length, expanded, sizeof expanded, mark);
}

void Convert(fuzz::Input& in) {
    NumType from = AnyType(in), to = AnyType(in);
    std::string bytes = in.Bytes(20);
    bytes.resize(20);
    alignas(16) uint8_t source[20], target[20];
    memcpy(source, bytes.data(), sizeof source);
    NumConvert(from, source, to, target);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::StartManagers(false);
    fuzz::Input in(data, size);
    switch (in.Byte() % 5) {
        case 0:
            NumberToText(in);
            break;
        case 1:
            DecimalText(in);
            break;
        case 2:
            DecimalRoundTrip(in);
            break;
        case 3:
            Scanning(in);
            break;
        default:
            Convert(in);
            break;
    }
    return 0;
}
