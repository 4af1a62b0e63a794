// Standard streams on POSIX hosts: there is no text mode, output is bytes already.
#include "platform/platform.h"

namespace plat {

bool BinaryStandardOutput() {
    return true;
}

}  // namespace plat
