// Paths: platform-neutral path values, their text in two syntaxes, native file names, and the
// flattened byte form stored in files and resources.
//
// A Path is a handle to a block of `kind` (int16), `count` (int16) and `count` packed PStrs,
// in host byte order. A component of length 0 is the up-level component (".."); there is no
// stored form of ".". Component names compare without regard to case.
//
// Text syntaxes. The Windows syntax ("C:\a\b", "\\server\share\a") is read and written on
// every host. The POSIX syntax ("/a/b") is the default where the host's names have no volume:
// it splits on '/', a leading '/' makes the path absolute, and the absolute path with no
// names is the root directory. The functions without a syntax argument use the host's one.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

enum {
    PathKindAbsolute = 0,
    PathKindRelative = 1,
    PathKindNone = 2,
    PathKindUNC = 3,
};

enum {
    PathSyntaxWindows = 0,
    PathSyntaxPosix = 1,
};

// Flags of FCheckName; 0 is a good name.
enum {
    NameTooLong = 0x01,
    NameBadCharacter = 0x08,
    // A device name on Windows; "." or ".." in the POSIX syntax.
    NameReservedDevice = 0x10,
    NameTrailingDot = 0x40,
};

// Bytes a caller provides for FPathToNativeName: enough for the longest native name of every
// supported host, with its NUL.
#define FNativeNameBufferSize 4096
// Longest user text FPathToCBuffer accepts, and the size of the block it allocates.
#define FCBufferTextMax 260
#define FCBufferSize 264

// The text of a not-a-path and of a null path. Nothing fills it, so it is empty.
extern uint8_t gNotAPathText[256];

// The syntax of the host's own names: POSIX where names have no volume, Windows otherwise.
int32_t FHostPathSyntax(void);

// Tests. None changes anything; a null or corrupt path gives 0.
int32_t FPathValid(Path path);
int32_t FPathUsable(Path path);
int32_t FPathRooted(Path path);
int32_t FPathIsKind(Path path, int32_t kind);
int32_t FPathHasNoNames(Path path);

// Construction and disposal.
Path FPathAlloc(int32_t size);
Path FEmptyPath(Path path);
Path FMakeNoPath(Path path);
MgStatus FPathRelease(Path path);
MgStatus FPathClone(Path* path);
MgStatus FPathAssign(Path dst, Path src);
// Variadic list of PStr names, ended by a null pointer.
Path FBuildPath(Path path, int32_t kind, ...);

// Fields and components.
MgStatus FPathKind(Path path, int32_t* kind);
MgStatus FPathSetKind(Path path, int32_t kind);
int32_t FPathDepth(Path path);
int32_t FPathByteSize(Path path);
MgStatus FLastName(Path path, PStr name);
MgStatus FLastNameHandle(Path path, Handle name);
MgStatus FNameAt(Path path, int32_t index, PStr name);
MgStatus FReplaceNameAt(Path path, ConstPStr name, int32_t index);
MgStatus FAppendName(Path path, ConstPStr name);
MgStatus FDirName(Path path, Path out);
// The root of a rooted path: a share's first name; for an absolute path its volume, the
// first name where names start with a drive and the root directory ("/") where they don't.
MgStatus FRootOf(Path path, Path out);

// Combination and comparison.
// Normalises by the host's rules; in the POSIX syntax the root is its own parent, so a rooted
// path drops the up-level components it would climb above the root with.
MgStatus FPathNormalize(Path path);
MgStatus FPathNormalizeSyntax(Path path, int32_t syntax);
MgStatus FPathJoin(Path base, Path rel, Path out);
MgStatus FPathRelativeFrom(Path base, Path target, Path out);
MgStatus FPathTrimToCommon(Path a, Path b);
int32_t FPathFirstDifference(Path a, Path b);
int32_t FPathSame(Path a, Path b);
int32_t FPathOrder(Path a, Path b);

// Text. A buffer of the LStr layout whose count is negative on entry is only measured: the
// length is stored and nothing written. Otherwise the text is written with no capacity check.
MgStatus FTextToPath(const uint8_t* text, int32_t length, Path* path);
MgStatus FTextToPathSyntax(const uint8_t* text, int32_t length, Path* path, int32_t syntax);
MgStatus FLStrToPath(Handle lstr, Path* path);
MgStatus FPathTextInto(Path path, LStr* buffer);
MgStatus FPathTextIntoSyntax(Path path, LStr* buffer, int32_t syntax);
MgStatus FPathPortableTextInto(Path path, LStr* buffer);
MgStatus FPathToLStr(Path path, Handle* text);
MgStatus FPathToCompactLStr(Path path, Handle* text);
MgStatus FPathToPortableLStr(Path path, Handle* text);
Handle FPathToCHandle(Path path);
MgStatus FPathToCBuffer(Path path, char** text);
// Offset of the character before `offset` in `text`, stepping as TextStep does.
int32_t FPrevCharOffset(const uint8_t* text, int32_t offset, const void* script);

// Native names: the NUL-terminated name handed to the host. `name` holds at least
// FNativeNameBufferSize bytes (261 suffice for the Windows syntax).
MgStatus FPathToNativeName(Path path, char* name);
MgStatus FPathToNativeNameSyntax(Path path, char* name, int32_t syntax);
// `found` (256 bytes, emptied by the caller) receives the refused characters, last first.
int32_t FCheckName(ConstPStr name, char* found, char* extra);
int32_t FCheckNameSyntax(ConstPStr name, char* found, char* extra, int32_t syntax);
int32_t FCheckNewName(ConstPStr name, Path path, int32_t skip, char* found, char* extra);

// Flattened form: "PTH0", a big-endian body size, then the block with kind and count
// big-endian. The unflatten routines return the bytes consumed, or available + 1 on failure.
int32_t FPathFlatten(Path path, uint8_t* buffer);
int32_t FPathFlattenOrder(Path path, uint8_t* buffer, int32_t swap);
int32_t FPathUnflatten(const uint8_t* buffer, Path* path);
int32_t FPathUnflattenOrder(const uint8_t* buffer, Path* path, int32_t available, int32_t swap);

MG_EXTERN_C_END
