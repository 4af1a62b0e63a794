// The positional parameter table of the format engine: the first pass records each
// position's type, then the arguments are copied into the slots in slot order.
#include <stdarg.h>

#include "mg/dbgtools.h"
#include "support/formatengine.h"

MG_SOURCE_IDENTITY("mgsource\\support\\formatparams.cpp", "$Revision: 1 $");

namespace mgformat {

bool ParamRecordType(ParamSlot* slots, int32_t index, int32_t type) {
    if (index < 0 || index >= kSlotCount) {
        DPrintf("Positional parameter %ld out of range", index);
        return false;
    }
    ParamSlot& slot = slots[index];
    if (slot.type != kSlotFree && slot.type != type) {
        DPrintf("Parameter %ld type info [%ld] redefined (was [%ld])", index, type, slot.type);
        return false;
    }
    slot.type = type;
    return true;
}

bool ParamBindArguments(ParamSlot* slots, va_list args) {
    va_list walk;
    va_copy(walk, args);
    int32_t i = 0;
    bool ok = true;
    for (; ok && i < kSlotCount && slots[i].type != kSlotFree; ++i) {
        ParamSlot& slot = slots[i];
        switch (slot.type) {
            case kSlotPoint:
            case kSlotInt:
            case kSlotCell:
            case kSlotLong:
                slot.value.i = va_arg(walk, int);
                break;
            case kSlotPointer:
                slot.value.p = va_arg(walk, const void*);
                break;
            case kSlotDouble:
                slot.value.d = va_arg(walk, double);
                break;
            default:
                MG_FAIL();
                ok = false;
                break;
        }
    }
    va_end(walk);
    if (!ok) return false;
    for (; i < kSlotCount; ++i) {
        if (slots[i].type != kSlotFree) {
            DPrintf("Not all parameters between 1 and %ld specified", i);
            return false;
        }
    }
    return true;
}

}  // namespace mgformat
