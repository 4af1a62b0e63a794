// The developer's print: switched off unless gDebugging is set. A line goes to the debugger
// channel with LF, to dprintf.txt beside the program with CR LF, and, formatted on its own,
// to the optional sink gDebugOutput. dprintf.txt stays bounded (logbound.h).
#include <stdarg.h>
#include <string.h>

#include "dbgtools/logbound.h"
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

// The path of `leaf` in the application directory; null when it can't be made.
Path DPrintfPath(const char* leaf) {
    uint8_t name[256];
    TextToPString(leaf, name);
    Path path = FEmptyPath(nullptr);
    if (path &&
        (FApplicationDirectory(path) != MgNoError || FAppendName(path, name) != MgNoError)) {
        FPathRelease(path);
        path = nullptr;
    }
    return path;
}

// Creates dprintf.txt anew, or with `append` opens it as it is, at its end.
MgStatus OpenDPrintfFile(bool append) {
    Path path = DPrintfPath("dprintf.txt");
    if (!path) return MgNoMemory;
    FileRef file = 0;
    MgStatus status =
        append ? FMOpen(&file, path, FMModeReadWrite, FMShareAll)
               : FMCreateOver(&file, path, kDPrintfPermissions, FMModeReadWrite, FMShareAll, 0);
    FPathRelease(path);
    if (status == MgNoError && append && (status = FMSeek(file, 0, FMSeekEnd)) != MgNoError)
        FMClose(file);
    if (status == MgNoError) gDPrintfFile = file;
    return status;
}

// Renames dprintf.txt to dprintf.old.txt, replacing an older one.
bool RetireDPrintfFile() {
    Path path = DPrintfPath("dprintf.txt");
    Path oldPath = DPrintfPath("dprintf.old.txt");
    char name[FNativeNameBufferSize], oldName[FNativeNameBufferSize];
    const bool renamed = path && oldPath && FPathToNativeName(path, name) == MgNoError &&
                         FPathToNativeName(oldPath, oldName) == MgNoError &&
                         plat::RenameReplacing(name, oldName);
    FPathRelease(path);
    FPathRelease(oldPath);
    return renamed;
}

// A file beyond the bound is closed (a host may refuse to rename an open file) and becomes
// dprintf.old.txt; the line then starts a new file. Where the rename fails, the same file is
// opened again and the line goes to its end; if even that fails, the file is off, as after a
// failed create, rather than be created anew over the lines it holds.
void BoundDPrintfFile() {
    int32_t size = 0;
    if (FGetEOF(gDPrintfFile, &size) != MgNoError || static_cast<uint64_t>(size) <= kLogBound)
        return;
    FMClose(gDPrintfFile);
    gDPrintfFile = 0;
    if (OpenDPrintfFile(!RetireDPrintfFile()) != MgNoError) gDPrintfFileMode = 0;
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
    if (OpenDPrintfFile(false) != MgNoError) {
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
    BoundDPrintfFile();
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
