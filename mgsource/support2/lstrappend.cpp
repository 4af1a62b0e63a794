// Growing and setting an LStr in its handle, in either zone.
#include "mg/ansi.h"
#include "mg/lists.h"
#include "mg/memory.h"

namespace {

MgStatus Append(LStrHandle handle, const LStr* l, bool mainZone, bool exact) {
    if (!handle || !*handle) return MgBadArgument;
    Handle h = reinterpret_cast<Handle>(handle);
    const int32_t size = mainZone ? MemHandleSize(h) : CompactHandleSize(h);
    const int32_t count = (*handle)->count;
    const int32_t length = l ? l->count : 0;
    if (count < 0 || length < 0 || count > size - 4) return MgBadArgument;
    if (int64_t{count} + length + 4 > INT32_MAX) return MgNoMemory;
    const int32_t needed = count + length + 4;
    if (size < needed) {
        MgStatus status = mainZone ? MemResizeHandle(h, needed) : CompactResizeHandle(h, needed);
        if (status) return status;
    }
    if (length > 0) BlockMove(l->text, (*handle)->text + count, length);
    (*handle)->count = count + length;
    if (!exact) return MgNoError;
    return mainZone ? MemResizeHandle(h, needed) : CompactResizeHandle(h, needed);
}

}  // namespace

extern "C" {

MgStatus LStringAppend(LStrHandle handle, const LStr* l) {
    return Append(handle, l, true, false);
}
MgStatus LStringAppendExact(LStrHandle handle, const LStr* l) {
    return Append(handle, l, true, true);
}
MgStatus LStringAppendCompact(LStrHandle handle, const LStr* l) {
    return Append(handle, l, false, false);
}
MgStatus LStringAppendCompactExact(LStrHandle handle, const LStr* l) {
    return Append(handle, l, false, true);
}

MgStatus LStringAssign(LStrHandle* handleVariable, int32_t length, const uint8_t* bytes) {
    if (!handleVariable) return MgBadArgument;
    Handle h = reinterpret_cast<Handle>(*handleVariable);
    if (length == 0 || !bytes) {
        if (h) CompactDisposeHandle(h);
        *handleVariable = nullptr;
        return MgNoError;
    }
    if (length < 0 || length > INT32_MAX - 4) return MgBadArgument;
    if (!h) {
        if (!(h = CompactNewHandle(length + 4))) return MgNoMemory;
        *handleVariable = reinterpret_cast<LStrHandle>(h);
    } else if (MgStatus status = CompactResizeHandle(h, length + 4)) {
        return status;
    }
    BlockMove(bytes, (**handleVariable)->text, length);
    (**handleVariable)->count = length;
    return MgNoError;
}

}  // extern "C"
