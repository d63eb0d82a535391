// 8-bit AYCbCr 4:4:4:4 shaped block surface: only ever a source of the block
// kernels, so it fills but converts nothing into itself. It has no SIMD
// class; its fill is the scalar one.
#include "surfaces/blocksurfacedefs.h"

CQxcAYCbCr4444_8bits_ShapedSurface::CQxcAYCbCr4444_8bits_ShapedSurface(bool in_bCachedStores)
    : CQxcSurface(keQxcSurfaceTypeAYCbCr4444_8bits_Shaped, 64, in_bCachedStores)
{
}

CQxcAYCbCr4444_8bits_ShapedSurface::~CQxcAYCbCr4444_8bits_ShapedSurface() = default;

bool CQxcAYCbCr4444_8bits_ShapedSurface::FillBlocks(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidthInBlocks,
                                                    unsigned int in_uiHeight)
{
    return RunFillJob(&NQxcKernels::TScalarEntry<NQxcKernels::NBlockMatrix::KFillAycbcr8>::Run, in_rsColor,
                      in_uiWidthInBlocks, in_uiHeight);
}

bool CQxcAYCbCr4444_8bits_ShapedSurface::CopyBlocksFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks,
                                                        unsigned int in_uiHeight)
{
    // No source converts into this format; a zero size still succeeds.
    (void)in_pSource;
    return in_uiWidthInBlocks == 0 || in_uiHeight == 0;
}
