// The RGB side of the buffer kernels: a canonical block of 16 RGB pixels with
// key, in a scalar and an SSE2 form, and the memory layout of every RGB buffer
// format as a load and a store of that block. Values sit at the layout's own
// depth (kiDepth bits: 8, 10, 12 or 16), the key at the same depth; a layout
// without key loads full key.
//
// The SSE2 form keeps each pixel as two adjacent 16-bit lanes, (B, R) in
// ai128BR and (G, A) in ai128GA, four pixels a vector: that is the order
// _mm_madd_epi16 wants for the matrix, and what 8-bit RGBA becomes with one
// mask and one shift.
//
// Each layout L gives kuiBytes (bytes of 16 pixels), kuiUnitPixels and
// kuiUnitBytes (the smallest run of whole pixels that starts on a byte),
// kiDepth, kbHasKey, and Load/Store for both forms. SSE2 loads are
// unaligned; SSE2 stores follow the store policy.
#ifndef QXBASE_SURFACES_KERNELS_RGBLAYOUTS_H
#define QXBASE_SURFACES_KERNELS_RGBLAYOUTS_H

#include "surfaces/kernels/layouts.h"
#include "surfaces/kernels/v210.h"

#include <type_traits>

namespace NQxcKernels {

struct SScalarRgb {
    uint16_t aus16R[16];
    uint16_t aus16G[16];
    uint16_t aus16B[16];
    uint16_t aus16A[16];
};

struct SVectorRgb {
    __m128i ai128BR[4];
    __m128i ai128GA[4];
};

template <class TB>
struct TRgbOf;
template <>
struct TRgbOf<CScalar> {
    typedef SScalarRgb Type;
};
template <>
struct TRgbOf<CSse2> {
    typedef SVectorRgb Type;
};

inline void ToVector(const SScalarRgb& in_rs, SVectorRgb& out_rs)
{
    for (int q = 0; q < 4; ++q) {
        const int p = 4 * q;
        out_rs.ai128BR[q] = _mm_setr_epi16(
            static_cast<short>(in_rs.aus16B[p]), static_cast<short>(in_rs.aus16R[p]),
            static_cast<short>(in_rs.aus16B[p + 1]), static_cast<short>(in_rs.aus16R[p + 1]),
            static_cast<short>(in_rs.aus16B[p + 2]), static_cast<short>(in_rs.aus16R[p + 2]),
            static_cast<short>(in_rs.aus16B[p + 3]), static_cast<short>(in_rs.aus16R[p + 3]));
        out_rs.ai128GA[q] = _mm_setr_epi16(
            static_cast<short>(in_rs.aus16G[p]), static_cast<short>(in_rs.aus16A[p]),
            static_cast<short>(in_rs.aus16G[p + 1]), static_cast<short>(in_rs.aus16A[p + 1]),
            static_cast<short>(in_rs.aus16G[p + 2]), static_cast<short>(in_rs.aus16A[p + 2]),
            static_cast<short>(in_rs.aus16G[p + 3]), static_cast<short>(in_rs.aus16A[p + 3]));
    }
}

inline void ToScalar(const SVectorRgb& in_rs, SScalarRgb& out_rs)
{
    for (int q = 0; q < 4; ++q) {
        alignas(16) uint16_t ausBR[8], ausGA[8];
        _mm_store_si128(reinterpret_cast<__m128i*>(ausBR), in_rs.ai128BR[q]);
        _mm_store_si128(reinterpret_cast<__m128i*>(ausGA), in_rs.ai128GA[q]);
        for (int i = 0; i < 4; ++i) {
            out_rs.aus16B[4 * q + i] = ausBR[2 * i];
            out_rs.aus16R[4 * q + i] = ausBR[2 * i + 1];
            out_rs.aus16G[4 * q + i] = ausGA[2 * i];
            out_rs.aus16A[4 * q + i] = ausGA[2 * i + 1];
        }
    }
}

// The 4:4:4 YUV block between its forms (the 4:2:2 one has its own in
// blocks.h).
inline void ToVector(const SScalar444& in_rs, SVector444& out_rs)
{
    const uint16_t* apus[4] = {in_rs.aus16Y, in_rs.aus16Cb, in_rs.aus16Cr, in_rs.aus16K};
    __m128i* api128[4] = {out_rs.ai128Y, out_rs.ai128Cb, out_rs.ai128Cr, out_rs.ai128K};
    for (int c = 0; c < 4; ++c)
        for (int h = 0; h < 2; ++h)
            api128[c][h] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(apus[c] + 8 * h));
}
inline void ToScalar(const SVector444& in_rs, SScalar444& out_rs)
{
    const __m128i* api128[4] = {in_rs.ai128Y, in_rs.ai128Cb, in_rs.ai128Cr, in_rs.ai128K};
    uint16_t* apus[4] = {out_rs.aus16Y, out_rs.aus16Cb, out_rs.aus16Cr, out_rs.aus16K};
    for (int c = 0; c < 4; ++c)
        for (int h = 0; h < 2; ++h)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(apus[c] + 8 * h), api128[c][h]);
}

