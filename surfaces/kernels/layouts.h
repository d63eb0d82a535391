// The memory layout of every block format as a load (unpack into the
// canonical block) and a store (pack from it), each in a scalar and an SSE2
// form. The scalar form is the reference of the SSE2 one: the tests demand
// identical bytes. Layouts are described in qxbase/qxcblocksurfaces.h.
//
// Each layout L gives: L::kuiBytes (bytes of one 16-pixel block), L::kb444
// (its canonical block is the 4:4:4 form), L::kbHasKey, and overloads
// Load(const uint8_t*, block&) and Store<EStore>(uint8_t*, const block&) for
// both block forms. SSE2 loads are unaligned; SSE2 stores follow the policy.
#ifndef QXBASE_SURFACES_KERNELS_LAYOUTS_H
#define QXBASE_SURFACES_KERNELS_LAYOUTS_H

#include "surfaces/kernels/blocks.h"

#include <cmath>

namespace NQxcKernels {

// ============================================ 8-bit 4:2:2 (YUYV and 2VUY)
// The 32 bytes of 16 pixels, YUYV order, or 2VUY order when kbSwapped.
template <bool kbSwapped>
inline void UnpackYuyv(const uint8_t* in_puc, uint16_t* out_pusY, uint16_t* out_pusCb, uint16_t* out_pusCr)
{
    const int iY = kbSwapped ? 1 : 0;
    const int iC = 1 - iY;
    for (int i = 0; i < 16; ++i)
        out_pusY[i] = From8(in_puc[2 * i + iY]);
    for (int j = 0; j < 8; ++j) {
        out_pusCb[j] = From8(in_puc[4 * j + iC]);
        out_pusCr[j] = From8(in_puc[4 * j + 2 + iC]);
    }
}

template <bool kbSwapped>
inline void PackYuyv(const uint16_t* in_pusY, const uint16_t* in_pusCb, const uint16_t* in_pusCr, uint8_t* out_puc)
{
    const int iY = kbSwapped ? 1 : 0;
    const int iC = 1 - iY;
    for (int i = 0; i < 16; ++i)
        out_puc[2 * i + iY] = To8(in_pusY[i]);
    for (int j = 0; j < 8; ++j) {
        out_puc[4 * j + iC] = To8(in_pusCb[j]);
        out_puc[4 * j + 2 + iC] = To8(in_pusCr[j]);
    }
}

// The same on two vectors of 16 bytes.
template <bool kbSwapped>
inline void VUnpackYuyv(__m128i in_i128A, __m128i in_i128B, __m128i* out_pi128Y, __m128i& out_ri128Cb,
                        __m128i& out_ri128Cr)
{
    const __m128i i128Low = Splat16(0x00ff);
    __m128i i128CA, i128CB;
    if (kbSwapped) {
        out_pi128Y[0] = _mm_srli_epi16(in_i128A, 8);
        out_pi128Y[1] = _mm_srli_epi16(in_i128B, 8);
        i128CA = _mm_and_si128(in_i128A, i128Low);
        i128CB = _mm_and_si128(in_i128B, i128Low);
    } else {
        out_pi128Y[0] = _mm_and_si128(in_i128A, i128Low);
        out_pi128Y[1] = _mm_and_si128(in_i128B, i128Low);
        i128CA = _mm_srli_epi16(in_i128A, 8);
        i128CB = _mm_srli_epi16(in_i128B, 8);
    }
    // i128CA holds Cb0 Cr0 Cb1 Cr1 ... Cr3.
    out_pi128Y[0] = VFrom8(out_pi128Y[0]);
    out_pi128Y[1] = VFrom8(out_pi128Y[1]);
    out_ri128Cb = VFrom8(VEvenLanes(i128CA, i128CB));
    out_ri128Cr = VFrom8(VOddLanes(i128CA, i128CB));
}

template <bool kbSwapped>
inline void VPackYuyv(const __m128i* in_pi128Y, __m128i in_i128Cb, __m128i in_i128Cr, __m128i& out_ri128A,
                      __m128i& out_ri128B)
{
    const __m128i i128YBytes =
        _mm_packus_epi16(_mm_srli_epi16(in_pi128Y[0], 2), _mm_srli_epi16(in_pi128Y[1], 2));
    const __m128i i128CLow = _mm_unpacklo_epi16(in_i128Cb, in_i128Cr);
    const __m128i i128CHigh = _mm_unpackhi_epi16(in_i128Cb, in_i128Cr);
    const __m128i i128CBytes = _mm_packus_epi16(_mm_srli_epi16(i128CLow, 2), _mm_srli_epi16(i128CHigh, 2));
    if (kbSwapped) {
        out_ri128A = _mm_unpacklo_epi8(i128CBytes, i128YBytes);
        out_ri128B = _mm_unpackhi_epi8(i128CBytes, i128YBytes);
    } else {
        out_ri128A = _mm_unpacklo_epi8(i128YBytes, i128CBytes);
        out_ri128B = _mm_unpackhi_epi8(i128YBytes, i128CBytes);
    }
}

template <bool kbSwapped>
struct TLayout422_8 {
    static const unsigned kuiBytes = 32;
    static const bool kb444 = false;
    static const bool kbHasKey = false;

