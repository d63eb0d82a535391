// The arithmetic between YCbCr and RGB of the buffer kernels, each step in a
// scalar and an SSE2 form with the same integer (or IEEE single) operations,
// so that the two give identical bytes:
//  - TXYccToRgb8: YCbCr (10-bit scale) to 8-bit RGB, 16-bit fixed point;
//    TXPacked422ToRgb8 the same straight from packed 8-bit YUYV or 2VUY;
//  - TXYccToRgbDeep: YCbCr to 8-, 10-, 12- or 16-bit RGB, exact 32-bit sums
//    scaled in single precision;
//  - TXRgbToYcc and TFilterStage: 8-bit RGB to YCbCr, exact 32-bit sums,
//    plain or with the five-tap chroma filter; TXRgb8ToPacked422 the same
//    between packed 8-bit RGBA or BGRA and YUYV or 2VUY;
//  - TInterpStage: 4:2:2 to RGB with interpolated chroma;
//  - TXRgbRange8: 8-bit RGB between video and graphics levels;
//  - TXRgbMap: a linear map of RGB values (depth and level changes beyond
//    8 bits).
// A step is an object made once per call from the call's job.
#ifndef QXBASE_SURFACES_KERNELS_COLORMATRIX_H
#define QXBASE_SURFACES_KERNELS_COLORMATRIX_H

#include "surfaces/kernels/rgblayouts.h"
#include "surfaces/kernels/transforms.h"

#include <cmath>
#include <type_traits>

namespace NQxcKernels {

// The scalar forms of _mm_mulhi_epi16 and _mm_mulhi_epu16.
inline int32_t MulHigh(int32_t in_iA, int32_t in_iB) { return FloorShift(in_iA * in_iB, 16); }
inline uint32_t MulHighU(uint32_t in_uiA, uint32_t in_uiB) { return (in_uiA * in_uiB) >> 16; }

// Whether a step can run a call (a matrix step needs a coefficient set);
// steps without a test accept every call.
template <class TXf, class = void>
struct TAccepts {
    static bool Run(const SQxcBlockJob&) { return true; }
};
template <class TXf>
struct TAccepts<TXf, std::void_t<decltype(&TXf::Accepts)>> {
    static bool Run(const SQxcBlockJob& in_rsJob) { return TXf::Accepts(in_rsJob); }
};

// ----------------------------------------------- rounding in single precision
// v x scale + offset, clamped to 0..max, rounded to nearest (ties to even):
// one IEEE operation a step, in the order the SSE2 form does them.
inline uint16_t MapValue(int32_t in_i, float in_fScale, float in_fOffset, float in_fMax)
{
    float f = static_cast<float>(in_i);
    f = f * in_fScale;
    f = f + in_fOffset;
    f = f > 0.0f ? f : 0.0f;
    f = f < in_fMax ? f : in_fMax;
    return static_cast<uint16_t>(std::nearbyint(f));
}

inline __m128i VMapValues(__m128i in_i128, __m128 in_fScale, __m128 in_fOffset, __m128 in_fMax)
{
    __m128 f = _mm_add_ps(_mm_mul_ps(_mm_cvtepi32_ps(in_i128), in_fScale), in_fOffset);
    f = _mm_min_ps(_mm_max_ps(f, _mm_setzero_ps()), in_fMax);
    return _mm_cvtps_epi32(f);
}

// Eight unsigned 16-bit lanes from two vectors of 32-bit values 0..65535.
inline __m128i VPackU16(__m128i in_i128Low, __m128i in_i128High)
{
    const __m128i i128Bias = Splat32(32768);
    return _mm_xor_si128(_mm_packs_epi32(_mm_sub_epi32(in_i128Low, i128Bias), _mm_sub_epi32(in_i128High, i128Bias)),
                         Splat16(0x8000));
}

// ========================================== YCbCr -> 8-bit RGB, 16-bit lanes
// With Y, Cb, Cr on the 10-bit scale and the set's Q14 inverse weights, in
// 16-bit lanes (8-bit results with 6 fraction bits):
//   L  = ((Y << 6) gain >>> 16) - black + 32       (unsigned high product)
//   cb = (Cb - 512) << 6,  cr = (Cr - 512) << 6     (signed)
//   R  = (L +s (cr rcr >> 16)) >> 6
//   G  = (L -s ((cb gcb >> 16) + (cr gcr >> 16))) >> 6
//   B  = ((L +s (cb bcb/2 >> 16)) +s (cb bcb/2 >> 16)) >> 6
// (+s, -s: 16-bit saturating), clamped to 0..255: rounded at the last shift.
// black is ((black level << 6) gain >>> 16), the set's black level being 64
// at graphics levels and 0 at video levels (where the set's unit gain keeps Y
// as it is); for a shaped pixel the level is the key's share of it, from the
// set's per-key offset (4112 = 16/255 in Q16): ((A << 8) 4112 >>> 16) for an
// 8-bit key A = K >> 2. The key becomes K >> 2.
inline int32_t Sat16(int32_t in_i) { return Clamp(in_i, -32768, 32767); }

template <bool kbShaped>
struct TXYccToRgb8 {
    static bool Accepts(const SQxcBlockJob& in_rsJob) { return in_rsJob.psCoeff != nullptr; }

    explicit TXYccToRgb8(const SQxcBlockJob& in_rsJob)
    {
        const SQxcRgbCoeff& rs = *in_rsJob.psCoeff;
        uiGain = static_cast<uint16_t>(rs.sYGain.ai16Lane[0]);
        iRCr = rs.sRFromCr.ai16Lane[0];
        iGCr = rs.sGFromCr.ai16Lane[0];
        iGCb = rs.sGFromCb.ai16Lane[0];
        iBCbHalf = rs.sBFromCbHalf.ai16Lane[0];
        iLumaBias = 32 - static_cast<int32_t>(MulHighU(static_cast<uint32_t>(rs.sForwardOffset2.ai16Lane[0]) << 6, uiGain));
        uiKeyBlack = static_cast<uint16_t>(rs.sInverseOffset.ai16Lane[0]);
        i128Gain = Splat16(uiGain);
        i128RCr = Splat16(iRCr);
        i128GCr = Splat16(iGCr);
        i128GCb = Splat16(iGCb);
        i128BCbHalf = Splat16(iBCbHalf);
        i128LumaBias = Splat16(kbShaped ? 32 : iLumaBias);
        i128KeyBlack = Splat16(uiKeyBlack);
    }

    // The scalar form, one pixel.
    void Pixel(uint16_t in_usY, uint16_t in_usCb, uint16_t in_usCr, uint16_t in_usK, uint16_t& out_rusR,
               uint16_t& out_rusG, uint16_t& out_rusB) const
    {
        int32_t iL = static_cast<int32_t>(MulHighU(static_cast<uint32_t>(in_usY) << 6, uiGain));
        if (kbShaped)
            iL = iL + 32 - static_cast<int32_t>(MulHighU(MulHighU(static_cast<uint32_t>(in_usK >> 2) << 8, uiKeyBlack), uiGain));
        else
            iL = iL + iLumaBias;
        const int32_t iCb = (in_usCb - 512) * 64;
        const int32_t iCr = (in_usCr - 512) * 64;
        const int32_t iB = MulHigh(iCb, iBCbHalf);
        out_rusR = Clamp8(Sat16(iL + MulHigh(iCr, iRCr)));
        out_rusG = Clamp8(Sat16(iL - (MulHigh(iCb, iGCb) + MulHigh(iCr, iGCr))));
        out_rusB = Clamp8(Sat16(Sat16(iL + iB) + iB));
    }

