// Instance creation always reads the registry at a fixed path under /opt.
// Tests that exercise it run inside a private mount namespace in which /opt
// is an overlay whose changes land in a temporary folder: the real /opt is
// never written, and the overlay vanishes with the test process.
#ifndef QXBASE_TESTS_REGISTRY_SANDBOX_H
#define QXBASE_TESTS_REGISTRY_SANDBOX_H

#include <string>

namespace NQxTestSandbox {

// Call first in main(). Outside the sandbox it runs this same program again
// inside one (through unshare(1)), waits, cleans up and returns true with
// the program's exit status in *out_iExitStatus: main returns that. Inside,
// or where no sandbox can be made, it returns false and main runs the tests.
bool RunInSandbox(int argc, char** argv, int* out_iExitStatus);

// Whether the fixed registry folder is writable in this process; else why.
bool Active();
const std::string& UnavailableReason();

// Writes the fixed registry file with the given bytes (creating it).
void WriteRegistry(const std::string& in_strBytes);
// Removes the fixed registry file, or puts a directory in its place.
void RemoveRegistry();
void MakeRegistryADirectory();

}  // namespace NQxTestSandbox

// Skips the current test, with the reason, when there is no sandbox.
#define QX_REQUIRE_REGISTRY_SANDBOX()                                                     \
    do {                                                                                  \
        if (!NQxTestSandbox::Active())                                                    \
            GTEST_SKIP() << "no private mount namespace for the registry under /opt: "    \
                         << NQxTestSandbox::UnavailableReason();                          \
    } while (0)

#endif  // QXBASE_TESTS_REGISTRY_SANDBOX_H
