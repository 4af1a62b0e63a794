// Severity prints ("I: ", "W: ", "E: ") with the place they come from, conditional debug
// sites, and the breakpoint landing place.
#include <stdio.h>
#include <string.h>

#include "mg/dbgtools.h"

MG_SOURCE_IDENTITY("mgsource\\dbgtools\\severity.cpp", "$Revision: 1 $");

namespace {

constexpr int32_t kSiteBufferSize = 513;

// Appends `text` at *n when it fits with its terminator; otherwise fills the rest of the
// buffer with as much as fits and ends it within the buffer.
void AppendPart(char* buffer, int32_t size, int32_t* n, const char* text, const char* tooLong,
                bool cutOnlyIfRoom) {
    const int32_t length = static_cast<int32_t>(strlen(text));
    if (*n + length + 1 < size) {
        memcpy(buffer + *n, text, static_cast<size_t>(length) + 1);
        *n += length;
        return;
    }
    Print(DebugSite(kMgSourcePath, __LINE__, kMgSourceRevision, 0), tooLong);
    const int32_t room = size - *n - 1;
    if (cutOnlyIfRoom && room <= 0) return;
    if (room > 0) memcpy(buffer + *n, text, static_cast<size_t>(room));
    buffer[size - 1] = 0;
    *n = size - 1;
}

}  // namespace

DebugSite::DebugSite(const char* siteFile, int32_t siteLine, const char* siteRevision,
                     int32_t siteLevel)
    : file(siteFile), revision(siteRevision), line(siteLine), level(siteLevel) {}

// A site's text is dropped; the call stays so that the message stays in the program.
int32_t Print(const DebugSite&, const char*, ...) {
    return 0;
}

extern "C" {

int32_t gStopHereResult = 0;

int32_t DBuildSiteMessage(const char* file, int32_t line, const char* severity, const char* message,
                          char* buffer, int32_t size) {
    if (!file || !*file || (!severity && !message) || !buffer || size < 2) return 0;
    int32_t n = snprintf(buffer, static_cast<size_t>(size), "%s(%d) :", file, line);
    if (n < 0 || n >= size) {
        MG_FAIL();
        return 0;
    }
    if (severity) {
        AppendPart(buffer, size, &n, severity, "Severity exceeds max length of message string.",
                   false);
    }
    if (message) {
        AppendPart(buffer, size, &n, message, "Message exceeds max length of message string.",
                   true);
    }
    return 1;
}

// Without a place the bare message goes out, with no severity either.
int32_t DPrintSeverity(const char* file, int32_t line, const char* severity, const char* message) {
    if (!gDebugging) return 0;
    char buffer[kSiteBufferSize] = {};
    const char* out = message ? message : "";
    if (file && *file && DBuildSiteMessage(file, line, severity, message, buffer, sizeof buffer))
        out = buffer;
    DebugWriteLine(out);
    ++gDPrintfCount;
    return 0;
}

int32_t DPrintInfo(const char* file, int32_t line, const char* message) {
    return DPrintSeverity(file, line, "I: ", message);
}

int32_t DPrintWarn(const char* file, int32_t line, const char* message) {
    return DPrintSeverity(file, line, "W: ", message);
}

int32_t DPrintError(const char* file, int32_t line, const char* message) {
    Print(DebugSite(file, line, kMgSourceRevision, 1), "%s", message);
    return DPrintSeverity(file, line, "E: ", message);
}

int32_t StopHere(const char* text) {
    DPrintf("StopHere: %s", text ? text : "");
    return gStopHereResult;
}

}  // extern "C"
