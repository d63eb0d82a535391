// Combine and extract line kernels: documented values, SSE2 against the
// scalar references on random lines, and lines whose pitch ends inside a
// chunk (combine followed by extract runs through the engine's test).
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

// Each exported kernel with the scalar reference it must match.
struct SKernel {
    const char* pszName;
    PFNQxcCombineExtractKernel pfnSimd;
    PFNQxcCombineExtractKernel pfnScalar;
    int iFillChunk, iCombinedChunk;
    bool bCombine;
};

template <bool kCombine, int kFill, int kCombined, void (*kChunk)(unsigned char*, unsigned char*, unsigned char*)>
void ScalarKernel(unsigned char* a, unsigned char* b, unsigned char* c, int l, int n, int sc, int sa, int sb)
{
    RunLines<kCombine, kFill, kCombined>(a, b, c, l, n, sc, sa, sb, kChunk);
}

template <void (*kChunk)(const unsigned char*, const unsigned char*, unsigned char*)>
void CombineChunk(unsigned char* a, unsigned char* b, unsigned char* c)
{
    kChunk(a, b, c);
}

template <void (*kChunk)(unsigned char*, unsigned char*, const unsigned char*)>
void ExtractChunk(unsigned char* a, unsigned char* b, unsigned char* c)
{
    kChunk(a, b, c);
}

const SKernel kKernels[] = {
    {"combine", ConcurrencyCombine, ScalarKernel<true, 16, 24, CombineChunk<CombineChunkCPP<false>>>, 16, 24, true},
    {"combine scaled", ConcurrencyCombineAlphaScaling,
     ScalarKernel<true, 16, 24, CombineChunk<CombineChunkCPP<true>>>, 16, 24, true},
    {"extract", ConcurrencyExtract, ScalarKernel<false, 16, 24, ExtractChunk<ExtractChunkCPP>>, 16, 24, false},
    {"combine v210", ConcurrencyCombine_v210, ScalarKernel<true, 32, 48, CombineChunk<CombineChunkV210CPP<false>>>,
     32, 48, true},
    {"combine v210 scaled", ConcurrencyCombineAlphaScaling_v210,
     ScalarKernel<true, 32, 48, CombineChunk<CombineChunkV210CPP<true>>>, 32, 48, true},
    {"extract v210", ConcurrencyExtract_v210, ScalarKernel<false, 32, 48, ExtractChunk<ExtractChunkV210CPP>>, 32, 48,
     false},
};

