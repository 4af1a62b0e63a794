// The string forms of the format engine: NUL-terminated text, PStrs, handles and LStrs.
// Those that size a block first count with a null destination, then write; the two passes
// must agree.
#include <stdarg.h>
#include <stdint.h>

#include "mg/dbgtools.h"
#include "mg/format.h"
#include "mg/memory.h"
#include "support/formatengine.h"

MG_SOURCE_IDENTITY("mgsource\\support\\formatwrappers.cpp", "$Revision: 1 $");

namespace {

int32_t Length(const char* format) {
    return static_cast<int32_t>(strlen(format));
}

}  // namespace

extern "C" {

int32_t StrFormat(char* dest, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int32_t n = StrFormatV(dest, INT32_MAX, format, Length(format), args);
    va_end(args);
    if (dest) dest[n] = 0;
    return n;
}

int32_t StrFormatN(char* dest, int32_t size, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int32_t n = StrFormatV(dest, size, format, Length(format), args);
    va_end(args);
    return n;
}

int32_t StrFormatP(PStr result, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int32_t n = StrFormatV(reinterpret_cast<char*>(result + 1), 255, format, Length(format), args);
    va_end(args);
    result[0] = static_cast<uint8_t>(n);
    return n;
}

int32_t StrFormatFromP(char* dest, ConstPStr format, ...) {
    va_list args;
    va_start(args, format);
    int32_t n =
        StrFormatV(dest, INT32_MAX, reinterpret_cast<const char*>(format + 1), format[0], args);
    va_end(args);
    if (dest) dest[n] = 0;
    return n;
}

int32_t StrFormatPP(PStr result, ConstPStr format, ...) {
    va_list args;
    va_start(args, format);
    int32_t n = StrFormatV(reinterpret_cast<char*>(result + 1), 255,
                           reinterpret_cast<const char*>(format + 1), format[0], args);
    va_end(args);
    result[0] = static_cast<uint8_t>(n);
    return n;
}

Handle StrFormatHandle(Handle handle, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int32_t length = Length(format);
    int32_t n = mgformat::CountFormat(format, length, args);
    if (handle) {
        if (MemResizeHandle(handle, n + 1) != MgNoError) {
            va_end(args);
            return handle;  // untouched
        }
    } else {
        handle = MemNewHandle(n + 1);
        if (!handle) {
            va_end(args);
            return nullptr;
        }
    }
    int32_t written = StrFormatV(reinterpret_cast<char*>(*handle), n, format, length, args);
    va_end(args);
    if (written != n) MG_FAIL();
    (*handle)[n] = 0;
    return handle;
}

MgStatus StrFormatSetLStr(LStrHandle* handle, const char* format, ...) {
    if (!handle) return MgBadArgument;
    va_list args;
    va_start(args, format);
    int32_t length = Length(format);
    int32_t n = mgformat::CountFormat(format, length, args);
    MgStatus status = MgNoError;
    int32_t size = static_cast<int32_t>(offsetof(LStr, text)) + n;
    if (!*handle) {
        *handle = reinterpret_cast<LStrHandle>(MemNewHandle(size));
        if (!*handle) status = MgNoMemory;
    } else {
        status = MemResizeHandle(reinterpret_cast<Handle>(*handle), size);
    }
    if (status == MgNoError) {
        LStr* l = **handle;
        int32_t written = StrFormatV(reinterpret_cast<char*>(l->text), n, format, length, args);
        if (written != n) MG_FAIL();
        l->count = written;
    }
    va_end(args);
    return status;
}

MgStatus StrFormatAppendLStr(LStrHandle handle, const char* format, ...) {
    if (!handle || !*handle) return MgBadArgument;
    va_list args;
    va_start(args, format);
    int32_t length = Length(format);
    int32_t n = mgformat::CountFormat(format, length, args);
    int32_t old = (*handle)->count;
    int32_t size = static_cast<int32_t>(offsetof(LStr, text)) + old + n;
    MgStatus status = MemResizeHandle(reinterpret_cast<Handle>(handle), size);
    if (status == MgNoError) {
        LStr* l = *handle;
        int32_t written =
            StrFormatV(reinterpret_cast<char*>(l->text) + old, n, format, length, args);
        if (written != n) MG_FAIL();
        l->count = old + written;
    }
    va_end(args);
    return status;
}

}  // extern "C"
