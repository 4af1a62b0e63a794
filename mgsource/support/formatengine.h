// What the files of the format engine share: the state of one StrFormatV call, the parsed
// specifier, the positional parameter table and the emission primitives.
//
// Emission: every byte goes through Put or PutRun, which test the output limit. A null
// destination only counts, with a limit of INT32_MAX, so that counting and writing run the
// very same code.
#pragma once

#include <stdarg.h>
#include <string.h>

#include "mg/format.h"
#include "mg/mgtypes.h"

namespace mgformat {

// Type codes of a positional slot: what the conversion reads from the argument list.
enum : int32_t {
    kSlotFree = 0,
    kSlotPoint = -3,    // q Q: an int holding h and v
    kSlotPointer = -2,  // s p P H z r R, and numbers given by pointer
    kSlotInt = -1,      // c, %2c, d u x o b
    kSlotCell = 2,      // accepted by the binder; no conversion records it
    kSlotLong = 3,      // %4c, and d u x o b with l
    kSlotDouble = 10,   // e E f F g G
};

constexpr int32_t kSlotCount = 10;

// A slot holds a copy of its argument: a va_list has no addresses to keep.
struct ParamSlot {
    int32_t type;
    union {
        int32_t i;
        const void* p;
        double d;
    } value;
};

// Records the type of the argument at `index` (0-based); false when out of range or when the
// slot already holds another type.
bool ParamRecordType(ParamSlot* slots, int32_t index, int32_t type);
// Copies the arguments into the slots in slot order; false on a gap or an unknown code.
bool ParamBindArguments(ParamSlot* slots, va_list args);

// The long marker lives in the same variable as the numeric type, above the 16 bits that a
// `{*}` type can take.
constexpr int32_t kLongFlag = 0x10000;

struct Specifier {
    int32_t index;  // slot index, or -1 without a position
    bool left;
    char pad;
    int32_t width;
    int32_t precision;  // -1 when none
    int32_t numType;    // 0, a numeric type, or kLongFlag
    uint8_t conversion;
};

struct FormatState {
    char* dest;
    int32_t pos;
    int32_t limit;
    const uint8_t* fmt;
    const uint8_t* end;
    char mark;
    bool ansiSeen;
    bool positionalSeen;
    bool argumentsBound;
    va_list args;
    ParamSlot slots[kSlotCount];
    char scratch[256];

    bool Full() const { return pos >= limit; }

    void Put(char c) {
        if (pos < limit) {
            if (dest) dest[pos] = c;
            ++pos;
        }
    }

    // Emits up to n bytes; what passes the limit is cut at a byte.
    void PutRun(const char* text, int32_t n) {
        int32_t room = limit - pos;
        if (n > room) n = room;
        if (n <= 0) return;
        if (dest) memcpy(dest + pos, text, static_cast<size_t>(n));
        pos += n;
    }

    void PutRepeated(char c, int32_t n) {
        int32_t room = limit - pos;
        if (n > room) n = room;
        if (n <= 0) return;
        if (dest) memset(dest + pos, c, static_cast<size_t>(n));
        pos += n;
    }

    // True in the first pass of a positional call: conversions only record their types.
    bool Recording() const { return positionalSeen && !argumentsBound; }
};

// Runs one conversion; false is a specifier failure (unknown letter, slot conflict), which
// the caller reports.
bool FormatConversion(FormatState& state, const Specifier& specifier);

// The length the text would have: a counting pass over a copy of the arguments, so that the
// caller can still write with them.
inline int32_t CountFormat(const char* format, int32_t length, va_list args) {
    va_list copy;
    va_copy(copy, args);
    int32_t n = StrFormatV(nullptr, 0, format, length, copy);
    va_end(copy);
    return n;
}

}  // namespace mgformat
