// The steps of the package run, each a function of its own so that tests can drive them.
#pragma once

#include "mg/mgtypes.h"

// Makes the package from the options; 0, or the status of the failure.
int32_t BuildCodePackage();
// Reads <codeName>.dll from codePath whole into a new handle; null when it cannot be read.
Handle ReadCodeModule();
// Writes the tag, the module and any imported resources into the target resource file.
MgStatus WritePackage(Handle code, Handle tag);
// Moves every resource of the -r file into `target`, from the given one-based indices.
MgStatus ImportResources(ResFile target, int32_t* typeIndex, int32_t* resIndex);

// Length of a NUL-terminated text as the 32-bit count the path calls take.
int32_t StrLenOf(const char* text);
// Appends a suffix to the code name, clipped at 255 characters, then (by the caller) the
// count byte is taken down by 4 whatever was really appended.
void AppendToCodeName(const char* suffix);
void DropCodeNameSuffix();
