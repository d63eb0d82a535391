// 8-bit YUYV buffer surface: RGB into 8-bit 4:2:2, plain or filtered.
#include "surfaces/buffersurfacedefs.h"

typedef CQxcYCbCr422_8bits_BufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcYCbCr422_8bits_BufferSurfaceSSE2, CQxcYCbCr422_8bits_BufferSurface)
QXC_DEFINE_YUV_FILL(CLeaf, KFillYuyv8)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGBA_8bits_Unshaped, QXC_SSE2_PIXEL_JOB, KYuyv8FromRgba8, in_pSource)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGBA_8bits_Unshaped_Filter, QXC_SSE2_PIXEL_JOB, KYuyv8FromRgba8Filter, in_pSource)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGB24_8bits, QXC_SSE2_PIXEL_JOB, KYuyv8FromRgb24, in_pSource)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGB24_8bits_Filter, QXC_SSE2_PIXEL_JOB, KYuyv8FromRgb24Filter, in_pSource)
