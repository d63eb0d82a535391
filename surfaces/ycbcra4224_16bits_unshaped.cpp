// The hub: the 16-bit 4:2:2:4 unshaped block surface, into which every
// other YUV block format, v210, and the high-depth RGB formats convert. It
// carries the RGB side of a conversion (range, colorimetry, coefficient set)
// and its own family of coefficient sets.
#include "surfaces/blocksurfacedefs.h"
#include "surfaces/kernels/coefficients.h"
#include "surfaces/replaceblock.h"

typedef CQxcYCbCrA4224_16bits_UnshapedSurface CHub;

QXC_DEFINE_COPY_FUNCTION_TABLE(CQxcYCbCrA4224_16bits_UnshapedSurface, QXC_KERNELS_YCbCrA4224_16bits_Unshaped)

QXC_DEFINE_RGB_COEFF_FAMILY(CQxcYCbCrA4224_16bits_UnshapedSurface)
const SQxcRgbFilteringCoeff CHub::ms_sRgbFilteringPrivate = NQxcCoefficients::kRgbFilteringCoeff;

namespace {
const int16_t ki16Ones = -1;     // ff ff
const int16_t ki16Low = 0x00ff;  // ff 00
const int16_t ki16High = -256;   // 00 ff
}  // namespace

const SQxcLanes16 CHub::ms_ki128Zero = {{0, 0, 0, 0, 0, 0, 0, 0}};
const SQxcLanes16 CHub::ms_ki128w_Mask_CbCr422 = {{ki16Low, ki16Low, ki16Low, ki16Low, ki16Low, ki16Low, ki16Low,
                                                   ki16Low}};
const SQxcLanes16 CHub::ms_ki128b_Opaque = {{ki16Ones, ki16Ones, ki16Ones, ki16Ones, ki16Ones, ki16Ones, ki16Ones,
                                             ki16Ones}};
const SQxcLanes16 CHub::ms_ki128b_ffff = ms_ki128b_Opaque;
const SQxcLanes16 CHub::ms_ki128b_OpaqueForAlpha = {{ki16Ones, ki16Ones, ki16Ones, ki16Ones, 0, 0, 0, 0}};
const SQxcLanes16 CHub::ms_ki128w_Mask_bGra = {{0, ki16Low, 0, ki16Low, 0, ki16Low, 0, ki16Low}};
const SQxcLanes16 CHub::ms_ki128w_Mask_bgRa = {{ki16High, 0, ki16High, 0, ki16High, 0, ki16High, 0}};
const SQxcLanes16 CHub::ms_ki128w_Mask_CbCr = {{ki16Ones, 0, ki16Ones, 0, ki16Ones, 0, ki16Ones, 0}};
const SQxcLanes16 CHub::ms_ki128w_Mask_FirstWord = {{ki16Ones, 0, 0, 0, 0, 0, 0, 0}};
const SQxcLanes16 CHub::ms_ki128w_Mask_LastWord = {{0, 0, 0, 0, 0, 0, 0, ki16Ones}};

namespace {

// Index of video-level BT.709, where a new hub starts.
const int kiDefaultCoeff = keQxcColorRangeVideo + 3 * keQxColorimetryITUR_BT_709;

bool HasMatrix(EQxColorimetry in_e) { return in_e >= keQxColorimetryITUR_BT_601 && in_e <= keQxColorimetryUnknown; }

}  // namespace

CHub::CQxcYCbCrA4224_16bits_UnshapedSurface(bool in_bCachedStores)
    : CQxcSurface(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, 96, in_bCachedStores),
      m_eColorRange(keQxcColorRangeVideo),
      m_eRgbColorimetry(keQxColorimetryITUR_BT_709),
      m_psRgbCoeff(ms_apsRgbCoeffTable[kiDefaultCoeff])
{
    if (!ms_bCopyFunctionTableInitialized)
        InitializeCopyFunctionTable();
}

CHub::~CQxcYCbCrA4224_16bits_UnshapedSurface() = default;

