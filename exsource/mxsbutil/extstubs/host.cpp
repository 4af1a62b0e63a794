// The host services of mxsbutil: real output on the standard error stream, the program's
// file name, and stubs for what a console packager has no use for.
#include "mg/host.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "mg/format.h"
#include "mg/pstring.h"
#include "platform/platform.h"

extern "C" {

int32_t gHostPrintOn = 1;
int32_t gHostPrintBusy = 0;
int32_t gHostPrintCount = 0;
char gHostPrintText[513];

// The busy flag covers the formatting alone: a HostPrintf from inside it prints nothing.
int32_t HostPrintf(const char* format, ...) {
    if (gHostPrintOn && !gHostPrintBusy) {
        gHostPrintBusy = 1;
        va_list args;
        va_start(args, format);
        const int32_t n =
            StrFormatV(gHostPrintText, 512, format, static_cast<int32_t>(strlen(format)), args);
        va_end(args);
        gHostPrintText[n] = 0;
        gHostPrintBusy = 0;
        HostWriteLine(gHostPrintText);
        ++gHostPrintCount;
    }
    return gHostPrintCount;
}

int32_t HostWriteLine(const char* text) {
    return fprintf(stderr, "%s\n", text);
}

int32_t HostWritePStr(ConstPStr text, int32_t) {
    char line[256];
    PStringToText(text, line);
    return HostWriteLine(line);
}

int32_t HostGetModuleFileName(void*, char* buffer, int32_t size) {
    return plat::ModuleFileName(buffer, size);
}

int32_t HostConfigRead(int32_t, const char*, void*) {
    return 20;
}

void HostNotify(int32_t, const char*, int32_t) {}
void HostStartup(void) {}
void HostStartup2(void) {}
void HostIdle(void) {}

}  // extern "C"