    static void Load(const uint8_t* in_puc, SScalar422& out_rs)
    {
        UnpackYuyv<kbSwapped>(in_puc, out_rs.aus16Y, out_rs.aus16Cb, out_rs.aus16Cr);
        FillFullKey(out_rs);
    }
    static void Load(const uint8_t* in_puc, SVector422& out_rs)
    {
        VUnpackYuyv<kbSwapped>(NQxcKernels::Load(in_puc), NQxcKernels::Load(in_puc + 16), out_rs.ai128Y,
                               out_rs.i128Cb, out_rs.i128Cr);
        FillFullKey(out_rs);
    }
    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalar422& in_rs)
    {
        PackYuyv<kbSwapped>(in_rs.aus16Y, in_rs.aus16Cb, in_rs.aus16Cr, out_puc);
    }
    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVector422& in_rs)
    {
        __m128i i128A, i128B;
        VPackYuyv<kbSwapped>(in_rs.ai128Y, in_rs.i128Cb, in_rs.i128Cr, i128A, i128B);
        NQxcKernels::Store<keStore>(out_puc, i128A);
        NQxcKernels::Store<keStore>(out_puc + 16, i128B);
    }
};

typedef TLayout422_8<false> LYuyv8;
typedef TLayout422_8<true> L2vuy8;

// ================================================== packed 10-bit YUYV
// Bytes 0..31: upper 8 bits in YUYV order; bytes 32..39: the low bit pairs,
// component k (YUYV order) in bits 2(k mod 4) of byte 32 + k / 4, that is
// byte 32 + m holds Y(2m), Cb(m), Y(2m+1), Cr(m) from bit 0 up.
struct LPacked10 {
    static const unsigned kuiBytes = 40;
    static const bool kb444 = false;
    static const bool kbHasKey = false;

    static void Load(const uint8_t* in_puc, SScalar422& out_rs)
    {
        UnpackYuyv<false>(in_puc, out_rs.aus16Y, out_rs.aus16Cb, out_rs.aus16Cr);
        for (int m = 0; m < 8; ++m) {
            const unsigned uiLow = in_puc[32 + m];
            out_rs.aus16Y[2 * m] = static_cast<uint16_t>(out_rs.aus16Y[2 * m] | (uiLow & 3));
            out_rs.aus16Cb[m] = static_cast<uint16_t>(out_rs.aus16Cb[m] | ((uiLow >> 2) & 3));
            out_rs.aus16Y[2 * m + 1] = static_cast<uint16_t>(out_rs.aus16Y[2 * m + 1] | ((uiLow >> 4) & 3));
            out_rs.aus16Cr[m] = static_cast<uint16_t>(out_rs.aus16Cr[m] | ((uiLow >> 6) & 3));
        }
        FillFullKey(out_rs);
    }

