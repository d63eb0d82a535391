// v210: six pixels in four 32-bit words, 10-bit fields at bits 0, 10, 20. Read
// in order, the fields of a line are the 4:2:2 components in 2VUY order
// (Cb0 Y0 Cr0 Y1 Cb1 Y2 ...), three to a word; field F of a line lies in
// group F / 12, word (F mod 12) / 3, bits 10 (F mod 3).
//
// Block access (scalar, any pixel pair) and 48-pixel units (SSE2, eight whole
// groups = three canonical blocks) with the same results. A line's pixels
// past its last group (in_uiAvail, a multiple of 6) read as 0 and are never
// written.
#ifndef QXBASE_SURFACES_KERNELS_V210_H
#define QXBASE_SURFACES_KERNELS_V210_H

#include "surfaces/kernels/blocks.h"

namespace NQxcKernels {

const unsigned kuiV210GroupPixels = 6;
const unsigned kuiV210GroupBytes = 16;
const unsigned kuiV210UnitPixels = 48;

// Pixels a v210 line holds: whole groups.
inline unsigned V210LinePixels(unsigned in_uiWidth)
{
    return (in_uiWidth + kuiV210GroupPixels - 1) / kuiV210GroupPixels * kuiV210GroupPixels;
}
// Byte offset of the group that holds a pixel.
inline unsigned V210GroupOffset(unsigned in_uiPixel)
{
    return in_uiPixel / kuiV210GroupPixels * kuiV210GroupBytes;
}

inline unsigned V210FieldOffset(unsigned in_uiField)
{
    return 16 * (in_uiField / 12) + 4 * ((in_uiField % 12) / 3);
}

inline uint16_t V210GetField(const uint8_t* in_pucLine, unsigned in_uiField)
{
    return static_cast<uint16_t>((Read32(in_pucLine + V210FieldOffset(in_uiField)) >> (10 * (in_uiField % 3))) & 0x3ff);
}

// Writing the top field of a word also clears bits 30 and 31, so a group
// whose every field is written holds exactly what a whole-group store writes.
inline void V210SetField(uint8_t* in_pucLine, unsigned in_uiField, uint16_t in_usValue)
{
    uint8_t* puc = in_pucLine + V210FieldOffset(in_uiField);
    const unsigned uiShift = 10 * (in_uiField % 3);
    const uint32_t uiKeep = uiShift == 20 ? 0x000fffffu : ~(0x3ffu << uiShift);
    Write32(puc, (Read32(puc) & uiKeep) | (static_cast<uint32_t>(in_usValue) << uiShift));
}

// The 16 pixels from in_uiPixel (even) of a line; keyless.
inline void V210LoadBlock(const uint8_t* in_pucLine, unsigned in_uiPixel, unsigned in_uiAvail, SScalar422& out_rs)
{
    for (unsigned i = 0; i < 8; ++i) {
        const unsigned uiPair = in_uiPixel / 2 + i;
        const bool bInside = 2 * uiPair < in_uiAvail;
        out_rs.aus16Cb[i] = bInside ? V210GetField(in_pucLine, 4 * uiPair) : 0;
        out_rs.aus16Y[2 * i] = bInside ? V210GetField(in_pucLine, 4 * uiPair + 1) : 0;
        out_rs.aus16Cr[i] = bInside ? V210GetField(in_pucLine, 4 * uiPair + 2) : 0;
        out_rs.aus16Y[2 * i + 1] = bInside ? V210GetField(in_pucLine, 4 * uiPair + 3) : 0;
    }
    FillFullKey(out_rs);
}

inline void V210StoreBlock(uint8_t* in_pucLine, unsigned in_uiPixel, unsigned in_uiAvail, const SScalar422& in_rs)
{
    for (unsigned i = 0; i < 8; ++i) {
        const unsigned uiPair = in_uiPixel / 2 + i;
        if (2 * uiPair >= in_uiAvail)
            break;
        V210SetField(in_pucLine, 4 * uiPair, in_rs.aus16Cb[i]);
        V210SetField(in_pucLine, 4 * uiPair + 1, in_rs.aus16Y[2 * i]);
        V210SetField(in_pucLine, 4 * uiPair + 2, in_rs.aus16Cr[i]);
        V210SetField(in_pucLine, 4 * uiPair + 3, in_rs.aus16Y[2 * i + 1]);
    }
}

// ------------------------------------------------------------- SSE2 units
// 32-bit lane shuffles through the float unit; SSE2 has no two-source
// integer shuffle.
template <int kiImm>
inline __m128i Shuffle2(__m128i in_i128A, __m128i in_i128B)
{
    return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(in_i128A), _mm_castsi128_ps(in_i128B), kiImm));
}

