// 8-bit YUYV block surface and its SSE2 kernels.
#include "surfaces/blocksurfacedefs.h"

QXC_DEFINE_BLOCK_MIDDLE(CQxcYCbCr422_8bitsSurface, keQxcSurfaceTypeYCbCr422_8bits, 32, QXC_KERNELS_YCbCr422_8bits)

QXC_DEFINE_BLOCK_LEAF(CQxcYCbCr422_8bitsSurfaceSSE2, CQxcYCbCr422_8bitsSurface, KFillYuyv8)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCr422_8bitsSurfaceSSE2, CopyFromYCbCr422_16bits, KYuyv8From422_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCr422_8bitsSurfaceSSE2, CopyFromYCbCrA4224_16bits_Unshaped, KYuyv8From4224_16)
// The key is dropped, not divided out: the picture is the shaped fill.
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCr422_8bitsSurfaceSSE2, CopyFromYCbCrA4224_16bits_Shaped, KYuyv8From4224_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCr422_8bitsSurfaceSSE2, CopyFromYCbCrA4444_16bits_Unshaped, KYuyv8From4444_16)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCr422_8bitsSurfaceSSE2, CopyFromV210, KYuyv8FromV210)
QXC_DEFINE_BLOCK_KERNEL(CQxcYCbCr422_8bitsSurfaceSSE2, CopyFrom2VUY, KSwap8)