    void Apply(const SScalar444& in_rs, SScalarRgb& out_rs) const
    {
        for (int p = 0; p < 16; ++p) {
            Pixel(in_rs.aus16Y[p], in_rs.aus16Cb[p], in_rs.aus16Cr[p], in_rs.aus16K[p], out_rs.aus16R[p],
                  out_rs.aus16G[p], out_rs.aus16B[p]);
            out_rs.aus16A[p] = static_cast<uint16_t>(in_rs.aus16K[p] >> 2);
        }
    }

    void Apply(const SVector444& in_rs, SVectorRgb& out_rs) const
    {
        const __m128i i128Mid = Splat16(512);
        const __m128i i128Zero = _mm_setzero_si128();
        const __m128i i128Max = Splat16(255);
        for (int h = 0; h < 2; ++h) {
            const __m128i i128L = Luma(in_rs.ai128Y[h], in_rs.ai128K[h]);
            const __m128i i128Cb = _mm_slli_epi16(_mm_sub_epi16(in_rs.ai128Cb[h], i128Mid), 6);
            const __m128i i128Cr = _mm_slli_epi16(_mm_sub_epi16(in_rs.ai128Cr[h], i128Mid), 6);
            const __m128i i128B = _mm_mulhi_epi16(i128Cb, i128BCbHalf);
            const __m128i ai128[3] = {
                _mm_adds_epi16(i128L, _mm_mulhi_epi16(i128Cr, i128RCr)),
                _mm_subs_epi16(i128L, _mm_add_epi16(_mm_mulhi_epi16(i128Cb, i128GCb), _mm_mulhi_epi16(i128Cr, i128GCr))),
                _mm_adds_epi16(_mm_adds_epi16(i128L, i128B), i128B)};
            __m128i ai128Out[3];
            for (int c = 0; c < 3; ++c)
                ai128Out[c] = _mm_min_epi16(_mm_max_epi16(_mm_srai_epi16(ai128[c], 6), i128Zero), i128Max);
            const __m128i i128Key = _mm_srli_epi16(in_rs.ai128K[h], 2);
            out_rs.ai128BR[2 * h] = _mm_unpacklo_epi16(ai128Out[2], ai128Out[0]);
            out_rs.ai128BR[2 * h + 1] = _mm_unpackhi_epi16(ai128Out[2], ai128Out[0]);
            out_rs.ai128GA[2 * h] = _mm_unpacklo_epi16(ai128Out[1], i128Key);
            out_rs.ai128GA[2 * h + 1] = _mm_unpackhi_epi16(ai128Out[1], i128Key);
        }
    }

    // A pair's chroma for both of its pixels, then the matrix.
    template <class T422, class TRgb>
    void Apply(const T422& in_rs, TRgb& out_rs) const
    {
        typename std::conditional<std::is_same<T422, SScalar422>::value, SScalar444, SVector444>::type s444;
        X422To444::Apply(in_rs, s444);
        Apply(s444, out_rs);
    }

    // L of eight pixels (with the rounding half), from Y and the key.
    __m128i Luma(__m128i in_i128Y, __m128i in_i128K) const
    {
        __m128i i128L = _mm_add_epi16(_mm_mulhi_epu16(_mm_slli_epi16(in_i128Y, 6), i128Gain), i128LumaBias);
        if (kbShaped) {
            const __m128i i128Black = _mm_mulhi_epu16(_mm_slli_epi16(_mm_srli_epi16(in_i128K, 2), 8), i128KeyBlack);
            i128L = _mm_sub_epi16(i128L, _mm_mulhi_epu16(i128Black, i128Gain));
        }
        return i128L;
    }

    static uint16_t Clamp8(int32_t in_i) { return static_cast<uint16_t>(Clamp(FloorShift(in_i, 6), 0, 255)); }

    uint16_t uiGain, uiKeyBlack;
    int32_t iRCr, iGCr, iGCb, iBCbHalf, iLumaBias;
    __m128i i128Gain, i128RCr, i128GCr, i128GCb, i128BCbHalf, i128LumaBias, i128KeyBlack;
};

typedef TXYccToRgb8<false> XYccToRgb8;
typedef TXYccToRgb8<true> XYccToRgb8Shaped;

// ------------------------------------------ the packed 8-bit 4:2:2 path
// 8-bit YUYV (or 2VUY) bytes to 8-bit RGB planes with the arithmetic above,
// straight from the packed words: every 16-bit lane holds a pixel's Y and one
// chroma sample of its pair (Cb on the even pixel, Cr on the odd one), so
// (Y << 8) is the luma operand and (C << 8) ^ 0x8000 the chroma operand
// ((C - 128) << 8 = (C10 - 512) << 6); one signed high product per lane
// gives B/2 terms in the even lanes and R terms in the odd ones, another
// the two G terms, and lane shuffles spread each pair's terms over both of
// its pixels. The scalar form is the general step on the unpacked block, so
// both give the same bytes.
template <bool kbSwapped>
struct TXPacked422ToRgb8 {
    typedef TLayout422_8<kbSwapped> TSource;

    static bool Accepts(const SQxcBlockJob& in_rsJob) { return in_rsJob.psCoeff != nullptr; }
    explicit TXPacked422ToRgb8(const SQxcBlockJob& in_rsJob)
        : oMatrix(in_rsJob),
          i128BR(SplatPair16(oMatrix.iBCbHalf, oMatrix.iRCr)),
          i128G(SplatPair16(oMatrix.iGCb, oMatrix.iGCr))
    {
    }

    void Apply(const SScalarRaw<TSource>& in_rs, SScalarRgb& out_rs) const
    {
        SScalar422 s;
        TSource::Load(in_rs.auc, s);
        oMatrix.Apply(s, out_rs);
    }

    void Apply(const SVectorRaw<TSource>& in_rs, SVectorRgb8& out_rs) const
    {
        const __m128i i128High = Splat16(static_cast<short>(0xff00));
        __m128i ai128[3][2];
        for (int h = 0; h < 2; ++h) {
            const __m128i i128 = in_rs.ai128[h];
            const __m128i i128Y = kbSwapped ? _mm_and_si128(i128, i128High) : _mm_slli_epi16(i128, 8);
            const __m128i i128C =
                _mm_xor_si128(kbSwapped ? _mm_slli_epi16(i128, 8) : _mm_and_si128(i128, i128High), Splat16(-32768));
            const __m128i i128L = _mm_add_epi16(_mm_mulhi_epu16(i128Y, oMatrix.i128Gain), oMatrix.i128LumaBias);
            const __m128i i128BR = _mm_mulhi_epi16(i128C, this->i128BR);
            const __m128i i128G = _mm_mulhi_epi16(i128C, this->i128G);
            const __m128i i128R = _mm_shufflehi_epi16(_mm_shufflelo_epi16(i128BR, _MM_SHUFFLE(3, 3, 1, 1)),
                                                      _MM_SHUFFLE(3, 3, 1, 1));
            const __m128i i128B = _mm_shufflehi_epi16(_mm_shufflelo_epi16(i128BR, _MM_SHUFFLE(2, 2, 0, 0)),
                                                      _MM_SHUFFLE(2, 2, 0, 0));
            ai128[0][h] = _mm_srai_epi16(_mm_adds_epi16(i128L, i128R), 6);
            ai128[1][h] = _mm_srai_epi16(_mm_subs_epi16(i128L, _mm_add_epi16(i128G, VSwapLanePairs(i128G))), 6);
            ai128[2][h] = _mm_srai_epi16(_mm_adds_epi16(_mm_adds_epi16(i128L, i128B), i128B), 6);
        }
        out_rs.i128R = _mm_packus_epi16(ai128[0][0], ai128[0][1]);
        out_rs.i128G = _mm_packus_epi16(ai128[1][0], ai128[1][1]);
        out_rs.i128B = _mm_packus_epi16(ai128[2][0], ai128[2][1]);
        out_rs.i128A = _mm_set1_epi8(-1);
    }

