// Named points inside the synchronisation code where a test build can stop a
// thread to force an interleaving. In the library they expand to nothing; the
// tests compile the same sources a second time with QXBASE_SYNC_DELAY_POINTS
// and supply qxSyncDelayPoint.
#ifndef QXBASE_SYNC_QXSYNCDELAY_H
#define QXBASE_SYNC_QXSYNCDELAY_H

enum EQxSyncDelayPoint {
    // A waiter has registered with the event, before it takes its mutex.
    keQxDelayWaitRegistered,
    // A waiter has seen the event set, before it consumes the signal.
    keQxDelayWaitSignalSeen,
    // A waiter found the event unsignalled and is about to sleep; it still
    // holds its mutex, so a Set issued from here lands once it sleeps.
    keQxDelayWaitSleeping,
    // A waiter's platform wait has returned, before it tests again.
    keQxDelayWaitWoken,
    // A timed waiter ran out of time, before it unregisters.
    keQxDelayWaitTimedOut,
    // Set or Pulse holds the first waiter mutex, before it takes the rest.
    keQxDelaySetFirstWaiterLocked,
    // An admission saw the room event set, before it takes the lock.
    keQxDelayAddTaskRoomSeen
};

#ifdef QXBASE_SYNC_DELAY_POINTS
void qxSyncDelayPoint(EQxSyncDelayPoint in_ePoint, const void* in_pObject);
#define QX_SYNC_DELAY_POINT(point, object) qxSyncDelayPoint(point, object)
#else
#define QX_SYNC_DELAY_POINT(point, object) ((void)0)
#endif

#endif  // QXBASE_SYNC_QXSYNCDELAY_H
