// The two host buffer engines. Applications reach them through their
// factories (qxbase/qxcbufferengine.h); the classes are exported for modules
// that embed an engine.
#ifndef QXBASE_QXCENGINES_H
#define QXBASE_QXCENGINES_H

#include <qxbase/qxcbufferengine.h>
#include <qxbase/qxcbufferservices.h>
#include <qxbase/qxsync.h>

#include <atomic>

// Works inside the caller's call and reports the outcome both to the caller
// and to the content objects of the surfaces it read and wrote: read done,
// write done, an error code where there is one, and completion. Callers of
// one engine are served one at a time; an operation that had to wait behind
// another still does its work, and reports 0x8999802F (so does the one it
// waited for, when it ends after the wait began).
class QXBASE_API CQxcBufferEngine : public CQxLightUnknown, public IQxcBufferEngine {
public:
    explicit CQxcBufferEngine(IQxFlexEnginePrivate* in_pEngine);
    ~CQxcBufferEngine() override;

    // Whether every service opened (the factory hands out only open engines).
    bool IsOpen() const { return m_bOpen; }
    // Operations admitted or waiting to be.
    int32_t GetOperationsInFlight() const { return m_i32InFlight.load(); }

    QX_DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override;

    HRESULT CopySurface(IQxSurface* in_pSource, SQxRect* in_psSourceRect, IQxSurface* in_pDestination,
                        SQxRect* in_psDestinationRect, EQxFilterMode in_eFilter) override;
    HRESULT ClearSurface(IQxSurface* in_pSurface, EQxColor in_eColor, float in_fAlpha) override;
    HRESULT SetConversionOptions(SQxConversionOptions* in_psOptions) override;
    HRESULT CombineVideoAndKeySurfaces(IQxSurface* in_pVideo, IQxSurface* in_pKey, IQxSurface* in_pDestination,
                                       bool in_bAlphaScaling) override;
    HRESULT ExtractVideoAndKeySurfaces(IQxSurface* in_pSource, IQxSurface* in_pVideo, IQxSurface* in_pKey) override;
    HRESULT RotateSurface(IQxSurface* in_pSource, IQxSurface* in_pDestination, EQxRotationAngle in_eAngle) override;

private:
    // The surfaces of one operation and the content objects obtained from
    // them: those it reads and those it writes (which receive the error
    // codes). Held only while the operation runs.
    struct SOperation {
        IQxSurface* apReadSurfaces[2];
        IQxSurface* apWrittenSurfaces[2];
        IQxAVContent* apRead[2];
        IQxAVContent* apWritten[2];
    };

    void Admit();
    void Leave();
    HRESULT GetContents(SOperation& io_rsOperation, IQxSurface* const* in_ppRead, unsigned int in_uiRead,
                        IQxSurface* const* in_ppWritten, unsigned int in_uiWritten);
    void SignalError(SOperation& io_rsOperation, HRESULT in_hrError);
    // Execution's end: write done, the error code (waited: 0x8999802F;
    // failed slices: 0x89998FFF), the next caller let in, read done,
    // completion, and the contents released.
    template <class TUnlock>
    void Complete(SOperation& io_rsOperation, uint32_t in_uiFailures, TUnlock in_fnUnlock);
    HRESULT Finish(HRESULT in_hrResult, int in_iArgument, const char* in_pszSuccess);
    HRESULT Fail(HRESULT in_hrError, int in_iArgument, const char* in_pszOperation);
    HRESULT InitializeCopyAVContents(IQxSurface* in_pSource, IQxSurface* in_pDestination);
    void SignalCopyError(HRESULT in_hrError);
    HRESULT AsynchronousCopySurface();
    HRESULT InitializeClearAVContent(IQxSurface* in_pSurface);
    void SignalClearError(HRESULT in_hrError);
    HRESULT AsynchronousClearSurface();
    HRESULT InitializeCombineAVContent(IQxSurface* in_pVideo, IQxSurface* in_pKey, IQxSurface* in_pDestination);
    void SignalCombineError(HRESULT in_hrError);
    HRESULT AsynchronousCombineSurfaces();
    HRESULT InitializeExtractAVContent(IQxSurface* in_pSource, IQxSurface* in_pVideo, IQxSurface* in_pKey);
    void SignalExtractError(HRESULT in_hrError);
    HRESULT AsynchronousExtractSurfaces();
    HRESULT InitializeRotateSurfaces(IQxSurface* in_pSource, IQxSurface* in_pDestination);
    void signalRotateError(HRESULT in_hrError);
    HRESULT asynchronousRotateSurface();
    HRESULT PassFrameInformation(IQxSurface* in_pFrom, IQxSurface* in_pTo);

