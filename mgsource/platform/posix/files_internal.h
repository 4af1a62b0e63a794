// What the POSIX file backend shares between its files: the names of open files, for
// replacing them whole, and the share markers of files.cpp.
#pragma once

#include <stdint.h>

namespace plat {

// replace.cpp: remembers the resolved name, access and share mode of a descriptor opened
// for writing, and forgets it on close.
void NoteOpenFile(int fd, const char* name, int access, int share);
void ForgetOpenFile(int fd);

// files.cpp: takes the share markers of an opener with `access` and `share` on `fd`.
void HoldShareMarkers(int fd, int access, int share);
// files.cpp: takes (exclusive on a writer's descriptor, shared on another) or lets go of the
// mark of a file being written to take another's place; false when another holds it.
bool WriterMark(int fd, bool take, bool exclusive);
// files.cpp: makes `fd` refer to the open file of `from` (then closed), whose markers are
// held on `markerFd` when that isn't -1.
bool MoveDescriptor(int fd, int from, int markerFd);

}  // namespace plat
