// Plain byte copies of the engine. The streaming copy reads each 4 KiB block
// ahead so that the loads that follow hit the cache, and writes around the
// cache, because a frame is written once and not read again by this core.
#include <qxbase/qxcgenericcopy.h>

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

namespace {

constexpr unsigned int kBlockBytes = 4096;
constexpr unsigned int kLineBytes = 128;
constexpr unsigned int kLinesPerBlock = kBlockBytes / kLineBytes;

inline bool IsMultipleOf16(uintptr_t in_uValue) { return (in_uValue & 15u) == 0; }

inline bool IsAligned16(const void* in_p)
{
    return IsMultipleOf16(reinterpret_cast<uintptr_t>(in_p));
}

// Loads one 128-byte line; the values only serve to bring it into the cache.
inline __m128i TouchLine(const __m128i* in_pSource, __m128i in_xAccumulator)
{
    for (int i = 0; i < 8; ++i) in_xAccumulator = _mm_or_si128(in_xAccumulator, _mm_load_si128(in_pSource + i));
    return in_xAccumulator;
}

inline void StreamLine(const __m128i* in_pSource, __m128i* out_pDestination)
{
    for (int i = 0; i < 8; ++i) _mm_stream_si128(out_pDestination + i, _mm_load_si128(in_pSource + i));
}

}  // namespace

CQxcGenericCopy::~CQxcGenericCopy() {}

bool CQxcGenericCopy::GenericCopy(void* in_pSource, void* out_pDestination, unsigned int in_uiSize)
{
    if (IsMultipleOf16(in_uiSize) && IsAligned16(in_pSource) && IsAligned16(out_pDestination))
        return FastCopy(in_pSource, out_pDestination, in_uiSize);
    std::memcpy(out_pDestination, in_pSource, in_uiSize);
    return true;
}

bool CQxcGenericCopy::GenericCopy(unsigned char* in_pucSource, int in_iSourcePitch,
                                  unsigned char* out_pucDestination, int in_iDestinationPitch,
                                  unsigned int in_uiLineBytes, unsigned int in_uiLineCount)
{
    const bool bStreaming = IsAligned16(in_pucSource) && IsAligned16(out_pucDestination) &&
                            IsMultipleOf16(static_cast<uintptr_t>(in_iSourcePitch)) &&
                            IsMultipleOf16(static_cast<uintptr_t>(in_iDestinationPitch)) &&
                            IsMultipleOf16(in_uiLineBytes);
    for (unsigned int uiLine = 0; uiLine < in_uiLineCount; ++uiLine) {
        if (bStreaming)
            FastCopy(in_pucSource, out_pucDestination, in_uiLineBytes);
        else
            std::memcpy(out_pucDestination, in_pucSource, in_uiLineBytes);
        in_pucSource += in_iSourcePitch;
        out_pucDestination += in_iDestinationPitch;
    }
    return true;
}

bool CQxcGenericCopy::GenericCopyInterlace(unsigned char* in_pucFirstSource, int in_iFirstPitch,
                                           unsigned char* in_pucSecondSource, int in_iSecondPitch,
                                           unsigned char* out_pucDestination,
                                           int in_iDestinationPitch, unsigned int in_uiLineBytes,
                                           unsigned int in_uiFrameLines,
                                           bool in_bFirstSourceOnEvenLines)
{
    if (in_uiFrameLines < 2) return true;
    unsigned char* pucEven = in_bFirstSourceOnEvenLines ? in_pucFirstSource : in_pucSecondSource;
    unsigned char* pucOdd = in_bFirstSourceOnEvenLines ? in_pucSecondSource : in_pucFirstSource;
    const int iEvenPitch = in_bFirstSourceOnEvenLines ? in_iFirstPitch : in_iSecondPitch;
    const int iOddPitch = in_bFirstSourceOnEvenLines ? in_iSecondPitch : in_iFirstPitch;
    for (unsigned int uiPair = 0; uiPair < in_uiFrameLines / 2; ++uiPair) {
        std::memcpy(out_pucDestination, pucEven, in_uiLineBytes);
        std::memcpy(out_pucDestination + in_iDestinationPitch, pucOdd, in_uiLineBytes);
        out_pucDestination += 2 * static_cast<ptrdiff_t>(in_iDestinationPitch);
        pucEven += iEvenPitch;
        pucOdd += iOddPitch;
    }
    return true;
}

CQxcGenericCopySSE2::~CQxcGenericCopySSE2() {}

bool CQxcGenericCopySSE2::FastCopy(void* in_pSource, void* out_pDestination, unsigned int in_uiSize)
{
    const __m128i* pxSource = static_cast<const __m128i*>(in_pSource);
    __m128i* pxDestination = static_cast<__m128i*>(out_pDestination);
    const unsigned int uiBlocks = in_uiSize / kBlockBytes;
    const unsigned int uiLines = (in_uiSize % kBlockBytes) / kLineBytes;
    unsigned int uiTail = in_uiSize % kLineBytes;
    constexpr unsigned int kUnitsPerLine = kLineBytes / sizeof(__m128i);

    for (unsigned int uiBlock = 0; uiBlock < uiBlocks; ++uiBlock) {
        __m128i xTouched = _mm_setzero_si128();
        for (unsigned int uiLine = 0; uiLine < kLinesPerBlock; ++uiLine)
            xTouched = TouchLine(pxSource + uiLine * kUnitsPerLine, xTouched);
        // Keeps the read-ahead loads, whose values nobody uses, from being
        // optimised away.
        __asm__ volatile("" : : "x"(xTouched));
        for (unsigned int uiLine = 0; uiLine < kLinesPerBlock; ++uiLine) {
            StreamLine(pxSource, pxDestination);
            pxSource += kUnitsPerLine;
            pxDestination += kUnitsPerLine;
        }
    }
    for (unsigned int uiLine = 0; uiLine < uiLines; ++uiLine) {
        StreamLine(pxSource, pxDestination);
        pxSource += kUnitsPerLine;
        pxDestination += kUnitsPerLine;
    }
    while (uiTail > 0) {
        _mm_stream_si128(pxDestination++, _mm_load_si128(pxSource++));
        uiTail = uiTail > 16 ? uiTail - 16 : 0;
    }
    // No fence: the engine publishes the frame through the synchronisation
    // with which it signals completion, and that orders these stores.
    return true;
}

CQxcGenericCopy* CQxcGenericCopyFactory::CreateGenericCopy() { return new CQxcGenericCopySSE2(); }
