// The copy service: validation of a request, the plain byte copy, the
// rotation, and the converting copy cut into slices on a work queue.
#include <qxbase/qxcbufferservices.h>
#include <qxbase/qxerrors.h>
#include <qxbase/qxcsurfacefactory.h>
#include <qxbase/qxperftimer.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "bufferengine/qxccopyroutes.h"
#include "bufferengine/qxclogger.h"
#include "bufferengine/qxcslicerunner.h"

namespace {

bool IsFramePolarity(EQxPolarity in_ePolarity)
{
    return in_ePolarity == keQxPolarityInterlaced || in_ePolarity == keQxPolarityProgressive ||
           in_ePolarity == keQxPolarityBackToBack;
}

bool IsFieldPolarity(EQxPolarity in_ePolarity)
{
    return in_ePolarity == keQxPolarityF0 || in_ePolarity == keQxPolarityF1;
}

// A picture of width x height whose lines are pitch bytes apart lies inside
// size bytes.
bool PictureFitsBuffer(EQxcSurfaceType in_eType, uint32_t in_uiWidth, uint32_t in_uiHeight, int32_t in_iPitch,
                       uint32_t in_uiSize)
{
    if (in_uiHeight == 0 || in_uiWidth == 0) return true;
    const uint64_t uLine = NQxcCopyRoutes::ByteEndOfPixels(in_eType, in_uiWidth);
    if (in_iPitch <= 0 || uLine > uint64_t(in_iPitch)) return false;
    return uint64_t(in_uiHeight - 1) * uint32_t(in_iPitch) + uLine <= in_uiSize;
}

// Microseconds from the process clock: counter ticks over ticks per
// millisecond, or real-time nanoseconds where the counter is not invariant.
uint64_t NowMicroseconds(CQxPerfTimer* in_pTimer)
{
    const uint64_t ui64Ticks = in_pTimer->GetTickCount();
    if (!g_bInvariantTSC) return ui64Ticks / 1000;
    const uint64_t ui64PerMillisecond = in_pTimer->GetProcessorSpeed();
    return ui64Ticks / ui64PerMillisecond * 1000 + ui64Ticks % ui64PerMillisecond * 1000 / ui64PerMillisecond;
}

}  // namespace

// --- Supported copies -------------------------------------------------------

bool CQxcBufferCopyService::ms_abSupportedHostSurfaceCopy[kiQxcSurfaceTypeCount * kiQxcSurfaceTypeCount];

void CQxcBufferCopyService::InitializeSupportedCopy()
{
    struct SRow {
        int iSource;
        int aiDestinations[9];  // ended by -1
    };
    // The asymmetries are deliberate: each row lists what its surfaces can
    // reach in one or two hops through the 16-bit intermediates.
    static const SRow s_asRows[] = {
        {0, {1, 3, 4, 11, 12, 13, 28, 32, -1}}, {1, {0, 3, 4, 13, 26, 28, 32, -1}},
        {2, {0, 1, 3, 4, 14, -1}},              {3, {0, 1, 4, 11, 13, 28, 32, -1}},
        {4, {0, 1, 3, 13, 28, 32, -1}},         {5, {0, 1, 3, 4, 14, -1}},
        {10, {0, 1, 2, 3, 4, 5, -1}},           {11, {0, 3, 12, 13, -1}},
        {12, {0, 11, -1}},                      {13, {0, 1, 3, 4, 11, -1}},
        {14, {2, 5, -1}},                       {22, {13, -1}},
        {26, {1, -1}},                          {28, {0, 1, 3, 4, -1}},
        {34, {13, -1}},                         {36, {13, -1}},
    };
    std::memset(ms_abSupportedHostSurfaceCopy, 0, sizeof(ms_abSupportedHostSurfaceCopy));
    for (int i = 0; i < kiQxcSurfaceTypeCount; ++i) ms_abSupportedHostSurfaceCopy[i * kiQxcSurfaceTypeCount + i] = true;
    for (const SRow& r : s_asRows)
        for (int j = 0; r.aiDestinations[j] >= 0; ++j)
            ms_abSupportedHostSurfaceCopy[r.iSource * kiQxcSurfaceTypeCount + r.aiDestinations[j]] = true;
}

bool CQxcBufferCopyService::IsSupportedCopy(EQxcSurfaceType in_eSource, EQxcSurfaceType in_eDestination)
{
    if (in_eSource < 0 || in_eSource >= kiQxcSurfaceTypeCount || in_eDestination < 0 ||
        in_eDestination >= kiQxcSurfaceTypeCount)
        return false;
    return ms_abSupportedHostSurfaceCopy[in_eSource * kiQxcSurfaceTypeCount + in_eDestination];
}

namespace {
// Filled when the library is loaded, before any engine can exist.
struct SSupportedCopyInitializer {
    SSupportedCopyInitializer() { CQxcBufferCopyService::InitializeSupportedCopy(); }
} g_sSupportedCopyInitializer;
}  // namespace

// --- Small checks -----------------------------------------------------------

bool CQxcBufferCopyService::isConversionRgb10AndYuv(EQxcSurfaceType in_eSourceType, EQxcColorRange in_eSourceRange,
                                                    EQxcSurfaceType in_eDestinationType,
                                                    EQxcColorRange in_eDestinationRange)
{
    const bool bSource28 = in_eSourceType == keQxcSurfaceTypeA2R10G10B10_Unshaped;
    const bool bDestination28 = in_eDestinationType == keQxcSurfaceTypeA2R10G10B10_Unshaped;
    if (!bSource28 && !bDestination28 && in_eSourceType != keQxcSurfaceTypeABGR_16bits_Unshaped &&
        in_eDestinationType != keQxcSurfaceTypeABGR_16bits_Unshaped)
        return false;
    if (bSource28) return in_eDestinationRange == keQxcColorRangeYuv;
    if (bDestination28) return in_eSourceRange == keQxcColorRangeYuv;
    return true;
}

HRESULT CQxcBufferCopyService::validateWidthModuloFormat(EQxSurfaceFormat in_eFormat, int in_iWidth,
                                                         int in_iBitCount)
{
    if (in_eFormat == keQxSurfaceFormatYUYV422 && in_iBitCount == 8)
        return in_iWidth % 4 == 0 ? S_OK : QX_E_INVALID_WIDTH;
    if ((in_eFormat == keQxSurfaceFormatYUYV422 && in_iBitCount == 10) || in_eFormat == keQxSurfaceFormatV210)
        return in_iWidth % 16 == 0 ? S_OK : QX_E_INVALID_WIDTH;
    return S_OK;
}

bool isSpecialCase2VUYtoYUYVHost(unsigned char* in_pucBuffer, const SQxSurfaceDescription& in_rsSource,
                                 const SQxSurfaceDescription& in_rsDestination)
{
    return in_rsSource.eSurfaceFormat == keQxSurfaceFormat2VUY &&
           in_rsDestination.eSurfaceFormat == keQxSurfaceFormatYUYV422 &&
           (reinterpret_cast<uintptr_t>(in_pucBuffer) & 15) == 0;
}

bool isSpecialCaseYUYVto2VUYHost(unsigned char* in_pucBuffer, const SQxSurfaceDescription& in_rsSource,
                                 const SQxSurfaceDescription& in_rsDestination)
{
    return in_rsSource.eSurfaceFormat == keQxSurfaceFormatYUYV422 &&
           in_rsDestination.eSurfaceFormat == keQxSurfaceFormat2VUY &&
           (reinterpret_cast<uintptr_t>(in_pucBuffer) & 15) == 0;
}

// --- Slicing ----------------------------------------------------------------

