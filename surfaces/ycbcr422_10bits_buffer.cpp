// Packed 10-bit YUYV buffer surface: RGB into the block format's 40-byte
// groups, addressed in pixels.
#include "surfaces/buffersurfacedefs.h"

typedef CQxcYCbCr422_10bits_BufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcYCbCr422_10bits_BufferSurfaceSSE2, CQxcYCbCr422_10bits_BufferSurface)
QXC_DEFINE_YUV_FILL(CLeaf, KFillPacked10)
QXC_DEFINE_YUV_FROM_RGB_KERNELS(CLeaf, Packed10)
