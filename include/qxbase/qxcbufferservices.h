// The services behind the buffer engines: the copy service (same-format
// copies, conversions cut into slices over a work queue, field weave,
// rotation), the clear service, and the combine and extract services. An
// engine prepares a request with a service's validation step on the
// caller's thread (which also locks the surfaces) and then runs its
// execution step; the engine unlocks the surfaces afterwards. A service
// serves one request at a time.
#ifndef QXBASE_QXCBUFFERSERVICES_H
#define QXBASE_QXCBUFFERSERVICES_H

#include <qxbase/qxcbufferenginecommon.h>
#include <qxbase/qxccombineextract.h>
#include <qxbase/qxcgenericcopy.h>
#include <qxbase/qxcrotate.h>
#include <qxbase/qxinterfaces.h>
#include <qxbase/qxunknown.h>

#include <cstdint>
#include <memory>

class CQxcSurface;
class CQxPerfTimer;
class CQxcSliceRunner;
class CQxcBufferCopyService;

enum EQxfBufferCopyServiceMainThreadType : int32_t {
    keQxfBufferCopyServiceMainThreadInvalid = 0,
    keQxfBufferCopyServiceMainThreadCopy = 1,         // converting copy in slices
    keQxfBufferCopyServiceMainThreadGenericCopy = 2,  // plain byte copy
    keQxfBufferCopyServiceMainThreadRotate = 3
};

// How a conversion of L lines is cut: slices of linesPerSlice lines run in
// parallel, and the remainder lines (if any) after slice 0 with its
// manager. In a field weave the counts are in lines of one field.
struct SQxcSlicePlan {
    uint32_t uiSlices;
    uint32_t uiLinesPerSlice;
    uint32_t uiRemainder;
};

// The surface objects and the parameters of one slice. Made once by the copy
// service and reused for every copy; a slice touches only its own manager.
class QXBASE_API alignas(64) CQxcHostSurfaceCopyManager {
public:
    static constexpr unsigned int kuiLineBytes = 49152;  // the 16-bit intermediate line
    enum ESet { keSetSource = 0, keSetSecondSource = 1, keSetDestination = 2, keSetSecondDestination = 3, keSetCount = 4 };

    CQxcHostSurfaceCopyManager(IQxFlexEnginePrivate* in_pEngine, CQxcBufferCopyService* in_pService);
    ~CQxcHostSurfaceCopyManager();

    // Makes the surface objects of every set from the surface factory, and
    // the three 16-bit intermediates.
    void CreateHostSurfaces();
    void ReleaseHostSurfaces();

    CQxcSurface* Surface(ESet in_eSet, EQxcSurfaceType in_eType) const;
    IQxFlexEnginePrivate* GetEngine() const { return m_pEngine; }
    CQxcBufferCopyService* GetService() const { return m_pService; }

private:
    friend class CQxcBufferCopyService;
    CQxcHostSurfaceCopyManager(const CQxcHostSurfaceCopyManager&) = delete;
    CQxcHostSurfaceCopyManager& operator=(const CQxcHostSurfaceCopyManager&) = delete;

    CQxcSurface* m_apSurfaces[keSetCount][kiQxcSurfaceTypeCount];
    CQxcSurface* m_pYCbCrA4224_16bits_Unshaped;
    CQxcSurface* m_pYCbCrA4224_16bits_Shaped;
    CQxcSurface* m_pYCbCr422_16bits;
    alignas(64) unsigned char m_aucLine[kuiLineBytes];
    IQxFlexEnginePrivate* m_pEngine;
    CQxcBufferCopyService* m_pService;

public:
    // Task parameters, set for each slice.
    uint32_t m_uiLines;
    uint32_t m_uiFirstSourceLine;
    uint32_t m_uiFirstDestinationLine;
    uint32_t m_uiChunks;
    // Bytes a line's conversion reads from the source's first block on, and
    // writes; a line whose blocks would pass the caller's buffer is staged.
    uint32_t m_uiReadBytes;
    uint32_t m_uiWriteBytes;
    bool m_bFieldWeave;  // each slice line is done in both fields
    uint32_t m_uiErrors;

private:
    // Lines staged for the last lines of a picture, whose whole blocks would
    // reach past the caller's buffer; made when first needed.
    unsigned char* m_pucScratch;
    size_t m_uScratchBytes;
};

