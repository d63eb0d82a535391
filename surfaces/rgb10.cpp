// 10-bit RGB buffer surfaces with a 2-bit key: A2R10G10B10 and A2B10G10R10.
// An 8-bit fill colour becomes 10-bit values full scale to full scale (255 is
// 1023, 128 is 514), the key too; a 16-bit fill colour is read as 10-bit
// values.
#include "surfaces/buffersurfacedefs.h"

typedef NQxcKernels::TXYccToRgbDeep<10> XToRgb10;

// A leaf of either, from the compositions KFill<Prefix>, K<Prefix>FromHub,
// K<Prefix>FromVideo, K<Prefix>FromGraphic and K<Prefix>FromK64.
#define QXC_DEFINE_RGB10_LEAF(Leaf, Middle, Prefix)                                                          \
    QXC_DEFINE_BUFFER_LEAF_LIFETIME(Leaf, Middle)                                                             \
    QXC_DEFINE_RGB_FILLS(Leaf, QXC_SSE2_PIXEL_JOB, KFill##Prefix, XToRgb10, 10)                               \
    QXC_DEFINE_RGB16_FILL(Leaf, QXC_SSE2_PIXEL_JOB, KFill##Prefix, NQxcBufferFill::As10Bits(in_rsColor))       \
    QXC_DEFINE_BUFFER_KERNEL(Leaf, CopyFromYCbCrA4224_16bits_Unshaped, QXC_SSE2_PIXEL_JOB, K##Prefix##FromHub, this) \
    QXC_DEFINE_BUFFER_KERNEL(Leaf, CopyFromVideoRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, K##Prefix##FromVideo, this)  \
    QXC_DEFINE_BUFFER_KERNEL(Leaf, CopyFromGraphicRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, K##Prefix##FromGraphic, this) \
    QXC_DEFINE_BUFFER_KERNEL(Leaf, CopyFromK64ARGB_Unshaped, QXC_SSE2_PIXEL_JOB, K##Prefix##FromK64, this)

QXC_DEFINE_RGB10_LEAF(CQxcA2R10G10B10_UnshapedBufferSurfaceSSE2, CQxcA2R10G10B10_UnshapedBufferSurface, A2r10)
QXC_DEFINE_RGB10_LEAF(CQxcA2B10G10R10_UnshapedBufferSurfaceSSE2, CQxcA2B10G10R10_UnshapedBufferSurface, A2b10)
