// No extension tables yet: every name's type is unknown, as with no tables installed. The
// file types module replaces this file.
#include "mg/filemgr.h"

extern "C" ResType FTypeOfPath(Path) {
    return 0;
}
