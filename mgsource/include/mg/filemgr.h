// Byte files: a thin synchronous layer over the host's files, with the one status table of
// the manager layer. A FileRef of 0 is no file; every operation refuses it with 1.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

enum { FMModeReadWrite = 0, FMModeRead = 1, FMModeWrite = 2, FMModeTruncate = 3 };
enum { FMShareNone = 0, FMShareRead = 1, FMShareAll = 2 };
// Any other value counts from the end, so 0 acts as FMSeekEnd.
enum { FMSeekStart = 1, FMSeekEnd = 2, FMSeekCurrent = 3 };

void FMInit(void);
MgStatus FMOpen(FileRef* ref, Path path, int32_t mode, int32_t deny);
MgStatus FMCreateNew(FileRef* ref, Path path, int32_t permissions, int32_t mode, int32_t deny,
                     int32_t group);
MgStatus FMCreateOver(FileRef* ref, Path path, int32_t permissions, int32_t mode, int32_t deny,
                      int32_t group);
MgStatus FMMakeFile(FileRef* ref, Path path, int32_t permissions, int32_t mode, int32_t deny,
                    int32_t group, int32_t overwrite, ResType creator, ResType type);
MgStatus FMClose(FileRef ref);
MgStatus FMRead(FileRef ref, int32_t count, int32_t* actual, void* buffer);
MgStatus FMWriteBytes(FileRef ref, int32_t count, int32_t* actual, const void* buffer);
MgStatus FMSeek(FileRef ref, int32_t offset, int32_t mode);
MgStatus FMTell(FileRef ref, int32_t* position);
MgStatus FGetEOF(FileRef ref, int32_t* size);
MgStatus FSetFileEnd(FileRef ref, int32_t size);
MgStatus FMFlush(FileRef ref);
MgStatus FMFlushFile(FileRef ref);

// Replacing a file whole: FMReplaceBegin makes a new empty file beside the one open as `ref`,
// with its permissions, for the caller to fill and flush; FMReplaceCommit puts it in the old
// one's place in one step, so that a reader finds the old file or the new one and nothing in
// between, and leaves `*ref` open on the new file with the old access and share mode (the
// value stays the same where the host allows). FMReplaceAbandon removes an unwanted new file.
MgStatus FMReplaceBegin(FileRef ref, FileRef* temp);
MgStatus FMReplaceCommit(FileRef* ref, FileRef temp);
void FMReplaceAbandon(FileRef temp);
int32_t FMPermissionMask(int32_t permissions);
MgStatus FMapLastError(void);
MgStatus FMapErrno(int32_t notFoundIsArgument);

MG_EXTERN_C_END
