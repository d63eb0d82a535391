// Line driver and chunk kernels of the video+key combine and extract. Private
// to the library; the tests include it to run the scalar references through
// the same driver.
//
// A chunk is 16 fill bytes (8 YUYV pixels) with 16 key bytes on one side and
// 24 combined bytes (the 16 fill bytes, then the 8 keys) on the other; for
// v210 it is 32 fill bytes and 32 key bytes (12 pixels) against 48 combined
// bytes.
#ifndef QXBASE_BUFFERENGINE_KERNELS_QXCCOMBINELINES_H
#define QXBASE_BUFFERENGINE_KERNELS_QXCCOMBINELINES_H

#include <emmintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace NQxcCombineLines {

// Bytes of one line available from a pointer: the chunks and the skip the
// caller gave, which together are the line's pitch.
inline int64_t LineBytes(int in_iChunks, int in_iChunkBytes, int in_iSkip)
{
    return int64_t(in_iChunks) * in_iChunkBytes + in_iSkip;
}

// Chunks of a line that lie wholly inside the line.
inline int WholeChunks(int in_iChunks, int in_iChunkBytes, int in_iSkip)
{
    const int64_t i64Bytes = LineBytes(in_iChunks, in_iChunkBytes, in_iSkip);
    if (i64Bytes <= 0) return 0;
    return int(std::min<int64_t>(in_iChunks, i64Bytes / in_iChunkBytes));
}

inline int BytesOfChunk(int64_t in_i64LineBytes, int in_iChunk, int in_iChunkBytes)
{
    const int64_t i64Left = in_i64LineBytes - int64_t(in_iChunk) * in_iChunkBytes;
    return int(std::max<int64_t>(0, std::min<int64_t>(in_iChunkBytes, i64Left)));
}

// A chunk wholly outside its line is never touched, not even by an empty
// copy from an address past the buffer.
inline void CopyBytes(unsigned char* out_pucTo, const unsigned char* in_pucFrom, int in_iBytes)
{
    if (in_iBytes > 0) std::memcpy(out_pucTo, in_pucFrom, size_t(in_iBytes));
}

// Runs a chunk function over lines x chunks. Every line starts at its own
// line x pitch (pitch = chunk bytes x chunks + skip), and a chunk that would
// reach past the end of any of the three lines (a negative skip) is done
// through scratch copies: only the bytes inside each line are read or
// written. kCombine tells which side is read: fill and key (a, b) for a
// combine, the combined line (c) for an extract.
template <bool kCombine, int kFillBytes, int kCombinedBytes, class TChunk>
void RunLines(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines, int in_iChunks,
              int in_iSkipC, int in_iSkipA, int in_iSkipB, TChunk in_fnChunk)
{
    if (in_iLines < 1 || in_iChunks < 1) return;
    const int64_t i64LineA = LineBytes(in_iChunks, kFillBytes, in_iSkipA);
    const int64_t i64LineB = LineBytes(in_iChunks, kFillBytes, in_iSkipB);
    const int64_t i64LineC = LineBytes(in_iChunks, kCombinedBytes, in_iSkipC);
    const int iWhole = std::min({WholeChunks(in_iChunks, kFillBytes, in_iSkipA),
                                 WholeChunks(in_iChunks, kFillBytes, in_iSkipB),
                                 WholeChunks(in_iChunks, kCombinedBytes, in_iSkipC)});
    for (int iLine = 0; iLine < in_iLines; ++iLine) {
        for (int i = 0; i < iWhole; ++i)
            in_fnChunk(a + i * kFillBytes, b + i * kFillBytes, c + i * kCombinedBytes);
        for (int i = iWhole; i < in_iChunks; ++i) {
            alignas(16) unsigned char aucA[kFillBytes] = {};
            alignas(16) unsigned char aucB[kFillBytes] = {};
            alignas(16) unsigned char aucC[kCombinedBytes] = {};
            const int iBytesA = BytesOfChunk(i64LineA, i, kFillBytes);
            const int iBytesB = BytesOfChunk(i64LineB, i, kFillBytes);
            const int iBytesC = BytesOfChunk(i64LineC, i, kCombinedBytes);
            unsigned char* pucA = a + int64_t(i) * kFillBytes;
            unsigned char* pucB = b + int64_t(i) * kFillBytes;
            unsigned char* pucC = c + int64_t(i) * kCombinedBytes;
            if (kCombine) {
                CopyBytes(aucA, pucA, iBytesA);
                CopyBytes(aucB, pucB, iBytesB);
                in_fnChunk(aucA, aucB, aucC);
                CopyBytes(pucC, aucC, iBytesC);
            } else {
                CopyBytes(aucC, pucC, iBytesC);
                in_fnChunk(aucA, aucB, aucC);
                CopyBytes(pucA, aucA, iBytesA);
                CopyBytes(pucB, aucB, iBytesB);
            }
        }
        a += i64LineA;
        b += i64LineB;
        c += i64LineC;
    }
}