    XYccToRgb8 oMatrix;
    __m128i i128BR, i128G;
};

// ======================================== YCbCr -> deep RGB, exact 32-bit sums
// S = gain (Y - black) + (the chroma terms), exact in 32 bits, is the 8-bit
// result in Q16. At video levels a component of kiDepth bits is S / 2^(24 -
// kiDepth) (studio levels scale by powers of two: 16 is 64 on 10 bits and
// 4096 on 16); at graphics levels it is S (2^kiDepth - 1) / (255 x 65536)
// (full scale to full scale). Both are one single-precision multiply,
// clamped and rounded to nearest. The key K becomes K (2^kiDepth - 1) / 1023.
template <int kiDepth>
struct TXYccToRgbDeep {
    static bool Accepts(const SQxcBlockJob& in_rsJob) { return in_rsJob.psCoeff != nullptr; }

    explicit TXYccToRgbDeep(const SQxcBlockJob& in_rsJob)
    {
        const SQxcRgbCoeff& rs = *in_rsJob.psCoeff;
        iGain = rs.sYGain.ai16Lane[0];
        iRCr = rs.sRFromCr.ai16Lane[0];
        iGCr = rs.sGFromCr.ai16Lane[0];
        iGCb = rs.sGFromCb.ai16Lane[0];
        iBCbHalf = rs.sBFromCbHalf.ai16Lane[0];
        iBlack = rs.sForwardOffset2.ai16Lane[0];
        fMax = static_cast<float>((1 << kiDepth) - 1);
        fScale = in_rsJob.iRgbRange == keQxcColorRangeVideo ? std::ldexp(1.0f, kiDepth - 24)
                                                             : static_cast<float>(((1 << kiDepth) - 1) / (255.0 * 65536.0));
        fKeyScale = static_cast<float>(((1 << kiDepth) - 1) / 1023.0);
    }

    void Apply(const SScalar444& in_rs, SScalarRgb& out_rs) const
    {
        for (int p = 0; p < 16; ++p) {
            const int32_t iY = iGain * (in_rs.aus16Y[p] - iBlack);
            const int32_t iCr = in_rs.aus16Cr[p] - 512;
            const int32_t iCb = in_rs.aus16Cb[p] - 512;
            out_rs.aus16R[p] = MapValue(iY + iRCr * iCr, fScale, 0.0f, fMax);
            out_rs.aus16G[p] = MapValue(iY - iGCr * iCr - iGCb * iCb, fScale, 0.0f, fMax);
            out_rs.aus16B[p] = MapValue(iY + iBCbHalf * iCb + iBCbHalf * iCb, fScale, 0.0f, fMax);
            out_rs.aus16A[p] = MapValue(in_rs.aus16K[p], fKeyScale, 0.0f, fMax);
        }
    }

    void Apply(const SVector444& in_rs, SVectorRgb& out_rs) const
    {
        const __m128i i128Mid = Splat16(512);
        const __m128i i128Zero = _mm_setzero_si128();
        const __m128i i128WR = SplatPair16(iGain, iRCr);
        const __m128i i128WG1 = SplatPair16(iGain, -iGCr);
        const __m128i i128WG2 = SplatPair16(0, -iGCb);
        const __m128i i128WB1 = SplatPair16(iGain, iBCbHalf);
        const __m128i i128WB2 = SplatPair16(0, iBCbHalf);
        const __m128 fScaleV = _mm_set1_ps(fScale), fMaxV = _mm_set1_ps(fMax), fKeyV = _mm_set1_ps(fKeyScale);
        const __m128 fZero = _mm_setzero_ps();
        for (int h = 0; h < 2; ++h) {
            const __m128i i128Y = _mm_sub_epi16(in_rs.ai128Y[h], Splat16(iBlack));
            const __m128i i128Cr = _mm_sub_epi16(in_rs.ai128Cr[h], i128Mid);
            const __m128i i128Cb = _mm_sub_epi16(in_rs.ai128Cb[h], i128Mid);
            for (int v = 0; v < 2; ++v) {
                const __m128i i128YCr = v == 0 ? _mm_unpacklo_epi16(i128Y, i128Cr) : _mm_unpackhi_epi16(i128Y, i128Cr);
                const __m128i i128YCb = v == 0 ? _mm_unpacklo_epi16(i128Y, i128Cb) : _mm_unpackhi_epi16(i128Y, i128Cb);
                const __m128i i128K = v == 0 ? _mm_unpacklo_epi16(in_rs.ai128K[h], i128Zero)
                                             : _mm_unpackhi_epi16(in_rs.ai128K[h], i128Zero);
                const __m128i i128R = VMapValues(_mm_madd_epi16(i128YCr, i128WR), fScaleV, fZero, fMaxV);
                const __m128i i128G = VMapValues(
                    _mm_add_epi32(_mm_madd_epi16(i128YCr, i128WG1), _mm_madd_epi16(i128YCb, i128WG2)), fScaleV, fZero,
                    fMaxV);
                const __m128i i128B = VMapValues(
                    _mm_add_epi32(_mm_madd_epi16(i128YCb, i128WB1), _mm_madd_epi16(i128YCb, i128WB2)), fScaleV, fZero,
                    fMaxV);
                const __m128i i128A = VMapValues(i128K, fKeyV, fZero, fMaxV);
                out_rs.ai128BR[2 * h + v] = _mm_or_si128(i128B, _mm_slli_epi32(i128R, 16));
                out_rs.ai128GA[2 * h + v] = _mm_or_si128(i128G, _mm_slli_epi32(i128A, 16));
            }
        }
    }

    template <class T422, class TRgb>
    void Apply(const T422& in_rs, TRgb& out_rs) const
    {
        typename std::conditional<std::is_same<T422, SScalar422>::value, SScalar444, SVector444>::type s444;
        X422To444::Apply(in_rs, s444);
        Apply(s444, out_rs);
    }

private:
    int32_t iGain, iRCr, iGCr, iGCb, iBCbHalf, iBlack;
    float fScale, fMax, fKeyScale;
};

// ================================================ 8-bit RGB -> YCbCr, exact
// Each component is a weighted sum of B, R, G and A with the set's Q15
// weights, exact in 32 bits, plus a bias, shifted right by 15 for an 8-bit
// result or 13 for a 10-bit one: round to nearest at the final shift. The
// bias holds the rounding half, the black level (the set's, 64 on the 10-bit
// scale, 0 at video levels where RGB already sits at studio levels) and the
// chroma midpoint; for shaped pixels the black level is the key's share
// instead, the set's per-key weight (2056 = 16/255 in Q15) on A. Results are
// clamped and put on the 10-bit working scale (8-bit values shifted left by
// 2, which the 8-bit stores undo exactly); the key K is A on that scale.
template <int kiDepth, bool kbShaped>
struct TRgbToYccMath {
    static const int kiShift = kiDepth == 8 ? 15 : 13;
    static const int kiMax = (1 << kiDepth) - 1;
    static const int kiScale = 10 - kiDepth;

