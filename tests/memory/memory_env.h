// Shared set-up of the memory suites: the manager starts once per process.
#pragma once

#include <gtest/gtest.h>

#include "memory/zone.h"
#include "mg/memory.h"
#include "platform/faults.h"
#include "support/handles.h"

// Counter deltas of one zone across a test step.
struct CounterDelta {
    explicit CounterDelta(bool compact) : compact_(compact) { Read(&start_); }
    MemZoneCounterSet Now() const {
        MemZoneCounterSet now;
        Read(&now);
        return {now.handleAllocs - start_.handleAllocs, now.ptrAllocs - start_.ptrAllocs,
                now.resizes - start_.resizes, now.moves - start_.moves};
    }

  private:
    void Read(MemZoneCounterSet* out) const {
        compact_ ? CompactZoneCounters(out) : MemZoneCounters(out);
    }
    bool compact_;
    MemZoneCounterSet start_;
};

// The operations both zones share, so that a test can run once per zone.
struct Zone {
    const char* name;
    bool compact;
    int32_t header;
    Handle (*newHandle)(int32_t);
    Handle (*newClear)(int32_t);
    MgStatus (*dispose)(Handle);
    int32_t (*size)(Handle);
    MgStatus (*resize)(Handle, int32_t);
    MgStatus (*resizeClear)(Handle, int32_t);
    MgStatus (*check)(Handle);
    Handle (*resizing)();
    MgStatus (*copy)(Handle*, Handle);
    MgStatus (*setBytes)(Handle*, const void*, int32_t);
    MgStatus (*appendHandle)(Handle, Handle);
    MgStatus (*appendBytes)(const void*, Handle, int32_t);
    MgStatus (*duplicate)(Handle*);
    MgStatus (*fromBytes)(const void*, Handle*, int32_t);
};

inline const Zone kZones[] = {
    {"main", false, 16, MemNewHandle, MemNewHandleClear, MemDisposeHandle, MemHandleSize,
     MemResizeHandle, MemResizeHandleClear, MemCheckHandle, MemResizingHandle, MemCopyHandle,
     MemSetHandleBytes, MemAppendHandle, MemAppendBytes, MemDuplicateHandle, MemHandleFromBytes},
    {"compact", true, 8, CompactNewHandle, CompactNewHandleClear, CompactDisposeHandle,
     CompactHandleSize, CompactResizeHandle, CompactResizeHandleClear, CompactCheckHandle,
     CompactResizingHandle, CompactCopyHandle, CompactSetHandleBytes, CompactAppendHandle,
     CompactAppendBytes, CompactDuplicateHandle, CompactHandleFromBytes},
};

// Leaves no fault armed and no out-of-memory record behind.
class MemoryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        plat::ResetFaults();
        MemClearOutOfMemory();
        MemSetGrowCallback(nullptr);
    }
    void TearDown() override { SetUp(); }
};