// Exchanges the two 16-bit lanes of every 32-bit element.
inline __m128i VSwapLanePairs(__m128i in_i128)
{
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(in_i128, _MM_SHUFFLE(2, 3, 0, 1)), _MM_SHUFFLE(2, 3, 0, 1));
}

// A lane pattern (colour, key) repeated: the colour lanes of ai128BR and
// ai128GA take the first value, the key lanes of ai128GA the second.
inline __m128i SplatPair16(int in_iLow, int in_iHigh)
{
    return Splat32(static_cast<int>((static_cast<uint32_t>(in_iHigh) << 16) | (static_cast<uint32_t>(in_iLow) & 0xffff)));
}

// Uses the given layout functions on a block through the scalar form: for the
// layouts whose bytes do not fall on 16-byte units (3 bytes or 4.5 bytes a
// pixel), which only the portable kernels write.
template <class TLayout>
struct TScalarBridge {
    static void Load(const uint8_t* in_puc, SVectorRgb& out_rs)
    {
        SScalarRgb s;
        TLayout::Load(in_puc, s);
        ToVector(s, out_rs);
    }
    static void Store(uint8_t* out_puc, const SVectorRgb& in_rs)
    {
        SScalarRgb s;
        ToScalar(in_rs, s);
        TLayout::template Store<keStoreUnaligned>(out_puc, s);
    }
};

// ================================================ 8-bit, four bytes a pixel
// RGBA_8bits: bytes B, G, R, A (the 32-bit little-endian word reads A R G B
// from its top). BGRA_8bits: bytes A, R, G, B, the same word byte-reversed.
template <bool kbReversed>
struct TLayoutRgb8x4 {
    static const unsigned kuiBytes = 64;
    static const unsigned kuiUnitPixels = 1;
    static const unsigned kuiUnitBytes = 4;
    static const int kiDepth = 8;
    static const bool kbHasKey = true;
    static const int kiB = kbReversed ? 3 : 0;
    static const int kiG = kbReversed ? 2 : 1;
    static const int kiR = kbReversed ? 1 : 2;
    static const int kiA = kbReversed ? 0 : 3;

    static void Load(const uint8_t* in_puc, SScalarRgb& out_rs)
    {
        for (int p = 0; p < 16; ++p) {
            out_rs.aus16B[p] = in_puc[4 * p + kiB];
            out_rs.aus16G[p] = in_puc[4 * p + kiG];
            out_rs.aus16R[p] = in_puc[4 * p + kiR];
            out_rs.aus16A[p] = in_puc[4 * p + kiA];
        }
    }

