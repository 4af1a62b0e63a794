// TeeStringOutput: every call to two sinks, the first first.
#include "mg/stringoutput.h"

void TeeStringOutput::Open(int32_t mode) {
    if (first != nullptr) first->Open(mode);
    if (second != nullptr) second->Open(mode);
}

int32_t TeeStringOutput::Printf(const char* format, ...) {
    va_list args;
    va_start(args, format);
    const int32_t result = VPrintf(format, args);
    va_end(args);
    return result;
}

// Each sink reads the arguments from its own copy of the list.
int32_t TeeStringOutput::VPrintf(const char* format, va_list args) {
    int32_t result = 0;
    StringOutput* const outputs[] = {first, second};
    for (StringOutput* output : outputs) {
        if (output == nullptr) continue;
        va_list copy;
        va_copy(copy, args);
        result = output->VPrintf(format, copy);
        va_end(copy);
    }
    return result;
}