// --- 8-bit: scalar references ---------------------------------------------

// Key luma to alpha: black (16 and below) is transparent, white (236 and
// above) opaque, and the video range in between is stretched.
inline unsigned char ScaleKeyToAlpha(unsigned char in_ucLuma)
{
    if (in_ucLuma <= 16) return 0;
    if (in_ucLuma >= 236) return 255;
    return static_cast<unsigned char>((in_ucLuma - 16) * 255 / 219);
}

template <bool kScale>
inline void CombineChunkCPP(const unsigned char* in_pucFill, const unsigned char* in_pucKey,
                            unsigned char* out_pucCombined)
{
    std::memcpy(out_pucCombined, in_pucFill, 16);
    for (int i = 0; i < 8; ++i) {
        const unsigned char ucLuma = in_pucKey[2 * i];
        out_pucCombined[16 + i] = kScale ? ScaleKeyToAlpha(ucLuma) : ucLuma;
    }
}

inline void ExtractChunkCPP(unsigned char* out_pucFill, unsigned char* out_pucKey,
                            const unsigned char* in_pucCombined)
{
    std::memcpy(out_pucFill, in_pucCombined, 16);
    for (int i = 0; i < 8; ++i) {
        out_pucKey[2 * i] = in_pucCombined[16 + i];
        out_pucKey[2 * i + 1] = 0x80;
    }
}

// --- 8-bit: SSE2 ----------------------------------------------------------

// The eight lumas of a YUYV chunk, as 16-bit lanes.
inline __m128i LumaWords(const unsigned char* in_pucKey)
{
    return _mm_and_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in_pucKey)),
                         _mm_set1_epi16(0x00FF));
}

template <bool kScale>
inline void CombineChunkSSE2(const unsigned char* in_pucFill, const unsigned char* in_pucKey,
                             unsigned char* out_pucCombined)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_pucCombined),
                     _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_pucFill)));
    __m128i xLuma = LumaWords(in_pucKey);
    if (kScale) {
        // (Y - 16) clamped to 0..219, then x 255 / 219 as a multiply-high:
        // (2d x 38155) >> 16 equals the division for every d in 0..219.
        const __m128i xOffset = _mm_subs_epu16(xLuma, _mm_set1_epi16(16));
        const __m128i xClamped = _mm_min_epi16(xOffset, _mm_set1_epi16(219));
        xLuma = _mm_mulhi_epu16(_mm_add_epi16(xClamped, xClamped), _mm_set1_epi16(int16_t(38155)));
    }
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out_pucCombined + 16), _mm_packus_epi16(xLuma, xLuma));
}

inline void ExtractChunkSSE2(unsigned char* out_pucFill, unsigned char* out_pucKey,
                             const unsigned char* in_pucCombined)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_pucFill),
                     _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_pucCombined)));
    const __m128i xAlpha = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in_pucCombined + 16));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_pucKey),
                     _mm_unpacklo_epi8(xAlpha, _mm_set1_epi8(char(0x80))));
}

