// Writing the package: a new resource file (or, with -vi, an existing one) receives the
// platform tag, the module and the imported resources. Every failure ends at the same closing
// step, which releases the target path and closes the file.
#include "mxsbutil/package.h"

#include <string.h>

#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/host.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "mxsbutil/options.h"

namespace {

const ResType kCodeType = MgResType("MXSB");
const ResType kTagType = MgResType("PLAT");
const ResType kLibraryType = MgResType("LIsb");
const ResType kCreator = MgResType("MXDX");
constexpr int32_t kPermissions = 438;  // rw for all, less the creation mask

// Ids the replaced resources give up. The id of the old module goes to the new tag and the id
// of the old tag to the new module: the crossing is how replaced packages have always come
// out, and files depend on it.
struct ReplacedIds {
    int32_t tag = 0, code = 0, library = 0;
};

// The replaced resources are found and removed without loading their data, so that replacing
// a module costs no memory for the old one. Finding one checks its data's place as loading it
// would, so a resource that couldn't be loaded still counts as missing; the removals' results
// aren't looked at.
MgStatus TakeOverVi(ResFile file, ReplacedIds* ids) {
    PackageOptions& o = gOptions;
    int32_t index = 0;
    if (MgStatus status = RFindNamed(file, kCodeType, o.codeName, &index, &ids->tag)) {
        DPrintf("VI must already have '%p.msb' loaded in.", o.codeName);
        DPrintf("couldn't get resource named '%p.msb' in VI '%z'", o.codeName, o.viPath);
        return status;
    }
    RRemoveInd(file, kCodeType, index);
    if (RFindNamed(file, kTagType, o.codeName, &index, &ids->code) == MgNoError)
        RRemoveInd(file, kTagType, index);
    if (RFindNamed(file, kLibraryType, o.codeName, &index, &ids->library) == MgNoError)
        RRemoveInd(file, kLibraryType, index);
    return MgNoError;
}

// Imports until done. Running out of memory writes out what is there and starts the import
// over on the reopened file with the same indices. Once only: when memory runs out again
// right after a bailout, writing out freed nothing that helps, and the run gives up with 2.
MgStatus ImportWithBailout(ResFile* file, Path target) {
    int32_t typeIndex = 1, resIndex = 1;
    ResType type, creator;
    for (bool bailedOut = false;; bailedOut = true) {
        MgStatus status = ImportResources(*file, &typeIndex, &resIndex);
        if (status == MgNoError) {
            // The type is four characters with no terminator of its own.
            char type[5] = {};
            memcpy(type, &gOptions.codeType, 4);
            HostPrintf("Meridax resource file, type '%.4s', name '%p.msb', created properly.", type,
                       gOptions.codeName);
            return MgNoError;
        }
        if (status != MgNoMemory || bailedOut) {
            DPrintf("error adding additional resources");
            return status;
        }
        if (MgStatus closed = RCloseFile(*file)) {
            DPrintf("error %ld closing file in memory bailout", closed);
            return closed;
        }
        *file = 0;
        if (MgStatus opened = ROpenFile(target, 0, file, &type, &creator)) {
            DPrintf("error %ld opening new code resource's resource file", opened);
            return opened;
        }
    }
}

}  // namespace

MgStatus WritePackage(Handle code, Handle tag) {
    PackageOptions& o = gOptions;
    MgStatus result = MgNoError;
    ResFile file = 0;
    ResType type, creator;
    ReplacedIds ids;
    Path target = nullptr;

    // The fresh path only tests that memory is there; the target below takes its place.
    if (FEmptyPath(nullptr) == nullptr) {
        DPrintf("FEmptyPath error");
        goto end;
    }
    if (o.viPath) {
        target = o.viPath;
    } else {
        target = o.codePath;
        AppendToCodeName(".msb");
        if ((result = FAppendName(target, o.codeName)) != MgNoError) {
            DPrintf("FAppendName error %ld", result);
            goto end;
        }
        DropCodeNameSuffix();
        if ((result = RCreateCorrectFile(target, 1, kCreator, kCodeType,
                                         FMPermissionMask(kPermissions))) != MgNoError) {
            DPrintf("RCreateCorrectFile error %ld", result);
            goto end;
        }
    }
    if ((result = ROpenFile(target, 0, &file, &type, &creator)) != MgNoError) {
        DPrintf("error %ld opening new code resource's resource file", result);
        goto end;
    }
    if (o.viPath && (result = TakeOverVi(file, &ids)) != MgNoError) goto end;
    if ((result = RAdd(tag, file, kTagType, ids.tag, o.codeName)) != MgNoError) {
        DPrintf("resource (PLAT) error on RAdd");
        goto end;
    }
    if ((result = RAdd(code, file, kCodeType, ids.code, o.codeName)) != MgNoError) {
        DPrintf("resource (MXSB) error on RAdd");
        goto end;
    }
    result = ImportWithBailout(&file, target);

end:
    if (target != nullptr) {
        FPathRelease(target);
        (o.viPath ? o.viPath : o.codePath) = nullptr;
    }
    // Where the map and data reach the disk. A package that didn't reach it (a full disk)
    // fails the run; the file stays as it was before the write-back.
    if (file != 0) {
        if (MgStatus closed = RCloseFile(file)) {
            DPrintf("resource error %ld on RCloseFile", closed);
            if (result == MgNoError) result = closed;
        }
    }
    return result;
}