TEST(CombineKernels, Sse2MatchesTheScalarReferenceOnRandomLinesAndNeverLeavesItsLines)
{
    std::mt19937 oRandom = SeededRandom("CombineKernels.Sse2");
    for (const SKernel& k : kKernels) {
        for (const SLayout& l : kLayouts) {
            SCOPED_TRACE(testing::Message() << k.pszName << ": " << l.iLines << " lines of " << l.iChunks
                                            << " chunks, skips C " << l.iSkipC << " A " << l.iSkipA << " B "
                                            << l.iSkipB);
            SFrames oSimd(l.iLines, l.iChunks, l.iSkipC, l.iSkipA, l.iSkipB, k.iFillChunk, k.iCombinedChunk);
            SFrames oScalar(l.iLines, l.iChunks, l.iSkipC, l.iSkipA, l.iSkipB, k.iFillChunk, k.iCombinedChunk);
            // Inputs random, outputs pre-filled with the same random bytes so
            // that bytes a kernel must not write are compared too.
            for (CGuardedBuffer* p : {&oSimd.oA, &oSimd.oB, &oSimd.oC}) p->FillRandom(oRandom);
            std::memcpy(oScalar.oA.Data(), oSimd.oA.Data(), oSimd.oA.Size());
            std::memcpy(oScalar.oB.Data(), oSimd.oB.Data(), oSimd.oB.Size());
            std::memcpy(oScalar.oC.Data(), oSimd.oC.Data(), oSimd.oC.Size());
            k.pfnSimd(oSimd.oA.Data(), oSimd.oB.Data(), oSimd.oC.Data(), l.iLines, l.iChunks, l.iSkipC, l.iSkipA,
                      l.iSkipB);
            k.pfnScalar(oScalar.oA.Data(), oScalar.oB.Data(), oScalar.oC.Data(), l.iLines, l.iChunks, l.iSkipC,
                        l.iSkipA, l.iSkipB);
            EXPECT_EQ(oSimd.oA.Bytes(), oScalar.oA.Bytes());
            EXPECT_EQ(oSimd.oB.Bytes(), oScalar.oB.Bytes());
            EXPECT_EQ(oSimd.oC.Bytes(), oScalar.oC.Bytes());
            for (CGuardedBuffer* p : {&oSimd.oA, &oSimd.oB, &oSimd.oC}) EXPECT_TRUE(p->GuardsIntact());
        }
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

// v210 groups built from known values: (Cb0 Y0 Cr0) (Y1 Cb1 Y2) (Cr1 Y3 Cb2)
// (Y4 Cr2 Y5) with Y = 100 + 10 i, chroma 600 + 10 n.
void MakeV210Chunk(const uint16_t in_ausLuma[12], const uint16_t in_ausChroma[12], unsigned char* out_puc)
{
    for (int g = 0; g < 2; ++g) {
        const uint16_t* y = in_ausLuma + 6 * g;
        const uint16_t* c = in_ausChroma + 6 * g;
        const uint32_t auiWords[4] = {c[0] | uint32_t(y[0]) << 10 | uint32_t(c[1]) << 20,
                                      y[1] | uint32_t(c[2]) << 10 | uint32_t(y[2]) << 20,
                                      c[3] | uint32_t(y[3]) << 10 | uint32_t(c[4]) << 20,
                                      y[4] | uint32_t(c[5]) << 10 | uint32_t(y[5]) << 20};
        std::memcpy(out_puc + 16 * g, auiWords, 16);
    }
}

TEST(CombineKernels, V210CombinedWordsCarryLumaChromaAndKeyOfEachPixel)
{
    uint16_t ausLuma[12], ausChroma[12], ausKey[12], ausGrey[12];
    for (int i = 0; i < 12; ++i) {
        ausLuma[i] = uint16_t(100 + 10 * i);
        ausChroma[i] = uint16_t(600 + 10 * i);  // Cb for even pixels, Cr for odd
        ausKey[i] = uint16_t(i * 90);
        ausGrey[i] = 512;
    }
    unsigned char aucFill[32], aucKey[32], aucCombined[48];
    MakeV210Chunk(ausLuma, ausChroma, aucFill);
    MakeV210Chunk(ausKey, ausGrey, aucKey);

    uint16_t ausOutLuma[12], ausOutChroma[12], ausOutKey[12];
    format12pixelFromV210(aucFill, aucKey, ausOutLuma, ausOutChroma, ausOutKey);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(ausOutLuma[i], ausLuma[i]);
        EXPECT_EQ(ausOutChroma[i], ausChroma[i]);
        EXPECT_EQ(ausOutKey[i], ausKey[i]);
    }

    ConcurrencyCombine_v210(aucFill, aucKey, aucCombined, 1, 1, 0, 0, 0);
    for (int i = 0; i < 12; ++i) {
        uint32_t uiWord;
        std::memcpy(&uiWord, aucCombined + 4 * i, 4);
        EXPECT_EQ(uiWord, (uint32_t(ausLuma[i]) << 20) | (uint32_t(ausChroma[i]) << 10) | ausKey[i]) << "pixel " << i;
    }

    // Extract gives the fill back and a grey key with the alpha as luma.
    unsigned char aucFillOut[32], aucKeyOut[32];
    ConcurrencyExtract_v210(aucFillOut, aucKeyOut, aucCombined, 1, 1, 0, 0, 0);
    EXPECT_EQ(0, std::memcmp(aucFillOut, aucFill, 32));
    EXPECT_EQ(0, std::memcmp(aucKeyOut, aucKey, 32));

    // Every 10-bit key luma through the scaling equals the formula.
    for (int iLuma = 0; iLuma < 1024; ++iLuma) {
        for (int i = 0; i < 12; ++i) ausKey[i] = uint16_t(iLuma);
        MakeV210Chunk(ausKey, ausGrey, aucKey);
        ConcurrencyCombineAlphaScaling_v210(aucFill, aucKey, aucCombined, 1, 1, 0, 0, 0);
        const uint32_t uiExpected = iLuma <= 64 ? 0 : iLuma >= 940 ? 1023 : uint32_t(iLuma - 64) * 1023 / 876;
        for (int i = 0; i < 12; ++i) {
            uint32_t uiWord;
            std::memcpy(&uiWord, aucCombined + 4 * i, 4);
            ASSERT_EQ(uiWord & 0x3FF, uiExpected) << "luma " << iLuma << " pixel " << i;
        }
    }
}

}  // namespace
