// The sink base: formatting into a buffer of the sink, counting calls, and the guard against a
// sink that reaches itself.
#include <string.h>

#include "mg/format.h"
#include "mg/stringoutput.h"

void StringOutput::Open(int32_t) {}

int32_t FormattingStringOutput::Printf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int32_t result = Take(format, args);
    va_end(args);
    return result;
}

int32_t FormattingStringOutput::VPrintf(const char* format, va_list args) {
    return Take(format, args);
}

int32_t FormattingStringOutput::Take(const char* format, va_list args) {
    if (inOutput) return lineCount;
    inOutput = 1;
    Output(format, args);
    inOutput = 0;
    return ++lineCount;
}

int32_t FormattingStringOutput::FormatInto(char* buffer, int32_t size, const char* format,
                                           va_list args) {
    const int32_t n = StrFormatV(buffer, size, format, static_cast<int32_t>(strlen(format)), args);
    buffer[n] = 0;
    return n;
}
