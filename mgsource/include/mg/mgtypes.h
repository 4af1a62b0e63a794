// Types shared by every manager of the layer.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifdef __cplusplus
#define MG_EXTERN_C_BEGIN extern "C" {
#define MG_EXTERN_C_END }
#else
#define MG_EXTERN_C_BEGIN
#define MG_EXTERN_C_END
#endif

// The status nearly every operation returns. The numbers are part of the interface: callers
// test some of them by value.
typedef int32_t MgStatus;
enum {
    MgNoError = 0,
    MgBadArgument = 1,
    MgNoMemory = 2,
    MgBadHandle = 3,
    MgEndOfFile = 4,
    MgIOError = 6,
    MgNotFound = 7,
    MgNoPermission = 8,
    MgDiskFull = 9,
    MgDuplicate = 10,
    MgTooManyOpen = 11,
    MgBadResourceFile = 13,
    MgResourceDuplicate = 14,
    MgResourceNotFound = 15,
    MgNotADirectory = 42,
    MgNotSupported = 53,
    MgBadFlatPath = 74,
};

MG_EXTERN_C_BEGIN
// A status in words, for messages: what it means, and what the resource manager means by it
// where that differs ("the resource exists already"); "unknown status" for a number the table
// doesn't hold. MgStatusName gives the constant's name ("MgResourceDuplicate"), or "unknown".
const char* MgStatusText(MgStatus status);
const char* MgStatusName(MgStatus status);
MG_EXTERN_C_END

typedef uint8_t* Ptr;
typedef uint8_t** Handle;

// A counted string: one count byte, then up to 255 characters, no terminator.
typedef uint8_t* PStr;
typedef const uint8_t* ConstPStr;

// A long counted string: a signed 32-bit count, then that many characters.
typedef struct LStr {
    int32_t count;
    uint8_t text[1];
} LStr;
typedef LStr* LStrPtr;
typedef LStr** LStrHandle;

// Four characters held in a 32-bit value whose bytes in memory are the text, first
// character first, on every host. Never byte-swapped.
typedef uint32_t ResType;
typedef int32_t ResFile;
typedef int32_t FileRef;
typedef Handle Path;
typedef uint32_t Timestamp;
typedef double FineTimestamp;
// Numeric type codes, held in the low 4 bits of a type word.
typedef int32_t NumType;
enum {
    NumTypeNone = 0,
    iB = 1,
    iW = 2,
    iL = 3,
    iQ = 4,  // signed 8, 16, 32, 64 bits
    uB = 5,
    uW = 6,
    uL = 7,
    uQ = 8,  // unsigned 8, 16, 32, 64 bits
    fS = 9,
    fD = 10,
    fX = 11,  // single, double, extended float
    cS = 12,
    cD = 13,
    cX = 14,  // complex pairs of those floats
};

#ifdef __cplusplus
// "PLAT" -> the ResType whose four bytes are P, L, A, T.
inline ResType MgResType(const char* text) {
    ResType t;
    memcpy(&t, text, 4);
    return t;
}
#endif
