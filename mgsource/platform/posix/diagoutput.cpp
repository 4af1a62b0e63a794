// Where the output sinks write on POSIX hosts: the temporary directory, the debugger channel
// and the console.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {

// POSIX has no channel through which a process hands text to its debugger.
void DebuggerOutput(const char* text) {
    DebuggerOutputCapture(text);
}

// Every process already has its console here: the standard streams.
void ConsoleOpen(void** output, void** input) {
    *output = stdout;
    *input = stdin;
}

void ConsoleWrite(void* output, const char* text, int32_t length) {
    if (output == nullptr || length <= 0) return;
    FILE* stream = static_cast<FILE*>(output);
    fwrite(text, 1, static_cast<size_t>(length), stream);
    fflush(stream);  // a console shows each write at once
}

void ConsoleClose() {}

}  // namespace plat
