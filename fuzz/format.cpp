// The format engine with integer and floating arguments only. Input: a decimal-mark byte, a
// size, 16 integers and 16 doubles, then the format text.
//
// Conversions that read a pointer (s p P H z r R, and every `{...}` form) would take an
// integer for one, which is the caller's fault and not the engine's: their letters and the
// `{` are rewritten to integer conversions. A format reads at most one argument per `%`, so
// it is cut before its 17th: the 16 integers and 16 doubles passed always cover what it reads.
//
// Checks: the counting call and a writing call into a buffer of exactly the counted size
// agree, and a bounded call writes a prefix of that text and nothing beyond its size.
// Failure reports of bad formats are part of the design: they are silent here.
#include "mg/format.h"

#include <stdarg.h>
#include <stdlib.h>

#include <bit>
#include <vector>

#include "fuzz_input.h"
#include "mg/support.h"

namespace {

constexpr int kArgs = 16;

// The integers go as 64-bit words: a format that reads more doubles than the registers hold
// reads integers' places as doubles, and a 32-bit integer leaves half of its place undefined.
struct Arguments {
    int64_t i[kArgs];
    double d[kArgs];
};

int32_t Call(char* dest, int32_t size, const char* format, int32_t length, ...) {
    va_list args;
    va_start(args, length);
    int32_t n = StrFormatV(dest, size, format, length, args);
    va_end(args);
    return n;
}

// Integers and doubles alternate, so that either kind runs out no sooner than the other.
int32_t Run(char* dest, int32_t size, const std::string& format, const Arguments& a) {
    return Call(dest, size, format.data(), static_cast<int32_t>(format.size()), a.i[0], a.d[0],
                a.i[1], a.d[1], a.i[2], a.d[2], a.i[3], a.d[3], a.i[4], a.d[4], a.i[5], a.d[5],
                a.i[6], a.d[6], a.i[7], a.d[7], a.i[8], a.d[8], a.i[9], a.d[9], a.i[10], a.d[10],
                a.i[11], a.d[11], a.i[12], a.d[12], a.i[13], a.d[13], a.i[14], a.d[14], a.i[15],
                a.d[15]);
}

std::string IntegerArgumentsOnly(std::string format) {
    int percents = 0;
    for (size_t k = 0; k < format.size(); ++k) {
        char& c = format[k];
        if (c == '%' && ++percents > kArgs) {
            format.resize(k);
            break;
        }
        switch (c) {
            case 's':
            case 'p':
            case 'P':
            case 'H':
            case 'z':
                c = 'd';
                break;
            case 'r':
            case 'R':
                c = 'x';
                break;
            case '{':
                c = 'l';
                break;
            default:
                break;
        }
    }
    return format;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::StartManagers(false);
    fuzz::Input in(data, size);
    char mark = static_cast<char>(in.Byte());
    SystemDecimalMark = mark ? mark : '.';
    struct Restore {
        ~Restore() { SystemDecimalMark = '.'; }
    } restore;
    int32_t bound = in.Byte();
    Arguments a;
    for (int k = 0; k < kArgs; ++k) a.i[k] = in.Int();
    for (int k = 0; k < kArgs; ++k) {
        // Two statements: the operands of one expression may be read in either order.
        const uint64_t high = in.Word();
        a.d[k] = std::bit_cast<double>(high << 32 | in.Word());
    }
    std::string format = IntegerArgumentsOnly(in.Rest());

    int32_t counted = Run(nullptr, 0, format, a);
    if (counted < 0) abort();
    // Widths have no limit: a field of a billion blanks is fine, but not worth writing here.
    if (counted > (1 << 20)) return 0;
    // Exactly the counted size, so that the sanitizer sees any byte written beyond it.
    std::vector<char> exact(static_cast<size_t>(counted));
    if (Run(exact.data(), INT32_MAX, format, a) != counted) abort();
    // One byte more, as a sentinel: a null destination would only count.
    std::vector<char> small(static_cast<size_t>(bound) + 1, '#');
    int32_t n = Run(small.data(), bound, format, a);
    if (small[static_cast<size_t>(bound)] != '#') abort();
    if (n < 0 || n > bound) abort();
    // A positional call stops its first pass at the limit too: having seen less of the
    // format, it may fail a binding that the whole call passes, or pass one (or never reach a
    // specifier) that the whole call fails on. Without positions the text is a prefix.
    if (format.find('$') != std::string::npos) return 0;
    if (n != (bound < counted ? bound : counted)) abort();
    if (n > 0 && memcmp(small.data(), exact.data(), static_cast<size_t>(n)) != 0) abort();
    return 0;
}
