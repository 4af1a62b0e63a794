// Line-end conversion of a text block held in a handle, for 8-bit and 16-bit text.
//
// A CR or LF is a line end of one unit when it is the last unit or the next unit is the same
// character; a CR LF or LF CR pair is one line end of two units. So CR CR is two line ends
// and LF CR is one.
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "mg/textutil.h"

MG_SOURCE_IDENTITY("mgsource\\support2\\lineends.cpp", "$Revision: 1 $");

namespace {

constexpr uint32_t kCR = 13;
constexpr uint32_t kLF = 10;

int32_t HandleSize(Handle h, int32_t mainZone) {
    return mainZone ? MemHandleSize(h) : CompactHandleSize(h);
}

MgStatus ResizeHandle(Handle h, int32_t size, int32_t mainZone) {
    return mainZone ? MemResizeHandle(h, size) : CompactResizeHandle(h, size);
}

// Units may sit at any byte offset, so they are read and written through memcpy.
template <class U>
uint32_t Get(const uint8_t* text, int32_t i) {
    U u;
    memcpy(&u, text + static_cast<ptrdiff_t>(i) * sizeof(U), sizeof(U));
    return u;
}

template <class U>
void Put(uint8_t* text, int32_t i, uint32_t value) {
    U u = static_cast<U>(value);
    memcpy(text + static_cast<ptrdiff_t>(i) * sizeof(U), &u, sizeof(U));
}

inline bool IsLineEnd(uint32_t c) {
    return c == kCR || c == kLF;
}

// Units taken by the line end at i (1 or 2); i must hold CR or LF.
template <class U>
int32_t LineEndLength(const uint8_t* text, int32_t i, int32_t units) {
    if (i + 1 >= units) return 1;
    uint32_t c = Get<U>(text, i);
    uint32_t next = Get<U>(text, i + 1);
    return (IsLineEnd(next) && next != c) ? 2 : 1;
}

// Bytes of the block from `start` that form whole units, and the odd bytes behind them,
// which travel with the end of the text unchanged.
struct Span {
    int32_t units;
    int32_t tail;
};

template <class U>
MgStatus ToCRLF(Handle handle, int32_t start, int32_t mainZone) {
    int32_t size = HandleSize(handle, mainZone);
    if (start < 0 || start > size) return MgBadArgument;
    Span span{static_cast<int32_t>((size - start) / sizeof(U)),
              static_cast<int32_t>((size - start) % sizeof(U))};

    int32_t single = 0;
    for (int32_t i = 0; i < span.units;) {
        if (IsLineEnd(Get<U>(*handle + start, i))) {
            int32_t n = LineEndLength<U>(*handle + start, i, span.units);
            if (n == 1) single++;
            i += n;
        } else {
            i++;
        }
    }
    // Even with nothing to grow, LF CR pairs still get rewritten as CR LF.
    if (single > 0) {
        int32_t grow = single * static_cast<int32_t>(sizeof(U));
        if (size > INT32_MAX - grow) return MgNoMemory;
        MgStatus err = ResizeHandle(handle, size + grow, mainZone);
        if (err != MgNoError) return err;
    }

    uint8_t* text = *handle + start;
    int32_t r = span.units;           // units read, from the end
    int32_t w = span.units + single;  // units written, from the end
    memmove(text + static_cast<ptrdiff_t>(w) * sizeof(U),
            text + static_cast<ptrdiff_t>(r) * sizeof(U), span.tail);
    // Walking backward the pairs are found mirrored (LF CR read backward is CR then LF), which
    // groups an alternating run into the same number of line ends as the forward walk did.
    while (r > 0) {
        uint32_t c = Get<U>(text, r - 1);
        if (!IsLineEnd(c)) {
            Put<U>(text, --w, c);
            r--;
            continue;
        }
        int32_t n = 1;
        if (r >= 2) {
            uint32_t before = Get<U>(text, r - 2);
            if (IsLineEnd(before) && before != c) n = 2;
        }
        r -= n;
        Put<U>(text, --w, kLF);
        Put<U>(text, --w, kCR);
    }
    MG_CHECK(w == 0);
    return MgNoError;
}

template <class U>
MgStatus ToLF(Handle handle, int32_t start, int32_t mainZone) {
    int32_t size = HandleSize(handle, mainZone);
    if (start < 0 || start > size) return MgBadArgument;
    Span span{static_cast<int32_t>((size - start) / sizeof(U)),
              static_cast<int32_t>((size - start) % sizeof(U))};

    uint8_t* text = *handle + start;
    int32_t w = 0;
    for (int32_t r = 0; r < span.units;) {
        uint32_t c = Get<U>(text, r);
        if (IsLineEnd(c)) {
            r += LineEndLength<U>(text, r, span.units);
            Put<U>(text, w++, kLF);
        } else {
            Put<U>(text, w++, c);
            r++;
        }
    }
    memmove(text + static_cast<ptrdiff_t>(w) * sizeof(U),
            text + static_cast<ptrdiff_t>(span.units) * sizeof(U), span.tail);
    int32_t removed = (span.units - w) * static_cast<int32_t>(sizeof(U));
    return ResizeHandle(handle, size - removed, mainZone);
}

}  // namespace

MgStatus ConvertLineEndsToCRLF(Handle handle, int32_t start, int32_t mainZone, int32_t wide) {
    MG_CHECK(handle != nullptr);
    if (handle == nullptr) return MgBadArgument;
    return wide ? ToCRLF<uint16_t>(handle, start, mainZone)
                : ToCRLF<uint8_t>(handle, start, mainZone);
}

MgStatus ConvertLineEndsToLF(Handle handle, int32_t start, int32_t mainZone, int32_t wide) {
    MG_CHECK(handle != nullptr);
    if (handle == nullptr) return MgBadArgument;
    return wide ? ToLF<uint16_t>(handle, start, mainZone) : ToLF<uint8_t>(handle, start, mainZone);
}
