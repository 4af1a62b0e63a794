// Engineering and SI notation: the exponent form rendered with spare digits, then the mark
// moved so that the exponent is a multiple of three. Rounding may carry the exponent, so a
// number is rendered up to twice.
#include <string.h>

#include "mg/dbgtools.h"
#include "mg/numscan.h"
#include "mg/numtext.h"

MG_SOURCE_IDENTITY("mgsource\\support\\engineering.cpp", "$Revision: 1 $");

extern "C" const SIPrefix SIPrefixTable[17] = {
    {0, ""},   {-24, "y"}, {-21, "z"}, {-18, "a"}, {-15, "f"}, {-12, "p"},
    {-9, "n"}, {-6, "u"},  {-3, "m"},  {3, "k"},   {6, "M"},   {9, "G"},
    {12, "T"}, {15, "P"},  {18, "E"},  {21, "Z"},  {24, "Y"},
};

namespace {

const int32_t kScratchSize = 1024;

int32_t Wrap(uint32_t v) {
    return static_cast<int32_t>(v);
}

// The rendered exponent form and the exponent read from it (with the caller's prefix
// exponent added).
struct Rendered {
    char text[kScratchSize];
    int32_t length;
    int32_t ePos;  // index of the E, or -1
    int32_t x;
    int32_t r;  // x modulo 3, with the sign of x
};

void Render(Rendered* s, const void* number, NumType type, int32_t code, char mark,
            const int32_t* prefixExponent) {
    if (code > 63) code = 63;
    s->length = NumToText(number, type, code, s->text, kScratchSize, mark, nullptr);
    s->ePos = -1;
    for (int32_t i = 0; i < s->length; ++i) {
        if (s->text[i] == 'E' || s->text[i] == 'e') {
            s->ePos = i;
            break;
        }
    }
    if (s->ePos < 0) return;
    const char* p = s->text + s->ePos + 1;
    s->x = ScanInt(&p, s->length - s->ePos - 1, NumIL);
    // The caller's exponent may be anything: the sum wraps in 32 bits, as the machine's does.
    if (prefixExponent)
        s->x = Wrap(static_cast<uint32_t>(s->x) + static_cast<uint32_t>(*prefixExponent));
    s->r = s->x % 3;
}

// Steps shared by both notations: render with spare digits, read the exponent, render again
// with the digits the mantissa will show. False when the text has no exponent.
bool RenderForNotation(Rendered* s, const void* number, NumType type, int32_t frac, char mark,
                       const int32_t* prefixExponent) {
    Render(s, number, type, frac + 3, mark, prefixExponent);
    if (s->ePos < 0) return false;
    if (s->r == 0 || s->r == 1 || s->r == -2) {
        Render(s, number, type, frac + 1 + (s->r != 0 ? 1 : 0), mark, prefixExponent);
        if (s->ePos < 0) return false;
    }
    return true;
}

// The mantissa with the mark moved r places right: sign and integer digits, r digits, the
// mark (only with frac), then frac digits; zeros stand in for missing digits.
int32_t WriteMantissa(const Rendered& s, int32_t r, int32_t frac, char* out, int32_t outSize,
                      char mark) {
    int32_t n = 0;
    auto put = [&](char c) {
        if (n < outSize) out[n] = c;
        ++n;
    };
    int32_t i = 0;
    for (; i < s.ePos && s.text[i] != mark; ++i) put(s.text[i]);
    if (i < s.ePos) ++i;  // past the mark
    auto next = [&]() { return i < s.ePos ? s.text[i++] : '0'; };
    for (int32_t j = 0; j < r; ++j) put(next());
    if (frac > 0) put(mark);
    for (int32_t j = 0; j < frac; ++j) put(next());
    return n;
}

void CopyResult(const Rendered& s, char* out, int32_t outSize) {
    if (outSize <= 0) return;
    int32_t n = s.length < outSize - 1 ? s.length : outSize - 1;
    memcpy(out, s.text, static_cast<size_t>(n));
    out[n] = 0;
}

void Terminate(char* out, int32_t n, int32_t outSize) {
    if (n < outSize) out[n] = 0;
}

}  // namespace

extern "C" {

int32_t NumToEngineering(const void* number, NumType type, int32_t frac, int32_t outSize, char* out,
                         char mark, int32_t* prefixExponent) {
    if (prefixExponent && *prefixExponent == 100) prefixExponent = nullptr;
    Rendered s;
    if (!RenderForNotation(&s, number, type, frac, mark, prefixExponent)) {
        CopyResult(s, out, outSize);
        return s.length;
    }
    if (s.r == 0 && !prefixExponent) {
        CopyResult(s, out, outSize);
        return s.length;
    }
    if (outSize < s.length + 6) MG_FAIL();
    int32_t r = s.r < 0 ? s.r + 3 : s.r;
    int32_t x = Wrap(static_cast<uint32_t>(s.x) - static_cast<uint32_t>(r));
    int32_t n = WriteMantissa(s, r, frac, out, outSize, mark);
    if (prefixExponent) {
        if (x >= -24 && x < 25) {
            *prefixExponent = x;
            Terminate(out, n, outSize);
            return n;
        }
        *prefixExponent = 0;
    }
    char digits[16];
    int32_t count = UInt32ToDecimalText(
        x < 0 ? 0u - static_cast<uint32_t>(x) : static_cast<uint32_t>(x), digits);
    auto put = [&](char c) {
        if (n < outSize) out[n] = c;
        ++n;
    };
    put(s.text[s.ePos]);
    put(x < 0 ? '-' : '+');
    for (int32_t j = 0; j < count; ++j) put(digits[j]);
    Terminate(out, n, outSize);
    return n;
}

int32_t NumToSI(const void* number, NumType type, int32_t frac, int32_t outSize, char* out,
                char mark, int32_t* prefixExponent) {
    if (prefixExponent && *prefixExponent == 100) return -1;
    Rendered s;
    if (!RenderForNotation(&s, number, type, frac, mark, prefixExponent)) {
        CopyResult(s, out, outSize);
        return s.length;
    }
    int32_t r = s.r < 0 ? s.r + 3 : s.r;
    int32_t x = Wrap(static_cast<uint32_t>(s.x) - static_cast<uint32_t>(r));
    if (x < -24 || x >= 25) return -2;
    int32_t n = WriteMantissa(s, r, frac, out, outSize, mark);
    if (prefixExponent) {
        *prefixExponent = x;
        Terminate(out, n, outSize);
        return n;
    }
    for (const SIPrefix& p : SIPrefixTable) {
        if (p.exponent != x) continue;
        for (const char* c = p.text; *c; ++c, ++n)
            if (n < outSize) out[n] = *c;
        Terminate(out, n, outSize);
        return n;
    }
    return -2;
}

int32_t NumToSIOrEngineering(const void* number, NumType type, int32_t frac, int32_t outSize,
                             char* out, char mark, int32_t* prefixExponent) {
    int32_t n = NumToSI(number, type, frac, outSize, out, mark, prefixExponent);
    if (n == -1) return NumToEngineering(number, type, frac, outSize, out, mark, nullptr);
    if (n == -2) return NumToEngineering(number, type, frac, outSize, out, mark, prefixExponent);
    return n;
}

}  // extern "C"
