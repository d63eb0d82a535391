// Work queues on libdispatch: construction results, admission bound and
// time-outs, completion waits, throwing tasks, destruction, priorities, and
// the bound under several producers. The program runs in a private mount
// namespace (the real /opt is never written), where a test registers a
// thread-pool manager module through the class registry; the queues of the
// other tests find none.
#include <qxbase/qxregistry.h>
#include <qxbase/qxworkqueue.h>

#include "tests/com/registry_sandbox.h"
#include "tests/sync/poolmanager/poolmanager.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <dispatch/dispatch.h>

#include <algorithm>
#include <atomic>
#include <memory>

bool qxTestPreMain(int argc, char** argv, int* out_iStatus)
{
    return NQxTestSandbox::RunInSandbox(argc, argv, out_iStatus);
}

namespace {

using std::chrono::milliseconds;
constexpr unsigned int kuiForever = 0xFFFFFFFFu;

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
    CQxTestGate oGate;
    std::atomic<int> iFinished{0};
    int iResult = 0;
    CQxConcurrentWorkQueue oQueue(
        [&](void*) {
            oGate.WaitOpen(milliseconds(20000));
            ++iFinished;
        },
        iResult, "cap 2", 2);
    EXPECT_EQ(S_OK, oQueue.QueueTask(nullptr, 0));
    EXPECT_EQ(S_OK, oQueue.QueueTask(nullptr, 0));
    EXPECT_EQ(QX_E_TIMEOUT, oQueue.QueueTask(nullptr, 0));
    double dStart = qxTestNow();
    EXPECT_EQ(QX_E_TIMEOUT, oQueue.QueueTask(nullptr, 30));
    EXPECT_GE(qxTestNow() - dStart, 0.030 - 2e-6);
    dStart = qxTestNow();
    EXPECT_EQ(QX_E_TIMEOUT, oQueue.WaitForCompletion(20));
    EXPECT_GE(qxTestNow() - dStart, 0.020 - 2e-6);
    oGate.Open();
    // Room comes back as items finish.
    EXPECT_EQ(S_OK, oQueue.QueueTask(nullptr, 10000));
    EXPECT_EQ(S_OK, oQueue.WaitForCompletion(10000));
    EXPECT_EQ(3, iFinished.load());

    // A maximum of 0 admits nothing, and says so within the time-out.
    CQxConcurrentWorkQueue oClosed([&](void*) { ++iFinished; }, iResult, "cap 0", 0);
    dStart = qxTestNow();
    EXPECT_EQ(QX_E_TIMEOUT, oClosed.QueueTask(nullptr, 20));
    EXPECT_GE(qxTestNow() - dStart, 0.020 - 2e-6);
    EXPECT_EQ(S_OK, oClosed.WaitForCompletion(0));
    EXPECT_EQ(3, iFinished.load());
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
    for (int* pItem : {&iFine, &iThrow, &iFine}) EXPECT_EQ(S_OK, oQueue.QueueTask(pItem, kuiForever));
    ASSERT_TRUE(qxWaitUntil([&] { return iRan.load() == 3; }, 20));
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

// The label of the global queue that runs the next item.
std::string RunOneAndGetLabel(CQxConcurrentWorkQueue& io_oQueue)
{
    std::string strLabel;
    EXPECT_EQ(S_OK, io_oQueue.QueueTask(&strLabel, kuiForever));
    EXPECT_EQ(S_OK, io_oQueue.WaitForCompletion(kuiForever));
    return strLabel;
}

std::string LabelOf(long in_lDispatchPriority)
{
    return dispatch_queue_get_label(dispatch_get_global_queue(in_lDispatchPriority, 0));
}

void StoreLabel(void* out_pLabel)
{
    *static_cast<std::string*>(out_pLabel) = dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL);
}

