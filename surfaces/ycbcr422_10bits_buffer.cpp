// Packed 10-bit YUYV buffer surface: RGB into the block format's 40-byte
// groups, addressed in pixels.
#include "surfaces/buffersurfacedefs.h"

typedef CQxcYCbCr422_10bits_BufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcYCbCr422_10bits_BufferSurfaceSSE2, CQxcYCbCr422_10bits_BufferSurface)
QXC_DEFINE_YUV_FILL(CLeaf, KFillPacked10)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGBA_8bits_Unshaped, QXC_SSE2_PIXEL_JOB, KPacked10FromRgba8, in_pSource)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGBA_8bits_Unshaped_Filter, QXC_SSE2_PIXEL_JOB, KPacked10FromRgba8Filter,
                         in_pSource)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGB24_8bits, QXC_SSE2_PIXEL_JOB, KPacked10FromRgb24, in_pSource)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGB24_8bits_Filter, QXC_SSE2_PIXEL_JOB, KPacked10FromRgb24Filter, in_pSource)