    static void Load(const uint8_t* in_puc, SVector422& out_rs)
    {
        VUnpackYuyv<false>(NQxcKernels::Load(in_puc), NQxcKernels::Load(in_puc + 16), out_rs.ai128Y,
                           out_rs.i128Cb, out_rs.i128Cr);
        const __m128i i128Three = Splat16(3);
        // One 16-bit lane per low byte m.
        const __m128i i128Low = _mm_unpacklo_epi8(Load8Bytes(in_puc + 32), _mm_setzero_si128());
        // Spread each byte's two luma pairs into two bytes: Y(2m) low, Y(2m+1) high.
        const __m128i i128YBits =
            _mm_and_si128(_mm_or_si128(i128Low, _mm_slli_epi16(i128Low, 4)), Splat16(0x0303));
        out_rs.ai128Y[0] = _mm_or_si128(out_rs.ai128Y[0], _mm_unpacklo_epi8(i128YBits, _mm_setzero_si128()));
        out_rs.ai128Y[1] = _mm_or_si128(out_rs.ai128Y[1], _mm_unpackhi_epi8(i128YBits, _mm_setzero_si128()));
        out_rs.i128Cb = _mm_or_si128(out_rs.i128Cb, _mm_and_si128(_mm_srli_epi16(i128Low, 2), i128Three));
        out_rs.i128Cr = _mm_or_si128(out_rs.i128Cr, _mm_and_si128(_mm_srli_epi16(i128Low, 6), i128Three));
        FillFullKey(out_rs);
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalar422& in_rs)
    {
        PackYuyv<false>(in_rs.aus16Y, in_rs.aus16Cb, in_rs.aus16Cr, out_puc);
        for (int m = 0; m < 8; ++m)
            out_puc[32 + m] = static_cast<uint8_t>((in_rs.aus16Y[2 * m] & 3) | ((in_rs.aus16Cb[m] & 3) << 2) |
                                                   ((in_rs.aus16Y[2 * m + 1] & 3) << 4) |
                                                   ((in_rs.aus16Cr[m] & 3) << 6));
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVector422& in_rs)
    {
        __m128i i128A, i128B;
        VPackYuyv<false>(in_rs.ai128Y, in_rs.i128Cb, in_rs.i128Cr, i128A, i128B);
        const __m128i i128Three = Splat16(3);
        // Bytes Y0 low .. Y15 low; as 16-bit lanes, lane m = Y(2m) | Y(2m+1) << 8.
        const __m128i i128YBits = _mm_packus_epi16(_mm_and_si128(in_rs.ai128Y[0], i128Three),
                                                   _mm_and_si128(in_rs.ai128Y[1], i128Three));
        __m128i i128Low = _mm_or_si128(_mm_and_si128(i128YBits, i128Three),
                                       _mm_and_si128(_mm_srli_epi16(i128YBits, 4), Splat16(0x30)));
        i128Low = _mm_or_si128(i128Low, _mm_slli_epi16(_mm_and_si128(in_rs.i128Cb, i128Three), 2));
        i128Low = _mm_or_si128(i128Low, _mm_slli_epi16(_mm_and_si128(in_rs.i128Cr, i128Three), 6));
        i128Low = _mm_packus_epi16(i128Low, i128Low);
        StoreBlock<keStore>(out_puc, i128A, i128B, i128Low);
    }

private:
    // 40 bytes: whole 16-byte units land on 16-byte boundaries both for a
    // block that starts on one and for one that starts 8 bytes past one,
    // which are the two places blocks of a 16-byte aligned line start.
    template <EStore keStore>
    static void StoreBlock(uint8_t* out_puc, __m128i in_i128A, __m128i in_i128B, __m128i in_i128Low)
    {
        if (keStore == keStoreUnaligned || (reinterpret_cast<uintptr_t>(out_puc) & 8) == 0) {
            NQxcKernels::Store<keStore>(out_puc, in_i128A);
            NQxcKernels::Store<keStore>(out_puc + 16, in_i128B);
            Store8Bytes<keStore>(out_puc + 32, in_i128Low);
        } else {
            Store8Bytes<keStore>(out_puc, in_i128A);
            NQxcKernels::Store<keStore>(out_puc + 8,
                                        _mm_or_si128(_mm_srli_si128(in_i128A, 8), _mm_slli_si128(in_i128B, 8)));
            NQxcKernels::Store<keStore>(out_puc + 24, _mm_unpacklo_epi64(_mm_srli_si128(in_i128B, 8), in_i128Low));
        }
    }
};

// ========================================= 8-bit 4:2:2:4 (two 24-byte groups)
struct L4224_8 {
    static const unsigned kuiBytes = 48;
    static const bool kb444 = false;
    static const bool kbHasKey = true;

    static void Load(const uint8_t* in_puc, SScalar422& out_rs)
    {
        uint8_t aucYuyv[32];
        std::memcpy(aucYuyv, in_puc, 16);
        std::memcpy(aucYuyv + 16, in_puc + 24, 16);
        UnpackYuyv<false>(aucYuyv, out_rs.aus16Y, out_rs.aus16Cb, out_rs.aus16Cr);
        for (int i = 0; i < 8; ++i) {
            out_rs.aus16K[i] = KeyFrom8(in_puc[16 + i]);
            out_rs.aus16K[8 + i] = KeyFrom8(in_puc[40 + i]);
        }
    }

    static void Load(const uint8_t* in_puc, SVector422& out_rs)
    {
        const __m128i i128V0 = NQxcKernels::Load(in_puc);
        const __m128i i128V1 = NQxcKernels::Load(in_puc + 16);
        const __m128i i128V2 = NQxcKernels::Load(in_puc + 32);
        const __m128i i128Yuyv1 = _mm_or_si128(_mm_srli_si128(i128V1, 8), _mm_slli_si128(i128V2, 8));
        const __m128i i128Keys = _mm_unpacklo_epi64(i128V1, _mm_srli_si128(i128V2, 8));
        VUnpackYuyv<false>(i128V0, i128Yuyv1, out_rs.ai128Y, out_rs.i128Cb, out_rs.i128Cr);
        out_rs.ai128K[0] = VKeyFrom8(_mm_unpacklo_epi8(i128Keys, _mm_setzero_si128()));
        out_rs.ai128K[1] = VKeyFrom8(_mm_unpackhi_epi8(i128Keys, _mm_setzero_si128()));
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalar422& in_rs)
    {
        uint8_t aucYuyv[32];
        PackYuyv<false>(in_rs.aus16Y, in_rs.aus16Cb, in_rs.aus16Cr, aucYuyv);
        std::memcpy(out_puc, aucYuyv, 16);
        std::memcpy(out_puc + 24, aucYuyv + 16, 16);
        for (int i = 0; i < 8; ++i) {
            out_puc[16 + i] = To8(in_rs.aus16K[i]);
            out_puc[40 + i] = To8(in_rs.aus16K[8 + i]);
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVector422& in_rs)
    {
        __m128i i128Yuyv0, i128Yuyv1;
        VPackYuyv<false>(in_rs.ai128Y, in_rs.i128Cb, in_rs.i128Cr, i128Yuyv0, i128Yuyv1);
        const __m128i i128Keys =
            _mm_packus_epi16(_mm_srli_epi16(in_rs.ai128K[0], 2), _mm_srli_epi16(in_rs.ai128K[1], 2));
        NQxcKernels::Store<keStore>(out_puc, i128Yuyv0);
        NQxcKernels::Store<keStore>(out_puc + 16, _mm_unpacklo_epi64(i128Keys, i128Yuyv1));
        NQxcKernels::Store<keStore>(out_puc + 32, _mm_unpackhi_epi64(i128Yuyv1, i128Keys));
    }
};

// ======================================== 10-bit 4:2:2:4, a 32-bit word a pixel
// Word of pixel p: (Y << 20) | (C << 10) | K, C = Cb(p/2) for even p, Cr(p/2)
// for odd p.
struct L4224_10 {
    static const unsigned kuiBytes = 64;
    static const bool kb444 = false;
    static const bool kbHasKey = true;

