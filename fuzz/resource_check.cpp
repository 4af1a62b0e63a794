// The check of a file as bytes and the inspector's loading: the input is a resource file. The
// inspector (mgrsrc) loads it as its commands do, through RCheckBytes with every notice, and
// the reader opens it for reading. They must agree: the check's opening status is the reader's,
// and, where the type codes are distinct, every resource the check finds loadable loads with
// the same bytes and no other loads.
#include <stdlib.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include "fuzz_input.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mgrsrc/mgrsrc.h"
#include "resource_walk.h"

namespace {

// Type, id, and the data, or nothing when it can't be loaded.
using Loaded = std::tuple<ResType, int32_t, bool, std::string>;

// What the reader loads of an open file, or false when its type codes repeat (the reader then
// reaches only the first type of a code).
bool ReaderView(ResFile id, std::vector<Loaded>* out) {
    int32_t types = 0;
    RCountTypes(id, &types);
    std::vector<ResType> seen;
    for (int32_t t = 1; t <= types; ++t) {
        ResType type = 0;
        int32_t count = 0;
        if (RGetIndType(id, &type, t) || RCount(id, type, &count)) abort();
        if (std::find(seen.begin(), seen.end(), type) != seen.end()) return false;
        seen.push_back(type);
        for (int32_t i = 1; i <= count; ++i) {
            Handle h = nullptr;
            int32_t resId = 0;
            const bool loaded = RGetInd(id, type, i, &h) == MgNoError;
            if (loaded && RGetInfo(h, &resId, nullptr, nullptr)) abort();
            std::string data;
            if (loaded) data.assign(reinterpret_cast<const char*>(*h), MemHandleSize(h));
            // An entry that can't be loaded gives no handle to ask its id of.
            out->emplace_back(type, loaded ? resId : 0, loaded, data);
        }
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz::StartManagers(true);
    const std::string& file = fuzz::ScratchFile("check.rsrc");
    fuzz::WriteWholeFile(file, std::string(reinterpret_cast<const char*>(data), size));
    Image image;
    if (!LoadImage("fuzz", file, true, true, &image)) abort();
    FirstFault(image);
    std::vector<Loaded> checked;
    for (const Resource& r : image.resources) {
        const bool loadable = r.dataAt >= 0;
        std::string bytes;
        if (loadable) bytes.assign(reinterpret_cast<const char*>(image.Data(r)), size_t(r.size));
        checked.emplace_back(r.type, loadable ? r.id : 0, loadable, bytes);
    }

    Path path = fuzz::NativePath(file);
    ResFile id = 0;
    const MgStatus opened = ROpenFile(path, FMModeRead, &id, nullptr, nullptr);
    if (opened != image.summary.openStatus) abort();
    std::vector<Loaded> read;
    if (opened == MgNoError) {
        if (ReaderView(id, &read)) {
            std::sort(checked.begin(), checked.end());
            std::sort(read.begin(), read.end());
            if (read != checked) abort();
        }
        RCloseFile(id);
    }
    FPathRelease(path);
    return 0;
}
