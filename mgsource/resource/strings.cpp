// Getters of text stored in resources: single strings, the two list layouts, and paths.
//
// A "STR#" block: a 16-bit big-endian count, then the PStrs one after the other. The long
// layout: a 32-bit big-endian count, then per entry a 32-bit big-endian length, the text and
// a pad to a multiple of 4. Every walk stays inside the block; an entry that would leave it
// counts as missing (15).
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/pstring.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\strings.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

int32_t Big32(const uint8_t* p) {
    return static_cast<int32_t>((uint32_t{p[0]} << 24) | (uint32_t{p[1]} << 16) |
                                (uint32_t{p[2]} << 8) | p[3]);
}

// Entry `index` of a block of the "STR#" layout, or null.
const uint8_t* ShortEntry(Handle h, int32_t index) {
    const int32_t size = DataSize(h);
    const uint8_t* p = *h;
    if (size < 2) return nullptr;
    const int32_t count = (p[0] << 8) | p[1];
    if (index < 1 || index > count) return nullptr;
    int32_t at = 2;
    for (int32_t i = 1; i < index; ++i) {
        if (at >= size) return nullptr;
        at += 1 + p[at];
    }
    return at < size && at + 1 + p[at] <= size ? p + at : nullptr;
}

// Entry `index` of a block of the long layout: its offset, and its length in *length.
int32_t LongEntry(Handle h, int32_t index, int32_t* length) {
    const int64_t size = DataSize(h);
    const uint8_t* p = *h;
    if (size < 4) return -1;
    const int32_t count = Big32(p);
    if (index < 1 || index > count) return -1;
    int64_t at = 4;
    for (int32_t i = 1;; ++i) {
        if (at + 4 > size) return -1;
        const int64_t n = Big32(p + at);
        if (n < 0 || at + 4 + n > size) return -1;
        if (i == index) {
            *length = static_cast<int32_t>(n);
            return static_cast<int32_t>(at + 4);
        }
        at += (n + 7) & ~int64_t{3};
    }
}

}  // namespace

extern "C" {

MgStatus RGetString(ResFile id, int32_t resId, Handle* h) {
    return RGet(id, MgResType("STR "), resId, h);
}

// The block's first byte is not read: the count comes from the handle's size.
MgStatus RGetStringText(ResFile id, int32_t resId, PStr out) {
    out[0] = 0;
    Handle h;
    if (MgStatus status = RGetString(id, resId, &h)) return status;
    int32_t n = DataSize(h) - 1;
    n = n < 0 ? 0 : (n > 255 ? 255 : n);
    memcpy(out + 1, *h + 1, static_cast<size_t>(n));
    out[0] = static_cast<uint8_t>(n);
    return MgNoError;
}

MgStatus RGetIndString(ResFile id, PStr out, int32_t resId, int32_t index) {
    out[0] = 0;
    Handle h;
    if (MgStatus status = RGet(id, MgResType("STR#"), resId, &h)) return status;
    const uint8_t* entry = ShortEntry(h, index);
    if (!entry) return MgResourceNotFound;
    PStringCopy(out, entry);
    return MgNoError;
}

MgStatus RGetIndStringPtr(ResFile id, const uint8_t** text, int32_t resId, int32_t index,
                          ResType type) {
    *text = nullptr;
    Handle h;
    if (MgStatus status = RGet(id, type, resId, &h)) return status;
    *text = ShortEntry(h, index);
    return *text ? MgNoError : MgResourceNotFound;
}

MgStatus RGetIndLStr(ResFile id, Handle* out, int32_t resId, int32_t index, ResType type) {
    *out = nullptr;
    Handle h;
    if (MgStatus status = RGet(id, type, resId, &h)) return status;
    int32_t length = 0;
    const int32_t at = LongEntry(h, index, &length);
    if (at < 0) return MgResourceNotFound;
    Handle s = MemNewHandle(4 + length);
    if (!s) return MgNoMemory;
    memcpy(*s, &length, 4);
    memcpy(*s + 4, *h + at, static_cast<size_t>(length));
    *out = s;
    return MgNoError;
}

MgStatus RGetPath(ResFile id, ResType type, int32_t resId, Path* out) {
    *out = nullptr;
    Handle h;
    if (MgStatus status = RGet(id, type, resId, &h)) return status;
    const int32_t size = DataSize(h);
    Path path = nullptr;
    MgStatus status = MgNoError;
    if (FPathUnflattenOrder(*h, &path, size, 1) == size + 1) {
        if (path) FPathRelease(path);
        status = MgBadFlatPath;
    } else {
        *out = path;
    }
    RRelease(h);
    return status;
}

}  // extern "C"
