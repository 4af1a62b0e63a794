// The runtime's allocation-failure handler and hardware-fault translation on Windows hosts.
// clang-format off
#include <typeinfo>  // eh.h uses std::type_info without declaring it
#include <eh.h>
// clang-format on
#include <new.h>
#include <windows.h>

#include "platform/platform.h"

// Both registrations exist in the Microsoft runtimes and in the universal C runtime; the
// older msvcrt.dll that MinGW-w64 links by default exports neither by its C name, and then
// nothing is registered.
#if defined(_MSC_VER) || defined(_UCRT)
#define MG_RUNTIME_HAS_HANDLERS 1
#else
#define MG_RUNTIME_HAS_HANDLERS 0
#endif

namespace plat {

#if MG_RUNTIME_HAS_HANDLERS
namespace {

FaultTranslator gTranslator = nullptr;

// The runtime's translator: the fault's record, reduced, to the library's.
void __cdecl TranslateFault(unsigned int code, EXCEPTION_POINTERS* pointers) {
    FaultRecord record = {};
    if (pointers != nullptr && pointers->ContextRecord != nullptr &&
        pointers->ExceptionRecord != nullptr) {
        record.complete = true;
#if defined(__i386__) || defined(_M_IX86)
        record.framePointer = pointers->ContextRecord->Ebp;
#else
        record.framePointer = pointers->ContextRecord->Rbp;
#endif
        record.address = reinterpret_cast<uintptr_t>(pointers->ExceptionRecord->ExceptionAddress);
    }
    gTranslator(code, pointers != nullptr ? &record : nullptr);
}

}  // namespace
#endif

SizedNewHandler SetRuntimeNewHandler(SizedNewHandler handler) {
#if MG_RUNTIME_HAS_HANDLERS
    return _set_new_handler(handler);
#else
    (void)handler;
    return nullptr;
#endif
}

// The translator is per thread; the library keeps one for the process.
bool InstallFaultTranslator(FaultTranslator translator) {
#if MG_RUNTIME_HAS_HANDLERS
    gTranslator = translator;
    _set_se_translator(TranslateFault);
    return true;
#else
    (void)translator;
    return false;
#endif
}

}  // namespace plat
