// The canonical 16-pixel block every block kernel passes through, in its two
// forms: plain arrays (the scalar reference) and SSE2 registers. Values are
// 10-bit (0 to 1023) in 16-bit lanes; every load guarantees that bound and
// every transform keeps it, so stores never clamp above 1023.
//
// The 4:2:2 form is exactly the memory block of the 16-bit 4:2:2:4 formats
// (Y[16], Cb[8], Cr[8], K[16]); the 4:4:4 form carries one chroma pair per
// pixel.
#ifndef QXBASE_SURFACES_KERNELS_BLOCKS_H
#define QXBASE_SURFACES_KERNELS_BLOCKS_H

#include <qxbase/qxcsurface.h>

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

// One call of a block kernel.
struct SQxcBlockJob {
    const uint8_t* pucSource;       // the source's current position
    long lSourcePitch;
    unsigned uiSourceFirstPixel;    // 16 x the source's block cursor
    unsigned uiSourceLinePixels;    // pixels a source line holds (v210: whole groups)
    uint8_t* pucDestination;        // the destination's current position
    long lDestinationPitch;
    unsigned uiDestinationFirstPixel;
    unsigned uiDestinationLinePixels;
    unsigned uiBlocks;
    unsigned uiLines;
    bool bSourceKeyPresent;
    bool bCachedStores;
    SQxcYuvaPixel sColor;           // fills
    const SQxcRgbCoeff* psCoeff;    // RGB sources
    // Buffer kernels (pixel-addressed): pucSource and pucDestination are the
    // starts of the cursors' lines, the first pixels say where the call
    // starts, and uiPixels how many pixels a line converts.
    unsigned uiPixels;
    int iRgbRange;                          // the RGB side's colour range
    const SQxcRgbToRgbCoeff* psRangeCoeff;  // video/graphics level conversion
    SQxcRGBAPixel_16bits sRgbColor;         // RGB fills, at the destination's depth
};


namespace NQxcKernels {

const uint16_t kusMax10 = 1023;
const uint16_t kusFullKey = 1023;

// ----------------------------------------------------------- scalar form
struct SScalar422 {
    uint16_t aus16Y[16];
    uint16_t aus16Cb[8];
    uint16_t aus16Cr[8];
    uint16_t aus16K[16];
};

struct SScalar444 {
    uint16_t aus16Y[16];
    uint16_t aus16Cb[16];
    uint16_t aus16Cr[16];
    uint16_t aus16K[16];
};

// ------------------------------------------------------------- SSE2 form
struct SVector422 {
    __m128i ai128Y[2];
    __m128i i128Cb;
    __m128i i128Cr;
    __m128i ai128K[2];
};

struct SVector444 {
    __m128i ai128Y[2];
    __m128i ai128Cb[2];
    __m128i ai128Cr[2];
    __m128i ai128K[2];
};

// Backend tags: a kernel is one composition instantiated over either.
struct CScalar {
    typedef SScalar422 T422;
    typedef SScalar444 T444;
};
struct CSse2 {
    typedef SVector422 T422;
    typedef SVector444 T444;
};

// How a kernel writes a 16-byte unit of its destination.
enum EStore {
    keStoreStream,     // non-temporal, aligned (the engine's destinations)
    keStoreCached,     // ordinary, aligned (cached-stores surfaces)
    keStoreUnaligned   // ordinary, any address (line helpers given raw memory)
};

// ------------------------------------------------------- scalar helpers
inline uint16_t Read16(const uint8_t* in_puc)
{
    uint16_t us;
    std::memcpy(&us, in_puc, 2);
    return us;
}
inline void Write16(uint8_t* in_puc, uint16_t in_us) { std::memcpy(in_puc, &in_us, 2); }
inline uint32_t Read32(const uint8_t* in_puc)
{
    uint32_t ui;
    std::memcpy(&ui, in_puc, 4);
    return ui;
}
inline void Write32(uint8_t* in_puc, uint32_t in_ui) { std::memcpy(in_puc, &in_ui, 4); }

inline uint16_t Min10(uint32_t in_ui) { return static_cast<uint16_t>(in_ui > kusMax10 ? kusMax10 : in_ui); }
// 10 -> 8 bits: truncation, clamped to 255.
inline uint8_t To8(uint32_t in_ui)
{
    const uint32_t ui = in_ui >> 2;
    return static_cast<uint8_t>(ui > 255 ? 255 : ui);
}
// 8 -> 10 bits of Y and chroma; of the key, so that 255 becomes 1023.
inline uint16_t From8(uint8_t in_uc) { return static_cast<uint16_t>(in_uc << 2); }
inline uint16_t KeyFrom8(uint8_t in_uc) { return static_cast<uint16_t>((in_uc << 2) | (in_uc >> 6)); }

// Arithmetic right shift of a signed value (floor division by a power of 2),
// spelled out so the reference does not lean on implementation-defined
// behaviour.
inline int32_t FloorShift(int32_t in_i, int in_iShift)
{
    return in_i >= 0 ? in_i >> in_iShift : -(((-in_i) + (1 << in_iShift) - 1) >> in_iShift);
}
inline int32_t Clamp(int32_t in_i, int32_t in_iLow, int32_t in_iHigh)
{
    return in_i < in_iLow ? in_iLow : (in_i > in_iHigh ? in_iHigh : in_i);
}

// --------------------------------------------------------- SSE2 helpers
inline __m128i Load(const uint8_t* in_puc) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_puc)); }
inline __m128i Load8Bytes(const uint8_t* in_puc)
{
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in_puc));
}