    static void Load(const uint8_t* in_puc, SVectorRgb& out_rs)
    {
        const __m128i i128Low = Splat16(0x00ff);
        for (int q = 0; q < 4; ++q) {
            const __m128i i128 = NQxcKernels::Load(in_puc + 16 * q);
            // Byte 0 and 2 of each pixel, then bytes 1 and 3.
            const __m128i i128Even = _mm_and_si128(i128, i128Low);
            const __m128i i128Odd = _mm_srli_epi16(i128, 8);
            out_rs.ai128BR[q] = kbReversed ? VSwapLanePairs(i128Odd) : i128Even;
            out_rs.ai128GA[q] = kbReversed ? VSwapLanePairs(i128Even) : i128Odd;
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalarRgb& in_rs)
    {
        for (int p = 0; p < 16; ++p) {
            out_puc[4 * p + kiB] = static_cast<uint8_t>(in_rs.aus16B[p]);
            out_puc[4 * p + kiG] = static_cast<uint8_t>(in_rs.aus16G[p]);
            out_puc[4 * p + kiR] = static_cast<uint8_t>(in_rs.aus16R[p]);
            out_puc[4 * p + kiA] = static_cast<uint8_t>(in_rs.aus16A[p]);
        }
    }

    // Values must be 8-bit.
    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVectorRgb& in_rs)
    {
        for (int q = 0; q < 4; ++q) {
            const __m128i i128Even = kbReversed ? VSwapLanePairs(in_rs.ai128GA[q]) : in_rs.ai128BR[q];
            const __m128i i128Odd = kbReversed ? VSwapLanePairs(in_rs.ai128BR[q]) : in_rs.ai128GA[q];
            NQxcKernels::Store<keStore>(out_puc + 16 * q, _mm_or_si128(i128Even, _mm_slli_epi16(i128Odd, 8)));
        }
    }
};

typedef TLayoutRgb8x4<false> LRgba8;
typedef TLayoutRgb8x4<true> LBgra8;

// ============================================== RGB24: three bytes a pixel
// Bytes B, G, R, no key (RGBA_8bits without its key); four pixels make the
// three 32-bit words of a group.
struct LRgb24 {
    static const unsigned kuiBytes = 48;
    static const unsigned kuiUnitPixels = 1;
    static const unsigned kuiUnitBytes = 3;
    static const int kiDepth = 8;
    static const bool kbHasKey = false;

    static void Load(const uint8_t* in_puc, SScalarRgb& out_rs)
    {
        for (int p = 0; p < 16; ++p) {
            out_rs.aus16B[p] = in_puc[3 * p];
            out_rs.aus16G[p] = in_puc[3 * p + 1];
            out_rs.aus16R[p] = in_puc[3 * p + 2];
            out_rs.aus16A[p] = 255;
        }
    }
    static void Load(const uint8_t* in_puc, SVectorRgb& out_rs) { TScalarBridge<LRgb24>::Load(in_puc, out_rs); }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalarRgb& in_rs)
    {
        for (int p = 0; p < 16; ++p) {
            out_puc[3 * p] = static_cast<uint8_t>(in_rs.aus16B[p]);
            out_puc[3 * p + 1] = static_cast<uint8_t>(in_rs.aus16G[p]);
            out_puc[3 * p + 2] = static_cast<uint8_t>(in_rs.aus16R[p]);
        }
    }
    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVectorRgb& in_rs)
    {
        TScalarBridge<LRgb24>::Store(out_puc, in_rs);
    }
};

// ====================================== RGB36: 12-bit components, 36 bytes a
// group of 8 pixels. The components B, G, R of pixel 0, then of pixel 1 ...,
// form a little-endian bit stream: component k of a group in bits 12k to
// 12k + 11, so two pixels fill 9 whole bytes. No key.
struct LRgb36 {
    static const unsigned kuiBytes = 72;
    static const unsigned kuiUnitPixels = 2;
    static const unsigned kuiUnitBytes = 9;
    static const int kiDepth = 12;
    static const bool kbHasKey = false;

    static uint16_t Get(const uint8_t* in_puc, unsigned in_uiComponent)
    {
        const unsigned uiBit = 12 * in_uiComponent;
        const unsigned uiPair = in_puc[uiBit / 8] | (static_cast<unsigned>(in_puc[uiBit / 8 + 1]) << 8);
        return static_cast<uint16_t>((uiPair >> (uiBit % 8)) & 0xfff);
    }
    // Into a stream whose bits there are still zero.
    static void Put(uint8_t* io_puc, unsigned in_uiComponent, uint16_t in_us)
    {
        const unsigned uiBit = 12 * in_uiComponent;
        const unsigned uiPair = static_cast<unsigned>(in_us & 0xfff) << (uiBit % 8);
        io_puc[uiBit / 8] = static_cast<uint8_t>(io_puc[uiBit / 8] | (uiPair & 0xff));
        io_puc[uiBit / 8 + 1] = static_cast<uint8_t>(io_puc[uiBit / 8 + 1] | (uiPair >> 8));
    }

