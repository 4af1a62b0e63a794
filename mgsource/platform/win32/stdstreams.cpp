// Standard streams on Windows hosts, which the runtime opens in text mode.
#include <fcntl.h>
#include <io.h>
#include <stdio.h>

#include "platform/platform.h"

namespace plat {

bool BinaryStandardOutput() {
    fflush(stdout);
    return _setmode(_fileno(stdout), _O_BINARY) != -1;
}

}  // namespace plat
