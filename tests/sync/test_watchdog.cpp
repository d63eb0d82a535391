// The watchdog of the stress programs: a deadlocked test must end the
// program with the stacks of its threads, not hang the run.
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

namespace {

// Never inlined, so that its name shows in the printed stacks.
__attribute__((noinline)) void QxWatchdogProbeBlockedForever(std::mutex& io_oHeld)
{
    io_oHeld.lock();
}

TEST(WatchdogDeathTest, ADeadlockEndsTheProgramWithEveryThreadsStack)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            qxWatchdogSetBudget(1);
            std::mutex oHeld;
            oHeld.lock();
            std::thread oBlocked([&] { QxWatchdogProbeBlockedForever(oHeld); });
            oBlocked.join();
        },
        "watchdog: test WatchdogDeathTest.ADeadlockEndsTheProgramWithEveryThreadsStack overran its time "
        "budget(.|\n)*QxWatchdogProbeBlockedForever(.|\n)*watchdog: aborting");
}

}  // namespace