    static void Load(const uint8_t* in_puc, SScalarRgb& out_rs)
    {
        for (unsigned p = 0; p < 16; ++p) {
            out_rs.aus16B[p] = Get(in_puc, 3 * p);
            out_rs.aus16G[p] = Get(in_puc, 3 * p + 1);
            out_rs.aus16R[p] = Get(in_puc, 3 * p + 2);
            out_rs.aus16A[p] = 4095;
        }
    }
    static void Load(const uint8_t* in_puc, SVectorRgb& out_rs) { TScalarBridge<LRgb36>::Load(in_puc, out_rs); }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalarRgb& in_rs)
    {
        uint8_t auc[kuiBytes] = {};
        for (unsigned p = 0; p < 16; ++p) {
            Put(auc, 3 * p, in_rs.aus16B[p]);
            Put(auc, 3 * p + 1, in_rs.aus16G[p]);
            Put(auc, 3 * p + 2, in_rs.aus16R[p]);
        }
        std::memcpy(out_puc, auc, kuiBytes);
    }
    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVectorRgb& in_rs)
    {
        TScalarBridge<LRgb36>::Store(out_puc, in_rs);
    }
};

// ======================================== 10-bit RGB with a 2-bit key
// One little-endian 32-bit word a pixel: the key in bits 30-31, then the
// components in the order of the name from bit 20 down: A2R10G10B10 holds R
// in 20-29, G in 10-19, B in 0-9; A2B10G10R10 exchanges R and B. The 2-bit
// key a reads as a x 341 (3 is 1023) and is written as the nearest of the
// four, round(k x 3 / 1023): 0..170 -> 0, 171..511 -> 1, 512..852 -> 2,
// 853..1023 -> 3.
template <bool kbRedHigh>
struct TLayoutRgb10 {
    static const unsigned kuiBytes = 64;
    static const unsigned kuiUnitPixels = 1;
    static const unsigned kuiUnitBytes = 4;
    static const int kiDepth = 10;
    static const bool kbHasKey = true;

    static uint16_t Key2(uint16_t in_usKey)
    {
        return static_cast<uint16_t>((in_usKey > 170) + (in_usKey > 511) + (in_usKey > 852));
    }

    static void Load(const uint8_t* in_puc, SScalarRgb& out_rs)
    {
        for (int p = 0; p < 16; ++p) {
            const uint32_t ui = Read32(in_puc + 4 * p);
            const uint16_t usHigh = static_cast<uint16_t>((ui >> 20) & 0x3ff);
            const uint16_t usLow = static_cast<uint16_t>(ui & 0x3ff);
            out_rs.aus16R[p] = kbRedHigh ? usHigh : usLow;
            out_rs.aus16B[p] = kbRedHigh ? usLow : usHigh;
            out_rs.aus16G[p] = static_cast<uint16_t>((ui >> 10) & 0x3ff);
            out_rs.aus16A[p] = static_cast<uint16_t>((ui >> 30) * 341);
        }
    }

