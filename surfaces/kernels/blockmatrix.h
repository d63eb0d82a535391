// Every block-family conversion as one composition, named after its
// destination and source. The SSE2 leaf classes run these compositions; the
// tests run the same names over the scalar backend and compare bytes.
#ifndef QXBASE_SURFACES_KERNELS_BLOCKMATRIX_H
#define QXBASE_SURFACES_KERNELS_BLOCKMATRIX_H

#include "surfaces/kernels/compose.h"

namespace NQxcKernels {

// One transform after another (4:4:4 to 4:2:2, then unshaping).
template <class TFirst, class TSecond>
struct XThen {
    explicit XThen(const SQxcBlockJob& in_rsJob) : oFirst(in_rsJob), oSecond(in_rsJob) {}

    template <class TIn, class TOut>
    void Apply(const TIn& in_rs, TOut& out_rs) const
    {
        TOut sMiddle;
        oFirst.Apply(in_rs, sMiddle);
        oSecond.Apply(sMiddle, out_rs);
    }

    TFirst oFirst;
    TSecond oSecond;
};

namespace NBlockMatrix {

// 8-bit YUYV
typedef TBlockKernel<L422_16, XPass, LYuyv8> KYuyv8From422_16;
typedef TBlockKernel<L4224_16, XPass, LYuyv8> KYuyv8From4224_16;
typedef TBlockKernel<L4444_16, X444To422, LYuyv8> KYuyv8From4444_16;
typedef TV210SourceKernel<XPass, LYuyv8> KYuyv8FromV210;
typedef TSwapKernel KSwap8;
// 8-bit 4:2:2:4
typedef TBlockKernel<L4444_16, X444To422, L4224_8> K4224_8From4444_16;
typedef TBlockKernel<L4224_16, XPass, L4224_8> K4224_8From4224_16;
typedef TBlockKernel<L422_16, XPass, L4224_8> K4224_8From422_16;
typedef TBlockKernel<L4224_16, XUnshapeTo8, L4224_8> K4224_8UFrom4224_16S;
// packed 10-bit YUYV
typedef TBlockKernel<L422_16, XPass, LPacked10> KPacked10From422_16;
typedef TBlockKernel<L4444_16, X444To422, LPacked10> KPacked10From4444_16;
typedef TBlockKernel<L4224_16, XPass, LPacked10> KPacked10From4224_16;
typedef TV210SourceKernel<XPass, LPacked10> KPacked10FromV210;
// 10-bit 4:2:2:4
typedef TBlockKernel<L4444_16, X444To422, L4224_10> K4224_10From4444_16;
typedef TBlockKernel<L4224_16, XPass, L4224_10> K4224_10From4224_16;
typedef TBlockKernel<L422_16, XPass, L4224_10> K4224_10From422_16;
typedef TBlockKernel<L4224_16, XUnshapeTo10, L4224_10> K4224_10UFrom4224_16S;
// 16-bit 4:2:2
typedef TBlockKernel<LYuyv8, XPass, L422_16> K422_16FromYuyv8;
typedef TBlockKernel<LPacked10, XPass, L422_16> K422_16FromPacked10;
typedef TBlockKernel<L4224_8, XPass, L422_16> K422_16From4224_8;
typedef TBlockKernel<L4224_10, XPass, L422_16> K422_16From4224_10;
typedef TV210SourceKernel<XPass, L422_16> K422_16FromV210;
// 16-bit 4:2:2:4, shaped and unshaped
typedef TBlockKernel<L4444_16, X444To422, L4224_16> K4224_16From4444_16;
typedef TBlockKernel<L4224_16, XPass, L4224_16> K4224_16From4224_16;
typedef TBlockKernel<LYuyv8, XPass, L4224_16> K4224_16FromYuyv8;
typedef TBlockKernel<LPacked10, XPass, L4224_16> K4224_16FromPacked10;
typedef TBlockKernel<L4224_8, XPass, L4224_16> K4224_16From4224_8;
typedef TBlockKernel<L4224_8, XUnshapeTo10, L4224_16> K4224_16UFrom4224_8S;
typedef TBlockKernel<L4224_10, XPass, L4224_16> K4224_16From4224_10;
typedef TBlockKernel<L4224_10, XUnshapeTo10, L4224_16> K4224_16UFrom4224_10S;
typedef TBlockKernel<LAycbcr8, X444To422, L4224_16> K4224_16FromAycbcr8;
typedef TBlockKernel<LAycbcr8, XThen<X444To422, XUnshapeTo10>, L4224_16> K4224_16UFromAycbcr8S;
typedef TV210SourceKernel<XPass, L4224_16> K4224_16FromV210;
typedef TBlockKernel<LA2r10g10b10, XRgbToYcc422, L4224_16> K4224_16FromA2r10g10b10;
typedef TBlockKernel<LK64argb, XRgbToYcc422, L4224_16> K4224_16FromK64argb;
typedef TBlockKernel<LR4fl, X444To422, L4224_16> K4224_16FromR4fl;
// 16-bit 4:4:4:4
typedef TBlockKernel<L4444_16, XPass, L4444_16> K4444_16From4444_16;
typedef TBlockKernel<LYuyv8, X422To444, L4444_16> K4444_16FromYuyv8;
typedef TBlockKernel<LPacked10, X422To444, L4444_16> K4444_16FromPacked10;
typedef TBlockKernel<L4224_8, X422To444, L4444_16> K4444_16From4224_8;
typedef TBlockKernel<L4224_10, X422To444, L4444_16> K4444_16From4224_10;
// v210
typedef TV210DestinationKernel<L422_16, XPass> KV210From422_16;
typedef TV210DestinationKernel<L4224_16, XPass> KV210From4224_16;
typedef TV210DestinationKernel<L2vuy8, XPass> KV210From2vuy8;
// 2VUY
typedef TV210SourceKernel<XPass, L2vuy8> K2vuy8FromV210;

// Fills.
typedef TFillKernel<LYuyv8> KFillYuyv8;
typedef TFillKernel<L2vuy8> KFill2vuy8;
typedef TFillKernel<LPacked10> KFillPacked10;
typedef TFillKernel<L4224_8> KFill4224_8;
typedef TFillKernel<L4224_10> KFill4224_10;
typedef TFillKernel<L422_16> KFill422_16;
typedef TFillKernel<L4224_16> KFill4224_16;
typedef TFillKernel<L4444_16> KFill4444_16;
typedef TFillKernel<LAycbcr8> KFillAycbcr8;
typedef TV210DestinationKernel<LColor, XPass> KFillV210;

}  // namespace NBlockMatrix

// ------------------------------------------- line helpers of packed 10-bit
inline void LoadPlanar422(const uint16_t* in_pusY, const uint16_t* in_pusCb, const uint16_t* in_pusCr,
                          SScalar422& out_rs)
{
    for (int i = 0; i < 16; ++i)
        out_rs.aus16Y[i] = Min10(in_pusY[i]);
    for (int j = 0; j < 8; ++j) {
        out_rs.aus16Cb[j] = Min10(in_pusCb[j]);
        out_rs.aus16Cr[j] = Min10(in_pusCr[j]);
    }
    FillFullKey(out_rs);
}

inline void LoadPlanar422(const uint16_t* in_pusY, const uint16_t* in_pusCb, const uint16_t* in_pusCr,
                          SVector422& out_rs)
{
    const uint8_t* pucY = reinterpret_cast<const uint8_t*>(in_pusY);
    out_rs.ai128Y[0] = VMin10(Load(pucY));
    out_rs.ai128Y[1] = VMin10(Load(pucY + 16));
    out_rs.i128Cb = VMin10(Load(reinterpret_cast<const uint8_t*>(in_pusCb)));
    out_rs.i128Cr = VMin10(Load(reinterpret_cast<const uint8_t*>(in_pusCr)));
    FillFullKey(out_rs);
}

// Three planes (Y, and Cb and Cr at half width) of in_uiBlocks blocks into
// packed 10-bit YUYV at any address.
template <class TB>
inline void PlanarToPacked10(TB, const uint16_t* in_pusY, const uint16_t* in_pusCb, const uint16_t* in_pusCr,
                             uint8_t* out_puc, unsigned in_uiBlocks)
{
    for (unsigned ui = 0; ui < in_uiBlocks; ++ui) {
        typename TB::T422 s;
        LoadPlanar422(in_pusY + 16 * ui, in_pusCb + 8 * ui, in_pusCr + 8 * ui, s);
        LPacked10::Store<keStoreUnaligned>(out_puc + LPacked10::kuiBytes * ui, s);
    }
}

// One v210 line of in_uiPixels pixels (a multiple of 16) into packed 10-bit
// YUYV at any address.
template <class TB>
inline void V210LineToPacked10(TB, const uint8_t* in_pucSource, uint8_t* out_puc, unsigned in_uiPixels)
{
    SQxcBlockJob sJob = {};
    sJob.pucSource = in_pucSource;
    sJob.uiSourceLinePixels = V210LinePixels(in_uiPixels);
    sJob.pucDestination = out_puc;
    sJob.uiBlocks = in_uiPixels / 16;
    sJob.uiLines = 1;
    NBlockMatrix::KPacked10FromV210::Run<TB, keStoreUnaligned>(sJob);
}

}  // namespace NQxcKernels

