// The runtime's allocation-failure handler and hardware-fault translation on Windows hosts.
// clang-format off
#include <typeinfo>  // eh.h uses std::type_info without declaring it
#include <eh.h>
// clang-format on
#include <new.h>
#include <windows.h>

#include "platform/platform.h"

namespace plat {
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

SizedNewHandler SetRuntimeNewHandler(SizedNewHandler handler) {
    return _set_new_handler(handler);
}

// The translator is per thread; the library keeps one for the process.
bool InstallFaultTranslator(FaultTranslator translator) {
    gTranslator = translator;
    _set_se_translator(TranslateFault);
    return true;
}

}  // namespace plat
