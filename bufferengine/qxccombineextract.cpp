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
