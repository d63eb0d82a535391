// Combine and extract line kernels: documented values, SSE2 against the
// scalar references on random lines, lines whose pitch ends inside a chunk,
// and combine followed by extract.
#include <qxbase/qxccombineextract.h>

#include <gtest/gtest.h>

#include "bufferengine/guardedbuffer.h"
#include "bufferengine/kernels/qxccombinelines.h"

namespace {

using namespace NQxcCombineLines;

TEST(CombineKernels, DocumentedAlphaValuesWithAndWithoutScaling)
{
    unsigned char aucFill[16], aucKey[16], aucCombined[24];
    const unsigned char aucLumas[8] = {16, 17, 126, 235, 236, 255, 0, 128};
    for (int i = 0; i < 8; ++i) {
        aucFill[2 * i] = static_cast<unsigned char>(10 + 10 * i);
        aucFill[2 * i + 1] = static_cast<unsigned char>(0x80 + 0x10 * (i % 2));
        aucKey[2 * i] = aucLumas[i];
        aucKey[2 * i + 1] = 0x80;
    }
    ConcurrencyCombine(aucFill, aucKey, aucCombined, 1, 1, 0, 0, 0);
    EXPECT_EQ(0, std::memcmp(aucCombined, aucFill, 16));
    EXPECT_EQ(0, std::memcmp(aucCombined + 16, aucLumas, 8));

    ConcurrencyCombineAlphaScaling(aucFill, aucKey, aucCombined, 1, 1, 0, 0, 0);
    const unsigned char aucScaled[8] = {0, 1, 128, 255, 255, 255, 0, 130};
    EXPECT_EQ(0, std::memcmp(aucCombined, aucFill, 16));
    EXPECT_EQ(0, std::memcmp(aucCombined + 16, aucScaled, 8));

    // Every luma: the SSE2 scaling equals the formula.
    for (int iLuma = 0; iLuma < 256; ++iLuma) {
        std::memset(aucKey, iLuma, sizeof(aucKey));
        ConcurrencyCombineAlphaScaling(aucFill, aucKey, aucCombined, 1, 1, 0, 0, 0);
        const int iExpected = iLuma <= 16 ? 0 : iLuma >= 236 ? 255 : (iLuma - 16) * 255 / 219;
        ASSERT_EQ(aucCombined[16], iExpected) << "luma " << iLuma;
        ASSERT_EQ(aucCombined[23], iExpected) << "luma " << iLuma;
    }
}

TEST(CombineKernels, ExtractGivesGreyKeyWithTheAlphaAsLuma)
{
    unsigned char aucCombined[24], aucFill[16], aucKey[16];
    for (int i = 0; i < 24; ++i) aucCombined[i] = static_cast<unsigned char>(i < 16 ? 0x40 + i : i - 16);
    ConcurrencyExtract(aucFill, aucKey, aucCombined, 1, 1, 0, 0, 0);
    const unsigned char aucExpectedKey[16] = {0, 0x80, 1, 0x80, 2, 0x80, 3, 0x80, 4, 0x80, 5, 0x80, 6, 0x80, 7, 0x80};
    EXPECT_EQ(0, std::memcmp(aucKey, aucExpectedKey, 16));
    EXPECT_EQ(0, std::memcmp(aucFill, aucCombined, 16));
}

// Three guarded pictures of lines x chunks with the given skips.
struct SFrames {
    SFrames(int in_iLines, int in_iChunks, int in_iSkipC, int in_iSkipA, int in_iSkipB, int in_iFillChunk,
            int in_iCombinedChunk)
        : oA(Size(in_iLines, in_iChunks * in_iFillChunk + in_iSkipA)),
          oB(Size(in_iLines, in_iChunks * in_iFillChunk + in_iSkipB)),
          oC(Size(in_iLines, in_iChunks * in_iCombinedChunk + in_iSkipC))
    {
    }
    static size_t Size(int in_iLines, int in_iPitch) { return size_t(std::max(0, in_iPitch)) * in_iLines; }
    CGuardedBuffer oA, oB, oC;
};

struct SLayout {
    int iLines, iChunks, iSkipC, iSkipA, iSkipB;
};

// Positive padding, exact pitches, and pitches that end inside the last
// chunk (one or two chunks short, and a combined line that ends 8 bytes
// into its chunk).
const SLayout kLayouts[] = {{1, 1, 0, 0, 0},      {3, 7, 8, 16, 0},     {16, 240, 128, 0, 32},
                            {5, 9, -8, 0, 0},     {5, 9, -16, -8, -4},  {4, 5, 0, -16, 0},
                            {4, 5, -40, -20, 0},  {2, 3, -48, -32, -16}, {0, 4, 0, 0, 0}};

TEST(CombineKernels, Sse2MatchesTheScalarReferenceOnRandomLinesAndNeverLeavesItsLines)
{
    std::mt19937 oRandom = SeededRandom("CombineKernels.Sse2");
    for (const SLayout& l : kLayouts) {
        SCOPED_TRACE(testing::Message() << l.iLines << " lines of " << l.iChunks << " chunks, skips C " << l.iSkipC
                                        << " A " << l.iSkipA << " B " << l.iSkipB);
        // Combine, both alpha modes.
        for (bool bScale : {false, true}) {
            SFrames oSimd(l.iLines, l.iChunks, l.iSkipC, l.iSkipA, l.iSkipB, 16, 24);
            SFrames oScalar(l.iLines, l.iChunks, l.iSkipC, l.iSkipA, l.iSkipB, 16, 24);
            oSimd.oA.FillRandom(oRandom);
            oSimd.oB.FillRandom(oRandom);
            std::memcpy(oScalar.oA.Data(), oSimd.oA.Data(), oSimd.oA.Size());
            std::memcpy(oScalar.oB.Data(), oSimd.oB.Data(), oSimd.oB.Size());
            (bScale ? ConcurrencyCombineAlphaScaling : ConcurrencyCombine)(
                oSimd.oA.Data(), oSimd.oB.Data(), oSimd.oC.Data(), l.iLines, l.iChunks, l.iSkipC, l.iSkipA, l.iSkipB);
            RunLines<true, 16, 24>(oScalar.oA.Data(), oScalar.oB.Data(), oScalar.oC.Data(), l.iLines, l.iChunks,
                                   l.iSkipC, l.iSkipA, l.iSkipB,
                                   bScale ? CombineChunkCPP<true> : CombineChunkCPP<false>);
            EXPECT_EQ(oSimd.oC.Bytes(), oScalar.oC.Bytes()) << "scale " << bScale;
            EXPECT_TRUE(oSimd.oC.GuardsIntact());
        }
        // Extract.
        SFrames oSimd(l.iLines, l.iChunks, l.iSkipC, l.iSkipA, l.iSkipB, 16, 24);
        SFrames oScalar(l.iLines, l.iChunks, l.iSkipC, l.iSkipA, l.iSkipB, 16, 24);
        oSimd.oC.FillRandom(oRandom);
        std::memcpy(oScalar.oC.Data(), oSimd.oC.Data(), oSimd.oC.Size());
        ConcurrencyExtract(oSimd.oA.Data(), oSimd.oB.Data(), oSimd.oC.Data(), l.iLines, l.iChunks, l.iSkipC,
                           l.iSkipA, l.iSkipB);
        RunLines<false, 16, 24>(oScalar.oA.Data(), oScalar.oB.Data(), oScalar.oC.Data(), l.iLines, l.iChunks,
                                l.iSkipC, l.iSkipA, l.iSkipB, ExtractChunkCPP);
        EXPECT_EQ(oSimd.oA.Bytes(), oScalar.oA.Bytes());
        EXPECT_EQ(oSimd.oB.Bytes(), oScalar.oB.Bytes());
        EXPECT_TRUE(oSimd.oA.GuardsIntact());
        EXPECT_TRUE(oSimd.oB.GuardsIntact());
    }
}

TEST(CombineKernels, ShortLinesKeepTheBytesThatFitAndStartEachLineAtItsPitch)
{
    // The combined pitch ends 8 bytes into the third chunk: lines are 56
    // bytes apart, and each holds the first 56 bytes of what a roomy line
    // would hold.
    std::mt19937 oRandom = SeededRandom("CombineKernels.ShortLines");
    const int iLines = 3, iChunks = 3;
    CGuardedBuffer oFill(iLines * 48), oKey(iLines * 48);
    oFill.FillRandom(oRandom);
    oKey.FillRandom(oRandom);
    CGuardedBuffer oRoomy(iLines * 72), oShort(iLines * 56, 0, 0xEE);
    ConcurrencyCombine(oFill.Data(), oKey.Data(), oRoomy.Data(), iLines, iChunks, 0, 0, 0);
    ConcurrencyCombine(oFill.Data(), oKey.Data(), oShort.Data(), iLines, iChunks, -16, 0, 0);
    for (int y = 0; y < iLines; ++y)
        EXPECT_EQ(0, std::memcmp(oShort.Data() + 56 * y, oRoomy.Data() + 72 * y, 56)) << "line " << y;
    EXPECT_TRUE(oShort.GuardsIntact());
}

TEST(CombineKernels, CombineThenExtractGivesBackTheFillAndTheKeyLuma)
{
    std::mt19937 oRandom = SeededRandom("CombineKernels.RoundTrip");
    const int iLines = 6, iChunks = 11, iSkip = 16;
    const int iFillPitch = iChunks * 16 + iSkip, iCombinedPitch = iChunks * 24 + iSkip;
    CGuardedBuffer oFill(iLines * iFillPitch), oKey(iLines * iFillPitch), oCombined(iLines * iCombinedPitch);
    CGuardedBuffer oFillOut(iLines * iFillPitch), oKeyOut(iLines * iFillPitch);
    oFill.FillRandom(oRandom);
    oKey.FillRandom(oRandom);
    ConcurrencyCombine(oFill.Data(), oKey.Data(), oCombined.Data(), iLines, iChunks, iSkip, iSkip, iSkip);
    ConcurrencyExtract(oFillOut.Data(), oKeyOut.Data(), oCombined.Data(), iLines, iChunks, iSkip, iSkip, iSkip);
    for (int y = 0; y < iLines; ++y)
        for (int x = 0; x < iChunks * 16; ++x) {
            const size_t i = size_t(y) * iFillPitch + x;
            ASSERT_EQ(oFillOut[i], oFill[i]);
            ASSERT_EQ(oKeyOut[i], x % 2 == 0 ? oKey[i] : 0x80);
        }
}

}  // namespace
