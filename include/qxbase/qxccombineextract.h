// Line kernels of the video+key combine and extract. A fill picture and a
// key picture, both 4:2:2 YUV without alpha, are merged into one 4:2:2:4
// picture that carries the key's luma as alpha, and split back.
//
// Every kernel has the same signature:
//   combine: a = fill, b = key, c = combined destination;
//   extract: a = fill output, b = key output, c = combined source.
// lines lines of chunksPerLine chunks each are processed; after each line
// each pointer advances by its chunks and its skip (padding) in bytes: c by
// skipC, a by skipA, b by skipB, so that chunk bytes x chunks + skip is the
// line's pitch. A negative skip (the last chunk would run past the pitch) is
// honoured: each line starts at its own line x pitch and no byte beyond a
// line's pitch is read or written. A line count below 1 does nothing.
//
// 8-bit: a chunk is 16 YUYV bytes (8 pixels) of fill or key and 24 combined
// bytes: the 16 fill bytes unchanged, then one alpha byte a pixel. v210: a
// chunk is 32 bytes (12 pixels, two v210 groups) of fill or key and 48
// combined bytes, one 32-bit word a pixel: (Y << 20) | (C << 10) | K, C being
// Cb for an even pixel and Cr for an odd one (the 10-bit 4:2:2:4 layout of
// the surfaces).
#ifndef QXBASE_QXCCOMBINEEXTRACT_H
#define QXBASE_QXCCOMBINEEXTRACT_H

#include <qxbase/qxdefs.h>

#include <cstdint>

typedef void (*PFNQxcCombineExtractKernel)(unsigned char* a, unsigned char* b, unsigned char* c,
                                           int in_iLines, int in_iChunksPerLine, int in_iSkipC,
                                           int in_iSkipA, int in_iSkipB);

// Alpha = key luma, unchanged (video-range luma is not rescaled).
QXBASE_API void ConcurrencyCombine(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines,
                                   int in_iChunksPerLine, int in_iSkipC, int in_iSkipA, int in_iSkipB);
// Alpha = 0 for luma 16 and below, 255 for 236 and above, else
// (Y - 16) x 255 / 219 rounded down.
QXBASE_API void ConcurrencyCombineAlphaScaling(unsigned char* a, unsigned char* b, unsigned char* c,
                                               int in_iLines, int in_iChunksPerLine, int in_iSkipC,
                                               int in_iSkipA, int in_iSkipB);
// The key comes out as a grey YUYV picture whose luma is the alpha (not
// rescaled) and whose chroma is 128.
QXBASE_API void ConcurrencyExtract(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines,
                                   int in_iChunksPerLine, int in_iSkipC, int in_iSkipA, int in_iSkipB);


QXBASE_API void ConcurrencyCombine_v210(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines,
                                        int in_iChunksPerLine, int in_iSkipC, int in_iSkipA, int in_iSkipB);
// Alpha = 0 for key luma 64 and below, 1023 for 940 and above, else
// (Y - 64) x 1023 / 876 rounded down (the 10-bit counterpart of the 8-bit
// scaling).
QXBASE_API void ConcurrencyCombineAlphaScaling_v210(unsigned char* a, unsigned char* b, unsigned char* c,
                                                    int in_iLines, int in_iChunksPerLine, int in_iSkipC,
                                                    int in_iSkipA, int in_iSkipB);
// The key comes out as a grey v210 picture: luma = alpha, chroma 512.
QXBASE_API void ConcurrencyExtract_v210(unsigned char* a, unsigned char* b, unsigned char* c, int in_iLines,
                                        int in_iChunksPerLine, int in_iSkipC, int in_iSkipA, int in_iSkipB);

// Unpacks a v210 chunk (32 bytes, 12 pixels) of fill and of key: the fill's
// luma and its chroma in pixel order (Cb, Cr, Cb ...), and the key's luma.
QXBASE_API void format12pixelFromV210(const unsigned char* in_pucFill, const unsigned char* in_pucKey,
                                      uint16_t out_ausLuma[12], uint16_t out_ausChroma[12],
                                      uint16_t out_ausKey[12]);

#endif  // QXBASE_QXCCOMBINEEXTRACT_H