    SQxConversionOptions* m_psOptions;
    CQxcBufferCopyService m_oCopyService;
    CQxcBufferClearService m_oClearService;
    CQxcBufferCombineVideoAndKeyService m_oCombineService;
    CQxcBufferExtractVideoAndKeyService m_oExtractService;
    // Read and written by callers that wait and by the one running: atomic,
    // so that the hand-over is well defined; the behaviour is that of a
    // plain flag.
    std::atomic<bool> m_bNotRefused;
    std::atomic<int32_t> m_i32InFlight;
    CQxEvent m_oTurn;
    SOperation m_sCopy;     // source; destination
    SOperation m_sClear;    // the surface
    SOperation m_sCombine;  // fill and key; destination
    SOperation m_sExtract;  // source; fill and key
    SOperation m_sRotate;   // source; destination
    bool m_bPlainCopy;
    bool m_bOpen;
};

// Does a copy or a clear completely inside the caller's call and only
// returns its result. Operations are serialised by a critical section; a
// nested call from the same thread is refused with 0x8999802F. A call with a
// null surface returns 0x89998045 and leaves the engine refusing every later
// call (0x8999802F): the in-flight count stays raised, as the SDK's
// synchronous engine has always done.
class QXBASE_API CQxcSyncBufferEngine : public CQxLightUnknown, public IQxSyncBufferEngine {
public:
    explicit CQxcSyncBufferEngine(IQxFlexEnginePrivate* in_pEngine);
    ~CQxcSyncBufferEngine() override;

    bool IsOpen() const { return m_bOpen; }

    QX_DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override;

    HRESULT SyncCopySurface(IQxSurface* in_pSource, SQxRect* in_psSourceRect, IQxSurface* in_pDestination,
                            SQxRect* in_psDestinationRect, EQxFilterMode in_eFilter) override;
    HRESULT SyncClearSurface(IQxSurface* in_pSurface, EQxColor in_eColor, float in_fAlpha) override;
    HRESULT SetSyncConversionOptions(SQxConversionOptions* in_psOptions) override;

private:
    HRESULT SynchronousCopySurface();
    HRESULT SynchronousClearSurface();
    // Takes the in-flight count; false, with the refusal logged, for a call
    // nested in one in progress.
    bool Enter(int in_iArgument, const char* in_pszOperation);
    // Logs the result of an admitted call and gives its count back.
    HRESULT Leave(HRESULT in_hrResult, int in_iArgument, const char* in_pszOperation);

    SQxConversionOptions* m_psOptions;
    CQxcBufferCopyService m_oCopyService;
    CQxcBufferClearService m_oClearService;
    std::atomic<bool> m_bNotRefused;
    std::atomic<int32_t> m_i32InFlight;
    // The engine family's operation events, auto-reset. Copy and
    // clear end inside the caller's call and wait on none of them.
    static constexpr int kiEventCount = 7;
    CQxEvent m_aoEvents[kiEventCount];
    IQxSurface* m_pSource;
    IQxSurface* m_pDestination;
    IQxSurface* m_pClearSurface;
    bool m_bPlainCopy;
    CQxCriticalSection m_oLock;
    bool m_bOpen;
};

#endif  // QXBASE_QXCENGINES_H
