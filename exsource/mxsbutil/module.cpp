// Reading the module file. Only a module that cannot be opened or sized fails; a failed seek
// or read is reported and the handle goes on with whatever its block holds.
#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/pstring.h"
#include "mxsbutil/options.h"
#include "mxsbutil/package.h"

int32_t StrLenOf(const char* text) {
    return StrLen(text);
}

void AppendToCodeName(const char* suffix) {
    PStringAppend(gOptions.codeName, TempPString(suffix));
}

// The count byte wraps as a byte does; names near 255 characters lose what the clip took.
void DropCodeNameSuffix() {
    gOptions.codeName[0] = static_cast<uint8_t>(gOptions.codeName[0] - 4);
}

Handle ReadCodeModule() {
    PackageOptions& o = gOptions;
    Handle code = nullptr;
    FileRef file = 0;
    int32_t size = 0;
    AppendToCodeName(".dll");
    if (FAppendName(o.codePath, o.codeName) != MgNoError) {
        DPrintf("FAppendName error 1");
    } else {
        DropCodeNameSuffix();
        if (MgStatus status = FMOpen(&file, o.codePath, FMModeRead, FMShareAll)) {
            DPrintf("FMOpen error %ld on path %z", status, o.codePath);
        } else {
            if (MgStatus eof = FGetEOF(file, &size)) {
                DPrintf("FGetEOF error %ld", eof);
            } else if ((code = MemNewHandle(size)) == nullptr) {
                DPrintf("memory error");
            } else if (MgStatus seek = FMSeek(file, 0, FMSeekStart)) {
                DPrintf("FMSeek error %ld", seek);
            } else if (MgStatus read = FMRead(file, size, nullptr, *code)) {
                DPrintf("FMRead error %ld", read);
            }
            if (MgStatus closed = FMClose(file)) DPrintf("FMClose error %ld", closed);
        }
    }
    if (MgStatus status = FDirName(o.codePath, o.codePath)) DPrintf("FDirName error %ld", status);
    return code;
}
