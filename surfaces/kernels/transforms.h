// The steps between a block's load and its store: chroma siting between
// 4:4:4 and 4:2:2, the key of a source that has none, and unshaping. Each in
// a scalar and an SSE2 form with the same arithmetic. A composition makes
// one transform object per call from the call's job (a transform that needs
// nothing from it ignores it) and applies it to every block.
#ifndef QXBASE_SURFACES_KERNELS_TRANSFORMS_H
#define QXBASE_SURFACES_KERNELS_TRANSFORMS_H

#include "surfaces/kernels/blocks.h"


namespace NQxcKernels {

// The base of the transforms that need nothing from the job.
struct XStateless {
    explicit XStateless(const SQxcBlockJob&) {}
};

// ---------------------------------------------------------- identity
struct XPass : XStateless {
    using XStateless::XStateless;
    template <class TBlock>
    static void Apply(const TBlock& in_rs, TBlock& out_rs)
    {
        out_rs = in_rs;
    }
};

// --------------------------------------------------- 4:4:4 -> 4:2:2
// The chroma of the first pixel of each pair.
struct X444To422 : XStateless {
    using XStateless::XStateless;
    static void Apply(const SScalar444& in_rs, SScalar422& out_rs)
    {
        std::memcpy(out_rs.aus16Y, in_rs.aus16Y, sizeof(out_rs.aus16Y));
        std::memcpy(out_rs.aus16K, in_rs.aus16K, sizeof(out_rs.aus16K));
        for (int j = 0; j < 8; ++j) {
            out_rs.aus16Cb[j] = in_rs.aus16Cb[2 * j];
            out_rs.aus16Cr[j] = in_rs.aus16Cr[2 * j];
        }
    }
    static void Apply(const SVector444& in_rs, SVector422& out_rs)
    {
        out_rs.ai128Y[0] = in_rs.ai128Y[0];
        out_rs.ai128Y[1] = in_rs.ai128Y[1];
        out_rs.ai128K[0] = in_rs.ai128K[0];
        out_rs.ai128K[1] = in_rs.ai128K[1];
        out_rs.i128Cb = VEvenLanes(in_rs.ai128Cb[0], in_rs.ai128Cb[1]);
        out_rs.i128Cr = VEvenLanes(in_rs.ai128Cr[0], in_rs.ai128Cr[1]);
    }
};

// --------------------------------------------------- 4:2:2 -> 4:4:4
// Each pair's chroma for both of its pixels.
struct X422To444 : XStateless {
    using XStateless::XStateless;
    static void Apply(const SScalar422& in_rs, SScalar444& out_rs)
    {
        std::memcpy(out_rs.aus16Y, in_rs.aus16Y, sizeof(out_rs.aus16Y));
        std::memcpy(out_rs.aus16K, in_rs.aus16K, sizeof(out_rs.aus16K));
        for (int p = 0; p < 16; ++p) {
            out_rs.aus16Cb[p] = in_rs.aus16Cb[p / 2];
            out_rs.aus16Cr[p] = in_rs.aus16Cr[p / 2];
        }
    }
    static void Apply(const SVector422& in_rs, SVector444& out_rs)
    {
        out_rs.ai128Y[0] = in_rs.ai128Y[0];
        out_rs.ai128Y[1] = in_rs.ai128Y[1];
        out_rs.ai128K[0] = in_rs.ai128K[0];
        out_rs.ai128K[1] = in_rs.ai128K[1];
        out_rs.ai128Cb[0] = _mm_unpacklo_epi16(in_rs.i128Cb, in_rs.i128Cb);
        out_rs.ai128Cb[1] = _mm_unpackhi_epi16(in_rs.i128Cb, in_rs.i128Cb);
        out_rs.ai128Cr[0] = _mm_unpacklo_epi16(in_rs.i128Cr, in_rs.i128Cr);
        out_rs.ai128Cr[1] = _mm_unpackhi_epi16(in_rs.i128Cr, in_rs.i128Cr);
    }
};

// ------------------------------------------------ key of a keyless source
// A source whose key-present flag is false reads as full key. Built once per
// call; applying it is branch-free.
struct SKeyOverride {
    explicit SKeyOverride(bool in_bKeyPresent)
        : usKeep(in_bKeyPresent ? 0xffff : 0),
          usFill(in_bKeyPresent ? 0 : kusFullKey),
          i128Keep(Splat16(usKeep)),
          i128Fill(Splat16(usFill))
    {
    }