bool CHub::CopyBlocksFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks, unsigned int in_uiHeight)
{
    // Both sides must name a colorimetry: the hub is where RGB meets YCbCr.
    if (in_uiWidthInBlocks != 0 && in_uiHeight != 0 &&
        (!HasMatrix(m_eColorimetry) || !HasMatrix(in_pSource->GetColorimetry())))
        return false;
    return DispatchCopyBlocks(this, ms_apfnCopyFunctions, in_pSource, in_uiWidthInBlocks, in_uiHeight);
}

bool CHub::InitializeRGB10(unsigned char* in_pucBuffer, unsigned int in_uiWidth, unsigned int in_uiHeight,
                           long in_lPitch, bool in_bKeyPresent, EQxColorimetry in_eColorimetry,
                           EQxcColorRange in_eRange, EQxColorimetry in_eRgbColorimetry)
{
    if (!CQxcSurface::Initialize(in_pucBuffer, in_uiWidth, in_uiHeight, in_lPitch, in_bKeyPresent, in_eColorimetry))
        return false;
    m_eColorRange = in_eRange;
    m_eRgbColorimetry = in_eRgbColorimetry;
    m_psRgbCoeff = QxcSelectRgbCoeff(ms_apsRgbCoeffTable, in_eRange, in_eRgbColorimetry);
    return true;
}

void NQxcReplaceBlock::BindScratch(CQxcYCbCrA4224_16bits_UnshapedSurface& in_rScratch, SScratch& in_rsScratch,
                                   const CQxcYCbCrA4224_16bits_UnshapedSurface& in_rDestination)
{
    in_rScratch.InitializeRGB10(in_rsScratch.auc, 16, 1, sizeof(in_rsScratch.auc), in_rDestination.IsKeyPresent(),
                                in_rDestination.GetColorimetry(), in_rDestination.GetColorRange(),
                                in_rDestination.GetRgbColorimetry());
}

QXC_DEFINE_REPLACE_BLOCK(CHub, CQxcYCbCrA4224_16bits_UnshapedSurfaceSSE2, keLumaKeyAndChromaPairs)

typedef CQxcYCbCrA4224_16bits_UnshapedSurfaceSSE2 CLeaf;
QXC_DEFINE_BLOCK_LEAF(CQxcYCbCrA4224_16bits_UnshapedSurfaceSSE2, CHub, KFill4224_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4444_16bits_Unshaped, K4224_16From4444_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_16bits_Unshaped, K4224_16From4224_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCr422_8bits, K4224_16FromYuyv8)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCr422_10bits, K4224_16FromPacked10)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_8bits_Unshaped, K4224_16From4224_8)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_8bits_Shaped, K4224_16UFrom4224_8S)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_10bits_Unshaped, K4224_16From4224_10)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_10bits_Shaped, K4224_16UFrom4224_10S)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromAYCbCr4444_8bits_Shaped, K4224_16UFromAycbcr8S)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromR4FL_Unshaped, K4224_16FromR4fl)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromV210, K4224_16FromV210)

// The RGB sources go through the matrix of the hub's RGB side; without a set
// (a range or colorimetry that selects none) they are refused.
#define QXC_DEFINE_RGB_KERNEL(Name, Kernel)                                                              \
    QXC_BLOCK_KERNEL(CLeaf::Name)                                                                        \
    {                                                                                                    \
        if (m_psRgbCoeff == nullptr)                                                                     \
            return false;                                                                                \
        return RunBlockJob(&NQxcKernels::TSse2Entry<NQxcKernels::NBlockMatrix::Kernel>::Run, in_pSource, \
                           in_uiWidthInBlocks, in_uiHeight, m_psRgbCoeff);                               \
    }
QXC_DEFINE_RGB_KERNEL(CopyFromA2R10G10B10_Unshaped, K4224_16FromA2r10g10b10)
QXC_DEFINE_RGB_KERNEL(CopyFromK64ARGB_Unshaped, K4224_16FromK64argb)
