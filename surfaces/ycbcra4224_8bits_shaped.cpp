// 8-bit 4:2:2:4 shaped block surface and its SSE2 kernels. An unshaped
// source is only reduced in depth: the key is not multiplied in.
#include "surfaces/blocksurfacedefs.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxcYCbCrA4224_8bits_ShapedSurface, keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, 48, QXC_KERNELS_YCbCrA4224_8bits_Shaped)

QXC_DEFINE_BLOCK_LEAF(CQxcYCbCrA4224_8bits_ShapedSurfaceSSE2, CQxcYCbCrA4224_8bits_ShapedSurface, KFill4224_8)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_8bits_ShapedSurfaceSSE2, CopyFromYCbCrA4444_16bits_Unshaped,
                        K4224_8From4444_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_8bits_ShapedSurfaceSSE2, CopyFromYCbCrA4224_16bits_Unshaped,
                        K4224_8From4224_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_8bits_ShapedSurfaceSSE2, CopyFromYCbCrA4224_16bits_Shaped,
                        K4224_8From4224_16)
