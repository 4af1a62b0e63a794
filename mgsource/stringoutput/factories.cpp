// The factories of sinks and names: each gives a new object, or null.
#include <new>

#include "mg/mxexcept.h"
#include "mg/stringoutput.h"

StringOutput* MakeConsoleOutput() {
    return new (std::nothrow) ConsoleStringOutput;
}

StringOutput* MakeDebuggerOutput() {
    return new (std::nothrow) DebuggerStringOutput;
}

StringOutput* MakeFileOutput(const OutputName* name) {
    return new (std::nothrow) FileStringOutput(name);
}

OutputName* MakeOutputName(int32_t kind, const char* inFilename, uint8_t addSuffix) {
    try {
        return new (std::nothrow) OutputFileName(kind, inFilename, addSuffix);
    } catch (...) {
        const MXExcept dropped = ConvertCurrentException();
        (void)dropped;
        return nullptr;
    }
}
