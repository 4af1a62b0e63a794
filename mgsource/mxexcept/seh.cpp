// SEH_Exception and its translator: a hardware fault as a C++ exception, where the runtime
// can throw from a fault.
#include "mg/mxexcept.h"
#include "platform/platform.h"

namespace {

void TranslateFault(uint32_t code, const plat::FaultRecord* record) {
    SEHFaultInfo info = {};
    if (record != nullptr) info = {record->complete, record->framePointer, record->address};
    SEHTranslator(code, record != nullptr ? &info : nullptr);
}

}  // namespace

ExceptStackTrace& SEH_Exception::GetStackTrace() {
    return stack;
}
const ExceptStackTrace& SEH_Exception::GetStackTrace() const {
    return stack;
}

void SEHTranslator(uint32_t code, const SEHFaultInfo* fault) {
    SEH_Exception exception(code);
    // The fault's address comes first, then the faulting code's callers.
    if (fault != nullptr && fault->complete)
        exception.GetStackTrace().CaptureFrom(fault->framePointer, fault->address, 0);
    throw exception;
}

int32_t InstallSEHTranslator() {
    return plat::InstallFaultTranslator(TranslateFault) ? 1 : 0;
}
