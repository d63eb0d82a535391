// The exported combine and extract line kernels: the SSE2 chunk kernels run
// by the shared line driver.
#include <qxbase/qxccombineextract.h>

#include "bufferengine/kernels/qxccombinelines.h"

using namespace NQxcCombineLines;

void ConcurrencyCombine(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines,
                        int in_iChunksPerLine, int in_iSkipC, int in_iSkipA, int in_iSkipB)
{
    RunLines<true, 16, 24>(a, b, c, in_iLines, in_iChunksPerLine, in_iSkipC, in_iSkipA, in_iSkipB,
                           CombineChunkSSE2<false>);
}

void ConcurrencyCombineAlphaScaling(unsigned char* a, unsigned char* b, unsigned char* c,
                                    int in_iLines, int in_iChunksPerLine, int in_iSkipC,
                                    int in_iSkipA, int in_iSkipB)
{
    RunLines<true, 16, 24>(a, b, c, in_iLines, in_iChunksPerLine, in_iSkipC, in_iSkipA, in_iSkipB,
                           CombineChunkSSE2<true>);
}

void ConcurrencyExtract(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines,
                        int in_iChunksPerLine, int in_iSkipC, int in_iSkipA, int in_iSkipB)
{
    RunLines<false, 16, 24>(a, b, c, in_iLines, in_iChunksPerLine, in_iSkipC, in_iSkipA, in_iSkipB,
                            ExtractChunkSSE2);
}

void ConcurrencyCombine_v210(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines,
                             int in_iChunksPerLine, int in_iSkipC, int in_iSkipA, int in_iSkipB)
{
    RunLines<true, 32, 48>(a, b, c, in_iLines, in_iChunksPerLine, in_iSkipC, in_iSkipA, in_iSkipB,
                           CombineChunkV210SSE2<false>);
}

void ConcurrencyCombineAlphaScaling_v210(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines,
                                         int in_iChunksPerLine, int in_iSkipC, int in_iSkipA, int in_iSkipB)
{
    RunLines<true, 32, 48>(a, b, c, in_iLines, in_iChunksPerLine, in_iSkipC, in_iSkipA, in_iSkipB,
                           CombineChunkV210SSE2<true>);
}

void ConcurrencyExtract_v210(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines,
                             int in_iChunksPerLine, int in_iSkipC, int in_iSkipA, int in_iSkipB)
{
    RunLines<false, 32, 48>(a, b, c, in_iLines, in_iChunksPerLine, in_iSkipC, in_iSkipA, in_iSkipB,
                            ExtractChunkV210SSE2);
}

void format12pixelFromV210(const unsigned char* in_pucFill, const unsigned char* in_pucKey, uint16_t out_ausLuma[12],
                           uint16_t out_ausChroma[12], uint16_t out_ausKey[12])
{
    uint16_t ausKeyChroma[12];
    UnpackV210(in_pucFill, out_ausLuma, out_ausChroma);
    UnpackV210(in_pucKey, out_ausKey, ausKeyChroma);
}
