// Definitions shared by the buffer format sources: the parts of a leaf class
// that differ only in names, compositions and constants.
#ifndef QXBASE_SURFACES_BUFFERSURFACEDEFS_H
#define QXBASE_SURFACES_BUFFERSURFACEDEFS_H

#include <qxbase/qxcbuffersurfaces.h>

#include "surfaces/kernels/buffermatrix.h"

// The SSE2 and the portable entry of a named composition.
#define QXC_SSE2_PIXEL_JOB(Kernel) (&NQxcKernels::TPixelSse2Entry<NQxcKernels::NBufferMatrix::Kernel>::Run)
#define QXC_SCALAR_PIXEL_JOB(Kernel) (&NQxcKernels::TPixelScalarEntry<NQxcKernels::NBufferMatrix::Kernel>::Run)

// A leaf's constructor and destructor.
#define QXC_DEFINE_BUFFER_LEAF_LIFETIME(Leaf, Middle) \
    Leaf::Leaf(bool in_bCachedStores) : Middle(in_bCachedStores) {} \
    Leaf::~Leaf() = default;

// A kernel: a composition run with the coefficient set and levels of RgbSide
// (this, or in_pSource when the source is the RGB surface). Entry is
// QXC_SSE2_PIXEL_JOB or QXC_SCALAR_PIXEL_JOB.
#define QXC_DEFINE_BUFFER_KERNEL(Leaf, Name, Entry, Kernel, RgbSide)                       \
    QXC_BUFFER_KERNEL(Leaf::Name)                                                          \
    {                                                                                      \
        return RunPixelJob(Entry(Kernel), in_pSource, in_uiWidth, in_uiHeight, RgbSide);   \
    }

