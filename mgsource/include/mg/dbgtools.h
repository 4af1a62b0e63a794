// Diagnostics: the developer's print and the fatal failure report.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Master switch of DPrintf, DSPrintf, the severity prints and dprintf.txt; 0 keeps them
// silent.
extern int32_t gDebugging;
// 1 while DPrintf or DSPrintf formats or writes: a DPrintf from inside them prints nothing.
extern int32_t gDPrintfBusy;
// Lines written so far.
extern int32_t gDPrintfCount;
// 0 no file, 1 write each line to dprintf.txt, 2 write and flush each line.
extern int16_t gDPrintfFileMode;
// dprintf.txt, beside the program; opened by the first line that reaches it.
extern FileRef gDPrintfFile;
// The last formatted text, 512 characters and a terminator.
extern char gDPrintfText[513];
// Returned by StopHere; nothing writes it.
extern int32_t gStopHereResult;
// Name of the application, set by SetApplicationName.
extern char gAppName[256];

void SetApplicationName(const char* ignored);

// Prints a formatted developer message, cut to 512 characters, as one line; returns the
// count of lines written, 0 while switched off or when called from inside itself.
int32_t DPrintf(const char* format, ...);
// Writes `text` as a line with no formatting, whatever the switch; returns the count.
int32_t DPrintfRaw(const char* text);
// The formatted text in gDPrintfText, valid until the next call; empty while switched off.
const char* DSPrintf(const char* format, ...);
// The output step: the debugger channel with LF, dprintf.txt with CR LF.
void DebugWriteLine(const char* text);
void DOpenDPrintfFile(void);
// A message as "file(line) :" severity message; the bare message when `file` is empty.
// All return 0.
int32_t DPrintSeverity(const char* file, int32_t line, const char* severity, const char* message);
int32_t DPrintInfo(const char* file, int32_t line, const char* message);
int32_t DPrintWarn(const char* file, int32_t line, const char* message);
int32_t DPrintError(const char* file, int32_t line, const char* message);
// Lays out "file(line) :" severity message in `buffer`, cut to `size` - 1 characters and
// always terminated within `size`; 0 when there is nothing to lay out.
int32_t DBuildSiteMessage(const char* file, int32_t line, const char* severity, const char* message,
                          char* buffer, int32_t size);
// The landing place for a breakpoint: prints "StopHere: " and the text.
int32_t StopHere(const char* text);
// Reads the switch from the host and makes an LStrOutput the extra sink; DebugExit closes
// dprintf.txt and destroys the sink.
void DebugInit(void);
void DebugExit(void);

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
// The common end of both reports: shows the message, appends the failure log's record and
// ends the process.
void DFailureFinish(ConstPStr message, const char* revision);
// Appends a record of the failure, with a stack trace, to Meridax_Failure_Log.txt in the
// temporary directory; with `toFile` 0 the record goes through DPrintf instead.
void DWriteFailureLog(ConstPStr message, const char* revision, int32_t toFile);
// Cuts a backslash-separated path text in place down to its leaf.
void DStripDirectory(char* path);

MG_EXTERN_C_END

#ifdef __cplusplus
class StringOutput;
// Optional extra sink of DPrintf, owned here; each message and a line end go to it too.
extern StringOutput* gDebugOutput;

// A conditional debug statement at a source line. Print drops its text and returns 0.
struct DebugSite {
    DebugSite(const char* file, int32_t line, const char* revision, int32_t level);
    const char* file;
    const char* revision;
    int32_t line;
    int32_t level;
};
int32_t Print(const DebugSite& site, const char* format, ...);
#endif

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
