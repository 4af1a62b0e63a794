// The format engine's outputs beyond memory: the host's notification and byte files. Each
// counts first, formats into a pointer block of that size and frees it afterwards.
#include <stdarg.h>

#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/format.h"
#include "mg/host.h"
#include "mg/memory.h"
#include "support/formatengine.h"

MG_SOURCE_IDENTITY("mgsource\\support\\formatfile.cpp", "$Revision: 1 $");

namespace {

// The text in a new pointer block; null when the block cannot be had. *count is the length
// of the counting pass, *written that of the writing pass.
Ptr FormatToPtr(const char* format, va_list args, int32_t* count, int32_t* written) {
    int32_t length = static_cast<int32_t>(strlen(format));
    *count = mgformat::CountFormat(format, length, args);
    *written = 0;
    if (*count < 0) return nullptr;
    Ptr text = MemNewPtr(*count);
    if (!text) return nullptr;
    *written = StrFormatV(reinterpret_cast<char*>(text), *count, format, length, args);
    return text;
}

// Formats and writes; the status of the write, with 2 for a failed allocation and 85 for a
// negative count. *complete tells whether every byte was written.
MgStatus FormatToFile(FileRef file, const char* format, va_list args, int32_t* length,
                      bool* complete) {
    int32_t count, written;
    Ptr text = FormatToPtr(format, args, &count, &written);
    *length = count;
    *complete = false;
    if (count < 0) return 85;
    if (!text) return MgNoMemory;
    if (written != count) MG_FAIL();
    int32_t actual = 0;
    MgStatus status = FMWriteBytes(file, count, &actual, text);
    MemDisposePtr(text);
    *complete = status == MgNoError && actual == count;
    return status;
}

}  // namespace

extern "C" {

int32_t StrFormatNotify(int32_t first, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int32_t count, written;
    Ptr text = FormatToPtr(format, args, &count, &written);
    va_end(args);
    if (!text) return 0;
    if (written != count) {
        DPrintf("n = %ld, nn=%ld", count, written);
        MG_FAIL();
    }
    HostNotify(first, reinterpret_cast<const char*>(text), count);
    MemDisposePtr(text);
    return count;
}

int32_t StrFormatFile(FileRef file, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int32_t length;
    bool complete;
    FormatToFile(file, format, args, &length, &complete);
    va_end(args);
    return complete ? length : -1;
}

MgStatus StrFormatFileStatus(FileRef file, const char* format, ...) {
    va_list args;
    va_start(args, format);
    int32_t length;
    bool complete;
    MgStatus status = FormatToFile(file, format, args, &length, &complete);
    va_end(args);
    return status;
}

}  // extern "C"
