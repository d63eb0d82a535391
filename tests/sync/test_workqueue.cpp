// Work queues on libdispatch: construction results, admission bound and
// time-outs, completion waits, throwing tasks, destruction, priorities (with
// a fake thread-pool manager handed in through a subclass), and the bound
// under several producers.
#include <qxbase/qxregistry.h>
#include <qxbase/qxworkqueue.h>

#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <dispatch/dispatch.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;
constexpr unsigned int kuiForever = 0xFFFFFFFFu;

// Items that block until the test opens their gate.
struct SBlockingItems {
    CQxTestGate oGate;
    std::atomic<int> iStarted{0}, iFinished{0};
    std::function<void(void*)> Task()
    {
        return [this](void*) {
            ++iStarted;
            oGate.WaitOpen(milliseconds(20000));
            ++iFinished;
        };
    }
};

bool ManagerRegistered()
{
    char szPath[QX_MAX_PATH];
    return GetDllPath(CLSID_QxThreadPoolManager, szPath);
}

TEST(WorkQueueConstruction, WithoutAManagerTheQueueStillRuns)
{
    if (ManagerRegistered()) GTEST_SKIP() << "a thread-pool manager is registered on this machine";
    std::atomic<int> iRan{0};
    int iResult = 0;
    CQxConcurrentWorkQueue oQueue([&](void*) { ++iRan; }, iResult, "no manager", 4);
    // The manager's creation status is reported, and is a failure.
    EXPECT_LT(iResult, 0);
    EXPECT_NE(QX_E_INVALID_POINTER, iResult);
    EXPECT_EQ(S_OK, oQueue.WaitForCompletion(0));
    for (int i = 0; i < 10; ++i) EXPECT_EQ(S_OK, oQueue.QueueTask(nullptr, kuiForever));
    EXPECT_EQ(S_OK, oQueue.WaitForCompletion(kuiForever));
    EXPECT_EQ(10, iRan.load());
}

TEST(WorkQueueConstruction, AnEmptyTaskFunctionIsReportedAndRefused)
{
    int iResult = 0;
    CQxConcurrentWorkQueue oQueue(std::function<void(void*)>(), iResult, "empty", 4);
    // The manager is not even asked for: the first failure stays.
    EXPECT_EQ(QX_E_INVALID_POINTER, iResult);
    EXPECT_EQ(QX_E_NOT_INITIALIZED, oQueue.QueueTask(nullptr, 0));
    EXPECT_EQ(S_OK, oQueue.WaitForCompletion(0));
}

TEST(WorkQueueAdmission, AFullQueueRefusesUntilAnItemFinishes)
{
    SBlockingItems oItems;
    int iResult = 0;
    CQxConcurrentWorkQueue oQueue(oItems.Task(), iResult, "cap 2", 2);
    EXPECT_EQ(S_OK, oQueue.QueueTask(nullptr, 0));
    EXPECT_EQ(S_OK, oQueue.QueueTask(nullptr, 0));
    EXPECT_EQ(QX_E_TIMEOUT, oQueue.QueueTask(nullptr, 0));
    double dStart = qxTestNow();
    EXPECT_EQ(QX_E_TIMEOUT, oQueue.QueueTask(nullptr, 30));
    EXPECT_GE(qxTestNow() - dStart, 0.030 - 2e-6);
    dStart = qxTestNow();
    EXPECT_EQ(QX_E_TIMEOUT, oQueue.WaitForCompletion(20));
    EXPECT_GE(qxTestNow() - dStart, 0.020 - 2e-6);
    oItems.oGate.Open();
    // Room comes back as items finish.
    EXPECT_EQ(S_OK, oQueue.QueueTask(nullptr, 10000));
    EXPECT_EQ(S_OK, oQueue.WaitForCompletion(10000));
    EXPECT_EQ(3, oItems.iFinished.load());
}

// A task that throws is not counted as finished: the wait times out, while
// the other items run on.
TEST(WorkQueueCompletion, AThrowingTaskStaysCounted)
{
    std::atomic<int> iRan{0};
    int iResult = 0;
    int iThrow = 1, iFine = 0;
    CQxConcurrentWorkQueueLinux oQueue(
        [&](void* pItem) {
            // The item is read before the count that the test waits for, so
            // that the read is over once the test sees the count.
            const bool bThrow = *static_cast<int*>(pItem) != 0;
            ++iRan;
            if (bThrow) throw std::runtime_error("task failure");
        },
        iResult, "throwing", 8);
    EXPECT_EQ(S_OK, oQueue.QueueTask(&iFine, kuiForever));
    EXPECT_EQ(S_OK, oQueue.QueueTask(&iThrow, kuiForever));
    EXPECT_EQ(S_OK, oQueue.QueueTask(&iFine, kuiForever));
    double dDeadline = qxTestNow() + 20;
    while (iRan.load() < 3 && qxTestNow() < dDeadline) std::this_thread::yield();
    ASSERT_EQ(3, iRan.load());
    EXPECT_EQ(QX_E_TIMEOUT, oQueue.WaitForCompletion(50));
    // The owner settles the failed item itself; then the queue is idle and
    // its destruction returns.
    oQueue._RemoveTask();
    EXPECT_EQ(S_OK, oQueue.WaitForCompletion(10000));
}

