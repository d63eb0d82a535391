// Every buffer-family conversion as one composition, named after its
// destination and source, and the matrix that lists them. The SSE2 leaf
// classes run these compositions over the SSE2 backend, the portable (CPP)
// classes and the tests over the scalar one.
#ifndef QXBASE_SURFACES_KERNELS_BUFFERMATRIX_H
#define QXBASE_SURFACES_KERNELS_BUFFERMATRIX_H

#include "surfaces/kernels/pixelcompose.h"

namespace NQxcKernels {
namespace NBufferMatrix {

// Readers and writers of the buffer layouts.
typedef TLayoutReader<LRgba8> RRgba8;
typedef TLayoutReader<LBgra8> RBgra8;
typedef TLayoutReader<LRgb24> RRgb24;
typedef TLayoutReader<LRgb36> RRgb36;
typedef TLayoutReader<LRgbA2r10g10b10> RA2r10;
typedef TLayoutReader<LRgbA2b10g10r10> RA2b10;
typedef TLayoutReader<LRgbAbgr16> RAbgr16;
typedef TLayoutReader<LRgbK64argb> RK64;
typedef TLayoutReader<LYuyv8> RYuyv8;
typedef TLayoutReader<L2vuy8> R2vuy8;
typedef TLayoutReader<LPacked10> RPacked10;
typedef TLayoutReader<L4224_8> R4224_8;
typedef TLayoutReader<L4224_10> R4224_10;
typedef TLayoutReader<L4224_16> RHub;
typedef CV210Reader RV210;

typedef TLayoutWriter<LRgba8> WRgba8;
typedef TLayoutWriter<LBgra8> WBgra8;
typedef TLayoutWriter<LRgb24> WRgb24;
typedef TLayoutWriter<LRgb36> WRgb36;
typedef TLayoutWriter<LRgbA2r10g10b10> WA2r10;
typedef TLayoutWriter<LRgbA2b10g10r10> WA2b10;
typedef TLayoutWriter<LRgbAbgr16> WAbgr16;
typedef TLayoutWriter<LRgbK64argb> WK64;
typedef TLayoutWriter<LR4fl> WR4fl;
typedef TLayoutWriter<LYuyv8> WYuyv8;
typedef TLayoutWriter<L2vuy8> W2vuy8;
typedef TLayoutWriter<LPacked10> WPacked10;
typedef TLayoutWriter<L4224_8> W4224_8;
typedef TLayoutWriter<L4224_10> W4224_10;
typedef TLayoutWriter<L4444_16> W4444_16;
typedef CV210Writer WV210;

// RGB into YUV at kiDepth bits (8 or 10), plain or with the chroma filter.
template <class TReader, class TWriter, int kiDepth>
using TFromRgb = TPixelKernel<TReader, TXRgbToYcc<kiDepth, false>, TWriter>;
template <class TReader, class TWriter, int kiDepth>
using TFromRgbFiltered = TWindowKernel<TReader, TFilterStage<kiDepth>, TWriter>;
// YUV into 8-bit RGB, plain or with interpolated chroma.
template <class TReader, class TWriter>
using TToRgb8 = TPixelKernel<TReader, XYccToRgb8, TWriter>;
template <class TReader, class TWriter>
using TToRgb8Interp = TWindowKernel<TReader, TInterpStage<XYccToRgb8>, TWriter>;
// The hub into deep RGB.
template <class TWriter, int kiDepth>
using THubToRgb = TPixelKernel<RHub, TXYccToRgbDeep<kiDepth>, TWriter>;
// An RGB format into itself between levels, and between depths.
template <class TReader, class TWriter, int kiDepth, bool kbToVideo>
using TRange = TPixelKernel<TReader, TXRgbMap<KRange<kiDepth, kbToVideo>>, TWriter>;
template <class TReader, class TWriter, int kiFrom, int kiTo>
using TDepth = TPixelKernel<TReader, TXRgbMap<KDepth<kiFrom, kiTo>>, TWriter>;

// ------------------------------------------------------- YUV destinations
// The 8-bit packed paths between RGBA and YUYV or 2VUY work on the bytes.
typedef TPixelKernel<TLayoutReader<TRaw<LRgba8>>, TXRgb8ToPacked422<false, false>, TLayoutWriter<TRaw<LYuyv8>>>
    KYuyv8FromRgba8;
typedef TFromRgbFiltered<RRgba8, WYuyv8, 8> KYuyv8FromRgba8Filter;
typedef TFromRgb<RRgb24, WYuyv8, 8> KYuyv8FromRgb24;
typedef TFromRgbFiltered<RRgb24, WYuyv8, 8> KYuyv8FromRgb24Filter;
typedef TPixelKernel<TLayoutReader<TRaw<LRgba8>>, TXRgb8ToPacked422<false, true>, TLayoutWriter<TRaw<L2vuy8>>>
    K2vuy8FromRgba8;
typedef TFromRgbFiltered<RRgba8, W2vuy8, 8> K2vuy8FromRgba8Filter;
typedef TFromRgb<RRgb24, W2vuy8, 8> K2vuy8FromRgb24;
typedef TFromRgbFiltered<RRgb24, W2vuy8, 8> K2vuy8FromRgb24Filter;
typedef TPixelKernel<RYuyv8, XPass, W2vuy8> K2vuy8FromYuyv8;
typedef TPixelKernel<R2vuy8, XPass, W2vuy8> K2vuy8From2vuy8;
typedef TFromRgb<RRgba8, WPacked10, 10> KPacked10FromRgba8;
typedef TFromRgbFiltered<RRgba8, WPacked10, 10> KPacked10FromRgba8Filter;
typedef TFromRgb<RRgb24, WPacked10, 10> KPacked10FromRgb24;
typedef TFromRgbFiltered<RRgb24, WPacked10, 10> KPacked10FromRgb24Filter;
typedef TFromRgb<RRgba8, WV210, 10> KV210FromRgba8;
typedef TFromRgbFiltered<RRgba8, WV210, 10> KV210FromRgba8Filter;
typedef TFromRgb<RRgb24, WV210, 10> KV210FromRgb24;
typedef TFromRgbFiltered<RRgb24, WV210, 10> KV210FromRgb24Filter;
typedef TFromRgb<RRgba8, W4224_10, 10> K4224_10FromRgba8;
typedef TFromRgbFiltered<RRgba8, W4224_10, 10> K4224_10FromRgba8Filter;
typedef TFromRgb<RRgb24, W4224_10, 10> K4224_10FromRgb24;
typedef TFromRgbFiltered<RRgb24, W4224_10, 10> K4224_10FromRgb24Filter;
typedef TFromRgb<RRgba8, W4224_8, 8> K4224_8FromRgba8;
typedef TFromRgbFiltered<RRgba8, W4224_8, 8> K4224_8FromRgba8Filter;
typedef TFromRgb<RBgra8, W4224_8, 8> K4224_8FromBgra8;
typedef TFromRgb<RRgb24, W4224_8, 8> K4224_8FromRgb24;
typedef TFromRgbFiltered<RRgb24, W4224_8, 8> K4224_8FromRgb24Filter;
typedef TPixelKernel<RRgba8, TXRgbToYcc<8, true>, W4224_8> K4224_8SFromRgba8S;
typedef TPixelKernel<RRgba8, TXRgbToYcc<10, true>, W4224_10> K4224_10SFromRgba8S;
typedef TPixelKernel<RRgba8, TXRgbToYcc<10, false>, W4444_16> K4444_16FromRgba8;

// ------------------------------------------------------- RGB destinations
typedef TPixelKernel<TLayoutReader<TRaw<LYuyv8>>, TXPacked422ToRgb8<false>, TLayoutWriter<LRgba8Planes>>
    KRgba8FromYuyv8;
typedef TToRgb8Interp<RYuyv8, WRgba8> KRgba8FromYuyv8Interp;
typedef TPixelKernel<TLayoutReader<TRaw<L2vuy8>>, TXPacked422ToRgb8<true>, TLayoutWriter<LRgba8Planes>>
    KRgba8From2vuy8;
typedef TToRgb8Interp<R2vuy8, WRgba8> KRgba8From2vuy8Interp;
typedef TToRgb8<R4224_8, WRgba8> KRgba8From4224_8;
typedef TToRgb8Interp<R4224_8, WRgba8> KRgba8From4224_8Interp;
typedef TToRgb8<RPacked10, WRgba8> KRgba8FromPacked10;
typedef TToRgb8Interp<RPacked10, WRgba8> KRgba8FromPacked10Interp;
typedef TToRgb8<R4224_10, WRgba8> KRgba8From4224_10;
typedef TToRgb8Interp<R4224_10, WRgba8> KRgba8From4224_10Interp;
typedef TToRgb8<RV210, WRgba8> KRgba8FromV210;
typedef TPixelKernel<RRgba8, TXRgbRange8<false, false>, WRgba8> KRgba8FromVideo;
typedef TPixelKernel<RRgba8, TXRgbRange8<true, false>, WRgba8> KRgba8FromGraphic;
typedef TDepth<RK64, WRgba8, 16, 8> KRgba8FromK64;
typedef TDepth<RA2b10, WRgba8, 10, 8> KRgba8FromA2b10;
typedef TPixelKernel<RRgb24, XPass, WRgba8> KRgba8FromRgb24;
typedef TDepth<RRgb36, WRgba8, 12, 8> KRgba8FromRgb36;

typedef TPixelKernel<R4224_8, XYccToRgb8Shaped, WRgba8> KRgba8SFrom4224_8S;
typedef TPixelKernel<R4224_10, XYccToRgb8Shaped, WRgba8> KRgba8SFrom4224_10S;
typedef TPixelKernel<RRgba8, TXRgbRange8<false, true>, WRgba8> KRgba8SFromVideo;
typedef TPixelKernel<RRgba8, TXRgbRange8<true, true>, WRgba8> KRgba8SFromGraphic;

typedef TToRgb8<R4224_8, WBgra8> KBgra8From4224_8;
typedef TPixelKernel<RBgra8, TXRgbRange8<false, false>, WBgra8> KBgra8FromVideo;
typedef TPixelKernel<RBgra8, TXRgbRange8<true, false>, WBgra8> KBgra8FromGraphic;

typedef THubToRgb<WA2r10, 10> KA2r10FromHub;
typedef TRange<RA2r10, WA2r10, 10, false> KA2r10FromVideo;
typedef TRange<RA2r10, WA2r10, 10, true> KA2r10FromGraphic;
typedef TDepth<RK64, WA2r10, 16, 10> KA2r10FromK64;
typedef THubToRgb<WA2b10, 10> KA2b10FromHub;
typedef TRange<RA2b10, WA2b10, 10, false> KA2b10FromVideo;
typedef TRange<RA2b10, WA2b10, 10, true> KA2b10FromGraphic;
typedef TDepth<RK64, WA2b10, 16, 10> KA2b10FromK64;

typedef THubToRgb<WRgb24, 8> KRgb24FromHub;
typedef TPixelKernel<RRgb24, TXRgbRange8<false, false>, WRgb24> KRgb24FromVideo;
typedef TPixelKernel<RRgb24, TXRgbRange8<true, false>, WRgb24> KRgb24FromGraphic;
typedef TDepth<RK64, WRgb24, 16, 8> KRgb24FromK64;
typedef THubToRgb<WRgb36, 12> KRgb36FromHub;
typedef TRange<RRgb36, WRgb36, 12, false> KRgb36FromVideo;
typedef TRange<RRgb36, WRgb36, 12, true> KRgb36FromGraphic;
typedef TDepth<RK64, WRgb36, 16, 12> KRgb36FromK64;

typedef TPixelKernel<RK64, XPass, WAbgr16> KAbgr16FromK64;
typedef THubToRgb<WAbgr16, 16> KAbgr16FromHub;
typedef TPixelKernel<RAbgr16, XPass, WK64> KK64FromAbgr16;
typedef THubToRgb<WK64, 16> KK64FromHub;
typedef TPixelKernel<RK64, TXRgbMap<KScaleToVideo16>, WK64> KK64ScaleToVideo;

typedef TPixelKernel<RHub, X422To444, WR4fl> KR4flFromHub;

// ------------------------------------------------------------------ fills
// The YUV colour of the job, and the RGB colour at the destination's depth.
typedef TPixelKernel<TColorReader<LYuyv8>, XPass, WYuyv8> KFillYuyv8;
typedef TPixelKernel<TColorReader<L2vuy8>, XPass, W2vuy8> KFill2vuy8;
typedef TPixelKernel<TColorReader<LPacked10>, XPass, WPacked10> KFillPacked10;
typedef TPixelKernel<TColorReader<L4224_8>, XPass, W4224_8> KFill4224_8;
typedef TPixelKernel<TColorReader<L4224_10>, XPass, W4224_10> KFill4224_10;
typedef TPixelKernel<TColorReader<L4444_16>, XPass, W4444_16> KFill4444_16;
typedef TPixelKernel<TColorReader<L4444_16>, XPass, WR4fl> KFillR4fl;
typedef TPixelKernel<TColorReader<LRgba8>, XPass, WRgba8> KFillRgba8;
typedef TPixelKernel<TColorReader<LBgra8>, XPass, WBgra8> KFillBgra8;
typedef TPixelKernel<TColorReader<LRgb24>, XPass, WRgb24> KFillRgb24;
typedef TPixelKernel<TColorReader<LRgb36>, XPass, WRgb36> KFillRgb36;
typedef TPixelKernel<TColorReader<LRgbA2r10g10b10>, XPass, WA2r10> KFillA2r10;
typedef TPixelKernel<TColorReader<LRgbA2b10g10r10>, XPass, WA2b10> KFillA2b10;
typedef TPixelKernel<TColorReader<LRgbAbgr16>, XPass, WAbgr16> KFillAbgr16;
typedef TPixelKernel<TColorReader<LRgbK64argb>, XPass, WK64> KFillK64;

}  // namespace NBufferMatrix
}  // namespace NQxcKernels

