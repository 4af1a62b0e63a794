#include "resource_walk.h"

#include <stdlib.h>

#include "mg/memory.h"
#include "mg/path.h"

namespace fuzz {

namespace {

// Enough for any seed; a file claiming more is walked in part.
constexpr int32_t kMaxTypes = 64;
constexpr int32_t kMaxPerType = 256;

std::string Data(Handle h) {
    return std::string(reinterpret_cast<const char*>(*h), static_cast<size_t>(MemHandleSize(h)));
}

// The getters that read inside a resource's data as a list of strings or a flattened path.
void AskGetters(ResFile id, ResType type, int32_t resId) {
    uint8_t text[256];
    RGetIndString(id, text, resId, 1);
    RGetStringText(id, resId, text);
    const uint8_t* entry;
    RGetIndStringPtr(id, &entry, resId, 2, type);
    Handle lstr = nullptr;
    if (RGetIndLStr(id, &lstr, resId, 1, type) == MgNoError) MemDisposeHandle(lstr);
    Path path = nullptr;
    if (RGetPath(id, type, resId, &path) == MgNoError) FPathRelease(path);
}

}  // namespace

Path NativePath(const std::string& file) {
    Path path = nullptr;
    if (FTextToPath(reinterpret_cast<const uint8_t*>(file.data()),
                    static_cast<int32_t>(file.size()), &path) != MgNoError)
        abort();
    return path;
}

bool LoadEverything(ResFile id, Contents* contents) {
    int32_t types = 0;
    if (RCountTypes(id, &types) != MgNoError) return false;
    bool complete = types <= kMaxTypes;
    for (int32_t t = 1; t <= types && t <= kMaxTypes; ++t) {
        ResType type;
        int32_t count = 0;
        if (RGetIndType(id, &type, t) != MgNoError || RCount(id, type, &count) != MgNoError) {
            complete = false;
            continue;
        }
        if (count > kMaxPerType) complete = false;
        for (int32_t i = 1; i <= count && i <= kMaxPerType; ++i) {
            Handle h = nullptr;
            int32_t resId = 0, size = 0, attrs = 0;
            ResType infoType = 0;
            uint8_t name[256] = {};
            if (RGetInd(id, type, i, &h) != MgNoError ||
                RGetInfo(h, &resId, &infoType, name) != MgNoError) {
                complete = false;
                continue;
            }
            RGetSize(h, &size);
            RGetAttrs(h, &attrs);
            std::string data = Data(h);
            Handle again = nullptr;
            if (RGet(id, type, resId, &again) != MgNoError || again != h) complete = false;
            if (name[0] && RGetNamed(id, type, name, &again) != MgNoError) complete = false;
            if (contents) {
                std::string text(reinterpret_cast<const char*>(name + 1), name[0]);
                if (!contents->emplace(std::make_pair(type, resId), std::make_pair(text, data))
                         .second)
                    complete = false;
            }
            AskGetters(id, type, resId);
        }
    }
    return complete;
}

}  // namespace fuzz
