// BinarySearch over a sorted array.
#include "mg/sort.h"

int32_t BinarySearch(const void* base, int32_t count, int32_t size, const void* key,
                     SortCompare compare) {
    if (base == nullptr || compare == nullptr || size <= 0) count = 0;
    const uint8_t* elements = static_cast<const uint8_t*>(base);
    int32_t low = 0;
    int32_t high = count - 1;
    int32_t mid = 0;
    int32_t last = 0;
    while (low <= high) {
        mid = static_cast<int32_t>((static_cast<uint32_t>(low) + static_cast<uint32_t>(high)) >> 1);
        last = compare(key, elements + static_cast<ptrdiff_t>(mid) * size);
        if (last == 0) return mid;
        if (last < 0) {
            high = mid - 1;
        } else {
            low = mid + 1;
        }
    }
    int32_t insertion = last > 0 ? mid + 1 : mid;
    return -insertion - 1;
}
