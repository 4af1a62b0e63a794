// Shared set-up of the memory suites: the manager starts once per process.
#pragma once

#include <gtest/gtest.h>

#include "memory/zone.h"
#include "mg/memory.h"
#include "platform/faults.h"
#include "support/memory_env.h"

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
