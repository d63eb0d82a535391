// Synchronisation, time and work queues against their plain peers, each
// pair measured in the same run: the timer against clock_gettime, an event
// round trip against a condition-variable ping-pong, the critical section
// against std::recursive_mutex, the work queue's per-item cost against raw
// dispatch_async_f, and 1080p slice work over the pool against one thread.
#include <qxbase/qxperftimer.h>
#include <qxbase/qxsync.h>
#include <qxbase/qxworkqueue.h>

#include "bench/qxbenchratios.h"

#include <dispatch/dispatch.h>

#include <time.h>

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr unsigned int kuiForever = 0xFFFFFFFFu;

// --- clocks ------------------------------------------------------------------------

void TimerGetTime(benchmark::State& io_rState)
{
    CQxPerfTimer* pTimer = CQxPerfTimer::GetTimerClass();
    for (auto _ : io_rState) benchmark::DoNotOptimize(pTimer->GetTime());
}

void ClockGettimeMonotonic(benchmark::State& io_rState)
{
    timespec sNow;
    for (auto _ : io_rState) {
        clock_gettime(CLOCK_MONOTONIC, &sNow);
        benchmark::DoNotOptimize(sNow);
    }
}

// --- round trips between two threads ---------------------------------------------

void EventRoundTrip(benchmark::State& io_rState)
{
    CQxEvent oPing(false), oPong(false);
    std::atomic<bool> bStop{false};
    std::thread oPartner([&] {
        for (;;) {
            oPing.Wait(kulQxInfinite);
            if (bStop.load()) return;
            oPong.Set();
        }
    });
    for (auto _ : io_rState) {
        oPing.Set();
        oPong.Wait(kulQxInfinite);
    }
    bStop = true;
    oPing.Set();
    oPartner.join();
}

void ConditionVariableRoundTrip(benchmark::State& io_rState)
{
    std::mutex oMutex;
    std::condition_variable oChanged;
    int iTurn = 0;  // 0: the benchmark thread, 1: the partner, 2: stop
    std::thread oPartner([&] {
        std::unique_lock<std::mutex> oLock(oMutex);
        for (;;) {
            oChanged.wait(oLock, [&] { return iTurn != 0; });
            if (iTurn == 2) return;
            iTurn = 0;
            oChanged.notify_all();
        }
    });
    for (auto _ : io_rState) {
        std::unique_lock<std::mutex> oLock(oMutex);
        iTurn = 1;
        oChanged.notify_all();
        oChanged.wait(oLock, [&] { return iTurn == 0; });
    }
    {
        std::lock_guard<std::mutex> oLock(oMutex);
        iTurn = 2;
        oChanged.notify_all();
    }
    oPartner.join();
}

// --- uncontended locks -----------------------------------------------------------------

void CriticalSectionUncontended(benchmark::State& io_rState)
{
    CQxCriticalSection oSection;
    for (auto _ : io_rState) {
        oSection.Wait(kulQxInfinite);
        oSection.Release();
    }
}

void RecursiveMutexUncontended(benchmark::State& io_rState)
{
    std::recursive_mutex oMutex;
    for (auto _ : io_rState) {
        oMutex.lock();
        oMutex.unlock();
    }
}

// --- tiny work items ----------------------------------------------------------------------

constexpr int kiBatch = 1000;

void WorkQueueTinyTasks(benchmark::State& io_rState)
{
    std::atomic<long> lDone{0};
    int iResult = 0;
    CQxConcurrentWorkQueue oQueue([&](void*) { lDone.fetch_add(1, std::memory_order_relaxed); }, iResult, "bench",
                                  4096);
    for (auto _ : io_rState) {
        for (int i = 0; i < kiBatch; ++i) oQueue.QueueTask(nullptr, kuiForever);
        oQueue.WaitForCompletion(kuiForever);
    }
    io_rState.SetItemsProcessed(io_rState.iterations() * kiBatch);
}

struct SRawBatch {
    std::atomic<long> lLeft{0};
    dispatch_semaphore_t pDone = dispatch_semaphore_create(0);
};

void RawItem(void* in_pBatch)
{
    SRawBatch* pBatch = static_cast<SRawBatch*>(in_pBatch);
    if (pBatch->lLeft.fetch_sub(1, std::memory_order_acq_rel) == 1) dispatch_semaphore_signal(pBatch->pDone);
}

void DispatchAsyncFTinyTasks(benchmark::State& io_rState)
{
    SRawBatch sBatch;
    dispatch_queue_t pQueue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0);
    for (auto _ : io_rState) {
        sBatch.lLeft.store(kiBatch);
        for (int i = 0; i < kiBatch; ++i) dispatch_async_f(pQueue, &sBatch, RawItem);
        dispatch_semaphore_wait(sBatch.pDone, DISPATCH_TIME_FOREVER);
    }
    dispatch_release(sBatch.pDone);
    io_rState.SetItemsProcessed(io_rState.iterations() * kiBatch);
}

// --- 1080p slices ----------------------------------------------------------------------------

// A YUYV frame turned into UYVY (swapping the bytes of each pair), cut into
// slices of lines as the buffer engine cuts its conversions.
constexpr int kiWidth = 1920, kiHeight = 1080, kiPitch = kiWidth * 2, kiSlices = 60;
constexpr int kiLinesPerSlice = kiHeight / kiSlices;

