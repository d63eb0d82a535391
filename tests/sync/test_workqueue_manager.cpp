// The work queue with its thread-pool manager created through the class
// registry: a test module registered in a private mount namespace (the real
// /opt is never written) answers the priority, and the queue runs each item
// on the global queue that priority selects.
#include <qxbase/qxregistry.h>
#include <qxbase/qxworkqueue.h>

#include "tests/com/registry_sandbox.h"
#include "tests/sync/poolmanager/poolmanager.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <dispatch/dispatch.h>

#include <string>

bool qxTestPreMain(int argc, char** argv, int* out_iStatus)
{
    return NQxTestSandbox::RunInSandbox(argc, argv, out_iStatus);
}

namespace {

constexpr unsigned int kuiForever = 0xFFFFFFFFu;

std::string Narrow(const std::wstring& in_wstr)
{
    return std::string(in_wstr.begin(), in_wstr.end());
}

std::string LabelOf(long in_lDispatchPriority)
{
    return dispatch_queue_get_label(dispatch_get_global_queue(in_lDispatchPriority, 0));
}

TEST(WorkQueueManager, TheRegisteredManagerDecidesThePriority)
{
    QX_REQUIRE_REGISTRY_SANDBOX();
    NQxTestSandbox::WriteRegistry("[CLSID]\n" + Narrow(qxGuidToString(CLSID_QxThreadPoolManager)) + "=" +
                                  QXBASE_TEST_POOLMANAGER_PATH + "\n");
    IQxThreadPoolManager* pPolicy = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QxThreadPoolManager, nullptr, CLSCTX_INPROC_SERVER,
                                     IID_IQxThreadPoolManager, reinterpret_cast<void**>(&pPolicy)));
    ITestPoolProbe* pProbe = nullptr;
    ASSERT_EQ(S_OK, pPolicy->QueryInterface(IID_ITestPoolProbe, reinterpret_cast<void**>(&pProbe)));
    ASSERT_EQ(1, pProbe->LiveManagers());

    {
        std::string strLabel;
        int iResult = 0;
        CQxConcurrentWorkQueue oQueue(
            [](void* pItem) {
                *static_cast<std::string*>(pItem) = dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL);
            },
            iResult, "managed", 4);
        EXPECT_EQ(S_OK, iResult);
        EXPECT_EQ(2, pProbe->LiveManagers());
        const struct {
            EQxThreadPoolRelativePriority ePriority;
            long lDispatch;
        } asCases[] = {{keQxThreadPoolRelativePriorityBelowNormal, DISPATCH_QUEUE_PRIORITY_LOW},
                       {keQxThreadPoolRelativePriorityAboveNormal, DISPATCH_QUEUE_PRIORITY_HIGH},
                       {keQxThreadPoolRelativePriorityNormal, DISPATCH_QUEUE_PRIORITY_DEFAULT}};
        int32_t i32QueriesBefore = pProbe->PriorityQueries();
        for (const auto& sCase : asCases) {
            pPolicy->SetRelativePriority(sCase.ePriority);
            ASSERT_EQ(S_OK, oQueue.QueueTask(&strLabel, kuiForever));
            ASSERT_EQ(S_OK, oQueue.WaitForCompletion(kuiForever));
            EXPECT_EQ(LabelOf(sCase.lDispatch), strLabel) << "relative priority " << sCase.ePriority;
        }
        // Asked once per item.
        EXPECT_EQ(i32QueriesBefore + 3, pProbe->PriorityQueries());
    }
    // The queue released its manager.
    EXPECT_EQ(1, pProbe->LiveManagers());
    pProbe->Release();
    pPolicy->Release();
    NQxTestSandbox::RemoveRegistry();
}

TEST(WorkQueueManager, AnUnregisteredManagerIsReportedAndTheQueueRuns)
{
    QX_REQUIRE_REGISTRY_SANDBOX();
    NQxTestSandbox::WriteRegistry("[CLSID]\n");
    int iRan = 0;
    int iResult = 0;
    {
        CQxConcurrentWorkQueue oQueue([&](void*) { ++iRan; }, iResult, "unmanaged", 1);
        EXPECT_EQ(E_NOINTERFACE, iResult);
        for (int i = 0; i < 5; ++i) EXPECT_EQ(S_OK, oQueue.QueueTask(nullptr, kuiForever));
        EXPECT_EQ(S_OK, oQueue.WaitForCompletion(kuiForever));
    }
    EXPECT_EQ(5, iRan);
    NQxTestSandbox::RemoveRegistry();
}

}  // namespace