    explicit TRgbToYccMath(const SQxcRgbCoeff& in_rs)
    {
        const int iKeyWeight = kbShaped ? in_rs.sForwardOffset1.ai16Lane[0] : 0;
        const int aiY[4] = {in_rs.sYFromB.ai16Lane[0], in_rs.sYFromR.ai16Lane[0], in_rs.sYFromG.ai16Lane[0], iKeyWeight};
        const int aiCb[4] = {in_rs.sCbFromB.ai16Lane[0], -in_rs.sCbFromR.ai16Lane[0], -in_rs.sCbFromG.ai16Lane[0], 0};
        const int aiCr[4] = {-in_rs.sCrFromB.ai16Lane[0], in_rs.sCrFromR.ai16Lane[0], -in_rs.sCrFromG.ai16Lane[0], 0};
        for (int i = 0; i < 4; ++i) {
            aaiWeight[0][i] = aiY[i];
            aaiWeight[1][i] = aiCb[i];
            aaiWeight[2][i] = aiCr[i];
        }
        for (int r = 0; r < 3; ++r) {
            aai128Weight[r][0] = SplatPair16(aaiWeight[r][0], aaiWeight[r][1]);
            aai128Weight[r][1] = SplatPair16(aaiWeight[r][2], aaiWeight[r][3]);
        }
        iBiasY = (1 << (kiShift - 1)) + (kbShaped ? 0 : in_rs.sForwardOffset2.ai16Lane[0] << 13);
        iBiasC = (1 << (kiShift - 1)) + (1 << 22);
    }

    // Row 0 is Y, 1 Cb, 2 Cr.
    int32_t Sum(int in_iRow, const SScalarRgb& in_rs, int in_iPixel) const
    {
        const int* pi = aaiWeight[in_iRow];
        return pi[0] * in_rs.aus16B[in_iPixel] + pi[1] * in_rs.aus16R[in_iPixel] + pi[2] * in_rs.aus16G[in_iPixel] +
               pi[3] * in_rs.aus16A[in_iPixel];
    }
    __m128i VSum(int in_iRow, __m128i in_i128BR, __m128i in_i128GA) const
    {
        return _mm_add_epi32(_mm_madd_epi16(in_i128BR, aai128Weight[in_iRow][0]),
                             _mm_madd_epi16(in_i128GA, aai128Weight[in_iRow][1]));
    }

    static uint16_t Finish(int32_t in_iSum, int32_t in_iBias, int in_iShift = kiShift)
    {
        return static_cast<uint16_t>(Clamp(FloorShift(in_iSum + in_iBias, in_iShift), 0, kiMax) << kiScale);
    }
    // Eight lanes from the sums of two vectors of four pixels.
    static __m128i VFinish(__m128i in_i128Low, __m128i in_i128High, int32_t in_iBias, int in_iShift = kiShift)
    {
        const __m128i i128Bias = Splat32(in_iBias);
        const __m128i i128Shift = _mm_cvtsi32_si128(in_iShift);
        const __m128i i128 = _mm_packs_epi32(_mm_sra_epi32(_mm_add_epi32(in_i128Low, i128Bias), i128Shift),
                                             _mm_sra_epi32(_mm_add_epi32(in_i128High, i128Bias), i128Shift));
        return _mm_slli_epi16(_mm_min_epi16(_mm_max_epi16(i128, _mm_setzero_si128()), Splat16(kiMax)), kiScale);
    }

    // Y and key of every pixel.
    void LumaKey(const SScalarRgb& in_rs, uint16_t* out_pusY, uint16_t* out_pusK) const
    {
        for (int p = 0; p < 16; ++p) {
            out_pusY[p] = Finish(Sum(0, in_rs, p), iBiasY);
            out_pusK[p] = KeyFrom8(static_cast<uint8_t>(in_rs.aus16A[p]));
        }
    }
    void LumaKey(const SVectorRgb& in_rs, __m128i* out_pi128Y, __m128i* out_pi128K) const
    {
        for (int h = 0; h < 2; ++h) {
            out_pi128Y[h] = VFinish(VSum(0, in_rs.ai128BR[2 * h], in_rs.ai128GA[2 * h]),
                                    VSum(0, in_rs.ai128BR[2 * h + 1], in_rs.ai128GA[2 * h + 1]), iBiasY);
            out_pi128K[h] = VKeyFrom8(
                _mm_packs_epi32(_mm_srli_epi32(in_rs.ai128GA[2 * h], 16), _mm_srli_epi32(in_rs.ai128GA[2 * h + 1], 16)));
        }
    }

    int aaiWeight[3][4];
    __m128i aai128Weight[3][2];
    int32_t iBiasY;
    int32_t iBiasC;
};

// RGB to 4:2:2 (chroma of the first pixel of each pair) or to 4:4:4.
template <int kiDepth, bool kbShaped>
struct TXRgbToYcc {
    static bool Accepts(const SQxcBlockJob& in_rsJob) { return in_rsJob.psCoeff != nullptr; }
    explicit TXRgbToYcc(const SQxcBlockJob& in_rsJob) : oMath(*in_rsJob.psCoeff) {}

    void Apply(const SScalarRgb& in_rs, SScalar422& out_rs) const
    {
        oMath.LumaKey(in_rs, out_rs.aus16Y, out_rs.aus16K);
        for (int j = 0; j < 8; ++j) {
            out_rs.aus16Cb[j] = oMath.Finish(oMath.Sum(1, in_rs, 2 * j), oMath.iBiasC);
            out_rs.aus16Cr[j] = oMath.Finish(oMath.Sum(2, in_rs, 2 * j), oMath.iBiasC);
        }
    }
    void Apply(const SScalarRgb& in_rs, SScalar444& out_rs) const
    {
        oMath.LumaKey(in_rs, out_rs.aus16Y, out_rs.aus16K);
        for (int p = 0; p < 16; ++p) {
            out_rs.aus16Cb[p] = oMath.Finish(oMath.Sum(1, in_rs, p), oMath.iBiasC);
            out_rs.aus16Cr[p] = oMath.Finish(oMath.Sum(2, in_rs, p), oMath.iBiasC);
        }
    }

