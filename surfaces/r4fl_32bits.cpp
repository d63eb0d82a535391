// 32-bit float YCbCrA 4:4:4:4 buffer surface (Y, Cb, Cr, A floats). It sits
// among the RGB surfaces; an RGB fill colour is converted to YCbCr with its
// coefficient set first.
#include "surfaces/buffersurfacedefs.h"

typedef CQxcR4FL_YUYA_32bits_UnshapedBufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(CQxcR4FL_YUYA_32bits_UnshapedBufferSurfaceSSE2, CQxcR4FL_YUYA_32bits_UnshapedBufferSurface)
QXC_DEFINE_YUV_FILL(CLeaf, KFillR4fl)
QXC_DEFINE_BUFFER_KERNEL(CLeaf, CopyFromYCbCrA4224_16bits_Unshaped, QXC_SSE2_PIXEL_JOB, KR4flFromHub, this)

bool CLeaf::FillRgb(const SQxcRGBAPixel& in_rsColor, unsigned int in_uiWidth, unsigned int in_uiHeight)
{
    if (in_uiWidth == 0 || in_uiHeight == 0)
        return true;
    if (m_psRgbCoeff == nullptr)
        return false;
    SQxcBlockJob sJob = {};
    sJob.psCoeff = m_psRgbCoeff;
    const NQxcKernels::TXRgbToYcc<10, false> oXf(sJob);
    NQxcKernels::SScalarRgb sRgb;
    for (int p = 0; p < 16; ++p) {
        sRgb.aus16R[p] = in_rsColor.R;
        sRgb.aus16G[p] = in_rsColor.G;
        sRgb.aus16B[p] = in_rsColor.B;
        sRgb.aus16A[p] = in_rsColor.A;
    }
    NQxcKernels::SScalar444 sYcc;
    oXf.Apply(sRgb, sYcc);
    const SQxcYuvaPixel sColor = {sYcc.aus16Y[0], sYcc.aus16Cb[0], sYcc.aus16Cr[0], sYcc.aus16K[0]};
    return Fill(sColor, in_uiWidth, in_uiHeight);
}
