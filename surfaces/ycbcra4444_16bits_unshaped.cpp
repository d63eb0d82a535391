// 16-bit 4:4:4:4 unshaped block surface and its SSE2 kernels.
#include "surfaces/blocksurfacedefs.h"
#include "surfaces/replaceblock.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxcYCbCrA4444_16bits_UnshapedSurface, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, 128, QXC_KERNELS_YCbCrA4444_16bits_Unshaped)

QXC_DEFINE_REPLACE_BLOCK(CQxcYCbCrA4444_16bits_UnshapedSurface, CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2,
                         keWholePixels)

QXC_DEFINE_BLOCK_LEAF(CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2, CQxcYCbCrA4444_16bits_UnshapedSurface,
                      KFill4444_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2, CopyFromYCbCrA4444_16bits_Unshaped,
                        K4444_16From4444_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2, CopyFromYCbCr422_8bits, K4444_16FromYuyv8)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2, CopyFromYCbCr422_10bits, K4444_16FromPacked10)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2, CopyFromYCbCrA4224_8bits_Unshaped,
                        K4444_16From4224_8)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2, CopyFromYCbCrA4224_10bits_Unshaped,
                        K4444_16From4224_10)
