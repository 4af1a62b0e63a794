// Stack reading and naming on POSIX hosts. Frames are read with process_vm_readv on the own
// process: the kernel copies the bytes, and a range that isn't mapped gives EFAULT instead of
// a fault. Names come from the dynamic linker (dladdr), so a program's own functions are
// named when it is linked with its symbols exported (-rdynamic); functions with internal
// linkage stay unnamed. C++ names are demangled.
#include <cxxabi.h>
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/uio.h>
#include <unistd.h>

#include <new>

#include "platform/platform.h"

namespace plat {

struct SymbolLibrary {
    int32_t mode;
    const void* mainBase;  // where the main program is mapped: mode 1 names only it
};

namespace {

void CopyCut(const char* text, char* out, int32_t size) {
    if (size <= 0) return;
    size_t n = strlen(text);
    if (n >= static_cast<size_t>(size)) n = static_cast<size_t>(size) - 1;
    memcpy(out, text, n);
    out[n] = 0;
}

// The dynamic linker's record of `address`, within what the library's mode may name.
bool Locate(const SymbolLibrary* library, uintptr_t address, Dl_info* info) {
    if (library->mode == 0) return false;
    if (dladdr(reinterpret_cast<void*>(address), info) == 0) return false;
    return library->mode != 1 || info->dli_fbase == library->mainBase;
}

}  // namespace

bool ReadOwnMemory(uintptr_t address, void* out, size_t size) {
    iovec local = {out, size};
    iovec remote = {reinterpret_cast<void*>(address), size};
    return process_vm_readv(getpid(), &local, 1, &remote, 1, 0) == static_cast<ssize_t>(size);
}

SymbolLibrary* LoadSymbolLibrary(int32_t mode) {
    SymbolLibrary* library = new (std::nothrow) SymbolLibrary{mode, nullptr};
    if (library == nullptr) return nullptr;
    // The main program's headers lie in its own mapping.
    Dl_info info;
    const unsigned long headers = getauxval(AT_PHDR);
    if (headers != 0 && dladdr(reinterpret_cast<void*>(headers), &info) != 0)
        library->mainBase = info.dli_fbase;
    return library;
}

void FreeSymbolLibrary(SymbolLibrary* library) {
    delete library;
}

bool AddressModuleName(SymbolLibrary* library, uintptr_t address, char* name, int32_t size) {
    Dl_info info;
    if (!Locate(library, address, &info)) return false;
    char program[4096];
    const char* path = info.dli_fname;
    if (path == nullptr || path[0] == 0) {
        if (ModuleFileName(program, sizeof program) == 0) return false;
        path = program;
    }
    const char* leaf = strrchr(path, '/');
    CopyCut(leaf ? leaf + 1 : path, name, size);
    return true;
}

bool AddressSymbolName(SymbolLibrary* library, uintptr_t address, char* name, int32_t size,
                       uint32_t* offset) {
    Dl_info info;
    if (!Locate(library, address, &info) || info.dli_sname == nullptr) return false;
    int status = 0;
    char* demangled = abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, &status);
    CopyCut(status == 0 && demangled != nullptr ? demangled : info.dli_sname, name, size);
    free(demangled);
    *offset = static_cast<uint32_t>(address - reinterpret_cast<uintptr_t>(info.dli_saddr));
    return true;
}

}  // namespace plat
