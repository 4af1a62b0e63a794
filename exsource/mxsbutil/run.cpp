// The package run: start the managers, read the module, and build the package from it.
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/resource.h"
#include "mxsbutil/options.h"
#include "mxsbutil/package.h"

namespace {

const uint8_t* Bytes(const char* text) {
    return reinterpret_cast<const uint8_t*>(text);
}

}  // namespace

int32_t BuildCodePackage() {
    PackageOptions& o = gOptions;
    if (MgStatus status = FTextToPath(Bytes(o.codeDir), StrLenOf(o.codeDir), &o.codePath)) {
        DPrintf("FTextToPath error: %ld", status);
        return status;
    }
    Handle code = ReadCodeModule();
    if (code == nullptr) {
        DPrintf("Couldn't get code resource");
        return 1;
    }
    [[maybe_unused]] int32_t codeSize = MemHandleSize(code);
    Handle tag = MemNewHandle(4);
    if (tag == nullptr) {
        DPrintf("memory error");
        return 2;
    }
    // The platform tag is these four bytes whatever the processor.
    (*tag)[0] = 'i';
    (*tag)[1] = '3';
    (*tag)[2] = '8';
    (*tag)[3] = '6';
    return WritePackage(code, tag);
}

int32_t RunPackager(const char* argv0) {
    PackageOptions& o = gOptions;
    if (InitMemoryManager() != MgNoError) {
        DPrintf("%s: not enough memory", argv0);
        return 1;
    }
    FMInit();
    RInit();
    if (o.viName && FTextToPath(Bytes(o.viName), StrLenOf(o.viName), &o.viPath) != MgNoError) {
        DPrintf("%s: FTextToPath error", argv0);
        return 1;
    }
    o.codePath = nullptr;
    if (int32_t status = BuildCodePackage()) {
        DPrintf("%s: error building resource file: %ld", argv0, status);
        return 2;
    }
    return 0;
}
