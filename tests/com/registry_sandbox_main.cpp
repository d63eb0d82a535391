// The main() of a test program whose tests all run in the registry sandbox.
#include "com/registry_sandbox.h"

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    int iExitStatus = 0;
    if (NQxTestSandbox::RunInSandbox(argc, argv, &iExitStatus)) return iExitStatus;
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
