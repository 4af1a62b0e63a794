// Naming on POSIX hosts built without elfutils' libdw: the dynamic linker names addresses
// (dladdr). It knows exported symbols alone, so a program's own functions are named only when
// it is linked with its symbols exported (-rdynamic, which the build then asks for), and
// functions with internal linkage stay unnamed.
#include <dlfcn.h>
#include <sys/auxv.h>

#include <new>

#include "platform/platform.h"
#include "platform/posix/symbolnames.h"

namespace plat {

struct SymbolLibrary {
    int32_t mode;
    const void* mainBase;  // where the main program is mapped: mode 1 names only it
};

namespace {

// The dynamic linker's record of `address`, within what the library's mode may name.
bool Locate(const SymbolLibrary* library, uintptr_t address, Dl_info* info) {
    if (library->mode == 0) return false;
    if (dladdr(reinterpret_cast<void*>(address), info) == 0) return false;
    return library->mode != 1 || info->dli_fbase == library->mainBase;
}

}  // namespace

bool NamesInternalFunctions() {
    return false;
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
    CopyLeaf(path, name, size);
    return true;
}

bool AddressSymbolName(SymbolLibrary* library, uintptr_t address, char* name, int32_t size,
                       uint32_t* offset) {
    Dl_info info;
    if (!Locate(library, address, &info) || info.dli_sname == nullptr) return false;
    CopyDemangled(info.dli_sname, name, size);
    *offset = static_cast<uint32_t>(address - reinterpret_cast<uintptr_t>(info.dli_saddr));
    return true;
}

}  // namespace plat
