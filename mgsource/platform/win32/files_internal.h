// What the Windows file backend shares between its files.
#pragma once

#include <stdint.h>

namespace plat {

// replace.cpp: remembers the name, access and share mode of a file opened for writing, and
// forgets it on close.
void NoteOpenFile(int32_t ref, const char* name, int access, int share);
void ForgetOpenFile(int32_t ref);

}  // namespace plat
