// DDumpStack: a trace, named, line by line into a sink.
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
            // The whole address, whatever the pointer width: at least 8 digits, as on the
            // 32-bit target.
            const uint64_t address = frames[i].address;
            char name[sizeof frames[i].name];
            memcpy(name, frames[i].name, sizeof name);
            const uint32_t offset = frames[i].offset;
            output->Printf("0x%08{uQ}x - %s + %lx\n", &address, name, offset);
        }
    } catch (...) {
        // Only a hardware fault goes on; anything else is dropped here.
        const MXExcept dropped = ConvertCurrentException();
        (void)dropped;
    }
}