// --- v210: scalar references ---------------------------------------------
//
// A v210 group holds 6 pixels in 4 words with fields at bits 0, 10, 20:
// (Cb0 Y0 Cr0) (Y1 Cb1 Y2) (Cr1 Y3 Cb2) (Y4 Cr2 Y5). A combined 10-bit pixel
// is one word (Y << 20) | (C << 10) | K, C being Cb for an even pixel and Cr
// for an odd one: the 10-bit 4:2:2:4 layout of the block surfaces.

constexpr uint32_t kuiField = 0x3FF;
constexpr uint32_t kuiKeyChroma = 512;  // neutral chroma of the grey key

inline uint32_t LoadWord(const unsigned char* in_puc)
{
    uint32_t ui;
    std::memcpy(&ui, in_puc, 4);
    return ui;
}

inline void StoreWord(unsigned char* out_puc, uint32_t in_ui) { std::memcpy(out_puc, &in_ui, 4); }

// Luma and pixel-order chroma of the 12 pixels of 32 v210 bytes.
inline void UnpackV210(const unsigned char* in_puc, uint16_t out_ausLuma[12], uint16_t out_ausChroma[12])
{
    for (int g = 0; g < 2; ++g) {
        uint16_t aus[12];
        for (int w = 0; w < 4; ++w) {
            const uint32_t ui = LoadWord(in_puc + 16 * g + 4 * w);
            for (int f = 0; f < 3; ++f) aus[3 * w + f] = uint16_t((ui >> (10 * f)) & kuiField);
        }
        // Field order: Cb0 Y0 Cr0 Y1 Cb1 Y2 Cr1 Y3 Cb2 Y4 Cr2 Y5.
        for (int i = 0; i < 6; ++i) {
            out_ausLuma[6 * g + i] = aus[2 * i + 1];
            out_ausChroma[6 * g + i] = aus[2 * i];
        }
    }
}

inline void PackV210(const uint16_t in_ausLuma[12], const uint16_t in_ausChroma[12], unsigned char* out_puc)
{
    for (int g = 0; g < 2; ++g) {
        uint32_t aui[12];
        for (int i = 0; i < 6; ++i) {
            aui[2 * i] = in_ausChroma[6 * g + i];
            aui[2 * i + 1] = in_ausLuma[6 * g + i];
        }
        for (int w = 0; w < 4; ++w)
            StoreWord(out_puc + 16 * g + 4 * w, aui[3 * w] | (aui[3 * w + 1] << 10) | (aui[3 * w + 2] << 20));
    }
}

// The 10-bit counterpart of ScaleKeyToAlpha: black (64 and below) is
// transparent, white (940 and above) opaque, the video range in between is
// stretched: floor((Y - 64) x 1023 / 876).
inline uint16_t ScaleKeyToAlpha10(uint16_t in_usLuma)
{
    if (in_usLuma <= 64) return 0;
    if (in_usLuma >= 940) return 1023;
    return uint16_t((in_usLuma - 64) * 1023 / 876);
}

template <bool kScale>
inline void CombineChunkV210CPP(const unsigned char* in_pucFill, const unsigned char* in_pucKey,
                                unsigned char* out_pucCombined)
{
    uint16_t ausLuma[12], ausChroma[12], ausKey[12], ausKeyChroma[12];
    UnpackV210(in_pucFill, ausLuma, ausChroma);
    UnpackV210(in_pucKey, ausKey, ausKeyChroma);
    for (int i = 0; i < 12; ++i) {
        const uint32_t uiKey = kScale ? ScaleKeyToAlpha10(ausKey[i]) : ausKey[i];
        StoreWord(out_pucCombined + 4 * i, (uint32_t(ausLuma[i]) << 20) | (uint32_t(ausChroma[i]) << 10) | uiKey);
    }
}

