// 10-bit 4:2:2:4 buffer surfaces, unshaped (from RGBA and RGB24, plain or
// filtered) and shaped (from shaped RGBA).
#include "surfaces/buffersurfacedefs.h"

typedef CQxcYCbCrA4224_10bits_UnshapedBufferSurfaceSSE2 CUnshaped;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcYCbCrA4224_10bits_UnshapedBufferSurfaceSSE2, CQxcYCbCrA4224_10bits_UnshapedBufferSurface)
QXC_DEFINE_YUV_FILL(CUnshaped, KFill4224_10)
QXC_DEFINE_YUV_FROM_RGB_KERNELS(CUnshaped, 4224_10)

typedef CQxcYCbCrA4224_10bits_ShapedBufferSurfaceSSE2 CShaped;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcYCbCrA4224_10bits_ShapedBufferSurfaceSSE2, CQxcYCbCrA4224_10bits_ShapedBufferSurface)
QXC_DEFINE_YUV_FILL(CShaped, KFill4224_10)
QXC_DEFINE_BUFFER_KERNEL(CShaped, CopyFromRGBA_8bits_Shaped, QXC_SSE2_PIXEL_JOB, K4224_10SFromRgba8S, in_pSource)
