// 10-bit 4:2:2:4 unshaped block surface and its SSE2 kernels.
#include "surfaces/blocksurfacedefs.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxcYCbCrA4224_10bits_UnshapedSurface, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, 64, QXC_KERNELS_YCbCrA4224_10bits_Unshaped)

QXC_DEFINE_BLOCK_LEAF(CQxcYCbCrA4224_10bits_UnshapedSurfaceSSE2, CQxcYCbCrA4224_10bits_UnshapedSurface,
                      KFill4224_10)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_10bits_UnshapedSurfaceSSE2, CopyFromYCbCrA4444_16bits_Unshaped,
                        K4224_10From4444_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_10bits_UnshapedSurfaceSSE2, CopyFromYCbCrA4224_16bits_Unshaped,
                        K4224_10From4224_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_10bits_UnshapedSurfaceSSE2, CopyFromYCbCr422_16bits, K4224_10From422_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4224_10bits_UnshapedSurfaceSSE2, CopyFromYCbCrA4224_16bits_Shaped,
                        K4224_10UFrom4224_16S)