    void Apply(uint16_t* io_pusK) const
    {
        for (int i = 0; i < 16; ++i)
            io_pusK[i] = static_cast<uint16_t>((io_pusK[i] & usKeep) | usFill);
    }
    void Apply(SScalar422& io_rs) const { Apply(io_rs.aus16K); }
    void Apply(SScalar444& io_rs) const { Apply(io_rs.aus16K); }
    void Apply(__m128i* io_pi128K) const
    {
        io_pi128K[0] = _mm_or_si128(_mm_and_si128(io_pi128K[0], i128Keep), i128Fill);
        io_pi128K[1] = _mm_or_si128(_mm_and_si128(io_pi128K[1], i128Keep), i128Fill);
    }
    void Apply(SVector422& io_rs) const { Apply(io_rs.ai128K); }
    void Apply(SVector444& io_rs) const { Apply(io_rs.ai128K); }

    uint16_t usKeep;
    uint16_t usFill;
    __m128i i128Keep;
    __m128i i128Fill;
};

// ------------------------------------------------------------ unshaping
// Divides the key out of shaped 4:2:2:4 values with the reciprocal table
// r = 32736 / key (rounded): Y' = (Y r + h) >> s, C' = ((C - 512) r + 16384 + h)
// >> s, h = 1 << (s - 1), clamped; s = 7 for an 8-bit destination (whose
// values are then put back on the 10-bit scale, so its store returns them
// exactly) and 5 for a 10-bit or 16-bit one. A pair's chroma divides by the
// key of its first pixel. The key itself passes unchanged.
template <bool kb8BitDestination>
struct TXUnshape : XStateless {
    using XStateless::XStateless;
    static const int kiShift = kb8BitDestination ? 7 : 5;
    static const int kiHalf = 1 << (kiShift - 1);
    static const int kiMax = kb8BitDestination ? 255 : 1023;
    static const int kiScale = kb8BitDestination ? 2 : 0;
    static const int kiChromaBias = 16384 + kiHalf;

    static uint16_t Reciprocal(uint16_t in_usKey) { return CQxcSurface::ms_sUnshapeReciprocal.aus16Entry[in_usKey & 0x3ff]; }

    static void Apply(const SScalar422& in_rs, SScalar422& out_rs)
    {
        for (int i = 0; i < 16; ++i) {
            const int32_t iR = Reciprocal(in_rs.aus16K[i]);
            const int32_t iY = Clamp(FloorShift(in_rs.aus16Y[i] * iR + kiHalf, kiShift), 0, kiMax);
            out_rs.aus16Y[i] = static_cast<uint16_t>(iY << kiScale);
            out_rs.aus16K[i] = in_rs.aus16K[i];
        }
        for (int j = 0; j < 8; ++j) {
            const int32_t iR = Reciprocal(in_rs.aus16K[2 * j]);
            const int32_t iCb = (in_rs.aus16Cb[j] - 512) * iR + kiChromaBias;
            const int32_t iCr = (in_rs.aus16Cr[j] - 512) * iR + kiChromaBias;
            out_rs.aus16Cb[j] = static_cast<uint16_t>(Clamp(FloorShift(iCb, kiShift), 0, kiMax) << kiScale);
            out_rs.aus16Cr[j] = static_cast<uint16_t>(Clamp(FloorShift(iCr, kiShift), 0, kiMax) << kiScale);
        }
    }