    void Apply(const SVectorRgb& in_rs, SVector422& out_rs) const
    {
        oMath.LumaKey(in_rs, out_rs.ai128Y, out_rs.ai128K);
        // The even pixels (32-bit elements 0 and 2) of each vector pair.
        __m128i ai128BR[2], ai128GA[2];
        for (int i = 0; i < 2; ++i) {
            ai128BR[i] = Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(in_rs.ai128BR[2 * i], in_rs.ai128BR[2 * i + 1]);
            ai128GA[i] = Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(in_rs.ai128GA[2 * i], in_rs.ai128GA[2 * i + 1]);
        }
        out_rs.i128Cb = oMath.VFinish(oMath.VSum(1, ai128BR[0], ai128GA[0]), oMath.VSum(1, ai128BR[1], ai128GA[1]),
                                      oMath.iBiasC);
        out_rs.i128Cr = oMath.VFinish(oMath.VSum(2, ai128BR[0], ai128GA[0]), oMath.VSum(2, ai128BR[1], ai128GA[1]),
                                      oMath.iBiasC);
    }
    void Apply(const SVectorRgb& in_rs, SVector444& out_rs) const
    {
        oMath.LumaKey(in_rs, out_rs.ai128Y, out_rs.ai128K);
        for (int h = 0; h < 2; ++h) {
            out_rs.ai128Cb[h] = oMath.VFinish(oMath.VSum(1, in_rs.ai128BR[2 * h], in_rs.ai128GA[2 * h]),
                                              oMath.VSum(1, in_rs.ai128BR[2 * h + 1], in_rs.ai128GA[2 * h + 1]),
                                              oMath.iBiasC);
            out_rs.ai128Cr[h] = oMath.VFinish(oMath.VSum(2, in_rs.ai128BR[2 * h], in_rs.ai128GA[2 * h]),
                                              oMath.VSum(2, in_rs.ai128BR[2 * h + 1], in_rs.ai128GA[2 * h + 1]),
                                              oMath.iBiasC);
        }
    }

    TRgbToYccMath<kiDepth, kbShaped> oMath;
};

// ------------------------------------------ the packed 8-bit 4:2:2 path
// 8-bit RGBA (or BGRA) bytes to 8-bit YUYV (or 2VUY) bytes with the
// arithmetic of TXRgbToYcc<8, false>: a pixel's word masked and shifted gives
// its (B, R) and (G, A) lanes (in the reversed byte order (A, G) and (R, B),
// met with exchanged weights), two _mm_madd_epi16 its sum; the even pixels
// are picked as whole words for the chroma. Saturating packs clamp. The
// scalar form is the general step between the unpacked blocks.
template <bool kbReversed, bool kbSwapped>
struct TXRgb8ToPacked422 {
    typedef TLayoutRgb8x4<kbReversed> TSource;
    typedef TLayout422_8<kbSwapped> TDestination;
    typedef TRgbToYccMath<8, false> TMath;

    static bool Accepts(const SQxcBlockJob& in_rsJob) { return in_rsJob.psCoeff != nullptr; }
    explicit TXRgb8ToPacked422(const SQxcBlockJob& in_rsJob) : oStep(in_rsJob)
    {
        for (int r = 0; r < 3; ++r) {
            const int* pi = oStep.oMath.aaiWeight[r];  // B R G A
            aai128Weight[r][0] = kbReversed ? SplatPair16(pi[3], pi[2]) : SplatPair16(pi[0], pi[1]);
            aai128Weight[r][1] = kbReversed ? SplatPair16(pi[1], pi[0]) : SplatPair16(pi[2], pi[3]);
        }
    }

    void Apply(const SScalarRaw<TSource>& in_rs, SScalarRaw<TDestination>& out_rs) const
    {
        SScalarRgb sRgb;
        TSource::Load(in_rs.auc, sRgb);
        SScalar422 s422;
        oStep.Apply(sRgb, s422);
        TDestination::template Store<keStoreUnaligned>(out_rs.auc, s422);
    }

    void Apply(const SVectorRaw<TSource>& in_rs, SVectorRaw<TDestination>& out_rs) const
    {
        __m128i ai128Y[4];
        for (int q = 0; q < 4; ++q)
            ai128Y[q] = Sum(0, in_rs.ai128[q], oStep.oMath.iBiasY);
        const __m128i i128Y = _mm_packus_epi16(_mm_packs_epi32(ai128Y[0], ai128Y[1]), _mm_packs_epi32(ai128Y[2], ai128Y[3]));
        const __m128i ai128Even[2] = {Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(in_rs.ai128[0], in_rs.ai128[1]),
                                      Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(in_rs.ai128[2], in_rs.ai128[3])};
        const __m128i i128Cb = _mm_packs_epi32(Sum(1, ai128Even[0], oStep.oMath.iBiasC), Sum(1, ai128Even[1], oStep.oMath.iBiasC));
        const __m128i i128Cr = _mm_packs_epi32(Sum(2, ai128Even[0], oStep.oMath.iBiasC), Sum(2, ai128Even[1], oStep.oMath.iBiasC));
        const __m128i i128C = _mm_packus_epi16(_mm_unpacklo_epi16(i128Cb, i128Cr), _mm_unpackhi_epi16(i128Cb, i128Cr));
        out_rs.ai128[0] = kbSwapped ? _mm_unpacklo_epi8(i128C, i128Y) : _mm_unpacklo_epi8(i128Y, i128C);
        out_rs.ai128[1] = kbSwapped ? _mm_unpackhi_epi8(i128C, i128Y) : _mm_unpackhi_epi8(i128Y, i128C);
    }

private:
    // One component of four pixels' words, shifted to its 8-bit value.
    __m128i Sum(int in_iRow, __m128i in_i128Words, int32_t in_iBias) const
    {
        const __m128i i128Low = _mm_and_si128(in_i128Words, Splat16(0x00ff));
        const __m128i i128High = _mm_srli_epi16(in_i128Words, 8);
        const __m128i i128 = _mm_add_epi32(_mm_madd_epi16(i128Low, aai128Weight[in_iRow][0]),
                                           _mm_madd_epi16(i128High, aai128Weight[in_iRow][1]));
        return _mm_srai_epi32(_mm_add_epi32(i128, Splat32(in_iBias)), TMath::kiShift);
    }

    TXRgbToYcc<8, false> oStep;
    __m128i aai128Weight[3][2];
};

// ==================================================== windowed stages
// A stage that needs its neighbours: the driver makes the middle form of
// every block (First), fixes the last partial block (FixTail: the samples
// past the last pixel repeat it, so the picture's edge sample is
// replicated), makes the block before the first and after the last from the
// edge block (Before, After), and then produces each block from itself and
// its two neighbours (Second).

// ------------------------------------------- the five-tap chroma filter
// RGB to 4:2:2 with the chroma of pixel 2k filtered over pixels 2k-2..2k+2
// with the weights 1, 3, 8, 3, 1 (/16): the exact 32-bit chroma sums of the
// matrix are filtered, and the result is rounded once, at the final shift.
struct SScalarSums {
    uint16_t aus16Y[16];
    uint16_t aus16K[16];
    int32_t ai32Cb[16];
    int32_t ai32Cr[16];
};
struct SVectorSums {
    __m128i ai128Y[2];
    __m128i ai128K[2];
    __m128i ai128Cb[4];
    __m128i ai128Cr[4];
};

template <int kiDepth>
struct TFilterStage {
    typedef TRgbToYccMath<kiDepth, false> TMath;
    template <class TB>
    using TMid = typename std::conditional<std::is_same<TB, CScalar>::value, SScalarSums, SVectorSums>::type;

    static bool Accepts(const SQxcBlockJob& in_rsJob) { return in_rsJob.psCoeff != nullptr; }
    explicit TFilterStage(const SQxcBlockJob& in_rsJob)
        : oMath(*in_rsJob.psCoeff), iBias((1 << (TMath::kiShift + 3)) + (1 << 26))
    {
    }

