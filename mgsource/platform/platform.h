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

// Writes the current directory, NUL-terminated, into `buffer` of `size` bytes; returns its
// length, or 0 when it does not fit or cannot be read.
int32_t CurrentDirectory(char* buffer, int32_t size);
// The separator the host puts between directory names.
char DirectorySeparator();

// Case mapping of one 8-bit character in the host's code page.
uint8_t CharLower(uint8_t c);
uint8_t CharUpper(uint8_t c);

// Writes the program's own file name, NUL-terminated; returns its length, 0 on failure.
int32_t ModuleFileName(char* buffer, int32_t size);

// The id of this process.
int32_t ProcessId();
// Lets the user's settings govern the runtime's number and time formatting.
void UseUserLocaleForTimeAndNumbers();
// The decimal mark of the user's settings, or 0 when there is none.
char UserDecimalMark();

}  // namespace plat
