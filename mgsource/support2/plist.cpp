// Packed lists of PStrs: a 32-bit count, then the strings back to back.
#include <string.h>

#include "mg/dbgtools.h"
#include "mg/pstring.h"

MG_SOURCE_IDENTITY("mgsource\\support2\\plist.cpp", "$Revision: 1 $");

extern "C" {

ConstPStr PListGet(Handle list, int32_t index) {
    MG_CHECK(list != nullptr);
    int32_t count;
    memcpy(&count, *list, 4);
    if (index > count - 1) index = count - 1;
    if (index < 0) index = 0;
    ConstPStr p = *list + 4;
    for (int32_t i = 0; i < index; ++i) p += 1 + p[0];
    return p;
}

}  // extern "C"