    void First(const SScalarRgb& in_rs, SScalarSums& out_rs) const
    {
        oMath.LumaKey(in_rs, out_rs.aus16Y, out_rs.aus16K);
        for (int p = 0; p < 16; ++p) {
            out_rs.ai32Cb[p] = oMath.Sum(1, in_rs, p);
            out_rs.ai32Cr[p] = oMath.Sum(2, in_rs, p);
        }
    }
    void First(const SVectorRgb& in_rs, SVectorSums& out_rs) const
    {
        oMath.LumaKey(in_rs, out_rs.ai128Y, out_rs.ai128K);
        for (int q = 0; q < 4; ++q) {
            out_rs.ai128Cb[q] = oMath.VSum(1, in_rs.ai128BR[q], in_rs.ai128GA[q]);
            out_rs.ai128Cr[q] = oMath.VSum(2, in_rs.ai128BR[q], in_rs.ai128GA[q]);
        }
    }

    static void FixTail(SScalarSums& io_rs, unsigned in_uiPixels)
    {
        for (unsigned p = in_uiPixels; p < 16; ++p) {
            io_rs.ai32Cb[p] = io_rs.ai32Cb[in_uiPixels - 1];
            io_rs.ai32Cr[p] = io_rs.ai32Cr[in_uiPixels - 1];
        }
    }
    static void FixTail(SVectorSums& io_rs, unsigned in_uiPixels)
    {
        alignas(16) SScalarSums s;
        for (int q = 0; q < 4; ++q) {
            _mm_store_si128(reinterpret_cast<__m128i*>(s.ai32Cb + 4 * q), io_rs.ai128Cb[q]);
            _mm_store_si128(reinterpret_cast<__m128i*>(s.ai32Cr + 4 * q), io_rs.ai128Cr[q]);
        }
        FixTail(s, in_uiPixels);
        for (int q = 0; q < 4; ++q) {
            io_rs.ai128Cb[q] = _mm_load_si128(reinterpret_cast<const __m128i*>(s.ai32Cb + 4 * q));
            io_rs.ai128Cr[q] = _mm_load_si128(reinterpret_cast<const __m128i*>(s.ai32Cr + 4 * q));
        }
    }

    // The block before the first: its last two samples repeat the first.
    static void Before(const SScalarSums& in_rs, SScalarSums& out_rs)
    {
        out_rs.ai32Cb[14] = out_rs.ai32Cb[15] = in_rs.ai32Cb[0];
        out_rs.ai32Cr[14] = out_rs.ai32Cr[15] = in_rs.ai32Cr[0];
    }
    static void Before(const SVectorSums& in_rs, SVectorSums& out_rs)
    {
        out_rs.ai128Cb[3] = _mm_shuffle_epi32(in_rs.ai128Cb[0], 0);
        out_rs.ai128Cr[3] = _mm_shuffle_epi32(in_rs.ai128Cr[0], 0);
    }
    // The block after the last: its first sample repeats the last.
    static void After(const SScalarSums& in_rs, SScalarSums& out_rs)
    {
        out_rs.ai32Cb[0] = in_rs.ai32Cb[15];
        out_rs.ai32Cr[0] = in_rs.ai32Cr[15];
    }
    static void After(const SVectorSums& in_rs, SVectorSums& out_rs)
    {
        out_rs.ai128Cb[0] = _mm_shuffle_epi32(in_rs.ai128Cb[3], 0xff);
        out_rs.ai128Cr[0] = _mm_shuffle_epi32(in_rs.ai128Cr[3], 0xff);
    }

    void Second(const SScalarSums& in_rsPrevious, const SScalarSums& in_rs, const SScalarSums& in_rsNext,
                SScalar422& out_rs) const
    {
        std::memcpy(out_rs.aus16Y, in_rs.aus16Y, sizeof(out_rs.aus16Y));
        std::memcpy(out_rs.aus16K, in_rs.aus16K, sizeof(out_rs.aus16K));
        for (int k = 0; k < 8; ++k) {
            out_rs.aus16Cb[k] = Filter(in_rsPrevious.ai32Cb, in_rs.ai32Cb, in_rsNext.ai32Cb, k);
            out_rs.aus16Cr[k] = Filter(in_rsPrevious.ai32Cr, in_rs.ai32Cr, in_rsNext.ai32Cr, k);
        }
    }
    void Second(const SVectorSums& in_rsPrevious, const SVectorSums& in_rs, const SVectorSums& in_rsNext,
                SVector422& out_rs) const
    {
        out_rs.ai128Y[0] = in_rs.ai128Y[0];
        out_rs.ai128Y[1] = in_rs.ai128Y[1];
        out_rs.ai128K[0] = in_rs.ai128K[0];
        out_rs.ai128K[1] = in_rs.ai128K[1];
        out_rs.i128Cb = VFilter(in_rsPrevious.ai128Cb, in_rs.ai128Cb, in_rsNext.ai128Cb);
        out_rs.i128Cr = VFilter(in_rsPrevious.ai128Cr, in_rs.ai128Cr, in_rsNext.ai128Cr);
    }

private:
    uint16_t Filter(const int32_t* in_piPrevious, const int32_t* in_pi, const int32_t* in_piNext, int in_iPair) const
    {
        int32_t aiTap[5];
        for (int d = -2; d <= 2; ++d) {
            const int i = 2 * in_iPair + d;
            aiTap[d + 2] = i < 0 ? in_piPrevious[16 + i] : (i >= 16 ? in_piNext[i - 16] : in_pi[i]);
        }
        const int32_t iF = aiTap[0] + 3 * aiTap[1] + 8 * aiTap[2] + 3 * aiTap[3] + aiTap[4];
        return TMath::Finish(iF, iBias, TMath::kiShift + 4);
    }

    __m128i VFilter(const __m128i* in_pi128Previous, const __m128i* in_pi128, const __m128i* in_pi128Next) const
    {
        // Even samples e0..e7 and odd o0..o7 (two vectors each); the last
        // even and odd sample of the block before, the first of the one after.
        const __m128i i128E0 = Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(in_pi128[0], in_pi128[1]);
        const __m128i i128E1 = Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(in_pi128[2], in_pi128[3]);
        const __m128i i128O0 = Shuffle2<_MM_SHUFFLE(3, 1, 3, 1)>(in_pi128[0], in_pi128[1]);
        const __m128i i128O1 = Shuffle2<_MM_SHUFFLE(3, 1, 3, 1)>(in_pi128[2], in_pi128[3]);
        const __m128i i128PrevE = _mm_shuffle_epi32(in_pi128Previous[3], _MM_SHUFFLE(2, 2, 2, 2));
        const __m128i i128PrevO = _mm_shuffle_epi32(in_pi128Previous[3], _MM_SHUFFLE(3, 3, 3, 3));
        const __m128i i128NextE = in_pi128Next[0];
        // e(k-1), o(k-1) and e(k+1) for k = 0..3 and 4..7.
        const __m128i i128Em0 = _mm_or_si128(_mm_slli_si128(i128E0, 4), _mm_srli_si128(i128PrevE, 12));
        const __m128i i128Em1 = _mm_or_si128(_mm_slli_si128(i128E1, 4), _mm_srli_si128(i128E0, 12));
        const __m128i i128Om0 = _mm_or_si128(_mm_slli_si128(i128O0, 4), _mm_srli_si128(i128PrevO, 12));
        const __m128i i128Om1 = _mm_or_si128(_mm_slli_si128(i128O1, 4), _mm_srli_si128(i128O0, 12));
        const __m128i i128Ep0 = _mm_or_si128(_mm_srli_si128(i128E0, 4), _mm_slli_si128(i128E1, 12));
        const __m128i i128Ep1 = _mm_or_si128(_mm_srli_si128(i128E1, 4), _mm_slli_si128(i128NextE, 12));
        return TMath::VFinish(Taps(i128Em0, i128Om0, i128E0, i128O0, i128Ep0),
                              Taps(i128Em1, i128Om1, i128E1, i128O1, i128Ep1), iBias, TMath::kiShift + 4);
    }
    static __m128i Taps(__m128i in_i128Em, __m128i in_i128Om, __m128i in_i128E, __m128i in_i128O, __m128i in_i128Ep)
    {
        const __m128i i128Odd = _mm_add_epi32(in_i128Om, in_i128O);
        return _mm_add_epi32(_mm_add_epi32(_mm_add_epi32(in_i128Em, in_i128Ep), _mm_slli_epi32(in_i128E, 3)),
                             _mm_add_epi32(i128Odd, _mm_slli_epi32(i128Odd, 1)));
    }

