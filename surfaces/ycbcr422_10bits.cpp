// Packed 10-bit YUYV block surface, its SSE2 kernels and its two line
// helpers (planar 16-bit and v210 into the packed form).
#include "surfaces/blocksurfacedefs.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxcYCbCr422_10bitsSurface, keQxcSurfaceTypeYCbCr422_10bits, 40, QXC_KERNELS_YCbCr422_10bits)

typedef CQxcYCbCr422_10bitsSurfaceSSE2 CLeaf;
QXC_DEFINE_BLOCK_LEAF(CQxcYCbCr422_10bitsSurfaceSSE2, CQxcYCbCr422_10bitsSurface, KFillPacked10)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCr422_16bits, KPacked10From422_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4444_16bits_Unshaped, KPacked10From4444_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_16bits_Unshaped, KPacked10From4224_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_16bits_Shaped, KPacked10From4224_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromV210, KPacked10FromV210)

bool CLeaf::_Convert_Planar_YUV422_16M_Pixels_10bit_To_Quelto_YUYV422_16M_Pixels_10bit_ASM(
    const uint16_t* in_pusY, const uint16_t* in_pusCb, const uint16_t* in_pusCr, unsigned char* in_pucDestination,
    unsigned int in_uiPixels)
{
    if (in_uiPixels == 0 || in_uiPixels % 16 != 0)
        return false;
    NQxcKernels::PlanarToPacked10(NQxcKernels::CSse2(), in_pusY, in_pusCb, in_pusCr, in_pucDestination,
                                  in_uiPixels / 16);
    return true;
}

bool CLeaf::_PRV210_To_QueltoYUYV10bit(const unsigned char* in_pucSource, unsigned char* in_pucDestination,
                                       unsigned int in_uiPixels)
{
    if (in_uiPixels == 0 || in_uiPixels % 16 != 0)
        return false;
    NQxcKernels::V210LineToPacked10(NQxcKernels::CSse2(), in_pucSource, in_pucDestination, in_uiPixels);
    return true;
}
