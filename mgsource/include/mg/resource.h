// Resource files: typed, numbered, optionally named blocks of bytes indexed by a map.
//
// File layout: a 32-byte header, the data section, then the map; every number big-endian.
// An open file keeps its map in one handle, in the same layout as on disk with the numbers in
// the host's order. Data loads on the first get into a handle that the file then owns; the
// disk changes only at RUpdateFile and RCloseFile.
//
// The map's run-time words (the unused word at 32, the file id at 36 and every reference's
// handle word) hold 32-bit values: a reference's handle word holds MemHandleToken of its data
// handle. All three are written to disk as zero, so the same edits give the same bytes.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

// Attribute bits of a reference.
enum {
    RAttrChanged = 0x02,    // data in the handle is to be written back
    RAttrProtected = 0x08,  // RRemove refuses the resource
};

// Attribute bits of a file, in the map's word at 40.
enum {
    RFileDirty = 0x20,     // the map changed since it was last written
    RFileReadOnly = 0x80,  // opened for reading: every edit gives 8
};

// The 32-byte header at the start of a file and at the start of its map.
typedef struct ResFileHeader {
    uint8_t signature[4];  // "RSRC"
    uint8_t lineEnd[2];    // 0D 0A
    int16_t version;
    ResType fileType;
    ResType creator;
    int32_t mapOffset;
    int32_t mapSize;
    int32_t dataOffset;
    int32_t dataSize;
} ResFileHeader;

typedef struct ResTypeEntry {
    ResType type;
    int32_t count;       // resources of the type, minus one
    int32_t listOffset;  // from the start of the type list
} ResTypeEntry;

typedef struct ResRefEntry {
    int32_t id;
    int32_t nameOffset;  // from the start of the name list; -1: no name
    int32_t attrs;
    int32_t dataOffset;  // from the start of the data section; points at the size word
    uint32_t handle;     // MemHandleToken of the loaded data, 0 while unloaded
} ResRefEntry;

// One slot of the table of open files; a fileId of 0 marks a free slot.
typedef struct ResFileEntry {
    ResFile fileId;
    int32_t reserved;  // always 0; RFindHandle searches only entries whose value here is 0
    FileRef fileRef;
    Handle mapHandle;
    Ptr map;  // *mapHandle, refreshed after every resize
} ResFileEntry;

// The resource last fetched or added; never cleared, so every use checks it against the map.
typedef struct RLastGotRecord {
    ResFile fileId;
    ResType type;
    Handle handle;
    int32_t resId;
} RLastGotRecord;

extern Handle RFileTable;
extern int32_t RFileTableSize;
extern RLastGotRecord RLastGot;
extern int32_t gNextResId;

// Format.
void RSwapHeader(ResFileHeader* header);
// direction 1: file to memory (with `expected`, checks the map against it); 0: memory to file.
MgStatus RSwapMap(Ptr map, int32_t direction, const ResFileHeader* expected);
MgStatus RCompareHeaders(const ResFileHeader* a, const ResFileHeader* b);
void RInitHeader(ResFileHeader* header, ResType creator, ResType type);

// The table of open files.
MgStatus RInit(void);
MgStatus RExit(void);
MgStatus RLookupFile(ResFile id, ResFileEntry** entry);
MgStatus RRegisterFile(ResFile* id, FileRef fileRef, Handle mapHandle, Ptr map);
MgStatus RGetFileAttrs(ResFile id, int32_t* attrs);
MgStatus RSetFileAttrs(ResFile id, int32_t attrs);

// Open, create, close.
MgStatus RCreateCorrectFile(Path path, int32_t replace, ResType creator, ResType type,
                            int32_t permissions);
MgStatus ROpenFile(Path path, int32_t mode, ResFile* id, ResType* type, ResType* creator);
MgStatus ROpenFileRef(FileRef fileRef, int32_t mode, ResFile* id, ResType* type, ResType* creator,
                      int32_t memoryForm);
MgStatus RCloseFile(ResFile id);
MgStatus RGetFileTypeCreator(Path path, ResType* type, ResType* creator);
MgStatus RSetFileTypeCreator(Path path, ResType type, ResType creator);
void RSortRefLists(Ptr map);
void RClearHandles(Ptr map);