    static void Load(const uint8_t* in_puc, SScalar422& out_rs)
    {
        for (int p = 0; p < 16; ++p) {
            const uint32_t ui = Read32(in_puc + 4 * p);
            out_rs.aus16Y[p] = static_cast<uint16_t>((ui >> 20) & 0x3ff);
            const uint16_t usC = static_cast<uint16_t>((ui >> 10) & 0x3ff);
            if (p % 2 == 0)
                out_rs.aus16Cb[p / 2] = usC;
            else
                out_rs.aus16Cr[p / 2] = usC;
            out_rs.aus16K[p] = static_cast<uint16_t>(ui & 0x3ff);
        }
    }

    static void Load(const uint8_t* in_puc, SVector422& out_rs)
    {
        const __m128i i128Mask = Splat32(0x3ff);
        __m128i ai128Y[4], ai128C[4], ai128K[4];
        for (int i = 0; i < 4; ++i) {
            const __m128i i128W = NQxcKernels::Load(in_puc + 16 * i);
            ai128Y[i] = _mm_and_si128(_mm_srli_epi32(i128W, 20), i128Mask);
            ai128C[i] = _mm_and_si128(_mm_srli_epi32(i128W, 10), i128Mask);
            ai128K[i] = _mm_and_si128(i128W, i128Mask);
        }
        out_rs.ai128Y[0] = _mm_packs_epi32(ai128Y[0], ai128Y[1]);
        out_rs.ai128Y[1] = _mm_packs_epi32(ai128Y[2], ai128Y[3]);
        out_rs.ai128K[0] = _mm_packs_epi32(ai128K[0], ai128K[1]);
        out_rs.ai128K[1] = _mm_packs_epi32(ai128K[2], ai128K[3]);
        // Cb0 Cr0 Cb1 Cr1 ... pixel by pixel.
        const __m128i i128C0 = _mm_packs_epi32(ai128C[0], ai128C[1]);
        const __m128i i128C1 = _mm_packs_epi32(ai128C[2], ai128C[3]);
        out_rs.i128Cb = VEvenLanes(i128C0, i128C1);
        out_rs.i128Cr = VOddLanes(i128C0, i128C1);
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalar422& in_rs)
    {
        for (int p = 0; p < 16; ++p) {
            const uint32_t uiC = p % 2 == 0 ? in_rs.aus16Cb[p / 2] : in_rs.aus16Cr[p / 2];
            Write32(out_puc + 4 * p, (static_cast<uint32_t>(in_rs.aus16Y[p]) << 20) | (uiC << 10) | in_rs.aus16K[p]);
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVector422& in_rs)
    {
        const __m128i i128Zero = _mm_setzero_si128();
        const __m128i ai128C[2] = {_mm_unpacklo_epi16(in_rs.i128Cb, in_rs.i128Cr),
                                   _mm_unpackhi_epi16(in_rs.i128Cb, in_rs.i128Cr)};
        for (int i = 0; i < 4; ++i) {
            const __m128i i128Y = (i % 2 == 0) ? _mm_unpacklo_epi16(in_rs.ai128Y[i / 2], i128Zero)
                                               : _mm_unpackhi_epi16(in_rs.ai128Y[i / 2], i128Zero);
            const __m128i i128C = (i % 2 == 0) ? _mm_unpacklo_epi16(ai128C[i / 2], i128Zero)
                                               : _mm_unpackhi_epi16(ai128C[i / 2], i128Zero);
            const __m128i i128K = (i % 2 == 0) ? _mm_unpacklo_epi16(in_rs.ai128K[i / 2], i128Zero)
                                               : _mm_unpackhi_epi16(in_rs.ai128K[i / 2], i128Zero);
            const __m128i i128W =
                _mm_or_si128(_mm_or_si128(_mm_slli_epi32(i128Y, 20), _mm_slli_epi32(i128C, 10)), i128K);
            NQxcKernels::Store<keStore>(out_puc + 16 * i, i128W);
        }
    }
};

// ============================================= 16-bit words: 4:2:2 and 4:2:2:4
// Y0..Y15, Cb0..Cb7, Cr0..Cr7 and, with a key, K0..K15.
template <bool kbKey>
struct TLayout422_16 {
    static const unsigned kuiBytes = kbKey ? 96 : 64;
    static const bool kb444 = false;
    static const bool kbHasKey = kbKey;

