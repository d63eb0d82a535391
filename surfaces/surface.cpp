// The roots of the surface tree: binding, cursors, range tests, and running
// a block kernel between two surfaces.
#include <qxbase/qxcsurface.h>

#include "surfaces/kernels/coefficients.h"
#include "surfaces/kernels/compose.h"

namespace {

// Pixels and bytes of the addressing unit of each buffer surface type (the
// smallest run of whole pixels that starts on a byte); 0 where no buffer
// surface has the type.
struct SPositionUnit {
    unsigned int uiPixels;
    unsigned int uiBytes;
};
const SPositionUnit kasBufferUnits[kiQxcSurfaceTypeCount] = {
    {0, 0},  {0, 0},  {0, 0},  {0, 0},  {0, 0},  {0, 0},  {0, 0},  {0, 0},   {0, 0},  {0, 0},
    {0, 0},  {0, 0},  {0, 0},
    {1, 4},    // 13 RGBA
    {1, 4},    // 14 RGBA shaped
    {2, 4},    // 15 YUYV (and 2VUY)
    {8, 24},   // 16 8-bit 4:2:2:4
    {8, 24},   // 17
    {16, 40},  // 18 packed 10-bit YUYV
    {2, 8},    // 19 10-bit 4:2:2:4
    {2, 8},    // 20
    {1, 8},    // 21 16-bit 4:4:4:4
    {4, 12},   // 22 RGB24
    {0, 0},  {0, 0},  {0, 0},
    {1, 4},    // 26 BGRA
    {0, 0},
    {1, 4},    // 28 A2R10G10B10
    {1, 8},    // 29 K64ARGB
    {1, 16},   // 30 float YCbCrA
    {6, 16},   // 31 v210
    {1, 8},    // 32 ABGR 16-bit
    {0, 0},
    {1, 4},    // 34 A2B10G10R10
    {0, 0},
    {8, 36}};  // 36 RGB36

}  // namespace

// ------------------------------------------------------------ CQxcSurface
const SQxcUnshapeReciprocals CQxcSurface::ms_sUnshapeReciprocal = NQxcCoefficients::MakeReciprocals();

CQxcSurface::CQxcSurface(EQxcSurfaceType in_eType, unsigned int in_uiBlockSize, bool in_bCachedStores)
    : m_pucBuffer(nullptr),
      m_pucCurrent(nullptr),
      m_uiWidth(0),
      m_uiWidthInBlocks(0),
      m_uiHeight(0),
      m_uiCursorLine(0),
      m_uiCursorBlock(0),
      m_uiBlockSize(in_uiBlockSize),
      m_eSurfaceType(in_eType),
      m_lPitch(0),
      m_bKeyPresent(false),
      m_bCachedStores(in_bCachedStores),
      m_eColorimetry(keQxColorimetryInvalid)
{
}

CQxcSurface::~CQxcSurface() = default;

bool CQxcSurface::Initialize(unsigned char* in_pucBuffer, unsigned int in_uiWidth, unsigned int in_uiHeight,
                             long in_lPitch, bool in_bKeyPresent, EQxColorimetry in_eColorimetry)
{
    m_pucBuffer = in_pucBuffer;
    m_pucCurrent = in_pucBuffer;
    m_uiWidth = in_uiWidth;
    m_uiWidthInBlocks = in_uiWidth / 16 + (in_uiWidth % 16 != 0 ? 1 : 0);
    m_uiHeight = in_uiHeight;
    m_lPitch = in_lPitch;
    m_bKeyPresent = in_bKeyPresent;
    m_eColorimetry = in_eColorimetry;
    m_uiCursorLine = 0;
    m_uiCursorBlock = 0;
    return true;
}

