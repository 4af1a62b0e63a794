// Float text to the packed decimal form: a table-driven state machine with one lookup per
// character, keyed by the state's high byte and the character. At most 18 digits are kept
// and 4 exponent digits read; nothing is rounded here.
#include <string.h>

#include "mg/numscan.h"

namespace {

enum Action : uint8_t {
    kJunk,           // any other character: the state's own junk rule
    kEnd,            // stop, no value is formed
    kFinish,         // form the value
    kSign,           // a sign; to ScanSigned
    kPointFirst,     // a point before any digit
    kSkip,           // stay
    kFirstDigit,     // a digit 1-9 first: store, to ScanInteger
    kToExponent,     // E: to ScanExponentStart
    kInfinity,       // I or i: infinity test
    kNaN,            // N or n: NaN test
    kIntegerBlank,   // to ScanIntegerEnd
    kIntegerFinish,  // end of text after integer digits
    kIntegerPoint,   // point after integer digits
    kIntegerDigit,   // store, to ScanIntegerEnd at 18
    kIntegerE,       // E after integer digits
    kFractionBlank,  // to ScanFractionFull
    kFractionZero,   // stored only after a significant digit
    kFractionDigit,  // store, to ScanFractionFull at 18
    kDropPoint,      // point after 18 integer digits: the fraction is dropped
    kDropDigit,      // integer digit beyond 18: scale up instead
    kExponentSign,   // sign of the exponent
    kExponentDigit,  // add an exponent digit; at 4 finish
};

constexpr int kStates = 9;
// Index of a key: (state | character) - ScanStart.
constexpr int Key(int state, int c) {
    return (state | c) - ScanStart;
}

struct Table {
    uint8_t action[kStates * 256];
};

constexpr void Digits(Table& t, int state, Action zero, Action others) {
    t.action[Key(state, '0')] = zero;
    for (int c = '1'; c <= '9'; ++c) t.action[Key(state, c)] = others;
}

constexpr void Letter(Table& t, int state, char upper, Action a) {
    t.action[Key(state, upper)] = a;
    t.action[Key(state, upper + 32)] = a;
}

constexpr Table MakeTable() {
    Table t{};
    // ScanStart
    t.action[Key(ScanStart, 0)] = kEnd;
    t.action[Key(ScanStart, '+')] = kSign;
    t.action[Key(ScanStart, '-')] = kSign;
    t.action[Key(ScanStart, '.')] = kPointFirst;
    Digits(t, ScanStart, kSkip, kFirstDigit);
    Letter(t, ScanStart, 'E', kToExponent);
    Letter(t, ScanStart, 'I', kInfinity);
    Letter(t, ScanStart, 'N', kNaN);
    // ScanSigned
    t.action[Key(ScanSigned, 0)] = kEnd;
    t.action[Key(ScanSigned, ' ')] = kSkip;
    t.action[Key(ScanSigned, '.')] = kPointFirst;
    Digits(t, ScanSigned, kSkip, kFirstDigit);
    Letter(t, ScanSigned, 'E', kToExponent);
    Letter(t, ScanSigned, 'I', kInfinity);
    Letter(t, ScanSigned, 'N', kNaN);
    // ScanInteger
    t.action[Key(ScanInteger, 0)] = kIntegerFinish;
    t.action[Key(ScanInteger, ' ')] = kIntegerBlank;
    t.action[Key(ScanInteger, '.')] = kIntegerPoint;
    Digits(t, ScanInteger, kIntegerDigit, kIntegerDigit);
    Letter(t, ScanInteger, 'E', kIntegerE);
    // ScanFraction
    t.action[Key(ScanFraction, 0)] = kFinish;
    t.action[Key(ScanFraction, ' ')] = kFractionBlank;
    Digits(t, ScanFraction, kFractionZero, kFractionDigit);
    Letter(t, ScanFraction, 'E', kToExponent);
    // ScanIntegerEnd
    t.action[Key(ScanIntegerEnd, 0)] = kFinish;
    t.action[Key(ScanIntegerEnd, ' ')] = kSkip;
    t.action[Key(ScanIntegerEnd, '.')] = kDropPoint;
    Digits(t, ScanIntegerEnd, kDropDigit, kDropDigit);
    Letter(t, ScanIntegerEnd, 'E', kToExponent);
    // ScanExponentStart
    t.action[Key(ScanExponentStart, 0)] = kFinish;
    t.action[Key(ScanExponentStart, ' ')] = kSkip;
    t.action[Key(ScanExponentStart, '+')] = kExponentSign;
    t.action[Key(ScanExponentStart, '-')] = kExponentSign;
    Digits(t, ScanExponentStart, kExponentDigit, kExponentDigit);
    // ScanExponentSign
    t.action[Key(ScanExponentSign, 0)] = kFinish;
    t.action[Key(ScanExponentSign, ' ')] = kSkip;
    Digits(t, ScanExponentSign, kExponentDigit, kExponentDigit);
    // ScanExponentDigits
    t.action[Key(ScanExponentDigits, 0)] = kFinish;
    Digits(t, ScanExponentDigits, kExponentDigit, kExponentDigit);
    // ScanFractionFull
    t.action[Key(ScanFractionFull, 0)] = kFinish;
    t.action[Key(ScanFractionFull, ' ')] = kSkip;
    Digits(t, ScanFractionFull, kSkip, kSkip);
    Letter(t, ScanFractionFull, 'E', kToExponent);
    return t;
}

constexpr Table kTable = MakeTable();

bool SameLetter(char c, char lower) {
    return c == lower || c == lower - 32;
}

}  // namespace

