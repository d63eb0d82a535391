// Pixel-pair kernels of the YUYV rotations and the 4:4:4 helpers. A YUYV
// row is read as 16-bit words: word w holds the luma of pixel w in its low
// byte and, in its high byte, the Cb of the pair (even w) or its Cr (odd w).
#include <qxbase/qxcrotate.h>

#include <cstdint>
#include <cstring>

namespace {

// Byte offset of word w in the row that starts at in_i64RowOffset.
inline uint16_t ReadWord(const unsigned char* in_pucSource, int64_t in_i64RowOffset, int64_t in_i64Word)
{
    uint16_t usWord;
    std::memcpy(&usWord, in_pucSource + in_i64RowOffset + 2 * in_i64Word, sizeof(usWord));
    return usWord;
}

inline unsigned char Low(uint16_t in_usWord) { return static_cast<unsigned char>(in_usWord); }
inline unsigned char High(uint16_t in_usWord) { return static_cast<unsigned char>(in_usWord >> 8); }

// One pass writes, for each destination row of the range and each of its
// height / 2 pairs, the bytes that come from one of the pair's two source
// rows. The source rows of a pass are visited two rows apart, stepping by
// (pitch & ~1) words from in_i64FirstRowOffset in direction in_iDirection.
// The destination cursor runs on from row to row; each row is followed by
// its padding.
template <class TWritePair>
void RotatePass(unsigned char* in_pucSource, unsigned char* out_pucDestination, unsigned int in_uiWidth,
                unsigned int in_uiHeight, unsigned int in_uiSourcePitch, unsigned int in_uiDestinationPitch,
                unsigned int in_uiFirst, unsigned int in_uiEnd, int64_t in_i64FirstRowOffset,
                int in_iDirection, TWritePair in_fnWritePair)
{
    const unsigned int uiPairs = in_uiHeight / 2;
    const unsigned int uiSkipped =
        calculateSkippedBytesForRotate90Or270(in_uiWidth, in_uiHeight, in_uiDestinationPitch);
    const int64_t i64Step = in_iDirection * 2 * static_cast<int64_t>(in_uiSourcePitch & ~1u);
    unsigned int uiCursor = in_uiFirst * in_uiDestinationPitch;
    for (unsigned int uiRow = in_uiFirst; uiRow < in_uiEnd; ++uiRow) {
        int64_t i64RowOffset = in_i64FirstRowOffset;
        for (unsigned int uiPair = 0; uiPair < uiPairs; ++uiPair) {
            in_fnWritePair(uiRow, in_pucSource, i64RowOffset, out_pucDestination + uiCursor);
            uiCursor += 4;
            i64RowOffset += i64Step;
        }
        clearToBlack(out_pucDestination, uiSkipped, uiCursor);
    }
}

}  // namespace

unsigned int calculateSkippedBytesForRotate90Or270(unsigned int, unsigned int in_uiHeight,
                                                   unsigned int in_uiPitch)
{
    return in_uiPitch / 2 > in_uiHeight ? (in_uiPitch / 2 - in_uiHeight) * 2 : 0;
}

unsigned int calculateSkippedBytesForRotate180(unsigned int in_uiWidth, unsigned int,
                                               unsigned int in_uiPitch)
{
    return in_uiPitch / 2 > in_uiWidth ? (in_uiPitch / 2 - in_uiWidth) * 2 : 0;
}

void clearToBlack(unsigned char* out_pucDestination, unsigned int in_uiCount, unsigned int& io_uiCursor)
{
    for (unsigned int i = 0; i < (in_uiCount + 1) / 2; ++i) {
        out_pucDestination[io_uiCursor] = 0x10;
        out_pucDestination[io_uiCursor + 1] = 0x10;
        io_uiCursor += 2;
    }
}

namespace {

// The bytes of a pair that the row of its first pixel gives: that pixel's
// luma and, when the pair takes its chroma from this row, Cb (the high byte
// of the even word of the column's pair) and Cr (of the odd word after it).
inline void FromFirstPixelRow(const unsigned char* in_pucSource, int64_t in_i64Row, int64_t in_i64Column,
                              bool in_bChroma, unsigned char* out_pucPair)
{
    const uint16_t usWord = ReadWord(in_pucSource, in_i64Row, in_i64Column);
    out_pucPair[0] = Low(usWord);
    if (in_bChroma) {
        out_pucPair[1] = High(usWord);
        out_pucPair[3] = High(ReadWord(in_pucSource, in_i64Row, in_i64Column + 1));
    }
}

// The same from the row of the pair's second pixel: its luma and, with the
// chroma, Cr (this odd word) and Cb (the even word before it).
inline void FromSecondPixelRow(const unsigned char* in_pucSource, int64_t in_i64Row, int64_t in_i64Column,
                               bool in_bChroma, unsigned char* out_pucPair)
{
    const uint16_t usWord = ReadWord(in_pucSource, in_i64Row, in_i64Column);
    out_pucPair[2] = Low(usWord);
    if (in_bChroma) {
        out_pucPair[3] = High(usWord);
        out_pucPair[1] = High(ReadWord(in_pucSource, in_i64Row, in_i64Column - 1));
    }
}

}  // namespace

