// MXExcept: an error number, the place of the throw, a ready text, and the trace.
#include "mg/mxexcept.h"

#include <string.h>

#include "mg/format.h"

namespace {

// Copies at most `size` - 1 characters; the field's last byte is always a NUL.
template <size_t size>
void CopyCut(char (&field)[size], const char* text) {
    field[0] = 0;
    if (text == nullptr) return;
    strncpy(field, text, size - 1);
    field[size - 1] = 0;
}

}  // namespace

// Not inlined: the trace skips this constructor's frame and Capture's, so that it starts at
// the code that constructs the exception.
[[gnu::noinline]] MXExcept::MXExcept(int32_t error, const char* detailText, const char* fileText,
                                     int32_t lineNumber)
    : err(error), line(0) {
    stack.Capture(2);
    CopyCut(detail, detailText);
    CopyCut(file, fileText);
    line = lineNumber;
    // Cleared first, so that a text shorter than the field is terminated too.
    memset(message, 0, sizeof message);
    StrFormatN(message, sizeof message - 1, "MXExcept. Err=%d, File=%s, Line=%d, Detail='%s'", err,
               file, line, detail);
    message[sizeof message - 1] = 0;
}

const char* MXExcept::what() const noexcept {
    return message;
}
int32_t MXExcept::GetError() const {
    return err;
}
const char* MXExcept::GetFile() const {
    return file;
}
int32_t MXExcept::GetLine() const {
    return line;
}
const char* MXExcept::GetDetail() const {
    return detail;
}
ExceptStackTrace& MXExcept::GetStackTrace() {
    return stack;
}
const ExceptStackTrace& MXExcept::GetStackTrace() const {
    return stack;
}

void ThrowMXExcept(int32_t err, const char* detail, const char* file, int32_t line) {
    throw MXExcept(err, detail, file, line);
}

void ThrowIfNull(const void* pointer, const char* detail, const char* file, int32_t line) {
    if (pointer == nullptr) ThrowMXExcept(MgNoMemory, detail, file, line);
}
