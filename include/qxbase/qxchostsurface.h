// A reference implementation of the SDK's surface and content interfaces
// over host memory, for applications and tests that drive the buffer engine.
// A host surface either wraps memory that the caller owns or allocates its
// own (aligned, with a padded pitch); its content object counts the signals
// that the engine sends (read done, write done, error, completion) and lets
// a thread wait for them.
#ifndef QXBASE_QXCHOSTSURFACE_H
#define QXBASE_QXCHOSTSURFACE_H

#include <qxbase/qxinterfaces.h>

#include <condition_variable>
#include <mutex>

// The signals of a content object, as counted by CQxcHostAVContent.
enum EQxcContentSignal : int32_t {
    keQxcContentSignalRead = 0,        // SignalReadCompletion
    keQxcContentSignalWrite = 1,       // SignalWriteCompletion
    keQxcContentSignalError = 2,       // SetErrorCode
    keQxcContentSignalCompletion = 3,  // SignalOperationCompletion
    keQxcContentSignalCount = 4
};

class QXBASE_API CQxcHostAVContent : public CQxLightUnknown, public IQxAVContent {
public:
    // A new content object with one reference for the caller.
    static CQxcHostAVContent* Create();

    QX_DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override;

    HRESULT SignalReadCompletion() override;
    HRESULT SignalWriteCompletion() override;
    // Keeps the code (the last one set wins) and counts the signal.
    HRESULT SetErrorCode(HRESULT in_hrError) override;
    // S_OK until an error was set.
    HRESULT GetErrorCode(HRESULT* out_phrError) override;
    HRESULT SignalOperationCompletion() override;

    // How often a signal was sent since creation or the last Reset.
    uint32_t GetSignalCount(EQxcContentSignal in_eSignal) const;
    // Waits until the signal has been sent at least in_uiCount times; false
    // when the time-out (milliseconds; 4294967295 waits for ever) ran out.
    bool WaitForSignal(EQxcContentSignal in_eSignal, uint32_t in_uiCount, uint32_t in_uiTimeoutMs) const;
    // Clears the counts and the error code.
    void Reset();

private:
    CQxcHostAVContent();
    ~CQxcHostAVContent() override;
    HRESULT Count(EQxcContentSignal in_eSignal);

    mutable std::mutex m_oMutex;
    mutable std::condition_variable m_oChanged;
    uint32_t m_auiCounts[keQxcContentSignalCount];
    HRESULT m_hrError;
};

// Operations of a host surface whose failure a test can force.
enum EQxcHostSurfaceOperation : int32_t {
    keQxcHostSurfaceOperationGetDescription = 0,
    keQxcHostSurfaceOperationGetContent = 1,
    keQxcHostSurfaceOperationLock = 2,
    keQxcHostSurfaceOperationCount = 3
};

class QXBASE_API CQxcHostSurface : public CQxLightUnknown, public IQxSurface {
public:
    // A surface over caller memory described by in_sDescription (format,
    // width, height, pitch, buffer size ...). The memory must outlive the
    // surface. in_pContent (may be null: the surface makes its own) lets
    // several surfaces share one content object.
    static HRESULT CreateOverMemory(const SQxSurfaceDescription& in_sDescription, void* in_pBuffer,
                                    CQxcHostAVContent* in_pContent, CQxcHostSurface** out_ppSurface);
    // A surface over memory of its own, zero-filled. Its lines are padded to
    // whole 16-pixel blocks (48 pixels for v210) and to the description's
    // alignment (64 bytes when 0), and never shorter than the description's
    // pitch; the buffer and every line start are aligned. The description's
    // pitch and buffer size are updated. Compressed and data formats take
    // the description's buffer size as it is. E_INVALIDARG for a format,
    // bit count or size this surface cannot lay out.
    static HRESULT CreateAllocated(const SQxSurfaceDescription& in_sDescription, CQxcHostAVContent* in_pContent,
                                   CQxcHostSurface** out_ppSurface);

    // A description of a picture: its size in bytes (pitch, buffer size)
    // left for CreateAllocated to fill in, host conversion allowed.
    static SQxSurfaceDescription MakeDescription(EQxSurfaceFormat in_eFormat, uint32_t in_uiBitCount,
                                                 uint32_t in_uiWidth, uint32_t in_uiHeight,
                                                 EQxPolarity in_ePolarity = keQxPolarityProgressive,
                                                 EQxColorimetry in_eColorimetry = keQxColorimetryITUR_BT_709);

    // Bytes of one line of in_uiWidth pixels of a format and bit count, or 0
    // where the format has no line layout (compressed and data formats) or
    // the bit count is not supported.
    static uint32_t GetLineBytes(EQxSurfaceFormat in_eFormat, uint32_t in_uiBitCount, uint32_t in_uiWidth);

    QX_DECLARE_IUNKNOWN
    HRESULT NonDelegatingQueryInterface(const GUID& riid, void** ppv) override;

    HRESULT GetSurfaceDescription(SQxSurfaceDescription* out_psDescription) override;
    HRESULT GetAVContent(IQxAVContent** out_ppContent) override;
    // Locks may nest; each successful lock must be paired with an unlock.
    HRESULT LockBuffer(EQxBufferAccess in_eAccess, void** out_ppBuffer, int32_t* out_plPitch,
                       uint32_t* out_pulSize) override;
    // E_FAIL when the surface is not locked.
    HRESULT UnlockBuffer() override;
    HRESULT GetFrameInformation(SQxFrameInformation* out_psInformation) override;
    HRESULT SetFrameInformation(const SQxFrameInformation* in_psInformation) override;

    unsigned char* GetBuffer() const { return m_pucBuffer; }
    int32_t GetPitch() const { return m_sDescription.lPitch; }
    uint32_t GetBufferSize() const { return m_sDescription.ulBufferSize; }
    const SQxSurfaceDescription& GetDescription() const { return m_sDescription; }
    // The content object (no reference is added).
    CQxcHostAVContent* GetContent() const { return m_pContent; }
    // Locks currently held.
    int32_t GetLockCount() const;
    // Makes every later call of the operation fail with in_hrFailure
    // (S_OK: stop failing).
    void InjectFailure(EQxcHostSurfaceOperation in_eOperation, HRESULT in_hrFailure);

private:
    CQxcHostSurface(const SQxSurfaceDescription& in_sDescription, unsigned char* in_pucBuffer, bool in_bOwnsBuffer,
                    CQxcHostAVContent* in_pContent);
    ~CQxcHostSurface() override;
    HRESULT Failure(EQxcHostSurfaceOperation in_eOperation) const;

    mutable std::mutex m_oMutex;
    SQxSurfaceDescription m_sDescription;
    unsigned char* m_pucBuffer;
    bool m_bOwnsBuffer;
    CQxcHostAVContent* m_pContent;
    int32_t m_i32Locks;
    SQxFrameInformation m_sFrameInformation;
    HRESULT m_ahrFailures[keQxcHostSurfaceOperationCount];
};

#endif  // QXBASE_QXCHOSTSURFACE_H