inline void Transpose4x4(__m128i& io_ri128A, __m128i& io_ri128B, __m128i& io_ri128C, __m128i& io_ri128D)
{
    const __m128i i128AB0 = _mm_unpacklo_epi32(io_ri128A, io_ri128B);
    const __m128i i128AB1 = _mm_unpackhi_epi32(io_ri128A, io_ri128B);
    const __m128i i128CD0 = _mm_unpacklo_epi32(io_ri128C, io_ri128D);
    const __m128i i128CD1 = _mm_unpackhi_epi32(io_ri128C, io_ri128D);
    io_ri128A = _mm_unpacklo_epi64(i128AB0, i128CD0);
    io_ri128B = _mm_unpackhi_epi64(i128AB0, i128CD0);
    io_ri128C = _mm_unpacklo_epi64(i128AB1, i128CD1);
    io_ri128D = _mm_unpackhi_epi64(i128AB1, i128CD1);
}

// Three rows of four lanes (a, b, c; one lane a group) to the sequence
// a0 b0 c0 a1 | b1 c1 a2 b2 | c2 a3 b3 c3.
inline void Interleave3x4(__m128i in_i128A, __m128i in_i128B, __m128i in_i128C, __m128i* out_pi128)
{
    const __m128i i128AB0 = _mm_unpacklo_epi32(in_i128A, in_i128B);  // a0 b0 a1 b1
    const __m128i i128AB1 = _mm_unpackhi_epi32(in_i128A, in_i128B);  // a2 b2 a3 b3
    const __m128i i128T0 = Shuffle2<_MM_SHUFFLE(2, 2, 0, 0)>(in_i128C, i128AB0);  // c0 c0 a1 a1
    out_pi128[0] = Shuffle2<_MM_SHUFFLE(2, 0, 1, 0)>(i128AB0, i128T0);
    const __m128i i128T1 = Shuffle2<_MM_SHUFFLE(1, 1, 3, 3)>(i128AB0, in_i128C);  // b1 b1 c1 c1
    out_pi128[1] = Shuffle2<_MM_SHUFFLE(1, 0, 2, 0)>(i128T1, i128AB1);
    const __m128i i128T2 = Shuffle2<_MM_SHUFFLE(3, 2, 3, 2)>(in_i128C, i128AB1);  // c2 c3 a3 b3
    out_pi128[2] = Shuffle2<_MM_SHUFFLE(1, 3, 2, 0)>(i128T2, i128T2);
}

// The inverse of Interleave3x4.
inline void Deinterleave3x4(const __m128i* in_pi128, __m128i& out_ri128A, __m128i& out_ri128B, __m128i& out_ri128C)
{
    const __m128i i128S0 = in_pi128[0], i128S1 = in_pi128[1], i128S2 = in_pi128[2];
    out_ri128A = Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(Shuffle2<_MM_SHUFFLE(3, 3, 0, 0)>(i128S0, i128S0),
                                                   Shuffle2<_MM_SHUFFLE(1, 1, 2, 2)>(i128S1, i128S2));
    out_ri128B = Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(Shuffle2<_MM_SHUFFLE(0, 0, 1, 1)>(i128S0, i128S1),
                                                   Shuffle2<_MM_SHUFFLE(2, 2, 3, 3)>(i128S1, i128S2));
    out_ri128C = Shuffle2<_MM_SHUFFLE(2, 0, 2, 0)>(Shuffle2<_MM_SHUFFLE(1, 1, 2, 2)>(i128S0, i128S1),
                                                   Shuffle2<_MM_SHUFFLE(3, 3, 0, 0)>(i128S2, i128S2));
}

