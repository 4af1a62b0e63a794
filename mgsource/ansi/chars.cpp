// Character classes (ASCII only) and case mapping (the host's code page, through the seam).
#include "mg/ansi.h"
#include "platform/platform.h"

extern "C" {

int32_t IsDigitChar(uint32_t c) {
    return c >= '0' && c <= '9';
}

int32_t IsAlphaChar(uint32_t c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

int32_t IsPunctChar(uint32_t c) {
    return (c >= 33 && c <= 47) || (c >= 58 && c <= 64) || (c >= 91 && c <= 96) ||
           (c >= 123 && c <= 126);
}

int32_t IsLowerChar(uint32_t c) {
    return CharToUpper(c) != c;
}
int32_t IsUpperChar(uint32_t c) {
    return CharToLower(c) != c;
}

// The host maps one character of up to 16 bits; a value beyond them comes back unchanged.
uint32_t CharToLower(uint32_t c) {
    return c > 0xFFFF ? c : plat::CharValueLower(static_cast<uint16_t>(c));
}
uint32_t CharToUpper(uint32_t c) {
    return c > 0xFFFF ? c : plat::CharValueUpper(static_cast<uint16_t>(c));
}

void BufToUpper(uint8_t* buffer, int32_t length) {
    for (int32_t i = 0; i < length; ++i) buffer[i] = plat::CharUpper(buffer[i]);
}

void BufToLower(uint8_t* buffer, int32_t length) {
    for (int32_t i = 0; i < length; ++i) buffer[i] = plat::CharLower(buffer[i]);
}

void LStrToUpper(LStrHandle text) {
    if (text && *text) BufToUpper((*text)->text, (*text)->count);
}

void LStrToLower(LStrHandle text) {
    if (text && *text) BufToLower((*text)->text, (*text)->count);
}

}  // extern "C"
