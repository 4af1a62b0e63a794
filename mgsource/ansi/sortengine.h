// The quicksort shared by SortArrayStride and SortArrayContext. Each instantiation has its own
// partition and three-element helpers, with the comparison and the exchanger inlined.
//
// The order of comparisons and exchanges is part of the contract (callers may observe it
// through their comparison), so the steps below are kept exactly:
//  - ranges of two and three elements are finished without partitioning;
//  - the pivot is the median of first, middle and last, parked at the next-to-last place;
//  - the smaller side is sorted at once (with the pivot kept in it) and the larger one waits
//    on a stack of 63 ranges; a range that finds the stack full is dropped unsorted.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "ansi/swappers.h"

namespace mgsort {

constexpr int kStackEntries = 126;  // addresses: 63 ranges of lo and hi

template <class Compare, class Swap>
class Engine {
  public:
    Engine(ptrdiff_t stride, Compare compare, Swap swap)
        : stride_(stride), compare_(compare), swap_(swap) {}

    void Sort(uint8_t* base, int32_t count) {
        if (count < 2) return;
        uint8_t* lo = base;
        uint8_t* hi = base + static_cast<ptrdiff_t>(count - 1) * stride_;
        uint8_t* stack[kStackEntries];
        int top = 0;
        for (;;) {
            if (hi > lo) {
                ptrdiff_t span = hi - lo;
                if (span == stride_) {
                    if (compare_(lo, hi) > 0) swap_(lo, hi);
                } else if (span == 2 * stride_) {
                    SortThree(lo, hi);
                } else {
                    uint8_t* p = Partition(lo, hi);
                    ptrdiff_t left = p - lo;
                    ptrdiff_t right = hi - p;
                    if (left <= right) {
                        if (right != stride_ && top < kStackEntries) {
                            stack[top++] = p + stride_;
                            stack[top++] = hi;
                        }
                        hi = p;
                    } else {
                        if (left != stride_ && top < kStackEntries) {
                            stack[top++] = lo;
                            stack[top++] = p - stride_;
                        }
                        lo = p;
                    }
                    continue;
                }
            }
            // This range is done.
            if (top < 2) return;
            hi = stack[--top];
            lo = stack[--top];
        }
    }

  private:
    // Orders first, middle and last; returns the middle.
    uint8_t* SortThree(uint8_t* lo, uint8_t* hi) {
        uint8_t* mid = lo + (((hi - lo) / stride_) >> 1) * stride_;
        if (compare_(lo, mid) > 0) swap_(lo, mid);
        if (compare_(lo, hi) > 0) swap_(lo, hi);
        if (compare_(mid, hi) > 0) swap_(mid, hi);
        return mid;
    }

    uint8_t* Partition(uint8_t* lo, uint8_t* hi) {
        if (hi <= lo) return lo;
        uint8_t* pivot = SortThree(lo, hi);
        hi -= stride_;
        if (pivot != hi) {
            swap_(pivot, hi);
            pivot = hi;
        }
        // The samples bound both scans: lo holds no more than the pivot, and the scan of i
        // stops at the pivot's place at the latest.
        uint8_t* i = lo;
        uint8_t* j = pivot;
        for (;;) {
            do {
                i += stride_;
            } while (i < pivot && compare_(i, pivot) < 0);
            do {
                j -= stride_;
            } while (j > lo && compare_(j, pivot) > 0);
            if (i >= j) break;
            swap_(i, j);
        }
        if (i != pivot) swap_(pivot, i);
        return i;
    }

    ptrdiff_t stride_;
    Compare compare_;
    Swap swap_;
};

// Picks the exchanger once from the element size and runs the sort: odd sizes go by bytes,
// sizes of 2 mod 4 by 16-bit units, multiples of 4 by 32-bit units.
template <class Compare>
void SortWithSwapper(uint8_t* base, int32_t count, int32_t swapSize, int32_t stride,
                     Compare compare) {
    if (count < 2 || base == nullptr || stride <= 0 || swapSize < 0) return;
    if (swapSize == 4) {
        Engine<Compare, FixedSwap<4>>(stride, compare, FixedSwap<4>{}).Sort(base, count);
    } else if (swapSize == 8) {
        Engine<Compare, FixedSwap<8>>(stride, compare, FixedSwap<8>{}).Sort(base, count);
    } else if (swapSize & 1) {
        Engine<Compare, UnitSwap<uint8_t>>(stride, compare, UnitSwap<uint8_t>{swapSize})
            .Sort(base, count);
    } else if (swapSize & 2) {
        Engine<Compare, UnitSwap<uint16_t>>(stride, compare, UnitSwap<uint16_t>{swapSize})
            .Sort(base, count);
    } else {
        Engine<Compare, UnitSwap<uint32_t>>(stride, compare, UnitSwap<uint32_t>{swapSize})
            .Sort(base, count);
    }
}

}  // namespace mgsort
