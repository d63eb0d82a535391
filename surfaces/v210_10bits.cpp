// v210 block surface and its SSE2 kernels.
#include "surfaces/blocksurfacedefs.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxcV210_10bitsSurface, keQxcSurfaceTypeV210_10bits, 0, QXC_KERNELS_V210_10bits)

QXC_DEFINE_BLOCK_LEAF(CQxcV210_10bitsSurfaceSSE2, CQxcV210_10bitsSurface, KFillV210)
QXC_DEFINE_BLOCK_KERNEL(CQxcV210_10bitsSurfaceSSE2, CopyFromYCbCr422_16bits, KV210From422_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcV210_10bitsSurfaceSSE2, CopyFromYCbCrA4224_16bits, KV210From4224_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcV210_10bitsSurfaceSSE2, CopyFrom2vuy_8bits, KV210From2vuy8)