// 90 degrees: pair k of destination row c takes source rows a = height - 1 -
// 2k (first pixel) and b = height - 2 - 2k (second pixel). An even column
// takes its chroma from row a, an odd column from row b.
void rotatePixelPairInOddRows90(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                unsigned int in_uiWidth, unsigned int in_uiHeight,
                                unsigned int in_uiSourcePitch, unsigned int in_uiDestinationPitch,
                                unsigned int in_uiFirstColumn, unsigned int in_uiEndColumn)
{
    RotatePass(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight, in_uiSourcePitch,
               in_uiDestinationPitch, in_uiFirstColumn, in_uiEndColumn,
               (static_cast<int64_t>(in_uiHeight) - 1) * in_uiSourcePitch, -1,
               [](unsigned int c, const unsigned char* s, int64_t row, unsigned char* p) {
                   FromFirstPixelRow(s, row, c, (c & 1) == 0, p);
               });
}

void rotatePixelPairInEvenRows90(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                 unsigned int in_uiWidth, unsigned int in_uiHeight,
                                 unsigned int in_uiSourcePitch, unsigned int in_uiDestinationPitch,
                                 unsigned int in_uiFirstColumn, unsigned int in_uiEndColumn)
{
    RotatePass(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight, in_uiSourcePitch,
               in_uiDestinationPitch, in_uiFirstColumn, in_uiEndColumn,
               (static_cast<int64_t>(in_uiHeight) - 2) * in_uiSourcePitch, -1,
               [](unsigned int c, const unsigned char* s, int64_t row, unsigned char* p) {
                   FromSecondPixelRow(s, row, c, (c & 1) != 0, p);
               });
}

// 270 degrees: pair k of destination row r takes source column s = width -
// 1 - r in rows a = 2k (first pixel) and b = 2k + 1 (second pixel). The
// parity that picks the chroma row is that of r, which for an even width is
// the opposite of the parity of s.
void rotatePixelPairInEvenRows270(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                  unsigned int in_uiWidth, unsigned int in_uiHeight,
                                  unsigned int in_uiSourcePitch, unsigned int in_uiDestinationPitch,
                                  unsigned int in_uiFirstColumn, unsigned int in_uiEndColumn)
{
    const int64_t i64Last = static_cast<int64_t>(in_uiWidth) - 1;
    RotatePass(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight, in_uiSourcePitch,
               in_uiDestinationPitch, in_uiFirstColumn, in_uiEndColumn, 0, 1,
               [i64Last](unsigned int r, const unsigned char* s, int64_t row, unsigned char* p) {
                   FromFirstPixelRow(s, row, i64Last - r, (r & 1) != 0, p);
               });
}

void rotatePixelPairInOddRows270(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                                 unsigned int in_uiWidth, unsigned int in_uiHeight,
                                 unsigned int in_uiSourcePitch, unsigned int in_uiDestinationPitch,
                                 unsigned int in_uiFirstColumn, unsigned int in_uiEndColumn)
{
    const int64_t i64Last = static_cast<int64_t>(in_uiWidth) - 1;
    RotatePass(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight, in_uiSourcePitch,
               in_uiDestinationPitch, in_uiFirstColumn, in_uiEndColumn, in_uiSourcePitch, 1,
               [i64Last](unsigned int r, const unsigned char* s, int64_t row, unsigned char* p) {
                   FromSecondPixelRow(s, row, i64Last - r, (r & 1) == 0, p);
               });
}

void rotateYuv422To90(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                      unsigned int in_uiWidth, unsigned int in_uiHeight, unsigned int in_uiSourcePitch,
                      unsigned int in_uiDestinationPitch, unsigned int in_uiFirstColumn,
                      unsigned int in_uiEndColumn)
{
    rotatePixelPairInOddRows90(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight,
                               in_uiSourcePitch, in_uiDestinationPitch, in_uiFirstColumn,
                               in_uiEndColumn);
    rotatePixelPairInEvenRows90(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight,
                                in_uiSourcePitch, in_uiDestinationPitch, in_uiFirstColumn,
                                in_uiEndColumn);
}