// The conversion matrix of the buffer family: X(destination, source, mode,
// destination range, composition). A source of type 33 stands for the 2VUY
// buffer surface (which reports type 15). Mode 1 is the filter (YUV
// destinations) or interpolation (RGB destinations); a composition that
// serves both modes is listed under mode 0. A range of -1 means either; a
// source of the destination's own RGB format is chosen by the range (0:
// read as video levels, 1: read as graphics levels).
#define QXC_BUFFER_MATRIX(X)                                                                          \
    X(15, 13, 0, -1, KYuyv8FromRgba8) X(15, 13, 1, -1, KYuyv8FromRgba8Filter)                         \
    X(15, 22, 0, -1, KYuyv8FromRgb24) X(15, 22, 1, -1, KYuyv8FromRgb24Filter)                         \
    X(18, 13, 0, -1, KPacked10FromRgba8) X(18, 13, 1, -1, KPacked10FromRgba8Filter)                   \
    X(18, 22, 0, -1, KPacked10FromRgb24) X(18, 22, 1, -1, KPacked10FromRgb24Filter)                   \
    X(31, 13, 0, -1, KV210FromRgba8) X(31, 13, 1, -1, KV210FromRgba8Filter)                           \
    X(31, 22, 0, -1, KV210FromRgb24) X(31, 22, 1, -1, KV210FromRgb24Filter)                           \
    X(19, 13, 0, -1, K4224_10FromRgba8) X(19, 13, 1, -1, K4224_10FromRgba8Filter)                     \
    X(19, 22, 0, -1, K4224_10FromRgb24) X(19, 22, 1, -1, K4224_10FromRgb24Filter)                     \
    X(16, 13, 0, -1, K4224_8FromRgba8) X(16, 13, 1, -1, K4224_8FromRgba8Filter)                       \
    X(16, 26, 0, -1, K4224_8FromBgra8)                                                                \
    X(16, 22, 0, -1, K4224_8FromRgb24) X(16, 22, 1, -1, K4224_8FromRgb24Filter)                       \
    X(17, 14, 0, -1, K4224_8SFromRgba8S) X(20, 14, 0, -1, K4224_10SFromRgba8S)                        \
    X(21, 13, 0, -1, K4444_16FromRgba8)                                                               \
    X(33, 13, 0, -1, K2vuy8FromRgba8) X(33, 13, 1, -1, K2vuy8FromRgba8Filter)                         \
    X(33, 22, 0, -1, K2vuy8FromRgb24) X(33, 22, 1, -1, K2vuy8FromRgb24Filter)                         \
    X(33, 15, 0, -1, K2vuy8FromYuyv8) X(33, 33, 0, -1, K2vuy8From2vuy8)                               \
    X(13, 15, 0, -1, KRgba8FromYuyv8) X(13, 15, 1, -1, KRgba8FromYuyv8Interp)                         \
    X(13, 33, 0, -1, KRgba8From2vuy8) X(13, 33, 1, -1, KRgba8From2vuy8Interp)                         \
    X(13, 16, 0, -1, KRgba8From4224_8) X(13, 16, 1, -1, KRgba8From4224_8Interp)                       \
    X(13, 18, 0, -1, KRgba8FromPacked10) X(13, 18, 1, -1, KRgba8FromPacked10Interp)                   \
    X(13, 19, 0, -1, KRgba8From4224_10) X(13, 19, 1, -1, KRgba8From4224_10Interp)                     \
    X(13, 13, 0, 0, KRgba8FromVideo) X(13, 13, 0, 1, KRgba8FromGraphic)                               \
    X(13, 29, 0, -1, KRgba8FromK64) X(13, 31, 0, -1, KRgba8FromV210)                                  \
    X(13, 34, 0, -1, KRgba8FromA2b10) X(13, 22, 0, -1, KRgba8FromRgb24)                               \
    X(13, 36, 0, -1, KRgba8FromRgb36)                                                                 \
    X(14, 17, 0, -1, KRgba8SFrom4224_8S) X(14, 20, 0, -1, KRgba8SFrom4224_10S)                        \
    X(14, 14, 0, 0, KRgba8SFromVideo) X(14, 14, 0, 1, KRgba8SFromGraphic)                             \
    X(26, 16, 0, -1, KBgra8From4224_8) X(26, 26, 0, 0, KBgra8FromVideo)                               \
    X(26, 26, 0, 1, KBgra8FromGraphic)                                                                \
    X(28, 7, 0, -1, KA2r10FromHub) X(28, 28, 0, 0, KA2r10FromVideo)                                   \
    X(28, 28, 0, 1, KA2r10FromGraphic) X(28, 29, 0, -1, KA2r10FromK64)                                \
    X(34, 7, 0, -1, KA2b10FromHub) X(34, 34, 0, 0, KA2b10FromVideo)                                   \
    X(34, 34, 0, 1, KA2b10FromGraphic) X(34, 29, 0, -1, KA2b10FromK64)                                \
    X(22, 7, 0, -1, KRgb24FromHub) X(22, 22, 0, 0, KRgb24FromVideo)                                   \
    X(22, 22, 0, 1, KRgb24FromGraphic) X(22, 29, 0, -1, KRgb24FromK64)                                \
    X(36, 7, 0, -1, KRgb36FromHub) X(36, 36, 0, 0, KRgb36FromVideo)                                   \
    X(36, 36, 0, 1, KRgb36FromGraphic) X(36, 29, 0, -1, KRgb36FromK64)                                \
    X(32, 29, 0, -1, KAbgr16FromK64) X(32, 7, 0, -1, KAbgr16FromHub)                                  \
    X(29, 32, 0, -1, KK64FromAbgr16) X(29, 7, 0, -1, KK64FromHub)                                     \
    X(30, 7, 0, -1, KR4flFromHub)

#endif  // QXBASE_SURFACES_KERNELS_BUFFERMATRIX_H