    static void Load(const uint8_t* in_puc, SScalar422& out_rs)
    {
        for (int i = 0; i < 16; ++i)
            out_rs.aus16Y[i] = Min10(Read16(in_puc + 2 * i));
        for (int j = 0; j < 8; ++j) {
            out_rs.aus16Cb[j] = Min10(Read16(in_puc + 32 + 2 * j));
            out_rs.aus16Cr[j] = Min10(Read16(in_puc + 48 + 2 * j));
        }
        if (kbKey) {
            for (int i = 0; i < 16; ++i)
                out_rs.aus16K[i] = Min10(Read16(in_puc + 64 + 2 * i));
        } else {
            FillFullKey(out_rs);
        }
    }

    static void Load(const uint8_t* in_puc, SVector422& out_rs)
    {
        out_rs.ai128Y[0] = VMin10(NQxcKernels::Load(in_puc));
        out_rs.ai128Y[1] = VMin10(NQxcKernels::Load(in_puc + 16));
        out_rs.i128Cb = VMin10(NQxcKernels::Load(in_puc + 32));
        out_rs.i128Cr = VMin10(NQxcKernels::Load(in_puc + 48));
        if (kbKey) {
            out_rs.ai128K[0] = VMin10(NQxcKernels::Load(in_puc + 64));
            out_rs.ai128K[1] = VMin10(NQxcKernels::Load(in_puc + 80));
        } else {
            FillFullKey(out_rs);
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalar422& in_rs)
    {
        std::memcpy(out_puc, in_rs.aus16Y, 32);
        std::memcpy(out_puc + 32, in_rs.aus16Cb, 16);
        std::memcpy(out_puc + 48, in_rs.aus16Cr, 16);
        if (kbKey)
            std::memcpy(out_puc + 64, in_rs.aus16K, 32);
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVector422& in_rs)
    {
        NQxcKernels::Store<keStore>(out_puc, in_rs.ai128Y[0]);
        NQxcKernels::Store<keStore>(out_puc + 16, in_rs.ai128Y[1]);
        NQxcKernels::Store<keStore>(out_puc + 32, in_rs.i128Cb);
        NQxcKernels::Store<keStore>(out_puc + 48, in_rs.i128Cr);
        if (kbKey) {
            NQxcKernels::Store<keStore>(out_puc + 64, in_rs.ai128K[0]);
            NQxcKernels::Store<keStore>(out_puc + 80, in_rs.ai128K[1]);
        }
    }
};

typedef TLayout422_16<false> L422_16;
typedef TLayout422_16<true> L4224_16;

// ====================================== four 16-bit words a pixel, 16 pixels
// Word w of pixel p goes to out_ppus[w][p], through in_fWord.
template <class TWord>
inline void UnpackWordQuads(const uint8_t* in_puc, uint16_t* const* out_ppus, TWord in_fWord)
{
    for (int p = 0; p < 16; ++p)
        for (int w = 0; w < 4; ++w)
            out_ppus[w][p] = in_fWord(Read16(in_puc + 8 * p + 2 * w));
}

// The same on vectors: out_ppi128[w] receives word w of pixels 0..7 and
// 8..15; in_fWord is applied to each loaded vector first.
template <class TWord>
inline void VUnpackWordQuads(const uint8_t* in_puc, __m128i* const* out_ppi128, TWord in_fWord)
{
    for (int h = 0; h < 2; ++h) {
        __m128i ai128Quad[4];  // w0 x4 w1 x4 / w2 x4 w3 x4, for 2 x 4 pixels
        for (int q = 0; q < 2; ++q) {
            const uint8_t* puc = in_puc + 64 * h + 32 * q;
            const __m128i i128P01 = in_fWord(Load(puc));
            const __m128i i128P23 = in_fWord(Load(puc + 16));
            const __m128i i128Lo = _mm_unpacklo_epi16(i128P01, i128P23);
            const __m128i i128Hi = _mm_unpackhi_epi16(i128P01, i128P23);
            ai128Quad[2 * q] = _mm_unpacklo_epi16(i128Lo, i128Hi);
            ai128Quad[2 * q + 1] = _mm_unpackhi_epi16(i128Lo, i128Hi);
        }
        out_ppi128[0][h] = _mm_unpacklo_epi64(ai128Quad[0], ai128Quad[2]);
        out_ppi128[1][h] = _mm_unpackhi_epi64(ai128Quad[0], ai128Quad[2]);
        out_ppi128[2][h] = _mm_unpacklo_epi64(ai128Quad[1], ai128Quad[3]);
        out_ppi128[3][h] = _mm_unpackhi_epi64(ai128Quad[1], ai128Quad[3]);
    }
}

// ================================================ 16-bit 4:4:4:4, Y Cb Cr K
struct L4444_16 {
    static const unsigned kuiBytes = 128;
    static const bool kb444 = true;
    static const bool kbHasKey = true;

