// 8-bit YUYV buffer surface: RGB into 8-bit 4:2:2, plain or filtered.
#include "surfaces/buffersurfacedefs.h"

typedef CQxcYCbCr422_8bits_BufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcYCbCr422_8bits_BufferSurfaceSSE2, CQxcYCbCr422_8bits_BufferSurface)
QXC_DEFINE_YUV_FILL(CLeaf, KFillYuyv8)
QXC_DEFINE_YUV_FROM_RGB_KERNELS(CLeaf, Yuyv8)
