// mxsbutil's application name: a host routine that writes nothing and returns 0, as the
// packager requires. Linked into the program alone (not into the host-service library the
// tests use), so that there it takes the place of the layer's own FApplicationName.
#include "mg/filemgr.h"

extern "C" int32_t FApplicationName(char*, int32_t) {
    return 0;
}