// Four groups (64 bytes) into 12 luma pairs (Y2k | Y2k+1 << 16, three
// vectors) and 12 chroma pairs (Cb | Cr << 16, three vectors), in pixel order.
inline void V210UnpackQuad(const uint8_t* in_puc, __m128i* out_pi128YPairs, __m128i* out_pi128CPairs)
{
    __m128i i128W0 = Load(in_puc), i128W1 = Load(in_puc + 16), i128W2 = Load(in_puc + 32),
            i128W3 = Load(in_puc + 48);
    Transpose4x4(i128W0, i128W1, i128W2, i128W3);  // word j of the four groups
    const __m128i i128M = Splat32(0x3ff);
    const __m128i i128MHigh = Splat32(0x3ff << 16);
    // Word 0: Cb0 Y0 Cr0; word 1: Y1 Cb1 Y2; word 2: Cr1 Y3 Cb2; word 3: Y4 Cr2 Y5.
    const __m128i i128Y01 = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(i128W0, 10), i128M),
                                         _mm_slli_epi32(_mm_and_si128(i128W1, i128M), 16));
    const __m128i i128Y23 = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(i128W1, 20), i128M),
                                         _mm_and_si128(_mm_slli_epi32(i128W2, 6), i128MHigh));
    const __m128i i128Y45 =
        _mm_or_si128(_mm_and_si128(i128W3, i128M), _mm_and_si128(_mm_srli_epi32(i128W3, 4), i128MHigh));
    const __m128i i128C0 =
        _mm_or_si128(_mm_and_si128(i128W0, i128M), _mm_and_si128(_mm_srli_epi32(i128W0, 4), i128MHigh));
    const __m128i i128C1 = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(i128W1, 10), i128M),
                                        _mm_slli_epi32(_mm_and_si128(i128W2, i128M), 16));
    const __m128i i128C2 = _mm_or_si128(_mm_and_si128(_mm_srli_epi32(i128W2, 20), i128M),
                                        _mm_and_si128(_mm_slli_epi32(i128W3, 6), i128MHigh));
    Interleave3x4(i128Y01, i128Y23, i128Y45, out_pi128YPairs);
    Interleave3x4(i128C0, i128C1, i128C2, out_pi128CPairs);
}

template <EStore keStore>
inline void V210PackQuad(const __m128i* in_pi128YPairs, const __m128i* in_pi128CPairs, uint8_t* out_puc)
{
    __m128i i128Y01, i128Y23, i128Y45, i128C0, i128C1, i128C2;
    Deinterleave3x4(in_pi128YPairs, i128Y01, i128Y23, i128Y45);
    Deinterleave3x4(in_pi128CPairs, i128C0, i128C1, i128C2);
    const __m128i i128Low = Splat32(0xffff);
    // Values are at most 10 bits: the halves need no further mask.
    __m128i i128W0 = _mm_or_si128(_mm_or_si128(_mm_and_si128(i128C0, i128Low),
                                               _mm_slli_epi32(_mm_and_si128(i128Y01, i128Low), 10)),
                                  _mm_slli_epi32(_mm_srli_epi32(i128C0, 16), 20));
    __m128i i128W1 = _mm_or_si128(_mm_or_si128(_mm_srli_epi32(i128Y01, 16),
                                               _mm_slli_epi32(_mm_and_si128(i128C1, i128Low), 10)),
                                  _mm_slli_epi32(i128Y23, 20));
    __m128i i128W2 = _mm_or_si128(_mm_or_si128(_mm_srli_epi32(i128C1, 16), _mm_slli_epi32(_mm_srli_epi32(i128Y23, 16), 10)),
                                  _mm_slli_epi32(i128C2, 20));
    __m128i i128W3 = _mm_or_si128(_mm_or_si128(_mm_and_si128(i128Y45, i128Low),
                                               _mm_slli_epi32(_mm_srli_epi32(i128C2, 16), 10)),
                                  _mm_slli_epi32(_mm_srli_epi32(i128Y45, 16), 20));
    Transpose4x4(i128W0, i128W1, i128W2, i128W3);
    Store<keStore>(out_puc, i128W0);
    Store<keStore>(out_puc + 16, i128W1);
    Store<keStore>(out_puc + 32, i128W2);
    Store<keStore>(out_puc + 48, i128W3);
}

// Eight groups (128 bytes, 48 pixels) to three canonical blocks.
inline void V210LoadUnit(const uint8_t* in_puc, SVector422* out_ps)
{
    __m128i ai128Y[6], ai128C[6];
    V210UnpackQuad(in_puc, ai128Y, ai128C);
    V210UnpackQuad(in_puc + 64, ai128Y + 3, ai128C + 3);
    for (int b = 0; b < 3; ++b) {
        out_ps[b].ai128Y[0] = ai128Y[2 * b];
        out_ps[b].ai128Y[1] = ai128Y[2 * b + 1];
        out_ps[b].i128Cb = VEvenLanes(ai128C[2 * b], ai128C[2 * b + 1]);
        out_ps[b].i128Cr = VOddLanes(ai128C[2 * b], ai128C[2 * b + 1]);
        FillFullKey(out_ps[b]);
    }
}

