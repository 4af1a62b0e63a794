// The PStr hash and the suffix test.
#include "mg/ansi.h"
#include "mg/textutil.h"

uint32_t PStringHash(ConstPStr p, int32_t upperFirst) {
    if (p == nullptr || p[0] == 0) return 0;
    int32_t n = p[0];
    const uint8_t* bytes = p + 1;
    uint8_t upper[255];
    if (upperFirst) {
        memcpy(upper, bytes, static_cast<size_t>(n));
        BufToUpper(upper, n);
        bytes = upper;
    }
    // The object-file symbol hash: fold the top nibble back into bits 4 to 7 and clear it.
    uint32_t h = 0;
    for (int32_t i = 0; i < n; i++) {
        h = (h << 4) + bytes[i];
        uint32_t g = h & 0xF0000000u;
        if (g != 0) {
            // The arithmetic shift smears the sign; the mask leaves what the logical one gives.
            h ^= static_cast<uint32_t>(static_cast<int32_t>(g) >> 24) & 0xF0u;
            h &= 0x0FFFFFFFu;
        }
    }
    return h;
}

int32_t PStringEndsWith(ConstPStr p, const char* suffix) {
    if (p == nullptr || suffix == nullptr) return 0;
    int32_t n = static_cast<int32_t>(strlen(suffix));
    int32_t count = p[0];
    if (n > count) return 0;
    // Only the string is folded: the suffix is expected in lower case already.
    const uint8_t* tail = p + 1 + count - n;
    for (int32_t i = 0; i < n; i++) {
        if (CharToLower(tail[i]) != static_cast<uint8_t>(suffix[i])) return 0;
    }
    return 1;
}
