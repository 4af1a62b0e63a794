// The running program's file name. Alone in its file on purpose: an application that links
// the layer may define FApplicationName itself (mxsbutil's host stubs do), and then this
// object is never taken from the library.
#include "mg/filemgr.h"
#include "platform/platform.h"

// Empty when the host can't tell.
extern "C" int32_t FApplicationName(char* buffer, int32_t size) {
    if (buffer == nullptr || size <= 0) return 0;
    int32_t length = plat::ModuleFileName(buffer, size);
    if (length == 0) buffer[0] = 0;
    return length;
}
