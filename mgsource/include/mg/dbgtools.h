// Diagnostics: the developer's print and the fatal failure report.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Master switch of DPrintf; 0 keeps every debug print silent.
extern int32_t gDebugging;
// Name of the application, set by SetApplicationName.
extern char gAppName[256];

void SetApplicationName(const char* ignored);

// Prints a formatted developer message when gDebugging is set; returns the count of texts
// written, 0 while switched off.
int32_t DPrintf(const char* format, ...);

// Reports a broken internal rule and ends the process with status 1; never returns in
// practice. `file` is the reporting source's path constant, `revision` its revision text.
int32_t DReportFailure(const char* file, int32_t line, const char* detail, const char* revision);
// As DReportFailure with an error number; does nothing and returns 0 when `error` is 0.
int32_t DReportError(const char* file, int32_t line, int32_t error, const char* detail,
                     const char* revision);
// DReportFailure with the diagnostics module's own revision.
int32_t DFailure(const char* file, int32_t line, const char* detail);
// Optional replacement texts of the two reports: four unread bytes, then the error format
// and the failure format as PStrs; null selects the built-in texts.
extern Handle gFailureFormats;
// Nonzero: the report's message goes to the host's output.
extern int32_t gFailureToHost;
// Zero: a report ends the process.
extern int32_t gFailureNoExit;
// Passed as a last argument to both report formats; the built-in texts don't use it.
extern char gFailureExtra[256];

Handle DSetFailureFormats(Handle formats);
// The common end of both reports: shows the message and ends the process.
void DFailureFinish(ConstPStr message, const char* revision);
// Cuts a backslash-separated path text in place down to its leaf.
void DStripDirectory(char* path);

MG_EXTERN_C_END

// Each source file names itself once, with a backslash path so that reports print its leaf.
#define MG_SOURCE_IDENTITY(path, revision)                     \
    [[maybe_unused]] static const char kMgSourcePath[] = path; \
    [[maybe_unused]] static const char kMgSourceRevision[] = revision

// The one check for broken internal rules: a false condition ends the process with a report.
#define MG_CHECK(cond)                                                                    \
    do {                                                                                  \
        if (!(cond)) DReportFailure(kMgSourcePath, __LINE__, nullptr, kMgSourceRevision); \
    } while (0)

// Reports a failure unconditionally (a reached point that must not be reached).
#define MG_FAIL() DReportFailure(kMgSourcePath, __LINE__, nullptr, kMgSourceRevision)
// Reports an error number, as the memory manager's consistency checks do.
#define MG_ERROR(err) DReportError(kMgSourcePath, __LINE__, (err), nullptr, kMgSourceRevision)