unsigned int CQxcSurface::UnitOffset(unsigned int in_uiPixel) const
{
    if (IsBufferSurfaceType(m_eSurfaceType)) {
        const SPositionUnit& rsUnit = kasBufferUnits[m_eSurfaceType];
        return rsUnit.uiPixels == 0 ? 0 : in_uiPixel / rsUnit.uiPixels * rsUnit.uiBytes;
    }
    // A block surface's unit is its 16-pixel block; v210 (block size 0) is
    // addressed by its 6-pixel groups.
    if (m_uiBlockSize == 0)
        return NQxcKernels::V210GroupOffset(in_uiPixel);
    return in_uiPixel / 16 * m_uiBlockSize;
}

bool CQxcSurface::SetPosition(unsigned int in_uiX, unsigned int in_uiY)
{
    if (in_uiX >= m_uiWidth || in_uiY >= m_uiHeight)
        return false;
    m_uiCursorLine = in_uiY;
    m_uiCursorBlock = in_uiX / 16;
    const unsigned int uiPixel = IsBufferSurfaceType(m_eSurfaceType) ? in_uiX : 16 * m_uiCursorBlock;
    if (IsBufferSurfaceType(m_eSurfaceType))
        static_cast<CQxcBufferSurface*>(this)->m_uiCursorPixel = in_uiX;
    m_pucCurrent = m_pucBuffer + static_cast<long>(in_uiY) * m_lPitch + UnitOffset(uiPixel);
    return true;
}

bool CQxcSurface::BlockRangeFits(unsigned int in_uiWidthInBlocks, unsigned int in_uiHeight) const
{
    // 64-bit sums: a huge request must not wrap into range.
    return static_cast<uint64_t>(m_uiCursorBlock) + in_uiWidthInBlocks <= m_uiWidthInBlocks &&
           static_cast<uint64_t>(m_uiCursorLine) + in_uiHeight <= m_uiHeight;
}

void CQxcSurface::AdvanceBlocks(unsigned int in_uiWidthInBlocks, unsigned int in_uiHeight)
{
    m_uiCursorLine += in_uiHeight - 1;
    m_uiCursorBlock += in_uiWidthInBlocks;
    m_pucCurrent = m_pucBuffer + static_cast<long>(m_uiCursorLine) * m_lPitch + UnitOffset(16 * m_uiCursorBlock);
}

namespace {

// The pixel a surface's cursor stands on, and how many pixels a line holds.
unsigned int FirstPixel(const CQxcSurface& in_rs)
{
    if (CQxcSurface::IsBufferSurfaceType(in_rs.GetSurfaceType()))
        return static_cast<const CQxcBufferSurface&>(in_rs).GetCursorPixel();
    return 16 * in_rs.GetCursorBlock();
}

unsigned int LinePixels(const CQxcSurface& in_rs)
{
    if (in_rs.GetSurfaceType() == keQxcSurfaceTypeV210_10bits ||
        in_rs.GetSurfaceType() == keQxcSurfaceTypeV210_10bits_Buffer)
        return NQxcKernels::V210LinePixels(in_rs.GetWidth());
    return in_rs.GetWidth();
}

}  // namespace

namespace {

// The destination's half of a job: this surface from its cursor.
SQxcBlockJob DestinationJob(const CQxcSurface& in_rDestination, unsigned int in_uiWidthInBlocks,
                            unsigned int in_uiHeight)
{
    SQxcBlockJob sJob = {};
    sJob.pucDestination = in_rDestination.GetCurrentPosition();
    sJob.lDestinationPitch = in_rDestination.GetPitch();
    sJob.uiDestinationFirstPixel = FirstPixel(in_rDestination);
    sJob.uiDestinationLinePixels = LinePixels(in_rDestination);
    sJob.uiBlocks = in_uiWidthInBlocks;
    sJob.uiLines = in_uiHeight;
    sJob.bCachedStores = in_rDestination.HasCachedStores();
    return sJob;
}

}  // namespace