    static void Load(const uint8_t* in_puc, SScalar444& out_rs)
    {
        uint16_t* apus[4] = {out_rs.aus16Y, out_rs.aus16Cb, out_rs.aus16Cr, out_rs.aus16K};
        UnpackWordQuads(in_puc, apus, [](uint16_t in_us) { return Min10(in_us); });
    }

    static void Load(const uint8_t* in_puc, SVector444& out_rs)
    {
        __m128i* api128[4] = {out_rs.ai128Y, out_rs.ai128Cb, out_rs.ai128Cr, out_rs.ai128K};
        VUnpackWordQuads(in_puc, api128, [](__m128i in_i128) { return VMin10(in_i128); });
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalar444& in_rs)
    {
        for (int p = 0; p < 16; ++p) {
            Write16(out_puc + 8 * p, in_rs.aus16Y[p]);
            Write16(out_puc + 8 * p + 2, in_rs.aus16Cb[p]);
            Write16(out_puc + 8 * p + 4, in_rs.aus16Cr[p]);
            Write16(out_puc + 8 * p + 6, in_rs.aus16K[p]);
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVector444& in_rs)
    {
        for (int h = 0; h < 2; ++h) {
            for (int q = 0; q < 2; ++q) {
                // Y0..3 Cb0..3 and Cr0..3 K0..3 of four pixels.
                const __m128i i128YCb = q == 0 ? _mm_unpacklo_epi64(in_rs.ai128Y[h], in_rs.ai128Cb[h])
                                               : _mm_unpackhi_epi64(in_rs.ai128Y[h], in_rs.ai128Cb[h]);
                const __m128i i128CrK = q == 0 ? _mm_unpacklo_epi64(in_rs.ai128Cr[h], in_rs.ai128K[h])
                                               : _mm_unpackhi_epi64(in_rs.ai128Cr[h], in_rs.ai128K[h]);
                const __m128i i128YCr = _mm_unpacklo_epi16(i128YCb, i128CrK);  // Y0 Cr0 Y1 Cr1 ...
                const __m128i i128CbK = _mm_unpackhi_epi16(i128YCb, i128CrK);  // Cb0 K0 Cb1 K1 ...
                uint8_t* puc = out_puc + 64 * h + 32 * q;
                NQxcKernels::Store<keStore>(puc, _mm_unpacklo_epi16(i128YCr, i128CbK));
                NQxcKernels::Store<keStore>(puc + 16, _mm_unpackhi_epi16(i128YCr, i128CbK));
            }
        }
    }
};

// ==================================================== 8-bit AYCbCr 4:4:4:4
// Four bytes a pixel: K, Y, Cb, Cr.
struct LAycbcr8 {
    static const unsigned kuiBytes = 64;
    static const bool kb444 = true;
    static const bool kbHasKey = true;

    static void Load(const uint8_t* in_puc, SScalar444& out_rs)
    {
        for (int p = 0; p < 16; ++p) {
            out_rs.aus16K[p] = KeyFrom8(in_puc[4 * p]);
            out_rs.aus16Y[p] = From8(in_puc[4 * p + 1]);
            out_rs.aus16Cb[p] = From8(in_puc[4 * p + 2]);
            out_rs.aus16Cr[p] = From8(in_puc[4 * p + 3]);
        }
    }

    static void Load(const uint8_t* in_puc, SVector444& out_rs)
    {
        const __m128i i128Byte = Splat32(0xff);
        for (int h = 0; h < 2; ++h) {
            const __m128i i128A = NQxcKernels::Load(in_puc + 32 * h);
            const __m128i i128B = NQxcKernels::Load(in_puc + 32 * h + 16);
            out_rs.ai128K[h] = VKeyFrom8(_mm_packs_epi32(_mm_and_si128(i128A, i128Byte), _mm_and_si128(i128B, i128Byte)));
            out_rs.ai128Y[h] = VFrom8(_mm_packs_epi32(_mm_and_si128(_mm_srli_epi32(i128A, 8), i128Byte),
                                                      _mm_and_si128(_mm_srli_epi32(i128B, 8), i128Byte)));
            out_rs.ai128Cb[h] = VFrom8(_mm_packs_epi32(_mm_and_si128(_mm_srli_epi32(i128A, 16), i128Byte),
                                                       _mm_and_si128(_mm_srli_epi32(i128B, 16), i128Byte)));
            out_rs.ai128Cr[h] = VFrom8(_mm_packs_epi32(_mm_srli_epi32(i128A, 24), _mm_srli_epi32(i128B, 24)));
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalar444& in_rs)
    {
        for (int p = 0; p < 16; ++p) {
            out_puc[4 * p] = To8(in_rs.aus16K[p]);
            out_puc[4 * p + 1] = To8(in_rs.aus16Y[p]);
            out_puc[4 * p + 2] = To8(in_rs.aus16Cb[p]);
            out_puc[4 * p + 3] = To8(in_rs.aus16Cr[p]);
        }
    }
};

// ================================================== RGB sources of the hub
// An RGB block travels in the 4:4:4 form: R in the Y lanes, G in Cb, B in
// Cr, the key in K; every value 10-bit. These formats are only read here.

// A2R10G10B10: one 32-bit word a pixel, A (2 bits) R G B from the top; the
// 2-bit key a reads as a x 341 (3 is 1023).
struct LA2r10g10b10 {
    static const unsigned kuiBytes = 64;
    static const bool kb444 = true;
    static const bool kbHasKey = true;

