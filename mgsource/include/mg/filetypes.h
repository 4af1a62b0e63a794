// File types by extension. Files here carry no four-character type, so one is derived from the
// name's extension through two tables that the host installs (the primary is searched first).
//
// A table is a handle to a signed 32-bit record count, then 8-byte records: the type, then the
// extension without its dot, NUL-terminated in 4 bytes. An extension's length is taken by a
// plain walk to its NUL, so one of four characters runs on into the next record and matches
// only when that record starts with a 0 byte; the last record's runs into the block's end and
// matches nothing. The layer doesn't own the tables.
#pragma once

#include "mg/mgtypes.h"

MG_EXTERN_C_BEGIN

void FSetTypeTables(Handle primary, Handle secondary);
// The type of the path's last name, or 0. A path that isn't rooted is a failed check.
ResType FTypeOfPath(Path path);
// The type of the name's extension: a dot among its last five characters, with something
// behind it. 0 when there is none or no table knows it.
ResType FTypeOfName(ConstPStr name);
// The type of an extension of 1 to 4 characters, without regard to case; 0 otherwise.
ResType FTypeOfExtension(const char* text, int32_t length);
// Appends "." and the extension of `type` from the primary table, or the secondary when the
// primary answers 15; the status of the table that answered.
MgStatus FAddExtension(PStr name, ResType type);
// One table: 15 for a null table or an unknown type, 1 when the name would pass 255 bytes.
MgStatus FAddExtensionFrom(PStr name, ResType type, Handle table);
// Cuts the extension (and its dot) when `type` is 0 or is the extension's type; the number of
// bytes removed, 0 for none.
int32_t FStripExtension(PStr name, ResType type);
// Room left in a name for a dot and an extension of `length` characters: 254 - length.
int32_t FNameRoomFor(int32_t length);

MG_EXTERN_C_END
