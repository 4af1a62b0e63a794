// Moving the resources of the -r file into the package: each handle is detached from the
// source and added to the target, so the bytes are never copied. The indices are read, never
// advanced past a resource, so a retry starts over with the first one.
#include "mg/dbgtools.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "mxsbutil/options.h"
#include "mxsbutil/package.h"

namespace {

// Copies one type's resources from `first` on; 0 or the status that ends the import.
MgStatus ImportType(ResFile source, ResFile target, ResType type, int32_t first) {
    int32_t count = 0;
    if (MgStatus status = RCount(source, type, &count)) {
        DPrintf("RCount error %ld", status);
        return status;
    }
    for (int32_t i = first; i <= count; ++i) {
        Handle h = nullptr;
        int32_t attrs = 0, resId = 0;
        uint8_t name[256];
        if (MgStatus status = RGetInd(source, type, i, &h)) {
            DPrintf("RGetInd error %ld", status);
            return status;
        }
        if (MgStatus status = RGetAttrs(h, &attrs)) {
            DPrintf("RGetAttrs error %ld", status);
            return status;
        }
        if (MgStatus status = RGetInfo(h, &resId, &type, name)) {
            DPrintf("RGetInfo error %ld", status);
            return status;
        }
        RDetach(h);
        MgStatus added = RAdd(h, target, type, resId, name);
        if (added == MgResourceDuplicate) {
            // The refused handle now belongs to no file, so the attribute step below ends
            // the import.
            DPrintf("didn't add resource type %4c, id %ld, '%p'", static_cast<int>(type),
                    static_cast<int>(resId), name);
        } else if (added != MgNoError) {
            return added;
        }
        if (MgStatus status = RSetAttrs(h, attrs)) {
            DPrintf("RSetAttrs error %ld", status);
            return status;
        }
        if (MgStatus status = RChanged(h)) {
            DPrintf("RChanged error %ld", status);
            return status;
        }
    }
    return MgNoError;
}

}  // namespace

MgStatus ImportResources(ResFile target, int32_t* typeIndex, int32_t* resIndex) {
    PackageOptions& o = gOptions;
    if (o.resFileName == nullptr) return MgNoError;
    MgStatus result = MgNoError;
    ResFile source = 0;
    ResType fileType, creator;
    int32_t typeCount = 0;
    if ((result = FTextToPath(reinterpret_cast<const uint8_t*>(o.resFileName),
                              StrLenOf(o.resFileName), &o.resFilePath)) != MgNoError) {
        DPrintf("FTextToPath error");
    } else if ((result = ROpenFile(o.resFilePath, 1, &source, &fileType, &creator)) != MgNoError) {
        DPrintf("ROpenFile error %ld on %z (3)", result, o.resFilePath);
    } else if ((result = RCountTypes(source, &typeCount)) != MgNoError) {
        DPrintf("RCountTypes error %ld", result);
    } else {
        for (int32_t t = *typeIndex; t <= typeCount && result == MgNoError; ++t) {
            ResType type;
            if ((result = RGetIndType(source, &type, t)) != MgNoError) {
                DPrintf("RGetIndType error %ld", result);
            } else if ((result = ImportType(source, target, type, *resIndex)) == MgNoError) {
                *resIndex = 1;
            }
        }
    }
    if (source != 0) RCloseFile(source);
    return result;
}
