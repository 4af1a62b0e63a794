#include "memory_env.h"

namespace {

class MemoryEnvironment : public ::testing::Environment {
  public:
    void SetUp() override { ASSERT_EQ(InitMemoryManager(), MgNoError); }
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new MemoryEnvironment);

}  // namespace
