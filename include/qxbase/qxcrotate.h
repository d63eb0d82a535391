// Rotation of 8-bit YUYV 4:2:2 pictures by quarter and half turns, and a few
// 4:4:4 helpers. Chroma is never averaged: each turned pixel pair takes the
// Cb and Cr of one of its two source rows.
//
// The quarter-turn kernels work on a range [first, end) of source columns
// (90 degrees) or destination rows (270 degrees) so that strips of a picture
// can run in parallel; each writes whole destination rows. A destination row
// holds height / 2 pixel pairs; the rest of its pitch is padded with 0x10
// bytes (the padding's chroma is 0x10 too, not the neutral 0x80).
#ifndef QXBASE_QXCROTATE_H
#define QXBASE_QXCROTATE_H

#include <qxbase/qxdefs.h>

// Clockwise quarter turn: source column c becomes destination row c.
QXBASE_API void rotateYuv422To90(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                 unsigned int in_uiWidth, unsigned int in_uiHeight,
                                 unsigned int in_uiSourcePitch, unsigned int in_uiDestinationPitch,
                                 unsigned int in_uiFirstColumn, unsigned int in_uiEndColumn);
// Counter-clockwise quarter turn: destination row r takes source column
// width - 1 - r.
QXBASE_API void rotateYuv422To270(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                  unsigned int in_uiWidth, unsigned int in_uiHeight,
                                  unsigned int in_uiSourcePitch, unsigned int in_uiDestinationPitch,
                                  unsigned int in_uiFirstColumn, unsigned int in_uiEndColumn);

// The two passes of each quarter turn. One pass writes the bytes of every
// pair that come from the pair's first source row, the other those from its
// second; together they write every byte of the rows (and both pad them).
QXBASE_API void rotatePixelPairInEvenRows90(unsigned char* in_pucSource,
                                            unsigned char* out_pucDestination,
                                            unsigned int in_uiWidth, unsigned int in_uiHeight,
                                            unsigned int in_uiSourcePitch,
                                            unsigned int in_uiDestinationPitch,
                                            unsigned int in_uiFirstColumn,
                                            unsigned int in_uiEndColumn);
QXBASE_API void rotatePixelPairInOddRows90(unsigned char* in_pucSource,
                                           unsigned char* out_pucDestination,
                                           unsigned int in_uiWidth, unsigned int in_uiHeight,
                                           unsigned int in_uiSourcePitch,
                                           unsigned int in_uiDestinationPitch,
                                           unsigned int in_uiFirstColumn,
                                           unsigned int in_uiEndColumn);
QXBASE_API void rotatePixelPairInEvenRows270(unsigned char* in_pucSource,
                                             unsigned char* out_pucDestination,
                                             unsigned int in_uiWidth, unsigned int in_uiHeight,
                                             unsigned int in_uiSourcePitch,
                                             unsigned int in_uiDestinationPitch,
                                             unsigned int in_uiFirstColumn,
                                             unsigned int in_uiEndColumn);
QXBASE_API void rotatePixelPairInOddRows270(unsigned char* in_pucSource,
                                            unsigned char* out_pucDestination,
                                            unsigned int in_uiWidth, unsigned int in_uiHeight,
                                            unsigned int in_uiSourcePitch,
                                            unsigned int in_uiDestinationPitch,
                                            unsigned int in_uiFirstColumn,
                                            unsigned int in_uiEndColumn);

// Half turn. The one pitch is used for both buffers. The destination's
// padding bytes are left untouched.
QXBASE_API void rotateYuv422To180(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                  unsigned int in_uiWidth, unsigned int in_uiHeight,
                                  unsigned int in_uiPitch);

// Padding bytes after a turned row: (pitch / 2 - height) * 2 when pitch / 2 >
// height, else 0. The half turn's counterpart compares with the width.
QXBASE_API unsigned int calculateSkippedBytesForRotate90Or270(unsigned int in_uiWidth,
                                                              unsigned int in_uiHeight,
                                                              unsigned int in_uiPitch);
QXBASE_API unsigned int calculateSkippedBytesForRotate180(unsigned int in_uiWidth,
                                                          unsigned int in_uiHeight,
                                                          unsigned int in_uiPitch);

// Writes the 16-bit value 0x1010 at destination + cursor, (count + 1) / 2
// times, advancing the cursor (a byte offset) by 2 each time.
QXBASE_API void clearToBlack(unsigned char* out_pucDestination, unsigned int in_uiCount,
                             unsigned int& io_uiCursor);

// 4:4:4 helpers: three bytes a pixel, rows packed without padding. width and
// height of the two turns are those of the destination (the source holds
// width rows of height pixels).
QXBASE_API void rotateYuv444To90(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                 unsigned int in_uiWidth, unsigned int in_uiHeight);
QXBASE_API void rotateYuv444To270(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                  unsigned int in_uiWidth, unsigned int in_uiHeight);
// Each YUYV pair gives two pixels that share its chroma.
QXBASE_API void convertYuv422ToYuv444(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                      unsigned int in_uiWidth, unsigned int in_uiHeight);
// Each two pixels give one YUYV pair with the first pixel's chroma. After a
// row the destination skips (pitch / 2 - height) * 2 bytes when pitch / 2 >
// height: the test is against the height, as the turned pictures this serves
// are laid out.
QXBASE_API void convertYuv444ToYuv422(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                      unsigned int in_uiWidth, unsigned int in_uiHeight,
                                      unsigned int in_uiPitch);

#endif  // QXBASE_QXCROTATE_H
