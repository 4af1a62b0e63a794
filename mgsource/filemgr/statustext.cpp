// The status table in words: one row for each status the layer gives, with the resource
// manager's sense joined to the general one where it differs.
#include "mg/mgtypes.h"

namespace {

struct StatusRow {
    MgStatus status;
    const char* name;
    const char* text;
};

const StatusRow kRows[] = {
    {MgNoError, "MgNoError", "no error"},
    {MgBadArgument, "MgBadArgument", "invalid argument, path or name"},
    {MgNoMemory, "MgNoMemory", "out of memory"},
    {MgBadHandle, "MgBadHandle", "a block reference is not a live block"},
    {MgEndOfFile, "MgEndOfFile",
     "a read or seek ran out of the file, or a resource's data lies beyond the data section"},
    {MgIOError, "MgIOError",
     "a file operation failed, or a resource file's map doesn't fit its header"},
    {MgNotFound, "MgNotFound", "no such file or directory"},
    {MgNoPermission, "MgNoPermission",
     "access denied, a sharing or lock conflict, or a resource file opened read-only"},
    {MgDiskFull, "MgDiskFull", "no space left on the volume"},
    {MgDuplicate, "MgDuplicate", "the file or directory exists already"},
    {MgTooManyOpen, "MgTooManyOpen", "too many open files"},
    {MgBadResourceFile, "MgBadResourceFile", "not a resource file, or not an open one"},
    {MgResourceDuplicate, "MgResourceDuplicate",
     "the resource exists already, or its handle is null or a resource already"},
    {MgResourceNotFound, "MgResourceNotFound",
     "no such resource or entry, or a protected resource that can't be removed"},
    {MgNotADirectory, "MgNotADirectory", "a file stands where a directory is needed"},
    {MgNotSupported, "MgNotSupported", "not supported on this platform"},
    {MgBadFlatPath, "MgBadFlatPath", "a stored path could not be unflattened"},
};

const StatusRow* Find(MgStatus status) {
    for (const StatusRow& row : kRows)
        if (row.status == status) return &row;
    return nullptr;
}

}  // namespace

extern "C" {

const char* MgStatusText(MgStatus status) {
    const StatusRow* row = Find(status);
    return row ? row->text : "unknown status";
}

const char* MgStatusName(MgStatus status) {
    const StatusRow* row = Find(status);
    return row ? row->name : "unknown";
}

}  // extern "C"