    static void Apply(const SVector422& in_rs, SVector422& out_rs)
    {
        const __m128i ai128R[2] = {VReciprocal(in_rs.ai128K[0]), VReciprocal(in_rs.ai128K[1])};
        for (int h = 0; h < 2; ++h)
            out_rs.ai128Y[h] = Scale(in_rs.ai128Y[h], ai128R[h], kiHalf);
        const __m128i i128RPairs = VEvenLanes(ai128R[0], ai128R[1]);
        const __m128i i128Mid = Splat16(512);
        out_rs.i128Cb = Scale(_mm_sub_epi16(in_rs.i128Cb, i128Mid), i128RPairs, kiChromaBias);
        out_rs.i128Cr = Scale(_mm_sub_epi16(in_rs.i128Cr, i128Mid), i128RPairs, kiChromaBias);
        out_rs.ai128K[0] = in_rs.ai128K[0];
        out_rs.ai128K[1] = in_rs.ai128K[1];
    }

private:
    // One table lookup a lane: SSE2 has no gather.
    static __m128i VReciprocal(__m128i in_i128Key)
    {
        const __m128i i128Key = _mm_and_si128(in_i128Key, Splat16(0x3ff));
        const uint16_t* pus = CQxcSurface::ms_sUnshapeReciprocal.aus16Entry;
        __m128i i128 = _mm_setzero_si128();
        i128 = _mm_insert_epi16(i128, pus[_mm_extract_epi16(i128Key, 0)], 0);
        i128 = _mm_insert_epi16(i128, pus[_mm_extract_epi16(i128Key, 1)], 1);
        i128 = _mm_insert_epi16(i128, pus[_mm_extract_epi16(i128Key, 2)], 2);
        i128 = _mm_insert_epi16(i128, pus[_mm_extract_epi16(i128Key, 3)], 3);
        i128 = _mm_insert_epi16(i128, pus[_mm_extract_epi16(i128Key, 4)], 4);
        i128 = _mm_insert_epi16(i128, pus[_mm_extract_epi16(i128Key, 5)], 5);
        i128 = _mm_insert_epi16(i128, pus[_mm_extract_epi16(i128Key, 6)], 6);
        i128 = _mm_insert_epi16(i128, pus[_mm_extract_epi16(i128Key, 7)], 7);
        return i128;
    }

    // (v r + bias) >> s per signed 16-bit lane, through 32 bits, clamped.
    static __m128i Scale(__m128i in_i128V, __m128i in_i128R, int in_iBias)
    {
        const __m128i i128One = Splat16(1);
        const __m128i i128Bias = Splat16(in_iBias);
        const __m128i i128Low = _mm_madd_epi16(_mm_unpacklo_epi16(in_i128V, i128One),
                                               _mm_unpacklo_epi16(in_i128R, i128Bias));
        const __m128i i128High = _mm_madd_epi16(_mm_unpackhi_epi16(in_i128V, i128One),
                                                _mm_unpackhi_epi16(in_i128R, i128Bias));
        __m128i i128 = _mm_packs_epi32(_mm_srai_epi32(i128Low, kiShift), _mm_srai_epi32(i128High, kiShift));
        i128 = _mm_min_epi16(_mm_max_epi16(i128, _mm_setzero_si128()), Splat16(kiMax));
        return _mm_slli_epi16(i128, kiScale);
    }
};

typedef TXUnshape<true> XUnshapeTo8;
typedef TXUnshape<false> XUnshapeTo10;

// ---------------------------------------------------- RGB -> YCbCr 4:2:2
// The matrix step of the hub's RGB sources, with the job's coefficient set
// (Q15 weights): Y = black + (yr R + yg G + yb B + 2^14) >> 15 and
// C = 512 + (... + 2^14) >> 15, clamped to 0..1023; round to nearest at the
// final shift, so white keeps its level and grey has no chroma. Black is
// the set's third forward offset: 0 for the video sets, whose RGB already
// sits at studio levels (64..940), 64 for the graphics sets, whose RGB spans
// 0..1023 and is first brought to 0..1020 (v - v / 256), the 10-bit image of
// the 8-bit 0..255 that their 219/255 and 224/255 weights expect. A pair's
// chroma is that of its first pixel.
struct XRgbToYcc422 {
    explicit XRgbToYcc422(const SQxcBlockJob& in_rsJob)
    {
        const SQxcRgbCoeff& rs = *in_rsJob.psCoeff;
        const int16_t ai16Weights[3][3] = {
            {rs.sYFromR.ai16Lane[0], rs.sYFromG.ai16Lane[0], rs.sYFromB.ai16Lane[0]},
            {static_cast<int16_t>(-rs.sCbFromR.ai16Lane[0]), static_cast<int16_t>(-rs.sCbFromG.ai16Lane[0]),
             rs.sCbFromB.ai16Lane[0]},
            {rs.sCrFromR.ai16Lane[0], static_cast<int16_t>(-rs.sCrFromG.ai16Lane[0]),
             static_cast<int16_t>(-rs.sCrFromB.ai16Lane[0])}};
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j)
                aiWeight[i][j] = ai16Weights[i][j];
            // (R, G) pairs against (w0, w1) and (B, 1) against (w2, 2^14).
            ai128RG[i] = Splat32(static_cast<int>((static_cast<uint32_t>(static_cast<uint16_t>(ai16Weights[i][1])) << 16) |
                                                  static_cast<uint16_t>(ai16Weights[i][0])));
            ai128B1[i] = Splat32(static_cast<int>((16384u << 16) | static_cast<uint16_t>(ai16Weights[i][2])));
        }
        iBlack = rs.sForwardOffset2.ai16Lane[0];
        usCompress = iBlack != 0 ? 0xffff : 0;
    }

    void Apply(const SScalar444& in_rs, SScalar422& out_rs) const
    {
        for (int p = 0; p < 16; ++p) {
            out_rs.aus16Y[p] = Component(0, iBlack, in_rs, p);
            out_rs.aus16K[p] = in_rs.aus16K[p];
        }
        for (int j = 0; j < 8; ++j) {
            out_rs.aus16Cb[j] = Component(1, 512, in_rs, 2 * j);
            out_rs.aus16Cr[j] = Component(2, 512, in_rs, 2 * j);
        }
    }

    void Apply(const SVector444& in_rs, SVector422& out_rs) const
    {
        __m128i ai128R[2], ai128G[2], ai128B[2];
        for (int h = 0; h < 2; ++h) {
            ai128R[h] = VCompress(in_rs.ai128Y[h]);
            ai128G[h] = VCompress(in_rs.ai128Cb[h]);
            ai128B[h] = VCompress(in_rs.ai128Cr[h]);
            out_rs.ai128Y[h] = VComponent(0, iBlack, ai128R[h], ai128G[h], ai128B[h]);
            out_rs.ai128K[h] = in_rs.ai128K[h];
        }
        const __m128i i128R = VEvenLanes(ai128R[0], ai128R[1]);
        const __m128i i128G = VEvenLanes(ai128G[0], ai128G[1]);
        const __m128i i128B = VEvenLanes(ai128B[0], ai128B[1]);
        out_rs.i128Cb = VComponent(1, 512, i128R, i128G, i128B);
        out_rs.i128Cr = VComponent(2, 512, i128R, i128G, i128B);
    }

