// Start-up and end of the text and number layer.
#include "mg/host.h"
#include "mg/math.h"
#include "mg/memory.h"
#include "mg/numtext.h"
#include "mg/path.h"
#include "mg/support.h"
#include "platform/platform.h"

namespace {

// A handle of an LStr with the given bytes; null when memory is short.
LStrHandle MakeLStr(const char* bytes, int32_t n) {
    Handle h = MemNewHandle(4 + n);
    if (!h) return nullptr;
    LStrPtr s = reinterpret_cast<LStrPtr>(*h);
    s->count = n;
    for (int32_t i = 0; i < n; ++i) s->text[i] = static_cast<uint8_t>(bytes[i]);
    return reinterpret_cast<LStrHandle>(h);
}

void Dispose(Handle* h) {
    if (*h) MemDisposeHandle(*h);
    *h = nullptr;
}

void DisposeLStr(LStrHandle* h) {
    Handle plain = reinterpret_cast<Handle>(*h);
    Dispose(&plain);
    *h = nullptr;
}

char ReadDecimalMark() {
    int32_t useLocale = 0;
    HostConfigRead(3, "useLocaleDecimalPt", &useLocale);
    if (useLocale == 0) return '.';
    char mark = plat::UserDecimalMark();
    return mark ? mark : '.';
}

}  // namespace

extern "C" {

MgStatus SupportInit(void) {
    plat::UseUserLocaleForTimeAndNumbers();
    ProcessId = plat::ProcessId();
    FloatInit();
    PowerOfTenTableFill();
    AMTextLength = 2;
    PMTextLength = 2;
    if (!(LStrCR = MakeLStr("\r", 1))) return MgNoMemory;
    if (!(LStrLF = MakeLStr("\n", 1))) return MgNoMemory;
    if (!(LStrCRLF = MakeLStr("\r\n", 2))) return MgNoMemory;
    if (!(LStrTab = MakeLStr("\t", 1))) return MgNoMemory;
    if (!(LStrEmpty = MakeLStr("", 0))) return MgNoMemory;
    if (!(EmptyPathValue = FEmptyPath(nullptr))) return MgNoMemory;
    if (!(NotAPathValue = FMakeNoPath(nullptr))) return MgNoMemory;
    FloatInfinity = 0x7F800000u;
    FloatNegInfinity = 0xFF800000u;
    DoubleInfinity = 0x7FF0000000000000ull;
    DoubleNegInfinity = 0xFFF0000000000000ull;
    DoubleNaN = 0xFFFFFFFFFFFFFFFFull;
    SystemDecimalMark = ReadDecimalMark();
    return RandomInitSeeds();
}

void SupportExit(void) {
    Dispose(&EmptyPathValue);
    Dispose(&NotAPathValue);
    DisposeLStr(&LStrCR);
    DisposeLStr(&LStrLF);
    DisposeLStr(&LStrCRLF);
    DisposeLStr(&LStrTab);
    DisposeLStr(&LStrEmpty);
}

}  // extern "C"