    static void Load(const uint8_t* in_puc, SVectorRgb& out_rs)
    {
        const __m128i i128Mask = Splat32(0x3ff);
        for (int q = 0; q < 4; ++q) {
            const __m128i i128W = NQxcKernels::Load(in_puc + 16 * q);
            const __m128i i128Low = _mm_and_si128(i128W, i128Mask);
            const __m128i i128High = _mm_and_si128(_mm_srli_epi32(i128W, 20), i128Mask);
            out_rs.ai128BR[q] = kbRedHigh ? _mm_or_si128(i128Low, _mm_slli_epi32(i128High, 16))
                                          : _mm_or_si128(i128High, _mm_slli_epi32(i128Low, 16));
            const __m128i i128GA = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(i128W, 10), i128Mask),
                                                _mm_slli_epi32(_mm_srli_epi32(i128W, 30), 16));
            out_rs.ai128GA[q] = _mm_mullo_epi16(i128GA, SplatPair16(1, 341));
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalarRgb& in_rs)
    {
        for (int p = 0; p < 16; ++p) {
            const uint32_t uiHigh = kbRedHigh ? in_rs.aus16R[p] : in_rs.aus16B[p];
            const uint32_t uiLow = kbRedHigh ? in_rs.aus16B[p] : in_rs.aus16R[p];
            Write32(out_puc + 4 * p, (static_cast<uint32_t>(Key2(in_rs.aus16A[p])) << 30) | (uiHigh << 20) |
                                         (static_cast<uint32_t>(in_rs.aus16G[p]) << 10) | uiLow);
        }
    }

    // Values must be 10-bit.
    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVectorRgb& in_rs)
    {
        const __m128i i128Low16 = Splat32(0xffff);
        for (int q = 0; q < 4; ++q) {
            const __m128i i128B = _mm_and_si128(in_rs.ai128BR[q], i128Low16);
            const __m128i i128R = _mm_srli_epi32(in_rs.ai128BR[q], 16);
            const __m128i i128G = _mm_and_si128(in_rs.ai128GA[q], i128Low16);
            const __m128i i128A = _mm_srli_epi32(in_rs.ai128GA[q], 16);
            // Each comparison is -1 where it holds.
            const __m128i i128Key2 = _mm_sub_epi32(
                _mm_sub_epi32(_mm_sub_epi32(_mm_setzero_si128(), _mm_cmpgt_epi32(i128A, Splat32(170))),
                              _mm_cmpgt_epi32(i128A, Splat32(511))),
                _mm_cmpgt_epi32(i128A, Splat32(852)));
            const __m128i i128High = kbRedHigh ? i128R : i128B;
            const __m128i i128Low = kbRedHigh ? i128B : i128R;
            const __m128i i128W =
                _mm_or_si128(_mm_or_si128(_mm_slli_epi32(i128Key2, 30), _mm_slli_epi32(i128High, 20)),
                             _mm_or_si128(_mm_slli_epi32(i128G, 10), i128Low));
            NQxcKernels::Store<keStore>(out_puc + 16 * q, i128W);
        }
    }
};

typedef TLayoutRgb10<true> LRgbA2r10g10b10;
typedef TLayoutRgb10<false> LRgbA2b10g10r10;

// ================================= four 16-bit components a pixel, 8 bytes
// The components in memory in the order of the name. ABGR_16bits: A, B, G, R,
// little-endian words. K64ARGB: A, R, G, B, big-endian words (the byte order
// of the 64-bit ARGB format of desktop video tools). Full 16-bit scale.
// The lane, within B R G A, of the component stored at memory position
// in_iPos of a pixel.
constexpr int BrgaLane(int in_iPos, int in_iPosB, int in_iPosR, int in_iPosG)
{
    return in_iPos == in_iPosB ? 0 : in_iPos == in_iPosR ? 1 : in_iPos == in_iPosG ? 2 : 3;
}

template <bool kbBigEndian, int kiPosA, int kiPosR, int kiPosG, int kiPosB>
struct TLayoutRgb16x4 {
    static const unsigned kuiBytes = 128;
    static const unsigned kuiUnitPixels = 1;
    static const unsigned kuiUnitBytes = 8;
    static const int kiDepth = 16;
    static const bool kbHasKey = true;

    // Lane shuffles between the memory order and the order B, R, G, A.
    static const int kiToBRGA = _MM_SHUFFLE(kiPosA, kiPosG, kiPosR, kiPosB);
    static const int kiFromBRGA = _MM_SHUFFLE(BrgaLane(3, kiPosB, kiPosR, kiPosG), BrgaLane(2, kiPosB, kiPosR, kiPosG),
                                              BrgaLane(1, kiPosB, kiPosR, kiPosG), BrgaLane(0, kiPosB, kiPosR, kiPosG));

    static uint16_t Word(const uint8_t* in_puc)
    {
        const uint16_t us = Read16(in_puc);
        return kbBigEndian ? static_cast<uint16_t>((us << 8) | (us >> 8)) : us;
    }
    static void PutWord(uint8_t* out_puc, uint16_t in_us)
    {
        Write16(out_puc, kbBigEndian ? static_cast<uint16_t>((in_us << 8) | (in_us >> 8)) : in_us);
    }
    static __m128i VSwapBytes(__m128i in_i128)
    {
        return kbBigEndian ? _mm_or_si128(_mm_slli_epi16(in_i128, 8), _mm_srli_epi16(in_i128, 8)) : in_i128;
    }

