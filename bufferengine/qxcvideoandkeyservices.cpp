// The combine and extract services: three pictures of one size, the line
// kernel run over slices of 16 lines on a work queue.
#include <qxbase/qxcbufferservices.h>
#include <qxbase/qxerrors.h>

#include <algorithm>
#include <new>

#include "bufferengine/qxccopyroutes.h"
#include "bufferengine/qxcslicerunner.h"

namespace {

constexpr int kiLinesPerSlice = 16;

bool IsFill(EQxcSurfaceType t) { return t == keQxcSurfaceTypeYCbCr422_8bits || t == keQxcSurfaceTypeV210_10bits; }

// The combined types of a fill type.
bool IsCombinedOf(EQxcSurfaceType in_eFill, EQxcSurfaceType in_eCombined)
{
    if (in_eFill == keQxcSurfaceTypeYCbCr422_8bits)
        return in_eCombined == keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped ||
               in_eCombined == keQxcSurfaceTypeYCbCrA4224_8bits_Shaped;
    if (in_eFill == keQxcSurfaceTypeV210_10bits)
        return in_eCombined == keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped ||
               in_eCombined == keQxcSurfaceTypeYCbCrA4224_10bits_Shaped;
    return false;
}

// The internal type of a surface, or none (the validation that follows
// reports why).
EQxcSurfaceType TypeOf(IQxSurface* in_pSurface)
{
    SQxSurfaceDescription s{};
    s.size = sizeof(s);
    EQxcSurfaceType eType = keQxcSurfaceTypeInvalid;
    EQxColorimetry eColorimetry;
    EQxcColorRange eRange;
    if (in_pSurface && SUCCEEDED(in_pSurface->GetSurfaceDescription(&s)))
        CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(s, &eType, &eColorimetry, &eRange);
    return eType;
}

}  // namespace

// --- Chunk arithmetic ---------------------------------------------------------

int getChunkCount(EQxcSurfaceType in_eType, int in_iBytesPerLine)
{
    if (in_eType == keQxcSurfaceTypeYCbCr422_8bits) return (in_iBytesPerLine + 15) / 16;
    if (in_eType == keQxcSurfaceTypeV210_10bits) return (in_iBytesPerLine + 31) / 32;
    return 0;
}

int getExtractChunkCount(EQxcSurfaceType in_eType, int in_iBytesPerLine)
{
    if (in_eType == keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped || in_eType == keQxcSurfaceTypeYCbCrA4224_8bits_Shaped)
        return (in_iBytesPerLine + 23) / 24;
    if (in_eType == keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped ||
        in_eType == keQxcSurfaceTypeYCbCrA4224_10bits_Shaped)
        return (in_iBytesPerLine + 47) / 48;
    return 0;
}

int getPadInBytesPerLine(EQxcSurfaceType in_eType, int in_iPitch, int in_iChunks)
{
    switch (in_eType) {
    case keQxcSurfaceTypeYCbCr422_8bits:
        return in_iPitch - 16 * in_iChunks;
    case keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_8bits_Shaped:
        return in_iPitch - 24 * in_iChunks;
    case keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_10bits_Shaped:
        return in_iPitch - 48 * in_iChunks;
    case keQxcSurfaceTypeV210_10bits:
        return in_iPitch - 32 * in_iChunks;
    default:
        return 0;
    }
}

int getExtractPadInBytesPerLine(EQxcSurfaceType in_eType, int in_iPitch, int in_iChunks)
{
    return getPadInBytesPerLine(in_eType, in_iPitch, in_iChunks);
}

// --- Shared frame -------------------------------------------------------------

CQxcBufferVideoAndKeyService::CQxcBufferVideoAndKeyService(const wchar_t* in_pwszName)
    : CQxLightUnknown(in_pwszName, nullptr),
      m_asPictures{},
      m_pRunner(nullptr),
      m_psSlices(nullptr),
      m_uiSliceCount(0),
      m_uiErrorCount(0),
      m_uiLocked(0)
{
}

CQxcBufferVideoAndKeyService::~CQxcBufferVideoAndKeyService() { CloseServices(); }