    static void Load(const uint8_t* in_puc, SScalar444& out_rs)
    {
        for (int p = 0; p < 16; ++p) {
            const uint32_t ui = Read32(in_puc + 4 * p);
            out_rs.aus16Y[p] = static_cast<uint16_t>((ui >> 20) & 0x3ff);
            out_rs.aus16Cb[p] = static_cast<uint16_t>((ui >> 10) & 0x3ff);
            out_rs.aus16Cr[p] = static_cast<uint16_t>(ui & 0x3ff);
            out_rs.aus16K[p] = static_cast<uint16_t>((ui >> 30) * 341);
        }
    }

    static void Load(const uint8_t* in_puc, SVector444& out_rs)
    {
        const __m128i i128Mask = Splat32(0x3ff);
        for (int h = 0; h < 2; ++h) {
            const __m128i i128A = NQxcKernels::Load(in_puc + 32 * h);
            const __m128i i128B = NQxcKernels::Load(in_puc + 32 * h + 16);
            out_rs.ai128Y[h] = _mm_packs_epi32(_mm_and_si128(_mm_srli_epi32(i128A, 20), i128Mask),
                                               _mm_and_si128(_mm_srli_epi32(i128B, 20), i128Mask));
            out_rs.ai128Cb[h] = _mm_packs_epi32(_mm_and_si128(_mm_srli_epi32(i128A, 10), i128Mask),
                                                _mm_and_si128(_mm_srli_epi32(i128B, 10), i128Mask));
            out_rs.ai128Cr[h] = _mm_packs_epi32(_mm_and_si128(i128A, i128Mask), _mm_and_si128(i128B, i128Mask));
            out_rs.ai128K[h] = _mm_mullo_epi16(_mm_packs_epi32(_mm_srli_epi32(i128A, 30), _mm_srli_epi32(i128B, 30)),
                                               Splat16(341));
        }
    }
};

// K64ARGB: four big-endian 16-bit words a pixel, A R G B, on the full 16-bit
// scale; read as their top 10 bits.
struct LK64argb {
    static const unsigned kuiBytes = 128;
    static const bool kb444 = true;
    static const bool kbHasKey = true;

    static void Load(const uint8_t* in_puc, SScalar444& out_rs)
    {
        uint16_t* apus[4] = {out_rs.aus16K, out_rs.aus16Y, out_rs.aus16Cb, out_rs.aus16Cr};
        UnpackWordQuads(in_puc, apus, [](uint16_t in_us) {
            return static_cast<uint16_t>(static_cast<uint16_t>((in_us << 8) | (in_us >> 8)) >> 6);
        });
    }

    static void Load(const uint8_t* in_puc, SVector444& out_rs)
    {
        __m128i* api128[4] = {out_rs.ai128K, out_rs.ai128Y, out_rs.ai128Cb, out_rs.ai128Cr};
        VUnpackWordQuads(in_puc, api128, [](__m128i in_i128) {
            return _mm_srli_epi16(_mm_or_si128(_mm_slli_epi16(in_i128, 8), _mm_srli_epi16(in_i128, 8)), 6);
        });
    }
};

// Float YCbCrA 4:4:4:4: four 32-bit floats a pixel, Y Cb Cr A, with Y 0..1
// from black to white, chroma -0.5..0.5 and the key 0..1; read as
// 64 + 876 Y, 512 + 896 C and 1023 A, rounded to nearest (ties to even) and
// clamped to 0..1023 (a NaN reads as 0).
struct LR4fl {
    static const unsigned kuiBytes = 256;
    static const bool kb444 = true;
    static const bool kbHasKey = true;

