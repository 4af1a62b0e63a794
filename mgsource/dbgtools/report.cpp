// The fatal failure report: one message on the host's output, then exit(1).
#include <stdlib.h>
#include <string.h>

#include "mg/dbgtools.h"
#include "mg/format.h"
#include "mg/host.h"
#include "mg/memory.h"
#include "mg/pstring.h"

MG_SOURCE_IDENTITY("mgsource\\dbgtools\\report.cpp", "$Revision: 1 $");

// The `\n` are the format engine's two-character escapes: each becomes CR LF.
#define MG_REPORT_ADVICE                                                               \
    "\\n\\nFor assistance in resolving this problem, please record the preceding "     \
    "information and navigate to https://support.meridax.example, or contact Meridax " \
    "Technical Support."

namespace {

const char kErrorFormat[] = "Error #%ld: %s \"%s\" line %ld" MG_REPORT_ADVICE;
const char kFailureFormat[] = "Failure %s: \"%s\" line %ld" MG_REPORT_ADVICE;

// The replacement block: four unread bytes, the error format, then the failure format,
// both as PStrs.
void ReplacementFormat(bool error, char out[256]) {
    ConstPStr p = *gFailureFormats + 4;
    if (!error) p += 1 + p[0];
    PStringToText(p, out);
}

void Report(int32_t error, const char* file, int32_t line, const char* detail,
            const char* revision) {
    char replacement[256];
    const char* format = error ? kErrorFormat : kFailureFormat;
    if (gFailureFormats) {
        ReplacementFormat(error != 0, replacement);
        format = replacement;
    }
    // A failed allocation on record may well be the cause of what follows.
    if (MemOutOfMemoryInfo(nullptr)) MemReportOutOfMemory(0, 7);
    char leaf[260];
    strncpy(leaf, file ? file : "", sizeof leaf - 1);
    leaf[sizeof leaf - 1] = 0;
    DStripDirectory(leaf);
    if (!detail) detail = "";
    uint8_t message[256];
    if (error)
        StrFormatP(message, format, error, detail, leaf, line, gFailureExtra);
    else
        StrFormatP(message, format, detail, leaf, line, gFailureExtra);
    DFailureFinish(message, revision);
}

}  // namespace

extern "C" {

Handle gFailureFormats = nullptr;
int32_t gFailureToHost = 1;
int32_t gFailureNoExit = 0;
char gFailureExtra[256];

void DStripDirectory(char* path) {
    size_t len = strlen(path);
    if (len == 0) return;
    size_t i = len - 1;
    while (i > 0 && path[i] != '\\') --i;
    const char* leaf = path[i] == '\\' ? path + i + 1 : path + i;
    memmove(path, leaf, strlen(leaf) + 1);
}

Handle DSetFailureFormats(Handle formats) {
    gFailureFormats = formats;
    return formats;
}

// exit, not _exit, so that the handlers registered with atexit run.
void DFailureFinish(ConstPStr message, const char* revision) {
    if (gFailureToHost) HostWritePStr(message, 0);
    DWriteFailureLog(message, revision, 1);
    if (gFailureNoExit == 0) exit(1);
    StopHere(nullptr);
}

int32_t DReportFailure(const char* file, int32_t line, const char* detail, const char* revision) {
    Report(0, file, line, detail, revision);
    return 0;
}

int32_t DReportError(const char* file, int32_t line, int32_t error, const char* detail,
                     const char* revision) {
    if (error == 0) return 0;
    Report(error, file, line, detail, revision);
    return 1;
}

int32_t DFailure(const char* file, int32_t line, const char* detail) {
    return DReportFailure(file, line, detail, kMgSourceRevision);
}

}  // extern "C"
