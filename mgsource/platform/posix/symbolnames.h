// What the two POSIX naming backends (symbols_libdw.cpp, symbols_dladdr.cpp) share: how a
// module's file name and a linker's symbol name become the texts of a trace.
#pragma once

#include <cxxabi.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

namespace plat {

inline void CopyCut(const char* text, char* out, int32_t size) {
    if (size <= 0) return;
    size_t n = strlen(text);
    if (n >= static_cast<size_t>(size)) n = static_cast<size_t>(size) - 1;
    memcpy(out, text, n);
    out[n] = 0;
}

// A module is named by the last name of its file.
inline void CopyLeaf(const char* path, char* out, int32_t size) {
    const char* leaf = strrchr(path, '/');
    CopyCut(leaf ? leaf + 1 : path, out, size);
}

// C++ names demangled, parameter list and all; others as they are.
inline void CopyDemangled(const char* symbol, char* out, int32_t size) {
    int status = 0;
    char* demangled = abi::__cxa_demangle(symbol, nullptr, nullptr, &status);
    CopyCut(status == 0 && demangled != nullptr ? demangled : symbol, out, size);
    free(demangled);
}

}  // namespace plat