TEST(WorkQueueCompletion, DestroyingAQueueWaitsForItsItems)
{
    constexpr int kiItems = 12;
    std::atomic<int> iFinished{0};
    {
        int iResult = 0;
        CQxConcurrentWorkQueue oQueue(
            [&](void*) {
                std::this_thread::sleep_for(milliseconds(10));
                ++iFinished;
            },
            iResult, "destroyed busy", 16);
        for (int i = 0; i < kiItems; ++i) ASSERT_EQ(S_OK, oQueue.QueueTask(nullptr, kuiForever));
    }
    EXPECT_EQ(kiItems, iFinished.load());
}

// A fake manager that answers a priority chosen by the test and counts how
// often it is asked and released.
class CFakeManager : public IQxThreadPoolManager {
public:
    HRESULT QueryInterface(const GUID&, void**) override { return E_NOINTERFACE; }
    uint32_t AddRef() override { return static_cast<uint32_t>(++m_iReferences); }
    uint32_t Release() override { return static_cast<uint32_t>(--m_iReferences); }
    HRESULT SetRelativePriority(EQxThreadPoolRelativePriority in_ePriority) override
    {
        m_iPriority = in_ePriority;
        return S_OK;
    }
    HRESULT SetMaximumThreadCount(uint32_t) override { return E_NOTIMPL; }
    HRESULT GetMaximumThreadCount(uint32_t*) override { return E_NOTIMPL; }
    EQxThreadPoolRelativePriority GetRelativePriority() override
    {
        ++m_iQueries;
        return static_cast<EQxThreadPoolRelativePriority>(m_iPriority.load());
    }

    std::atomic<int> m_iReferences{1};
    std::atomic<int> m_iPriority{keQxThreadPoolRelativePriorityNormal};
    std::atomic<int> m_iQueries{0};
};

// The queue with the manager handed in after construction, as a module that
// wants a fixed policy would do through its own subclass.
class CManagedQueue : public CQxConcurrentWorkQueueLinux {
public:
    CManagedQueue(std::function<void(void*)> in_fnTask, int& io_iResult)
        : CQxConcurrentWorkQueueLinux(std::move(in_fnTask), io_iResult, "managed", 4)
    {
    }
    // Items in flight make virtual calls on the queue: wait for them before
    // this class's part of the object goes.
    ~CManagedQueue() override { WaitForCompletion(kuiForever); }
    void UseManager(IQxThreadPoolManager* in_pManager)
    {
        if (m_pThreadPoolManager) m_pThreadPoolManager->Release();
        m_pThreadPoolManager = in_pManager;
    }
    int32_t StoredPriority() const { return m_i32Priority.load(); }
};

std::string LabelOf(long in_lDispatchPriority)
{
    return dispatch_queue_get_label(dispatch_get_global_queue(in_lDispatchPriority, 0));
}

// The label of the queue that ran the next item.
std::string RunOneAndGetLabel(CQxConcurrentWorkQueueLinux& io_oQueue, std::string* io_pstrLabel)
{
    EXPECT_EQ(S_OK, io_oQueue.QueueTask(io_pstrLabel, kuiForever));
    EXPECT_EQ(S_OK, io_oQueue.WaitForCompletion(kuiForever));
    return *io_pstrLabel;
}

