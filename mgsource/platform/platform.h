// The platform seam: the only functions through which the layer reaches the operating
// system. Each backend (posix/, win32/) implements all of them; nothing above this header
// includes a system header.
#pragma once

#include <stddef.h>
#include <stdint.h>

struct SystemTime;
struct CalendarTime;

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
// Blocks whose size the caller states again when it resizes or frees them are in
// platform/smallblocks.h.
// Memory for the slabs: `size` bytes (a power of two) aligned to `size`, outside the fault hook
// and the live-block count; null when there is none.
void* AlignedBlock(size_t size);
void FreeAlignedBlock(void* block);

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
// Case mapping of one character value of up to 16 bits, as the host maps a single character
// (a double-byte one where the code page has them); a POSIX host maps only the 8-bit ones.
uint32_t CharValueLower(uint16_t c);
uint32_t CharValueUpper(uint16_t c);

// Writes the program's own file name, NUL-terminated; returns its length, 0 on failure.
int32_t ModuleFileName(char* buffer, int32_t size);

// Byte files. A file reference is 32 bits; 0 is no file. Failures return false and leave the
// platform's error for LastErrorStatus. Sizes and positions are 64-bit, so that the layer can
// refuse a file of 2 GB or more rather than see its size cut short.
enum FileAccess { kAccessRead = 1, kAccessWrite = 2 };
// What others may do while the file is open.
enum FileShare { kShareNone = 0, kShareRead = 1, kShareAll = 2 };
enum FileDisposition { kOpenExisting, kTruncateExisting, kCreateNew, kCreateAlways };

// Opens regular files only, after following links: a directory, device, pipe or socket is
// refused (access denied) without blocking on it, and so is a file that reads as more than its
// size says (a generated one, as a process-information file).
bool OpenFile(const char* name, int access, int share, int disposition, int32_t* ref);
bool CloseFile(int32_t ref);
bool ReadFile(int32_t ref, int32_t count, int32_t* actual, void* buffer);
bool WriteFile(int32_t ref, int32_t count, int32_t* actual, const void* buffer);
// Moves to `offset` from the start.
bool SetFilePosition(int32_t ref, uint64_t offset);
bool GetFilePosition(int32_t ref, uint64_t* position);
bool GetFileSize(int32_t ref, uint64_t* size);
// Sets the end of the file at the present position.
bool SetFileEndHere(int32_t ref);
bool FlushFile(int32_t ref);
// The process's creation mask for new files.
uint32_t CreationMask();

// Replacing an open file whole (posix/replace.cpp, win32/replace.cpp). ReplaceBegin makes a
// new empty file beside the one open as `ref`, with its permissions, open for reading and
// writing; it has no name until the commit where the host can, and its writer holds it so that
// the leftovers of writers that are gone (which ReplaceBegin removes first) can be told. The
// caller fills and flushes it; ReplaceCommit then puts it in the old file's place in one step
// and leaves `*ref` referring to the new file, with the same access and share mode. Space for
// `sizeHint` bytes is claimed ahead where the host can (a hint: the file's length stays 0). After a
// failed commit the old file is in place and `*ref` refers to it. Either way `*ref` may come back
// with another value where the host can't keep it. ReplaceAbandon closes and removes a new file
// that isn't wanted. Files whose name the backend doesn't know (opened for reading only) can't be
// replaced.
bool ReplaceBegin(int32_t ref, int32_t sizeHint, int32_t* tempRef);
bool ReplaceCommit(int32_t* ref, int32_t tempRef);
void ReplaceAbandon(int32_t tempRef);
// A hint that the file open as `ref` won't be read again soon: its cached pages may go now,
// so that a new file written next takes their memory rather than fresh memory.
void ReleaseCachedPages(int32_t ref);

// A whole file mapped for reading (posix/mapfile.cpp, win32/mapfile.cpp): its bytes without a
// copy, for tools that look at a file whole. Gives the bytes and length of the file at `name`
// and a token for UnmapFile; false when it can't be mapped (no file, not a regular file, an
// empty one, no room in the address space), and the caller reads the file instead. The bytes
// are read-only.
bool MapFileForReading(const char* name, const uint8_t** bytes, int64_t* length, void** token);
void UnmapFile(const uint8_t* bytes, int64_t length, void* token);

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

