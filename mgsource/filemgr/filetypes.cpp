// File types derived from extensions through the host's two tables.
#include "mg/filetypes.h"

#include "mg/ansi.h"
#include "mg/dbgtools.h"
#include "mg/memory.h"
#include "mg/path.h"
#include "mg/pstring.h"

MG_SOURCE_IDENTITY("mgsource\\filemgr\\filetypes.cpp", "$Revision: 1 $");

namespace {

constexpr int32_t kRecord = 8;
constexpr int32_t kExtensionField = 4;
constexpr int32_t kDotSearch = 5;
constexpr MgStatus kUnknownType = MgResourceNotFound;

Handle gPrimary = nullptr;
Handle gSecondary = nullptr;

// Records that lie wholly inside the block.
int32_t RecordCount(Handle table) {
    const int32_t size = MemHandleSize(table);
    if (size < 4) return 0;
    int32_t entries;
    memcpy(&entries, *table, 4);
    const int32_t room = (size - 4) / kRecord;
    return entries < 0 ? 0 : (entries < room ? entries : room);
}

const uint8_t* RecordAt(Handle table, int32_t i) {
    return *table + 4 + i * kRecord;
}

// Length of the NUL-terminated extension of record i, walking on into what follows it; the
// end of the block stops the walk without a terminator.
int32_t ExtensionLength(Handle table, int32_t i, const int32_t blockSize) {
    const uint8_t* block = *table;
    int32_t at = 4 + i * kRecord + 4;
    const int32_t start = at;
    while (at < blockSize && block[at] != 0) ++at;
    return at < blockSize ? at - start : INT32_MAX;
}

ResType Search(Handle table, const char* text, int32_t length) {
    if (!table || !*table) return 0;
    const int32_t size = MemHandleSize(table);
    const int32_t n = RecordCount(table);
    for (int32_t i = 0; i < n; ++i) {
        if (ExtensionLength(table, i, size) != length) continue;
        const char* extension = reinterpret_cast<const char*>(RecordAt(table, i) + 4);
        if (TextSameNoCaseN(extension, text, length)) {
            ResType type;
            memcpy(&type, RecordAt(table, i), 4);
            return type;
        }
    }
    return 0;
}

// 1-based position of the dot among the last five characters of the name, or 0.
int32_t DotPosition(ConstPStr name) {
    const int32_t length = name[0];
    for (int32_t at = length; at > 0 && at > length - kDotSearch; --at)
        if (name[at] == '.') return at;
    return 0;
}

}  // namespace

extern "C" {

void FSetTypeTables(Handle primary, Handle secondary) {
    gPrimary = primary;
    gSecondary = secondary;
}

ResType FTypeOfPath(Path path) {
    MG_CHECK(FPathRooted(path));
    if ((!gPrimary && !gSecondary) || !path || FPathHasNoNames(path)) return 0;
    uint8_t name[256];
    if (FLastName(path, name) != MgNoError) return 0;
    return FTypeOfName(name);
}

ResType FTypeOfName(ConstPStr name) {
    const int32_t dot = DotPosition(name);
    if (dot == 0 || dot == name[0]) return 0;
    return FTypeOfExtension(reinterpret_cast<const char*>(name + dot + 1), name[0] - dot);
}

ResType FTypeOfExtension(const char* text, int32_t length) {
    if (length < 1 || length > kExtensionField) return 0;
    if (ResType type = Search(gPrimary, text, length)) return type;
    return Search(gSecondary, text, length);
}

MgStatus FAddExtension(PStr name, ResType type) {
    MgStatus status = FAddExtensionFrom(name, type, gPrimary);
    if (status == kUnknownType) status = FAddExtensionFrom(name, type, gSecondary);
    return status;
}

// The extension appended is the record's field up to its NUL, at most its four bytes.
MgStatus FAddExtensionFrom(PStr name, ResType type, Handle table) {
    if (!table || !*table) return kUnknownType;
    const int32_t n = RecordCount(table);
    for (int32_t i = 0; i < n; ++i) {
        const uint8_t* record = RecordAt(table, i);
        ResType t;
        memcpy(&t, record, 4);
        if (t != type) continue;
        int32_t length = 0;
        while (length < kExtensionField && record[4 + length] != 0) ++length;
        if (name[0] + 1 + length > 255) return MgBadArgument;
        name[name[0] + 1] = '.';
        BlockMove(record + 4, name + name[0] + 2, length);
        name[0] = static_cast<uint8_t>(name[0] + 1 + length);
        return MgNoError;
    }
    return kUnknownType;
}

int32_t FStripExtension(PStr name, ResType type) {
    const int32_t dot = DotPosition(name);
    if (dot == 0) return 0;
    if (type != 0 &&
        FTypeOfExtension(reinterpret_cast<const char*>(name + dot + 1), name[0] - dot) != type)
        return 0;
    const int32_t removed = name[0] - dot + 1;
    name[0] = static_cast<uint8_t>(dot - 1);
    return removed;
}

int32_t FNameRoomFor(int32_t length) {
    return 254 - length;
}

}  // extern "C"
