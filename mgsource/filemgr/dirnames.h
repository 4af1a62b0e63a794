// Native names for the directory operations. Private to the file manager.
#pragma once

#include "mg/ansi.h"
#include "mg/path.h"
#include "platform/platform.h"

// A directory's native name with its separator, to which entry names are joined.
struct DirPrefix {
    char text[FNativeNameBufferSize];
    int32_t length = 0;

    // The native name of `path`, with the separator added unless it ends in one already, as
    // a volume's root does.
    MgStatus Make(Path path) {
        if (MgStatus status = FPathToNativeName(path, text)) return status;
        length = StrLen(text);
        char separator = plat::DirectorySeparator();
        if (length == 0 || text[length - 1] != separator) {
            if (length + 1 >= FNativeNameBufferSize) return MgBadArgument;
            text[length++] = separator;
            text[length] = 0;
        }
        return MgNoError;
    }
    // The prefix and `name` into `full`; false when that is too long for a native name.
    bool Join(const char* name, char* full) const {
        int32_t n = StrLen(name);
        if (length + n >= FNativeNameBufferSize) return false;
        BlockMove(text, full, length);
        BlockMove(name, full + length, n + 1);
        return true;
    }
};

// The levels without a directory of their own: the empty path above the drives, and the
// drives' roots. Where everything hangs off one root, there are none: "/" is a directory.
inline bool IsVolumeLevel(Path path) {
    return plat::VolumeDepth() > 0 && FPathDepth(path) <= plat::VolumeDepth();
}
