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

}  // namespace NQxcCombineLines

#endif  // QXBASE_BUFFERENGINE_KERNELS_QXCCOMBINELINES_H
