// 10-bit 4:2:2:4 shaped block surface and its SSE2 kernel.
#include "surfaces/blocksurfacedefs.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxcYCbCrA4224_10bits_ShapedSurface, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped, 64, QXC_KERNELS_YCbCrA4224_10bits_Shaped)

QXC_DEFINE_BLOCK_LEAF(CQxcYCbCrA4224_10bits_ShapedSurfaceSSE2, CQxcYCbCrA4224_10bits_ShapedSurface, KFill4224_10)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_10bits_ShapedSurfaceSSE2, CopyFromYCbCrA4224_16bits_Shaped,
                        K4224_10From4224_16)