void rotateYuv422To270(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                       unsigned int in_uiWidth, unsigned int in_uiHeight, unsigned int in_uiSourcePitch,
                       unsigned int in_uiDestinationPitch, unsigned int in_uiFirstColumn,
                       unsigned int in_uiEndColumn)
{
    rotatePixelPairInEvenRows270(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight,
                                 in_uiSourcePitch, in_uiDestinationPitch, in_uiFirstColumn,
                                 in_uiEndColumn);
    rotatePixelPairInOddRows270(in_pucSource, out_pucDestination, in_uiWidth, in_uiHeight,
                                in_uiSourcePitch, in_uiDestinationPitch, in_uiFirstColumn,
                                in_uiEndColumn);
}

void rotateYuv422To180(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                       unsigned int in_uiWidth, unsigned int in_uiHeight, unsigned int in_uiPitch)
{
    const unsigned int uiSkipped = calculateSkippedBytesForRotate180(in_uiWidth, in_uiHeight, in_uiPitch);
    // The read index runs backwards from the last pixel byte of the last row;
    // after the last row it wraps around (32-bit) and is not used again.
    uint32_t uiRead = in_uiHeight * in_uiPitch - 1 - uiSkipped;
    unsigned char* pucRow = out_pucDestination;
    for (unsigned int uiRow = 0; uiRow < in_uiHeight; ++uiRow) {
        const uint32_t uiRowStart = uiRead;
        unsigned char* pucWrite = pucRow;
        for (unsigned int uiPair = 0; uiPair < in_uiWidth / 2; ++uiPair) {
            const unsigned char* p = in_pucSource + uiRead - 3;
            const unsigned char aucPair[4] = {p[2], p[1], p[0], p[3]};
            std::memcpy(pucWrite, aucPair, 4);
            pucWrite += 4;
            uiRead -= 4;
        }
        uiRead = uiRowStart - in_uiPitch;
        pucRow += in_uiPitch;
    }
}

void rotateYuv444To90(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                      unsigned int in_uiWidth, unsigned int in_uiHeight)
{
    for (unsigned int i = 0; i < in_uiWidth; ++i)
        for (unsigned int j = 0; j < in_uiHeight; ++j)
            std::memcpy(out_pucDestination + (size_t(j) * in_uiWidth + (in_uiWidth - 1 - i)) * 3,
                        in_pucSource + (size_t(i) * in_uiHeight + j) * 3, 3);
}

void rotateYuv444To270(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                       unsigned int in_uiWidth, unsigned int in_uiHeight)
{
    for (unsigned int i = 0; i < in_uiWidth; ++i)
        for (unsigned int j = 0; j < in_uiHeight; ++j)
            std::memcpy(out_pucDestination + (size_t(j) * in_uiWidth + i) * 3,
                        in_pucSource + (size_t(i) * in_uiHeight + (in_uiHeight - 1 - j)) * 3, 3);
}

void convertYuv422ToYuv444(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                           unsigned int in_uiWidth, unsigned int in_uiHeight)
{
    const size_t uPairs = size_t(in_uiWidth) * in_uiHeight / 2;
    for (size_t i = 0; i < uPairs; ++i) {
        const unsigned char* p = in_pucSource + 4 * i;
        const unsigned char aucPixels[6] = {p[0], p[1], p[3], p[2], p[1], p[3]};
        std::memcpy(out_pucDestination + 6 * i, aucPixels, 6);
    }
}

void convertYuv444ToYuv422(unsigned char* in_pucSource, unsigned char* out_pucDestination,
                           unsigned int in_uiWidth, unsigned int in_uiHeight, unsigned int in_uiPitch)
{
    const unsigned int uiSkipped = in_uiPitch / 2 > in_uiHeight ? (in_uiPitch / 2 - in_uiHeight) * 2 : 0;
    for (unsigned int uiRow = 0; uiRow < in_uiHeight; ++uiRow) {
        const unsigned char* pucRow = in_pucSource + size_t(uiRow) * in_uiWidth * 3;
        for (unsigned int uiPair = 0; uiPair < in_uiWidth / 2; ++uiPair) {
            const unsigned char* p = pucRow + 6 * uiPair;
            const unsigned char aucPair[4] = {p[0], p[1], p[3], p[2]};
            std::memcpy(out_pucDestination, aucPair, 4);
            out_pucDestination += 4;
        }
        out_pucDestination += uiSkipped;
    }
}
