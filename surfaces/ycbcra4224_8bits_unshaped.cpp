// 8-bit 4:2:2:4 unshaped block surface and its SSE2 kernels.
#include "surfaces/blocksurfacedefs.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxcYCbCrA4224_8bits_UnshapedSurface, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, 48, QXC_KERNELS_YCbCrA4224_8bits_Unshaped)

QXC_DEFINE_BLOCK_LEAF(CQxcYCbCrA4224_8bits_UnshapedSurfaceSSE2, CQxcYCbCrA4224_8bits_UnshapedSurface, KFill4224_8)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_8bits_UnshapedSurfaceSSE2, CopyFromYCbCrA4444_16bits_Unshaped,
                        K4224_8From4444_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_8bits_UnshapedSurfaceSSE2, CopyFromYCbCrA4224_16bits_Unshaped,
                        K4224_8From4224_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_8bits_UnshapedSurfaceSSE2, CopyFromYCbCr422_16bits, K4224_8From422_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_8bits_UnshapedSurfaceSSE2, CopyFromYCbCrA4224_16bits_Shaped,
                        K4224_8UFrom4224_16S)
