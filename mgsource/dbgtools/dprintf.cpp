// The developer's print. Switched off unless gDebugging is set; the switched-on form, which
// writes to the debugger channel and dprintf.txt, comes with the output sinks.
#include <string.h>

#include "mg/dbgtools.h"

extern "C" {

int32_t gDebugging = 0;
char gAppName[256];

void SetApplicationName(const char*) {
    strcpy(gAppName, "mxsbutil");
}

int32_t DPrintf(const char*, ...) {
    if (!gDebugging) return 0;
    return 0;
}

}  // extern "C"