    static void Load(const uint8_t* in_puc, SScalarRgb& out_rs)
    {
        for (int p = 0; p < 16; ++p) {
            out_rs.aus16A[p] = Word(in_puc + 8 * p + 2 * kiPosA);
            out_rs.aus16R[p] = Word(in_puc + 8 * p + 2 * kiPosR);
            out_rs.aus16G[p] = Word(in_puc + 8 * p + 2 * kiPosG);
            out_rs.aus16B[p] = Word(in_puc + 8 * p + 2 * kiPosB);
        }
    }

    static void Load(const uint8_t* in_puc, SVectorRgb& out_rs)
    {
        for (int q = 0; q < 4; ++q) {
            __m128i ai128[2];
            for (int v = 0; v < 2; ++v) {
                const __m128i i128 = VSwapBytes(NQxcKernels::Load(in_puc + 32 * q + 16 * v));
                ai128[v] = _mm_shufflehi_epi16(_mm_shufflelo_epi16(i128, kiToBRGA), kiToBRGA);
            }
            // 32-bit elements (B,R) (G,A) of pixels 0 and 1, then of 2 and 3.
            out_rs.ai128BR[q] = Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(ai128[0], ai128[1]);
            out_rs.ai128GA[q] = Shuffle2<_MM_SHUFFLE(3, 1, 3, 1)>(ai128[0], ai128[1]);
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalarRgb& in_rs)
    {
        for (int p = 0; p < 16; ++p) {
            PutWord(out_puc + 8 * p + 2 * kiPosA, in_rs.aus16A[p]);
            PutWord(out_puc + 8 * p + 2 * kiPosR, in_rs.aus16R[p]);
            PutWord(out_puc + 8 * p + 2 * kiPosG, in_rs.aus16G[p]);
            PutWord(out_puc + 8 * p + 2 * kiPosB, in_rs.aus16B[p]);
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVectorRgb& in_rs)
    {
        for (int q = 0; q < 4; ++q) {
            const __m128i ai128[2] = {_mm_unpacklo_epi32(in_rs.ai128BR[q], in_rs.ai128GA[q]),
                                      _mm_unpackhi_epi32(in_rs.ai128BR[q], in_rs.ai128GA[q])};
            for (int v = 0; v < 2; ++v) {
                const __m128i i128 = _mm_shufflehi_epi16(_mm_shufflelo_epi16(ai128[v], kiFromBRGA), kiFromBRGA);
                NQxcKernels::Store<keStore>(out_puc + 32 * q + 16 * v, VSwapBytes(i128));
            }
        }
    }
};

typedef TLayoutRgb16x4<false, 0, 3, 2, 1> LRgbAbgr16;
typedef TLayoutRgb16x4<true, 0, 1, 2, 3> LRgbK64argb;

// ============================================ layouts read as their bytes
// For the steps that work on a layout's bytes directly (the 8-bit packed
// paths, where unpacking into the canonical blocks would cost more than the
// arithmetic): the 16 pixels' bytes, as they are. Such a reader does not
// carry the key-present flag, so it serves only conversions whose
// destination has no key.
template <class TLayout>
struct SScalarRaw {
    uint8_t auc[TLayout::kuiBytes];
};
template <class TLayout>
struct SVectorRaw {
    __m128i ai128[TLayout::kuiBytes / 16];
};

template <class TLayout>
struct TRaw {
    typedef TLayout TBase;
    template <class TB>
    using TCanon =
        typename std::conditional<std::is_same<TB, CScalar>::value, SScalarRaw<TLayout>, SVectorRaw<TLayout>>::type;
    static const unsigned kuiBytes = TLayout::kuiBytes;
    static const bool kbHasKey = false;

    static void Load(const uint8_t* in_puc, SScalarRaw<TLayout>& out_rs) { std::memcpy(out_rs.auc, in_puc, kuiBytes); }
    static void Load(const uint8_t* in_puc, SVectorRaw<TLayout>& out_rs)
    {
        for (unsigned i = 0; i < kuiBytes / 16; ++i)
            out_rs.ai128[i] = NQxcKernels::Load(in_puc + 16 * i);
    }
    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalarRaw<TLayout>& in_rs)
    {
        std::memcpy(out_puc, in_rs.auc, kuiBytes);
    }
    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVectorRaw<TLayout>& in_rs)
    {
        for (unsigned i = 0; i < kuiBytes / 16; ++i)
            NQxcKernels::Store<keStore>(out_puc + 16 * i, in_rs.ai128[i]);
    }
};

