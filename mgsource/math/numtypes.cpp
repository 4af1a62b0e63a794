// The tables of the number types.
#include "mg/math.h"

namespace {
int32_t gNumTypeSize[16] = {0, 1, 2, 4, 8, 1, 2, 4, 8, 4, 8, 10, 8, 16, 20, 0};
const int32_t kNumTypeClass[16] = {0x40, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 3, 3, 3, 0x40};
}  // namespace

extern "C" {

int32_t NumTypeSize(NumType type) {
    return gNumTypeSize[type & 15];
}
int32_t NumTypeClass(NumType type) {
    return kNumTypeClass[type & 15];
}

void SetExtendedSize(int32_t size) {
    gNumTypeSize[NumFX] = size;
    gNumTypeSize[NumCX] = 2 * size;
}

}  // extern "C"
