// 16-bit 4:2:2:4 shaped block surface and its SSE2 kernels. Sources are only
// changed in depth and layout: unshaped ones are not multiplied by the key.
#include "surfaces/blocksurfacedefs.h"
#include "surfaces/replaceblock.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxcYCbCrA4224_16bits_ShapedSurface, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, 96, QXC_KERNELS_YCbCrA4224_16bits_Shaped)

QXC_DEFINE_REPLACE_BLOCK(CQxcYCbCrA4224_16bits_ShapedSurface, CQxcYCbCrA4224_16bits_ShapedSurfaceSSE2,
                         keLumaKeyAndChromaPairs)

typedef CQxcYCbCrA4224_16bits_ShapedSurfaceSSE2 CLeaf;
QXC_DEFINE_BLOCK_LEAF(CQxcYCbCrA4224_16bits_ShapedSurfaceSSE2, CQxcYCbCrA4224_16bits_ShapedSurface, KFill4224_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_16bits_Shaped, K4224_16From4224_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4444_16bits_Unshaped, K4224_16From4444_16)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCr422_8bits, K4224_16FromYuyv8)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCr422_10bits, K4224_16FromPacked10)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_8bits_Unshaped, K4224_16From4224_8)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_8bits_Shaped, K4224_16From4224_8)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_10bits_Unshaped, K4224_16From4224_10)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromYCbCrA4224_10bits_Shaped, K4224_16From4224_10)
QXC_DEFINE_BLOCK_KERNEL(CLeaf, CopyFromAYCbCr4444_8bits_Shaped, K4224_16FromAycbcr8)