SQxcSlicePlan CQxcBufferCopyService::PlanSlices(uint32_t in_uiLines, bool in_bFieldWeave)
{
    SQxcSlicePlan s{};
    const uint32_t uiSixteens = in_uiLines / 16;
    if (uiSixteens <= kuiMaxSlices) {
        s.uiSlices = uiSixteens;
        s.uiLinesPerSlice = 16;
        s.uiRemainder = in_uiLines - 16 * uiSixteens;
    } else {
        // Tall pictures: the fewest lines per slice that leave a remainder no
        // larger than one slice.
        s.uiSlices = kuiMaxSlices;
        s.uiLinesPerSlice = in_uiLines / kuiMaxSlices;
        s.uiRemainder = in_uiLines - kuiMaxSlices * s.uiLinesPerSlice;
        while (s.uiRemainder > s.uiLinesPerSlice) {
            --s.uiSlices;
            s.uiLinesPerSlice = in_uiLines / s.uiSlices;
            s.uiRemainder = in_uiLines % s.uiSlices;
        }
    }
    if (in_bFieldWeave) {
        // A slice does its lines in both fields. The remainder is counted in
        // lines of one field, so that every frame line is written once.
        s.uiLinesPerSlice /= 2;
        s.uiRemainder = in_uiLines / 2 - s.uiSlices * s.uiLinesPerSlice;
    }
    return s;
}

// --- Life -------------------------------------------------------------------

CQxcBufferCopyService::CQxcBufferCopyService()
    : CQxLightUnknown(L"BufferCopyService", nullptr),
      m_pEngine(nullptr),
      m_pPerfTimer(CQxPerfTimer::GetTimerClass()),
      m_ui64RotateMin(65535),
      m_ui64RotateMax(0),
      m_ui64RotateTotal(0),
      m_ui64RotateCount(0),
      m_ppManagers(nullptr),
      m_pRunner(nullptr),
      m_sParams{},
      m_sPlan{},
      m_uiPlanSourceLine(0),
      m_uiPlanDestinationLine(0),
      m_bPlanYuv(false),
      m_asSourcePlanes{},
      m_asDestinationPlanes{},
      m_uiReadBytes(0),
      m_uiWriteBytes(0),
      m_iRoute(NQxcCopyRoutes::keRouteNone),
      m_psOptions(nullptr),
      m_pSource(nullptr),
      m_pDestination(nullptr),
      m_uiSliceCount(0),
      m_uiErrorCount(0)
{
    ResetCopyParams();
}

CQxcBufferCopyService::~CQxcBufferCopyService() { CloseServices(); }

