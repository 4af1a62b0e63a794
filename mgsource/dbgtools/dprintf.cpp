// The developer's print: switched off unless gDebugging is set. A line goes to the debugger
// channel with LF, to dprintf.txt beside the program with CR LF, and, formatted on its own,
// to the optional sink gDebugOutput.
#include <stdarg.h>
#include <string.h>

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/filemgr.h"
#include "mg/format.h"
#include "mg/path.h"
#include "mg/pstring.h"
#include "mg/stringoutput.h"
#include "platform/platform.h"

namespace {

constexpr int32_t kTextLimit = 512;
// dprintf.txt: created anew by the first line of a run, readable and writable by all.
constexpr int32_t kDPrintfPermissions = 0666;

// The line as handed to the outputs: the text, LF, and room for the CR of the file's line
// end and a terminator.
char gDPrintfLine[kTextLimit + 4];

MgStatus CreateDPrintfFile() {
    uint8_t name[256];
    TextToPString("dprintf.txt", name);
    Path path = FEmptyPath(nullptr);
    if (!path) return MgNoMemory;
    MgStatus status = MgNoMemory;
    FileRef file = 0;
    if (FApplicationDirectory(path) == MgNoError && FAppendName(path, name) == MgNoError) {
        status = FMCreateOver(&file, path, kDPrintfPermissions, FMModeReadWrite, FMShareAll, 0);
    }
    FPathRelease(path);
    if (status == MgNoError) gDPrintfFile = file;
    return status;
}

}  // namespace

StringOutput* gDebugOutput = nullptr;

extern "C" {

int32_t gDebugging = 0;
int32_t gDPrintfBusy = 0;
int32_t gDPrintfCount = 0;
int16_t gDPrintfFileMode = 1;
FileRef gDPrintfFile = 0;
char gDPrintfText[kTextLimit + 1];

// The complaint goes through DPrintf before the mode drops to 0: reached from DPrintf, the
// guard drops it; reached from DPrintfRaw or a severity print, it reaches the debugger after
// one more failed create whose own complaint the guard drops.
void DOpenDPrintfFile(void) {
    if (gDPrintfFile != 0 || !gDebugging) return;
    if (CreateDPrintfFile() != MgNoError) {
        DPrintf(" Can't create dprintf.txt");
        gDPrintfFileMode = 0;
    }
}

// A text longer than a formatted line is cut to its length.
void DebugWriteLine(const char* text) {
    if (!text) text = "";
    int32_t n = 0;
    while (n < kTextLimit && text[n]) ++n;
    memcpy(gDPrintfLine, text, static_cast<size_t>(n));
    gDPrintfLine[n++] = '\n';
    gDPrintfLine[n] = 0;
    plat::DebuggerOutput(gDPrintfLine);
    if (gDPrintfFileMode == 0) return;
    if (gDPrintfFile == 0) DOpenDPrintfFile();
    if (gDPrintfFile == 0) return;
    memcpy(gDPrintfLine + n - 1, "\r\n", 2);
    int32_t written = 0;
    FMWriteBytes(gDPrintfFile, n + 1, &written, gDPrintfLine);
    if (gDPrintfFileMode == 2) FMFlushFile(gDPrintfFile);
}

int32_t DPrintf(const char* format, ...) {
    if (!gDebugging || gDPrintfBusy) return 0;
    va_list args;
    va_start(args, format);
    if (gDebugOutput) {
        va_list copy;
        va_copy(copy, args);
        gDebugOutput->VPrintf(format, copy);
        va_end(copy);
        gDebugOutput->Printf("\\n");
    }
    gDPrintfBusy = 1;
    const int32_t n = StrFormatV(gDPrintfText, kTextLimit, format, StrLen(format), args);
    va_end(args);
    gDPrintfText[n] = 0;
    DebugWriteLine(gDPrintfText);
    gDPrintfBusy = 0;
    return ++gDPrintfCount;
}

int32_t DPrintfRaw(const char* text) {
    DebugWriteLine(text);
    return ++gDPrintfCount;
}

const char* DSPrintf(const char* format, ...) {
    if (!gDebugging || gDPrintfBusy) return "";
    gDPrintfBusy = 1;
    va_list args;
    va_start(args, format);
    const int32_t n = StrFormatV(gDPrintfText, kTextLimit, format, StrLen(format), args);
    va_end(args);
    gDPrintfText[n] = 0;
    gDPrintfBusy = 0;
    return gDPrintfText;
}

}  // extern "C"
