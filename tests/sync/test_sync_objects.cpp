// The throwing layer: kind tags, forwarding to the lower objects, the
// time-out rules, the refused operations with their exact messages, and the
// scope guards.
#include <qxbase/qxsync.h>

#include "tests/sync/support/qxsemnames.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

namespace {

using std::chrono::milliseconds;


bool TryFromOtherThread(CQxSynchronizationObject& io_oObject)
{
    bool bResult = false;
    std::thread oOther([&] {
        bResult = io_oObject.Wait(0);
        if (bResult) io_oObject.Release();
    });
    oOther.join();
    return bResult;
}

TEST(SyncObjectTags, EachKindCarriesItsTag)
{
    CQxCriticalSection oSection;
    CQxMutex oMutex;
    CQxSemaphore oSemaphore(0, 1);
    CQxEvent oEvent(false);
    CQxHandleSyncObject oHandle;
    EXPECT_EQ(1, oSection.GetObjectType());
    EXPECT_EQ(2, oMutex.GetObjectType());
    EXPECT_EQ(3, oSemaphore.GetObjectType());
    EXPECT_EQ(4, oEvent.GetObjectType());
    EXPECT_EQ(0, oHandle.GetObjectType());
    std::string strName = qxTestSemaphoreName();
    {
        CQxMutex oNamed(strName);
        EXPECT_EQ(2, oNamed.GetObjectType());
    }
    EXPECT_EQ(0, qxTestUnlinkSemaphores());
}

TEST(CriticalSection, IsRecursiveAndAcceptsOnlyZeroOrInfinite)
{
    CQxCriticalSection oSection;
    EXPECT_EQ("CQxCriticalSection::Wait -> 0 or INFINITE time-outs only",
              qxMessageOf<CQxCriticalSectionException>([&] { oSection.Wait(1); }));
    // All ones in 64 bits is not INFINITE.
    EXPECT_EQ("CQxCriticalSection::Wait -> 0 or INFINITE time-outs only",
              qxMessageOf<CQxCriticalSectionException>([&] { oSection.Wait(~0UL); }));
    EXPECT_TRUE(oSection.Wait(kulQxInfinite));
    EXPECT_TRUE(oSection.Wait(0));
    EXPECT_FALSE(TryFromOtherThread(oSection));
    // 0 on success, unlike the handle-style objects.
    EXPECT_EQ(0, oSection.Release());
    EXPECT_FALSE(TryFromOtherThread(oSection));
    EXPECT_EQ(0, oSection.Release());
    EXPECT_TRUE(TryFromOtherThread(oSection));
    // Not held: pthread's refusal comes back unchanged.
    EXPECT_NE(0, oSection.Release());
}

TEST(HandleSyncObject, RefusesEverythingWithItsMessages)
{
    CQxHandleSyncObject oHandle;
    EXPECT_EQ("CQxHandleSyncObject::Wait -> object not created yet",
              qxMessageOf<CQxHandleSyncObjectException>([&] { oHandle.Wait(0); }));
    EXPECT_EQ("CQxHandleSyncObject::Release -> this is not a valid call",
              qxMessageOf<CQxHandleSyncObjectException>([&] { oHandle.Release(); }));
    EXPECT_EQ("CQxHandleSyncObject::CQxHandleSyncObject -> Constructor not supported in this version",
              qxMessageOf<CQxHandleSyncObjectException>([&] { CQxHandleSyncObject oFromHandle(&oHandle); }));
    EXPECT_EQ("CQxHandleSyncObject::CQxHandleSyncObject -> Constructor not supported in this version",
              qxMessageOf<CQxHandleSyncObjectException>([&] { CQxHandleSyncObject oCopy(oHandle); }));
    EXPECT_EQ("CQxHandleSyncObject::CQxHandleSyncObject -> Operator not supported in this version",
              qxMessageOf<CQxHandleSyncObjectException>([&] {
                  CQxHandleSyncObject oOther;
                  oOther = oHandle;
              }));
    // An event keeps the refused Release.
    CQxEvent oEvent(true);
    EXPECT_EQ("CQxHandleSyncObject::Release -> this is not a valid call",
              qxMessageOf<CQxHandleSyncObjectException>([&] { oEvent.Release(); }));
}

TEST(HandleSyncObject, ExceptionsDeriveAsDeclared)
{
    EXPECT_EQ("m", qxMessageOf<CQxHandleSyncObjectException>([] { throw CQxMutexException("m"); }));
    EXPECT_EQ("s", qxMessageOf<CQxHandleSyncObjectException>([] { throw CQxSemaphoreException("s"); }));
    EXPECT_EQ("e", qxMessageOf<CQxHandleSyncObjectException>([] { throw CQxEventException("e"); }));
    EXPECT_EQ("t", qxMessageOf<CQxHandleSyncObjectException>([] { throw CQxThreadException("t"); }));
    EXPECT_EQ("a", qxMessageOf<CQxBaseException>([] { throw CQxAutoLockException("a"); }));
    EXPECT_EQ("c", qxMessageOf<CQxBaseException>([] { throw CQxCriticalSectionException("c"); }));
    EXPECT_EQ("<other exception>",
              qxMessageOf<CQxHandleSyncObjectException>([] { throw CQxCriticalSectionException("c"); }));
}

// The lower objects are missing only if a derived class dropped them; the
// forwarding then throws the class's own message.
struct CDroppedMutex : CQxMutex {
    void Drop()
    {
        delete m_pSyncObject;
        m_pSyncObject = nullptr;
    }
};
struct CDroppedSemaphore : CQxSemaphore {
    CDroppedSemaphore() : CQxSemaphore(0, 1) {}
    void Drop()
    {
        delete m_pSyncObject;
        m_pSyncObject = nullptr;
    }
};
struct CDroppedEvent : CQxEvent {
    CDroppedEvent() : CQxEvent(true) {}
    void Drop()
    {
        delete m_pEvent;
        m_pEvent = nullptr;
    }
    // The base destructor would Set a missing event, which ends the process.
    ~CDroppedEvent() override { m_pEvent = new CQxUnnamedEvent(true); }
};

TEST(HandleSyncObject, AMissingLowerObjectThrowsTheClassMessage)
{
    CDroppedMutex oMutex;
    oMutex.Drop();
    EXPECT_EQ("CQxMutex::Wait -> object is NULL", qxMessageOf<CQxMutexException>([&] { oMutex.Wait(0); }));
    EXPECT_EQ("CQxMutex::Release -> object is NULL", qxMessageOf<CQxMutexException>([&] { oMutex.Release(); }));
    CDroppedSemaphore oSemaphore;
    oSemaphore.Drop();
    EXPECT_EQ("CQxSemaphore::Wait -> object is NULL",
              qxMessageOf<CQxSemaphoreException>([&] { oSemaphore.Wait(0); }));
    EXPECT_EQ("CQxSemaphore::Release -> object is NULL",
              qxMessageOf<CQxSemaphoreException>([&] { oSemaphore.Release(); }));
    CDroppedEvent oEvent;
    oEvent.Drop();
    EXPECT_EQ("CQxEvent::Set() --> failed", qxMessageOf<CQxEventException>([&] { oEvent.Set(); }));
    EXPECT_EQ("CQxEvent::Reset() --> failed", qxMessageOf<CQxEventException>([&] { oEvent.Reset(); }));
    EXPECT_EQ("CQxEvent::Wait() --> Invalid object", qxMessageOf<CQxEventException>([&] { oEvent.Wait(0); }));
}

TEST(Mutex, UnnamedIsRecursiveNamedIsNot)
{
    CQxMutex oMutex;
    EXPECT_TRUE(oMutex.Wait(kulQxInfinite));
    EXPECT_TRUE(oMutex.Wait(0));
    EXPECT_FALSE(TryFromOtherThread(oMutex));
    EXPECT_NE(0, oMutex.Release());
    EXPECT_NE(0, oMutex.Release());
    EXPECT_TRUE(TryFromOtherThread(oMutex));

    std::string strName = qxTestSemaphoreName();
    {
        CQxMutex oNamed(strName);
        EXPECT_TRUE(qxTestSemaphoreExists(strName));
        EXPECT_TRUE(oNamed.Wait(0));
        // A semaphore of count 1: the owner's second Wait is refused.
        EXPECT_FALSE(oNamed.Wait(0));
        EXPECT_FALSE(oNamed.Wait(20));
        // The same name in the same process is the same mutex.
        CQxMutex oSameName(strName);
        EXPECT_FALSE(oSameName.Wait(0));
        EXPECT_NE(0, oNamed.Release());
        EXPECT_TRUE(oSameName.Wait(0));
        EXPECT_NE(0, oSameName.Release());
    }
    EXPECT_FALSE(qxTestSemaphoreExists(strName));
    EXPECT_EQ(0, qxTestUnlinkSemaphores());
}

// An all-ones 64-bit time-out is a long finite wait that still ends when the
// owner lets go.
TEST(Mutex, AllOnesTimeoutIsALongFiniteWait)
{
    CQxMutex oMutex;
    EXPECT_TRUE(qxAllOnesWaitEndsWithTheRelease(oMutex));
}

TEST(Mutex, AFailedConstructionThrowsAndLeavesNothing)
{
    EXPECT_EQ("CQxMutex::CQxMutex -> could not create mutex",
              qxMessageOf<CQxMutexException>([] { CQxMutex oBad(std::string("/qxtest/inner-slash")); }));
    // The message says "mutex" for the semaphore too.
    EXPECT_EQ("CQxSemaphore::CQxSemaphore -> could not create mutex",
              qxMessageOf<CQxSemaphoreException>([] { CQxSemaphore oBad(-1, 1); }));
}

TEST(Semaphore, CountsAndIgnoresItsMaximum)
{
    CQxSemaphore oSemaphore(0, 1);
    for (int i = 0; i < 3; ++i) EXPECT_NE(0, oSemaphore.Release());
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(oSemaphore.Wait(0));
    EXPECT_FALSE(oSemaphore.Wait(0));
    CQxSemaphore oTwo(2, 0);
    EXPECT_TRUE(oTwo.Wait(0));
    EXPECT_TRUE(oTwo.Wait(10));
    EXPECT_FALSE(oTwo.Wait(0));
}

TEST(Event, ForwardsToTheUnnamedEvent)
{
    CQxEvent oAuto(false);
    EXPECT_FALSE(oAuto.Wait(0));
    oAuto.Set();
    EXPECT_TRUE(oAuto.Wait(0));
    EXPECT_FALSE(oAuto.Wait(0));
    CQxEvent oManual(true);
    oManual.Set();
    EXPECT_TRUE(oManual.Wait(0));
    EXPECT_TRUE(oManual.Wait(0));
    oManual.Reset();
    EXPECT_FALSE(oManual.Wait(5));
    std::thread oSetter([&] {
        std::this_thread::sleep_for(milliseconds(20));
        oManual.Set();
    });
    EXPECT_TRUE(oManual.Wait(~0UL));
    oSetter.join();
}

TEST(AutoLock, LocksForTheScope)
{
    EXPECT_EQ("CQxAutoLock::CQxAutoLock -> NULL CQxSynchronizationObject pointer",
              qxMessageOf<CQxAutoLockException>([] { CQxAutoLock oLock(nullptr); }));
    CQxCriticalSection oSection;
    {
        CQxAutoLock oLock(&oSection);
        EXPECT_FALSE(TryFromOtherThread(oSection));
    }
    EXPECT_TRUE(TryFromOtherThread(oSection));
    CQxSemaphore oSemaphore(1, 1);
    {
        CQxAutoLock oLock(&oSemaphore);
        EXPECT_FALSE(oSemaphore.Wait(0));
    }
    EXPECT_TRUE(oSemaphore.Wait(0));
}

TEST(AutoLockDeathTest, OverAnEventEndsTheProcessAtScopeExit)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            CQxEvent oEvent(true);
            oEvent.Set();
            CQxAutoLock oLock(&oEvent);
        },
        "");
}

TEST(LocalAutoLock, LocksAPlainMutexOrNothing)
{
    pthread_mutex_t oMutex = PTHREAD_MUTEX_INITIALIZER;
    {
        CQxLocalAutoLock oLock(&oMutex);
        std::thread oOther([&] { EXPECT_NE(0, pthread_mutex_trylock(&oMutex)); });
        oOther.join();
    }
    EXPECT_EQ(0, pthread_mutex_trylock(&oMutex));
    pthread_mutex_unlock(&oMutex);
    { CQxLocalAutoLock oNothing(nullptr); }
    pthread_mutex_destroy(&oMutex);
}

}  // namespace