inline void ExtractChunkV210CPP(unsigned char* out_pucFill, unsigned char* out_pucKey,
                                const unsigned char* in_pucCombined)
{
    uint16_t ausLuma[12], ausChroma[12], ausKey[12], ausKeyChroma[12];
    for (int i = 0; i < 12; ++i) {
        const uint32_t ui = LoadWord(in_pucCombined + 4 * i);
        ausLuma[i] = uint16_t((ui >> 20) & kuiField);
        ausChroma[i] = uint16_t((ui >> 10) & kuiField);
        ausKey[i] = uint16_t(ui & kuiField);
        ausKeyChroma[i] = kuiKeyChroma;
    }
    PackV210(ausLuma, ausChroma, out_pucFill);
    PackV210(ausKey, ausKeyChroma, out_pucKey);
}

// --- v210: SSE2 -----------------------------------------------------------
//
// A group's four words split into three field vectors: A (bits 0..9) = Cb0
// Y1 Cr1 Y4, B (bits 10..19) = Y0 Cb1 Y3 Cr2, C (bits 20..29) = Cr0 Y2 Cb2
// Y5. Pixels 0..3 take their luma from B0 A1 C1 B2 and chroma from A0 C0 B1
// A2; pixels 4 and 5 luma from A3 C3 and chroma from C2 B3.

struct SFields {
    __m128i xA, xB, xC;
};

inline SFields SplitFields(__m128i in_xWords)
{
    const __m128i xMask = _mm_set1_epi32(int(kuiField));
    return {_mm_and_si128(in_xWords, xMask), _mm_and_si128(_mm_srli_epi32(in_xWords, 10), xMask),
            _mm_and_si128(_mm_srli_epi32(in_xWords, 20), xMask)};
}

// Lane masks: all ones in the listed 32-bit lanes.
inline __m128i Lanes(bool in_b0, bool in_b1, bool in_b2, bool in_b3)
{
    return _mm_set_epi32(in_b3 ? -1 : 0, in_b2 ? -1 : 0, in_b1 ? -1 : 0, in_b0 ? -1 : 0);
}

inline __m128i Pick(__m128i in_xValues, __m128i in_xMask) { return _mm_and_si128(in_xValues, in_xMask); }

// Luma (or a key picture's luma) of pixels 0..3 and, in lanes 0 and 1, of
// pixels 4 and 5.
inline void GatherLuma(const SFields& in_rs, __m128i& out_rx03, __m128i& out_rx45)
{
    out_rx03 = _mm_or_si128(_mm_or_si128(Pick(_mm_shuffle_epi32(in_rs.xB, _MM_SHUFFLE(2, 0, 0, 0)), Lanes(1, 0, 0, 1)),
                                         Pick(in_rs.xA, Lanes(0, 1, 0, 0))),
                            Pick(_mm_shuffle_epi32(in_rs.xC, _MM_SHUFFLE(0, 1, 0, 0)), Lanes(0, 0, 1, 0)));
    out_rx45 = _mm_or_si128(Pick(_mm_shuffle_epi32(in_rs.xA, _MM_SHUFFLE(0, 0, 0, 3)), Lanes(1, 0, 0, 0)),
                            Pick(_mm_shuffle_epi32(in_rs.xC, _MM_SHUFFLE(0, 0, 3, 0)), Lanes(0, 1, 0, 0)));
}

inline void GatherChroma(const SFields& in_rs, __m128i& out_rx03, __m128i& out_rx45)
{
    out_rx03 = _mm_or_si128(_mm_or_si128(Pick(in_rs.xA, Lanes(1, 0, 0, 0)),
                                         Pick(_mm_shuffle_epi32(in_rs.xC, _MM_SHUFFLE(0, 0, 0, 0)), Lanes(0, 1, 0, 0))),
                            _mm_or_si128(Pick(_mm_shuffle_epi32(in_rs.xB, _MM_SHUFFLE(0, 1, 0, 0)), Lanes(0, 0, 1, 0)),
                                         Pick(_mm_shuffle_epi32(in_rs.xA, _MM_SHUFFLE(2, 0, 0, 0)), Lanes(0, 0, 0, 1))));
    out_rx45 = _mm_or_si128(Pick(_mm_shuffle_epi32(in_rs.xC, _MM_SHUFFLE(0, 0, 0, 2)), Lanes(1, 0, 0, 0)),
                            Pick(_mm_shuffle_epi32(in_rs.xB, _MM_SHUFFLE(0, 0, 3, 0)), Lanes(0, 1, 0, 0)));
}