private:
    uint16_t Compress(uint16_t in_us) const { return static_cast<uint16_t>(in_us - ((in_us >> 8) & usCompress)); }

    uint16_t Component(int in_iRow, int in_iOffset, const SScalar444& in_rs, int in_iPixel) const
    {
        const int32_t iSum = aiWeight[in_iRow][0] * Compress(in_rs.aus16Y[in_iPixel]) +
                             aiWeight[in_iRow][1] * Compress(in_rs.aus16Cb[in_iPixel]) +
                             aiWeight[in_iRow][2] * Compress(in_rs.aus16Cr[in_iPixel]) + 16384;
        return static_cast<uint16_t>(Clamp(in_iOffset + FloorShift(iSum, 15), 0, kusMax10));
    }

    __m128i VCompress(__m128i in_i128) const
    {
        return _mm_sub_epi16(in_i128, _mm_and_si128(_mm_srli_epi16(in_i128, 8), Splat16(usCompress)));
    }

    __m128i VComponent(int in_iRow, int in_iOffset, __m128i in_i128R, __m128i in_i128G, __m128i in_i128B) const
    {
        const __m128i i128One = Splat16(1);
        const __m128i i128Low =
            _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(in_i128R, in_i128G), ai128RG[in_iRow]),
                          _mm_madd_epi16(_mm_unpacklo_epi16(in_i128B, i128One), ai128B1[in_iRow]));
        const __m128i i128High =
            _mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(in_i128R, in_i128G), ai128RG[in_iRow]),
                          _mm_madd_epi16(_mm_unpackhi_epi16(in_i128B, i128One), ai128B1[in_iRow]));
        __m128i i128 = _mm_packs_epi32(_mm_srai_epi32(i128Low, 15), _mm_srai_epi32(i128High, 15));
        i128 = _mm_add_epi16(i128, Splat16(in_iOffset));
        return _mm_min_epi16(_mm_max_epi16(i128, _mm_setzero_si128()), Splat16(kusMax10));
    }

    int32_t aiWeight[3][3];
    __m128i ai128RG[3];
    __m128i ai128B1[3];
    int iBlack;
    uint16_t usCompress;
};

}  // namespace NQxcKernels

#endif  // QXBASE_SURFACES_KERNELS_TRANSFORMS_H
