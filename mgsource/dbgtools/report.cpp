// The fatal failure report: one message on the host's output, then exit(1).
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "mg/dbgtools.h"
#include "mg/host.h"

MG_SOURCE_IDENTITY("mgsource\\dbgtools\\report.cpp", "$Revision: 1 $");

namespace {

// Prints the report line, cut at 255 characters as the message PStr is, and ends the
// process. An error number of 0 means a failure report.
[[noreturn]] void FinishReport(int32_t error, const char* detail, const char* file, int32_t line) {
    char leaf[260];
    snprintf(leaf, sizeof leaf, "%s", file ? file : "");
    DStripDirectory(leaf);
    if (!detail) detail = "";
    char text[512];
    int n = error ? snprintf(text, sizeof text, "Error #%ld: %s \"%s\" line %ld",
                             static_cast<long>(error), detail, leaf, static_cast<long>(line))
                  : snprintf(text, sizeof text, "Failure %s: \"%s\" line %ld", detail, leaf,
                             static_cast<long>(line));
    uint8_t message[256];
    size_t count = n < 0 ? 0 : (n > 255 ? 255 : static_cast<size_t>(n));
    message[0] = static_cast<uint8_t>(count);
    memcpy(message + 1, text, count);
    HostWritePStr(message, 0);
    exit(1);
}

}  // namespace

extern "C" {

void DStripDirectory(char* path) {
    size_t len = strlen(path);
    if (len == 0) return;
    size_t i = len - 1;
    while (i > 0 && path[i] != '\\') --i;
    const char* leaf = path[i] == '\\' ? path + i + 1 : path + i;
    memmove(path, leaf, strlen(leaf) + 1);
}

int32_t DReportFailure(const char* file, int32_t line, const char* detail, const char*) {
    FinishReport(0, detail, file, line);
}

int32_t DReportError(const char* file, int32_t line, int32_t error, const char* detail,
                     const char*) {
    if (error == 0) return 0;
    FinishReport(error, detail, file, line);
}

int32_t DFailure(const char* file, int32_t line, const char* detail) {
    return DReportFailure(file, line, detail, kMgSourceRevision);
}

}  // extern "C"
