// The application's name in diagnostics: always the packager's own, however it was started.
#include <string.h>

#include "mg/dbgtools.h"

extern "C" {

char gAppName[256];

void SetApplicationName(const char*) {
    strcpy(gAppName, "mxsbutil");
}

}  // extern "C"