    static void Load(const uint8_t* in_puc, SScalar444& out_rs)
    {
        static const float kafScale[4] = {876.0f, 896.0f, 896.0f, 1023.0f};
        static const float kafOffset[4] = {64.0f, 512.0f, 512.0f, 0.0f};
        uint16_t* apus[4] = {out_rs.aus16Y, out_rs.aus16Cb, out_rs.aus16Cr, out_rs.aus16K};
        for (int p = 0; p < 16; ++p) {
            for (int c = 0; c < 4; ++c) {
                float f;
                std::memcpy(&f, in_puc + 16 * p + 4 * c, 4);
                // Kept as separate steps: the SIMD form multiplies, then adds.
                f = f * kafScale[c];
                f = f + kafOffset[c];
                f = f > 0.0f ? f : 0.0f;
                f = f < 1023.0f ? f : 1023.0f;
                apus[c][p] = static_cast<uint16_t>(std::nearbyint(f));
            }
        }
    }

    static void Load(const uint8_t* in_puc, SVector444& out_rs)
    {
        const __m128 afScale[4] = {_mm_set1_ps(876.0f), _mm_set1_ps(896.0f), _mm_set1_ps(896.0f),
                                   _mm_set1_ps(1023.0f)};
        const __m128 afOffset[4] = {_mm_set1_ps(64.0f), _mm_set1_ps(512.0f), _mm_set1_ps(512.0f),
                                    _mm_setzero_ps()};
        __m128i* api128[4] = {out_rs.ai128Y, out_rs.ai128Cb, out_rs.ai128Cr, out_rs.ai128K};
        for (int h = 0; h < 2; ++h) {
            __m128i ai128Half[2][4];
            for (int q = 0; q < 2; ++q) {
                const float* pf = reinterpret_cast<const float*>(in_puc + 128 * h + 64 * q);
                __m128 af[4] = {_mm_loadu_ps(pf), _mm_loadu_ps(pf + 4), _mm_loadu_ps(pf + 8), _mm_loadu_ps(pf + 12)};
                _MM_TRANSPOSE4_PS(af[0], af[1], af[2], af[3]);
                for (int c = 0; c < 4; ++c) {
                    __m128 f = _mm_add_ps(_mm_mul_ps(af[c], afScale[c]), afOffset[c]);
                    f = _mm_min_ps(_mm_max_ps(f, _mm_setzero_ps()), _mm_set1_ps(1023.0f));
                    ai128Half[q][c] = _mm_cvtps_epi32(f);
                }
            }
            for (int c = 0; c < 4; ++c)
                api128[c][h] = _mm_packs_epi32(ai128Half[0][c], ai128Half[1][c]);
        }
    }

    // The inverse: (Y - 64) / 876, (C - 512) / 896 and K / 1023, each a
    // subtraction and a correctly rounded division, so that the load above
    // gives the 10-bit values back.
    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SScalar444& in_rs)
    {
        static const float kafScale[4] = {876.0f, 896.0f, 896.0f, 1023.0f};
        static const float kafOffset[4] = {64.0f, 512.0f, 512.0f, 0.0f};
        const uint16_t* apus[4] = {in_rs.aus16Y, in_rs.aus16Cb, in_rs.aus16Cr, in_rs.aus16K};
        for (int p = 0; p < 16; ++p) {
            for (int c = 0; c < 4; ++c) {
                float f = static_cast<float>(apus[c][p]);
                f = f - kafOffset[c];
                f = f / kafScale[c];
                std::memcpy(out_puc + 16 * p + 4 * c, &f, 4);
            }
        }
    }

    template <EStore keStore>
    static void Store(uint8_t* out_puc, const SVector444& in_rs)
    {
        const __m128 afScale[4] = {_mm_set1_ps(876.0f), _mm_set1_ps(896.0f), _mm_set1_ps(896.0f),
                                   _mm_set1_ps(1023.0f)};
        const __m128 afOffset[4] = {_mm_set1_ps(64.0f), _mm_set1_ps(512.0f), _mm_set1_ps(512.0f),
                                    _mm_setzero_ps()};
        const __m128i* api128[4] = {in_rs.ai128Y, in_rs.ai128Cb, in_rs.ai128Cr, in_rs.ai128K};
        for (int h = 0; h < 2; ++h) {
            for (int q = 0; q < 2; ++q) {
                __m128 af[4];
                for (int c = 0; c < 4; ++c) {
                    const __m128i i128 = q == 0 ? _mm_unpacklo_epi16(api128[c][h], _mm_setzero_si128())
                                                : _mm_unpackhi_epi16(api128[c][h], _mm_setzero_si128());
                    af[c] = _mm_div_ps(_mm_sub_ps(_mm_cvtepi32_ps(i128), afOffset[c]), afScale[c]);
                }
                _MM_TRANSPOSE4_PS(af[0], af[1], af[2], af[3]);
                uint8_t* puc = out_puc + 128 * h + 64 * q;
                for (int p = 0; p < 4; ++p)
                    NQxcKernels::Store<keStore>(puc + 16 * p, _mm_castps_si128(af[p]));
            }
        }
    }
};

}  // namespace NQxcKernels

#endif  // QXBASE_SURFACES_KERNELS_LAYOUTS_H