HRESULT CQxcBufferCopyService::OpenServices(IQxFlexEnginePrivate* in_pEngine)
{
    CloseServices();
    m_pEngine = in_pEngine;
    try {
        m_ppManagers = new CQxcHostSurfaceCopyManager*[kuiMaxSlices]();
        for (unsigned int i = 0; i < kuiMaxSlices; ++i) {
            m_ppManagers[i] = new CQxcHostSurfaceCopyManager(in_pEngine, this);
            m_ppManagers[i]->CreateHostSurfaces();
        }
        m_pGenericCopy.reset(CQxcGenericCopyFactory::CreateGenericCopy());
        m_pRotator = m_oRotateFactory.CreateGenericRotate();
        // One queue for the life of the service: the copies it serves come
        // one at a time, and making it once keeps a copy free of set-up.
        m_pRunner = new CQxcSliceRunner("BufferCopyService");
    } catch (...) {
        CloseServices();
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

HRESULT CQxcBufferCopyService::CloseServices()
{
    delete m_pRunner;
    m_pRunner = nullptr;
    if (m_ppManagers) {
        for (unsigned int i = 0; i < kuiMaxSlices; ++i) delete m_ppManagers[i];
        delete[] m_ppManagers;
        m_ppManagers = nullptr;
    }
    m_pGenericCopy.reset();
    m_pRotator.reset();
    return S_OK;
}

// --- Validation -------------------------------------------------------------

void CQxcBufferCopyService::ResetCopyParams()
{
    m_sParams = SCopyParams{};
    m_sParams.eSourceType = m_sParams.eDestinationType = keQxcSurfaceTypeInvalid;
    m_sParams.bStridedCopy = true;
    m_sParams.bEvenLinesFromFirstField = true;
    m_pSource = m_pDestination = nullptr;
    m_iRoute = NQxcCopyRoutes::keRouteNone;
}

void CQxcBufferCopyService::UnlockBoth()
{
    if (m_pSource) m_pSource->UnlockBuffer();
    if (m_pDestination) m_pDestination->UnlockBuffer();
}

void CQxcBufferCopyService::UnlockSurfaces()
{
    UnlockBoth();
    m_pSource = m_pDestination = nullptr;
}

HRESULT CQxcBufferCopyService::Refuse(HRESULT in_hrError)
{
    UnlockBoth();
    m_pSource = m_pDestination = nullptr;
    return in_hrError;
}

HRESULT CQxcBufferCopyService::LockBoth(IQxSurface* in_pSource, IQxSurface* in_pDestination)
{
    SCopyParams& p = m_sParams;
    void* pSourceBuffer = nullptr;
    void* pDestinationBuffer = nullptr;
    if (HRESULT hr = in_pSource->LockBuffer(keQxBufferAccessRead, &pSourceBuffer, &p.iSourcePitch,
                                            &p.uiSourceBufferSize))
        return hr;
    m_pSource = in_pSource;
    if (HRESULT hr = in_pDestination->LockBuffer(keQxBufferAccessWrite, &pDestinationBuffer, &p.iDestinationPitch,
                                                 &p.uiDestinationBufferSize))
        return Refuse(hr);
    m_pDestination = in_pDestination;
    p.pucSource = static_cast<unsigned char*>(pSourceBuffer);
    p.pucDestination = static_cast<unsigned char*>(pDestinationBuffer);
    return p.pucSource && p.pucDestination ? S_OK : Refuse(QX_E_INVALID_POINTER);
}

HRESULT CQxcBufferCopyService::ValidateAndInitializeCopyParams(IQxSurface* in_pSource, SQxRect* in_psSourceRect,
                                                               IQxSurface* in_pDestination,
                                                               SQxRect* in_psDestinationRect,
                                                               EQxFilterMode in_eFilter, bool& out_rbPlainCopy)
{
    ResetCopyParams();
    out_rbPlainCopy = false;
    SCopyParams& p = m_sParams;

    if (!in_pSource || !in_pDestination) return QX_E_INVALID_POINTER;
    SQxSurfaceDescription sSource{}, sDestination{};
    sSource.size = sDestination.size = sizeof(SQxSurfaceDescription);
    if (HRESULT hr = in_pSource->GetSurfaceDescription(&sSource)) return hr;
    if (HRESULT hr = in_pDestination->GetSurfaceDescription(&sDestination)) return hr;
    if (!in_psSourceRect || !in_psDestinationRect) return QX_E_INVALID_POINTER;

    SQxRect sSourceRect, sDestinationRect;
    CQxcBufferEngineCommon::GetParamsFromQxRect(*in_psSourceRect, &sSourceRect);
    CQxcBufferEngineCommon::GetParamsFromQxRect(*in_psDestinationRect, &sDestinationRect);
    for (const SQxRect* r : {&sSourceRect, &sDestinationRect})
        if (r->left > r->right || r->top > r->bottom || r->left < 0 || r->top < 0) return QX_E_INVALID_GEOMETRY;

    // The copy works in 16-pixel chunks from a start taken down to one.
    const uint32_t uiSourceLeft = uint32_t(sSourceRect.left) & ~15u;
    const uint32_t uiDestinationLeft = uint32_t(sDestinationRect.left) & ~15u;
    const uint32_t uiSourceWidth = uint32_t(sSourceRect.right - sSourceRect.left);
    const uint32_t uiSourceHeight = uint32_t(sSourceRect.bottom - sSourceRect.top);
    const uint32_t uiDestinationWidth = uint32_t(sDestinationRect.right - sDestinationRect.left);
    const uint32_t uiDestinationHeight = uint32_t(sDestinationRect.bottom - sDestinationRect.top);
    if (uint64_t(uiSourceLeft) + uiSourceWidth > sSource.ulWidth || uint32_t(sSourceRect.bottom) > sSource.ulHeight ||
        uint64_t(uiDestinationLeft) + uiDestinationWidth > sDestination.ulWidth ||
        uint32_t(sDestinationRect.bottom) > sDestination.ulHeight)
        return QX_E_INVALID_GEOMETRY;

    // Equal sizes, or a frame and one of its fields.
    if (uiSourceWidth != uiDestinationWidth) return QX_E_INVALID_GEOMETRY;
    if (uiSourceHeight != uiDestinationHeight) {
        const bool bFrameToField = uint64_t(uiSourceHeight) == 2ull * uiDestinationHeight &&
                                   IsFramePolarity(sSource.ePolarity) && IsFieldPolarity(sDestination.ePolarity);
        const bool bFieldToFrame = uint64_t(uiDestinationHeight) == 2ull * uiSourceHeight &&
                                   IsFramePolarity(sDestination.ePolarity) && IsFieldPolarity(sSource.ePolarity);
        if (!bFrameToField && !bFieldToFrame) return QX_E_INVALID_GEOMETRY;
    }
    p.uiCopyWidth = uiSourceWidth;
    p.uiLines = std::min(uiSourceHeight, uiDestinationHeight);
    p.uiChunks = (p.uiCopyWidth + 15) / 16;
    p.uiSourceLeft = uiSourceLeft;
    p.uiDestinationLeft = uiDestinationLeft;
    p.uiFirstSourceLine = uint32_t(sSourceRect.top);
    p.uiFirstDestinationLine = uint32_t(sDestinationRect.top);
    p.uiSourceWidth = sSource.ulWidth;
    p.uiSourceHeight = sSource.ulHeight;
    p.uiDestinationWidth = sDestination.ulWidth;
    p.uiDestinationHeight = sDestination.ulHeight;
    p.bFilter = in_eFilter == keQxFilterModeFiltered;

    // From here on both surfaces are locked; every refusal unlocks them.
    if (HRESULT hr = LockBoth(in_pSource, in_pDestination)) return hr;
    CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(sSource, &p.eSourceType, &p.eSourceColorimetry,
                                                              &p.eSourceRange);
    CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(sDestination, &p.eDestinationType,
                                                              &p.eDestinationColorimetry, &p.eDestinationRange);

    // The 16-bit intermediate line bounds the width of a YUV conversion.
    p.bRgb10WithYuv =
        isConversionRgb10AndYuv(p.eSourceType, p.eSourceRange, p.eDestinationType, p.eDestinationRange);
    if ((p.eSourceRange == keQxcColorRangeYuv && p.eDestinationRange == keQxcColorRangeYuv) || p.bRgb10WithYuv) {
        if (uint64_t(p.uiCopyWidth) * 6 > CQxcHostSurfaceCopyManager::kuiLineBytes)
            return Refuse(QX_E_INVALID_GEOMETRY);
    } else if (HRESULT hr = validateWidthModuloFormat(sDestination.eSurfaceFormat, int(p.uiCopyWidth),
                                                      int(sDestination.ulComponentBitCount))) {
        return Refuse(hr);
    }

    const bool bOpaque =
        p.eSourceType == keQxcSurfaceTypeOpaqueData || p.eDestinationType == keQxcSurfaceTypeOpaqueData;
    if (bOpaque) {
        const bool bSameFormat = sSource.eSurfaceFormat == sDestination.eSurfaceFormat;
        const bool bFieldPair = (sSource.eSurfaceFormat == keQxSurfaceFormatMPEG2IBPField1 &&
                                 sDestination.eSurfaceFormat == keQxSurfaceFormatMPEG2IBPField2) ||
                                (sSource.eSurfaceFormat == keQxSurfaceFormatDV25Field1 &&
                                 sDestination.eSurfaceFormat == keQxSurfaceFormatDV25Field2);
        if (!bSameFormat && !bFieldPair) return Refuse(QX_E_INCOMPATIBLE_OPAQUE_FORMATS);
        if (p.uiSourceBufferSize > p.uiDestinationBufferSize) return Refuse(QX_E_INVALID_GEOMETRY);
    }

    if (p.eSourceColorimetry != p.eDestinationColorimetry &&
        (p.eSourceColorimetry > keQxColorimetryITUR_BT_2020_Linear ||
         p.eDestinationColorimetry > keQxColorimetryITUR_BT_2020_Linear))
        return Refuse(QX_E_COLORIMETRY_MISMATCH);

    if (!IsSupportedCopy(p.eSourceType, p.eDestinationType)) return Refuse(QX_E_CONVERSION_NOT_ALLOWED);
    const bool bTypeChange = p.eSourceType != p.eDestinationType;
    const bool bV210And2Vuy = (p.eSourceType == keQxcSurfaceTypeV210_10bits &&
                               p.eDestinationType == keQxcSurfaceType2VUY_8bits) ||
                              (p.eSourceType == keQxcSurfaceType2VUY_8bits &&
                               p.eDestinationType == keQxcSurfaceTypeV210_10bits);
    if (!bV210And2Vuy && bTypeChange) {
        // A surface whose producer forbids conversions allows only the
        // lossless exchange between 8-bit YUYV and 2VUY.
        if (p.eSourceRange == keQxcColorRangeYuv && p.eSourceType != keQxcSurfaceTypeOpaqueData &&
            !sSource.bAllowHostConversion && !isSpecialCase2VUYtoYUYVHost(p.pucSource, sSource, sDestination))
            return Refuse(QX_E_CONVERSION_NOT_ALLOWED);
        if (p.eDestinationRange == keQxcColorRangeYuv && p.eDestinationType != keQxcSurfaceTypeOpaqueData &&
            !sDestination.bAllowHostConversion &&
            !isSpecialCaseYUYVto2VUYHost(p.pucDestination, sSource, sDestination))
            return Refuse(QX_E_CONVERSION_NOT_ALLOWED);
        if (p.eDestinationType == keQxcSurfaceTypeV210_10bits && !sSource.bAllowHostConversion)
            return Refuse(QX_E_CONVERSION_NOT_ALLOWED);
    }

    p.bSameType = !bTypeChange;
    // Opposite single fields whose producers allow it go through the
    // converting path, provided one exists for the type.
    if (p.bSameType &&
        ((sSource.ePolarity == keQxPolarityF0 && sDestination.ePolarity == keQxPolarityF1) ||
         (sSource.ePolarity == keQxPolarityF1 && sDestination.ePolarity == keQxPolarityF0)) &&
        sSource.bAllowHostConversion && sDestination.bAllowHostConversion && CanConvert())
        p.bSameType = false;

    if (sSource.ePolarity == keQxPolarityBackToBack &&
        (sDestination.ePolarity == keQxPolarityInterlaced || sDestination.ePolarity == keQxPolarityProgressive)) {
        p.bFieldWeave = true;
        // Both fields are cut at the same place: whole line pairs only.
        if ((p.uiLines | p.uiSourceHeight | p.uiFirstSourceLine | p.uiFirstDestinationLine) & 1)
            return Refuse(QX_E_INVALID_OPERATION);
    }

    // The refusals below guard the execution rather than judge the request,
    // so they come after every rule of the request and never change which
    // code a bad request gets. First, the pictures must lie inside the
    // buffers their surfaces lock.
    if (!bOpaque && (!PictureFitsBuffer(p.eSourceType, p.uiSourceWidth, p.uiSourceHeight, p.iSourcePitch,
                                        p.uiSourceBufferSize) ||
                     !PictureFitsBuffer(p.eDestinationType, p.uiDestinationWidth, p.uiDestinationHeight,
                                        p.iDestinationPitch, p.uiDestinationBufferSize)))
        return Refuse(QX_E_INVALID_GEOMETRY);

    // A conversion needs a route through the surfaces for its pair.
    if (!p.bSameType) {
        if (!CanConvert()) return Refuse(QX_E_CONVERSION_NOT_ALLOWED);
        m_iRoute = NQxcCopyRoutes::RouteOf(p.eSourceType, p.eDestinationType, IsYuvPath());
    }

    // The RGB side of a conversion takes its own colorimetry, else the one
    // the options assume, else that of the YUV side.
    const bool bSourceRgb = NQxcCopyRoutes::IsRgb(p.eSourceType);
    const EQxColorimetry eRgbOwn = bSourceRgb ? p.eSourceColorimetry : p.eDestinationColorimetry;
    const EQxColorimetry eYuvSide = bSourceRgb ? p.eDestinationColorimetry : p.eSourceColorimetry;
    p.eRgbColorimetry = eRgbOwn != keQxColorimetryInvalid ? eRgbOwn
                        : (m_psOptions && m_psOptions->eRgbColorimetry != keQxColorimetryInvalid)
                            ? m_psOptions->eRgbColorimetry
                            : eYuvSide;
    // Filtered chroma works on whole 16-pixel groups of the source.
    if (m_iRoute == NQxcCopyRoutes::keRouteBuffer && p.bFilter && p.uiSourceWidth % 16 != 0)
        return Refuse(QX_E_INVALID_WIDTH);

    // Conversions store whole 16-byte units with non-temporal stores.
    if (!p.bSameType && ((reinterpret_cast<uintptr_t>(p.pucDestination) | uint32_t(p.iDestinationPitch)) & 15))
        return Refuse(QX_E_INVALID_GEOMETRY);

    p.bKeySource = NQxcCopyRoutes::HasKey(p.eSourceType);
    p.bKeyDestination = NQxcCopyRoutes::HasKey(p.eDestinationType);
    if (p.bSameType) {
        // Every byte of every pixel of the rectangle, whole units (a v210
        // line keeps its last, partial group).
        if (bOpaque) {
            p.uiLineBytes = p.uiSourceBufferSize;
            p.bStridedCopy = false;
        } else {
            // The same units on both sides; where their phases differ (v210
            // groups of 6 against starts taken down to 16 pixels) the
            // shorter run keeps both lines whole.
            auto fnRun = [&](EQxcSurfaceType in_eType, uint32_t in_uiLeft) {
                return NQxcCopyRoutes::ByteEndOfPixels(in_eType, uint64_t(in_uiLeft) + p.uiCopyWidth) -
                       NQxcCopyRoutes::ByteOffsetOfPixel(in_eType, in_uiLeft);
            };
            p.uiLineBytes =
                uint32_t(std::min(fnRun(p.eSourceType, uiSourceLeft), fnRun(p.eDestinationType, uiDestinationLeft)));
            p.uiSourceOffset = uint32_t(NQxcCopyRoutes::ByteOffsetOfPixel(p.eSourceType, uiSourceLeft) +
                                        uint64_t(p.uiFirstSourceLine) * uint32_t(p.iSourcePitch));
            p.uiDestinationOffset =
                uint32_t(NQxcCopyRoutes::ByteOffsetOfPixel(p.eDestinationType, uiDestinationLeft) +
                         uint64_t(p.uiFirstDestinationLine) * uint32_t(p.iDestinationPitch));
            // Whole lines with equal pitches are one contiguous run.
            if (p.iSourcePitch == p.iDestinationPitch && uint32_t(p.iSourcePitch) == p.uiLineBytes &&
                !p.bFieldWeave)
                p.bStridedCopy = false;
        }
    }
    out_rbPlainCopy = p.bSameType;
    return S_OK;
}

bool CQxcBufferCopyService::CanConvert() const
{
    const SCopyParams& p = m_sParams;
    const int32_t iRoute = NQxcCopyRoutes::RouteOf(p.eSourceType, p.eDestinationType, IsYuvPath());
    if (iRoute == NQxcCopyRoutes::keRouteNone || !m_ppManagers) return false;
    // The surface objects of both ends (the RGB path's are buffer surfaces).
    auto fnType = [iRoute](EQxcSurfaceType in_eType) {
        return iRoute == NQxcCopyRoutes::keRouteBuffer ? CQxcBufferEngineCommon::SetFormatToQxcBufferSurface(in_eType)
                                                       : in_eType;
    };
    return m_ppManagers[0]->Surface(CQxcHostSurfaceCopyManager::keSetSource, fnType(p.eSourceType)) &&
           m_ppManagers[0]->Surface(CQxcHostSurfaceCopyManager::keSetDestination, fnType(p.eDestinationType));
}

bool CQxcBufferCopyService::IsYuvPath() const
{
    return (m_sParams.eSourceRange == keQxcColorRangeYuv && m_sParams.eDestinationRange == keQxcColorRangeYuv) ||
           m_sParams.bRgb10WithYuv;
}

// --- Rotation validation ----------------------------------------------------

HRESULT CQxcBufferCopyService::validateAndInitializeRotateParams(IQxSurface* in_pSource,
                                                                 IQxSurface* in_pDestination,
                                                                 EQxRotationAngle in_eAngle)
{
    ResetCopyParams();
    SCopyParams& p = m_sParams;
    if (!in_pSource || !in_pDestination) return QX_E_INVALID_POINTER;
    if (in_eAngle < keQxRotationAngle90 || in_eAngle > keQxRotationAngle270) return QX_E_INVALID_OPERATION;
    SQxSurfaceDescription sSource{}, sDestination{};
    sSource.size = sDestination.size = sizeof(SQxSurfaceDescription);
    if (HRESULT hr = in_pSource->GetSurfaceDescription(&sSource)) return hr;
    if (HRESULT hr = in_pDestination->GetSurfaceDescription(&sDestination)) return hr;
    CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(sSource, &p.eSourceType, &p.eSourceColorimetry,
                                                              &p.eSourceRange);
    CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(sDestination, &p.eDestinationType,
                                                              &p.eDestinationColorimetry, &p.eDestinationRange);
    // The rotator turns 8-bit YUYV pixel pairs only.
    if (p.eSourceType != keQxcSurfaceTypeYCbCr422_8bits || p.eDestinationType != keQxcSurfaceTypeYCbCr422_8bits)
        return QX_E_CONVERSION_NOT_ALLOWED;
    if (p.eSourceColorimetry != p.eDestinationColorimetry) return QX_E_COLORIMETRY_MISMATCH;

    const uint32_t uiWidth = sSource.ulWidth, uiHeight = sSource.ulHeight;
    const bool bQuarter = in_eAngle != keQxRotationAngle180;
    // Pairs of pixels on both sides: even widths and heights.
    if ((uiWidth | uiHeight) & 1) return QX_E_INVALID_GEOMETRY;
    const uint32_t uiTurnedWidth = bQuarter ? uiHeight : uiWidth;
    const uint32_t uiTurnedHeight = bQuarter ? uiWidth : uiHeight;
    if (sDestination.ulWidth < uiTurnedWidth || sDestination.ulHeight < uiTurnedHeight)
        return QX_E_INVALID_GEOMETRY;
    // A quarter turn is cut into strips whose count the rotator bounds, with
    // the strip size it has, or will fix with this picture.
    if (bQuarter && m_pRotator) {
        const unsigned int uiSlice =
            m_pRotator->getRotateSliceSize() ? m_pRotator->getRotateSliceSize() : (uiWidth <= 1920 ? 16u : 64u);
        if ((uiWidth + uiSlice - 1) / uiSlice > GenericRotate::kuiMaxStrips) return QX_E_INVALID_GEOMETRY;
    }

    if (HRESULT hr = LockBoth(in_pSource, in_pDestination)) return hr;
    // The kernels step two rows at a time by the pitch rounded to even and
    // run a destination cursor on from row to row: even pitches, a turned
    // row that fits its pitch, and (a half turn using one pitch for both)
    // equal pitches.
    const uint64_t uSourceLine = 2ull * uiWidth, uTurnedLine = 2ull * uiTurnedWidth;
    if (((p.iSourcePitch | p.iDestinationPitch) & 1) || p.iSourcePitch <= 0 || p.iDestinationPitch <= 0 ||
        uint64_t(p.iSourcePitch) < uSourceLine || uint64_t(p.iDestinationPitch) < uTurnedLine ||
        (!bQuarter && p.iSourcePitch != p.iDestinationPitch) ||
        !PictureFitsBuffer(keQxcSurfaceTypeYCbCr422_8bits, uiWidth, uiHeight, p.iSourcePitch, p.uiSourceBufferSize) ||
        uint64_t(uiTurnedHeight) * uint32_t(p.iDestinationPitch) > p.uiDestinationBufferSize)
        return Refuse(QX_E_INVALID_GEOMETRY);

    p.uiSourceWidth = uiWidth;
    p.uiSourceHeight = uiHeight;
    p.uiDestinationWidth = sDestination.ulWidth;
    p.uiDestinationHeight = sDestination.ulHeight;
    p.eAngle = in_eAngle;
    return S_OK;
}

// --- Execution --------------------------------------------------------------

HRESULT CQxcBufferCopyService::MainThreadCaller(EQxfBufferCopyServiceMainThreadType in_eKind)
{
    switch (in_eKind) {
    case keQxfBufferCopyServiceMainThreadCopy:
        return CopyMainThread();
    case keQxfBufferCopyServiceMainThreadGenericCopy:
        return GenericCopyThread();
    case keQxfBufferCopyServiceMainThreadRotate:
        return GenericRotateThread();
    default:
        return QX_E_INVALID_OPERATION;
    }
}

HRESULT CQxcBufferCopyService::GenericCopyThread()
{
    const SCopyParams& p = m_sParams;
    m_uiErrorCount = 0;
    m_uiSliceCount = 0;
    if (!m_pGenericCopy) return QX_E_NOT_INITIALIZED;
    unsigned char* pucSource = p.pucSource + p.uiSourceOffset;
    unsigned char* pucDestination = p.pucDestination + p.uiDestinationOffset;
    bool bDone;
    if (p.bFieldWeave) {
        // The two stored fields, each entered at the same field line.
        const uint64_t uFieldOffset = uint64_t(p.uiSourceHeight / 2) * uint32_t(p.iSourcePitch);
        unsigned char* pucFirst = p.pucSource + uint64_t(p.uiFirstSourceLine / 2) * uint32_t(p.iSourcePitch) +
                                  NQxcCopyRoutes::ByteOffsetOfPixel(p.eSourceType, p.uiSourceLeft);
        bDone = m_pGenericCopy->GenericCopyInterlace(pucFirst, p.iSourcePitch, pucFirst + uFieldOffset,
                                                     p.iSourcePitch, pucDestination, p.iDestinationPitch,
                                                     p.uiLineBytes, p.uiLines, p.bEvenLinesFromFirstField);
    } else if (p.bStridedCopy) {
        bDone = m_pGenericCopy->GenericCopy(pucSource, p.iSourcePitch, pucDestination, p.iDestinationPitch,
                                            p.uiLineBytes, p.uiLines);
    } else {
        const uint64_t uBytes = p.eSourceType == keQxcSurfaceTypeOpaqueData
                                    ? p.uiLineBytes
                                    : uint64_t(p.uiLines) * uint32_t(p.iSourcePitch);
        bDone = m_pGenericCopy->GenericCopy(pucSource, pucDestination, static_cast<unsigned int>(uBytes));
    }
    if (!bDone) ++m_uiErrorCount;
    return S_OK;
}

HRESULT CQxcBufferCopyService::GenericRotateThread()
{
    const SCopyParams& p = m_sParams;
    m_uiErrorCount = 0;
    if (!m_pRotator) return QX_E_NOT_INITIALIZED;
    const unsigned int uiDegrees = p.eAngle == keQxRotationAngle90    ? 90
                                   : p.eAngle == keQxRotationAngle180 ? 180
                                   : p.eAngle == keQxRotationAngle270 ? 270
                                                                      : 0;
    const uint64_t ui64Start = NowMicroseconds(m_pPerfTimer);
    const HRESULT hr = m_pRotator->Rotate(p.pucSource, p.pucDestination, p.uiSourceWidth, p.uiSourceHeight,
                                          uint32_t(p.iSourcePitch), uint32_t(p.iDestinationPitch), uiDegrees);
    const uint64_t ui64Elapsed = NowMicroseconds(m_pPerfTimer) - ui64Start;
    if (FAILED(hr)) ++m_uiErrorCount;
    m_ui64RotateMin = std::min(m_ui64RotateMin, ui64Elapsed);
    m_ui64RotateMax = std::max(m_ui64RotateMax, ui64Elapsed);
    m_ui64RotateTotal += ui64Elapsed;
    ++m_ui64RotateCount;
    const uint64_t ui64Size = uint64_t(p.iDestinationPitch) *
                              (uiDegrees == 180 ? p.uiSourceHeight : p.uiSourceWidth);
    NQxcLogger::Log(7, NQxcLogger::kiLevelInfo,
                    "[%dx%d] rotated %3d Size:[%lu] sliceSize:[%d] - Time:[min:%I64u  cur:%I64u  max:%I64u  "
                    "ave:%I64u]us  totalCount:[%I64u]",
                    int(p.uiSourceWidth), int(p.uiSourceHeight), int(uiDegrees), (unsigned long)ui64Size,
                    int(m_pRotator->getRotateSliceSize()), (unsigned long long)m_ui64RotateMin,
                    (unsigned long long)ui64Elapsed, (unsigned long long)m_ui64RotateMax,
                    (unsigned long long)(m_ui64RotateTotal / m_ui64RotateCount),
                    (unsigned long long)m_ui64RotateCount);
    return S_OK;
}

// --- Converting copy --------------------------------------------------------

EQxcSurfaceType CQxcBufferCopyService::SurfaceTypeOf(EQxcSurfaceType in_eType) const
{
    // The RGB path converts between buffer surfaces.
    return m_iRoute == NQxcCopyRoutes::keRouteBuffer ? CQxcBufferEngineCommon::SetFormatToQxcBufferSurface(in_eType)
                                                     : in_eType;
}

namespace {

// Bytes that a conversion of in_uiChunks 16-pixel blocks reads or writes on
// a line of a surface of the type, from its first block on; 0 for the
// surfaces that never pass their line's end: v210, and buffer surfaces
// written by a buffer kernel, which works in pixels. (A 10-bit RGB source is
// read by the 16-bit hub's block kernel, in whole blocks.)
uint32_t BlockBytes(EQxcSurfaceType in_eType, uint32_t in_uiChunks, bool in_bDestination)
{
    if (in_eType == keQxcSurfaceTypeV210_10bits) return 0;
    if (in_bDestination && NQxcCopyRoutes::IsRgb(in_eType)) return 0;
    const uint32_t uiPixels = CQxcBufferEngineCommon::ms_auiMinPixelsPerBlock[in_eType];
    if (uiPixels == 0) return 0;
    return in_uiChunks * (16 / uiPixels) * CQxcBufferEngineCommon::ms_auiBytesPerBlocksMinPixels[in_eType];
}

// Leading lines y of a plane for which y x pitch + offset + bytes stays
// inside the plane's buffer (and, when in_bInLine, offset + bytes inside the
// line).
uint32_t SafeLines(uint64_t in_uBufferBytes, int64_t in_i64Pitch, uint32_t in_uiHeight, uint64_t in_uOffset,
                   uint64_t in_uBytes, bool in_bInLine)
{
    if (in_bInLine && in_uOffset + in_uBytes > uint64_t(in_i64Pitch)) return 0;
    if (in_uOffset + in_uBytes > in_uBufferBytes) return 0;
    const uint64_t uLines = (in_uBufferBytes - in_uOffset - in_uBytes) / uint64_t(in_i64Pitch) + 1;
    return uint32_t(std::min<uint64_t>(uLines, in_uiHeight));
}

}  // namespace

void CQxcBufferCopyService::PreparePlanes()
{
    const SCopyParams& p = m_sParams;
    const EQxcSurfaceType eSource = SurfaceTypeOf(p.eSourceType);
    const EQxcSurfaceType eDestination = SurfaceTypeOf(p.eDestinationType);
    const bool bBlocks = m_iRoute != NQxcCopyRoutes::keRouteBuffer;
    m_uiReadBytes = bBlocks ? BlockBytes(eSource, p.uiChunks, false) : 0;
    m_uiWriteBytes = bBlocks ? BlockBytes(eDestination, p.uiChunks, true) : 0;
    const uint64_t uSourceOffset = NQxcCopyRoutes::ByteOffsetOfPixel(p.eSourceType, p.uiSourceLeft);
    const uint64_t uDestinationOffset = NQxcCopyRoutes::ByteOffsetOfPixel(p.eDestinationType, p.uiDestinationLeft);
    const unsigned int uiFields = p.bFieldWeave ? 2 : 1;
    for (unsigned int f = 0; f < uiFields; ++f) {
        SPlane& rs = m_asSourcePlanes[f];
        const uint64_t uSkip = p.bFieldWeave ? uint64_t(f) * (p.uiSourceHeight / 2) * uint32_t(p.iSourcePitch) : 0;
        rs.pucBase = p.pucSource + uSkip;
        rs.i64Pitch = p.iSourcePitch;
        rs.uiHeight = p.bFieldWeave ? p.uiSourceHeight / 2 : p.uiSourceHeight;
        rs.uBytes = p.uiSourceBufferSize - uSkip;
        rs.uiSafeLines = SafeLines(rs.uBytes, rs.i64Pitch, rs.uiHeight, uSourceOffset, m_uiReadBytes, false);

        SPlane& rd = m_asDestinationPlanes[f];
        const uint64_t uFieldStart = p.bFieldWeave ? uint64_t(f) * uint32_t(p.iDestinationPitch) : 0;
        rd.pucBase = p.pucDestination + uFieldStart;
        rd.i64Pitch = int64_t(p.iDestinationPitch) * uiFields;
        rd.uiHeight = p.bFieldWeave ? (p.uiDestinationHeight + 1 - f) / 2 : p.uiDestinationHeight;
        rd.uBytes = p.uiDestinationBufferSize - uFieldStart;
        rd.uiSafeLines = SafeLines(rd.uBytes, rd.i64Pitch, rd.uiHeight, uDestinationOffset, m_uiWriteBytes, true);
    }
}

bool CQxcBufferCopyService::InitializeOn(CQxcSurface* in_pSurface, bool in_bSource, unsigned char* in_pucBuffer,
                                         uint32_t in_uiWidth, uint32_t in_uiHeight, int64_t in_i64Pitch) const
{
    const SCopyParams& p = m_sParams;
    const EQxcSurfaceType eType = in_bSource ? p.eSourceType : p.eDestinationType;
    const bool bKey = in_bSource ? p.bKeySource : p.bKeyDestination;
    const EQxColorimetry eColorimetry =
        NQxcCopyRoutes::IsRgb(eType) ? p.eRgbColorimetry
                                     : (in_bSource ? p.eSourceColorimetry : p.eDestinationColorimetry);
    const EQxcColorRange eRange = in_bSource ? p.eSourceRange : p.eDestinationRange;
    if (CQxcBufferSurface* pBuffer = dynamic_cast<CQxcBufferSurface*>(in_pSurface))
        return pBuffer->Initialize(in_pucBuffer, in_uiWidth, in_uiHeight, long(in_i64Pitch), bKey, eColorimetry,
                                   eRange);
    return in_pSurface->Initialize(in_pucBuffer, in_uiWidth, in_uiHeight, long(in_i64Pitch), bKey, eColorimetry);
}

void CQxcBufferCopyService::SetupSlice(CQxcHostSurfaceCopyManager* in_pManager, unsigned int in_uiLines,
                                       unsigned int in_uiSourceLine, unsigned int in_uiDestinationLine)
{
    const SCopyParams& p = m_sParams;
    CQxcHostSurfaceCopyManager& m = *in_pManager;
    m.m_uiLines = in_uiLines;
    m.m_uiFirstSourceLine = in_uiSourceLine;
    m.m_uiFirstDestinationLine = in_uiDestinationLine;
    m.m_uiChunks = p.uiChunks;
    m.m_uiReadBytes = m_uiReadBytes;
    m.m_uiWriteBytes = m_uiWriteBytes;
    m.m_bFieldWeave = p.bFieldWeave;
    m.m_uiErrors = 0;
    const EQxcSurfaceType eSource = SurfaceTypeOf(p.eSourceType);
    const EQxcSurfaceType eDestination = SurfaceTypeOf(p.eDestinationType);
    const unsigned int uiFields = p.bFieldWeave ? 2 : 1;
    bool bReady = true;
    for (unsigned int f = 0; f < uiFields; ++f) {
        CQxcSurface* pSource = m.m_apSurfaces[f == 0 ? m.keSetSource : m.keSetSecondSource][eSource];
        CQxcSurface* pDestination = m.m_apSurfaces[f == 0 ? m.keSetDestination : m.keSetSecondDestination][eDestination];
        const SPlane& rs = m_asSourcePlanes[f];
        const SPlane& rd = m_asDestinationPlanes[f];
        bReady = bReady && pSource && pDestination &&
                 InitializeOn(pSource, true, rs.pucBase, p.uiSourceWidth, rs.uiHeight, rs.i64Pitch) &&
                 InitializeOn(pDestination, false, rd.pucBase, p.uiDestinationWidth, rd.uiHeight, rd.i64Pitch);
        if (CQxcBufferSurface* pBuffer = dynamic_cast<CQxcBufferSurface*>(pDestination)) {
            // Chroma handling: interpolated into RGB, filtered into YUV.
            pBuffer->SetInterpolate(p.bFilter);
            pBuffer->SetFilter(p.bFilter);
        }
    }
    // The 16-bit intermediates hold one line of the copy.
    const bool bRgb10 = p.eSourceType == keQxcSurfaceTypeA2R10G10B10_Unshaped ||
                        p.eDestinationType == keQxcSurfaceTypeA2R10G10B10_Unshaped;
    const EQxColorimetry eYuvColorimetry =
        NQxcCopyRoutes::IsRgb(p.eSourceType) ? p.eDestinationColorimetry : p.eSourceColorimetry;
    const EQxcColorRange eRgbRange = NQxcCopyRoutes::IsRgb(p.eSourceType) ? p.eSourceRange : p.eDestinationRange;
    const long lLine = CQxcHostSurfaceCopyManager::kuiLineBytes;
    if (bRgb10)
        bReady = bReady && static_cast<CQxcYCbCrA4224_16bits_UnshapedSurface*>(m.m_pYCbCrA4224_16bits_Unshaped)
                               ->InitializeRGB10(m.m_aucLine, p.uiCopyWidth, 1, lLine, p.bKeySource, eYuvColorimetry,
                                                 eRgbRange, p.eRgbColorimetry);
    else
        bReady = bReady && m.m_pYCbCrA4224_16bits_Unshaped->Initialize(m.m_aucLine, p.uiCopyWidth, 1, lLine,
                                                                       p.bKeySource, eYuvColorimetry);
    bReady = bReady &&
             m.m_pYCbCrA4224_16bits_Shaped->Initialize(m.m_aucLine, p.uiCopyWidth, 1, lLine, p.bKeySource,
                                                       eYuvColorimetry) &&
             m.m_pYCbCr422_16bits->Initialize(m.m_aucLine, p.uiCopyWidth, 1, lLine, false, eYuvColorimetry);
    if (!bReady) m.m_uiErrors = 1;
}

void CQxcBufferCopyService::_SetupTaskParametersYuvYuv(CQxcHostSurfaceCopyManager* in_pManager,
                                                       unsigned int in_uiLinesPerSlice, unsigned int in_uiSliceIndex,
                                                       unsigned int in_uiFirstDestinationLine)
{
    const unsigned int uiFirstSource = m_sParams.bFieldWeave ? m_sParams.uiFirstSourceLine / 2
                                                             : m_sParams.uiFirstSourceLine;
    SetupSlice(in_pManager, in_uiLinesPerSlice, uiFirstSource + in_uiLinesPerSlice * in_uiSliceIndex,
               in_uiFirstDestinationLine + in_uiLinesPerSlice * in_uiSliceIndex);
}

void CQxcBufferCopyService::_SetupTaskParametersRgbYuv(CQxcHostSurfaceCopyManager* in_pManager,
                                                       unsigned int in_uiLinesPerSlice, unsigned int in_uiSliceIndex,
                                                       unsigned int in_uiFirstDestinationLine, unsigned int,
                                                       unsigned int)
{
    // The planes (PreparePlanes) already carry the field heights.
    _SetupTaskParametersYuvYuv(in_pManager, in_uiLinesPerSlice, in_uiSliceIndex, in_uiFirstDestinationLine);
}

HRESULT CQxcBufferCopyService::CopyMainThread()
{
    const SCopyParams& p = m_sParams;
    m_uiErrorCount = 0;
    m_uiSliceCount = 0;
    if (!m_ppManagers || !m_pRunner) return QX_E_NOT_INITIALIZED;
    CQxPerfTimer* pTimer = CQxPerfTimer::GetTimerClass();
    const uint64_t ui64Start = pTimer->GetTime();
    PreparePlanes();

    m_sPlan = PlanSlices(p.uiLines, p.bFieldWeave);
    m_uiPlanSourceLine = p.bFieldWeave ? p.uiFirstSourceLine / 2 : p.uiFirstSourceLine;
    m_uiPlanDestinationLine = p.bFieldWeave ? p.uiFirstDestinationLine / 2 : p.uiFirstDestinationLine;
    m_bPlanYuv = IsYuvPath();
    const char* pszPath = m_bPlanYuv ? "ConcRTCopy YUV <-> YUV" : "ConcRTCopy RGB <-> YUV";
    // The remainder goes with slice 0, on manager 0, after it: with no
    // slices it is the one task. Each slice is set up by the thread that
    // converts it, so that the set-up runs in parallel too.
    const uint32_t uiTasks = m_sPlan.uiSlices > 0 ? m_sPlan.uiSlices : (m_sPlan.uiRemainder != 0 ? 1 : 0);
    m_pRunner->Run(uiTasks, &CQxcBufferCopyService::RunSlice, this);
    for (uint32_t i = 0; i < uiTasks; ++i) m_uiErrorCount += m_ppManagers[i]->m_uiErrors;
    m_uiSliceCount = m_sPlan.uiSlices + (m_sPlan.uiRemainder != 0 ? 1 : 0);
    const uint64_t ui64Elapsed = pTimer->GetTime() - ui64Start;
    NQxcLogger::Log(2, NQxcLogger::kiLevelTiming, "%s:: -  Time:[%I64u]", pszPath, (unsigned long long)ui64Elapsed);
    return S_OK;
}

void CQxcBufferCopyService::RunSlice(void* in_pService, uint32_t in_uiSlice)
{
    static_cast<CQxcBufferCopyService*>(in_pService)->SetUpAndConvert(in_uiSlice);
}

void CQxcBufferCopyService::SetUpAndConvert(uint32_t in_uiSlice)
{
    const SCopyParams& p = m_sParams;
    CQxcHostSurfaceCopyManager* pManager = m_ppManagers[in_uiSlice];
    uint32_t uiErrors = 0;
    if (m_sPlan.uiSlices > 0) {
        if (m_bPlanYuv)
            _SetupTaskParametersYuvYuv(pManager, m_sPlan.uiLinesPerSlice, in_uiSlice, m_uiPlanDestinationLine);
        else
            _SetupTaskParametersRgbYuv(pManager, m_sPlan.uiLinesPerSlice, in_uiSlice, m_uiPlanDestinationLine,
                                       p.uiSourceHeight, p.uiDestinationHeight);
        ConcurrencyCopyData(pManager);
        uiErrors = pManager->m_uiErrors;
    }
    if (in_uiSlice == 0 && m_sPlan.uiRemainder != 0) {
        // The lines after the last slice.
        const uint32_t uiDone = m_sPlan.uiLinesPerSlice * m_sPlan.uiSlices;
        SetupSlice(pManager, m_sPlan.uiRemainder, m_uiPlanSourceLine + uiDone, m_uiPlanDestinationLine + uiDone);
        ConcurrencyCopyData(pManager);
        pManager->m_uiErrors += uiErrors;
    }
}

bool CQxcBufferCopyService::ConcurrencyCopyData(CQxcHostSurfaceCopyManager* in_pManager)
{
    CQxcHostSurfaceCopyManager& m = *in_pManager;
    // A manager whose set-up failed converts nothing; its failure is counted.
    if (m.m_uiErrors != 0) return false;
    const unsigned int uiFields = m.m_bFieldWeave ? 2 : 1;
    for (unsigned int i = 0; i < m.m_uiLines; ++i)
        for (unsigned int f = 0; f < uiFields; ++f)
            if (!ConvertLine(in_pManager, f, m.m_uiFirstSourceLine + i, m.m_uiFirstDestinationLine + i)) {
                ++m.m_uiErrors;
                return false;
            }
    return true;
}

bool CQxcBufferCopyService::Convert(CQxcHostSurfaceCopyManager* in_pManager, CQxcSurface* in_pSource,
                                    unsigned int in_uiSourceX, unsigned int in_uiSourceY,
                                    CQxcSurface* in_pDestination, unsigned int in_uiDestinationX,
                                    unsigned int in_uiDestinationY)
{
    const SCopyParams& p = m_sParams;
    CQxcHostSurfaceCopyManager& m = *in_pManager;
    if (!in_pSource->SetPosition(in_uiSourceX, in_uiSourceY) ||
        !in_pDestination->SetPosition(in_uiDestinationX, in_uiDestinationY))
        return false;
    CQxcSurface* pIntermediate = nullptr;
    switch (m_iRoute) {
    case NQxcCopyRoutes::keRouteDirect:
        return in_pDestination->CopyBlocksFrom(in_pSource, p.uiChunks, 1);
    case NQxcCopyRoutes::keRouteBuffer:
        return static_cast<CQxcBufferSurface*>(in_pDestination)->CopyFrom(in_pSource, p.uiCopyWidth, 1);
    case NQxcCopyRoutes::keRouteVia422_16bits:
        pIntermediate = m.m_pYCbCr422_16bits;
        break;
    case NQxcCopyRoutes::keRouteVia4224Shaped:
        pIntermediate = m.m_pYCbCrA4224_16bits_Shaped;
        break;
    case NQxcCopyRoutes::keRouteVia4224Unshaped:
        pIntermediate = m.m_pYCbCrA4224_16bits_Unshaped;
        break;
    default:
        return false;
    }
    if (!pIntermediate->SetPosition(0, 0) || !pIntermediate->CopyBlocksFrom(in_pSource, p.uiChunks, 1) ||
        !pIntermediate->SetPosition(0, 0))
        return false;
    // The 10-bit and 16-bit RGB surfaces read the hub with their buffer
    // kernels, through the CopyFrom that takes a source of either family.
    if (NQxcCopyRoutes::IsRgb(p.eDestinationType))
        return static_cast<CQxcBufferSurface*>(in_pDestination)->CopyFrom(pIntermediate, p.uiCopyWidth, 1);
    return in_pDestination->CopyBlocksFrom(pIntermediate, p.uiChunks, 1);
}

bool CQxcBufferCopyService::ConvertLine(CQxcHostSurfaceCopyManager* in_pManager, unsigned int in_uiField,
                                        unsigned int in_uiSourceLine, unsigned int in_uiDestinationLine)
{
    const SCopyParams& p = m_sParams;
    CQxcHostSurfaceCopyManager& m = *in_pManager;
    const SPlane& rs = m_asSourcePlanes[in_uiField];
    const SPlane& rd = m_asDestinationPlanes[in_uiField];
    CQxcSurface* pSource =
        m.m_apSurfaces[in_uiField == 0 ? m.keSetSource : m.keSetSecondSource][SurfaceTypeOf(p.eSourceType)];
    CQxcSurface* pDestination =
        m.m_apSurfaces[in_uiField == 0 ? m.keSetDestination : m.keSetSecondDestination][SurfaceTypeOf(p.eDestinationType)];
    const bool bSourceDirect = in_uiSourceLine < rs.uiSafeLines;
    const bool bDestinationDirect = in_uiDestinationLine < rd.uiSafeLines;
    if (bSourceDirect && bDestinationDirect)
        return Convert(in_pManager, pSource, p.uiSourceLeft, in_uiSourceLine, pDestination, p.uiDestinationLeft,
                       in_uiDestinationLine);

    // A line whose whole blocks would reach past the caller's buffer (the
    // last lines of a picture whose width is not a multiple of 16) goes
    // through staged copies: only the bytes of the line are read, and only
    // the bytes of the rectangle written.
    const size_t uStage = (size_t(m.m_uiReadBytes) + m.m_uiWriteBytes + 127) & ~size_t(63);
    if (m.m_uScratchBytes < uStage) {
        std::free(m.m_pucScratch);
        m.m_pucScratch = static_cast<unsigned char*>(std::aligned_alloc(64, uStage));
        m.m_uScratchBytes = m.m_pucScratch ? uStage : 0;
        if (!m.m_pucScratch) return false;
    }
    unsigned char* pucStagedSource = m.m_pucScratch;
    unsigned char* pucStagedDestination = m.m_pucScratch + ((size_t(m.m_uiReadBytes) + 63) & ~size_t(63));
    const uint32_t uiStagedWidth = p.uiChunks * 16;
    const uint64_t uSourceOffset = NQxcCopyRoutes::ByteOffsetOfPixel(p.eSourceType, p.uiSourceLeft);
    const uint64_t uDestinationOffset = NQxcCopyRoutes::ByteOffsetOfPixel(p.eDestinationType, p.uiDestinationLeft);
    unsigned int uiSourceX = p.uiSourceLeft, uiSourceY = in_uiSourceLine;
    unsigned int uiDestinationX = p.uiDestinationLeft, uiDestinationY = in_uiDestinationLine;
    bool bDone = true;
    if (!bSourceDirect) {
        const uint64_t uStart = uint64_t(in_uiSourceLine) * uint64_t(rs.i64Pitch) + uSourceOffset;
        const uint64_t uAvailable = rs.uBytes > uStart ? std::min<uint64_t>(rs.uBytes - uStart, m.m_uiReadBytes) : 0;
        std::memcpy(pucStagedSource, rs.pucBase + uStart, size_t(uAvailable));
        std::memset(pucStagedSource + uAvailable, 0, m.m_uiReadBytes - uAvailable);
        bDone = InitializeOn(pSource, true, pucStagedSource, uiStagedWidth, 1, m.m_uiReadBytes);
        uiSourceX = uiSourceY = 0;
    }
    if (!bDestinationDirect) {
        bDone = bDone && InitializeOn(pDestination, false, pucStagedDestination, uiStagedWidth, 1, m.m_uiWriteBytes);
        uiDestinationX = uiDestinationY = 0;
    }
    bDone = bDone && Convert(in_pManager, pSource, uiSourceX, uiSourceY, pDestination, uiDestinationX, uiDestinationY);
    if (bDone && !bDestinationDirect) {
        // The rectangle's bytes of the line, never past the line or the buffer.
        const uint64_t uStart = uint64_t(in_uiDestinationLine) * uint64_t(rd.i64Pitch) + uDestinationOffset;
        const uint64_t uRectangle =
            NQxcCopyRoutes::ByteEndOfPixels(p.eDestinationType, uint64_t(p.uiDestinationLeft) + p.uiCopyWidth) -
            uDestinationOffset;
        const uint64_t uLineLeft = uint64_t(m_sParams.iDestinationPitch) - uDestinationOffset;
        const uint64_t uBufferLeft = rd.uBytes > uStart ? rd.uBytes - uStart : 0;
        const uint64_t uBytes = std::min({uRectangle, uLineLeft, uBufferLeft, uint64_t(m.m_uiWriteBytes)});
        std::memcpy(rd.pucBase + uStart, pucStagedDestination, size_t(uBytes));
    }
    // Back on the caller's picture for the lines that follow.
    if (!bSourceDirect) bDone = InitializeOn(pSource, true, rs.pucBase, p.uiSourceWidth, rs.uiHeight, rs.i64Pitch) && bDone;
    if (!bDestinationDirect)
        bDone = InitializeOn(pDestination, false, rd.pucBase, p.uiDestinationWidth, rd.uiHeight, rd.i64Pitch) && bDone;
    return bDone;
}

// --- Slice managers ---------------------------------------------------------

CQxcHostSurfaceCopyManager::CQxcHostSurfaceCopyManager(IQxFlexEnginePrivate* in_pEngine,
                                                       CQxcBufferCopyService* in_pService)
    : m_apSurfaces{},
      m_pYCbCrA4224_16bits_Unshaped(nullptr),
      m_pYCbCrA4224_16bits_Shaped(nullptr),
      m_pYCbCr422_16bits(nullptr),
      m_pEngine(in_pEngine),
      m_pService(in_pService),
      m_uiLines(0),
      m_uiFirstSourceLine(0),
      m_uiFirstDestinationLine(0),
      m_uiChunks(0),
      m_uiReadBytes(0),
      m_uiWriteBytes(0),
      m_bFieldWeave(false),
      m_uiErrors(0),
      m_pucScratch(nullptr),
      m_uScratchBytes(0)
{
}

CQxcHostSurfaceCopyManager::~CQxcHostSurfaceCopyManager()
{
    ReleaseHostSurfaces();
    std::free(m_pucScratch);
}

CQxcSurface* CQxcHostSurfaceCopyManager::Surface(ESet in_eSet, EQxcSurfaceType in_eType) const
{
    if (in_eSet < 0 || in_eSet >= keSetCount || in_eType < 0 || in_eType >= kiQxcSurfaceTypeCount) return nullptr;
    return m_apSurfaces[in_eSet][in_eType];
}

void CQxcHostSurfaceCopyManager::CreateHostSurfaces()
{
    ReleaseHostSurfaces();
    const CQxcSurfaceFactory oFactory;
    for (int s = 0; s < keSetCount; ++s)
        for (int t = 0; t < kiQxcSurfaceTypeCount; ++t) m_apSurfaces[s][t] = NQxcCopyRoutes::CreateSurfaceOfType(EQxcSurfaceType(t), false);
    // The intermediates are read back at once: ordinary stores.
    m_pYCbCrA4224_16bits_Unshaped = oFactory.CreateYCbCrA4224_16bits_UnshapedSurface(true);
    m_pYCbCrA4224_16bits_Shaped = oFactory.CreateYCbCrA4224_16bits_ShapedSurface(true);
    m_pYCbCr422_16bits = oFactory.CreateYCbCr422_16bitsSurface(true);
}

void CQxcHostSurfaceCopyManager::ReleaseHostSurfaces()
{
    for (auto& apSet : m_apSurfaces)
        for (CQxcSurface*& pSurface : apSet) {
            delete pSurface;
            pSurface = nullptr;
        }
    for (CQxcSurface** pp : {&m_pYCbCrA4224_16bits_Unshaped, &m_pYCbCrA4224_16bits_Shaped, &m_pYCbCr422_16bits}) {
        delete *pp;
        *pp = nullptr;
    }
}