struct SFrame {
    std::vector<uint8_t> vecSource = std::vector<uint8_t>(static_cast<size_t>(kiPitch) * kiHeight);
    std::vector<uint8_t> vecDestination = std::vector<uint8_t>(static_cast<size_t>(kiPitch) * kiHeight);
    SFrame()
    {
        for (size_t i = 0; i < vecSource.size(); ++i) vecSource[i] = static_cast<uint8_t>(i * 7 + 3);
    }
    void ConvertSlice(int in_iSlice)
    {
        const size_t uiFirst = static_cast<size_t>(in_iSlice) * kiLinesPerSlice * kiPitch;
        const size_t uiEnd = uiFirst + static_cast<size_t>(kiLinesPerSlice) * kiPitch;
        const uint8_t* pSource = vecSource.data();
        uint8_t* pDestination = vecDestination.data();
        for (size_t i = uiFirst; i < uiEnd; i += 2) {
            pDestination[i] = pSource[i + 1];
            pDestination[i + 1] = pSource[i];
        }
    }
};

void SlicesOneThread(benchmark::State& io_rState)
{
    SFrame sFrame;
    for (auto _ : io_rState) {
        for (int i = 0; i < kiSlices; ++i) sFrame.ConvertSlice(i);
        benchmark::ClobberMemory();
    }
    io_rState.SetBytesProcessed(io_rState.iterations() * 2 * kiPitch * kiHeight);
}

struct SSliceItem {
    SFrame* pFrame;
    int iSlice;
};

void SlicesWorkQueue(benchmark::State& io_rState)
{
    SFrame sFrame;
    std::vector<SSliceItem> vecItems;
    for (int i = 0; i < kiSlices; ++i) vecItems.push_back({&sFrame, i});
    int iResult = 0;
    CQxConcurrentWorkQueue oQueue(
        [](void* pItem) {
            SSliceItem* pSlice = static_cast<SSliceItem*>(pItem);
            pSlice->pFrame->ConvertSlice(pSlice->iSlice);
        },
        iResult, "slices", 260);
    for (auto _ : io_rState) {
        for (SSliceItem& sItem : vecItems) oQueue.QueueTask(&sItem, kuiForever);
        oQueue.WaitForCompletion(kuiForever);
        benchmark::ClobberMemory();
    }
    io_rState.SetBytesProcessed(io_rState.iterations() * 2 * kiPitch * kiHeight);
}

void ApplySlice(void* in_pFrame, size_t in_uiSlice)
{
    static_cast<SFrame*>(in_pFrame)->ConvertSlice(static_cast<int>(in_uiSlice));
}

void SlicesDispatchApply(benchmark::State& io_rState)
{
    SFrame sFrame;
    dispatch_queue_t pQueue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0);
    for (auto _ : io_rState) {
        dispatch_apply_f(kiSlices, pQueue, &sFrame, ApplySlice);
        benchmark::ClobberMemory();
    }
    io_rState.SetBytesProcessed(io_rState.iterations() * 2 * kiPitch * kiHeight);
}

}  // namespace

int main(int argc, char** argv)
{
    CQxBenchRatios oReporter;
    // Calibrate the timer before anything is measured.
    CQxPerfTimer::GetTimerClass();
    benchmark::RegisterBenchmark("PerfTimer::GetTime", TimerGetTime);
    benchmark::RegisterBenchmark("clock_gettime(MONOTONIC)", ClockGettimeMonotonic);
    benchmark::RegisterBenchmark("CQxEvent round trip", EventRoundTrip)->UseRealTime();
    benchmark::RegisterBenchmark("condition_variable round trip", ConditionVariableRoundTrip)->UseRealTime();
    benchmark::RegisterBenchmark("CQxCriticalSection Wait+Release", CriticalSectionUncontended);
    benchmark::RegisterBenchmark("recursive_mutex lock+unlock", RecursiveMutexUncontended);
    benchmark::RegisterBenchmark("work queue 1000 tiny items", WorkQueueTinyTasks)->UseRealTime();
    benchmark::RegisterBenchmark("dispatch_async_f 1000 tiny items", DispatchAsyncFTinyTasks)->UseRealTime();
    benchmark::RegisterBenchmark("1080p slices, one thread", SlicesOneThread)->UseRealTime();
    benchmark::RegisterBenchmark("1080p slices, work queue", SlicesWorkQueue)->UseRealTime();
    benchmark::RegisterBenchmark("1080p slices, dispatch_apply_f", SlicesDispatchApply)->UseRealTime();
    oReporter.Compare("PerfTimer::GetTime", "clock_gettime(MONOTONIC)", "(below 1: the timer is cheaper)");
    oReporter.Compare("CQxEvent round trip/real_time", "condition_variable round trip/real_time", "");
    oReporter.Compare("CQxCriticalSection Wait+Release", "recursive_mutex lock+unlock", "");
    oReporter.Compare("work queue 1000 tiny items/real_time", "dispatch_async_f 1000 tiny items/real_time",
                      "(the wrapper's cost per item)");
    oReporter.Compare("1080p slices, work queue/real_time", "1080p slices, one thread/real_time",
                      "(below 1: faster than one thread)");
    oReporter.Compare("1080p slices, work queue/real_time", "1080p slices, dispatch_apply_f/real_time", "");
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks(&oReporter);
    benchmark::Shutdown();
    return 0;
}
