// 8-bit BGRA buffer surface (bytes A, R, G, B).
#include "surfaces/buffersurfacedefs.h"

using NQxcKernels::XYccToRgb8;

typedef CQxcBGRA_8bits_UnshapedBufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcBGRA_8bits_UnshapedBufferSurfaceSSE2, CQxcBGRA_8bits_UnshapedBufferSurface)
QXC_DEFINE_RGB_FILLS(CLeaf, QXC_SSE2_PIXEL_JOB, KFillBgra8, XYccToRgb8, 8)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromYCbCrA4224_8bits_Unshaped, QXC_SSE2_PIXEL_JOB, KBgra8From4224_8, this)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromVideoRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, KBgra8FromVideo, this)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromGraphicRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, KBgra8FromGraphic, this)