bool CQxcSurface::RunBlockJob(PFNQxcBlockJob in_pfnJob, const CQxcSurface* in_pSource,
                              unsigned int in_uiWidthInBlocks, unsigned int in_uiHeight,
                              const SQxcRgbCoeff* in_psCoeff)
{
    SQxcBlockJob sJob = DestinationJob(*this, in_uiWidthInBlocks, in_uiHeight);
    sJob.pucSource = in_pSource->m_pucCurrent;
    sJob.lSourcePitch = in_pSource->m_lPitch;
    sJob.uiSourceFirstPixel = FirstPixel(*in_pSource);
    sJob.uiSourceLinePixels = LinePixels(*in_pSource);
    sJob.bSourceKeyPresent = in_pSource->m_bKeyPresent;
    sJob.psCoeff = in_psCoeff;
    in_pfnJob(sJob);
    AdvanceBlocks(in_uiWidthInBlocks, in_uiHeight);
    return true;
}

bool CQxcSurface::RunFillJob(PFNQxcBlockJob in_pfnJob, const SQxcYuvaPixel& in_rsColor,
                             unsigned int in_uiWidthInBlocks, unsigned int in_uiHeight)
{
    if (in_uiWidthInBlocks == 0 || in_uiHeight == 0)
        return true;
    if (!BlockRangeFits(in_uiWidthInBlocks, in_uiHeight))
        return false;
    SQxcBlockJob sJob = DestinationJob(*this, in_uiWidthInBlocks, in_uiHeight);
    sJob.sColor = in_rsColor;
    in_pfnJob(sJob);
    AdvanceBlocks(in_uiWidthInBlocks, in_uiHeight);
    return true;
}

// ------------------------------------------------------ CQxcBufferSurface
QXC_DEFINE_RGB_COEFF_FAMILY(CQxcBufferSurface)

const SQxcRgbFilteringCoeff CQxcBufferSurface::ms_sRgbFilteringPrivate = NQxcCoefficients::kRgbFilteringCoeff;
const int64_t CQxcBufferSurface::ms_ki64HorizontalFilterCoeff0 = NQxcCoefficients::FourLanes(16384);
const int64_t CQxcBufferSurface::ms_ki64HorizontalFilterCoeff1 = NQxcCoefficients::FourLanes(6144);
const int64_t CQxcBufferSurface::ms_ki64HorizontalFilterCoeff2 = NQxcCoefficients::FourLanes(2048);

CQxcBufferSurface::CQxcBufferSurface(EQxcSurfaceType in_eType, unsigned int in_uiBlockSize,
                                     unsigned int in_uiGroupBytes, unsigned int in_uiGroupPixels,
                                     bool in_bCachedStores)
    : CQxcSurface(in_eType, in_uiBlockSize, in_bCachedStores),
      m_uiCursorPixel(0),
      m_uiGroupBytes(in_uiGroupBytes),
      m_uiGroupPixels(in_uiGroupPixels),
      m_bInterpolate(false),
      m_bFilter(false),
      m_eColorRange(keQxcColorRangeInvalid),
      m_psRgbCoeff(nullptr),
      m_psRgbFilteringCoeff(&ms_sRgbFilteringPrivate)
{
}

CQxcBufferSurface::~CQxcBufferSurface() = default;

bool CQxcBufferSurface::CopyBlocksFrom(const CQxcSurface*, unsigned int, unsigned int) { return true; }

bool CQxcBufferSurface::Initialize(unsigned char* in_pucBuffer, unsigned int in_uiWidth, unsigned int in_uiHeight,
                                   long in_lPitch, bool in_bKeyPresent, EQxColorimetry in_eColorimetry,
                                   EQxcColorRange in_eRange)
{
    if (!CQxcSurface::Initialize(in_pucBuffer, in_uiWidth, in_uiHeight, in_lPitch, in_bKeyPresent, in_eColorimetry))
        return false;
    m_uiCursorPixel = 0;
    m_eColorRange = in_eRange;
    m_psRgbCoeff = QxcSelectRgbCoeff(ms_apsRgbCoeffTable, in_eRange, in_eColorimetry);
    return true;
}