template <EStore keStore>
inline void V210StoreUnit(uint8_t* out_puc, const SVector422* in_ps)
{
    __m128i ai128Y[6], ai128C[6];
    for (int b = 0; b < 3; ++b) {
        ai128Y[2 * b] = in_ps[b].ai128Y[0];
        ai128Y[2 * b + 1] = in_ps[b].ai128Y[1];
        ai128C[2 * b] = _mm_unpacklo_epi16(in_ps[b].i128Cb, in_ps[b].i128Cr);
        ai128C[2 * b + 1] = _mm_unpackhi_epi16(in_ps[b].i128Cb, in_ps[b].i128Cr);
    }
    V210PackQuad<keStore>(ai128Y, ai128C, out_puc);
    V210PackQuad<keStore>(ai128Y + 3, ai128C + 3, out_puc + 64);
}

// ------------------------------------------------------------ v210 fills
// The groups of a fill of in_uiPixels pixels with one colour: whole groups,
// and for a width that is not a multiple of 6 a last group that holds
// exactly the fields the remaining k pixels own (the first 2k fields in
// stream order; for k = 1, Cb and Y but not Cr), the others zero. The
// components are shifted and added as they are: values above 10 bits spill
// into the neighbouring field.
struct SV210Fill {
    SV210Fill(const SQxcYuvaPixel& in_rsColor, unsigned in_uiPixels)
        : uiWholeGroups(in_uiPixels / kuiV210GroupPixels), bPartial(in_uiPixels % kuiV210GroupPixels != 0)
    {
        const uint32_t auiStream[3] = {in_rsColor.Cb, in_rsColor.Y, in_rsColor.Cr};
        const uint32_t uiY = in_rsColor.Y;
        const unsigned uiPartialFields = 2 * (in_uiPixels % kuiV210GroupPixels);
        for (unsigned uiWord = 0; uiWord < 4; ++uiWord) {
            auiWhole[uiWord] = 0;
            auiPartial[uiWord] = 0;
        }
        for (unsigned uiField = 0; uiField < 12; ++uiField) {
            // Odd fields are luma; even ones cycle Cb, Cr, Cb ... as 0 2 0 2.
            const uint32_t uiValue = uiField % 2 == 1 ? uiY : auiStream[(uiField / 2) % 2 == 0 ? 0 : 2];
            const uint32_t uiShifted = uiValue << (10 * (uiField % 3));
            auiWhole[uiField / 3] += uiShifted;
            if (uiField < uiPartialFields)
                auiPartial[uiField / 3] += uiShifted;
        }
    }

    uint32_t auiWhole[4];
    uint32_t auiPartial[4];
    unsigned uiWholeGroups;
    bool bPartial;
};

// Writes the fill's groups on in_uiLines lines from in_pucFirst.
inline void V210FillLines(CScalar, const SV210Fill& in_rs, uint8_t* in_pucFirst, long in_lPitch, unsigned in_uiLines,
                          EStore)
{
    for (unsigned uiLine = 0; uiLine < in_uiLines; ++uiLine) {
        uint8_t* puc = in_pucFirst + static_cast<long>(uiLine) * in_lPitch;
        for (unsigned g = 0; g < in_rs.uiWholeGroups; ++g)
            std::memcpy(puc + kuiV210GroupBytes * g, in_rs.auiWhole, kuiV210GroupBytes);
        if (in_rs.bPartial)
            std::memcpy(puc + kuiV210GroupBytes * in_rs.uiWholeGroups, in_rs.auiPartial, kuiV210GroupBytes);
    }
}

template <EStore keStore>
inline void V210FillLinesSse2(const SV210Fill& in_rs, uint8_t* in_pucFirst, long in_lPitch, unsigned in_uiLines)
{
    const __m128i i128Whole = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_rs.auiWhole));
    const __m128i i128Partial = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_rs.auiPartial));
    for (unsigned uiLine = 0; uiLine < in_uiLines; ++uiLine) {
        uint8_t* puc = in_pucFirst + static_cast<long>(uiLine) * in_lPitch;
        for (unsigned g = 0; g < in_rs.uiWholeGroups; ++g)
            Store<keStore>(puc + kuiV210GroupBytes * g, i128Whole);
        if (in_rs.bPartial)
            Store<keStore>(puc + kuiV210GroupBytes * in_rs.uiWholeGroups, i128Partial);
    }
    FinishStores<keStore>();
}

inline void V210FillLines(CSse2, const SV210Fill& in_rs, uint8_t* in_pucFirst, long in_lPitch, unsigned in_uiLines,
                          EStore in_eStore)
{
    if (in_eStore == keStoreStream)
        V210FillLinesSse2<keStoreStream>(in_rs, in_pucFirst, in_lPitch, in_uiLines);
    else
        V210FillLinesSse2<keStoreCached>(in_rs, in_pucFirst, in_lPitch, in_uiLines);
}

}  // namespace NQxcKernels

#endif  // QXBASE_SURFACES_KERNELS_V210_H
