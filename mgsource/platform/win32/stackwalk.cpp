// Stack reading and naming on Windows hosts. Frames are read with ReadProcessMemory, which
// refuses an unreadable range instead of faulting. On x64 the own stack is walked along the
// unwind tables that the ABI requires of every function that calls another (RtlVirtualUnwind):
// GCC's frame pointer there points into the middle of a frame, so no chain leads through it.
// Names come from the system's symbol library, loaded at run time by the platform's version
// and used through four entry points found by name, so that a machine without it still gets
// addresses. The 32-bit target uses the library's 32-bit entry points and records, the x64
// target those of 64-bit addresses, laid out as the system's header has them. The library
// names a function by its qualified name, without parameters, from the program's debug
// information (the build emits a version of it that the library reads).
#include <stddef.h>
#include <windows.h>
// After windows.h, which it needs.
#include <dbghelp.h>

#include <new>

#include "platform/platform.h"

namespace plat {
namespace {

#if defined(_WIN64)
typedef DWORD64 SymAddress;
const char kModuleInfoEntry[] = "SymGetModuleInfo64";
const char kSymbolEntry[] = "SymGetSymFromAddr64";
const char kLoadModuleEntry[] = "SymLoadModule64";
// The module record as the header lays it out, whole.
constexpr DWORD kModuleRecordSize = sizeof(IMAGEHLP_MODULE64);
constexpr size_t kModuleNameAt = offsetof(IMAGEHLP_MODULE64, ModuleName);
#else
typedef DWORD SymAddress;
const char kModuleInfoEntry[] = "SymGetModuleInfo";
const char kSymbolEntry[] = "SymGetSymFromAddr";
const char kLoadModuleEntry[] = "SymLoadModule";
// The size word the entry point expects, and where the module record keeps its name: behind
// seven 32-bit words.
constexpr DWORD kModuleRecordSize = 572;
constexpr size_t kModuleNameAt = 28;
#endif
constexpr size_t kModuleNameSize = 32;

typedef BOOL(WINAPI* SymInitializeProc)(HANDLE process, PCSTR searchPath, BOOL invadeProcess);
typedef BOOL(WINAPI* SymGetModuleInfoProc)(HANDLE process, SymAddress address, void* module);
typedef BOOL(WINAPI* SymGetSymFromAddrProc)(HANDLE process, SymAddress address, SymAddress* offset,
                                            void* symbol);
typedef SymAddress(WINAPI* SymLoadModuleProc)(HANDLE process, HANDLE file, PCSTR imageName,
                                              PCSTR moduleName, SymAddress base, DWORD size);

constexpr DWORD kSymbolNameMax = 80;
// LoadLibraryExA: look for the library's own dependencies beside it.
constexpr DWORD kSearchBesideLibrary = 8;

struct SymbolRecord {
    DWORD sizeOfStruct;
    SymAddress address;
    DWORD size;
    DWORD flags;
    DWORD maxNameLength;
    CHAR name[kSymbolNameMax + 1];
};

// The record's size word: its fields and the first byte of the name (21 on the 32-bit
// target), and the same padded to the fields' alignment.
constexpr DWORD kSymbolRecordSize = offsetof(SymbolRecord, name) + 1;
constexpr DWORD kPaddedSymbolRecordSize =
    (kSymbolRecordSize + alignof(SymbolRecord) - 1) / alignof(SymbolRecord) * alignof(SymbolRecord);
#if defined(_WIN64)
static_assert(offsetof(SymbolRecord, name) == offsetof(IMAGEHLP_SYMBOL64, Name));
static_assert(kPaddedSymbolRecordSize == sizeof(IMAGEHLP_SYMBOL64));
#else
static_assert(kSymbolRecordSize == 21);
#endif

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

bool UnwindOwnStack(uintptr_t above, int32_t skip, uintptr_t* out, int32_t limit, int32_t* count) {
#if defined(_WIN64)
    CONTEXT context;
    RtlCaptureContext(&context);
    int32_t n = 0;
    int32_t left = skip;
    while (n < limit) {
        // Code without unwind data ends the walk: every function that calls another has it.
        DWORD64 imageBase = 0;
        RUNTIME_FUNCTION* function = RtlLookupFunctionEntry(context.Rip, &imageBase, nullptr);
        if (function == nullptr) break;
        const DWORD64 stack = context.Rsp;
        void* handlerData = nullptr;
        DWORD64 establisher = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, imageBase, context.Rip, function, &context,
                         &handlerData, &establisher, nullptr);
        // The outermost frame returns nowhere; a stack that doesn't rise is broken.
        if (context.Rip == 0 || context.Rsp <= stack) break;
        if (context.Rsp <= above)  // still a frame of the caller's or below it
            continue;
        if (left > 0)
            --left;
        else
            out[n++] = context.Rip;
    }
    *count = n;
    return true;
#else
    (void)above, (void)skip, (void)out, (void)limit, (void)count;
    return false;  // 32-bit code keeps the chain: every target has frame pointers
#endif
}

bool NamesInternalFunctions() {
    return true;  // the debug information holds every function
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
    library->moduleInfo = Entry<SymGetModuleInfoProc>(module, kModuleInfoEntry);
    library->symbolFromAddress = Entry<SymGetSymFromAddrProc>(module, kSymbolEntry);
    library->loadModule = Entry<SymLoadModuleProc>(module, kLoadModuleEntry);
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
    alignas(SymAddress) unsigned char record[kModuleRecordSize] = {};
    const DWORD sizeWord = kModuleRecordSize;
    memcpy(record, &sizeWord, sizeof sizeWord);
    if (!library->moduleInfo(library->process, address, record)) return false;
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
        SymAddress displacement = 0;
        if (library->symbolFromAddress(library->process, address, &displacement, &symbol)) {
            CopyCut(symbol.name, kSymbolNameMax, name, size);
            *offset = static_cast<uint32_t>(displacement);
            return true;
        }
    }
    return false;
}

}  // namespace plat