extern "C" {

int32_t ScanDecimal(const char* text, int32_t length, DecimalNumber* decimal, char mark) {
    memset(decimal->digits, 0, sizeof decimal->digits);
    decimal->sign = 0;
    decimal->exponent = 0;
    decimal->mdigits = 1;
    if (length <= 0) return 0;

    int32_t result = 1, state = ScanStart;
    bool exponentNegative = false, significant = false;
    int32_t exponent = 0, exponentDigits = 0, count = 0, position = 0;
    uint8_t stored[18];
    const char* p = text;
    const char* const end = text + length;
    bool finish = false;

    while (state != ScanEnd) {
        char c = p < end ? *p : 0;
        if (c == mark && c != 0) c = '.';
        uint8_t action = kTable.action[Key(state, static_cast<uint8_t>(c))];
        if (action == kJunk) {
            result = 0;
            switch (state) {
                case ScanStart:
                case ScanFractionFull:
                    action = kSkip;
                    break;
                case ScanSigned:
                    action = kEnd;
                    break;
                case ScanInteger:
                    action = kIntegerFinish;
                    break;
                default:
                    action = kFinish;
                    break;
            }
        }
        switch (action) {
            case kEnd:
                state = ScanEnd;
                break;
            case kFinish:
                finish = true;
                state = ScanEnd;
                break;
            case kSign:
                if (c == '-') decimal->sign = DecimalSignNegative;
                state = ScanSigned;
                break;
            case kPointFirst:
                position = -1;
                state = ScanFraction;
                break;
            case kSkip:
                break;
            case kFirstDigit:
                stored[count++] = static_cast<uint8_t>(c - '0');
                state = ScanInteger;
                break;
            case kToExponent:
                state = ScanExponentStart;
                break;
            case kInfinity:
            case kNaN: {
                // Two more letters in either case, and nothing after them for a clean scan.
                result = 0;
                const char* q = p + 1;
                const char first = action == kInfinity ? 'n' : 'a';
                const char second = action == kInfinity ? 'f' : 'n';
                if (end - q >= 2 && SameLetter(q[0], first) && SameLetter(q[1], second)) {
                    decimal->exponent = static_cast<int16_t>(
                        action == kInfinity ? DecimalExponentInfinity : DecimalExponentNaN);
                    p = q + 1;  // the loop steps past the last letter
                    result = q + 2 == end ? 1 : 0;
                }
                state = ScanEnd;
                break;
            }
            case kIntegerBlank:
                state = ScanIntegerEnd;
                break;
            case kIntegerFinish:
                position = count - 1;
                finish = true;
                state = ScanEnd;
                break;
            case kIntegerPoint:
                position = count - 1;
                significant = true;
                state = ScanFraction;
                break;
            case kIntegerDigit:
                stored[count++] = static_cast<uint8_t>(c - '0');
                if (count == 18) {
                    position = count - 1;
                    state = ScanIntegerEnd;
                }
                break;
            case kIntegerE:
                position = count - 1;
                state = ScanExponentStart;
                break;
            case kFractionBlank:
                state = ScanFractionFull;
                break;
            case kFractionZero:
                if (significant) {
                    stored[count++] = 0;
                    if (count == 18) state = ScanFractionFull;
                } else {
                    --position;
                }
                break;
            case kFractionDigit:
                significant = true;
                stored[count++] = static_cast<uint8_t>(c - '0');
                if (count == 18) state = ScanFractionFull;
                break;
            case kDropPoint:
                state = ScanFractionFull;
                break;
            case kDropDigit:
                ++position;
                break;
            case kExponentSign:
                exponentNegative = c == '-';
                state = ScanExponentSign;
                break;
            case kExponentDigit:
                exponent = exponent * 10 + (c - '0');
                state = ScanExponentDigits;
                if (++exponentDigits == 4) {
                    finish = true;
                    state = ScanEnd;
                }
                break;
        }
        if (p < end) ++p;
    }

    if (finish) {
        decimal->mdigits = static_cast<int16_t>(count);
        if (exponentNegative) exponent = -exponent;
        decimal->exponent =
            static_cast<int16_t>(static_cast<uint16_t>(exponent) + position - (count - 1));
        for (int32_t i = 0; i < count; ++i) {
            int32_t d = count - 1 - i;  // the last stored digit is digit 0
            decimal->digits[d / 2] |= static_cast<uint8_t>(stored[i] << (d & 1 ? 4 : 0));
        }
    }
    return result;
}

const char* FindNumberEnd(const char* text, int32_t length, char mark) {
    const char* p = text;
    const char* const end = text + (length > 0 ? length : 0);
    auto blanks = [&] {
        while (p < end && *p == ' ') ++p;
    };
    auto word = [&](const char* w) {
        return end - p >= 3 && SameLetter(p[0], w[0]) && SameLetter(p[1], w[1]) &&
               SameLetter(p[2], w[2]);
    };
    blanks();
    bool signed_ = false;
    if (p < end && (*p == '+' || *p == '-')) {
        signed_ = true;
        ++p;
    }
    blanks();
    if (word("inf")) return p + 3;
    if (word("nan")) return signed_ ? text : p + 3;
    int32_t digits = 0;
    while (p < end && *p >= '0' && *p <= '9') ++p, ++digits;
    if (p < end && *p == mark) {
        ++p;
        while (p < end && *p >= '0' && *p <= '9') ++p, ++digits;
    }
    if (digits == 0) return text;
    if (p < end && (*p == 'e' || *p == 'E')) {
        const char* q = p + 1;
        while (q < end && *q == ' ') ++q;
        if (q < end && (*q == '+' || *q == '-')) ++q;
        while (q < end && *q == ' ') ++q;
        const char* firstDigit = q;
        while (q < end && *q >= '0' && *q <= '9') ++q;
        if (q > firstDigit) p = q;
    }
    return p;
}

}  // extern "C"
