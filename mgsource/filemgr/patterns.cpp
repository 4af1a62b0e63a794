// Name patterns with the matching rules of a DOS directory search, and the placeholders for
// services a host doesn't have.
#include "mg/ansi.h"
#include "mg/filemgr.h"
#include "mg/textutil.h"

namespace {

constexpr uint8_t kEscape = '`';
constexpr int32_t kSpan = 256;

bool HasDot(const uint8_t* text, int32_t length) {
    for (int32_t i = 0; i < length; ++i)
        if (text[i] == '.') return true;
    return false;
}

// Copies a span into a buffer of kSpan bytes, leaving room for the suffix of `extra` bytes.
int32_t CopySpan(const uint8_t* text, int32_t length, uint8_t* buffer, int32_t extra) {
    if (length < 0) length = 0;
    if (length > kSpan - extra) length = kSpan - extra;
    BlockMove(text, buffer, length);
    return length;
}

}  // namespace

extern "C" {

// A pattern without a dot matches any extension (".*" is added), and a name without a dot has
// an empty one ("." is added): so "a" fits "a.txt" and "*.*" fits "readme". Spans longer
// than a name can be are cut to what the buffers hold.
int32_t FNameFitsPattern(const uint8_t* pattern, const uint8_t* name, int32_t patternLength,
                         int32_t nameLength) {
    uint8_t p[kSpan], n[kSpan];
    int32_t pl = CopySpan(pattern, patternLength, p, 2);
    int32_t nl = CopySpan(name, nameLength, n, 1);
    if (!HasDot(p, pl)) {
        p[pl++] = '.';
        p[pl++] = '*';
    }
    if (!HasDot(n, nl)) n[nl++] = '.';
    return WildMatch(p, n, pl, nl, nullptr, 0, 0);
}

int32_t FPatternHasWildcards(const uint8_t* pattern, int32_t* offset, int32_t length) {
    return FindWildcard(pattern, offset, length, kEscape);
}

MgStatus FUnavailableLookup(void) {
    return MgNotFound;
}

MgStatus FUnsupportedCall(void) {
    return MgNotSupported;
}

}  // extern "C"
