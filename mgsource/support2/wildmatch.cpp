// Wildcard matching with an escape and a barrier character, and the character stepping that
// all text walks of this folder use.
#include "mg/dbgtools.h"
#include "mg/pstring.h"
#include "mg/textutil.h"

MG_SOURCE_IDENTITY("mgsource\\support2\\wildmatch.cpp", "$Revision: 1 $");

namespace {

constexpr uint8_t kDefaultEscape = 0x60;  // grave accent

struct MatchRules {
    TextCompareN compare;
    uint8_t escape;
    uint8_t barrier;  // 0: none
};

int32_t Match(const uint8_t* pattern, const uint8_t* text, int32_t patternLength,
              int32_t textLength, const MatchRules& rules) {
    int32_t p = 0;
    int32_t t = 0;
    int32_t found = FindWildcard(pattern, &p, patternLength, rules.escape);
    if ((!found && patternLength != textLength) || p > textLength) return 0;

    // The literal stretch before the first special character must be as long in the text.
    int32_t result = 1;
    if (p > 0) {
        result = rules.compare(reinterpret_cast<const char*>(pattern),
                               reinterpret_cast<const char*>(text), p) == 0;
        t = p;
    }
    if (!result || !found) return result;

    uint8_t c = pattern[p];
    if (c == '?') {
        if (t >= textLength || (rules.barrier != 0 && text[t] == rules.barrier)) return 0;
        p += 1;
        t = TextStep(text, t, nullptr);
        if (t > textLength) return 0;
        return Match(pattern + p, text + t, patternLength - p, textLength - t, rules);
    }
    if (c == rules.escape) {
        if (p < patternLength - 1) p += 1;
        int32_t n = TextStep(pattern, p, nullptr) - p;
        if (p + n > patternLength) n = patternLength - p;
        // Strictly below: an escaped character can't be the last one of the text.
        if (t + n >= textLength) return 0;
        if (TextOrderNoCaseN(reinterpret_cast<const char*>(pattern + p),
                             reinterpret_cast<const char*>(text + t), n) != 0) {
            return 0;
        }
        p += n;
        t += n;
        return Match(pattern + p, text + t, patternLength - p, textLength - t, rules);
    }
    // '*': a doubled star has no stop character and crosses the barrier.
    p += 1;
    uint8_t stop = rules.barrier;
    if (p < patternLength && pattern[p] == '*') {
        p += 1;
        stop = 0;
    }
    if (p >= patternLength) {
        if (stop == 0) return 1;
        for (int32_t i = t; i < textLength; i = TextStep(text, i, nullptr)) {
            if (text[i] == stop) return 0;
        }
        return 1;
    }
    for (int32_t i = t; i < textLength; i = TextStep(text, i, nullptr)) {
        if (Match(pattern + p, text + i, patternLength - p, textLength - i, rules)) return 1;
        if (stop != 0 && text[i] == stop) return 0;
    }
    return 0;
}

}  // namespace

int32_t TextStep(const uint8_t* text, int32_t index, const void* fontTable) {
    if (fontTable == nullptr || text == nullptr) return index + 1;
    const uint8_t* widths = static_cast<const uint8_t*>(fontTable);
    return index + (widths[text[index]] == 2 ? 2 : 1);
}

int32_t FindWildcard(const uint8_t* pattern, int32_t* position, int32_t length, uint8_t escape) {
    if (position == nullptr) return 0;
    int32_t p = *position;
    if (pattern == nullptr || p < 0) p = length;
    while (p < length) {
        uint8_t c = pattern[p];
        if (c == '*' || c == '?' || c == escape) {
            *position = p;
            return 1;
        }
        p = TextStep(pattern, p, nullptr);
    }
    *position = length > 0 ? length : 0;
    return 0;
}

int32_t WildMatch(const uint8_t* pattern, const uint8_t* text, int32_t patternLength,
                  int32_t textLength, TextCompareN compare, uint8_t escape, uint8_t barrier) {
    if (patternLength < 0 || textLength < 0) return 0;
    if ((pattern == nullptr && patternLength > 0) || (text == nullptr && textLength > 0)) {
        return 0;
    }
    MatchRules rules{compare ? compare : TextOrderNoCaseN, escape ? escape : kDefaultEscape,
                     barrier};
    return Match(pattern, text, patternLength, textLength, rules) ? 1 : 0;
}
