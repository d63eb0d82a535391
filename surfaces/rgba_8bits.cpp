// 8-bit RGBA buffer surfaces, unshaped and shaped (bytes B, G, R, A). An 8-bit
// 4:2:2 buffer source may be a 2VUY buffer, which reports the same type: the
// kernels read it in its own byte order.
#include "surfaces/buffersurfacedefs.h"

using NQxcKernels::XYccToRgb8;
using NQxcKernels::XYccToRgb8Shaped;

typedef CQxcRGBA_8bits_UnshapedBufferSurfaceSSE2 CUnshaped;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcRGBA_8bits_UnshapedBufferSurfaceSSE2, CQxcRGBA_8bits_UnshapedBufferSurface)
QXC_DEFINE_RGB_FILLS(CUnshaped, QXC_SSE2_PIXEL_JOB, KFillRgba8, XYccToRgb8, 8)

namespace {
bool Is2vuy(const CQxcSurface* in_pSource)
{
    return dynamic_cast<const qxc2VUY_8bits_BufferSurface*>(in_pSource) != nullptr;
}
}  // namespace

QXC_BUFFER_KERNEL(CUnshaped::CopyFromYCbCr422_8bits)
{
    return RunPixelJob(Is2vuy(in_pSource) ? QXC_SSE2_PIXEL_JOB(KRgba8From2vuy8) : QXC_SSE2_PIXEL_JOB(KRgba8FromYuyv8),
                       in_pSource, in_uiWidth, in_uiHeight, this);
}
QXC_BUFFER_KERNEL(CUnshaped::CopyFromYCbCr422_8bits_Interp)
{
    return RunPixelJob(Is2vuy(in_pSource) ? QXC_SSE2_PIXEL_JOB(KRgba8From2vuy8Interp)
                                          : QXC_SSE2_PIXEL_JOB(KRgba8FromYuyv8Interp),
                       in_pSource, in_uiWidth, in_uiHeight, this);
}
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromYCbCrA4224_8bits_Unshaped, QXC_SSE2_PIXEL_JOB, KRgba8From4224_8, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromYCbCrA4224_8bits_Interp_Unshaped, QXC_SSE2_PIXEL_JOB,
                         KRgba8From4224_8Interp, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromYCbCr422_10bits, QXC_SSE2_PIXEL_JOB, KRgba8FromPacked10, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromYCbCr422_10bits_Interp, QXC_SSE2_PIXEL_JOB, KRgba8FromPacked10Interp, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromYCbCrA4224_10bits_Unshaped, QXC_SSE2_PIXEL_JOB, KRgba8From4224_10, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromYCbCrA4224_10bits_Interp_Unshaped, QXC_SSE2_PIXEL_JOB,
                         KRgba8From4224_10Interp, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromVideoRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, KRgba8FromVideo, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromGraphicRGBA_Unshaped, QXC_SSE2_PIXEL_JOB, KRgba8FromGraphic, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromK64ARGB_Unshaped, QXC_SSE2_PIXEL_JOB, KRgba8FromK64, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromV210, QXC_SSE2_PIXEL_JOB, KRgba8FromV210, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromA2B10G10R10_Unshaped, QXC_SSE2_PIXEL_JOB, KRgba8FromA2b10, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromRGB8bit, QXC_SSE2_PIXEL_JOB, KRgba8FromRgb24, this)
QXC_DEFINE_BUFFER_KERNEL(CUnshaped, CopyFromRGB12bit, QXC_SSE2_PIXEL_JOB, KRgba8FromRgb36, this)

typedef CQxcRGBA_8bits_ShapedBufferSurfaceSSE2 CShaped;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcRGBA_8bits_ShapedBufferSurfaceSSE2, CQxcRGBA_8bits_ShapedBufferSurface)
QXC_DEFINE_RGB_FILLS(CShaped, QXC_SSE2_PIXEL_JOB, KFillRgba8, XYccToRgb8Shaped, 8)
QXC_DEFINE_BUFFER_KERNEL(CShaped, CopyFromYCbCrA4224_8bits_Shaped, QXC_SSE2_PIXEL_JOB, KRgba8SFrom4224_8S, this)
QXC_DEFINE_BUFFER_KERNEL(CShaped, CopyFromYCbCrA4224_10bits_Shaped, QXC_SSE2_PIXEL_JOB, KRgba8SFrom4224_10S, this)
QXC_DEFINE_BUFFER_KERNEL(CShaped, CopyFromVideoRGBA_Shaped, QXC_SSE2_PIXEL_JOB, KRgba8SFromVideo, this)
QXC_DEFINE_BUFFER_KERNEL(CShaped, CopyFromGraphicRGBA_Shaped, QXC_SSE2_PIXEL_JOB, KRgba8SFromGraphic, this)
