// The YUYV turns against a plain per-pixel model of the picture, the
// padding rules, and the 4:4:4 helpers.
#include <qxbase/qxcrotate.h>
#include <qxbase/qxerrors.h>

#include <gtest/gtest.h>

#include "bufferengine/guardedbuffer.h"
#include "bufferengine/turnmodel.h"

namespace {

struct SSize {
    unsigned int uiWidth, uiHeight, uiSourcePad, uiDestinationPad;
};

const SSize kSizes[] = {{2, 2, 0, 0}, {6, 4, 4, 8}, {48, 30, 0, 12}, {64, 36, 32, 0}, {18, 50, 6, 2}};

TEST(RotateKernels, QuarterTurnsMatchThePixelModelAndPadRowsWith0x10)
{
    std::mt19937 oRandom = SeededRandom("RotateKernels.QuarterTurns");
    for (const SSize& s : kSizes) {
        for (unsigned int uiDegrees : {90u, 270u}) {
            SCOPED_TRACE(testing::Message() << s.uiWidth << "x" << s.uiHeight << " by " << uiDegrees);
            const unsigned int uiSourcePitch = 2 * s.uiWidth + s.uiSourcePad;
            const unsigned int uiTurnedPitch = 2 * s.uiHeight + s.uiDestinationPad;
            CGuardedBuffer oSource(size_t(uiSourcePitch) * s.uiHeight);
            CGuardedBuffer oTurned(size_t(uiTurnedPitch) * s.uiWidth, 0, 0xCC);
            oSource.FillRandom(oRandom);
            auto pfnTurn = uiDegrees == 90 ? rotateYuv422To90 : rotateYuv422To270;
            pfnTurn(oSource.Data(), oTurned.Data(), s.uiWidth, s.uiHeight, uiSourcePitch, uiTurnedPitch, 0,
                    s.uiWidth);
            ExpectTurned({oSource.Data(), uiSourcePitch}, {oTurned.Data(), uiTurnedPitch}, s.uiWidth, s.uiHeight,
                         uiDegrees);
            for (unsigned int r = 0; r < s.uiWidth; ++r)
                for (unsigned int x = 2 * s.uiHeight; x < uiTurnedPitch; ++x)
                    ASSERT_EQ(oTurned[size_t(r) * uiTurnedPitch + x], 0x10) << "padding of row " << r;
            EXPECT_TRUE(oTurned.GuardsIntact());
        }
    }
}

TEST(RotateKernels, StripsOfColumnsWriteOnlyTheirOwnRowsAndAddUpToTheWholeTurn)
{
    std::mt19937 oRandom = SeededRandom("RotateKernels.Strips");
    const unsigned int uiWidth = 40, uiHeight = 24, uiSourcePitch = 96, uiTurnedPitch = 56;
    CGuardedBuffer oSource(size_t(uiSourcePitch) * uiHeight);
    oSource.FillRandom(oRandom);
    for (auto pfnTurn : {rotateYuv422To90, rotateYuv422To270}) {
        CGuardedBuffer oWhole(size_t(uiTurnedPitch) * uiWidth, 0, 0xCC);
        CGuardedBuffer oStrips(size_t(uiTurnedPitch) * uiWidth, 0, 0xCC);
        pfnTurn(oSource.Data(), oWhole.Data(), uiWidth, uiHeight, uiSourcePitch, uiTurnedPitch, 0, uiWidth);
        // One strip alone touches its rows only.
        pfnTurn(oSource.Data(), oStrips.Data(), uiWidth, uiHeight, uiSourcePitch, uiTurnedPitch, 16, 32);
        for (unsigned int r = 0; r < uiWidth; ++r) {
            const bool bInStrip = r >= 16 && r < 32;
            for (unsigned int x = 0; x < uiTurnedPitch; ++x) {
                const size_t i = size_t(r) * uiTurnedPitch + x;
                ASSERT_EQ(oStrips[i], bInStrip ? oWhole[i] : 0xCC) << "row " << r << " byte " << x;
            }
        }
        pfnTurn(oSource.Data(), oStrips.Data(), uiWidth, uiHeight, uiSourcePitch, uiTurnedPitch, 0, 16);
        pfnTurn(oSource.Data(), oStrips.Data(), uiWidth, uiHeight, uiSourcePitch, uiTurnedPitch, 32, 40);
        EXPECT_EQ(oStrips.Bytes(), oWhole.Bytes());
        EXPECT_TRUE(oStrips.GuardsIntact());
    }
}

TEST(RotateKernels, EachPassWritesOnlyTheBytesOfItsSourceRow)
{
    // A source whose odd rows are all 0x01 and even rows all 0x02 shows
    // which pass wrote which byte of a pair.
    const unsigned int uiWidth = 4, uiHeight = 4, uiPitch = 8;
    unsigned char aucSource[uiPitch * uiHeight];
    for (unsigned int y = 0; y < uiHeight; ++y) std::memset(aucSource + y * uiPitch, y % 2 ? 0x01 : 0x02, uiPitch);
    // 90 degrees: the odd-rows pass reads row a (odd for an even height);
    // an even column takes luma, Cb and Cr from it, an odd column its luma.
    unsigned char aucTurned[uiPitch * uiWidth];
    std::memset(aucTurned, 0, sizeof(aucTurned));
    rotatePixelPairInOddRows90(aucSource, aucTurned, uiWidth, uiHeight, uiPitch, uiPitch, 0, uiWidth);
    const unsigned char aucEvenColumn[4] = {0x01, 0x01, 0x00, 0x01};
    const unsigned char aucOddColumn[4] = {0x01, 0x00, 0x00, 0x00};
    EXPECT_EQ(0, std::memcmp(aucTurned, aucEvenColumn, 4));
    EXPECT_EQ(0, std::memcmp(aucTurned + uiPitch, aucOddColumn, 4));
    rotatePixelPairInEvenRows90(aucSource, aucTurned, uiWidth, uiHeight, uiPitch, uiPitch, 0, uiWidth);
    const unsigned char aucEvenColumnBoth[4] = {0x01, 0x01, 0x02, 0x01};
    const unsigned char aucOddColumnBoth[4] = {0x01, 0x02, 0x02, 0x02};
    EXPECT_EQ(0, std::memcmp(aucTurned, aucEvenColumnBoth, 4));
    EXPECT_EQ(0, std::memcmp(aucTurned + uiPitch, aucOddColumnBoth, 4));
}

TEST(RotateKernels, HalfTurnMatchesThePixelModelAndLeavesPaddingAlone)
{
    // The documented 4 x 1 case.
    unsigned char aucSource[8] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
    unsigned char aucTurned[8] = {};
    rotateYuv422To180(aucSource, aucTurned, 4, 1, 8);
    const unsigned char aucExpected[8] = {'g', 'f', 'e', 'h', 'c', 'b', 'a', 'd'};
    EXPECT_EQ(0, std::memcmp(aucTurned, aucExpected, 8));

    std::mt19937 oRandom = SeededRandom("RotateKernels.HalfTurn");
    for (const SSize& s : kSizes) {
        SCOPED_TRACE(testing::Message() << s.uiWidth << "x" << s.uiHeight);
        const unsigned int uiPitch = 2 * s.uiWidth + s.uiSourcePad;
        CGuardedBuffer oSource(size_t(uiPitch) * s.uiHeight), oTurned(size_t(uiPitch) * s.uiHeight, 0, 0xCC);
        oSource.FillRandom(oRandom);
        rotateYuv422To180(oSource.Data(), oTurned.Data(), s.uiWidth, s.uiHeight, uiPitch);
        ExpectTurned({oSource.Data(), uiPitch}, {oTurned.Data(), uiPitch}, s.uiWidth, s.uiHeight, 180);
        for (unsigned int y = 0; y < s.uiHeight; ++y)
            for (unsigned int x = 2 * s.uiWidth; x < uiPitch; ++x) ASSERT_EQ(oTurned[size_t(y) * uiPitch + x], 0xCC);
        EXPECT_TRUE(oTurned.GuardsIntact());
    }

    // A zero width writes nothing.
    CGuardedBuffer oUntouched(64, 0, 0xCC);
    rotateYuv422To180(aucSource, oUntouched.Data(), 0, 2, 32);
    EXPECT_EQ(oUntouched.Bytes(), std::vector<unsigned char>(64, 0xCC));
}

TEST(RotateKernels, PaddingCountsAndClearToBlack)
{
    EXPECT_EQ(calculateSkippedBytesForRotate90Or270(1920, 1080, 2 * 1080 + 8), 8u);
    EXPECT_EQ(calculateSkippedBytesForRotate90Or270(1920, 1080, 2 * 1080), 0u);
    EXPECT_EQ(calculateSkippedBytesForRotate90Or270(1920, 1080, 100), 0u);
    EXPECT_EQ(calculateSkippedBytesForRotate180(1920, 1080, 4096), (2048u - 1920u) * 2);
    EXPECT_EQ(calculateSkippedBytesForRotate180(1920, 1080, 3840), 0u);

    unsigned char aucRow[12];
    std::memset(aucRow, 0xEE, sizeof(aucRow));
    unsigned int uiCursor = 2;
    clearToBlack(aucRow, 5, uiCursor);  // rounds up to 3 words
    EXPECT_EQ(uiCursor, 8u);
    const unsigned char aucExpected[12] = {0xEE, 0xEE, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(0, std::memcmp(aucRow, aucExpected, sizeof(aucRow)));
    clearToBlack(aucRow, 0, uiCursor);
    EXPECT_EQ(uiCursor, 8u);
}

TEST(RotateKernels, Yuv444TurnsAndConversions)
{
    // 2 rows of 3 pixels; pixel (x, y) holds bytes 10y+x, +100, +200.
    const unsigned int uiRows = 2, uiColumns = 3;
    unsigned char aucSource[uiRows * uiColumns * 3];
    for (unsigned int y = 0; y < uiRows; ++y)
        for (unsigned int x = 0; x < uiColumns; ++x)
            for (unsigned int c = 0; c < 3; ++c) aucSource[(y * uiColumns + x) * 3 + c] = (unsigned char)(10 * y + x + 100 * c);
    // Turned clockwise, the destination is 2 wide and 3 tall: (x, y) comes
    // from source (y, rows - 1 - x); counter-clockwise from (columns - 1 - y, x).
    unsigned char aucClockwise[sizeof(aucSource)], aucCounter[sizeof(aucSource)];
    rotateYuv444To90(aucSource, aucClockwise, uiRows, uiColumns);
    rotateYuv444To270(aucSource, aucCounter, uiRows, uiColumns);
    for (unsigned int y = 0; y < uiColumns; ++y)
        for (unsigned int x = 0; x < uiRows; ++x) {
            EXPECT_EQ(aucClockwise[(y * uiRows + x) * 3], 10 * (uiRows - 1 - x) + y) << x << "," << y;
            EXPECT_EQ(aucCounter[(y * uiRows + x) * 3], 10 * x + (uiColumns - 1 - y)) << x << "," << y;
            EXPECT_EQ(aucCounter[(y * uiRows + x) * 3 + 2], 200 + 10 * x + (uiColumns - 1 - y));
        }

    // 4:2:2 -> 4:4:4 duplicates chroma; back to 4:2:2 keeps the first pixel's.
    const unsigned char aucPairs[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    unsigned char aucWide[12];
    convertYuv422ToYuv444(const_cast<unsigned char*>(aucPairs), aucWide, 4, 1);
    const unsigned char aucWideExpected[12] = {1, 2, 4, 3, 2, 4, 5, 6, 8, 7, 6, 8};
    EXPECT_EQ(0, std::memcmp(aucWide, aucWideExpected, 12));
    unsigned char aucNarrow[8] = {};
    convertYuv444ToYuv422(aucWide, aucNarrow, 4, 1, 2);  // pitch / 2 = height: no skip
    EXPECT_EQ(0, std::memcmp(aucNarrow, aucPairs, 8));
    unsigned char aucNothing[6] = {9, 9, 9, 9, 9, 9};
    convertYuv422ToYuv444(const_cast<unsigned char*>(aucPairs), aucNothing, 1, 1);
    EXPECT_EQ(aucNothing[0], 9);

    // The skip after each row is measured against the height: 2 rows of 4
    // pixels with pitch 16 skip (8 - 2) x 2 = 12 bytes after each 8-byte row.
    unsigned char aucTwoRows[24];
    const unsigned char aucWideRows[24] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24};
    unsigned char aucOut[40];
    std::memset(aucOut, 0xEE, sizeof(aucOut));
    std::memcpy(aucTwoRows, aucWideRows, 24);
    convertYuv444ToYuv422(aucTwoRows, aucOut, 4, 2, 16);
    const unsigned char aucRow0[8] = {1, 2, 4, 3, 7, 8, 10, 9};
    const unsigned char aucRow1[8] = {13, 14, 16, 15, 19, 20, 22, 21};
    EXPECT_EQ(0, std::memcmp(aucOut, aucRow0, 8));
    EXPECT_EQ(0, std::memcmp(aucOut + 20, aucRow1, 8));
    EXPECT_EQ(aucOut[8], 0xEE);
    EXPECT_EQ(aucOut[19], 0xEE);
}

}  // namespace

namespace {

TEST(GenericRotate, TheFirstQuarterTurnFixesTheStripSizeForGood)
{
    std::mt19937 oRandom = SeededRandom("GenericRotate.StripSize");
    auto fnTurn = [&](GenericRotate& in_roRotator, unsigned int in_uiWidth, unsigned int in_uiHeight,
                      unsigned int in_uiDegrees) {
        CGuardedBuffer oSource(size_t(2) * in_uiWidth * in_uiHeight), oTurned(size_t(2) * in_uiWidth * in_uiHeight);
        oSource.FillRandom(oRandom);
        // A half turn reads and writes with the one pitch it is given.
        const unsigned int uiTurnedPitch = in_uiDegrees == 180 ? 2 * in_uiWidth : 2 * in_uiHeight;
        EXPECT_EQ(in_roRotator.Rotate(oSource.Data(), oTurned.Data(), in_uiWidth, in_uiHeight, 2 * in_uiWidth,
                                      uiTurnedPitch, in_uiDegrees),
                  S_OK);
        if (in_uiDegrees == 90 && in_uiWidth > 0)
            ExpectTurned({oSource.Data(), 2 * in_uiWidth}, {oTurned.Data(), 2 * in_uiHeight}, in_uiWidth, in_uiHeight,
                         90);
        EXPECT_TRUE(oTurned.GuardsIntact());
    };
    {
        std::unique_ptr<GenericRotate> pRotator = GenericRotateFactory::CreateGenericRotate();
        EXPECT_EQ(pRotator->getRotateSliceSize(), 0u);
        fnTurn(*pRotator, 8, 4, 180);  // a half turn fixes nothing
        EXPECT_EQ(pRotator->getRotateSliceSize(), 0u);
        fnTurn(*pRotator, 1920, 8, 90);
        EXPECT_EQ(pRotator->getRotateSliceSize(), 16u);
        EXPECT_EQ(pRotator->StripCount(1920), 120u);
        fnTurn(*pRotator, 3840, 2, 90);  // later pictures keep 16 columns
        EXPECT_EQ(pRotator->StripCount(3840), 240u);
    }
    {
        std::unique_ptr<GenericRotate> pRotator = GenericRotateFactory::CreateGenericRotate();
        fnTurn(*pRotator, 1922, 4, 270);
        EXPECT_EQ(pRotator->getRotateSliceSize(), 64u);
        EXPECT_EQ(pRotator->StripCount(1921), 31u);  // 30 strips and one of 1 column
        fnTurn(*pRotator, 720, 4, 90);
        EXPECT_EQ(pRotator->getRotateSliceSize(), 64u);
        fnTurn(*pRotator, 0, 4, 90);  // no strip at all
    }
    {
        // An angle of 0 runs the strips and writes nothing.
        std::unique_ptr<GenericRotate> pRotator = GenericRotateFactory::CreateGenericRotate();
        CGuardedBuffer oSource(64 * 4, 0, 0x11), oTurned(64 * 4, 0, 0xCC);
        EXPECT_EQ(pRotator->Rotate(oSource.Data(), oTurned.Data(), 32, 4, 64, 8, 0), S_OK);
        EXPECT_EQ(oTurned.Bytes(), std::vector<unsigned char>(64 * 4, 0xCC));
        // More strips than records: refused, nothing written.
        EXPECT_EQ(pRotator->getRotateSliceSize(), 16u);
        CGuardedBuffer oWide(4112 * 2 * 2), oWideTurned(4112 * 2 * 2, 0, 0xCC);
        EXPECT_EQ(pRotator->Rotate(oWide.Data(), oWideTurned.Data(), 4112, 2, 4112 * 2, 4, 90), QX_E_INVALID_GEOMETRY);
        EXPECT_EQ(oWideTurned.Bytes(), std::vector<unsigned char>(4112 * 2 * 2, 0xCC));
    }
}

}  // namespace
