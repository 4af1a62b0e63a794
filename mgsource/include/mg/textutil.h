// Small text algorithms over counted strings: wildcard match, character stepping, line-end
// conversion, hashing, suffix test and GUIDs.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Compares n bytes of two spans; 0 when they agree.
typedef int32_t (*TextCompareN)(const char* a, const char* b, int32_t n);

// 1 when `text` matches `pattern`: `?` one character, `*` any run that doesn't cross
// `barrier`, `**` any run at all, `escape` followed by a character that character literally.
// A null `compare` matches literals without regard to case (TextOrderNoCaseN); a zero
// `escape` is the grave accent; a zero `barrier` is none.
int32_t WildMatch(const uint8_t* pattern, const uint8_t* text, int32_t patternLength,
                  int32_t textLength, TextCompareN compare, uint8_t escape, uint8_t barrier);
// Moves *position forward to the first `*`, `?` or `escape` and answers 1, or to `length`
// and answers 0.
int32_t FindWildcard(const uint8_t* pattern, int32_t* position, int32_t length, uint8_t escape);
// Index of the character after the one at `index`. `fontTable`, when given, is 256 bytes
// indexed by a character's first byte, 2 for the lead byte of a double-byte character; a
// null table steps by one byte.
int32_t TextStep(const uint8_t* text, int32_t index, const void* fontTable);

// Rewrite every line end (CR, LF, CR LF or LF CR) from byte `start` of the block as CR LF,
// or as LF, resizing the handle; `mainZone` nonzero for a main-zone handle, `wide` nonzero
// for 16-bit text. On a failed resize the text is left as it was.
MgStatus ConvertLineEndsToCRLF(Handle handle, int32_t start, int32_t mainZone, int32_t wide);
MgStatus ConvertLineEndsToLF(Handle handle, int32_t start, int32_t mainZone, int32_t wide);
// Puts a CR before every LF of a main-zone LStr, even one that follows a CR.
MgStatus LStringLFToCRLF(LStrHandle handle);
// Grows the handle by one byte and appends a counted zero; `compactZone` nonzero for a
// compact-zone handle.
MgStatus LStringTerminate(LStrHandle handle, int32_t compactZone);
// Copies a text with a 16-bit count in front, the block of `handle`, into `l`.
void PStringFromShortCount(Handle handle, LStr* l);
// Order of a PStr against an LStr, by the PStringOrder rules.
int32_t PStringOrderL(ConstPStr p, const LStr* l);
int32_t PStringOrderLNoCase(ConstPStr p, const LStr* l);
// The object-file symbol hash of the characters, upper-cased first when asked; 0 when empty.
uint32_t PStringHash(ConstPStr p, int32_t upperFirst);
// True when `p`, folded to lower case, ends with `suffix` (NUL-terminated, lower case).
int32_t PStringEndsWith(ConstPStr p, const char* suffix);
// Fills 16 bytes with a new identifier; on failure clears them. Answers 0 or the platform's
// nonzero error.
MgStatus NewGUID(uint8_t guid[16]);

MG_EXTERN_C_END
