// v210 buffer surface: RGB into v210 from any even pixel (its fill belongs to
// the middle class).
#include "surfaces/buffersurfacedefs.h"

typedef CQxcV210_10bits_BufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcV210_10bits_BufferSurfaceSSE2, CQxcV210_10bits_BufferSurface)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGBA_8bits_Unshaped, QXC_SSE2_PIXEL_JOB, KV210FromRgba8, in_pSource)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGBA_8bits_Unshaped_Filter, QXC_SSE2_PIXEL_JOB, KV210FromRgba8Filter, in_pSource)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGB24_8bits, QXC_SSE2_PIXEL_JOB, KV210FromRgb24, in_pSource)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromRGB24_8bits_Filter, QXC_SSE2_PIXEL_JOB, KV210FromRgb24Filter, in_pSource)
