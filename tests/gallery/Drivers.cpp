#include "support/RealDrivers.h"

#include <gtest/gtest.h>

namespace zelvar {
namespace {

/// Pages that read files do so with the drivers in this process.
class Drivers : public testing::Environment {
    void SetUp() override { test::UseRealDrivers(); }
};

testing::Environment *const g_drivers = testing::AddGlobalTestEnvironment(new Drivers);

} // namespace
} // namespace zelvar
