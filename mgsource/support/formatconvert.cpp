// The conversions of the format engine: reading an argument (in order, from its slot, or
// only recording its type), rendering it in the scratch and placing the text in the field.
#include <stdarg.h>

#include "mg/format.h"
#include "mg/numtext.h"
#include "mg/path.h"
#include "support/formatengine.h"

namespace mgformat {

namespace {

union Argument {
    int32_t i;
    const void* p;
    double d;
};

enum class Fetch { kHave, kRecorded, kFailed };

// In order from the list; in the second positional pass from the slot; in the first only
// the type is recorded and the conversion gives no output.
Fetch FetchArgument(FormatState& st, const Specifier& specifier, int32_t type, Argument& arg) {
    if (st.positionalSeen) {
        if (!st.argumentsBound)
            return ParamRecordType(st.slots, specifier.index, type) ? Fetch::kRecorded
                                                                    : Fetch::kFailed;
        const ParamSlot& slot = st.slots[specifier.index];
        if (type == kSlotPointer)
            arg.p = slot.value.p;
        else if (type == kSlotDouble)
            arg.d = slot.value.d;
        else
            arg.i = slot.value.i;
        return Fetch::kHave;
    }
    if (type == kSlotPointer)
        arg.p = va_arg(st.args, const void*);
    else if (type == kSlotDouble)
        arg.d = va_arg(st.args, double);
    else
        arg.i = va_arg(st.args, int);
    return Fetch::kHave;
}

const char kDigits[] = "0123456789ABCDEF";

// A 32-bit integer in a radix, written backward to the end of the scratch. The text is the
// one NumToText gives for iL under the codes 64 to 68.
const char* RadixText(FormatState& st, int32_t code, int32_t value, int32_t* length) {
    char* const stop = st.scratch + sizeof st.scratch;
    char* p = stop;
    uint32_t u = static_cast<uint32_t>(value);
    bool negative = code == NumCodeDecimal && value < 0;
    if (negative) u = 0u - u;
    switch (code) {
        case NumCodeHex:
            do {
                *--p = kDigits[u & 15];
                u >>= 4;
            } while (u);
            break;
        case NumCodeOctal:
            do {
                *--p = static_cast<char>('0' + (u & 7));
                u >>= 3;
            } while (u);
            break;
        case NumCodeBinary:
            do {
                *--p = static_cast<char>('0' + (u & 1));
                u >>= 1;
            } while (u);
            break;
        default:
            do {
                *--p = static_cast<char>('0' + u % 10);
                u /= 10;
            } while (u);
            break;
    }
    if (negative) *--p = '-';
    *length = static_cast<int32_t>(stop - p);
    return p;
}

// The padding a field of `width` needs around `n` bytes. A digit run too long for 32 bits
// wraps and may read as a negative width, which pads nothing.
int32_t Padding(int32_t width, int32_t n) {
    return width > n ? width - n : 0;
}

// Numbers: a leading '-' stays in front of zero padding; left-justified text is padded with
// blanks whatever the pad character.
void PlaceNumber(FormatState& st, const Specifier& specifier, const char* text, int32_t n) {
    int32_t pad = Padding(specifier.width, n);
    if (specifier.left) {
        st.PutRun(text, n);
        st.PutRepeated(' ', pad);
        return;
    }
    if (specifier.pad == '0' && n > 0 && text[0] == '-') {
        st.Put('-');
        st.PutRepeated('0', pad);
        st.PutRun(text + 1, n - 1);
        return;
    }
    st.PutRepeated(specifier.pad, pad);
    st.PutRun(text, n);
}

// Strings: the precision caps the whole field, padding included. A precision of -1 counts
// down without reaching 0 in any real field.
void PlaceString(FormatState& st, const Specifier& specifier, const char* text, int32_t length) {
    int32_t precision = specifier.precision;
    if (specifier.conversion == 's' && precision >= 1 && length > precision) length = precision;
    if (length < 0) length = 0;
    int32_t pad = Padding(specifier.width, length);
    // The cap, as a plain count of bytes the field may still take.
    int64_t cap = precision < 0 ? INT64_MAX : precision;
    auto take = [&cap](int32_t n) -> int32_t {
        if (n > cap) n = static_cast<int32_t>(cap);
        cap -= n;
        return n;
    };
    if (!specifier.left) {
        int32_t n = take(pad);
        st.PutRepeated(specifier.pad, n);
        pad -= n;
    }
    st.PutRun(text, take(length));
    st.PutRepeated(' ', take(pad));
}

bool ConvertInteger(FormatState& st, const Specifier& specifier, int32_t code) {
    bool byPointer = specifier.numType != 0 && specifier.numType != kLongFlag;
    int32_t slot = byPointer ? kSlotPointer : specifier.numType == kLongFlag ? kSlotLong : kSlotInt;
    Argument arg;
    Fetch f = FetchArgument(st, specifier, slot, arg);
    if (f != Fetch::kHave) return f == Fetch::kRecorded;
    int32_t n;
    if (byPointer) {
        n = NumToText(arg.p, specifier.numType, code, st.scratch, sizeof st.scratch, st.mark,
                      nullptr);
        PlaceNumber(st, specifier, st.scratch, n);
    } else {
        const char* text = RadixText(st, code, arg.i, &n);
        PlaceNumber(st, specifier, text, n);
    }
    return true;
}

int32_t SignificantDigits(const Specifier& specifier) {
    if (specifier.precision >= 0) return specifier.precision >= 16 ? 17 : specifier.precision + 1;
    return specifier.width > 22 ? 17 : specifier.width > 6 ? specifier.width - 5 : 7;
}

bool ConvertFloat(FormatState& st, const Specifier& specifier, bool fixed) {
    bool byPointer = specifier.numType != 0 && specifier.numType != kLongFlag;
    Argument arg;
    Fetch f = FetchArgument(st, specifier, byPointer ? kSlotPointer : kSlotDouble, arg);
    if (f != Fetch::kHave) return f == Fetch::kRecorded;
    const void* number = byPointer ? arg.p : &arg.d;
    NumType type = byPointer ? specifier.numType : fD;
    int32_t code;
    if (fixed) {
        code = specifier.precision < 0     ? -6
               : specifier.precision >= 63 ? -63
                                           : -specifier.precision;
        int32_t room = static_cast<int32_t>(static_cast<uint32_t>(specifier.width) - 1);
        if (!FixedFormFits(type, number, specifier.width ? room : 18))
            code = SignificantDigits(specifier);
    } else {
        code = SignificantDigits(specifier);
    }
    int32_t n = NumToText(number, type, code, st.scratch, sizeof st.scratch, st.mark, nullptr);
    PlaceNumber(st, specifier, st.scratch, n);
    return true;
}

bool ConvertChar(FormatState& st, const Specifier& specifier) {
    Argument arg;
    Fetch f = FetchArgument(st, specifier, specifier.width == 4 ? kSlotLong : kSlotInt, arg);
    if (f != Fetch::kHave) return f == Fetch::kRecorded;
    if (specifier.width == 2 || specifier.width == 4) {
        // The bytes in memory order, so a code held in file order prints in its own order.
        char bytes[4];
        if (specifier.width == 2) {
            uint16_t low = static_cast<uint16_t>(arg.i);
            memcpy(bytes, &low, 2);
        } else {
            memcpy(bytes, &arg.i, 4);
        }
        PlaceString(st, specifier, bytes, specifier.width);
    } else {
        st.Put(static_cast<char>(arg.i));
    }
    return true;
}

bool ConvertString(FormatState& st, const Specifier& specifier, uint8_t conversion) {
    Argument arg;
    Fetch f = FetchArgument(st, specifier, kSlotPointer, arg);
    if (f != Fetch::kHave) return f == Fetch::kRecorded;
    const char* text;
    int32_t length;
    if (conversion == 'p' && specifier.numType != 0) conversion = 'P';
    switch (conversion) {
        case 's':
            text = static_cast<const char*>(arg.p);
            length = static_cast<int32_t>(strlen(text));
            break;
        case 'p': {
            const uint8_t* p = static_cast<const uint8_t*>(arg.p);
            text = reinterpret_cast<const char*>(p + 1);
            length = p[0];
            break;
        }
        case 'P': {
            const uint8_t* p = static_cast<const uint8_t*>(arg.p);
            memcpy(&length, p, 4);
            text = reinterpret_cast<const char*>(p + 4);
            break;
        }
        default: {  // 'H'
            Handle h = static_cast<Handle>(const_cast<void*>(arg.p));
            length = 0;
            text = "";
            if (h && *h) {
                memcpy(&length, *h, 4);
                text = reinterpret_cast<const char*>(*h + 4);
            }
            break;
        }
    }
    PlaceString(st, specifier, text, length);
    return true;
}

// Path text: at most 252 bytes fit the scratch behind its count word; a longer text prints
// as the empty one. No padding; only the output limit cuts it.
bool ConvertPath(FormatState& st, const Specifier& specifier) {
    Argument arg;
    Fetch f = FetchArgument(st, specifier, kSlotPointer, arg);
    if (f != Fetch::kHave) return f == Fetch::kRecorded;
    Path path = static_cast<Path>(const_cast<void*>(arg.p));
    LStr* buffer = reinterpret_cast<LStr*>(st.scratch);
    buffer->count = -1;
    MgStatus status = FPathTextInto(path, buffer);
    int32_t length = buffer->count;
    if (status != MgNoError || length < 0 || length >= 253) {
        length = 0;  // the empty text stands in
    } else {
        buffer->count = 0;
        if (FPathTextInto(path, buffer) != MgNoError) buffer->count = 0;
        length = buffer->count;
        if (length < 0 || length > 252) length = 0;
    }
    st.PutRun(st.scratch + 4, length);
    return true;
}

// Writes ",v" pieces of a point or rectangle: a signed 16-bit value in decimal.
char* PutShort(char* p, int16_t value) {
    int32_t n;
    char digits[8];
    char* stop = digits + sizeof digits;
    char* q = stop;
    uint32_t u = value < 0 ? static_cast<uint32_t>(-value) : static_cast<uint32_t>(value);
    do {
        *--q = static_cast<char>('0' + u % 10);
        u /= 10;
    } while (u);
    if (value < 0) *--q = '-';
    n = static_cast<int32_t>(stop - q);
    memcpy(p, q, static_cast<size_t>(n));
    return p + n;
}

bool ConvertPoint(FormatState& st, const Specifier& specifier, bool capital) {
    Argument arg;
    Fetch f = FetchArgument(st, specifier, kSlotPoint, arg);
    if (f != Fetch::kHave) return f == Fetch::kRecorded;
    uint32_t cell = static_cast<uint32_t>(arg.i);
    char* p = st.scratch;
    if (capital) {
        *p++ = 'h';
        *p++ = 'v';
    }
    *p++ = '(';
    p = PutShort(p, static_cast<int16_t>(cell >> 16));
    *p++ = ',';
    p = PutShort(p, static_cast<int16_t>(cell & 0xFFFF));
    *p++ = ')';
    st.PutRun(st.scratch, static_cast<int32_t>(p - st.scratch));
    return true;
}

bool ConvertRect(FormatState& st, const Specifier& specifier, bool capital) {
    Argument arg;
    Fetch f = FetchArgument(st, specifier, kSlotPointer, arg);
    if (f != Fetch::kHave) return f == Fetch::kRecorded;
    int16_t sides[4];
    memcpy(sides, arg.p, sizeof sides);
    char* p = st.scratch;
    if (capital) {
        memcpy(p, "tlbr", 4);
        p += 4;
    }
    char* first = p;
    for (int16_t side : sides) {
        *p++ = ' ';
        p = PutShort(p, side);
        *p++ = ',';
    }
    *first = '(';
    p[-1] = ')';
    st.PutRun(st.scratch, static_cast<int32_t>(p - st.scratch));
    return true;
}

}  // namespace

bool FormatConversion(FormatState& st, const Specifier& specifier) {
    switch (specifier.conversion) {
        case 'd':
            return ConvertInteger(st, specifier, NumCodeDecimal);
        case 'u':
            return ConvertInteger(st, specifier, NumCodeUnsigned);
        case 'x':
            return ConvertInteger(st, specifier, NumCodeHex);
        case 'o':
            return ConvertInteger(st, specifier, NumCodeOctal);
        case 'b':
            return ConvertInteger(st, specifier, NumCodeBinary);
        case 'e':
        case 'E':
        case 'g':
        case 'G':
            return ConvertFloat(st, specifier, false);
        case 'f':
        case 'F':
            return ConvertFloat(st, specifier, true);
        case 'c':
            return ConvertChar(st, specifier);
        case 's':
        case 'p':
        case 'P':
        case 'H':
            return ConvertString(st, specifier, specifier.conversion);
        case 'z':
            return ConvertPath(st, specifier);
        case 'q':
            return ConvertPoint(st, specifier, false);
        case 'Q':
            return ConvertPoint(st, specifier, true);
        case 'r':
            return ConvertRect(st, specifier, false);
        case 'R':
            return ConvertRect(st, specifier, true);
        default:
            return false;
    }
}

}  // namespace mgformat

extern "C" int32_t FixedFormFits(NumType, const void*, int32_t) {
    return 1;
}