void CQxcBufferSurface::GetPosition(unsigned int* out_puiX, unsigned int* out_puiY) const
{
    *out_puiX = m_uiCursorPixel;
    *out_puiY = m_uiCursorLine;
}

bool CQxcBufferSurface::PixelRangeFits(const CQxcSurface* in_pSurface, unsigned int in_uiWidth,
                                       unsigned int in_uiHeight)
{
    return static_cast<uint64_t>(FirstPixel(*in_pSurface)) + in_uiWidth <= in_pSurface->GetWidth() &&
           static_cast<uint64_t>(in_pSurface->GetCursorLine()) + in_uiHeight <= in_pSurface->GetHeight();
}

bool CQxcBufferSurface::PrepareCopyFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidth,
                                        unsigned int in_uiHeight, bool in_bRgbDestination,
                                        unsigned int& out_ruiMode, bool& out_rbDone) const
{
    out_rbDone = in_uiWidth == 0 || in_uiHeight == 0;
    out_ruiMode = 0;
    if (out_rbDone)
        return true;
    if (!PixelRangeFits(this, in_uiWidth, in_uiHeight) || !PixelRangeFits(in_pSource, in_uiWidth, in_uiHeight))
        return false;
    out_ruiMode = (in_bRgbDestination ? m_bInterpolate : m_bFilter) ? 1 : 0;
    // The filter and interpolation kernels work on whole 16-pixel runs.
    if (out_ruiMode == 1 && in_pSource->GetWidth() % 16 != 0)
        return false;
    return true;
}

bool CQxcBufferSurface::FillBlocks(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidthInBlocks,
                                   unsigned int in_uiHeight)
{
    if (in_uiWidthInBlocks == 0 || in_uiHeight == 0)
        return true;
    if (!BlockRangeFits(in_uiWidthInBlocks, in_uiHeight))
        return false;
    const uint64_t uiEnd = 16 * (static_cast<uint64_t>(m_uiCursorBlock) + in_uiWidthInBlocks);
    const unsigned int uiEnd32 = static_cast<unsigned int>(uiEnd < m_uiWidth ? uiEnd : m_uiWidth);
    return uiEnd32 <= m_uiCursorPixel || Fill(in_rsColor, uiEnd32 - m_uiCursorPixel, in_uiHeight);
}

namespace {

// The destination's half of a pixel job: this surface from its cursor line.
SQxcBlockJob PixelDestinationJob(const CQxcBufferSurface& in_r, unsigned int in_uiWidth, unsigned int in_uiHeight)
{
    SQxcBlockJob sJob = {};
    sJob.pucDestination = in_r.GetBuffer() + static_cast<long>(in_r.GetCursorLine()) * in_r.GetPitch();
    sJob.lDestinationPitch = in_r.GetPitch();
    sJob.uiDestinationFirstPixel = in_r.GetCursorPixel();
    sJob.uiDestinationLinePixels = LinePixels(in_r);
    sJob.uiPixels = in_uiWidth;
    sJob.uiLines = in_uiHeight;
    sJob.bCachedStores = in_r.HasCachedStores();
    return sJob;
}

}  // namespace

bool CQxcBufferSurface::RunPixelJob(PFNQxcPixelJob in_pfnJob, const CQxcSurface* in_pSource, unsigned int in_uiWidth,
                                    unsigned int in_uiHeight, const CQxcSurface* in_pRgbSide)
{
    if (!IsBufferSurfaceType(in_pRgbSide->GetSurfaceType()))
        return false;
    const CQxcBufferSurface* pRgbSide = static_cast<const CQxcBufferSurface*>(in_pRgbSide);
    SQxcBlockJob sJob = PixelDestinationJob(*this, in_uiWidth, in_uiHeight);
    if (in_pSource != nullptr) {
        sJob.pucSource = in_pSource->GetBuffer() + static_cast<long>(in_pSource->GetCursorLine()) * in_pSource->GetPitch();
        sJob.lSourcePitch = in_pSource->GetPitch();
        sJob.uiSourceFirstPixel = FirstPixel(*in_pSource);
        sJob.uiSourceLinePixels = LinePixels(*in_pSource);
        sJob.bSourceKeyPresent = in_pSource->IsKeyPresent();
    }
    sJob.psCoeff = pRgbSide->m_psRgbCoeff;
    sJob.iRgbRange = pRgbSide->m_eColorRange;
    sJob.psRangeCoeff = &CQxcRgbBufferSurface::ms_sRgbToRgbCoeff;
    if (!in_pfnJob(sJob))
        return false;
    AdvancePixels(in_uiWidth, in_uiHeight);
    return true;
}

