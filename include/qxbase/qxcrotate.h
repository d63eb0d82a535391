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

#include <cstdint>
#include <memory>

class CQxConcurrentWorkQueue;

// One strip of a quarter turn.
struct RotateContext {
    uint32_t uiWidth;             // source, pixels
    uint32_t uiHeight;            // source, lines
    uint32_t uiSourcePitch;       // bytes
    uint32_t uiDestinationPitch;  // bytes
    uint32_t uiFirstColumn;       // first source column (destination row for 270)
    uint32_t uiEndColumn;         // excluded
    uint32_t uiDegrees;
    unsigned char* pucSource;
    unsigned char* pucDestination;
};

// Turns whole pictures. A quarter turn is cut into strips of source
// columns that run in parallel on a work queue; a half turn runs on the
// calling thread. One picture at a time: the strip records are shared.
class QXBASE_API GenericRotate {
public:
    static constexpr unsigned int kuiMaxStrips = 256;

    GenericRotate();
    virtual ~GenericRotate();

    // degrees 90 or 270: the strips' completion result (0 when every strip
    // ran); 180: 0; any other angle queues the strips and writes nothing. A
    // picture that would need more than kuiMaxStrips strips is refused with
    // 0x89998038 and nothing written.
    HRESULT Rotate(unsigned char* in_pucSource, unsigned char* out_pucDestination, unsigned int in_uiWidth,
                   unsigned int in_uiHeight, unsigned int in_uiSourcePitch, unsigned int in_uiDestinationPitch,
                   unsigned int in_uiDegrees);

    // Source columns per strip: 0 until the first quarter turn, which fixes
    // it for good (16 up to 1920 pixels wide, else 64), whatever the width of
    // later pictures.
    unsigned int getRotateSliceSize() const { return m_uiSliceSize; }

    // Number of strips a quarter turn of this width takes with the current
    // slice size (0 before the first quarter turn).
    unsigned int StripCount(unsigned int in_uiWidth) const;

    HRESULT setupForMultiThread(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                unsigned int in_uiWidth, unsigned int in_uiHeight, unsigned int in_uiSourcePitch,
                                unsigned int in_uiDestinationPitch, unsigned int in_uiDegrees);

    // The task of one strip: 90 and 270 turn it, any other angle does nothing.
    static void ConcurrencyRotateData(RotateContext* in_psContext);

private:
    GenericRotate(const GenericRotate&) = delete;
    GenericRotate& operator=(const GenericRotate&) = delete;

    unsigned int m_uiSliceSize;
    CQxConcurrentWorkQueue* m_pWorkQueue;
    RotateContext m_asContexts[kuiMaxStrips];
};

class QXBASE_API GenericRotateFactory {
public:
    static std::unique_ptr<GenericRotate> CreateGenericRotate();
};

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
