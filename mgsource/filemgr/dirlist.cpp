// Directory listings: the name list, the optional type list, the drive list and their sort.
#include "filemgr/dirnames.h"
#include "mg/ansi.h"
#include "mg/filemgr.h"
#include "mg/filetypes.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/pstring.h"
#include "mg/resource.h"
#include "mg/shortcut.h"
#include "mg/sort.h"
#include "platform/platform.h"

namespace {

constexpr int32_t kCountSize = 4;
constexpr int32_t kNamesChunk = 512;
constexpr int32_t kTypesChunk = 8;
constexpr int32_t kRecordSize = static_cast<int32_t>(sizeof(DirEntryRecord));

bool IsDots(const char* name) {
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

void WriteCount(Handle names, int32_t count) {
    BlockMove(&count, *names, kCountSize);
}

void WriteRecord(Handle types, int32_t index, uint32_t flags, ResType type) {
    DirEntryRecord r = {flags, type};
    BlockMove(&r, *types + static_cast<int64_t>(index) * kRecordSize, kRecordSize);
}

// A name list under construction: appends PStrs, growing by whole chunks.
struct NameList {
    Handle names;
    int32_t used = kCountSize;
    int32_t capacity = 0;
    int32_t count = 0;

    MgStatus Append(const char* name) {
        int32_t length = StrLen(name);
        if (length > 255) length = 255;
        if (used + 1 + length > capacity) {
            if (MemResizeHandle(names, capacity + kNamesChunk) != MgNoError) return MgNoMemory;
            capacity += kNamesChunk;
        }
        (*names)[used] = static_cast<uint8_t>(length);
        BlockMove(name, *names + used + 1, length);
        used += 1 + length;
        WriteCount(names, ++count);
        return MgNoError;
    }
};

// The volume kind as the four bytes of a type; 0 for a kind outside the table.
ResType VolumeType(int32_t kind, bool otherIsFixed) {
    switch (kind) {
        case plat::kVolumeRemovable:
            return MgResType("flpy");
        case plat::kVolumeFixed:
            return MgResType("hdsk");
        case plat::kVolumeRemote:
            return MgResType("srvr");
        default:
            return otherIsFixed ? MgResType("hdsk") : 0;
    }
}

// The flags and type of one listed entry, whose full name is `full` (rewritten when it is a
// shortcut). `name` becomes the short name when only that one could be read.
MgStatus Classify(const plat::ListedEntry& e, const DirPrefix& prefix, int32_t options, char* full,
                  Path* entryPath, const char** name, DirEntryRecord* r) {
    plat::EntryAttributes a = e.attributes;
    bool shortcut = false;
    if (FResolveShortcut(full)) {
        shortcut = true;
        plat::GetEntryAttributes(full, &a);
    } else {
        shortcut = a.isLink;
    }
    if (!a.known && e.shortName[0] != 0 && prefix.Join(e.shortName, full)) {
        bool viaShortcut = FResolveShortcut(full) != 0;
        plat::EntryAttributes b;
        if (plat::GetEntryAttributes(full, &b)) {
            a = b;
            shortcut = viaShortcut;
            *name = e.shortName;
        }
    }
    if (MgStatus status =
            FTextToPath(reinterpret_cast<const uint8_t*>(full), StrLen(full), entryPath))
        return status;
    r->flags = shortcut ? EntryIsShortcut : 0;
    r->type = 0;
    if (!a.known) {
        r->flags |= EntryIsFile | EntryUnreadable;
    } else if (!a.isDirectory) {
        r->flags |= EntryIsFile;
        ResType type = 0;
        if ((options & FDirReadResourceHeaders) &&
            RGetFileTypeCreator(*entryPath, &type, nullptr) == MgNoError) {
            r->flags |= EntryHasType;
            r->type = type;
        } else if ((type = FTypeOfPath(*entryPath)) != 0) {
            r->flags |= EntryHasType;
            r->type = type;
        }
    } else if (shortcut) {
        // A shortcut to a volume root is typed by the kind of the volume.
        r->type = VolumeType(plat::VolumeKindOfRoot(full), false);
        if (r->type != 0) r->flags |= EntryHasType;
    }
    return MgNoError;
}

MgStatus ListEntries(plat::DirListing* listing, const DirPrefix& prefix, Handle types,
                     int32_t options, NameList& list, Path* entryPath) {
    char full[FNativeNameBufferSize];
    for (bool atStart = true;;) {
        plat::ListedEntry e;
        bool failed = false;
        if (!plat::NextListingEntry(listing, &e, &failed))
            return failed ? FMapLastError() : MgNoError;
        // The listing's own "." and ".." come first where the host lists them at all.
        if (atStart && IsDots(e.name)) continue;
        atStart = false;
        const char* name = e.name;
        if (types != nullptr) {
            if (list.count % kTypesChunk == 0 &&
                MemResizeHandle(types, (list.count + kTypesChunk) * kRecordSize) != MgNoError)
                return MgNoMemory;
            DirEntryRecord r = {};
            if (!prefix.Join(e.name, full)) return MgBadArgument;
            if (MgStatus status = Classify(e, prefix, options, full, entryPath, &name, &r))
                return status;
            WriteRecord(types, list.count, r.flags, r.type);
        }
        if (MgStatus status = list.Append(name)) return status;
    }
}

// One name to sort: its first sixteen bytes folded to lower case, as two big-endian keys
// padded with zeros, so that most comparisons end on the keys; equal keys go on in the folded
// copy of the list, and equal names keep their listed order. Folded bytes compare as
// PStringOrderNoCase compares them.
struct SortItem {
    uint64_t key[2];
    int32_t index;
    int32_t offset;  // of the name in the list and in its folded copy
};

uint64_t SortKey(ConstPStr folded, int32_t from) {
    uint64_t key = 0;
    for (int32_t i = from; i < from + 8; ++i) key = key << 8 | (i < folded[0] ? folded[1 + i] : 0);
    return key;
}

int32_t OrderByName(void* context, const void* a, const void* b) {
    const auto* x = static_cast<const SortItem*>(a);
    const auto* y = static_cast<const SortItem*>(b);
    if (x->key[0] != y->key[0]) return x->key[0] < y->key[0] ? -1 : 1;
    if (x->key[1] != y->key[1]) return x->key[1] < y->key[1] ? -1 : 1;
    ConstPStr p = static_cast<const uint8_t*>(context) + x->offset;
    ConstPStr q = static_cast<const uint8_t*>(context) + y->offset;
    int32_t d = MemOrder(p + 1, q + 1, p[0] < q[0] ? p[0] : q[0]);
    if (d == 0) d = p[0] - q[0];
    return d != 0 ? d : x->index - y->index;
}

// The drive list under construction: one name, and with types one record, a volume.
struct DriveList {
    NameList list;
    Handle types;
    MgStatus status = MgNoError;
};

bool VisitVolume(void* context, const char* name, int32_t kind) {
    auto* d = static_cast<DriveList*>(context);
    if (StrLen(name) > 255) return true;  // no name in the list could hold it
    int32_t index = d->list.count;
    if (d->types != nullptr &&
        (d->status = MemResizeHandle(d->types, (index + 1) * kRecordSize)) != MgNoError)
        return false;
    if ((d->status = d->list.Append(name)) != MgNoError) return false;
    if (d->types != nullptr) WriteRecord(d->types, index, EntryHasType, VolumeType(kind, true));
    return true;
}

}  // namespace

extern "C" {

Handle FNewNameList(Handle list) {
    if (list == nullptr) {
        list = MemNewHandle(kCountSize);
        if (list == nullptr) return nullptr;
    } else if (MemResizeHandle(list, kCountSize) != MgNoError) {
        return nullptr;
    }
    WriteCount(list, 0);
    return list;
}

MgStatus FDirEntries(Path path, Handle names, Handle types) {
    return FDirEntriesWith(path, names, types, 0);
}

MgStatus FDirEntriesWith(Path path, Handle names, Handle types, int32_t options) {
    if (!FPathRooted(path) || names == nullptr) return MgBadArgument;
    if (FPathDepth(path) < plat::VolumeDepth()) return FDriveEntries(names, types);
    DirPrefix prefix;
    if (MgStatus status = prefix.Make(path)) return status;
    if (MemResizeHandle(names, kNamesChunk) != MgNoError) return MgNoMemory;
    WriteCount(names, 0);
    plat::DirListing* listing = plat::OpenListing(prefix.text);
    if (listing == nullptr) return MgNotFound;

    NameList list{names, kCountSize, kNamesChunk, 0};
    Path entryPath = nullptr;
    MgStatus status = ListEntries(listing, prefix, types, options, list, &entryPath);
    if (!plat::CloseListing(listing) && status == MgNoError) status = FMapLastError();
    FPathRelease(entryPath);
    if (status != MgNoError) return status;
    MemResizeHandle(names, list.used);
    if (types != nullptr) MemResizeHandle(types, list.count * kRecordSize);
    FSortDirEntries(names, types);
    return MgNoError;
}

MgStatus FDriveEntries(Handle names, Handle types) {
    if (names == nullptr) return MgBadArgument;
    constexpr int32_t kDrivesSize = 56;  // 26 one-letter names
    if (MgStatus status = MemResizeHandle(names, kDrivesSize)) return status;
    WriteCount(names, 0);
    if (types != nullptr && MemResizeHandle(types, 0) != MgNoError) return MgNoMemory;
    DriveList d{{names, kCountSize, kDrivesSize, 0}, types};
    if (!plat::ListVolumes(VisitVolume, &d)) return FMapLastError();
    if (d.status != MgNoError) return d.status;
    MemResizeHandle(names, d.list.used);
    return MgNoError;
}

// Sorts by name without regard to case, moving the type records along. The names are read
// from a copy, so the list can be rewritten in place in the sorted order. Without the work
// space the lists stay as they are.
void FSortDirEntries(Handle names, Handle types) {
    if (names == nullptr || MemHandleSize(names) < kCountSize) return;
    int32_t count = 0;
    BlockMove(*names, &count, kCountSize);
    int32_t size = MemHandleSize(names);
    if (count < 2 || count > size || (types && MemHandleSize(types) < count * kRecordSize)) return;
    constexpr int32_t kItemSize = static_cast<int32_t>(sizeof(SortItem));
    Ptr copy = MemNewPtr(size);
    Ptr folded = MemNewPtr(size);
    Ptr order = count <= INT32_MAX / kItemSize ? MemNewPtr(kItemSize * count) : nullptr;
    Ptr records = types != nullptr ? MemNewPtr(count * kRecordSize) : nullptr;
    bool ready = copy && folded && order && (types == nullptr || records);
    auto* items = reinterpret_cast<SortItem*>(order);
    if (ready) {
        uint8_t lower[256];
        for (int32_t c = 0; c < 256; ++c) lower[c] = static_cast<uint8_t>(CharToLower(c));
        BlockMove(*names, copy, size);
        for (int32_t i = 0; i < size; ++i) folded[i] = lower[copy[i]];
        if (records) BlockMove(*types, records, count * kRecordSize);
        for (int32_t i = 0, offset = kCountSize; i < count && ready; ++i) {
            ready = offset < size && offset + 1 + copy[offset] <= size;  // a list cut short
            if (!ready) break;
            folded[offset] = copy[offset];  // the length byte, not a character
            items[i] = {{SortKey(folded + offset, 0), SortKey(folded + offset, 8)}, i, offset};
            offset += 1 + copy[offset];
        }
    }
    if (ready) {
        SortArrayContext(items, count, kItemSize, kItemSize, OrderByName, folded);
        int32_t offset = kCountSize;
        for (int32_t i = 0; i < count; ++i) {
            ConstPStr name = copy + items[i].offset;
            BlockMove(name, *names + offset, 1 + name[0]);
            offset += 1 + name[0];
            if (records)
                BlockMove(records + static_cast<int64_t>(items[i].index) * kRecordSize,
                          *types + static_cast<int64_t>(i) * kRecordSize, kRecordSize);
        }
    }
    MemDisposePtr(records);
    MemDisposePtr(order);
    MemDisposePtr(folded);
    MemDisposePtr(copy);
}

}  // extern "C"