HRESULT CQxcBufferVideoAndKeyService::OpenServices()
{
    CloseServices();
    try {
        m_pRunner = new CQxcSliceRunner("BufferVideoAndKeyService");
    } catch (...) {
        CloseServices();
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

HRESULT CQxcBufferVideoAndKeyService::CloseServices()
{
    delete m_pRunner;
    m_pRunner = nullptr;
    delete[] m_psSlices;
    m_psSlices = nullptr;
    return S_OK;
}

void CQxcBufferVideoAndKeyService::Unlock(unsigned int in_uiCount)
{
    for (unsigned int i = 0; i < in_uiCount; ++i) m_asPictures[i].pSurface->UnlockBuffer();
}

void CQxcBufferVideoAndKeyService::UnlockSurfaces()
{
    Unlock(m_uiLocked);
    m_uiLocked = 0;
}

HRESULT CQxcBufferVideoAndKeyService::Prepare(IQxSurface* in_pFill, IQxSurface* in_pKey, IQxSurface* in_pCombined,
                                              bool in_bCombine, PFNQxcCombineExtractKernel in_pfnKernel)
{
    m_uiLocked = 0;
    m_uiSliceCount = 0;
    if (!in_pFill || !in_pKey || !in_pCombined) return QX_E_INVALID_POINTER;
    IQxSurface* const apSurfaces[3] = {in_pFill, in_pKey, in_pCombined};
    for (int i = 0; i < 3; ++i) {
        SPicture& r = m_asPictures[i];
        r = SPicture{};
        r.pSurface = apSurfaces[i];
        r.sDescription.size = sizeof(SQxSurfaceDescription);
        if (HRESULT hr = r.pSurface->GetSurfaceDescription(&r.sDescription)) return hr;
        EQxcColorRange eRange;
        CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(r.sDescription, &r.eType, &r.eColorimetry, &eRange);
    }
    SPicture& rFill = m_asPictures[0];
    SPicture& rKey = m_asPictures[1];
    SPicture& rCombined = m_asPictures[2];
    if (!IsFill(rFill.eType) || rKey.eType != rFill.eType || !IsCombinedOf(rFill.eType, rCombined.eType) ||
        !in_pfnKernel)
        return QX_E_CONVERSION_NOT_ALLOWED;
    const uint32_t uiWidth = rFill.sDescription.ulWidth, uiHeight = rFill.sDescription.ulHeight;
    for (const SPicture& r : m_asPictures)
        if (r.sDescription.ulWidth != uiWidth || r.sDescription.ulHeight != uiHeight) return QX_E_INVALID_GEOMETRY;
    if (rFill.eColorimetry != rCombined.eColorimetry &&
        (rFill.eColorimetry > keQxColorimetryITUR_BT_2020_Linear ||
         rCombined.eColorimetry > keQxColorimetryITUR_BT_2020_Linear))
        return QX_E_COLORIMETRY_MISMATCH;

    // Inputs are read, outputs written; a failed lock unlocks the others.
    for (int i = 0; i < 3; ++i) {
        SPicture& r = m_asPictures[i];
        const bool bInput = in_bCombine ? i < 2 : i == 2;
        void* pBuffer = nullptr;
        HRESULT hr = r.pSurface->LockBuffer(bInput ? keQxBufferAccessRead : keQxBufferAccessWrite, &pBuffer,
                                            &r.iPitch, &r.uiSize);
        if (FAILED(hr)) {
            UnlockSurfaces();
            return hr;
        }
        ++m_uiLocked;
        r.pucBuffer = static_cast<unsigned char*>(pBuffer);
        const uint64_t uLine = NQxcCopyRoutes::ByteEndOfPixels(r.eType, uiWidth);
        const bool bFits = uiHeight == 0 || uiWidth == 0 ||
                           (r.pucBuffer && r.iPitch > 0 && uLine <= uint64_t(r.iPitch) &&
                            uint64_t(uiHeight - 1) * uint32_t(r.iPitch) + uLine <= r.uiSize);
        if (!bFits) {
            UnlockSurfaces();
            return QX_E_INVALID_GEOMETRY;
        }
    }

    // The chunks of a line cover its pixels; the kernels keep every line
    // inside its pitch. The last line of a buffer that ends before its
    // pitch does runs alone with the skips of the bytes it really has.
    const int iChunks = in_bCombine
                            ? getChunkCount(rFill.eType, int(NQxcCopyRoutes::ByteEndOfPixels(rFill.eType, uiWidth)))
                            : getExtractChunkCount(rCombined.eType,
                                                   int(NQxcCopyRoutes::ByteEndOfPixels(rCombined.eType, uiWidth)));
    int aiSkips[3], aiLastSkips[3];
    bool bTightLast = false;
    for (int i = 0; i < 3; ++i) {
        const SPicture& r = m_asPictures[i];
        aiSkips[i] = getPadInBytesPerLine(r.eType, r.iPitch, iChunks);
        const uint64_t uLastStart = uiHeight ? uint64_t(uiHeight - 1) * uint32_t(r.iPitch) : 0;
        const int64_t i64LastBytes = std::min<int64_t>(r.iPitch, int64_t(r.uiSize) - int64_t(uLastStart));
        aiLastSkips[i] = aiSkips[i] - int(r.iPitch - i64LastBytes);
        bTightLast = bTightLast || aiLastSkips[i] != aiSkips[i];
    }
    const uint32_t uiBodyLines = bTightLast ? uiHeight - 1 : uiHeight;
    const uint32_t uiSlices = (uiBodyLines + kiLinesPerSlice - 1) / kiLinesPerSlice + (bTightLast ? 1 : 0);
    try {
        delete[] m_psSlices;
        m_psSlices = nullptr;
        m_psSlices = new SSlice[std::max<uint32_t>(uiSlices, 1)];
    } catch (...) {
        UnlockSurfaces();
        return E_OUTOFMEMORY;
    }
    for (uint32_t i = 0; i < uiSlices; ++i) {
        const bool bLast = bTightLast && i == uiSlices - 1;
        const uint32_t uiFirst = bLast ? uiHeight - 1 : i * kiLinesPerSlice;
        const uint32_t uiLines = bLast ? 1 : std::min<uint32_t>(kiLinesPerSlice, uiBodyLines - uiFirst);
        SSlice& rs = m_psSlices[i];
        rs.pfnKernel = in_pfnKernel;
        rs.a = rFill.pucBuffer + uint64_t(uiFirst) * uint32_t(rFill.iPitch);
        rs.b = rKey.pucBuffer + uint64_t(uiFirst) * uint32_t(rKey.iPitch);
        rs.c = rCombined.pucBuffer + uint64_t(uiFirst) * uint32_t(rCombined.iPitch);
        rs.iLines = int(uiLines);
        rs.iChunks = iChunks;
        const int* piSkips = bLast ? aiLastSkips : aiSkips;
        rs.iSkipA = piSkips[0];
        rs.iSkipB = piSkips[1];
        rs.iSkipC = piSkips[2];
    }
    m_uiSliceCount = uiSlices;
    return S_OK;
}

void CQxcBufferVideoAndKeyService::RunSlice(void* in_pService, uint32_t in_uiSlice)
{
    const SSlice& rs = static_cast<CQxcBufferVideoAndKeyService*>(in_pService)->m_psSlices[in_uiSlice];
    rs.pfnKernel(rs.a, rs.b, rs.c, rs.iLines, rs.iChunks, rs.iSkipC, rs.iSkipA, rs.iSkipB);
}

HRESULT CQxcBufferVideoAndKeyService::RunSlices()
{
    m_uiErrorCount = 0;
    if (!m_pRunner) return QX_E_NOT_INITIALIZED;
    m_pRunner->Run(m_uiSliceCount, &CQxcBufferVideoAndKeyService::RunSlice, this);
    return S_OK;
}

// --- Combine ------------------------------------------------------------------

CQxcBufferCombineVideoAndKeyService::CQxcBufferCombineVideoAndKeyService()
    : CQxcBufferVideoAndKeyService(L"BufferCombineVideoAndKeyService")
{
}

CQxcBufferCombineVideoAndKeyService::~CQxcBufferCombineVideoAndKeyService() {}

PFNQxcCombineExtractKernel CQxcBufferCombineVideoAndKeyService::getCombineFunction(EQxcSurfaceType in_eFillType,
                                                                                 bool in_bAlphaScaling) const
{
    if (in_eFillType == keQxcSurfaceTypeYCbCr422_8bits)
        return in_bAlphaScaling ? ConcurrencyCombineAlphaScaling : ConcurrencyCombine;
    if (in_eFillType == keQxcSurfaceTypeV210_10bits)
        return in_bAlphaScaling ? ConcurrencyCombineAlphaScaling_v210 : ConcurrencyCombine_v210;
    return nullptr;
}

HRESULT CQxcBufferCombineVideoAndKeyService::ValidateAndInitializeParams(IQxSurface* in_pVideo, IQxSurface* in_pKey,
                                                                         IQxSurface* in_pDestination,
                                                                         bool in_bAlphaScaling)
{
    return Prepare(in_pVideo, in_pKey, in_pDestination, true, getCombineFunction(TypeOf(in_pVideo), in_bAlphaScaling));
}

HRESULT CQxcBufferCombineVideoAndKeyService::CombineThread() { return RunSlices(); }

// --- Extract ------------------------------------------------------------------

CQxcBufferExtractVideoAndKeyService::CQxcBufferExtractVideoAndKeyService()
    : CQxcBufferVideoAndKeyService(L"BufferExtractVideoAndKeyService")
{
}

CQxcBufferExtractVideoAndKeyService::~CQxcBufferExtractVideoAndKeyService() {}

PFNQxcCombineExtractKernel CQxcBufferExtractVideoAndKeyService::getExtractFunction(
    EQxcSurfaceType in_eCombinedType) const
{
    switch (in_eCombinedType) {
    case keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_8bits_Shaped:
        return ConcurrencyExtract;
    case keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_10bits_Shaped:
        return ConcurrencyExtract_v210;
    default:
        return nullptr;
    }
}

HRESULT CQxcBufferExtractVideoAndKeyService::ValidateAndInitializeParams(IQxSurface* in_pSource,
                                                                         IQxSurface* in_pVideo, IQxSurface* in_pKey)
{
    return Prepare(in_pVideo, in_pKey, in_pSource, false, getExtractFunction(TypeOf(in_pSource)));
}

HRESULT CQxcBufferExtractVideoAndKeyService::ExtractThread() { return RunSlices(); }
