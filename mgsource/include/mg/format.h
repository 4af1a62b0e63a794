// The format engine: a format text and an argument list become 8-bit text in a bounded
// buffer, or only a count. Integers are read as int (so %ld is 32 bits), floats as double,
// pointers at the platform's width.
#pragma once

#include <stdarg.h>

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Formats `formatLength` bytes of `format` (a NUL is an ordinary character) into `dest`,
// at most `size` bytes; a null `dest` only counts. Writes no terminator; returns the count.
int32_t StrFormatV(char* dest, int32_t size, const char* format, int32_t formatLength,
                   va_list args);

// Unbounded; stores a NUL behind the text when `dest` is not null; returns the length.
int32_t StrFormat(char* dest, const char* format, ...);
// Bounded; stores no NUL; returns the length.
int32_t StrFormatN(char* dest, int32_t size, const char* format, ...);
// Counts, then makes the handle (a new one when null or not resizable) hold the text and a
// NUL; returns the handle, or null when no handle could be had.
Handle StrFormatHandle(Handle handle, const char* format, ...);
// Formats behind the count byte with room for 255 characters; stores and returns the count.
int32_t StrFormatP(PStr result, const char* format, ...);
// As StrFormat with a PStr format.
int32_t StrFormatFromP(char* dest, ConstPStr format, ...);
// As StrFormatP with a PStr format.
int32_t StrFormatPP(PStr result, ConstPStr format, ...);
// Makes *handle (allocated when null) hold exactly the text; the status of the resize.
MgStatus StrFormatSetLStr(LStrHandle* handle, const char* format, ...);
// Appends the text to the LStr; the status of the resize.
MgStatus StrFormatAppendLStr(LStrHandle handle, const char* format, ...);
// Hands the text to the host's notification; the length, 0 when allocation fails.
int32_t StrFormatNotify(int32_t first, const char* format, ...);
// Writes the text to the file; the length, or -1 on a failed allocation or a short write.
int32_t StrFormatFile(FileRef file, const char* format, ...);
// As StrFormatFile with the write's status: 2 on a failed allocation, 85 on a negative count.
MgStatus StrFormatFileStatus(FileRef file, const char* format, ...);

// Decodes one backslash code at *position (just behind the backslash), not reading at or
// beyond `end`; advances *position and returns the byte.
uint8_t ParseEscape(const uint8_t** position, const uint8_t* end);
// Writes one byte in backslash form at *out (advanced), or only counts when out or *out is
// null; returns the count of bytes.
int32_t EmitEscape(uint8_t byte, uint8_t** out);
// The same for a 16-bit character to 16-bit output; returns the count of bytes.
int32_t EmitEscapeWide(uint16_t character, uint16_t** out);

// Whether the fixed form will do for the number in `width` characters; the engine asks
// before every %f.
int32_t FixedFormFits(NumType type, const void* number, int32_t width);

MG_EXTERN_C_END
