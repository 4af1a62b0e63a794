// Naming on POSIX hosts through elfutils' libdw: one session over the modules mapped into the
// own process (/proc/self/maps), made when the library is loaded. An address is named by the
// symbol of the symbol table that holds it: the module file's own table, or, for a stripped
// file, the table of its separate debug file (beside the file, in .debug, under
// /usr/lib/debug, by build ID). Exported or not, so that static functions and those of
// anonymous namespaces are named as well, in the program and in every shared object.
// Never from a debuginfod server: a failure report must not wait on the network.
#include <elfutils/libdwfl.h>
#include <stdlib.h>
#include <sys/auxv.h>
#include <unistd.h>

#include <new>

#include "platform/platform.h"
#include "platform/posix/symbolnames.h"

namespace plat {

struct SymbolLibrary {
    int32_t mode;
    Dwfl* session;      // null for mode 0, or when the modules could not be listed
    Dwfl_Module* main;  // the program's own module: mode 1 names only it
};

namespace {

// The standard search for separate debug files, unless the environment names debuginfod
// servers, which that search would ask.
int FindLocalDebugInfo(Dwfl_Module* module, void** userData, const char* moduleName,
                       Dwarf_Addr base, const char* file, const char* debugLink, GElf_Word crc,
                       char** debugFile) {
    const char* servers = getenv("DEBUGINFOD_URLS");
    if (servers != nullptr && servers[0] != 0) return -1;
    return dwfl_standard_find_debuginfo(module, userData, moduleName, base, file, debugLink, crc,
                                        debugFile);
}

const Dwfl_Callbacks kCallbacks = {dwfl_linux_proc_find_elf, FindLocalDebugInfo, nullptr, nullptr};

Dwfl* OpenSession() {
    Dwfl* session = dwfl_begin(&kCallbacks);
    if (session == nullptr) return nullptr;
    dwfl_report_begin(session);
    const bool listed = dwfl_linux_proc_report(session, getpid()) == 0;
    if (dwfl_report_end(session, nullptr, nullptr) != 0 || !listed) {
        dwfl_end(session);
        return nullptr;
    }
    return session;
}

// The module that holds `address`, within what the library's mode may name.
Dwfl_Module* Locate(const SymbolLibrary* library, uintptr_t address) {
    if (library->session == nullptr) return nullptr;
    Dwfl_Module* module = dwfl_addrmodule(library->session, address);
    if (library->mode == 1 && module != library->main) return nullptr;
    return module;
}

}  // namespace

bool NamesInternalFunctions() {
    return true;
}

SymbolLibrary* LoadSymbolLibrary(int32_t mode) {
    SymbolLibrary* library = new (std::nothrow) SymbolLibrary{mode, nullptr, nullptr};
    if (library == nullptr || mode == 0) return library;
    library->session = OpenSession();
    // The main program's headers lie in its own mapping.
    const unsigned long headers = getauxval(AT_PHDR);
    if (library->session != nullptr && headers != 0)
        library->main = dwfl_addrmodule(library->session, headers);
    return library;
}

void FreeSymbolLibrary(SymbolLibrary* library) {
    if (library != nullptr && library->session != nullptr) dwfl_end(library->session);
    delete library;
}

bool AddressModuleName(SymbolLibrary* library, uintptr_t address, char* name, int32_t size) {
    Dwfl_Module* module = Locate(library, address);
    if (module == nullptr) return false;
    const char* path =
        dwfl_module_info(module, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (path == nullptr) return false;
    CopyLeaf(path, name, size);
    return true;
}

bool AddressSymbolName(SymbolLibrary* library, uintptr_t address, char* name, int32_t size,
                       uint32_t* offset) {
    Dwfl_Module* module = Locate(library, address);
    if (module == nullptr) return false;
    GElf_Off distance = 0;
    GElf_Sym symbol;
    const char* text =
        dwfl_module_addrinfo(module, address, &distance, &symbol, nullptr, nullptr, nullptr);
    if (text == nullptr) return false;
    CopyDemangled(text, name, size);
    *offset = static_cast<uint32_t>(distance);
    return true;
}

}  // namespace plat
