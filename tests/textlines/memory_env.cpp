// Every suite here works on handles: start the memory manager once for the process.
#include <gtest/gtest.h>

#include "mg/memory.h"

namespace {

class MemoryEnvironment : public ::testing::Environment {
  public:
    void SetUp() override { ASSERT_EQ(InitMemoryManager(), MgNoError); }
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new MemoryEnvironment);

}  // namespace