// Lookup and enumeration. Indices count from 1.
MgStatus RCountTypes(ResFile id, int32_t* count);
MgStatus RGetIndType(ResFile id, ResType* type, int32_t index);
MgStatus RCount(ResFile id, ResType type, int32_t* count);
MgStatus RGetInd(ResFile id, ResType type, int32_t index, Handle* h);
MgStatus RGet(ResFile id, ResType type, int32_t resId, Handle* h);
MgStatus RGetNamed(ResFile id, ResType type, ConstPStr name, Handle* h);
// The resource RGetNamed would give, without loading it: its index in the type's list and its
// id (both 0 on failure). The checks a load makes of the data's place in the file are made
// (4 when it can't lie there), so the statuses are RGetNamed's but those of reading the data
// and of memory for it.
MgStatus RFindNamed(ResFile id, ResType type, ConstPStr name, int32_t* index, int32_t* resId);
MgStatus RExists(ResFile id, ResType type, int32_t resId, int32_t* found);
MgStatus RGetInfo(Handle h, int32_t* resId, ResType* type, PStr name);
MgStatus RGetAttrs(Handle h, int32_t* attrs);
MgStatus RGetSize(Handle h, int32_t* size);
int32_t RIsResource(Handle h);
MgStatus RCheckResource(Handle h);
MgStatus RRelease(Handle h);
MgStatus RDetach(Handle h);

ResTypeEntry* RFindType(Ptr typeList, ResType type);
ResRefEntry* RFindId(Ptr typeList, ResTypeEntry* typeEntry, int32_t resId);
MgStatus RGetByIndex(Ptr map, ResType type, int32_t index, ResRefEntry** ref);
MgStatus RFindHandle(Handle h, ResFileEntry** entry, ResRefEntry** ref, ResType* type);
MgStatus RLoadData(ResFileEntry* entry, ResRefEntry* ref);

// String getters.
MgStatus RGetString(ResFile id, int32_t resId, Handle* h);
MgStatus RGetStringText(ResFile id, int32_t resId, PStr out);
MgStatus RGetIndString(ResFile id, PStr out, int32_t resId, int32_t index);
MgStatus RGetIndStringPtr(ResFile id, const uint8_t** text, int32_t resId, int32_t index,
                          ResType type);
MgStatus RGetIndLStr(ResFile id, Handle* out, int32_t resId, int32_t index, ResType type);
MgStatus RGetPath(ResFile id, ResType type, int32_t resId, Path* out);

// Edits. RAdd takes over `h` on success; a handle that is not a live block gives 3.
MgStatus RAdd(Handle h, ResFile id, ResType type, int32_t resId, ConstPStr name);
MgStatus RAddToMap(ResFileEntry* entry, Handle h, ResType type, int32_t resId, ConstPStr name);
MgStatus RRemove(Handle h, ResFile id);
// Takes the resource at `index` of `type`'s list out of the map as RRemove does (15 for no such
// index, then RRemove's statuses), without loading its data. A loaded handle stays allocated
// for whoever holds it.
MgStatus RRemoveInd(ResFile id, ResType type, int32_t index);
MgStatus RChanged(Handle h);
MgStatus RSetAttrs(Handle h, int32_t attrs);
int32_t RUniqueID(ResFile id, ResType type);

// Write-back.
MgStatus RUpdateFile(ResFile id);
MgStatus RWriteBack(ResFile id, ResFileEntry* entry);
MgStatus RWriteNow(Handle h);
MgStatus RPreAllocFile(ResFile id, int32_t size);
int32_t RTotalResources(Handle mapHandle);

// Memory images and dates (memfile.cpp, moddate.cpp).
//
// RCreateMemFile registers an empty map with no byte file behind it. As a file's id is its
// FileRef, such a file gets the id 0 and its slot looks free: RLookupFile(0) finds it only
// while it is the first slot with id 0, the next open may take the slot over, and its
// resources can't be found by handle. Its changes can't be written anywhere, so a dirty one
// refuses to close (1); clear its dirty bit with RSetFileAttrs to let it go.
MgStatus RCreateMemFile(ResFile* id, ResType creator, ResType type);
// Builds in a new handle the file that a write-back without holes would give: data in the
// order of the references, pads zero, run-time words zero. Every resource must be loaded (1
// otherwise). The map then describes the image, not the file on disk. A file without
// resources gives its 32-byte header alone.
MgStatus RGetMemFileHandle(ResFile id, Handle* image);
// The modification date (seconds since 1904-01-01 UTC) and read-only state of the open file
// `id`, or, when `id` is 0, of the file at `path`. `readOnly` may be null.
MgStatus RGetModDate(Path path, ResFile id, uint32_t* date, int32_t* readOnly);

MG_EXTERN_C_END
