// The admission bound under the race it is built for, forced with the delay
// points of the test build: two producers both see room for the last place,
// then take the lock one after the other. Exactly one is admitted.
#include <qxbase/qxworkqueue.h>

#include "tests/sync/support/qxdelayhook.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace {

using std::chrono::milliseconds;

class CCountedQueue : public CQxConcurrentWorkQueueLinux {
public:
    CCountedQueue(std::function<void(void*)> in_fnTask, int& io_iResult)
        : CQxConcurrentWorkQueueLinux(std::move(in_fnTask), io_iResult, "raced", 2)
    {
    }
    ~CCountedQueue() override { WaitForCompletion(0xFFFFFFFFu); }
    uint64_t Pending()
    {
        CQxAutoLock oLock(&m_oLock);
        return m_ui64Pending;
    }
};

TEST(WorkQueueInterleaving, TwoProducersRacingForTheLastPlaceAdmitOne)
{
    CQxTestGate oItemsMayFinish;
    std::atomic<int> iFinished{0};
    int iResult = 0;
    CCountedQueue oQueue(
        [&](void*) {
            oItemsMayFinish.WaitOpen(milliseconds(20000));
            ++iFinished;
        },
        iResult);
    ASSERT_EQ(S_OK, oQueue.QueueTask(nullptr, 0));  // one of two places taken

    CQxTestRendezvous oBothSawRoom(2);
    std::atomic<int> iSawRoom{0};
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void* pObject) {
        if (ePoint != keQxDelayAddTaskRoomSeen || pObject != &oQueue || !tl_pszQxTestRole) return;
        // Only the first sighting of each producer waits for the other.
        if (++iSawRoom <= 2) oBothSawRoom.Arrive(milliseconds(5000));
    });
    int aiResults[2] = {-1, -1};
    std::thread aoProducers[2];
    for (int i = 0; i < 2; ++i)
        aoProducers[i] = std::thread([&, i] {
            tl_pszQxTestRole = i == 0 ? "P1" : "P2";
            aiResults[i] = oQueue.QueueTask(nullptr, 200);
        });
    for (auto& oProducer : aoProducers) qxJoinWithin(oProducer, 20, "producer");
    ASSERT_EQ(2, oBothSawRoom.Arrived()) << "the interleaving was not forced";
    EXPECT_EQ(1, (aiResults[0] == S_OK) + (aiResults[1] == S_OK));
    EXPECT_EQ(1, (aiResults[0] == QX_E_TIMEOUT) + (aiResults[1] == QX_E_TIMEOUT));
    EXPECT_EQ(2u, oQueue.Pending());
    oItemsMayFinish.Open();
    EXPECT_EQ(S_OK, oQueue.WaitForCompletion(20000));
    EXPECT_EQ(2, iFinished.load());
}

}  // namespace
