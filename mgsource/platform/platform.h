// The platform seam: the only functions through which the layer reaches the operating
// system. Each backend (posix/, win32/) implements all of them; nothing above this header
// includes a system header.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace plat {

// Allocation. Every block of the memory manager comes from here, so that tests can fail the
// Nth allocation (see faults.h).
void* Malloc(size_t size);
void* Realloc(void* block, size_t size);
void Free(void* block);
// Marks a large block that is about to be filled as a candidate for the host's large pages,
// which spares one page fault and one page clear for every small page of it. A hint only:
// the block's bytes and size are the same either way.
void AdviseLargeBlock(void* block, size_t size);

// Writes the current directory, NUL-terminated, into `buffer` of `size` bytes; returns its
// length, or 0 when it does not fit or cannot be read.
int32_t CurrentDirectory(char* buffer, int32_t size);
// The separator the host puts between directory names.
char DirectorySeparator();
// Number of leading path components that name a volume in the host's native names: 1 where
// names start with a drive, 0 where everything hangs off one root directory.
int32_t VolumeDepth();
// The longest native file name the host accepts, in characters, not counting the NUL.
int32_t NativeNameMax();

// Case mapping of one 8-bit character in the host's code page.
uint8_t CharLower(uint8_t c);
uint8_t CharUpper(uint8_t c);

// Writes the program's own file name, NUL-terminated; returns its length, 0 on failure.
int32_t ModuleFileName(char* buffer, int32_t size);

// Temporary directory.
// Writes the user's temporary directory, ending in the host's separator and NUL-terminated;
// returns its length, or 0 when it does not fit or there is none.
int32_t TemporaryDirectory(char* buffer, int32_t size);

// Byte files. A file reference is 32 bits; 0 is no file. Failures return false and leave the
// platform's error for LastErrorStatus. Offsets and sizes are 32-bit: files of 2 GB or more
// are out of scope.
enum FileAccess { kAccessRead = 1, kAccessWrite = 2 };
// What others may do while the file is open.
enum FileShare { kShareNone = 0, kShareRead = 1, kShareAll = 2 };
enum FileDisposition { kOpenExisting, kTruncateExisting, kCreateNew, kCreateAlways };

bool OpenFile(const char* name, int access, int share, int disposition, int32_t* ref);
bool CloseFile(int32_t ref);
bool ReadFile(int32_t ref, int32_t count, int32_t* actual, void* buffer);
bool WriteFile(int32_t ref, int32_t count, int32_t* actual, const void* buffer);
// Moves to `offset` from the start; no move beyond 32 bits.
bool SetFilePosition(int32_t ref, uint32_t offset);
bool GetFilePosition(int32_t ref, uint32_t* position);
bool GetFileSize(int32_t ref, uint32_t* size);
// Sets the end of the file at the present position.
bool SetFileEndHere(int32_t ref);
bool FlushFile(int32_t ref);
// The process's creation mask for new files.
uint32_t CreationMask();

// The status of the platform's last error: the meanings of the file manager's status table.
int32_t LastErrorStatus();
// Whether the last error was a sharing conflict with another opener (worth a retry).
bool LastErrorIsSharingConflict();
// Sleeps for the given milliseconds.
void SleepMilliseconds(int32_t ms);
// Fills 16 bytes with a new random identifier; returns 0, or the platform's nonzero error
// value with the bytes left unspecified.
int32_t NewGuidBytes(uint8_t guid[16]);

// The id of this process.
int32_t ProcessId();
// Lets the user's settings govern the runtime's number and time formatting.
void UseUserLocaleForTimeAndNumbers();
// The decimal mark of the user's settings, or 0 when there is none.
char UserDecimalMark();

// File modification times, for the resource manager's date query. `fileTime` receives the
// last-write time in 100-nanosecond units since 1601-01-01 UTC, and `readOnly` whether the file
// refuses writing (on POSIX: no write permission for anyone). Each returns 0, or the status of
// the failure in the file manager's table.
int32_t FileModTimeOfRef(int32_t ref, uint64_t* fileTime, bool* readOnly);
int32_t FileModTimeOfName(const char* name, uint64_t* fileTime, bool* readOnly);

}  // namespace plat
