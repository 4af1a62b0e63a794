// The running program's file name. Alone in its file on purpose: an application that links
// the layer may define FApplicationName itself (mxsbutil's host stubs do), and then this
// object is never taken from the library.
#include "mg/filemgr.h"
#include "platform/platform.h"

extern "C" int32_t FApplicationName(char* buffer, int32_t size) {
    return plat::ModuleFileName(buffer, size);
}
