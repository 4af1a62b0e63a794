// Float scanning: the SI prefix pre-pass, the end of the number, and the crossing through
// the packed decimal form.
#include "mg/numscan.h"
#include "mg/support.h"

namespace {

const int32_t kScratchSize = 1024;

// The value when no number is found: a constant that nothing writes.
const Extended gNoNumber = 0;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsWord(const char* p, const char* end, const char* w) {
    if (end - p < 3) return false;
    for (int i = 0; i < 3; ++i)
        if (p[i] != w[i] && p[i] != w[i] - 32) return false;
    return true;
}

// Blanks, sign, blanks; digits, mark, digits. The count of digits is returned.
const char* SkipMantissa(const char* p, const char* end, char mark, int32_t* digits) {
    while (p < end && *p == ' ') ++p;
    if (p < end && (*p == '+' || *p == '-')) ++p;
    while (p < end && *p == ' ') ++p;
    *digits = 0;
    if (IsWord(p, end, "inf") || IsWord(p, end, "nan")) {
        *digits = -1;
        return p;
    }
    while (p < end && IsDigit(*p)) ++p, ++*digits;
    if (p < end && *p == mark) {
        ++p;
        while (p < end && IsDigit(*p)) ++p, ++*digits;
    }
    return p;
}

}  // namespace

extern "C" {

const char* FindPrefixEnd(const char* text, int32_t length, char mark) {
    const char* const end = text + (length > 0 ? length : 0);
    int32_t digits;
    const char* p = SkipMantissa(text, end, mark, &digits);
    if (digits <= 0) return text;
    // Blanks may stand between the number and its prefix.
    while (p < end && *p == ' ') ++p;
    if (p == end) return text;
    for (int i = 1; i < 17; ++i) {
        if (p < end && *p == SIPrefixTable[i].text[0]) {
            ++p;
            if (p == end || *p == ' ') return p;
        }
    }
    return text;
}

int32_t ExpandPrefix(const char* text, int32_t length, char* out, int32_t outSize, char mark) {
    if (length <= 0 || outSize < length + 4) return 0;
    const char* p = text;
    const char* const end = text + length;
    int32_t n = 0;
    while (p < end && *p == ' ') ++p;
    if (p < end && (*p == '+' || *p == '-')) out[n++] = *p++;
    while (p < end && *p == ' ') ++p;
    int32_t digits = 0;
    while (p < end && (IsDigit(*p) || *p == mark)) {
        digits += IsDigit(*p);
        out[n++] = *p++;
    }
    while (p < end && *p == ' ') ++p;
    if (digits == 0 || p == end) return 0;
    int32_t power = 0;
    bool found = false;
    for (int i = 1; i < 17 && !found; ++i) {
        if (*p == SIPrefixTable[i].text[0]) {
            power = SIPrefixTable[i].exponent;
            found = true;
        }
    }
    if (!found) return 0;
    ++p;
    while (p < end && *p == ' ') ++p;
    if (p != end) return 0;
    out[n++] = 'e';
    out[n++] = power < 0 ? '-' : '+';
    int32_t a = power < 0 ? -power : power;
    if (a >= 10) out[n++] = static_cast<char>('0' + a / 10);
    out[n++] = static_cast<char>('0' + a % 10);
    out[n] = 0;
    return n;
}

Extended ScanExtended(const char** position, int32_t length, char mark, int32_t withPrefix) {
    const char* text = *position;
    const char* scan = text;
    int32_t scanLength = length;
    const char* used = nullptr;
    char scratch[kScratchSize];
    if (withPrefix) {
        const char* prefixEnd = FindPrefixEnd(text, length, mark);
        if (prefixEnd != text) {
            int32_t n = ExpandPrefix(text, static_cast<int32_t>(prefixEnd - text), scratch,
                                     kScratchSize, mark);
            if (n > 0) {
                scan = scratch;
                scanLength = n;
                used = prefixEnd;
            }
        }
    }
    const char* end = FindNumberEnd(scan, scanLength, mark);
    Extended value = gNoNumber;
    if (end != scan) {
        DecimalNumber decimal;
        ScanDecimal(scan, static_cast<int32_t>(end - scan), &decimal, mark);
        value = DecimalToExtended(&decimal);
    }
    *position = used ? used : (scan == text ? end : text);
    return value;
}

void ScanFloatMark(const char** position, int32_t length, NumType type, void* out, char mark) {
    Extended value = ScanExtended(position, length, mark, (type >> 16) != 0);
    if (out) NumStore(type & 0xFF, out, ExtendedPair{value, 0});
}

void ScanFloat(const char** position, int32_t length, int32_t useSystemMark, NumType type,
               void* out) {
    ScanFloatMark(position, length, type, out, useSystemMark ? SystemDecimalMark : '.');
}

}  // extern "C"
