// LStrOutput: a sink that collects its texts in a growing LStr of the compact zone.
#include <stddef.h>
#include <string.h>

#include "mg/dbgtools.h"
#include "mg/format.h"
#include "mg/memory.h"
#include "mg/mxexcept.h"
#include "mg/stringoutput.h"
#include "support/formatengine.h"

MG_SOURCE_IDENTITY("mgsource\\support2\\lstroutput.cpp", "$Revision: 1 $");

namespace {

constexpr int32_t kFirstSize = 68;
const char kNoHandle[] = "LStrOutput could not allocate LStr Handle";

Handle AsHandle(LStrHandle text) {
    return reinterpret_cast<Handle>(text);
}

}  // namespace

LStrOutput::LStrOutput() : text(reinterpret_cast<LStrHandle>(CompactNewHandle(kFirstSize))) {
    ThrowIfNull(text, kNoHandle, kMgSourcePath, __LINE__);
    (*text)->count = 0;
}

LStrOutput::LStrOutput(const LStrOutput& other) : enabled(other.enabled) {
    if (other.text == nullptr) return;
    Handle copy = nullptr;
    CompactCopyHandle(&copy, AsHandle(other.text));
    ThrowIfNull(copy, kNoHandle, kMgSourcePath, __LINE__);
    text = reinterpret_cast<LStrHandle>(copy);
}

LStrOutput& LStrOutput::operator=(const LStrOutput& other) {
    if (this == &other) return *this;
    CompactDisposeHandle(AsHandle(text));
    text = nullptr;
    enabled = other.enabled;
    if (other.text != nullptr) {
        Handle copy = nullptr;
        CompactCopyHandle(&copy, AsHandle(other.text));
        ThrowIfNull(copy, kNoHandle, kMgSourcePath, __LINE__);
        text = reinterpret_cast<LStrHandle>(copy);
    }
    return *this;
}

LStrOutput::~LStrOutput() {
    CompactDisposeHandle(AsHandle(text));
}

int32_t LStrOutput::Printf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    if (enabled) Append(format, args);
    va_end(args);
    return 0;
}

int32_t LStrOutput::VPrintf(const char* format, va_list args) {
    if (enabled) Append(format, args);
    return 0;
}

void LStrOutput::Flush() {}

// Counts first, grows the block to the new count and its word, then formats behind the text.
// A block that can't grow loses the text.
void LStrOutput::Append(const char* format, va_list args) {
    if (text == nullptr) return;
    const int32_t length = static_cast<int32_t>(strlen(format));
    const int32_t n = mgformat::CountFormat(format, length, args);
    const int32_t old = (*text)->count;
    if (n > INT32_MAX - static_cast<int32_t>(offsetof(LStr, text)) - old) return;
    if (CompactResizeHandle(AsHandle(text), old + n + 4) != MgNoError) return;
    const int32_t written =
        StrFormatV(reinterpret_cast<char*>((*text)->text) + old, n, format, length, args);
    MG_CHECK(written == n);
    (*text)->count = old + n;
}
