// Modification dates of resource files, by open file or by path: the file manager's date of
// the file behind an open resource file, or of the file at the path.
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/path.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\moddate.cpp", "$Revision: 1 $");

extern "C" {

MgStatus RGetModDate(Path path, ResFile id, uint32_t* date, int32_t* readOnly) {
    MG_CHECK(date != nullptr);
    if (!date) return MgBadArgument;
    FileRef ref = 0;
    if (id != 0) {
        ResFileEntry* entry;
        if (MgStatus status = RLookupFile(id, &entry)) return status;
        ref = entry->fileRef;
    }
    return FMFileModDate(path, ref, date, readOnly);
}

}  // extern "C"