class QXBASE_API CQxcBufferCopyService : public CQxLightUnknown {
public:
    static constexpr unsigned int kuiMaxSlices = 260;

    CQxcBufferCopyService();
    ~CQxcBufferCopyService() override;

    // Makes the slice managers, the byte mover and the rotator once.
    HRESULT OpenServices(IQxFlexEnginePrivate* in_pEngine);
    HRESULT CloseServices();

    // Checks a copy request in a fixed order of rules, locks both surfaces
    // and fills the copy parameters. On failure after the lock both surfaces
    // are unlocked again. out_rbPlainCopy tells that no conversion is needed.
    HRESULT ValidateAndInitializeCopyParams(IQxSurface* in_pSource, SQxRect* in_psSourceRect,
                                            IQxSurface* in_pDestination, SQxRect* in_psDestinationRect,
                                            EQxFilterMode in_eFilter, bool& out_rbPlainCopy);
    // The same for a rotation: both surfaces 8-bit YUYV, even widths,
    // heights and pitches, no more strips than the rotator has records, and
    // a destination that holds the turned picture. A refusal writes nothing
    // and leaves both surfaces unlocked.
    HRESULT validateAndInitializeRotateParams(IQxSurface* in_pSource, IQxSurface* in_pDestination,
                                              EQxRotationAngle in_eAngle);

    // 1: converting copy, 2: plain copy, 3: rotation; other kinds give
    // 0x89998044 and do nothing. GetErrorCount afterwards tells whether
    // slices failed.
    HRESULT MainThreadCaller(EQxfBufferCopyServiceMainThreadType in_eKind);
    HRESULT CopyMainThread();
    HRESULT GenericCopyThread();
    HRESULT GenericRotateThread();

    // Converts the slice the manager is set up for (on whichever thread takes
    // the slice: the calling one or a pool thread).
    bool ConcurrencyCopyData(CQxcHostSurfaceCopyManager* in_pManager);

    // The engine's options (kept by pointer): the colorimetry assumed for RGB
    // surfaces that carry none.
    void SetConversionOptions(const SQxConversionOptions* in_psOptions) { m_psOptions = in_psOptions; }

    uint32_t GetErrorCount() const { return m_uiErrorCount; }
    uint32_t GetSliceCount() const { return m_uiSliceCount; }
    // Unlocks the surfaces of the validated request and forgets them.
    void UnlockSurfaces();
    // The surfaces of the validated request (locked until the engine
    // unlocks them).
    IQxSurface* GetSource() const { return m_pSource; }
    IQxSurface* GetDestination() const { return m_pDestination; }
    const GenericRotate* GetRotator() const { return m_pRotator.get(); }

    static SQxcSlicePlan PlanSlices(uint32_t in_uiLines, bool in_bFieldWeave);

    // ms_abSupportedHostSurfaceCopy[source x 37 + destination].
    static bool ms_abSupportedHostSurfaceCopy[kiQxcSurfaceTypeCount * kiQxcSurfaceTypeCount];
    static void InitializeSupportedCopy();
    static bool IsSupportedCopy(EQxcSurfaceType in_eSource, EQxcSurfaceType in_eDestination);

    static bool isConversionRgb10AndYuv(EQxcSurfaceType in_eSourceType, EQxcColorRange in_eSourceRange,
                                        EQxcSurfaceType in_eDestinationType, EQxcColorRange in_eDestinationRange);
    static HRESULT validateWidthModuloFormat(EQxSurfaceFormat in_eFormat, int in_iWidth, int in_iBitCount);

    void _SetupTaskParametersRgbYuv(CQxcHostSurfaceCopyManager* in_pManager, unsigned int in_uiLinesPerSlice,
                                    unsigned int in_uiSliceIndex, unsigned int in_uiFirstDestinationLine,
                                    unsigned int in_uiSourceHeight, unsigned int in_uiDestinationHeight);
    void _SetupTaskParametersYuvYuv(CQxcHostSurfaceCopyManager* in_pManager, unsigned int in_uiLinesPerSlice,
                                    unsigned int in_uiSliceIndex, unsigned int in_uiFirstDestinationLine);

private:
    friend class CQxcHostSurfaceCopyManager;