    TMath oMath;
    int32_t iBias;
};

// --------------------------------------- interpolated chroma, 4:2:2 -> RGB
// The odd pixel of a pair takes the rounded mean of its pair's chroma and
// the next pair's, (a + b + 1) >> 1; the last pair's next is itself.
template <class TMatrix>
struct TInterpStage {
    template <class TB>
    using TMid = typename TB::T422;

    static bool Accepts(const SQxcBlockJob& in_rsJob) { return TAccepts<TMatrix>::Run(in_rsJob); }
    explicit TInterpStage(const SQxcBlockJob& in_rsJob) : oMatrix(in_rsJob) {}

    template <class T422>
    void First(const T422& in_rs, T422& out_rs) const
    {
        out_rs = in_rs;
    }

    static void FixTail(SScalar422& io_rs, unsigned in_uiPixels)
    {
        const unsigned uiPairs = (in_uiPixels + 1) / 2;
        for (unsigned j = uiPairs; j < 8; ++j) {
            io_rs.aus16Cb[j] = io_rs.aus16Cb[uiPairs - 1];
            io_rs.aus16Cr[j] = io_rs.aus16Cr[uiPairs - 1];
        }
    }
    static void FixTail(SVector422& io_rs, unsigned in_uiPixels)
    {
        SScalar422 s;
        ToScalar(io_rs, s);
        FixTail(s, in_uiPixels);
        ToVector(s, io_rs);
    }

    template <class T422>
    static void Before(const T422&, T422&)
    {
    }
    static void After(const SScalar422& in_rs, SScalar422& out_rs)
    {
        out_rs.aus16Cb[0] = in_rs.aus16Cb[7];
        out_rs.aus16Cr[0] = in_rs.aus16Cr[7];
    }
    static void After(const SVector422& in_rs, SVector422& out_rs)
    {
        out_rs.i128Cb = _mm_srli_si128(in_rs.i128Cb, 14);
        out_rs.i128Cr = _mm_srli_si128(in_rs.i128Cr, 14);
    }

    template <class TRgb>
    void Second(const SScalar422&, const SScalar422& in_rs, const SScalar422& in_rsNext, TRgb& out_rs) const
    {
        SScalar444 s;
        std::memcpy(s.aus16Y, in_rs.aus16Y, sizeof(s.aus16Y));
        std::memcpy(s.aus16K, in_rs.aus16K, sizeof(s.aus16K));
        for (int j = 0; j < 8; ++j) {
            const uint16_t usCbNext = j < 7 ? in_rs.aus16Cb[j + 1] : in_rsNext.aus16Cb[0];
            const uint16_t usCrNext = j < 7 ? in_rs.aus16Cr[j + 1] : in_rsNext.aus16Cr[0];
            s.aus16Cb[2 * j] = in_rs.aus16Cb[j];
            s.aus16Cr[2 * j] = in_rs.aus16Cr[j];
            s.aus16Cb[2 * j + 1] = static_cast<uint16_t>((in_rs.aus16Cb[j] + usCbNext + 1) >> 1);
            s.aus16Cr[2 * j + 1] = static_cast<uint16_t>((in_rs.aus16Cr[j] + usCrNext + 1) >> 1);
        }
        oMatrix.Apply(s, out_rs);
    }
    template <class TRgb>
    void Second(const SVector422&, const SVector422& in_rs, const SVector422& in_rsNext, TRgb& out_rs) const
    {
        SVector444 s;
        s.ai128Y[0] = in_rs.ai128Y[0];
        s.ai128Y[1] = in_rs.ai128Y[1];
        s.ai128K[0] = in_rs.ai128K[0];
        s.ai128K[1] = in_rs.ai128K[1];
        Upsample(in_rs.i128Cb, in_rsNext.i128Cb, s.ai128Cb);
        Upsample(in_rs.i128Cr, in_rsNext.i128Cr, s.ai128Cr);
        oMatrix.Apply(s, out_rs);
    }

private:
    static void Upsample(__m128i in_i128C, __m128i in_i128Next, __m128i* out_pi128)
    {
        const __m128i i128Shifted = _mm_or_si128(_mm_srli_si128(in_i128C, 2), _mm_slli_si128(in_i128Next, 14));
        const __m128i i128Mean = _mm_avg_epu16(in_i128C, i128Shifted);
        out_pi128[0] = _mm_unpacklo_epi16(in_i128C, i128Mean);
        out_pi128[1] = _mm_unpackhi_epi16(in_i128C, i128Mean);
    }

    TMatrix oMatrix;
};

// ================================= 8-bit RGB between video and graphics levels
// With the range set's constants (Q16 219/255, Q15 255/219, the Q16 per-key
// black 4112 = 16/255 and the rounding halves 128 and 64):
//   to video:    v = ((g << 8) * 56283 >> 16) + black + 128) >> 8
//   to graphics: g = min(((max((v << 8) - black, 0) * 38154 >> 16) + 64) >> 7, 255)
// with black = 16 << 8, or for shaped pixels (a << 8) * 4112 >> 16 (16 times
// the key's share). The key passes unchanged.
template <bool kbToVideo, bool kbShaped>
struct TXRgbRange8 {
    static bool Accepts(const SQxcBlockJob& in_rsJob) { return in_rsJob.psRangeCoeff != nullptr; }

    explicit TXRgbRange8(const SQxcBlockJob& in_rsJob)
    {
        const SQxcRgbToRgbCoeff& rs = *in_rsJob.psRangeCoeff;
        uiToVideo = static_cast<uint16_t>(rs.sGraphicToVideo.ai16Lane[0]);
        uiToGraphic = static_cast<uint16_t>(rs.sVideoToGraphic.ai16Lane[0]);
        uiBlack = static_cast<uint32_t>(rs.s16.ai16Lane[0]) << 8;
        uiKeyBlack = static_cast<uint16_t>(rs.s4112.ai16Lane[0]);
        uiHalf8 = static_cast<uint16_t>(rs.s128.ai16Lane[0]);
        uiHalf7 = static_cast<uint16_t>(rs.s64.ai16Lane[0]);
    }

    void Apply(const SScalarRgb& in_rs, SScalarRgb& out_rs) const
    {
        for (int p = 0; p < 16; ++p) {
            const uint32_t uiBlackHere = kbShaped ? MulHighU(static_cast<uint32_t>(in_rs.aus16A[p]) << 8, uiKeyBlack)
                                                  : uiBlack;
            out_rs.aus16R[p] = Convert(in_rs.aus16R[p], uiBlackHere);
            out_rs.aus16G[p] = Convert(in_rs.aus16G[p], uiBlackHere);
            out_rs.aus16B[p] = Convert(in_rs.aus16B[p], uiBlackHere);
            out_rs.aus16A[p] = in_rs.aus16A[p];
        }
    }

