#include "support/TestFiles.h"

#include <gtest/gtest.h>

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    zelvar::test::SandboxEnvironment const sandbox;
    return RUN_ALL_TESTS();
}
