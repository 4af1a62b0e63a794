// Services the layer asks of the application it lives in. The application defines them;
// mxsbutil's versions are in exsource/mxsbutil/extstubs.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

extern int32_t gHostPrintOn;
extern int32_t gHostPrintBusy;
extern int32_t gHostPrintCount;
extern char gHostPrintText[513];

// Formats a line and writes it to the host's output; returns the count of lines printed.
int32_t HostPrintf(const char* format, ...);
int32_t HostWriteLine(const char* text);
int32_t HostWritePStr(ConstPStr text, int32_t ignored);
int32_t HostGetModuleFileName(void* module, char* buffer, int32_t size);
// Reads a configuration value of the host; 20 means the host does not have it.
int32_t HostConfigRead(int32_t kind, const char* key, void* value);
// Hands a text to the host's notification; `text` is a real pointer, not a 32-bit word.
void HostNotify(int32_t first, const char* text, int32_t length);
void HostStartup(void);
void HostStartup2(void);
void HostIdle(void);

MG_EXTERN_C_END
