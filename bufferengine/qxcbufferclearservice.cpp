// The clear service: one line filled by the surface's own kernel, streamed
// into every line of the picture by slices on a work queue.
#include <qxbase/qxcbufferservices.h>
#include <qxbase/qxcsurface.h>
#include <qxbase/qxerrors.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "bufferengine/qxccopyroutes.h"
#include "bufferengine/qxcslicerunner.h"

CQxcBufferClearService::CQxcBufferClearService()
    : CQxLightUnknown(L"BufferClearService", nullptr),
      m_pSurface(nullptr),
      m_pucBuffer(nullptr),
      m_uiBufferSize(0),
      m_iPitch(0),
      m_uiHeight(0),
      m_uiLineBytes(0),
      m_ePolarity(keQxPolarityInvalid),
      m_bDefaultQadHeader(false),
      m_pucPattern(nullptr),
      m_uPatternBytes(0),
      m_apPatternSurfaces{},
      m_pRunner(nullptr),
      m_uiErrorCount(0)
{
}

CQxcBufferClearService::~CQxcBufferClearService() { CloseServices(); }

HRESULT CQxcBufferClearService::OpenServices()
{
    CloseServices();
    try {
        m_pGenericCopy.reset(CQxcGenericCopyFactory::CreateGenericCopy());
        m_pRunner = new CQxcSliceRunner("BufferClearService");
    } catch (...) {
        CloseServices();
        return E_OUTOFMEMORY;
    }
    return S_OK;
}

HRESULT CQxcBufferClearService::CloseServices()
{
    delete m_pRunner;
    m_pRunner = nullptr;
    m_pGenericCopy.reset();
    for (CQxcSurface*& pSurface : m_apPatternSurfaces) {
        delete pSurface;
        pSurface = nullptr;
    }
    std::free(m_pucPattern);
    m_pucPattern = nullptr;
    m_uPatternBytes = 0;
    return S_OK;
}

void CQxcBufferClearService::UnlockSurface()
{
    if (m_pSurface) m_pSurface->UnlockBuffer();
    m_pSurface = nullptr;
}

bool CQxcBufferClearService::FillPattern(EQxcSurfaceType in_eType, uint32_t in_uiWidth, EQxcColorRange in_eRange,
                                         EQxColorimetry in_eColorimetry, const SQxcYuvaPixel& in_rsYuva,
                                         const SQxcRGBAPixel& in_rsRgba)
{
    // Whole 16-pixel blocks (and whole v210 groups) past the width, so that
    // the kernel's last block lands inside the pattern.
    const uint32_t uiBlocks = (in_uiWidth + 15) / 16;
    const size_t uBytes = (size_t(uiBlocks) * 16 * 8 + 128 + 63) & ~size_t(63);
    if (m_uPatternBytes < uBytes) {
        std::free(m_pucPattern);
        m_pucPattern = static_cast<unsigned char*>(std::aligned_alloc(64, uBytes));
        m_uPatternBytes = m_pucPattern ? uBytes : 0;
        if (!m_pucPattern) return false;
    }
    if (in_eType == keQxcSurfaceTypeAlpha || in_eType == keQxcSurfaceTypeAlphaLuminance) {
        // Plain bytes: the key, followed for alpha-luminance by the luma.
        const unsigned char ucLuma = static_cast<unsigned char>(std::min(in_rsYuva.Y >> 2, 255));
        for (uint32_t x = 0; x < in_uiWidth; ++x) {
            if (in_eType == keQxcSurfaceTypeAlpha) {
                m_pucPattern[x] = in_rsRgba.A;
            } else {
                m_pucPattern[2 * x] = in_rsRgba.A;
                m_pucPattern[2 * x + 1] = ucLuma;
            }
        }
        return true;
    }
    CQxcSurface* rpSurface = m_apPatternSurfaces[in_eType];
    const bool bKey = NQxcCopyRoutes::HasKey(in_eType);
    const long lPitch = long(m_uPatternBytes);
    if (CQxcRgbBufferSurface* pRgb = dynamic_cast<CQxcRgbBufferSurface*>(rpSurface))
        return pRgb->Initialize(m_pucPattern, in_uiWidth, 1, lPitch, bKey, in_eColorimetry, in_eRange) &&
               pRgb->SetPosition(0, 0) && pRgb->FillRgb(in_rsRgba, in_uiWidth, 1);
    return rpSurface->Initialize(m_pucPattern, in_uiWidth, 1, lPitch, bKey, in_eColorimetry) &&
           rpSurface->SetPosition(0, 0) && rpSurface->FillBlocks(in_rsYuva, uiBlocks, 1);
}

