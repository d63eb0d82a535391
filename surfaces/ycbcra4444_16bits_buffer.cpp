// 16-bit 4:4:4:4 buffer surface: RGBA into YCbCrA with a chroma pair a pixel.
#include "surfaces/buffersurfacedefs.h"

typedef CQxcYCbCrA4444_16bits_UnshapedBufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcYCbCrA4444_16bits_UnshapedBufferSurfaceSSE2, CQxcYCbCrA4444_16bits_UnshapedBufferSurface)
QXC_DEFINE_YUV_FILL(CLeaf, KFill4444_16)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGBA_8bits_Unshaped, QXC_SSE2_PIXEL_JOB, K4444_16FromRgba8, in_pSource)