// 8-bit RGB with key as four planes of 16 bytes (16 pixels): what the packed
// 4:2:2 path produces, stored into RGBA_8bits or BGRA_8bits with byte
// interleaves. The scalar form is the ordinary RGB block.
struct SVectorRgb8 {
    __m128i i128B, i128G, i128R, i128A;
};

template <bool kbReversed>
struct TLayoutRgb8Planes : TLayoutRgb8x4<kbReversed> {
    typedef TLayoutRgb8x4<kbReversed> TBase;
    template <class TB>
    using TCanon = typename std::conditional<std::is_same<TB, CScalar>::value, SScalarRgb, SVectorRgb8>::type;
    using TBase::Store;

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVectorRgb8& in_rs)
    {
        // Memory order B G R A, or A R G B reversed.
        const __m128i i128First = kbReversed ? in_rs.i128A : in_rs.i128B;
        const __m128i i128Second = kbReversed ? in_rs.i128R : in_rs.i128G;
        const __m128i i128Third = kbReversed ? in_rs.i128G : in_rs.i128R;
        const __m128i i128Fourth = kbReversed ? in_rs.i128B : in_rs.i128A;
        const __m128i i128Low01 = _mm_unpacklo_epi8(i128First, i128Second);
        const __m128i i128High01 = _mm_unpackhi_epi8(i128First, i128Second);
        const __m128i i128Low23 = _mm_unpacklo_epi8(i128Third, i128Fourth);
        const __m128i i128High23 = _mm_unpackhi_epi8(i128Third, i128Fourth);
        NQxcKernels::Store<keStore>(out_puc, _mm_unpacklo_epi16(i128Low01, i128Low23));
        NQxcKernels::Store<keStore>(out_puc + 16, _mm_unpackhi_epi16(i128Low01, i128Low23));
        NQxcKernels::Store<keStore>(out_puc + 32, _mm_unpacklo_epi16(i128High01, i128High23));
        NQxcKernels::Store<keStore>(out_puc + 48, _mm_unpackhi_epi16(i128High01, i128High23));
    }
};

typedef TLayoutRgb8Planes<false> LRgba8Planes;
typedef TLayoutRgb8Planes<true> LBgra8Planes;

// ====================================================== unit traits
// The smallest run of whole pixels that starts on a byte, for every layout a
// buffer kernel reads or writes: the YUV layouts of the block family (whose
// structs do not carry it) and the RGB layouts (which do).
template <class TLayout>
struct TUnit {
    static const unsigned kuiPixels = TLayout::kuiUnitPixels;
    static const unsigned kuiBytes = TLayout::kuiUnitBytes;
};
#define QXC_LAYOUT_UNIT(Layout, Pixels, Bytes)       \
    template <>                                      \
    struct TUnit<Layout> {                           \
        static const unsigned kuiPixels = Pixels;    \
        static const unsigned kuiBytes = Bytes;      \
    };
QXC_LAYOUT_UNIT(LYuyv8, 2, 4)
QXC_LAYOUT_UNIT(L2vuy8, 2, 4)
QXC_LAYOUT_UNIT(LPacked10, 16, 40)
QXC_LAYOUT_UNIT(L4224_8, 8, 24)
QXC_LAYOUT_UNIT(L4224_10, 2, 8)
QXC_LAYOUT_UNIT(L4444_16, 1, 8)
QXC_LAYOUT_UNIT(L4224_16, 16, 96)
QXC_LAYOUT_UNIT(LR4fl, 1, 16)
#undef QXC_LAYOUT_UNIT
template <class TLayout>
struct TUnit<TRaw<TLayout>> : TUnit<TLayout> {
};

// Bytes of the units that hold the first in_uiPixels pixels of a block.
template <class TLayout>
inline unsigned UnitBytesFor(unsigned in_uiPixels)
{
    return (in_uiPixels + TUnit<TLayout>::kuiPixels - 1) / TUnit<TLayout>::kuiPixels * TUnit<TLayout>::kuiBytes;
}

}  // namespace NQxcKernels

#endif  // QXBASE_SURFACES_KERNELS_RGBLAYOUTS_H