inline __m128i CombinedWords(__m128i in_xLuma, __m128i in_xChroma, __m128i in_xKey)
{
    return _mm_or_si128(_mm_or_si128(_mm_slli_epi32(in_xLuma, 20), _mm_slli_epi32(in_xChroma, 10)), in_xKey);
}

// floor((Y - 64) x 1023 / 876) on clamped 32-bit lanes, as d + floor(49 d /
// 292) with d = Y - 64 in 0..876; (49 d x 57457) >> 24 equals the division
// for every such d.
inline __m128i ScaleKeyToAlpha10SSE2(__m128i in_xLuma)
{
    const __m128i xWords = _mm_packs_epi32(in_xLuma, in_xLuma);
    const __m128i xOffset = _mm_min_epi16(_mm_subs_epu16(xWords, _mm_set1_epi16(64)), _mm_set1_epi16(876));
    const __m128i xFraction =
        _mm_srli_epi16(_mm_mulhi_epu16(_mm_mullo_epi16(xOffset, _mm_set1_epi16(49)), _mm_set1_epi16(int16_t(57457))), 8);
    return _mm_unpacklo_epi16(_mm_add_epi16(xOffset, xFraction), _mm_setzero_si128());
}

// One group's six combined pixels: lanes 0..3 and lanes 0..1.
template <bool kScale>
inline void CombineGroupSSE2(const unsigned char* in_pucFill, const unsigned char* in_pucKey, __m128i& out_rx03,
                             __m128i& out_rx45)
{
    const SFields sFill = SplitFields(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in_pucFill)));
    const SFields sKey = SplitFields(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in_pucKey)));
    __m128i xLuma03, xLuma45, xChroma03, xChroma45, xKey03, xKey45;
    GatherLuma(sFill, xLuma03, xLuma45);
    GatherChroma(sFill, xChroma03, xChroma45);
    GatherLuma(sKey, xKey03, xKey45);
    if (kScale) {
        xKey03 = ScaleKeyToAlpha10SSE2(xKey03);
        xKey45 = ScaleKeyToAlpha10SSE2(xKey45);
    }
    out_rx03 = CombinedWords(xLuma03, xChroma03, xKey03);
    out_rx45 = CombinedWords(xLuma45, xChroma45, xKey45);
}

template <bool kScale>
inline void CombineChunkV210SSE2(const unsigned char* in_pucFill, const unsigned char* in_pucKey,
                                 unsigned char* out_pucCombined)
{
    __m128i xFirst03, xFirst45, xSecond03, xSecond45;
    CombineGroupSSE2<kScale>(in_pucFill, in_pucKey, xFirst03, xFirst45);
    CombineGroupSSE2<kScale>(in_pucFill + 16, in_pucKey + 16, xSecond03, xSecond45);
    __m128i* px = reinterpret_cast<__m128i*>(out_pucCombined);
    _mm_storeu_si128(px, xFirst03);
    _mm_storeu_si128(px + 1, _mm_unpacklo_epi64(xFirst45, xSecond03));
    _mm_storeu_si128(px + 2, _mm_unpacklo_epi64(_mm_unpackhi_epi64(xSecond03, xSecond03), xSecond45));
}

