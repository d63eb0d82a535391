// 16-bit RGB buffer surfaces: ABGR_16bits (little-endian A, B, G, R) and
// K64ARGB (big-endian A, R, G, B). An 8-bit fill colour is scaled full scale
// to full scale (x 257); a 16-bit one is written as it is.
#include "surfaces/buffersurfacedefs.h"

typedef NQxcKernels::TXYccToRgbDeep<16> XToRgb16;

typedef CQxcABGR_16bits_UnshapedBufferSurfaceSSE2 CAbgr16;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcABGR_16bits_UnshapedBufferSurfaceSSE2, CQxcABGR_16bits_UnshapedBufferSurface)
QXC_DEFINE_RGB_FILLS(CAbgr16, QXC_SSE2_PIXEL_JOB, KFillAbgr16, XToRgb16, 16)
QXC_DEFINE_RGB16_FILL(CAbgr16, QXC_SSE2_PIXEL_JOB, KFillAbgr16, in_rsColor)
QXC_DEFINE_BUFFER_KERNEL(CAbgr16, CopyFromK64ARGB_Unshaped, QXC_SSE2_PIXEL_JOB, KAbgr16FromK64, this)
QXC_DEFINE_BUFFER_KERNEL(CAbgr16, CopyFromYCbCrA4224_16bits_Unshaped, QXC_SSE2_PIXEL_JOB, KAbgr16FromHub, this)

typedef CQxcK64ARGB_UnshapedBufferSurfaceSSE2 CK64;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcK64ARGB_UnshapedBufferSurfaceSSE2, CQxcK64ARGB_UnshapedBufferSurface)
QXC_DEFINE_RGB_FILLS(CK64, QXC_SSE2_PIXEL_JOB, KFillK64, XToRgb16, 16)
QXC_DEFINE_RGB16_FILL(CK64, QXC_SSE2_PIXEL_JOB, KFillK64, in_rsColor)
QXC_DEFINE_BUFFER_KERNEL(CK64, CopyFromABGR_16bits_Unshaped, QXC_SSE2_PIXEL_JOB, KK64FromAbgr16, this)
QXC_DEFINE_BUFFER_KERNEL(CK64, CopyFromYCbCrA4224_16bits_Unshaped, QXC_SSE2_PIXEL_JOB, KK64FromHub, this)

bool CK64::ScaleToVideoB64A(unsigned int in_uiWidth, unsigned int in_uiHeight)
{
    if (in_uiWidth == 0 || in_uiHeight == 0)
        return true;
    if (!PixelRangeFits(this, in_uiWidth, in_uiHeight))
        return false;
    // The picture is its own source: every block is read before it is written.
    return RunPixelJob(QXC_SSE2_PIXEL_JOB(KK64ScaleToVideo), this, in_uiWidth, in_uiHeight, this);
}