    // The parameters of the validated copy.
    struct SCopyParams {
        EQxcSurfaceType eSourceType, eDestinationType;
        EQxColorimetry eSourceColorimetry, eDestinationColorimetry;
        EQxcColorRange eSourceRange, eDestinationRange;
        unsigned char* pucSource;
        unsigned char* pucDestination;
        int32_t iSourcePitch, iDestinationPitch;
        uint32_t uiSourceBufferSize, uiDestinationBufferSize;
        uint32_t uiSourceWidth, uiSourceHeight, uiDestinationWidth, uiDestinationHeight;
        uint32_t uiSourceLeft, uiDestinationLeft;  // rounded down to 16 pixels
        uint32_t uiFirstSourceLine, uiFirstDestinationLine;
        uint32_t uiCopyWidth, uiLines;
        uint32_t uiChunks;
        uint32_t uiLineBytes;  // plain copies
        uint32_t uiSourceOffset, uiDestinationOffset;  // plain copies, bytes
        EQxRotationAngle eAngle;
        EQxColorimetry eRgbColorimetry;  // of the RGB side, as the conversion uses it
        bool bFilter;
        bool bKeySource, bKeyDestination;
        bool bSameType, bFieldWeave, bEvenLinesFromFirstField, bStridedCopy, bRgb10WithYuv;
    };

    // One field (or the whole picture) of a surface as the slices see it.
    struct SPlane {
        unsigned char* pucBase;
        int64_t i64Pitch;
        uint32_t uiHeight;
        uint64_t uBytes;       // of the caller's buffer from pucBase on
        uint32_t uiSafeLines;  // leading lines whose whole blocks stay inside the buffer
    };

    void ResetCopyParams();
    void UnlockBoth();
    HRESULT Refuse(HRESULT in_hrError);
    // Locks the source for reading and the destination for writing, and
    // takes their buffers; a failure leaves both unlocked.
    HRESULT LockBoth(IQxSurface* in_pSource, IQxSurface* in_pDestination);
    bool IsYuvPath() const;
    // A route exists for the validated pair and the slices have its surfaces.
    bool CanConvert() const;
    EQxcSurfaceType SurfaceTypeOf(EQxcSurfaceType in_eType) const;
    void PreparePlanes();
    void SetupSlice(CQxcHostSurfaceCopyManager* in_pManager, unsigned int in_uiLines, unsigned int in_uiSourceLine,
                    unsigned int in_uiDestinationLine);
    bool InitializeOn(CQxcSurface* in_pSurface, bool in_bSource, unsigned char* in_pucBuffer, uint32_t in_uiWidth,
                      uint32_t in_uiHeight, int64_t in_i64Pitch) const;
    bool ConvertLine(CQxcHostSurfaceCopyManager* in_pManager, unsigned int in_uiField, unsigned int in_uiSourceLine,
                     unsigned int in_uiDestinationLine);
    bool Convert(CQxcHostSurfaceCopyManager* in_pManager, CQxcSurface* in_pSource, unsigned int in_uiSourceX,
                 unsigned int in_uiSourceY, CQxcSurface* in_pDestination, unsigned int in_uiDestinationX,
                 unsigned int in_uiDestinationY);
    // Sets up and converts slice in_uiSlice of the copy in progress (slice 0
    // then the remainder, on manager 0); run by the slice runner.
    static void RunSlice(void* in_pService, uint32_t in_uiSlice);
    void SetUpAndConvert(uint32_t in_uiSlice);

    IQxFlexEnginePrivate* m_pEngine;
    std::unique_ptr<CQxcGenericCopy> m_pGenericCopy;
    GenericRotateFactory m_oRotateFactory;
    std::unique_ptr<GenericRotate> m_pRotator;
    // The timing record of rotations, in microseconds.
    CQxPerfTimer* m_pPerfTimer;
    uint64_t m_ui64RotateMin, m_ui64RotateMax, m_ui64RotateTotal, m_ui64RotateCount;
    CQxcHostSurfaceCopyManager** m_ppManagers;
    CQxcSliceRunner* m_pRunner;
    SCopyParams m_sParams;
    // The cut of the copy in progress, and the lines its slices count from.
    SQxcSlicePlan m_sPlan;
    uint32_t m_uiPlanSourceLine, m_uiPlanDestinationLine;
    bool m_bPlanYuv;
    SPlane m_asSourcePlanes[2];
    SPlane m_asDestinationPlanes[2];
    uint32_t m_uiReadBytes;   // bytes a line's conversion reads from its first block on
    uint32_t m_uiWriteBytes;  // and writes
    int32_t m_iRoute;
    const SQxConversionOptions* m_psOptions;
    IQxSurface* m_pSource;
    IQxSurface* m_pDestination;
    uint32_t m_uiSliceCount;
    uint32_t m_uiErrorCount;
};

