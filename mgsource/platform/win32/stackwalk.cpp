// Stack reading and naming on Windows hosts. Frames are read with ReadProcessMemory, which
// refuses an unreadable range instead of faulting. Names come from the system's symbol
// library, loaded at run time by the platform's version and used through four entry points
// found by name, so that a machine without it still gets addresses. These are the library's
// 32-bit entry points and records: the naming serves the 32-bit target. The library names a
// function by its qualified name, without parameters, from the program's debug information
// (the build emits a version of it that the library reads).
#include <stddef.h>
#include <windows.h>

#include <new>

#include "platform/platform.h"

namespace plat {
namespace {

typedef BOOL(WINAPI* SymInitializeProc)(HANDLE process, PCSTR searchPath, BOOL invadeProcess);
typedef BOOL(WINAPI* SymGetModuleInfoProc)(HANDLE process, DWORD address, void* module);
typedef BOOL(WINAPI* SymGetSymFromAddrProc)(HANDLE process, DWORD address, DWORD* offset,
                                            void* symbol);
typedef DWORD(WINAPI* SymLoadModuleProc)(HANDLE process, HANDLE file, PCSTR imageName,
                                         PCSTR moduleName, DWORD base, DWORD size);

// The size words the entry points expect, and where the module record keeps its name:
// behind seven 32-bit words.
constexpr DWORD kSymbolRecordSize = 21;
constexpr DWORD kSymbolNameMax = 80;
constexpr DWORD kModuleRecordSize = 572;
constexpr size_t kModuleNameAt = 28;
constexpr size_t kModuleNameSize = 32;
// LoadLibraryExA: look for the library's own dependencies beside it.
constexpr DWORD kSearchBesideLibrary = 8;

struct SymbolRecord {
    DWORD sizeOfStruct;
    DWORD address;
    DWORD size;
    DWORD flags;
    DWORD maxNameLength;
    CHAR name[kSymbolNameMax + 1];
};

// The five words and the first byte of the name, padded to the words' alignment.
constexpr DWORD kPaddedSymbolRecordSize =
    (offsetof(SymbolRecord, name) + 1 + sizeof(DWORD) - 1) / sizeof(DWORD) * sizeof(DWORD);
static_assert(offsetof(SymbolRecord, name) + 1 == kSymbolRecordSize);

template <typename Proc>
Proc Entry(HMODULE library, const char* name) {
    if (library == nullptr) return nullptr;
    // Through the generic function type, which converts to any other without complaint.
    return reinterpret_cast<Proc>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
}

void CopyCut(const char* text, size_t length, char* out, int32_t size) {
    if (size <= 0) return;
    size_t n = 0;
    while (n < length && text[n] != 0 && n + 1 < static_cast<size_t>(size)) ++n;
    memcpy(out, text, n);
    out[n] = 0;
}

}  // namespace

struct SymbolLibrary {
    SymInitializeProc initialize;
    SymGetModuleInfoProc moduleInfo;
    SymGetSymFromAddrProc symbolFromAddress;
    SymLoadModuleProc loadModule;
    HANDLE process;
    HMODULE mainOnly;  // mode 1: the main module, the only one named
};

namespace {

// Mode 1 names the main module alone. Some symbol libraries find the other modules of their
// own process by themselves; an address outside the main module stays unnamed all the same.
bool Excluded(const SymbolLibrary* library, uintptr_t address) {
    if (library->mainOnly == nullptr) return false;
    HMODULE holder = nullptr;
    return !GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                   GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                               reinterpret_cast<LPCSTR>(address), &holder) ||
           holder != library->mainOnly;
}

}  // namespace

bool ReadOwnMemory(uintptr_t address, void* out, size_t size) {
    SIZE_T read = 0;
    return ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<LPCVOID>(address), out, size,
                             &read) != 0 &&
           read == size;
}

// The library is chosen by the platform's version, not tried in turn: a failed load leaves
// every entry point null. It stays loaded to the end of the process.
SymbolLibrary* LoadSymbolLibrary(int32_t mode) {
    SymbolLibrary* library = new (std::nothrow) SymbolLibrary{};
    if (library == nullptr) return nullptr;
    library->process = GetCurrentProcess();
    if (mode == 0) return library;
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    if (!GetVersionExA(&version)) version.dwMajorVersion = 0;
    const char* file = version.dwMajorVersion >= 5 ? "dbghelp.dll" : "imagehlp.dll";
    HMODULE module = LoadLibraryExA(file, nullptr, kSearchBesideLibrary);
    library->initialize = Entry<SymInitializeProc>(module, "SymInitialize");
    library->moduleInfo = Entry<SymGetModuleInfoProc>(module, "SymGetModuleInfo");
    library->symbolFromAddress = Entry<SymGetSymFromAddrProc>(module, "SymGetSymFromAddr");
    library->loadModule = Entry<SymLoadModuleProc>(module, "SymLoadModule");
    if (mode == 1) {
        // The main module's symbols alone.
        library->mainOnly = GetModuleHandleA(nullptr);
        if (library->initialize) library->initialize(library->process, nullptr, FALSE);
        char path[400];
        GetModuleFileNameA(nullptr, path, sizeof path);
        if (library->loadModule)
            library->loadModule(library->process, nullptr, path, nullptr, 0, 0);
    } else if (library->initialize) {
        library->initialize(library->process, nullptr, TRUE);  // every module
    }
    return library;
}

void FreeSymbolLibrary(SymbolLibrary* library) {
    delete library;
}

bool AddressModuleName(SymbolLibrary* library, uintptr_t address, char* name, int32_t size) {
    if (library->moduleInfo == nullptr || Excluded(library, address)) return false;
    alignas(DWORD) unsigned char record[kModuleRecordSize] = {};
    const DWORD sizeWord = kModuleRecordSize;
    memcpy(record, &sizeWord, sizeof sizeWord);
    if (!library->moduleInfo(library->process, static_cast<DWORD>(address), record)) return false;
    CopyCut(reinterpret_cast<const char*>(record + kModuleNameAt), kModuleNameSize, name, size);
    return true;
}

bool AddressSymbolName(SymbolLibrary* library, uintptr_t address, char* name, int32_t size,
                       uint32_t* offset) {
    if (library->symbolFromAddress == nullptr || Excluded(library, address)) return false;
    // The record's size word is its packed size; a library that wants the size padded to its
    // words' alignment refuses that, and is asked again with the padded size.
    const DWORD sizeWords[] = {kSymbolRecordSize, kPaddedSymbolRecordSize};
    for (const DWORD sizeWord : sizeWords) {
        SymbolRecord symbol = {};
        symbol.sizeOfStruct = sizeWord;
        symbol.maxNameLength = kSymbolNameMax;
        DWORD displacement = 0;
        if (library->symbolFromAddress(library->process, static_cast<DWORD>(address), &displacement,
                                       &symbol)) {
            CopyCut(symbol.name, kSymbolNameMax, name, size);
            *offset = displacement;
            return true;
        }
    }
    return false;
}

}  // namespace plat
