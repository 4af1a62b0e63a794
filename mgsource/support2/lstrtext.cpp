// LStr helpers beside the plain counted-string operations: CR insertion, a terminating zero,
// and the copy of a text with a 16-bit count.
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "mg/textutil.h"

MG_SOURCE_IDENTITY("mgsource\\support2\\lstrtext.cpp", "$Revision: 1 $");

namespace {

constexpr int32_t kCountSize = static_cast<int32_t>(sizeof(int32_t));

// The LStr count when it fits in the block, else -1.
int32_t UsableCount(LStrHandle handle, int32_t blockSize) {
    if (blockSize < kCountSize) return -1;
    int32_t count = (*handle)->count;
    if (count < 0 || count > blockSize - kCountSize) return -1;
    return count;
}

}  // namespace

MgStatus LStringLFToCRLF(LStrHandle handle) {
    if (handle == nullptr || *handle == nullptr) return MgBadArgument;
    Handle block = reinterpret_cast<Handle>(handle);
    int32_t count = UsableCount(handle, MemHandleSize(block));
    if (count < 0) return MgBadArgument;

    int32_t lineFeeds = 0;
    for (int32_t i = 0; i < count; i++) {
        if ((*handle)->text[i] == '\n') lineFeeds++;
    }
    // Every LF gets a CR in front, even one that has a CR already.
    MgStatus err = MemResizeHandle(block, count + lineFeeds + kCountSize);
    if (err != MgNoError) return err;

    uint8_t* text = (*handle)->text;
    (*handle)->count = count + lineFeeds;
    int32_t r = count;
    int32_t w = count + lineFeeds;
    while (r > 0 && w > r) {
        uint8_t c = text[--r];
        text[--w] = c;
        if (c == '\n') text[--w] = '\r';
    }
    MG_CHECK(r == w);
    return MgNoError;
}

MgStatus LStringTerminate(LStrHandle handle, int32_t compactZone) {
    if (handle == nullptr || *handle == nullptr) return MgBadArgument;
    Handle block = reinterpret_cast<Handle>(handle);
    int32_t size = compactZone ? CompactHandleSize(block) : MemHandleSize(block);
    int32_t count = UsableCount(handle, size);
    if (count < 0 || size == INT32_MAX) return MgBadArgument;
    MgStatus err =
        compactZone ? CompactResizeHandle(block, size + 1) : MemResizeHandle(block, size + 1);
    if (err != MgNoError) return err;
    (*handle)->text[count] = 0;
    (*handle)->count = count + 1;
    return MgNoError;
}

void PStringFromShortCount(Handle handle, LStr* l) {
    if (handle == nullptr || *handle == nullptr || l == nullptr) return;
    int16_t count;
    memcpy(&count, *handle, sizeof count);
    // A negative count has no text to copy; the destination gets an empty string.
    int32_t n = count < 0 ? 0 : count;
    l->count = n;
    memcpy(l->text, *handle + sizeof count, static_cast<size_t>(n));
}
