// v210 buffer surface: RGB into v210 from any even pixel (its fill belongs to
// the middle class).
#include "surfaces/buffersurfacedefs.h"

typedef CQxcV210_10bits_BufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcV210_10bits_BufferSurfaceSSE2, CQxcV210_10bits_BufferSurface)
QXC_DEFINE_YUV_FROM_RGB_KERNELS(CLeaf, V210)
