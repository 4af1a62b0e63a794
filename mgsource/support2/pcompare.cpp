// Comparisons of PStr, LStr, byte spans and NUL-terminated text. Folding is CharToLower of one
// character, applied only to bytes that differ.
#include "mg/ansi.h"
#include "mg/pstring.h"

namespace {

// Difference of the first differing bytes over n, folded when asked; 0 when none differ.
int32_t SpanDiff(const uint8_t* a, const uint8_t* b, int32_t n, bool noCase) {
    for (int32_t i = 0; i < n; ++i) {
        if (a[i] == b[i]) continue;
        int32_t d = noCase ? static_cast<int32_t>(CharToLower(a[i])) -
                                 static_cast<int32_t>(CharToLower(b[i]))
                           : a[i] - b[i];
        if (d != 0) return d;
    }
    return 0;
}

// The order of two spans with the null rules of the LStr comparisons.
int32_t SpanOrder(const uint8_t* a, int32_t aLength, const uint8_t* b, int32_t bLength, bool aNull,
                  bool bNull, bool noCase) {
    if (aNull || bNull) {
        int32_t other = aNull ? bLength : aLength;
        if (other == 0) return 0;
        return aNull ? -1 : 1;
    }
    int32_t d = SpanDiff(a, b, MinInt32(aLength, bLength), noCase);
    return d != 0 ? d : aLength - bLength;
}

int32_t LOrder(const LStr* a, const LStr* b, bool noCase) {
    if (a == b) return 0;
    return SpanOrder(a ? a->text : nullptr, a ? a->count : 0, b ? b->text : nullptr,
                     b ? b->count : 0, a == nullptr, b == nullptr, noCase);
}

int32_t LSame(const LStr* a, const LStr* b, bool noCase) {
    if (a == b) return 1;
    int32_t na = a ? a->count : 0, nb = b ? b->count : 0;
    if (na != nb) return 0;
    return LOrder(a, b, noCase) == 0;
}

int32_t HandleLength(LStrHandle h) {
    return h ? (*h)->count : 0;
}

int32_t HOrder(LStrHandle a, LStrHandle b, bool noCase) {
    int32_t na = HandleLength(a), nb = HandleLength(b);
    if (na == 0 || nb == 0) return na - nb;
    return LOrder(*a, *b, noCase);
}

int32_t POrder(ConstPStr a, ConstPStr b, bool noCase) {
    if (a == b) return 0;
    int32_t d = SpanDiff(a + 1, b + 1, MinInt32(a[0], b[0]), noCase);
    return d != 0 ? d : a[0] - b[0];
}

ConstPStr Deref(const void* p) {
    return *static_cast<const ConstPStr*>(p);
}

}  // namespace

extern "C" {

int32_t PStringOrder(ConstPStr a, ConstPStr b) {
    return POrder(a, b, false);
}
int32_t PStringSame(ConstPStr a, ConstPStr b) {
    return a[0] == b[0] && POrder(a, b, false) == 0;
}
int32_t PStringOrderNoCase(ConstPStr a, ConstPStr b) {
    return POrder(a, b, true);
}
int32_t PStringSameNoCase(ConstPStr a, ConstPStr b) {
    return a[0] == b[0] && POrder(a, b, true) == 0;
}

int32_t PStringOrderIndirect(const void* a, const void* b) {
    return PStringOrder(Deref(a), Deref(b));
}
int32_t PStringSameIndirect(const void* a, const void* b) {
    return PStringSame(Deref(a), Deref(b));
}
int32_t PStringOrderNoCaseIndirect(const void* a, const void* b) {
    return PStringOrderNoCase(Deref(a), Deref(b));
}
int32_t PStringSameNoCaseIndirect(const void* a, const void* b) {
    return PStringSameNoCase(Deref(a), Deref(b));
}

int32_t LStringOrder(const LStr* a, const LStr* b) {
    return LOrder(a, b, false);
}
int32_t LStringSame(const LStr* a, const LStr* b) {
    return LSame(a, b, false);
}
int32_t LStringOrderNoCase(const LStr* a, const LStr* b) {
    return LOrder(a, b, true);
}
int32_t LStringSameNoCase(const LStr* a, const LStr* b) {
    return LSame(a, b, true);
}

int32_t LHandleOrder(LStrHandle a, LStrHandle b) {
    return HOrder(a, b, false);
}
int32_t LHandleSame(LStrHandle a, LStrHandle b) {
    return HandleLength(a) == HandleLength(b) && HOrder(a, b, false) == 0;
}
int32_t LHandleOrderNoCase(LStrHandle a, LStrHandle b) {
    return HOrder(a, b, true);
}

int32_t BytesOrder(const uint8_t* a, int32_t aLength, const uint8_t* b, int32_t bLength) {
    if (a == b) return 0;
    return SpanOrder(a, aLength, b, bLength, a == nullptr, b == nullptr, false);
}

int32_t BytesOrderNoCase(const uint8_t* a, int32_t aLength, const uint8_t* b, int32_t bLength) {
    if (a == b) return 0;
    return SpanOrder(a, aLength, b, bLength, a == nullptr, b == nullptr, true);
}

int32_t TextOrderNoCaseN(const char* a, const char* b, int32_t n) {
    const uint8_t* ua = reinterpret_cast<const uint8_t*>(a);
    const uint8_t* ub = reinterpret_cast<const uint8_t*>(b);
    for (int32_t i = 0; i < n; ++i) {
        if (ua[i] == 0 || ub[i] == 0) {
            if (ua[i] == 0) return -static_cast<int32_t>(ub[i]);
            return 1;
        }
        if (ua[i] != ub[i]) {
            int32_t d =
                static_cast<int32_t>(CharToLower(ua[i])) - static_cast<int32_t>(CharToLower(ub[i]));
            if (d != 0) return d;
        }
    }
    return 0;
}

int32_t TextSameNoCaseN(const char* a, const char* b, int32_t n) {
    return TextOrderNoCaseN(a, b, n) == 0;
}

int32_t MemOrder(const void* a, const void* b, int32_t n) {
    return SpanDiff(static_cast<const uint8_t*>(a), static_cast<const uint8_t*>(b), n, false);
}

int32_t TextContainsNoBlanks(const char* text, const char* pattern) {
    if (text[0] == 0) return 0;
    for (int32_t start = 0; text[start]; ++start) {
        int32_t i = start, j = 0;
        for (; pattern[j]; ++i, ++j) {
            while (text[i] == ' ' || text[i] == '\t') ++i;
            if (text[i] == 0 || CharToLower(static_cast<uint8_t>(text[i])) !=
                                    CharToLower(static_cast<uint8_t>(pattern[j])))
                break;
        }
        if (pattern[j] == 0) return 1;
    }
    return 0;
}

}  // extern "C"