// The four kernels of the YUV buffers that take RGBA and RGB24, plain and
// filtered, from the compositions K<Prefix>FromRgba8[Filter] and
// K<Prefix>FromRgb24[Filter].
#define QXC_DEFINE_YUV_FROM_RGB_KERNELS(Leaf, Prefix)                                                    \
    QXC_DEFINE_BUFFER_KERNEL(Leaf, CopyFromRGBA_8bits_Unshaped, QXC_SSE2_PIXEL_JOB, K##Prefix##FromRgba8, in_pSource) \
    QXC_DEFINE_BUFFER_KERNEL(Leaf, CopyFromRGBA_8bits_Unshaped_Filter, QXC_SSE2_PIXEL_JOB, K##Prefix##FromRgba8Filter, \
                             in_pSource)                                                                        \
    QXC_DEFINE_BUFFER_KERNEL(Leaf, CopyFromRGB24_8bits, QXC_SSE2_PIXEL_JOB, K##Prefix##FromRgb24, in_pSource)    \
    QXC_DEFINE_BUFFER_KERNEL(Leaf, CopyFromRGB24_8bits_Filter, QXC_SSE2_PIXEL_JOB, K##Prefix##FromRgb24Filter,   \
                             in_pSource)

// The fill of a YUV leaf.
#define QXC_DEFINE_YUV_FILL(Leaf, Kernel)                                                           \
    bool Leaf::Fill(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidth, unsigned int in_uiHeight) \
    {                                                                                               \
        return RunPixelFill(QXC_SSE2_PIXEL_JOB(Kernel), in_rsColor, SQxcRGBAPixel_16bits{}, in_uiWidth, \
                            in_uiHeight);                                                           \
    }

namespace NQxcBufferFill {

// An 8-bit (or 16-bit) component on in_iBits bits, full scale to full scale,
// rounded to nearest: floor(c x (2^n - 1) / 255 + 0.5).
inline uint16_t FromBits(unsigned in_uiValue, int in_iFromBits, int in_iBits)
{
    const uint64_t uiTo = (1u << in_iBits) - 1;
    const uint64_t uiFrom = (1u << in_iFromBits) - 1;
    return static_cast<uint16_t>((2 * in_uiValue * uiTo + uiFrom) / (2 * uiFrom));
}
inline SQxcRGBAPixel_16bits Scale(const SQxcRGBAPixel& in_rs, int in_iBits)
{
    return SQxcRGBAPixel_16bits{FromBits(in_rs.R, 8, in_iBits), FromBits(in_rs.G, 8, in_iBits),
                                FromBits(in_rs.B, 8, in_iBits), FromBits(in_rs.A, 8, in_iBits)};
}

// The RGB colour a YUV colour (10-bit scale) becomes through a surface's
// conversion step; false when the surface holds no coefficient set.
template <class TXf>
inline bool RgbOfYuv(const SQxcYuvaPixel& in_rsColor, const CQxcBufferSurface& in_rRgb, SQxcRGBAPixel_16bits& out_rs)
{
    if (in_rRgb.GetRgbCoeff() == nullptr)
        return false;
    SQxcBlockJob sJob = {};
    sJob.psCoeff = in_rRgb.GetRgbCoeff();
    sJob.iRgbRange = in_rRgb.GetColorRange();
    const TXf oXf(sJob);
    NQxcKernels::SScalar444 s444;
    NQxcKernels::MakeColorBlock(in_rsColor, s444);
    NQxcKernels::SScalarRgb sRgb;
    oXf.Apply(s444, sRgb);
    out_rs = SQxcRGBAPixel_16bits{sRgb.aus16R[0], sRgb.aus16G[0], sRgb.aus16B[0], sRgb.aus16A[0]};
    return true;
}

}  // namespace NQxcBufferFill

// The fills of an RGB leaf: Fill with a YUV colour converts it as the
// surface's own kernels do (through Xf), FillRgb with an 8-bit colour writes
// it at the format's depth (Bits, full scale).
#define QXC_DEFINE_RGB_FILLS(Leaf, Entry, Kernel, Xf, Bits)                                                    \
    bool Leaf::Fill(const SQxcYuvaPixel& in_rsColor, unsigned int in_uiWidth, unsigned int in_uiHeight)     \
    {                                                                                                   \
        SQxcRGBAPixel_16bits sRgb;                                                                      \
        if (in_uiWidth == 0 || in_uiHeight == 0)                                                        \
            return true;                                                                                \
        if (!NQxcBufferFill::RgbOfYuv<Xf>(in_rsColor, *this, sRgb))                                     \
            return false;                                                                               \
        return RunPixelFill(Entry(Kernel), in_rsColor, sRgb, in_uiWidth, in_uiHeight);     \
    }                                                                                                   \
    bool Leaf::FillRgb(const SQxcRGBAPixel& in_rsColor, unsigned int in_uiWidth, unsigned int in_uiHeight)  \
    {                                                                                                   \
        return RunPixelFill(Entry(Kernel), SQxcYuvaPixel{}, NQxcBufferFill::Scale(in_rsColor, Bits), \
                            in_uiWidth, in_uiHeight);                                                   \
    }

// The 16-bit RGB fill of the deeper formats: the colour becomes the format's
// components through Convert (an expression of in_rsColor).
#define QXC_DEFINE_RGB16_FILL(Leaf, Entry, Kernel, Convert)                                            \
    bool Leaf::FillRgb(const SQxcRGBAPixel_16bits& in_rsColor, unsigned int in_uiWidth,                 \
                       unsigned int in_uiHeight)                                                        \
    {                                                                                                   \
        return RunPixelFill(Entry(Kernel), SQxcYuvaPixel{}, Convert, in_uiWidth, in_uiHeight);          \
    }

namespace NQxcBufferFill {

// 16-bit components read as 10-bit values, clamped.
inline SQxcRGBAPixel_16bits As10Bits(const SQxcRGBAPixel_16bits& in_rs)
{
    auto Min = [](uint16_t in_us) { return static_cast<uint16_t>(in_us < 1023 ? in_us : 1023); };
    return SQxcRGBAPixel_16bits{Min(in_rs.R), Min(in_rs.G), Min(in_rs.B), Min(in_rs.A)};
}
// 16-bit components on in_iBits bits, full scale to full scale.
inline SQxcRGBAPixel_16bits From16(const SQxcRGBAPixel_16bits& in_rs, int in_iBits)
{
    return SQxcRGBAPixel_16bits{FromBits(in_rs.R, 16, in_iBits), FromBits(in_rs.G, 16, in_iBits),
                                FromBits(in_rs.B, 16, in_iBits), FromBits(in_rs.A, 16, in_iBits)};
}

}  // namespace NQxcBufferFill

#endif  // QXBASE_SURFACES_BUFFERSURFACEDEFS_H
