// The running program's file and directory as paths.
#include <string.h>

#include "mg/filemgr.h"
#include "mg/path.h"

extern "C" {

// An application name routine that writes nothing leaves the text empty, not undefined.
MgStatus FApplicationPath(Path path) {
    if (!path) return MgBadArgument;
    char name[260] = {};
    FApplicationName(name, sizeof name);
    Path filled = path;
    return FTextToPath(reinterpret_cast<const uint8_t*>(name), static_cast<int32_t>(strlen(name)),
                       &filled);
}

MgStatus FApplicationDirectory(Path path) {
    if (MgStatus status = FApplicationPath(path)) return status;
    return FDirName(path, path);
}

}  // extern "C"
