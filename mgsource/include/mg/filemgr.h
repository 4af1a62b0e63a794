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
int32_t FMPermissionMask(int32_t permissions);
MgStatus FMapLastError(void);
MgStatus FMapErrno(int32_t notFoundIsArgument);

// Directories and volumes. A listing is a name list (a 32-bit count, then packed PStrs) and
// an optional type list of one DirEntryRecord per name, in the same order.
enum {
    EntryIsFile = 0x01,      // clear for a directory
    EntryHasType = 0x02,     // `type` is meaningful
    EntryIsShortcut = 0x04,  // a shortcut (or, on POSIX, a symbolic link) that was followed
    EntryUnreadable = 0x20,  // attributes could not be read; always with EntryIsFile
};
typedef struct DirEntryRecord {
    uint32_t flags;
    ResType type;
} DirEntryRecord;

// Bit 0 of FDirEntriesWith's options: read a resource file's header for its type.
enum { FDirReadResourceHeaders = 1 };

typedef struct FileInfo {
    ResType type;
    ResType creator;
    int32_t permissions;
    int32_t size;  // 0x7FFFFFFF for a file beyond 31 bits; a directory's entry count
    int32_t spareLong;
    Timestamp created;
    Timestamp modified;
    int32_t isDirectory;
    int32_t hiddenFlag;
    uint16_t spareWord1;
    uint16_t spareWord2;
    uint8_t owner[256];
    uint8_t group[256];
} FileInfo;

MgStatus FDirEntries(Path path, Handle names, Handle types);
MgStatus FDirEntriesWith(Path path, Handle names, Handle types, int32_t options);
MgStatus FDriveEntries(Handle names, Handle types);
void FSortDirEntries(Handle names, Handle types);
Handle FNewNameList(Handle list);
MgStatus FFileInfoOf(Path path, FileInfo* info);
MgStatus FApplyFileInfo(Path path, const FileInfo* info);
// 0 nothing there (or not nameable), 1 a file, 2 a directory.
int32_t FPathExistsAs(Path path);
MgStatus FIsDirectory(Path path);
MgStatus FPermissionsOf(Path path, PStr owner, PStr group, int32_t* permissions);
MgStatus FApplyPermissions(Path path, ConstPStr owner, ConstPStr group, const int32_t* permissions);
MgStatus FMFileModDate(Path path, FileRef ref, uint32_t* date, int32_t* readOnly);
MgStatus FRenameFile(Path from, Path to);
MgStatus FCopyFile(Path from, Path to);
MgStatus FDeleteEntry(Path path);
MgStatus FMakeDirectory(Path path, int32_t permissions);
MgStatus FMakeDirectoryChain(Path path);
MgStatus FVolumeOf(Path path, Path* volume);
// Total, used and free bytes, each capped at 0xFFFFFFFF; cuts `path` to its volume.
MgStatus FVolumeSpace(Path path, uint32_t* figures);
MgStatus FVolumeBytes(Path path, double* freeBytes, double* totalBytes);
Path FResolvedPath(Path out, Path path);
MgStatus FExactCasePath(Path path);
MgStatus FCurrentDirectory(Path* path);
// Writes the running program's file name, NUL-terminated; returns its length, 0 for none.
int32_t FApplicationName(char* buffer, int32_t size);
MgStatus FApplicationPath(Path path);
MgStatus FApplicationDirectory(Path path);
MgStatus FPreferredDirectory(const char* selector, Path* path, Path fallback);
MgStatus FTempDirectory(Path path);
MgStatus FMLockRange(FileRef ref, int32_t mode, int32_t offset, int32_t count, int32_t lock);
int32_t FNameFitsPattern(const uint8_t* pattern, const uint8_t* name, int32_t patternLength,
                         int32_t nameLength);
int32_t FPatternHasWildcards(const uint8_t* pattern, int32_t* offset, int32_t length);
MgStatus FUnavailableLookup(void);
MgStatus FUnsupportedCall(void);

// File dates: the host's 100-nanosecond file times and the layer's seconds since 1904, with
// no time-zone adjustment; exact halves of a second go to the even second.
Timestamp FFileTimeToSeconds(uint64_t fileTime);
uint64_t FSecondsToFileTime(Timestamp seconds);

MG_EXTERN_C_END
