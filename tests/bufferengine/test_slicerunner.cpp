// The slice runner of the buffer services: every slice of a request runs
// exactly once, whatever thread takes it, and a request returns only when
// all of them have run, with their results visible to the caller; the pool
// threads do take part.
#include "bufferengine/qxcslicerunner.h"

#include <gtest/gtest.h>

#include <pthread.h>

#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

// Slices that spin a little (more for some slices than for others) and
// note, in plain memory, how often they ran and on which thread.
struct SWork {
    std::vector<uint32_t> vuiRuns;
    std::vector<pthread_t> vThreads;
    std::chrono::microseconds duration{0};

    void Reset(uint32_t in_uiSlices, std::chrono::microseconds in_duration)
    {
        vuiRuns.assign(in_uiSlices, 0);
        vThreads.assign(in_uiSlices, pthread_t());
        duration = in_duration;
    }
    static void Slice(void* in_pWork, uint32_t in_uiSlice)
    {
        SWork& r = *static_cast<SWork*>(in_pWork);
        const auto tEnd = std::chrono::steady_clock::now() + r.duration * (1 + in_uiSlice % 3);
        while (std::chrono::steady_clock::now() < tEnd) {
        }
        ++r.vuiRuns[in_uiSlice];
        r.vThreads[in_uiSlice] = pthread_self();
    }
};

TEST(SliceRunner, EverySliceRunsOnceAndIsDoneWhenRunReturns)
{
    CQxcSliceRunner oRunner("test");
    SWork sWork;
    for (uint32_t uiSlices : {0u, 1u, 2u, 3u, 17u, 67u, 261u}) {
        for (int iRun = 0; iRun < 20; ++iRun) {
            sWork.Reset(uiSlices, std::chrono::microseconds(iRun % 4 == 0 ? 20 : 0));
            oRunner.Run(uiSlices, &SWork::Slice, &sWork);
            for (uint32_t i = 0; i < uiSlices; ++i)
                ASSERT_EQ(1u, sWork.vuiRuns[i]) << "slice " << i << " of " << uiSlices << ", run " << iRun;
        }
    }
}

TEST(SliceRunner, OneSliceRunsOnTheCallingThread)
{
    CQxcSliceRunner oRunner("test");
    SWork sWork;
    for (int iRun = 0; iRun < 10; ++iRun) {
        sWork.Reset(1, std::chrono::microseconds(50));
        oRunner.Run(1, &SWork::Slice, &sWork);
        ASSERT_TRUE(pthread_equal(pthread_self(), sWork.vThreads[0]));
    }
}

TEST(SliceRunner, PoolThreadsTakeSlicesBesideTheCallingThread)
{
    CQxcSliceRunner oRunner("test");
    if (oRunner.GetHelperCount() == 0) GTEST_SKIP() << "one processor: the calling thread works alone";
    SWork sWork;
    // Slices long enough (some milliseconds a request) for a pool thread to
    // wake up and join; on a loaded machine it may miss some requests, not
    // all of them.
    bool bHelped = false;
    for (int iRun = 0; iRun < 50 && !bHelped; ++iRun) {
        sWork.Reset(40, std::chrono::microseconds(100));
        oRunner.Run(40, &SWork::Slice, &sWork);
        for (pthread_t t : sWork.vThreads) bHelped = bHelped || !pthread_equal(t, pthread_self());
    }
    EXPECT_TRUE(bHelped) << "no slice ever ran on a pool thread";
}

}  // namespace