bool CQxcBufferSurface::RunPixelFill(PFNQxcPixelJob in_pfnJob, const SQxcYuvaPixel& in_rsYuv,
                                     const SQxcRGBAPixel_16bits& in_rsRgb, unsigned int in_uiWidth,
                                     unsigned int in_uiHeight)
{
    if (in_uiWidth == 0 || in_uiHeight == 0)
        return true;
    if (!PixelRangeFits(this, in_uiWidth, in_uiHeight))
        return false;
    SQxcBlockJob sJob = PixelDestinationJob(*this, in_uiWidth, in_uiHeight);
    sJob.sColor = in_rsYuv;
    sJob.sRgbColor = in_rsRgb;
    if (!in_pfnJob(sJob))
        return false;
    AdvancePixels(in_uiWidth, in_uiHeight);
    return true;
}

void CQxcBufferSurface::AdvancePixels(unsigned int in_uiWidth, unsigned int in_uiHeight)
{
    m_uiCursorLine += in_uiHeight - 1;
    m_uiCursorPixel += in_uiWidth;
    m_uiCursorBlock = m_uiCursorPixel / 16;
    m_pucCurrent = m_pucBuffer + static_cast<long>(m_uiCursorLine) * m_lPitch + UnitOffset(m_uiCursorPixel);
}

// --------------------------------------------------- CQxcRgbBufferSurface
const SQxcRgbToRgbCoeff CQxcRgbBufferSurface::ms_sRgbToRgbCoeff = NQxcCoefficients::kRgbToRgbCoeff;

CQxcRgbBufferSurface::CQxcRgbBufferSurface(EQxcSurfaceType in_eType, unsigned int in_uiBlockSize,
                                           unsigned int in_uiGroupBytes, unsigned int in_uiGroupPixels,
                                           bool in_bCachedStores)
    : CQxcBufferSurface(in_eType, in_uiBlockSize, in_uiGroupBytes, in_uiGroupPixels, in_bCachedStores),
      m_psRgbToRgbCoeff(nullptr)
{
}

CQxcRgbBufferSurface::~CQxcRgbBufferSurface() = default;

bool CQxcRgbBufferSurface::Initialize(unsigned char* in_pucBuffer, unsigned int in_uiWidth,
                                      unsigned int in_uiHeight, long in_lPitch, bool in_bKeyPresent,
                                      EQxColorimetry in_eColorimetry, EQxcColorRange in_eRange)
{
    m_psRgbToRgbCoeff = &ms_sRgbToRgbCoeff;
    return CQxcBufferSurface::Initialize(in_pucBuffer, in_uiWidth, in_uiHeight, in_lPitch, in_bKeyPresent,
                                         in_eColorimetry, in_eRange);
}

bool CQxcRgbBufferSurface::FillRgb(const SQxcRGBAPixel_16bits& in_rsColor, unsigned int in_uiWidth,
                                   unsigned int in_uiHeight)
{
    const SQxcRGBAPixel sColor = {static_cast<uint8_t>(in_rsColor.R >> 8), static_cast<uint8_t>(in_rsColor.G >> 8),
                                  static_cast<uint8_t>(in_rsColor.B >> 8), static_cast<uint8_t>(in_rsColor.A >> 8)};
    return FillRgb(sColor, in_uiWidth, in_uiHeight);
}
