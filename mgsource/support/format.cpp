// The format engine's main loop: literal text, backslash codes, the decimal-mark form, the
// reading of a specifier and the two passes of a positional call.
#include "mg/format.h"

#include <stdint.h>

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/support.h"
#include "mg/textutil.h"
#include "support/formatengine.h"

MG_SOURCE_IDENTITY("mgsource\\support\\format.cpp", "$Revision: 1 $");

using namespace mgformat;

namespace {

// The script whose character widths the engine honours. No script table is installed in
// this program, so every character is one byte long; the query stays so that a host with a
// two-byte script never has a trail byte taken for '%' or '\'.
const void* CurrentScript() {
    return nullptr;
}

inline int32_t CharLength(const uint8_t* text) {
    return TextStep(text, 0, CurrentScript());
}

inline bool IsDigit(uint8_t c) {
    return c >= '0' && c <= '9';
}

// Digit runs have no limit check; unsigned arithmetic keeps an overlong run defined.
int32_t ReadNumber(FormatState& st) {
    uint32_t n = 0;
    while (st.fmt < st.end && IsDigit(*st.fmt)) n = n * 10 + static_cast<uint32_t>(*st.fmt++ - '0');
    return static_cast<int32_t>(n);
}

// `%;` returns to the system mark; `%c;` with c punctuation (possibly a backslash code) sets
// the mark for the rest of the call. True when the form was consumed.
bool TryDecimalMark(FormatState& st) {
    const uint8_t* p = st.fmt;
    uint8_t c = *p;
    if (c == '[' || c == '%') return false;
    if (c == ';') {
        st.mark = SystemDecimalMark;
        st.fmt = p + 1;
        return true;
    }
    ++p;
    if (c == '\\') c = ParseEscape(&p, st.end);
    if (p < st.end && *p == ';' && IsPunctChar(c)) {
        st.mark = static_cast<char>(c);
        st.fmt = p + 1;
        return true;
    }
    return false;
}

enum class SpecifierRead { kConvert, kEnded, kFailed };

// The numeric type of a `{...}` form, st.fmt just behind the `{`.
SpecifierRead ReadTypeForm(FormatState& st, Specifier& specifier) {
    if (st.fmt >= st.end) return SpecifierRead::kFailed;
    uint8_t first = *st.fmt++;
    specifier.numType = 0;
    if (first == '*') {
        // A type given at run time has no slot of its own, so it cannot be positional.
        if (specifier.index >= 0) return SpecifierRead::kFailed;
        specifier.numType = va_arg(st.args, int) & 0xFFFF;
    } else if (first == 'i' || first == 'u' || first == 'f' || first == 'c') {
        if (st.fmt >= st.end) return SpecifierRead::kFailed;
        uint8_t second = *st.fmt++;
        if (first == 'i' || first == 'u') {
            int32_t base = first == 'i' ? iB : uB;
            switch (second) {
                case 'B':
                    specifier.numType = base;
                    break;
                case 'W':
                    specifier.numType = base + 1;
                    break;
                case 'L':
                    specifier.numType = base + 2;
                    break;
                case 'Q':
                    specifier.numType = base + 3;
                    break;
                default:
                    break;
            }
        } else {
            int32_t base = first == 'f' ? fS : cS;
            switch (second) {
                case 'S':
                    specifier.numType = base;
                    break;
                case 'D':
                    specifier.numType = base + 1;
                    break;
                case 'X':
                    specifier.numType = base + 2;
                    break;
                default:
                    break;
            }
        }
    }
    if (st.fmt < st.end && *st.fmt == '}') ++st.fmt;
    return SpecifierRead::kConvert;
}

// Reads a specifier, st.fmt just behind the '%'.
SpecifierRead ReadSpecifier(FormatState& st, Specifier& specifier) {
    specifier.index = -1;
    specifier.left = false;
    specifier.pad = ' ';
    specifier.width = 0;
    specifier.precision = -1;
    specifier.numType = 0;

    // Position, flags and width: a second round only behind a position.
    for (;;) {
        bool positionRead = specifier.index >= 0;
        if (st.fmt < st.end && *st.fmt == '-') {
            specifier.left = true;
            if (!positionRead) st.ansiSeen = true;
            if (++st.fmt >= st.end) {
                st.Put('-');
                return SpecifierRead::kEnded;
            }
        }
        specifier.pad = st.fmt < st.end && *st.fmt == '0' ? '0' : ' ';
        int32_t number = ReadNumber(st);
        if (positionRead) {
            specifier.width = number;
            break;
        }
        if (st.ansiSeen || st.fmt >= st.end || *st.fmt != '$') {
            st.ansiSeen = true;
            specifier.width = number;
            break;
        }
        if (number < 1 || number > kSlotCount) return SpecifierRead::kFailed;
        int32_t index = number - 1;
        if (!st.positionalSeen) {
            memset(st.slots, 0, sizeof st.slots);
            st.positionalSeen = true;
        }
        ++st.fmt;
        specifier.index = index;
    }
    if (st.ansiSeen && st.positionalSeen) {
        DPrintf("Can't mix ANSI and %%n$ specifiers");
        return SpecifierRead::kFailed;
    }

    if (st.fmt < st.end && *st.fmt == '.') {
        ++st.fmt;
        specifier.precision = ReadNumber(st);
    }
    if (st.fmt < st.end && *st.fmt == '{') {
        ++st.fmt;
        if (ReadTypeForm(st, specifier) == SpecifierRead::kFailed) return SpecifierRead::kFailed;
    } else if (st.fmt < st.end && *st.fmt == 'l') {
        ++st.fmt;
        specifier.numType = kLongFlag;
    }
    if (st.fmt >= st.end) return SpecifierRead::kFailed;
    specifier.conversion = *st.fmt++;
    return SpecifierRead::kConvert;
}

// One pass over the format. False on a specifier failure, after the report.
bool RunPass(FormatState& st) {
    while (st.fmt < st.end && st.pos < st.limit) {
        int32_t length = CharLength(st.fmt);
        if (length >= 2) {
            // A multi-byte character is copied raw, never read as '%' or '\'.
            int32_t left = static_cast<int32_t>(st.end - st.fmt);
            if (length > left) length = left;
            st.PutRun(reinterpret_cast<const char*>(st.fmt), length);
            st.fmt += length;
            continue;
        }
        uint8_t c = *st.fmt++;
        if (c != '%' && c != '\\') {
            st.Put(static_cast<char>(c));
            continue;
        }
        if (c == '\\') {
            uint8_t b = ParseEscape(&st.fmt, st.end);
            // Only a written \n becomes CR LF.
            if (b == 10 && st.pos < st.limit) st.Put(13);
            st.Put(static_cast<char>(b));
            continue;
        }
        if (st.fmt >= st.end) {
            st.Put('%');
            continue;
        }
        if (*st.fmt == '%') {
            ++st.fmt;
            st.Put('%');
            continue;
        }
        if (TryDecimalMark(st)) continue;
        Specifier specifier;
        SpecifierRead read = ReadSpecifier(st, specifier);
        if (read == SpecifierRead::kEnded) continue;
        if (read == SpecifierRead::kFailed || !FormatConversion(st, specifier)) {
            MG_FAIL();
            return false;
        }
    }
    return true;
}

}  // namespace