// Directories and volumes. Names are native names; failures return false and leave the
// platform's error for LastErrorStatus, unless a function says otherwise.
//
// File times are 100-nanosecond units since 1601-01-01 00:00:00 UTC on every host, 0 where
// the host has no such date; the file manager converts them to its own seconds.
struct EntryAttributes {
    bool known = false;  // false: the attributes could not be read
    bool isDirectory = false;
    bool isLink = false;      // a symbolic link, whose target's attributes these are
    int32_t permissions = 0;  // Unix-style bits, as the host derives them
};
struct FileFacts {
    bool isDirectory = false;
    bool readOnly = false;
    uint64_t size = 0;
    uint64_t created = 0;
    uint64_t modified = 0;
};
struct DirListing;
struct ListedEntry {
    const char* name = nullptr;       // valid until the next call on the listing
    const char* shortName = nullptr;  // an alternate short name, or empty
    EntryAttributes attributes;
};
// Opens a listing of `directory`. A directory the host reports as having no entries at all
// opens as an empty listing. Null on failure.
DirListing* OpenListing(const char* directory);
// The next entry; false at the end (with `failed` false) or on a failure (`failed` true).
// Where the host lists a directory's own "." and ".." they come first.
bool NextListingEntry(DirListing* listing, ListedEntry* entry, bool* failed);
// Ends a listing; false when the host reports a failure. Null is accepted.
bool CloseListing(DirListing* listing);
// The attributes of the entry that `name` reaches, following links.
bool GetEntryAttributes(const char* name, EntryAttributes* attributes);
bool GetFileFacts(const char* name, FileFacts* facts);
// The size a directory's information reports: the number of its entries.
int32_t DirectorySize(const char* directory, bool volumeRoot);
// Sets the dates of a file; a date of 0 is left alone.
bool SetFileDates(const char* name, uint64_t created, uint64_t modified);
// The exact spelling, by the file system, of the last name of `name`, into `leaf`.
bool ExactLeafName(const char* name, char* leaf, int32_t size);
// `name` with the host's links followed, into `out`; false when there is nothing to follow.
bool FollowLinks(const char* name, char* out, int32_t size);
// Moves or renames; never replaces an existing entry.
bool MoveEntry(const char* from, const char* to);
// Renames a file, replacing a file already named `to` (never a directory) in one step.
bool RenameReplacing(const char* from, const char* to);
// Copies a file with its dates and permissions; never replaces an existing file.
bool CopyFileNew(const char* from, const char* to);
bool DeleteFileEntry(const char* name);
bool RemoveDirectoryEntry(const char* name);
bool MakeDirectory(const char* name);
// Changes the permission bits through the C runtime, whose error (errno) is cleared first
// and tells a failure.
bool ChangePermissions(const char* name, int32_t permissions);

// Kinds of volume.
enum VolumeKind { kVolumeUnknown = 0, kVolumeRemovable, kVolumeFixed, kVolumeRemote };
// Calls `visit` with each volume's name as a drive list shows it (a drive letter, or a mount
// point) and its kind, in the host's order; stops early when `visit` returns false. False
// when the volumes cannot be listed.
bool ListVolumes(bool (*visit)(void* context, const char* name, int32_t kind), void* context);
// The kind of the volume whose root `name` is; -1 when `name` is not a volume root, and
// kVolumeUnknown for a root of a kind outside the others.
int32_t VolumeKindOfRoot(const char* name);
// The root of the volume that holds `name`, into `root`.
bool VolumeRootOf(const char* name, char* root, int32_t size);
// Bytes of the volume whose root is `root`, in 64 bits.
bool VolumeSpace(const char* root, uint64_t* total, uint64_t* free);
// The same in doubles, by the host's widest call. On failure both become 0 where that call
// failed, and stay as they were where only an older, narrower call was there to fail.
bool VolumeBytes(const char* root, double* total, double* free);

// Range locks on an open file, exclusive where the host allows.
bool LockRange(int32_t ref, uint32_t offset, uint32_t count, bool lock);

// Shortcuts and universal names.
// Replaces a shortcut file's name in `name` (at least 260 bytes) by its target's; false when
// the host has no such shortcuts or the file is not one.
bool ResolveShortcutFile(char* name);
// The bytes a universal-name query of `name` needs, 0 when it has no universal name.
uint32_t UniversalNameSize(const char* name);
// Fills `buffer` with the universal form; `*text` points into it.
bool UniversalName(const char* name, void* buffer, uint32_t size, const char** text);

// File modification times, for the file manager's date query. `fileTime` receives the
// last-write time in 100-nanosecond units since 1601-01-01 UTC, and `readOnly` whether the file
// refuses writing (on POSIX: no write permission for anyone). Each returns 0, or the status of
// the failure in the file manager's table.
int32_t FileModTimeOfRef(int32_t ref, uint64_t* fileTime, bool* readOnly);
int32_t FileModTimeOfName(const char* name, uint64_t* fileTime, bool* readOnly);

