#include <gtest/gtest.h>

#include "mg/memory.h"

namespace {

// The memory manager starts once per process; every path lives in its handles.
class PathEnvironment : public ::testing::Environment {
public:
    void SetUp() override { ASSERT_EQ(InitMemoryManager(), MgNoError); }
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new PathEnvironment);

}  // namespace