template <EStore keStore>
inline void Store(uint8_t* in_puc, __m128i in_i128)
{
    __m128i* p = reinterpret_cast<__m128i*>(in_puc);
    if (keStore == keStoreStream)
        _mm_stream_si128(p, in_i128);
    else if (keStore == keStoreCached)
        _mm_store_si128(p, in_i128);
    else
        _mm_storeu_si128(p, in_i128);
}

// Stores the low 8 bytes (a non-temporal 64-bit store on the streaming path).
template <EStore keStore>
inline void Store8Bytes(uint8_t* in_puc, __m128i in_i128)
{
    if (keStore == keStoreStream)
        _mm_stream_si64(reinterpret_cast<long long*>(in_puc), _mm_cvtsi128_si64(in_i128));
    else
        _mm_storel_epi64(reinterpret_cast<__m128i*>(in_puc), in_i128);
}

// Orders the non-temporal stores of a kernel before whatever follows it.
template <EStore keStore>
inline void FinishStores()
{
    if (keStore == keStoreStream)
        _mm_sfence();
}

inline __m128i Splat16(int in_i) { return _mm_set1_epi16(static_cast<short>(in_i)); }
inline __m128i Splat32(int in_i) { return _mm_set1_epi32(in_i); }

// Unsigned 16-bit min against 1023 (SSE2 has no unsigned min).
inline __m128i VMin10(__m128i in_i128)
{
    return _mm_sub_epi16(in_i128, _mm_subs_epu16(in_i128, Splat16(kusMax10)));
}
// 8 -> 10 bits, per 16-bit lane.
inline __m128i VFrom8(__m128i in_i128) { return _mm_slli_epi16(in_i128, 2); }
inline __m128i VKeyFrom8(__m128i in_i128)
{
    return _mm_or_si128(_mm_slli_epi16(in_i128, 2), _mm_srli_epi16(in_i128, 6));
}
// The even 16-bit lanes of two vectors (values below 32768), in order.
inline __m128i VEvenLanes(__m128i in_i128A, __m128i in_i128B)
{
    const __m128i i128Low = Splat32(0xffff);
    return _mm_packs_epi32(_mm_and_si128(in_i128A, i128Low), _mm_and_si128(in_i128B, i128Low));
}
// The odd 16-bit lanes of two vectors (values below 32768), in order.
inline __m128i VOddLanes(__m128i in_i128A, __m128i in_i128B)
{
    return _mm_packs_epi32(_mm_srli_epi32(in_i128A, 16), _mm_srli_epi32(in_i128B, 16));
}

// A keyless format reads as full key.
inline void FillFullKey(SScalar422& out_rs)
{
    for (uint16_t& us : out_rs.aus16K)
        us = kusFullKey;
}
inline void FillFullKey(SVector422& out_rs) { out_rs.ai128K[0] = out_rs.ai128K[1] = Splat16(kusFullKey); }

// ------------------------------------------------- moving between forms
inline void ToVector(const SScalar422& in_rs, SVector422& out_rs)
{
    out_rs.ai128Y[0] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_rs.aus16Y));
    out_rs.ai128Y[1] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_rs.aus16Y + 8));
    out_rs.i128Cb = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_rs.aus16Cb));
    out_rs.i128Cr = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_rs.aus16Cr));
    out_rs.ai128K[0] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_rs.aus16K));
    out_rs.ai128K[1] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in_rs.aus16K + 8));
}

inline void ToScalar(const SVector422& in_rs, SScalar422& out_rs)
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_rs.aus16Y), in_rs.ai128Y[0]);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_rs.aus16Y + 8), in_rs.ai128Y[1]);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_rs.aus16Cb), in_rs.i128Cb);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_rs.aus16Cr), in_rs.i128Cr);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_rs.aus16K), in_rs.ai128K[0]);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out_rs.aus16K + 8), in_rs.ai128K[1]);
}

}  // namespace NQxcKernels

#endif  // QXBASE_SURFACES_KERNELS_BLOCKS_H