TEST(WorkQueuePriority, RelativePrioritiesMapToTheThreeGlobalQueues)
{
    int iResult = 0;
    std::string strLabel;
    CManagedQueue oQueue([](void* pItem) { *static_cast<std::string*>(pItem) = dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL); },
                         iResult);
    EXPECT_EQ(-2, oQueue._GetDispatchQueuePriority(keQxThreadPoolRelativePriorityBelowNormal));
    EXPECT_EQ(0, oQueue._GetDispatchQueuePriority(keQxThreadPoolRelativePriorityNormal));
    EXPECT_EQ(2, oQueue._GetDispatchQueuePriority(keQxThreadPoolRelativePriorityAboveNormal));
    EXPECT_EQ(0, oQueue._GetDispatchQueuePriority(keQxThreadPoolRelativePriorityInvalid));
    EXPECT_EQ(0, oQueue._GetDispatchQueuePriority(static_cast<EQxThreadPoolRelativePriority>(99)));
    const std::string strLow = LabelOf(DISPATCH_QUEUE_PRIORITY_LOW);
    const std::string strDefault = LabelOf(DISPATCH_QUEUE_PRIORITY_DEFAULT);
    const std::string strHigh = LabelOf(DISPATCH_QUEUE_PRIORITY_HIGH);
    ASSERT_NE(strLow, strDefault);
    ASSERT_NE(strHigh, strDefault);

    if (!ManagerRegistered()) {
        // No manager: the stored priority 2 is used.
        EXPECT_EQ(keQxThreadPoolRelativePriorityNormal, oQueue.StoredPriority());
        EXPECT_EQ(strDefault, RunOneAndGetLabel(oQueue, &strLabel));
    }

    CFakeManager oManager;
    oQueue.UseManager(&oManager);
    const struct {
        int iPriority;
        std::string strExpected;
    } asCases[] = {{1, strLow}, {3, strHigh}, {2, strDefault}, {7, strDefault}, {1, strLow}};
    for (const auto& sCase : asCases) {
        oManager.m_iPriority = sCase.iPriority;
        EXPECT_EQ(sCase.strExpected, RunOneAndGetLabel(oQueue, &strLabel)) << "priority " << sCase.iPriority;
        // The answer is stored for later calls.
        EXPECT_EQ(sCase.iPriority, oQueue.StoredPriority());
    }
    EXPECT_EQ(5, oManager.m_iQueries.load());
    oQueue.UseManager(nullptr);
    EXPECT_EQ(0, oManager.m_iReferences.load());
}

TEST(WorkQueuePriority, DestructionReleasesTheManager)
{
    CFakeManager oManager;
    oManager.AddRef();  // the queue's reference
    {
        int iResult = 0;
        CManagedQueue oQueue([](void*) {}, iResult);
        oQueue.UseManager(&oManager);
        EXPECT_EQ(S_OK, oQueue.QueueTask(nullptr, kuiForever));
    }
    EXPECT_EQ(1, oManager.m_iReferences.load());
    EXPECT_EQ(1, oManager.m_iQueries.load());
}

// Several producers against a small bound: the pending count, read under
// the queue's own lock right after every admission, never exceeds it, and
// every item runs once.
class CObservedQueue : public CQxConcurrentWorkQueueLinux {
public:
    CObservedQueue(std::function<void(void*)> in_fnTask, int& io_iResult, unsigned long in_ulMax)
        : CQxConcurrentWorkQueueLinux(std::move(in_fnTask), io_iResult, "observed", in_ulMax)
    {
    }
    ~CObservedQueue() override { WaitForCompletion(kuiForever); }
    bool _AddTask(unsigned int in_uiTimeout) override
    {
        bool bAdmitted = CQxConcurrentWorkQueueLinux::_AddTask(in_uiTimeout);
        CQxAutoLock oLock(&m_oLock);
        m_ui64MostPending = std::max(m_ui64MostPending, m_ui64Pending);
        if (m_ui64Pending > m_ui64MaxPending) ++m_iOverruns;
        return bAdmitted;
    }
    uint64_t m_ui64MostPending = 0;
    int m_iOverruns = 0;
};

TEST(WorkQueueStress, TheBoundHoldsUnderSeveralProducers)
{
    const long klPerProducer = qxTestScale(5000, 500);
    constexpr int kiProducers = 4;
    constexpr unsigned long kulBound = 3;
    std::atomic<long> lRan{0}, lRunning{0}, lMostRunning{0};
    int iResult = 0;
    std::unique_ptr<CObservedQueue> pQueue(new CObservedQueue(
        [&](void*) {
            long lNow = ++lRunning;
            long lMost = lMostRunning.load();
            while (lNow > lMost && !lMostRunning.compare_exchange_weak(lMost, lNow)) {
            }
            std::this_thread::yield();
            --lRunning;
            ++lRan;
        },
        iResult, kulBound));
    std::vector<std::thread> vecProducers;
    for (int p = 0; p < kiProducers; ++p)
        vecProducers.emplace_back([&, p] {
            for (long l = 0; l < klPerProducer; ++l) {
                // Mixed time-outs; a refusal is retried with INFINITE.
                unsigned int uiTimeout = (l + p) % 3 == 0 ? 0u : ((l + p) % 3 == 1 ? 2u : kuiForever);
                if (pQueue->QueueTask(nullptr, uiTimeout) != S_OK)
                    ASSERT_EQ(S_OK, pQueue->QueueTask(nullptr, kuiForever));
            }
        });
    for (auto& oProducer : vecProducers) qxJoinWithin(oProducer, 120, "producer");
    EXPECT_EQ(S_OK, pQueue->WaitForCompletion(kuiForever));
    EXPECT_EQ(klPerProducer * kiProducers, lRan.load());
    EXPECT_EQ(0, pQueue->m_iOverruns);
    EXPECT_LE(pQueue->m_ui64MostPending, kulBound);
    EXPECT_LE(lMostRunning.load(), static_cast<long>(kulBound));
    EXPECT_GE(pQueue->m_ui64MostPending, 1u);
}

}  // namespace
