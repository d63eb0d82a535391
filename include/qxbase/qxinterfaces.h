// Interfaces of the SDK that the host buffer engine and the work queue
// consume: surfaces and their content objects, the flex engine, and the
// thread-pool manager. Slot orders are binding (modules built separately
// call each other through these tables).
#ifndef QXBASE_QXINTERFACES_H
#define QXBASE_QXINTERFACES_H

#include <qxbase/qxdescriptions.h>
#include <qxbase/qxunknown.h>

// Per-frame information that travels with a picture from the surface it is
// read from to the surface it is written to.
struct SQxFrameInformation {
    uint32_t size;               // sizeof(SQxFrameInformation)
    uint32_t ulFieldCount;       // fields held (1 for a field, 2 for a frame)
    uint64_t ui64TimeStamp;      // presentation time, in the producer's clock
    uint64_t ui64FrameNumber;    // running count of the producer
    uint32_t ulTimecode;         // SMPTE timecode as BCD hh:mm:ss:ff
    uint32_t ulTimecodeFlags;    // drop frame, colour frame, field mark ...
    uint64_t ui64UserData;       // application-defined
};
static_assert(sizeof(SQxFrameInformation) == 40, "SQxFrameInformation layout");

enum EQxBufferAccess : int32_t {
    keQxBufferAccessInvalid = 0,
    keQxBufferAccessRead = 1,
    keQxBufferAccessWrite = 2,
    keQxBufferAccessReadWrite = 3
};

class IQxAVContent;

// A picture in memory: its description, its buffer and the content object
// through which its readers and writers are told that work is done.
class IQxSurface : public IUnknown {
public:
    virtual HRESULT GetSurfaceDescription(SQxSurfaceDescription* out_psDescription) = 0;
    // Hands out the content object with a reference for the caller.
    virtual HRESULT GetAVContent(IQxAVContent** out_ppContent) = 0;
    // Locks the buffer for the access given and tells where it is. Every
    // successful lock is paired with one UnlockBuffer.
    virtual HRESULT LockBuffer(EQxBufferAccess in_eAccess, void** out_ppBuffer,
                               int32_t* out_plPitch, uint32_t* out_pulSize) = 0;
    virtual HRESULT UnlockBuffer() = 0;
    virtual HRESULT GetFrameInformation(SQxFrameInformation* out_psInformation) = 0;
    virtual HRESULT SetFrameInformation(const SQxFrameInformation* in_psInformation) = 0;
};

// The content of one or more surfaces: whoever waits for a picture to be
// read or written waits on these signals.
class IQxAVContent : public IUnknown {
public:
    // An operation finished reading the content.
    virtual HRESULT SignalReadCompletion() = 0;
    // An operation finished writing the content.
    virtual HRESULT SignalWriteCompletion() = 0;
    // An operation failed on the content; the code is kept.
    virtual HRESULT SetErrorCode(HRESULT in_hrError) = 0;
    virtual HRESULT GetErrorCode(HRESULT* out_phrError) = 0;
    // The operation that holds the content is complete (after the read or
    // write signal); it then releases its reference.
    virtual HRESULT SignalOperationCompletion() = 0;
};

// The flex engine that owns a buffer engine. The buffer engine only keeps it
// to tell whose work it does; it calls nothing on it.
class IQxFlexEnginePrivate : public IUnknown {
};

enum EQxThreadPoolRelativePriority : int32_t {
    keQxThreadPoolRelativePriorityInvalid = 0,
    keQxThreadPoolRelativePriorityBelowNormal = 1,
    keQxThreadPoolRelativePriorityNormal = 2,
    keQxThreadPoolRelativePriorityAboveNormal = 3
};

// The process's thread-pool policy, a component of another module. The work
// queue asks it for the current relative priority (the seventh operation,
// counting the three of IUnknown).
class IQxThreadPoolManager : public IUnknown {
public:
    virtual HRESULT SetRelativePriority(EQxThreadPoolRelativePriority in_ePriority) = 0;
    virtual HRESULT SetMaximumThreadCount(uint32_t in_ulCount) = 0;
    virtual HRESULT GetMaximumThreadCount(uint32_t* out_pulCount) = 0;
    virtual EQxThreadPoolRelativePriority GetRelativePriority() = 0;
};

#endif  // QXBASE_QXINTERFACES_H