namespace {

// Writes again what a first pass that wrote nothing produced, stopping where it stopped, so
// that a specifier that failed is neither read nor reported a second time.
void WriteFirstPass(char* dest, int32_t produced, const uint8_t* start, const uint8_t* end,
                    va_list args) {
    FormatState st;
    st.dest = dest;
    st.limit = produced;
    st.pos = 0;
    st.fmt = start;
    st.end = end;
    st.mark = SystemDecimalMark;
    st.ansiSeen = false;
    st.positionalSeen = false;
    st.argumentsBound = false;
    va_copy(st.args, args);
    RunPass(st);
    va_end(st.args);
}

}  // namespace

extern "C" int32_t StrFormatV(char* dest, int32_t size, const char* format, int32_t formatLength,
                              va_list args) {
    FormatState st;
    st.dest = dest;
    st.limit = dest ? size : INT32_MAX;
    st.mark = SystemDecimalMark;
    st.ansiSeen = false;
    st.positionalSeen = false;
    st.argumentsBound = false;
    const uint8_t* start = reinterpret_cast<const uint8_t*>(format);
    const uint8_t* end = start + (formatLength > 0 ? formatLength : 0);
    // A positional call that fails its binding counts 0, so its first pass may not write the
    // literal text it meets: a buffer sized by the count would overflow. A format that could
    // hold a position therefore runs its first pass without writing, and writes it afterwards
    // if it turns out to be the only pass.
    bool deferred = dest && memchr(start, '$', static_cast<size_t>(end - start)) != nullptr;
    if (deferred) st.dest = nullptr;

    va_copy(st.args, args);
    bool more = true;
    while (more) {
        // Each pass writes afresh; the decimal mark alone carries over.
        st.pos = 0;
        st.fmt = start;
        st.end = end;
        more = false;
        if (!RunPass(st)) break;
        if (st.positionalSeen && !st.argumentsBound) {
            if (!ParamBindArguments(st.slots, args)) {
                st.pos = 0;
                break;
            }
            st.argumentsBound = true;
            st.dest = dest;
            more = true;
        }
    }
    va_end(st.args);
    if (deferred && st.dest == nullptr && st.pos > 0)
        WriteFirstPass(dest, st.pos, start, end, args);
    return st.pos;
}