// The registered manager is asked once per item, and its answer maps to one
// of the three global queues (anything unknown to the default one); the
// queue releases its manager when it goes.
TEST(WorkQueuePriority, TheRegisteredManagerDecidesTheGlobalQueue)
{
    QX_REQUIRE_REGISTRY_SANDBOX();
    const std::wstring wstrClass = qxGuidToString(CLSID_QxThreadPoolManager);
    NQxTestSandbox::WriteRegistry("[CLSID]\n" + std::string(wstrClass.begin(), wstrClass.end()) + "=" +
                                  QXBASE_TEST_POOLMANAGER_PATH + "\n");
    IQxThreadPoolManager* pPolicy = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QxThreadPoolManager, nullptr, CLSCTX_INPROC_SERVER,
                                     IID_IQxThreadPoolManager, reinterpret_cast<void**>(&pPolicy)));
    ITestPoolProbe* pProbe = nullptr;
    ASSERT_EQ(S_OK, pPolicy->QueryInterface(IID_ITestPoolProbe, reinterpret_cast<void**>(&pProbe)));
    ASSERT_EQ(1, pProbe->LiveManagers());
    ASSERT_NE(LabelOf(DISPATCH_QUEUE_PRIORITY_LOW), LabelOf(DISPATCH_QUEUE_PRIORITY_DEFAULT));
    ASSERT_NE(LabelOf(DISPATCH_QUEUE_PRIORITY_HIGH), LabelOf(DISPATCH_QUEUE_PRIORITY_DEFAULT));
    {
        int iResult = 0;
        CQxConcurrentWorkQueue oQueue(StoreLabel, iResult, "managed", 4);
        EXPECT_EQ(S_OK, iResult);
        EXPECT_EQ(2, pProbe->LiveManagers());
        const long klLow = DISPATCH_QUEUE_PRIORITY_LOW, klDefault = DISPATCH_QUEUE_PRIORITY_DEFAULT,
                   klHigh = DISPATCH_QUEUE_PRIORITY_HIGH;
        const std::pair<int, long> kasCases[] = {{keQxThreadPoolRelativePriorityBelowNormal, klLow},
                                                 {keQxThreadPoolRelativePriorityAboveNormal, klHigh},
                                                 {keQxThreadPoolRelativePriorityNormal, klDefault},
                                                 {keQxThreadPoolRelativePriorityInvalid, klDefault},
                                                 {keQxThreadPoolRelativePriorityBelowNormal, klLow},
                                                 {99, klDefault}};
        const int32_t i32QueriesBefore = pProbe->PriorityQueries();
        for (const auto& rsCase : kasCases) {
            pPolicy->SetRelativePriority(static_cast<EQxThreadPoolRelativePriority>(rsCase.first));
            EXPECT_EQ(LabelOf(rsCase.second), RunOneAndGetLabel(oQueue)) << "relative priority " << rsCase.first;
        }
        EXPECT_EQ(i32QueriesBefore + 6, pProbe->PriorityQueries());
    }
    EXPECT_EQ(1, pProbe->LiveManagers()) << "the queue kept its manager";
    pProbe->Release();
    pPolicy->Release();
    NQxTestSandbox::RemoveRegistry();
}

// Without a manager the creation status is reported, and the queue runs at
// its stored priority, the normal one.
TEST(WorkQueuePriority, AnUnregisteredManagerIsReportedAndTheQueueRuns)
{
    QX_REQUIRE_REGISTRY_SANDBOX();
    NQxTestSandbox::WriteRegistry("[CLSID]\n");
    int iResult = 0;
    CQxConcurrentWorkQueue oQueue(StoreLabel, iResult, "unmanaged", 1);
    EXPECT_EQ(E_NOINTERFACE, iResult);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(LabelOf(DISPATCH_QUEUE_PRIORITY_DEFAULT), RunOneAndGetLabel(oQueue));
    NQxTestSandbox::RemoveRegistry();
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
        return bAdmitted;
    }
    uint64_t m_ui64MostPending = 0;
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
    EXPECT_LE(pQueue->m_ui64MostPending, kulBound);
    EXPECT_LE(lMostRunning.load(), static_cast<long>(kulBound));
    EXPECT_GE(pQueue->m_ui64MostPending, 1u);
}

}  // namespace