    void Apply(const SVectorRgb& in_rs, SVectorRgb& out_rs) const
    {
        const __m128i i128ColourLanes = SplatPair16(0xffff, 0);
        for (int q = 0; q < 4; ++q) {
            __m128i i128Black = Splat16(static_cast<int>(uiBlack));
            if (kbShaped) {
                // Each pixel's key in both of its lanes.
                const __m128i i128Key = _mm_srli_epi32(in_rs.ai128GA[q], 16);
                i128Black = _mm_mulhi_epu16(_mm_slli_epi16(_mm_or_si128(i128Key, _mm_slli_epi32(i128Key, 16)), 8),
                                            Splat16(uiKeyBlack));
            }
            out_rs.ai128BR[q] = VConvert(in_rs.ai128BR[q], i128Black);
            out_rs.ai128GA[q] = _mm_or_si128(_mm_and_si128(VConvert(in_rs.ai128GA[q], i128Black), i128ColourLanes),
                                             _mm_andnot_si128(i128ColourLanes, in_rs.ai128GA[q]));
        }
    }

private:
    uint16_t Convert(uint32_t in_uiValue, uint32_t in_uiBlack) const
    {
        if (kbToVideo)
            return static_cast<uint16_t>((MulHighU(in_uiValue << 8, uiToVideo) + in_uiBlack + uiHalf8) >> 8);
        const uint32_t uiShifted = in_uiValue << 8;
        const uint32_t uiAbove = uiShifted > in_uiBlack ? uiShifted - in_uiBlack : 0;
        const uint32_t uiG = (MulHighU(uiAbove, uiToGraphic) + uiHalf7) >> 7;
        return static_cast<uint16_t>(uiG < 255 ? uiG : 255);
    }
    __m128i VConvert(__m128i in_i128, __m128i in_i128Black) const
    {
        const __m128i i128Shifted = _mm_slli_epi16(in_i128, 8);
        if (kbToVideo)
            return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(_mm_mulhi_epu16(i128Shifted, Splat16(uiToVideo)),
                                                              in_i128Black),
                                                Splat16(uiHalf8)),
                                  8);
        const __m128i i128Above = _mm_subs_epu16(i128Shifted, in_i128Black);
        const __m128i i128G =
            _mm_srli_epi16(_mm_add_epi16(_mm_mulhi_epu16(i128Above, Splat16(uiToGraphic)), Splat16(uiHalf7)), 7);
        return _mm_min_epi16(i128G, Splat16(255));
    }

    uint32_t uiToVideo, uiToGraphic, uiBlack, uiKeyBlack, uiHalf8, uiHalf7;
};

// =================================================== linear maps of RGB
// Each colour value v becomes v x scale + offset and the key k x keyScale,
// clamped to 0..max and rounded to nearest in single precision (MapValue).
struct SRgbMap {
    float fScale, fOffset, fMax, fKeyScale, fKeyMax;
};

// From kiFrom to kiTo bits: at video levels by a power of two (studio levels
// scale so: 235 is 940 on 10 bits, 60160 on 16), at graphics levels full
// scale to full scale ((2^kiTo - 1) / (2^kiFrom - 1): 255 is 1023, 65535);
// the key always full scale. The levels are the RGB side's.
template <int kiFrom, int kiTo>
struct KDepth {
    static SRgbMap Make(const SQxcBlockJob& in_rsJob)
    {
        const double dFull = ((1 << kiTo) - 1) / double((1 << kiFrom) - 1);
        const double dScale = in_rsJob.iRgbRange == keQxcColorRangeVideo ? std::ldexp(1.0, kiTo - kiFrom) : dFull;
        return SRgbMap{float(dScale), 0.0f, float((1 << kiTo) - 1), float(dFull), float((1 << kiTo) - 1)};
    }
};

// Between video levels (16 s .. 235 s, s = 2^(kiDepth - 8)) and graphics
// levels (0 .. 2^kiDepth - 1) on kiDepth bits.
template <int kiDepth, bool kbToVideo>
struct KRange {
    static SRgbMap Make(const SQxcBlockJob&)
    {
        const double dStep = std::ldexp(1.0, kiDepth - 8);
        const double dFull = (1 << kiDepth) - 1;
        const double dScale = kbToVideo ? 219.0 * dStep / dFull : dFull / (219.0 * dStep);
        const double dOffset = kbToVideo ? 16.0 * dStep : -16.0 * dStep * dScale;
        return SRgbMap{float(dScale), float(dOffset), float(dFull), 1.0f, float(dFull)};
    }
};

// K64ARGB from graphics to video levels on 16 bits: 0..65535 to 4096..60160.
struct KScaleToVideo16 {
    static SRgbMap Make(const SQxcBlockJob&)
    {
        return SRgbMap{float((60160.0 - 4096.0) / 65535.0), 4096.0f, 65535.0f, 1.0f, 65535.0f};
    }
};

template <class TKind>
struct TXRgbMap {
    explicit TXRgbMap(const SQxcBlockJob& in_rsJob) : sMap(TKind::Make(in_rsJob)) {}

    void Apply(const SScalarRgb& in_rs, SScalarRgb& out_rs) const
    {
        for (int p = 0; p < 16; ++p) {
            out_rs.aus16R[p] = MapValue(in_rs.aus16R[p], sMap.fScale, sMap.fOffset, sMap.fMax);
            out_rs.aus16G[p] = MapValue(in_rs.aus16G[p], sMap.fScale, sMap.fOffset, sMap.fMax);
            out_rs.aus16B[p] = MapValue(in_rs.aus16B[p], sMap.fScale, sMap.fOffset, sMap.fMax);
            out_rs.aus16A[p] = MapValue(in_rs.aus16A[p], sMap.fKeyScale, 0.0f, sMap.fKeyMax);
        }
    }

    void Apply(const SVectorRgb& in_rs, SVectorRgb& out_rs) const
    {
        const __m128 fColour[3] = {_mm_set1_ps(sMap.fScale), _mm_set1_ps(sMap.fOffset), _mm_set1_ps(sMap.fMax)};
        const __m128 fMixed[3] = {_mm_setr_ps(sMap.fScale, sMap.fKeyScale, sMap.fScale, sMap.fKeyScale),
                                  _mm_setr_ps(sMap.fOffset, 0.0f, sMap.fOffset, 0.0f),
                                  _mm_setr_ps(sMap.fMax, sMap.fKeyMax, sMap.fMax, sMap.fKeyMax)};
        for (int q = 0; q < 4; ++q) {
            out_rs.ai128BR[q] = VMap(in_rs.ai128BR[q], fColour);
            out_rs.ai128GA[q] = VMap(in_rs.ai128GA[q], fMixed);
        }
    }

private:
    static __m128i VMap(__m128i in_i128, const __m128* in_pf)
    {
        const __m128i i128Zero = _mm_setzero_si128();
        return VPackU16(VMapValues(_mm_unpacklo_epi16(in_i128, i128Zero), in_pf[0], in_pf[1], in_pf[2]),
                        VMapValues(_mm_unpackhi_epi16(in_i128, i128Zero), in_pf[0], in_pf[1], in_pf[2]));
    }

    SRgbMap sMap;
};

}  // namespace NQxcKernels

#endif  // QXBASE_SURFACES_KERNELS_COLORMATRIX_H
