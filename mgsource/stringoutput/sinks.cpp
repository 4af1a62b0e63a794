// The sinks that pass each formatted text to one place: DPrintf, the standard error stream,
// a console, the debugger channel.
#include <stdio.h>

#include "mg/dbgtools.h"
#include "mg/stringoutput.h"
#include "platform/platform.h"

void DPrintfOutput::Output(const char* format, va_list args) {
    FormatInto(buffer, kOutputLimit, format, args);
    DPrintf("%s", buffer);
}

void StdErrStringOutput::Output(const char* format, va_list args) {
    FormatInto(buffer, kOutputLimit, format, args);
    fprintf(stderr, "%s", buffer);
}

ConsoleStringOutput::ConsoleStringOutput() {
    plat::ConsoleOpen(&outHandle, &inHandle);
}

ConsoleStringOutput::~ConsoleStringOutput() {
    plat::ConsoleClose();
}

void ConsoleStringOutput::Output(const char* format, va_list args) {
    const int32_t n = FormatInto(buffer, kOutputLimit, format, args);
    plat::ConsoleWrite(outHandle, buffer, n);
}

void DebuggerStringOutput::Output(const char* format, va_list args) {
    FormatInto(buffer, kOutputLimit, format, args);
    plat::DebuggerOutput(buffer);
}
