// 10-bit RGB buffer surfaces with a 2-bit key: A2R10G10B10 and A2B10G10R10.
// An 8-bit fill colour becomes 10-bit values full scale to full scale (255 is
// 1023, 128 is 514), the key too; a 16-bit fill colour is read as 10-bit
// values.
#include "surfaces/buffersurfacedefs.h"

typedef NQxcKernels::TXYccToRgbDeep<10> XToRgb10;

typedef CQxcA2R10G10B10_UnshapedBufferSurfaceSSE2 CA2r10;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcA2R10G10B10_UnshapedBufferSurfaceSSE2, CQxcA2R10G10B10_UnshapedBufferSurface)
QXC_DEFINE_RGB_FILLS(CA2r10, QXC_SSE2_PIXEL_JOB, KFillA2r10, XToRgb10, 10)
QXC_DEFINE_RGB16_FILL(CA2r10, QXC_SSE2_PIXEL_JOB, KFillA2r10, NQxcBufferFill::As10Bits(in_rsColor))
QXC_DEFINE_BUFFER_KERNEL(CA2r10, CopyFromYCbCrA4224_16bits_Unshaped, QXC_SSE2_PIXEL_JOB, KA2r10FromHub, this)
QXC_DEFINE_BUFFER_KERNEL(CA2r10, CopyFromVideoRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, KA2r10FromVideo, this)
QXC_DEFINE_BUFFER_KERNEL(CA2r10, CopyFromGraphicRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, KA2r10FromGraphic, this)
QXC_DEFINE_BUFFER_KERNEL(CA2r10, CopyFromK64ARGB_Unshaped, QXC_SSE2_PIXEL_JOB, KA2r10FromK64, this)

typedef CQxcA2B10G10R10_UnshapedBufferSurfaceSSE2 CA2b10;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcA2B10G10R10_UnshapedBufferSurfaceSSE2, CQxcA2B10G10R10_UnshapedBufferSurface)
QXC_DEFINE_RGB_FILLS(CA2b10, QXC_SSE2_PIXEL_JOB, KFillA2b10, XToRgb10, 10)
QXC_DEFINE_RGB16_FILL(CA2b10, QXC_SSE2_PIXEL_JOB, KFillA2b10, NQxcBufferFill::As10Bits(in_rsColor))
QXC_DEFINE_BUFFER_KERNEL(CA2b10, CopyFromYCbCrA4224_16bits_Unshaped, QXC_SSE2_PIXEL_JOB, KA2b10FromHub, this)
QXC_DEFINE_BUFFER_KERNEL(CA2b10, CopyFromVideoRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, KA2b10FromVideo, this)
QXC_DEFINE_BUFFER_KERNEL(CA2b10, CopyFromGraphicRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, KA2b10FromGraphic, this)
QXC_DEFINE_BUFFER_KERNEL(CA2b10, CopyFromK64ARGB_Unshaped, QXC_SSE2_PIXEL_JOB, KA2b10FromK64, this)
