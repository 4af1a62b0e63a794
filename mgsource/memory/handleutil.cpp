// Copying, filling and appending handles, written once over the operations of either zone.
#include <string.h>

#include "memory/zone.h"
#include "mg/dbgtools.h"

MG_SOURCE_IDENTITY("mgsource\\memory\\handleutil.cpp", "$Revision: 1 $");

namespace mgmem {

const ZoneOps kMainOps = {MemNewHandle, MemDisposeHandle, MemHandleSize, MemResizeHandle};
const ZoneOps kCompactOps = {CompactNewHandle, CompactDisposeHandle, CompactHandleSize,
                             CompactResizeHandle};

namespace {

// Gives `*dst` exactly `n` bytes, allocating it when it is null.
MgStatus Provide(const ZoneOps& ops, Handle* dst, int32_t n) {
    if (!*dst) {
        *dst = ops.newHandle(n);
        return *dst ? MgNoError : MgNoMemory;
    }
    return ops.resize(*dst, n);
}

}  // namespace

MgStatus CopyHandle(const ZoneOps& ops, Handle* dst, Handle src) {
    if (!src) {
        MgStatus status = ops.dispose(*dst);
        *dst = nullptr;
        return status;
    }
    if (*dst == src) return MgNoError;
    const int32_t n = ops.size(src);
    MgStatus status = Provide(ops, dst, n);
    if (status != MgNoError) return status;
    memcpy(**dst, *src, static_cast<size_t>(n));
    return MgNoError;
}

MgStatus SetHandleBytes(const ZoneOps& ops, Handle* dst, const void* bytes, int32_t n) {
    if (n < 0) return MgBadArgument;
    MgStatus status = Provide(ops, dst, n);
    if (status != MgNoError) return status;
    if (bytes && n > 0) memmove(**dst, bytes, static_cast<size_t>(n));
    return MgNoError;
}

MgStatus AppendBytes(const ZoneOps& ops, const void* bytes, Handle dst, int32_t n) {
    if (n < 0) return MgBadArgument;
    const int32_t old = ops.size(dst);
    if (static_cast<int64_t>(old) + n > INT32_MAX) return MgNoMemory;
    MgStatus status = ops.resize(dst, old + n);
    if (status != MgNoError) return status;
    if (bytes && n > 0) memmove(*dst + old, bytes, static_cast<size_t>(n));
    return MgNoError;
}

// Appending a handle to itself works: its bytes are read after the resize, through the
// handle.
MgStatus AppendHandle(const ZoneOps& ops, Handle src, Handle dst) {
    const int32_t n = ops.size(src);
    const int32_t old = ops.size(dst);
    if (static_cast<int64_t>(old) + n > INT32_MAX) return MgNoMemory;
    MgStatus status = ops.resize(dst, old + n);
    if (status != MgNoError) return status;
    if (n > 0) memmove(*dst + old, *src, static_cast<size_t>(n));
    return MgNoError;
}

MgStatus DuplicateHandle(const ZoneOps& ops, Handle* h) {
    Handle copy = nullptr;
    MgStatus status = CopyHandle(ops, &copy, *h);
    if (status == MgNoError) *h = copy;
    return status;
}

}  // namespace mgmem

using namespace mgmem;

extern "C" {

MgStatus MemCopyHandle(Handle* dst, Handle src) {
    return CopyHandle(kMainOps, dst, src);
}
MgStatus MemSetHandleBytes(Handle* dst, const void* bytes, int32_t n) {
    return SetHandleBytes(kMainOps, dst, bytes, n);
}
MgStatus MemAppendHandle(Handle src, Handle dst) {
    return AppendHandle(kMainOps, src, dst);
}
MgStatus MemAppendBytes(const void* bytes, Handle dst, int32_t n) {
    return AppendBytes(kMainOps, bytes, dst, n);
}
MgStatus MemDuplicateHandle(Handle* h) {
    return DuplicateHandle(kMainOps, h);
}
MgStatus MemHandleFromBytes(const void* bytes, Handle* h, int32_t n) {
    *h = nullptr;
    return SetHandleBytes(kMainOps, h, bytes, n);
}

MgStatus CompactCopyHandle(Handle* dst, Handle src) {
    return CopyHandle(kCompactOps, dst, src);
}
MgStatus CompactSetHandleBytes(Handle* dst, const void* bytes, int32_t n) {
    return SetHandleBytes(kCompactOps, dst, bytes, n);
}
MgStatus CompactAppendHandle(Handle src, Handle dst) {
    return AppendHandle(kCompactOps, src, dst);
}
MgStatus CompactAppendBytes(const void* bytes, Handle dst, int32_t n) {
    return AppendBytes(kCompactOps, bytes, dst, n);
}
MgStatus CompactDuplicateHandle(Handle* h) {
    return DuplicateHandle(kCompactOps, h);
}
MgStatus CompactHandleFromBytes(const void* bytes, Handle* h, int32_t n) {
    *h = nullptr;
    return SetHandleBytes(kCompactOps, h, bytes, n);
}

// Moves a main-zone handle's bytes into a fresh compact-zone handle.
MgStatus MemMoveToCompact(Handle* h) {
    const int32_t n = MemHandleSize(*h);
    if (n < 0) return MgBadArgument;
    Handle moved = CompactNewHandle(n);
    if (!moved) return MgNoMemory;
    memcpy(*moved, **h, static_cast<size_t>(n));
    MemDisposeHandle(*h);
    *h = moved;
    return MgNoError;
}

}  // extern "C"
