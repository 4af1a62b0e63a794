// Operations on NUL-terminated text. Bytes compare as unsigned values.
#include "mg/ansi.h"

namespace {

inline uint8_t At(const char* s, int32_t i) {
    return static_cast<uint8_t>(s[i]);
}

// The exact walk, bounded by `limit` (negative: unbounded). The end of `a` gives minus the
// next byte of `b`; the end of `b` gives 1, not a difference.
int32_t Compare(const char* a, const char* b, int32_t limit) {
    for (int32_t i = 0; limit < 0 || i < limit; ++i) {
        if (At(a, i) == 0) return -static_cast<int32_t>(At(b, i));
        if (At(b, i) == 0) return 1;
        if (At(a, i) != At(b, i)) return At(a, i) - At(b, i);
    }
    return 0;
}

// The folded walk: the difference of the first unequal lower-cased pair, ends included.
int32_t CompareNoCase(const char* a, const char* b, int32_t limit) {
    for (int32_t i = 0; limit < 0 || i < limit; ++i) {
        int32_t ca = static_cast<int32_t>(CharToLower(At(a, i)));
        int32_t cb = static_cast<int32_t>(CharToLower(At(b, i)));
        if (ca != cb) return ca - cb;
        if (ca == 0) return 0;
    }
    return 0;
}

}  // namespace

extern "C" {

int32_t StrLen(const char* s) {
    int32_t n = 0;
    while (s[n]) ++n;
    return n;
}

char* StrCpy(char* dest, const char* src) {
    BlockMove(src, dest, StrLen(src) + 1);
    return dest;
}

char* StrNCpy(char* dest, const char* src, int32_t n) {
    int32_t i = 0;
    for (; i < n && src[i]; ++i) dest[i] = src[i];
    for (; i < n; ++i) dest[i] = 0;
    return dest;
}

int32_t StrCat(char* dest, const char* src) {
    int32_t start = StrLen(dest), n = StrLen(src);
    BlockMove(src, dest + start, n + 1);
    return start + n;
}

int32_t StrCmp(const char* a, const char* b) {
    return Compare(a, b, -1);
}
int32_t StrEqual(const char* a, const char* b) {
    return StrCmp(a, b) == 0;
}

int32_t StrNCmp(const char* a, const char* b, int32_t n) {
    return n <= 0 ? 0 : Compare(a, b, n);
}
int32_t StrNEqual(const char* a, const char* b, int32_t n) {
    return StrNCmp(a, b, n) == 0;
}

int32_t StrCaseCmp(const char* a, const char* b) {
    return CompareNoCase(a, b, -1);
}

int32_t StrNCaseCmp(const char* a, const char* b, int32_t n) {
    return n <= 0 ? 0 : CompareNoCase(a, b, n);
}

}  // extern "C"
