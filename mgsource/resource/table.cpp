// The table of open resource files: one slot per file, the file's id being its FileRef.
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "resource/resmap.h"

MG_SOURCE_IDENTITY("mgsource\\resource\\table.cpp", "$Revision: 1 $");

using namespace rsrc;

namespace {

constexpr int32_t kInitialSlots = 20;
constexpr int32_t kGrowSlots = 4;

ResFileEntry* Slots() {
    return reinterpret_cast<ResFileEntry*>(*RFileTable);
}

// The slot of the last nonzero id found, asked first. It stays the first slot with that id
// until a registration fills a slot, which may lie before it; slot 0 is first in any case.
int32_t gLastSlot = 0;

}  // namespace

extern "C" {

Handle RFileTable = nullptr;
int32_t RFileTableSize = 0;

MgStatus RInit(void) {
    RFileTableSize = kInitialSlots;
    RFileTable = MemNewHandleClear(kInitialSlots * static_cast<int32_t>(sizeof(ResFileEntry)));
    return RFileTable ? MgNoError : MgNoMemory;
}

// Files still open are left as they are; only the table goes.
MgStatus RExit(void) {
    MgStatus status = MemDisposeHandle(RFileTable);
    RFileTable = nullptr;
    RFileTableSize = 0;
    return status;
}

// Id 0 finds a free slot like any other value: callers must not pass it.
MgStatus RLookupFile(ResFile id, ResFileEntry** entry) {
    *entry = nullptr;
    if (!RFileTable) return MgBadResourceFile;
    ResFileEntry* slots = Slots();
    if (id != 0 && gLastSlot < RFileTableSize && slots[gLastSlot].fileId == id) {
        *entry = &slots[gLastSlot];
        return MgNoError;
    }
    for (int32_t i = 0; i < RFileTableSize; ++i) {
        if (slots[i].fileId == id) {
            if (id != 0) gLastSlot = i;
            *entry = &slots[i];
            return MgNoError;
        }
    }
    return MgBadResourceFile;
}

MgStatus RRegisterFile(ResFile* id, FileRef fileRef, Handle mapHandle, Ptr map) {
    if (!RFileTable) return MgBadResourceFile;
    int32_t slot = 0;
    while (slot < RFileTableSize && Slots()[slot].fileId != 0) ++slot;
    if (slot == RFileTableSize) {
        const int32_t grown = RFileTableSize + kGrowSlots;
        MgStatus status =
            MemResizeHandleClear(RFileTable, grown * static_cast<int32_t>(sizeof(ResFileEntry)));
        if (status) return status;
        RFileTableSize = grown;
    }
    gLastSlot = 0;  // the new slot may come before the one remembered
    ResFileEntry* e = &Slots()[slot];
    e->fileId = fileRef;
    e->reserved = 0;
    e->fileRef = fileRef;
    e->mapHandle = mapHandle;
    e->map = map;
    *id = fileRef;
    return MgNoError;
}

MgStatus RGetFileAttrs(ResFile id, int32_t* attrs) {
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    *attrs = Word(entry->map, kMapFileAttrs);
    return MgNoError;
}

MgStatus RSetFileAttrs(ResFile id, int32_t attrs) {
    ResFileEntry* entry;
    if (MgStatus status = RLookupFile(id, &entry)) return status;
    if (ReadOnly(entry->map)) {
        DPrintf("Tried to call RSetFileAttrs on a readonly file");
        return MgNoPermission;
    }
    Word(entry->map, kMapFileAttrs) = attrs;
    return MgNoError;
}

}  // extern "C"
