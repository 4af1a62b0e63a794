// Decoding: each address becomes "module symbol" and an offset, through the symbol library.
#include <stdio.h>
#include <string.h>

#include "mg/stackwalk.h"
#include "stackwalk/symbolcache.h"

namespace {

const char kUnknown[] = "<unknown>";

}  // namespace

AddressListDecoder::AddressListDecoder(const StackAddress* list, int32_t count) : addresses(count) {
    for (int32_t i = 0; i < count; ++i) addresses.Append(list[i]);
}

FixedList<DecodedFrame> AddressListDecoder::Decode() {
    FixedList<DecodedFrame> frames(addresses.Length());
    for (int32_t i = 0; i < addresses.Length(); ++i) {
        DecodedFrame frame = {};
        char name[sizeof frame.name];
        uint32_t offset = 0;
        if (!LookUp(addresses[i], name, sizeof name, &offset)) continue;
        frame.address = addresses[i];
        memcpy(frame.name, name, sizeof name);
        frame.offset = offset;
        frames.Append(frame);
    }
    return frames;
}

bool StackDecoder::LookUp(StackAddress address, char* name, int32_t nameSize, uint32_t* offset) {
    plat::SymbolLibrary* library = CachedSymbolLibrary(mode);
    char module[64];
    char symbol[81];  // the symbol library's longest name, 80
    if (library == nullptr || !plat::AddressModuleName(library, address, module, sizeof module))
        strcpy(module, kUnknown);
    *offset = 0;
    if (library == nullptr ||
        !plat::AddressSymbolName(library, address, symbol, sizeof symbol, offset))
        strcpy(symbol, kUnknown);
    snprintf(name, static_cast<size_t>(nameSize), "%s %s", module, symbol);
    name[nameSize - 1] = 0;
    return true;
}
