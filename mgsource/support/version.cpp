// The text of a packed version number: major and minor nibbles, bug-fix nibble, a stage
// letter and a two-digit build.
#include "mg/support.h"

namespace {
char Digit(uint32_t nibble) {
    return "0123456789ABCDEF"[nibble & 15];
}
}  // namespace

extern "C" {

PStr VersionText(uint32_t version, PStr result) {
    char* p = reinterpret_cast<char*>(result) + 1;
    char* const start = p;
    uint32_t n1 = version >> 28, n2 = (version >> 24) & 15, n3 = (version >> 20) & 15,
             n4 = (version >> 16) & 15, stage = (version >> 8) & 0xFF, build = version & 0xFF;
    if (n1) *p++ = Digit(n1);
    *p++ = Digit(n2);
    *p++ = '.';
    *p++ = Digit(n3);
    if (n4) {
        *p++ = '.';
        *p++ = Digit(n4);
    }
    char letter = stage == 0x20 ? 'd' : stage == 0x40 ? 'a' : stage == 0x60 ? 'b' : 0;
    if (letter) {
        *p++ = letter;
        uint32_t high = build >> 4, low = build & 15;
        if (high) *p++ = Digit(high);
        if (low || high) *p++ = Digit(low);
    }
    result[0] = static_cast<uint8_t>(p - start);
    return result;
}

}  // extern "C"