// The conversion matrix of the block family: X(destination type, source
// type, composition). The destination's dispatch table holds exactly these.
#define QXC_BLOCK_MATRIX(X)                                                                   \
    X(keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceTypeYCbCr422_16bits, KYuyv8From422_16)                 \
    X(keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, KYuyv8From4224_16)     \
    X(keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, KYuyv8From4224_16)       \
    X(keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, KYuyv8From4444_16)     \
    X(keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceTypeV210_10bits, KYuyv8FromV210)                       \
    X(keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceType2VUY_8bits, KSwap8)                                \
    X(keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, K4224_8From4444_16) \
    X(keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, K4224_8From4224_16) \
    X(keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCr422_16bits, K4224_8From422_16)     \
    X(keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, K4224_8UFrom4224_16S) \
    X(keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, K4224_8From4444_16) \
    X(keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, K4224_8From4224_16) \
    X(keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, K4224_8From4224_16) \
    X(keQxcSurfaceTypeYCbCr422_10bits, keQxcSurfaceTypeYCbCr422_16bits, KPacked10From422_16)             \
    X(keQxcSurfaceTypeYCbCr422_10bits, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, KPacked10From4444_16) \
    X(keQxcSurfaceTypeYCbCr422_10bits, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, KPacked10From4224_16) \
    X(keQxcSurfaceTypeYCbCr422_10bits, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, KPacked10From4224_16)   \
    X(keQxcSurfaceTypeYCbCr422_10bits, keQxcSurfaceTypeV210_10bits, KPacked10FromV210)                   \
    X(keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, K4224_10From4444_16) \
    X(keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, K4224_10From4224_16) \
    X(keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCr422_16bits, K4224_10From422_16)   \
    X(keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, K4224_10UFrom4224_16S) \
    X(keQxcSurfaceTypeYCbCrA4224_10bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, K4224_10From4224_16) \
    X(keQxcSurfaceTypeYCbCr422_16bits, keQxcSurfaceTypeYCbCr422_8bits, K422_16FromYuyv8)                 \
    X(keQxcSurfaceTypeYCbCr422_16bits, keQxcSurfaceTypeYCbCr422_10bits, K422_16FromPacked10)             \
    X(keQxcSurfaceTypeYCbCr422_16bits, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, K422_16From4224_8)     \
    X(keQxcSurfaceTypeYCbCr422_16bits, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, K422_16From4224_10)   \
    X(keQxcSurfaceTypeYCbCr422_16bits, keQxcSurfaceTypeV210_10bits, K422_16FromV210)                     \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, K4224_16From4444_16) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, K4224_16From4224_16) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCr422_8bits, K4224_16FromYuyv8)     \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCr422_10bits, K4224_16FromPacked10) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, K4224_16From4224_8) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, K4224_16UFrom4224_8S) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, K4224_16From4224_10) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped, K4224_16UFrom4224_10S) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeAYCbCr4444_8bits_Shaped, K4224_16UFromAycbcr8S) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeA2R10G10B10_Unshaped, K4224_16FromA2r10g10b10) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeK64ARGB_Unshaped, K4224_16FromK64argb) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeR4FL_Unshaped, K4224_16FromR4fl)       \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeV210_10bits, K4224_16FromV210)         \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, K4224_16From4224_16) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, K4224_16From4444_16) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCr422_8bits, K4224_16FromYuyv8)       \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCr422_10bits, K4224_16FromPacked10)   \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, K4224_16From4224_8) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, K4224_16From4224_8) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, K4224_16From4224_10) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped, K4224_16From4224_10) \
    X(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeAYCbCr4444_8bits_Shaped, K4224_16FromAycbcr8) \
    X(keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, K4444_16From4444_16) \
    X(keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCr422_8bits, K4444_16FromYuyv8)     \
    X(keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCr422_10bits, K4444_16FromPacked10) \
    X(keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, K4444_16From4224_8) \
    X(keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, K4444_16From4224_10) \
    X(keQxcSurfaceTypeV210_10bits, keQxcSurfaceTypeYCbCr422_16bits, KV210From422_16)                     \
    X(keQxcSurfaceTypeV210_10bits, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, KV210From4224_16)         \
    X(keQxcSurfaceTypeV210_10bits, keQxcSurfaceType2VUY_8bits, KV210From2vuy8)                           \
    X(keQxcSurfaceType2VUY_8bits, keQxcSurfaceTypeYCbCr422_8bits, KSwap8)                                \
    X(keQxcSurfaceType2VUY_8bits, keQxcSurfaceTypeV210_10bits, K2vuy8FromV210)

#endif  // QXBASE_SURFACES_KERNELS_BLOCKMATRIX_H