// --- Clear -------------------------------------------------------------------

// Fills a whole surface with a named colour. Every surface type with a fill
// can be cleared: the block YUV formats with the colour's YUV value, the RGB
// formats with its RGB value (video or graphics levels after the surface),
// and the alpha formats with its alpha. One line is filled by the surface's
// own kernel and then streamed into every line of the picture by slices on a
// work queue, so that nothing is written past a line's own bytes.
//
// Ancillary-data surfaces ("Quelto Ancillary Data") are cleared by giving
// them the default ancillary-data header (NQxfFlexEngineHelper::
// InsertDefaultQadHeader: the buffer zeroed, one header at its start and,
// for two fields stored back to back, one at its middle). The service
// accepts them and NeedsDefaultQadHeader tells the engine to write that
// header; the service's own execution writes nothing for them.
class QXBASE_API CQxcBufferClearService : public CQxLightUnknown {
public:
    CQxcBufferClearService();
    ~CQxcBufferClearService() override;

    HRESULT OpenServices();
    HRESULT CloseServices();

    // Checks the surface, colour (1 to 6) and alpha (0 to 1), locks the
    // surface and prepares the fill. A surface type without a fill gives
    // 0x89998044, a bad colour or alpha E_INVALIDARG, a picture that does not
    // lie inside its buffer 0x89998038; the surface is left unlocked on
    // failure.
    HRESULT ValidateAndInitializeClearParams(IQxSurface* in_pSurface, EQxColor in_eColor, float in_fAlpha);
    HRESULT ClearMainThread();
    // Unlocks the surface of the validated clear.
    void UnlockSurface();

    bool NeedsDefaultQadHeader() const { return m_bDefaultQadHeader; }
    unsigned char* GetBuffer() const { return m_pucBuffer; }
    uint32_t GetBufferSize() const { return m_uiBufferSize; }
    EQxPolarity GetPolarity() const { return m_ePolarity; }
    IQxSurface* GetSurface() const { return m_pSurface; }
    uint32_t GetErrorCount() const { return m_uiErrorCount; }

    // Lines of one slice of the clear.
    struct SSlice {
        uint32_t uiFirstLine;
        uint32_t uiLines;
    };

private:
    bool FillPattern(EQxcSurfaceType in_eType, uint32_t in_uiWidth, EQxcColorRange in_eRange,
                     EQxColorimetry in_eColorimetry, const SQxcYuvaPixel& in_rsYuva, const SQxcRGBAPixel& in_rsRgba);
    // Streams the pattern into the lines of slice in_uiSlice.
    static void ClearSlice(void* in_pService, uint32_t in_uiSlice);

    IQxSurface* m_pSurface;
    unsigned char* m_pucBuffer;
    uint32_t m_uiBufferSize;
    int32_t m_iPitch;
    uint32_t m_uiHeight;
    uint32_t m_uiLineBytes;
    EQxPolarity m_ePolarity;
    bool m_bDefaultQadHeader;
    unsigned char* m_pucPattern;  // one filled line
    size_t m_uPatternBytes;
    CQxcSurface* m_apPatternSurfaces[kiQxcSurfaceTypeCount];
    std::unique_ptr<CQxcGenericCopy> m_pGenericCopy;
    CQxcSliceRunner* m_pRunner;
    SSlice m_asSlices[CQxcBufferCopyService::kuiMaxSlices + 1];
    uint32_t m_uiErrorCount;
};

// --- Combine and extract -----------------------------------------------------

// Chunks of a line of fill or key (types 0 and 11) and of a combined line
// (types 1, 2, 4 and 5), and the padding after them in a pitch (negative
// when the chunks overrun it). Other types give 0.
QXBASE_API int getChunkCount(EQxcSurfaceType in_eType, int in_iBytesPerLine);
QXBASE_API int getExtractChunkCount(EQxcSurfaceType in_eType, int in_iBytesPerLine);
QXBASE_API int getPadInBytesPerLine(EQxcSurfaceType in_eType, int in_iPitch, int in_iChunks);
QXBASE_API int getExtractPadInBytesPerLine(EQxcSurfaceType in_eType, int in_iPitch, int in_iChunks);