HRESULT CQxcBufferClearService::ValidateAndInitializeClearParams(IQxSurface* in_pSurface, EQxColor in_eColor,
                                                                 float in_fAlpha)
{
    m_pSurface = nullptr;
    m_pucBuffer = nullptr;
    m_uiBufferSize = 0;
    m_bDefaultQadHeader = false;
    m_uiLineBytes = 0;
    m_uiHeight = 0;
    if (!in_pSurface) return QX_E_INVALID_POINTER;
    SQxSurfaceDescription sDescription{};
    sDescription.size = sizeof(sDescription);
    if (HRESULT hr = in_pSurface->GetSurfaceDescription(&sDescription)) return hr;
    if (in_eColor < keQxColorBlack || in_eColor > keQxColorBlue || !(in_fAlpha >= 0.0f && in_fAlpha <= 1.0f))
        return E_INVALIDARG;
    EQxcSurfaceType eType = keQxcSurfaceTypeInvalid;
    EQxColorimetry eColorimetry = keQxColorimetryInvalid;
    EQxcColorRange eRange = keQxcColorRangeInvalid;
    CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(sDescription, &eType, &eColorimetry, &eRange);
    const bool bAncillary = eType == keQxcSurfaceTypeOpaqueData &&
                            sDescription.eSurfaceFormat == keQxSurfaceFormatQueltoAncillaryData;
    // Every type with a surface class has a fill; so have the alpha types,
    // as plain bytes.
    const bool bAlpha = eType == keQxcSurfaceTypeAlpha || eType == keQxcSurfaceTypeAlphaLuminance;
    if (!bAncillary && !bAlpha) {
        if (eType < 0 || eType >= kiQxcSurfaceTypeCount) return QX_E_INVALID_OPERATION;
        try {
            if (!m_apPatternSurfaces[eType])
                m_apPatternSurfaces[eType] = NQxcCopyRoutes::CreateSurfaceOfType(eType, true);
        } catch (...) {
            return E_OUTOFMEMORY;
        }
        if (!m_apPatternSurfaces[eType]) return QX_E_INVALID_OPERATION;
    }

    void* pBuffer = nullptr;
    if (HRESULT hr = in_pSurface->LockBuffer(keQxBufferAccessWrite, &pBuffer, &m_iPitch, &m_uiBufferSize)) return hr;
    m_pSurface = in_pSurface;
    m_pucBuffer = static_cast<unsigned char*>(pBuffer);
    m_ePolarity = sDescription.ePolarity;
    if (!m_pucBuffer) {
        UnlockSurface();
        return QX_E_INVALID_POINTER;
    }
    if (bAncillary) {
        m_bDefaultQadHeader = true;
        return S_OK;
    }
    const uint64_t uLine = NQxcCopyRoutes::ByteEndOfPixels(eType, sDescription.ulWidth);
    const bool bFits = sDescription.ulWidth == 0 || sDescription.ulHeight == 0 ||
                       (m_iPitch > 0 && uLine <= uint64_t(m_iPitch) &&
                        uint64_t(sDescription.ulHeight - 1) * uint32_t(m_iPitch) + uLine <= m_uiBufferSize);
    if (!bFits) {
        UnlockSurface();
        return QX_E_INVALID_GEOMETRY;
    }
    SQxcYuvaPixel sYuva{};
    SQxcRGBAPixel sRgba{};
    CQxcBufferEngineCommon::GetHostColor(in_eColor, in_fAlpha, &sYuva, &sRgba, eRange);
    // RGB surfaces without a colorimetry of their own fill with the colour
    // table's RGB values; the coefficient set does not enter a fill.
    const EQxColorimetry eFillColorimetry =
        eColorimetry == keQxColorimetryInvalid ? keQxColorimetryITUR_BT_709 : eColorimetry;
    if (sDescription.ulWidth != 0 &&
        !FillPattern(eType, sDescription.ulWidth, eRange, eFillColorimetry, sYuva, sRgba)) {
        UnlockSurface();
        return E_OUTOFMEMORY;
    }
    m_uiLineBytes = uint32_t(uLine);
    m_uiHeight = sDescription.ulWidth == 0 ? 0 : sDescription.ulHeight;
    return S_OK;
}

void CQxcBufferClearService::ClearSlice(void* in_pService, uint32_t in_uiSlice)
{
    // Every line of the slice is a copy of the pattern.
    CQxcBufferClearService& r = *static_cast<CQxcBufferClearService*>(in_pService);
    const SSlice& rs = r.m_asSlices[in_uiSlice];
    unsigned char* pucLine = r.m_pucBuffer + uint64_t(rs.uiFirstLine) * uint32_t(r.m_iPitch);
    for (uint32_t y = 0; y < rs.uiLines; ++y, pucLine += r.m_iPitch)
        r.m_pGenericCopy->GenericCopy(r.m_pucPattern, pucLine, r.m_uiLineBytes);
}

HRESULT CQxcBufferClearService::ClearMainThread()
{
    m_uiErrorCount = 0;
    if (m_bDefaultQadHeader || m_uiHeight == 0) return S_OK;
    if (!m_pRunner || !m_pGenericCopy) return QX_E_NOT_INITIALIZED;
    const SQxcSlicePlan sPlan = CQxcBufferCopyService::PlanSlices(m_uiHeight, false);
    uint32_t uiTasks = 0;
    auto fnSlice = [&](uint32_t in_uiFirst, uint32_t in_uiLines) {
        SSlice& rs = m_asSlices[uiTasks++];
        rs.uiFirstLine = in_uiFirst;
        rs.uiLines = in_uiLines;
    };
    for (uint32_t i = 0; i < sPlan.uiSlices; ++i) fnSlice(i * sPlan.uiLinesPerSlice, sPlan.uiLinesPerSlice);
    if (sPlan.uiRemainder != 0) fnSlice(sPlan.uiSlices * sPlan.uiLinesPerSlice, sPlan.uiRemainder);
    m_pRunner->Run(uiTasks, &CQxcBufferClearService::ClearSlice, this);
    return S_OK;
}