// The v210 words of one group from the luma and chroma of its six pixels
// (pixels 0..3 in lanes 0..3, pixels 4 and 5 in lanes 0 and 1): fields A =
// C0 Y1 C3 Y4, B = Y0 C2 Y3 C5, C = C1 Y2 C4 Y5.
inline __m128i PackGroupSSE2(__m128i in_xLuma03, __m128i in_xLuma45, __m128i in_xChroma03, __m128i in_xChroma45)
{
    const __m128i xA = _mm_or_si128(
        _mm_or_si128(Pick(in_xChroma03, Lanes(1, 0, 0, 0)), Pick(in_xLuma03, Lanes(0, 1, 0, 0))),
        _mm_or_si128(Pick(_mm_shuffle_epi32(in_xChroma03, _MM_SHUFFLE(0, 3, 0, 0)), Lanes(0, 0, 1, 0)),
                     Pick(_mm_shuffle_epi32(in_xLuma45, _MM_SHUFFLE(0, 0, 0, 0)), Lanes(0, 0, 0, 1))));
    const __m128i xB = _mm_or_si128(
        _mm_or_si128(Pick(in_xLuma03, Lanes(1, 0, 0, 0)),
                     Pick(_mm_shuffle_epi32(in_xChroma03, _MM_SHUFFLE(0, 0, 2, 0)), Lanes(0, 1, 0, 0))),
        _mm_or_si128(Pick(_mm_shuffle_epi32(in_xLuma03, _MM_SHUFFLE(0, 3, 0, 0)), Lanes(0, 0, 1, 0)),
                     Pick(_mm_shuffle_epi32(in_xChroma45, _MM_SHUFFLE(1, 0, 0, 0)), Lanes(0, 0, 0, 1))));
    const __m128i xC = _mm_or_si128(
        _mm_or_si128(Pick(_mm_shuffle_epi32(in_xChroma03, _MM_SHUFFLE(0, 0, 0, 1)), Lanes(1, 0, 0, 0)),
                     Pick(_mm_shuffle_epi32(in_xLuma03, _MM_SHUFFLE(0, 0, 2, 0)), Lanes(0, 1, 0, 0))),
        _mm_or_si128(Pick(_mm_shuffle_epi32(in_xChroma45, _MM_SHUFFLE(0, 0, 0, 0)), Lanes(0, 0, 1, 0)),
                     Pick(_mm_shuffle_epi32(in_xLuma45, _MM_SHUFFLE(1, 0, 0, 0)), Lanes(0, 0, 0, 1))));
    return _mm_or_si128(_mm_or_si128(xA, _mm_slli_epi32(xB, 10)), _mm_slli_epi32(xC, 20));
}

inline void ExtractGroupSSE2(__m128i in_x03, __m128i in_x45, unsigned char* out_pucFill, unsigned char* out_pucKey)
{
    const __m128i xMask = _mm_set1_epi32(int(kuiField));
    const __m128i xChromaKey = _mm_set1_epi32(int(kuiKeyChroma));
    auto fnLuma = [&](__m128i x) { return _mm_and_si128(_mm_srli_epi32(x, 20), xMask); };
    auto fnChroma = [&](__m128i x) { return _mm_and_si128(_mm_srli_epi32(x, 10), xMask); };
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_pucFill),
                     PackGroupSSE2(fnLuma(in_x03), fnLuma(in_x45), fnChroma(in_x03), fnChroma(in_x45)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_pucKey),
                     PackGroupSSE2(_mm_and_si128(in_x03, xMask), _mm_and_si128(in_x45, xMask), xChromaKey, xChromaKey));
}

inline void ExtractChunkV210SSE2(unsigned char* out_pucFill, unsigned char* out_pucKey,
                                 const unsigned char* in_pucCombined)
{
    const __m128i* px = reinterpret_cast<const __m128i*>(in_pucCombined);
    const __m128i x0 = _mm_loadu_si128(px), x1 = _mm_loadu_si128(px + 1), x2 = _mm_loadu_si128(px + 2);
    // Pixels 0..5 of the first group: x0 and the low half of x1; of the
    // second: the high half of x1, then x2.
    ExtractGroupSSE2(x0, x1, out_pucFill, out_pucKey);
    ExtractGroupSSE2(_mm_unpacklo_epi64(_mm_unpackhi_epi64(x1, x1), x2), _mm_unpackhi_epi64(x2, x2), out_pucFill + 16,
                     out_pucKey + 16);
}

}  // namespace NQxcCombineLines

#endif  // QXBASE_BUFFERENGINE_KERNELS_QXCCOMBINELINES_H