// What the combine and the extract service share: three surfaces of one
// size (fill, key and combined), locked by validation, and the kernel run
// over slices of 16 lines on a work queue.
class QXBASE_API CQxcBufferVideoAndKeyService : public CQxLightUnknown {
public:
    ~CQxcBufferVideoAndKeyService() override;

    HRESULT OpenServices();
    HRESULT CloseServices();
    void UnlockSurfaces();
    uint32_t GetErrorCount() const { return m_uiErrorCount; }
    uint32_t GetSliceCount() const { return m_uiSliceCount; }

    // One slice: the kernel's arguments.
    struct SSlice {
        PFNQxcCombineExtractKernel pfnKernel;
        unsigned char* a;
        unsigned char* b;
        unsigned char* c;
        int iLines, iChunks, iSkipC, iSkipA, iSkipB;
    };

protected:
    // The three surfaces' roles: 0 fill, 1 key, 2 combined.
    struct SPicture {
        IQxSurface* pSurface;
        unsigned char* pucBuffer;
        int32_t iPitch;
        uint32_t uiSize;
        EQxcSurfaceType eType;
        EQxColorimetry eColorimetry;
        SQxSurfaceDescription sDescription;
    };

    CQxcBufferVideoAndKeyService(const wchar_t* in_pwszName);
    // Maps and checks the three surfaces (fill and key types equal and
    // in_eFillType's family), locks them (reading the inputs, writing the
    // outputs) and prepares the slices with the kernel.
    HRESULT Prepare(IQxSurface* in_pFill, IQxSurface* in_pKey, IQxSurface* in_pCombined, bool in_bCombine,
                    PFNQxcCombineExtractKernel in_pfnKernel);
    HRESULT RunSlices();

    SPicture m_asPictures[3];

private:
    void Unlock(unsigned int in_uiCount);
    static void RunSlice(void* in_pService, uint32_t in_uiSlice);

    CQxcSliceRunner* m_pRunner;
    SSlice* m_psSlices;
    uint32_t m_uiSliceCount;
    uint32_t m_uiErrorCount;
    uint32_t m_uiLocked;
};

class QXBASE_API CQxcBufferCombineVideoAndKeyService : public CQxcBufferVideoAndKeyService {
public:
    CQxcBufferCombineVideoAndKeyService();
    ~CQxcBufferCombineVideoAndKeyService() override;

    // Fill and key 8-bit YUYV into 8-bit 4:2:2:4, or v210 into 10-bit
    // 4:2:2:4 (shaped or not), all of one size.
    HRESULT ValidateAndInitializeParams(IQxSurface* in_pVideo, IQxSurface* in_pKey, IQxSurface* in_pDestination,
                                        bool in_bAlphaScaling);
    HRESULT CombineThread();
    PFNQxcCombineExtractKernel getCombineFunction(EQxcSurfaceType in_eFillType, bool in_bAlphaScaling) const;
};

class QXBASE_API CQxcBufferExtractVideoAndKeyService : public CQxcBufferVideoAndKeyService {
public:
    CQxcBufferExtractVideoAndKeyService();
    ~CQxcBufferExtractVideoAndKeyService() override;

    HRESULT ValidateAndInitializeParams(IQxSurface* in_pSource, IQxSurface* in_pVideo, IQxSurface* in_pKey);
    HRESULT ExtractThread();
    PFNQxcCombineExtractKernel getExtractFunction(EQxcSurfaceType in_eCombinedType) const;
};

// The lossless 8-bit exchange between 2VUY and YUYV is allowed even where a
// surface forbids conversions, provided the buffer is 16-byte aligned.
QXBASE_API bool isSpecialCase2VUYtoYUYVHost(unsigned char* in_pucBuffer, const SQxSurfaceDescription& in_rsSource,
                                            const SQxSurfaceDescription& in_rsDestination);
QXBASE_API bool isSpecialCaseYUYVto2VUYHost(unsigned char* in_pucBuffer, const SQxSurfaceDescription& in_rsSource,
                                            const SQxSurfaceDescription& in_rsDestination);

#endif  // QXBASE_QXCBUFFERSERVICES_H