// Time. File times are 100-nanosecond units since 1601-01-01 UTC. Each conversion answers
// false when the platform cannot make it.
// The present time as a file time.
bool SystemTimeNow(uint64_t* fileTime);
// UTC to the local clock's reading and back.
bool FileTimeToLocal(uint64_t utc, uint64_t* local);
bool LocalToFileTime(uint64_t local, uint64_t* utc);
// A file time to calendar fields and back; fields out of their ranges are refused, years
// from 1601 to 30827 are accepted.
bool FileTimeToFields(uint64_t fileTime, SystemTime* fields);
bool FieldsToFileTime(const SystemTime* fields, uint64_t* fileTime);
// 2 while daylight saving time is in force now, 1 while standard time is in force in a zone
// that has daylight saving time, 0 for a zone without it.
int32_t TimeZoneState();
// The runtime's strftime over the nine calendar fields, where "%#" before a conversion
// drops its leading zero; returns the length, 0 when the text does not fit.
int32_t FormatCalendarText(char* buffer, int32_t size, const char* format,
                           const CalendarTime* fields);

// Diagnostics output: the places the output sinks and the debug print write to.

// Writes the user's temporary directory, with a trailing separator and a NUL; returns its
// length, or 0 when it cannot be had or does not fit in `size` bytes. One definition per
// backend, in tempdir.cpp, for the sinks and the file manager alike.
int32_t TempDirectory(char* buffer, int32_t size);
// Hands a NUL-terminated text to an attached debugger; nothing when there is none.
void DebuggerOutput(const char* text);
// Gives the process a console and its output and input handles (null when none).
void ConsoleOpen(void** output, void** input);
// Writes `length` bytes to a console output handle; failures are ignored.
void ConsoleWrite(void* output, const char* text, int32_t length);
// Lets the console of ConsoleOpen go.
void ConsoleClose();

// Standard streams.

// Puts standard output in binary mode, so that the bytes written to it arrive unchanged; a
// Windows stream in text mode would add a CR before each LF. False when the host refuses.
bool BinaryStandardOutput();

// Stack reading and naming.

// Copies `size` bytes at `address` in this process into `out`. A range that is not wholly
// readable gives false and never faults, so that a broken frame chain only ends a walk.
// Allocates nothing.
bool ReadOwnMemory(uintptr_t address, void* out, size_t size);
// The calling thread's return addresses from the host's unwind tables, where its code keeps no
// frame-pointer chain to walk: those of the frames above the stack address `above` (an
// address in the caller's own frame), so that the first is the one the caller returns to;
// `skip` of them dropped, at most `limit` into `out`, their number in `*count`. False where
// the frame-pointer chain serves, and the caller walks that. Allocates nothing.
bool UnwindOwnStack(uintptr_t above, int32_t skip, uintptr_t* out, int32_t limit, int32_t* count);
// Whether the naming below reaches the functions a program does not export (static ones,
// those of anonymous namespaces); false where only exported symbols can be named.
bool NamesInternalFunctions();
// The platform's symbol library, loaded for one naming mode: 0 loads nothing, 1 the main
// module's symbols alone, any other value every module's. Null when it cannot be allocated.
struct SymbolLibrary;
SymbolLibrary* LoadSymbolLibrary(int32_t mode);
// Frees the object's memory; whatever it loaded stays loaded.
void FreeSymbolLibrary(SymbolLibrary* library);
// Writes the name of the module that holds `address`, NUL-terminated and cut to `size`;
// false when it is unknown.
bool AddressModuleName(SymbolLibrary* library, uintptr_t address, char* name, int32_t size);
// Writes the (demangled) name of the function that holds `address`, cut to `size`, and the
// address's distance from its start; false, with *offset untouched, when it is unknown.
bool AddressSymbolName(SymbolLibrary* library, uintptr_t address, char* name, int32_t size,
                       uint32_t* offset);

// The library's global operator new and delete.

// A block of the runtime's heap for operator new, behind the fault hook FailGlobalNewAt.
void* GlobalNewBlock(size_t size);
void GlobalFreeBlock(void* block);
// Registers `handler` as the runtime's allocation-failure handler where the runtime has one
// that takes the size; returns the handler it replaces, null when none or no such runtime.
typedef int (*SizedNewHandler)(size_t size);
SizedNewHandler SetRuntimeNewHandler(SizedNewHandler handler);
// The record of a hardware fault, reduced to what a stack trace needs.
struct FaultRecord {
    bool complete;  // both the register context and the exception record were given
    uintptr_t framePointer;
    uintptr_t address;
};
// Registers `translator` for the calling thread, to turn hardware faults into C++
// exceptions; false when the runtime offers no translator. `fault` may be null.
typedef void (*FaultTranslator)(uint32_t code, const FaultRecord* fault);
bool InstallFaultTranslator(FaultTranslator translator);

}  // namespace plat
