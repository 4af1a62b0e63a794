// Conversions between NUL-terminated text, PStr and LStr, and the PStr copies.
#include "mg/ansi.h"
#include "mg/pstring.h"

extern "C" {

uint8_t gTempPString[256];

int32_t PStringToText(ConstPStr p, char* text) {
    BlockMove(p + 1, text, p[0]);
    text[p[0]] = 0;
    return p[0];
}

int32_t TextToPString(const char* text, PStr p) {
    int32_t n = 0;
    while (n < 255 && text[n]) ++n;
    BlockMove(text, p + 1, n);
    p[0] = static_cast<uint8_t>(n);
    return n;
}

int32_t LStringToPString(const LStr* l, PStr p) {
    int32_t n = l ? MinInt32(l->count, 255) : 0;
    if (n < 0) n = 0;
    if (n > 0) BlockMove(l->text, p + 1, n);
    p[0] = static_cast<uint8_t>(n);
    return n;
}

int32_t PStringToLString(ConstPStr p, LStr* l) {
    BlockMove(p + 1, l->text, p[0]);
    l->count = p[0];
    return p[0];
}

int32_t LStringToText(const LStr* l, char* text) {
    int32_t n = l && l->count > 0 ? l->count : 0;
    if (n > 0) BlockMove(l->text, text, n);
    text[n] = 0;
    return n;
}

int32_t TextToLString(const char* text, LStr* l) {
    int32_t n = text ? StrLen(text) : 0;
    if (n > 0) BlockMove(text, l->text, n);
    l->count = n;
    return n;
}

PStr TempPString(const char* text) {
    TextToPString(text, gTempPString);
    return gTempPString;
}

PStr PStringCopy(PStr dest, ConstPStr src) {
    BlockMove(src, dest, src[0] + 1);
    return dest;
}

// `size` counts the count byte too; the stored count is what was moved less one.
PStr PStringCopyLimited(PStr dest, ConstPStr src, int32_t size) {
    int32_t n = MinInt32(size, src[0] + 1);
    BlockMove(src, dest, n);
    dest[0] = static_cast<uint8_t>(n - 1);
    return dest;
}

int32_t PStringAppend(PStr dest, ConstPStr src) {
    int32_t n = MinInt32(src[0], 255 - dest[0]);
    BlockMove(src + 1, dest + 1 + dest[0], n);
    dest[0] = static_cast<uint8_t>(dest[0] + n);
    return dest[0];
}

}  // extern "C"
