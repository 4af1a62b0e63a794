// Suites that work on handles include this: it starts the memory manager once per process.
#pragma once

#include <gtest/gtest.h>

#include "mg/memory.h"

namespace mgtest {

class MemoryEnvironment : public ::testing::Environment {
  public:
    void SetUp() override { ASSERT_EQ(InitMemoryManager(), MgNoError); }
};

// An inline variable: registered once however many files of a suite include this header.
inline const auto* const kMemoryEnvironment =
    ::testing::AddGlobalTestEnvironment(new MemoryEnvironment);

}  // namespace mgtest
