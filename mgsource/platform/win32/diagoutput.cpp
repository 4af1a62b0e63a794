// Where the output sinks write on Windows hosts: the temporary directory, the debugger
// channel and a console of the process's own.
#include <windows.h>

#include "platform/faults_internal.h"
#include "platform/platform.h"

namespace plat {

void DebuggerOutput(const char* text) {
    DebuggerOutputCapture(text);
    OutputDebugStringA(text);
}

void ConsoleOpen(void** output, void** input) {
    AllocConsole();
    *output = GetStdHandle(STD_OUTPUT_HANDLE);
    *input = GetStdHandle(STD_INPUT_HANDLE);
}

void ConsoleWrite(void* output, const char* text, int32_t length) {
    if (length <= 0) return;
    DWORD written = 0;
    WriteConsoleA(static_cast<HANDLE>(output), text, static_cast<DWORD>(length), &written, nullptr);
}

void ConsoleClose() {
    FreeConsole();
}

}  // namespace plat
