// DDumpStack: a trace, named, line by line into a sink.
#include <stdio.h>
#include <string.h>

#include "mg/mxexcept.h"
#include "mg/stackwalk.h"
#include "mg/stringoutput.h"

void DDumpStack(const StackTrace* trace, StringOutput* output) {
    if (trace == nullptr || output == nullptr) return;
    try {
        std::unique_ptr<StackDecoder> decoder = trace->MakeDecoder();
        decoder->SetMode(2);
        const FixedList<DecodedFrame> frames = decoder->Decode();
        for (int32_t i = 0; i < frames.Length(); ++i) {
            // The whole address, whatever the pointer width: the engine's %x has 32 bits.
            // At least 8 upper-case digits, as the engine gives them on the 32-bit target.
            char address[24];
            snprintf(address, sizeof address, "%08llX",
                     static_cast<unsigned long long>(frames[i].address));
            char name[sizeof frames[i].name];
            memcpy(name, frames[i].name, sizeof name);
            const uint32_t offset = frames[i].offset;
            output->Printf("0x%s - %s + %lx\n", address, name, offset);
        }
    } catch (...) {
        // Only a hardware fault goes on; anything else is dropped here.
        const MXExcept dropped = ConvertCurrentException();
        (void)dropped;
    }
}
