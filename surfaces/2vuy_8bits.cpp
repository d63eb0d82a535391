// 8-bit 2VUY block surface and its SSE2 kernels.
#include "surfaces/blocksurfacedefs.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxc2VUY_8bitsSurface, keQxcSurfaceType2VUY_8bits, 32, QXC_KERNELS_2VUY_8bits)

QXC_DEFINE_BLOCK_LEAF(CQxc2VUY_8bitsSurfaceSSE2, CQxc2VUY_8bitsSurface, KFill2vuy8)
QXC_DEFINE_BLOCK_KERNEL(CQxc2VUY_8bitsSurfaceSSE2, CopyFromYCbCr422_8bits, KSwap8)
QXC_DEFINE_BLOCK_KERNEL(CQxc2VUY_8bitsSurfaceSSE2, CopyFromV210_10bits, K2vuy8FromV210)
