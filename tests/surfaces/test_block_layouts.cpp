// The layouts and the arithmetic of the block formats, checked against bytes
// written out by hand, and the lossless round trips.
#include <gtest/gtest.h>

#include "tests/surfaces/surfacetesthelpers.h"

using namespace NQxTest;

namespace {

// A destination and a source bound to pictures of one width, cursors at 0.
struct SPair {
    SPair(EQxcSurfaceType in_eDestination, EQxcSurfaceType in_eSource, unsigned in_uiWidth, unsigned in_uiLines,
          bool in_bSourceKey = true)
        : oDestination(LineBytes(in_eDestination, in_uiWidth), in_uiLines),
          oSource(LineBytes(in_eSource, in_uiWidth), in_uiLines),
          pDestination(CreateSurface(in_eDestination, false)),
          pSource(CreateSurface(in_eSource, false)),
          uiWidth(in_uiWidth),
          uiLines(in_uiLines)
    {
        pDestination->Initialize(oDestination.Data(), in_uiWidth, in_uiLines, oDestination.Pitch(), true,
                                 keQxColorimetryITUR_BT_709);
        pSource->Initialize(oSource.Data(), in_uiWidth, in_uiLines, oSource.Pitch(), in_bSourceKey,
                            keQxColorimetryITUR_BT_709);
    }
    bool Copy() { return pDestination->CopyBlocksFrom(pSource.get(), pSource->GetWidthInBlocks(), uiLines); }

    CPicture oDestination;
    CPicture oSource;
    std::unique_ptr<CQxcSurface> pDestination;
    std::unique_ptr<CQxcSurface> pSource;
    unsigned uiWidth;
    unsigned uiLines;
};

uint16_t Word(const uint8_t* in_puc, unsigned in_uiIndex)
{
    uint16_t us;
    std::memcpy(&us, in_puc + 2 * in_uiIndex, 2);
    return us;
}
void SetWord(uint8_t* in_puc, unsigned in_uiIndex, uint16_t in_us) { std::memcpy(in_puc + 2 * in_uiIndex, &in_us, 2); }
uint32_t Word32(const uint8_t* in_puc, unsigned in_uiIndex)
{
    uint32_t ui;
    std::memcpy(&ui, in_puc + 4 * in_uiIndex, 4);
    return ui;
}
void SetWord32(uint8_t* in_puc, unsigned in_uiIndex, uint32_t in_ui) { std::memcpy(in_puc + 4 * in_uiIndex, &in_ui, 4); }

// A 16-bit 4:2:2:4 block with Y = 100 + p, Cb = 500 + j, Cr = 700 + j,
// K = 300 + p.
void WriteCountingBlock(uint8_t* out_puc)
{
    for (unsigned p = 0; p < 16; ++p) {
        SetWord(out_puc, p, static_cast<uint16_t>(100 + p));
        SetWord(out_puc, 32 + p, static_cast<uint16_t>(300 + p));
    }
    for (unsigned j = 0; j < 8; ++j) {
        SetWord(out_puc, 16 + j, static_cast<uint16_t>(500 + j));
        SetWord(out_puc, 24 + j, static_cast<uint16_t>(700 + j));
    }
}

TEST(BlockLayouts, Yuyv8WidensByTwoBitsAndKeyIsFull)
{
    SPair o(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCr422_8bits, 16, 1);
    const uint8_t aucPixels[8] = {16, 128, 235, 240, 0, 1, 255, 254};  // Y0 Cb0 Y1 Cr0 Y2 Cb1 Y3 Cr1
    std::memset(o.oSource.Data(), 0, 32);
    std::memcpy(o.oSource.Data(), aucPixels, 8);
    ASSERT_TRUE(o.Copy());
    const uint8_t* puc = o.oDestination.Data();
    EXPECT_EQ(64, Word(puc, 0));
    EXPECT_EQ(940, Word(puc, 1));
    EXPECT_EQ(0, Word(puc, 2));
    EXPECT_EQ(1020, Word(puc, 3));
    EXPECT_EQ(512, Word(puc, 16));  // Cb0
    EXPECT_EQ(4, Word(puc, 17));    // Cb1
    EXPECT_EQ(960, Word(puc, 24));  // Cr0
    EXPECT_EQ(1016, Word(puc, 25)); // Cr1
    for (unsigned p = 0; p < 16; ++p)
        EXPECT_EQ(1023, Word(puc, 32 + p)) << "a keyless source reads as full key";
}

TEST(BlockLayouts, SixteenBitFillWritesTheColourWords)
{
    CPicture o(96, 2);
    auto p = CreateSurface(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, false);
    p->Initialize(o.Data(), 16, 2, 96, true, keQxColorimetryITUR_BT_709);
    ASSERT_TRUE(p->FillBlocks(SQxcYuvaPixel{64, 512, 512, 1023}, 1, 2));
    for (unsigned uiLine = 0; uiLine < 2; ++uiLine) {
        for (unsigned i = 0; i < 16; ++i) {
            EXPECT_EQ(64, Word(o.Line(uiLine), i));
            EXPECT_EQ(1023, Word(o.Line(uiLine), 32 + i));
        }
        for (unsigned i = 16; i < 32; ++i)
            EXPECT_EQ(512, Word(o.Line(uiLine), i));
    }
    EXPECT_TRUE(o.GuardsIntact());
}

TEST(BlockLayouts, EightBit4224GroupsAndKeylessSourceGivesFullKey)
{
    SPair o(keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, 16, 1, false);
    WriteCountingBlock(o.oSource.Data());
    ASSERT_TRUE(o.Copy());
    const uint8_t* puc = o.oDestination.Data();
    for (unsigned g = 0; g < 2; ++g) {
        for (unsigned i = 0; i < 8; ++i) {
            const unsigned p = 8 * g + i;
            EXPECT_EQ((100 + p) >> 2, puc[24 * g + 2 * i]) << "Y of pixel " << p;
            const unsigned j = p / 2;
            EXPECT_EQ(((p % 2 == 0 ? 500 : 700) + j) >> 2, puc[24 * g + 2 * i + 1]) << "chroma of pixel " << p;
            EXPECT_EQ(255, puc[24 * g + 16 + i]) << "key of pixel " << p;
        }
    }
}

TEST(BlockLayouts, TenBit4224WordIsLumaChromaKey)
{
    SPair o(keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, 16, 1);
    WriteCountingBlock(o.oSource.Data());
    ASSERT_TRUE(o.Copy());
    for (unsigned p = 0; p < 16; ++p) {
        const uint32_t uiC = (p % 2 == 0 ? 500 : 700) + p / 2;
        EXPECT_EQ(((100u + p) << 20) | (uiC << 10) | (300u + p), Word32(o.oDestination.Data(), p)) << p;
    }
    // And back.
    SPair oBack(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, 16, 1);
    std::memcpy(oBack.oSource.Data(), o.oDestination.Data(), 64);
    ASSERT_TRUE(oBack.Copy());
    EXPECT_EQ(0, std::memcmp(oBack.oDestination.Data(), o.oSource.Data(), 96));
}

TEST(BlockLayouts, SixteenBit4444IsYCbCrKPerPixelAndAycbcrIsKeyFirst)
{
    // 4:4:4:4 words Y Cb Cr K, read into the hub (the first pixel's chroma).
    SPair o(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, 16, 1);
    for (unsigned p = 0; p < 16; ++p) {
        SetWord(o.oSource.Data(), 4 * p, static_cast<uint16_t>(100 + p));
        SetWord(o.oSource.Data(), 4 * p + 1, static_cast<uint16_t>(500 + p));
        SetWord(o.oSource.Data(), 4 * p + 2, static_cast<uint16_t>(700 + p));
        SetWord(o.oSource.Data(), 4 * p + 3, static_cast<uint16_t>(300 + p));
    }
    ASSERT_TRUE(o.Copy());
    for (unsigned p = 0; p < 16; ++p) {
        EXPECT_EQ(100 + p, Word(o.oDestination.Data(), p));
        EXPECT_EQ(300 + p, Word(o.oDestination.Data(), 32 + p));
    }
    for (unsigned j = 0; j < 8; ++j) {
        EXPECT_EQ(500 + 2 * j, Word(o.oDestination.Data(), 16 + j));
        EXPECT_EQ(700 + 2 * j, Word(o.oDestination.Data(), 24 + j));
    }

    // AYCbCr: K Y Cb Cr; a shaped source into the shaped hub keeps its values.
    SPair oA(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, keQxcSurfaceTypeAYCbCr4444_8bits_Shaped, 16, 1);
    for (unsigned p = 0; p < 16; ++p) {
        const uint8_t auc[4] = {static_cast<uint8_t>(200 + p), static_cast<uint8_t>(16 + p),
                                static_cast<uint8_t>(100 + p), static_cast<uint8_t>(150 + p)};
        std::memcpy(oA.oSource.Data() + 4 * p, auc, 4);
    }
    ASSERT_TRUE(oA.Copy());
    for (unsigned p = 0; p < 16; ++p) {
        const unsigned k = 200 + p;
        EXPECT_EQ((16 + p) << 2, Word(oA.oDestination.Data(), p));
        EXPECT_EQ((k << 2) | (k >> 6), Word(oA.oDestination.Data(), 32 + p));
    }
    for (unsigned j = 0; j < 8; ++j) {
        EXPECT_EQ((100 + 2 * j) << 2, Word(oA.oDestination.Data(), 16 + j)) << "chroma of the pair's first pixel";
        EXPECT_EQ((150 + 2 * j) << 2, Word(oA.oDestination.Data(), 24 + j));
    }
}

TEST(BlockLayouts, Packed10SplitsUpperBytesAndLowPairs)
{
    CPicture o(40, 1);
    auto p = CreateSurface(keQxcSurfaceTypeYCbCr422_10bits, false);
    p->Initialize(o.Data(), 16, 1, 40, true, keQxColorimetryITUR_BT_709);
    ASSERT_TRUE(p->FillBlocks(SQxcYuvaPixel{1023, 514, 1, 1023}, 1, 1));
    const uint8_t* puc = o.Data();
    for (unsigned i = 0; i < 32; i += 4) {
        EXPECT_EQ(255, puc[i]);      // Y
        EXPECT_EQ(128, puc[i + 1]);  // Cb 514
        EXPECT_EQ(255, puc[i + 2]);  // Y
        EXPECT_EQ(0, puc[i + 3]);    // Cr 1
    }
    // Low pairs: Y 3 at bits 0-1, Cb 2 at 2-3, Y 3 at 4-5, Cr 1 at 6-7.
    for (unsigned m = 0; m < 8; ++m)
        EXPECT_EQ(3 | (2 << 2) | (3 << 4) | (1 << 6), puc[32 + m]);

    // Reading it back gives the values.
    SPair oBack(keQxcSurfaceTypeYCbCr422_16bits, keQxcSurfaceTypeYCbCr422_10bits, 16, 1);
    std::memcpy(oBack.oSource.Data(), puc, 40);
    ASSERT_TRUE(oBack.Copy());
    EXPECT_EQ(1023, Word(oBack.oDestination.Data(), 5));
    EXPECT_EQ(514, Word(oBack.oDestination.Data(), 16 + 3));
    EXPECT_EQ(1, Word(oBack.oDestination.Data(), 24 + 7));
}

// v210 words written out by hand for 48 pixels: Y = 10 + p, Cb = 400 + j,
// Cr = 800 + j.
void WriteV210ByHand(uint8_t* out_puc, unsigned in_uiGroups)
{
    for (unsigned g = 0; g < in_uiGroups; ++g) {
        const uint32_t y = 10 + 6 * g, b = 400 + 3 * g, r = 800 + 3 * g;
        SetWord32(out_puc, 4 * g + 0, b | (y << 10) | (r << 20));
        SetWord32(out_puc, 4 * g + 1, (y + 1) | ((b + 1) << 10) | ((y + 2) << 20));
        SetWord32(out_puc, 4 * g + 2, (r + 1) | ((y + 3) << 10) | ((b + 2) << 20));
        SetWord32(out_puc, 4 * g + 3, (y + 4) | ((r + 2) << 10) | ((y + 5) << 20));
    }
}

TEST(BlockLayouts, V210DecodesAndEncodesTheFieldOrder)
{
    SPair o(keQxcSurfaceTypeYCbCr422_16bits, keQxcSurfaceTypeV210_10bits, 48, 1);
    WriteV210ByHand(o.oSource.Data(), 8);
    ASSERT_TRUE(o.Copy());
    for (unsigned b = 0; b < 3; ++b) {
        const uint8_t* puc = o.oDestination.Data() + 64 * b;
        for (unsigned i = 0; i < 16; ++i)
            EXPECT_EQ(10 + 16 * b + i, Word(puc, i)) << "Y of pixel " << 16 * b + i;
        for (unsigned j = 0; j < 8; ++j) {
            EXPECT_EQ(400 + 8 * b + j, Word(puc, 16 + j));
            EXPECT_EQ(800 + 8 * b + j, Word(puc, 24 + j));
        }
    }
    SPair oBack(keQxcSurfaceTypeV210_10bits, keQxcSurfaceTypeYCbCr422_16bits, 48, 1);
    std::memcpy(oBack.oSource.Data(), o.oDestination.Data(), 3 * 64);
    ASSERT_TRUE(oBack.Copy());
    EXPECT_EQ(0, std::memcmp(oBack.oDestination.Data(), o.oSource.Data(), 128));
}

TEST(BlockLayouts, V210ReadsPixelsPastItsLastGroupAsZeroAndNeverWritesThere)
{
    // 20 pixels: four groups (24 pixels) a line; the second block reaches 32.
    SPair o(keQxcSurfaceTypeYCbCr422_16bits, keQxcSurfaceTypeV210_10bits, 20, 1);
    WriteV210ByHand(o.oSource.Data(), 4);
    ASSERT_TRUE(o.Copy());
    const uint8_t* puc = o.oDestination.Data() + 64;
    for (unsigned i = 0; i < 16; ++i)
        EXPECT_EQ(i < 8 ? 26 + i : 0, Word(puc, i)) << "Y of pixel " << 16 + i;
    for (unsigned j = 0; j < 8; ++j)
        EXPECT_EQ(j < 4 ? 408 + j : 0, Word(puc, 16 + j));

    SPair oBack(keQxcSurfaceTypeV210_10bits, keQxcSurfaceTypeYCbCr422_16bits, 20, 1);
    ASSERT_EQ(64, oBack.oDestination.Pitch());
    std::memcpy(oBack.oSource.Data(), o.oDestination.Data(), 128);
    ASSERT_TRUE(oBack.Copy());
    EXPECT_EQ(0, std::memcmp(oBack.oDestination.Data(), o.oSource.Data(), 64));
    EXPECT_TRUE(oBack.oDestination.GuardsIntact());
}

TEST(BlockLayouts, ShapedKeyZeroUnshapesToBlackAndFullKeyToAQuarter)
{
    SPair o(keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, 16, 1);
    uint8_t* puc = o.oSource.Data();
    for (unsigned p = 0; p < 16; ++p) {
        SetWord(puc, p, 600);
        SetWord(puc, 32 + p, p < 8 ? 0 : 1023);
    }
    for (unsigned j = 0; j < 8; ++j) {
        SetWord(puc, 16 + j, 700);
        SetWord(puc, 24 + j, 300);
    }
    ASSERT_TRUE(o.Copy());
    const uint8_t* pucOut = o.oDestination.Data();
    for (unsigned i = 0; i < 8; ++i) {
        EXPECT_EQ(0, pucOut[2 * i]);                         // Y of key 0
        EXPECT_EQ(128, pucOut[2 * i + 1]);                   // Cb and Cr of key 0
        EXPECT_EQ(0, pucOut[16 + i]);                        // key 0
        EXPECT_EQ(150, pucOut[24 + 2 * i]);                  // 600 / 4
        EXPECT_EQ(i % 2 == 0 ? 175 : 75, pucOut[24 + 2 * i + 1]);  // 700 / 4, 300 / 4
        EXPECT_EQ(255, pucOut[40 + i]);
    }

    // Into 16 bits: a half key doubles (r = 64 for key 512).
    SPair o10(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped, 16, 1);
    for (unsigned p = 0; p < 16; ++p)
        SetWord32(o10.oSource.Data(), p, (256u << 20) | ((p % 2 == 0 ? 612u : 462u) << 10) | 512u);
    ASSERT_TRUE(o10.Copy());
    EXPECT_EQ(512, Word(o10.oDestination.Data(), 0));
    EXPECT_EQ(712, Word(o10.oDestination.Data(), 16));  // 512 + 2 x 100
    EXPECT_EQ(412, Word(o10.oDestination.Data(), 24));  // 512 - 2 x 50
    EXPECT_EQ(512, Word(o10.oDestination.Data(), 32));
}

TEST(BlockLayouts, UnshapedIntoShapedOnlyReducesDepth)
{
    SPair o(keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, 16, 1);
    WriteCountingBlock(o.oSource.Data());
    ASSERT_TRUE(o.Copy());
    EXPECT_EQ(100 >> 2, o.oDestination.Data()[0]);
    EXPECT_EQ(500 >> 2, o.oDestination.Data()[1]);
    EXPECT_EQ(300 >> 2, o.oDestination.Data()[16]);
}

TEST(BlockLayouts, YuyvAnd2vuyExchangeBytesExactly)
{
    SPair o(keQxcSurfaceType2VUY_8bits, keQxcSurfaceTypeYCbCr422_8bits, 40, 2);
    std::mt19937 oRandom(3);
    FillRandom(o.oSource.Data(), o.oSource.Bytes(), oRandom);
    ASSERT_TRUE(o.Copy());
    for (unsigned uiLine = 0; uiLine < 2; ++uiLine)
        for (unsigned i = 0; i < 96; i += 2) {
            EXPECT_EQ(o.oSource.Line(uiLine)[i], o.oDestination.Line(uiLine)[i + 1]);
            EXPECT_EQ(o.oSource.Line(uiLine)[i + 1], o.oDestination.Line(uiLine)[i]);
        }
}

// ------------------------------------------------------ RGB into the hub
// A hub bound with an RGB side, and one 16-pixel line of an RGB source.
struct SRgbPair {
    SRgbPair(EQxcSurfaceType in_eSource, EQxcColorRange in_eRange, EQxColorimetry in_eRgb)
        : oDestination(96, 1), oSource(LineBytes(in_eSource, 16), 1), pSource(CreateSurface(in_eSource, false))
    {
        pHub.reset(CQxcSurfaceFactory().CreateYCbCrA4224_16bits_UnshapedSurface(false));
        pHub->InitializeRGB10(oDestination.Data(), 16, 1, 96, true, keQxColorimetryITUR_BT_709, in_eRange, in_eRgb);
        pSource->Initialize(oSource.Data(), 16, 1, oSource.Pitch(), true, keQxColorimetryITUR_BT_709);
    }
    bool Copy() { return pHub->CopyBlocksFrom(pSource.get(), 1, 1); }
    uint16_t Y(unsigned p) const { return Word(oDestination.Data(), p); }
    uint16_t Cb(unsigned p) const { return Word(oDestination.Data(), 16 + p / 2); }
    uint16_t Cr(unsigned p) const { return Word(oDestination.Data(), 24 + p / 2); }
    uint16_t K(unsigned p) const { return Word(oDestination.Data(), 32 + p); }

    CPicture oDestination, oSource;
    std::unique_ptr<CQxcYCbCrA4224_16bits_UnshapedSurface> pHub;
    std::unique_ptr<CQxcSurface> pSource;
};

void SetA2r10(uint8_t* out_puc, unsigned p, uint32_t a, uint32_t r, uint32_t g, uint32_t b)
{
    SetWord32(out_puc, p, a << 30 | r << 20 | g << 10 | b);
}

TEST(BlockLayouts, A2r10g10b10ThroughTheMatrixKeepsGreyAndLevels)
{
    // Video levels: white, black and grey keep their level and have no chroma.
    SRgbPair o(keQxcSurfaceTypeA2R10G10B10_Unshaped, keQxcColorRangeVideo, keQxColorimetryITUR_BT_709);
    const uint32_t auiGrey[4] = {940, 64, 502, 1023};
    for (unsigned p = 0; p < 16; ++p)
        SetA2r10(o.oSource.Data(), p, p % 4, auiGrey[p % 4], auiGrey[p % 4], auiGrey[p % 4]);
    ASSERT_TRUE(o.Copy());
    for (unsigned p = 0; p < 16; ++p) {
        EXPECT_EQ(auiGrey[p % 4], o.Y(p)) << p;
        EXPECT_EQ(512, o.Cb(p));
        EXPECT_EQ(512, o.Cr(p));
        EXPECT_EQ((p % 4) * 341, o.K(p)) << "two key bits read as thirds";
    }

    // Graphics levels: 0..1023 lands on 64..940.
    SRgbPair oG(keQxcSurfaceTypeA2R10G10B10_Unshaped, keQxcColorRangeGraphic, keQxColorimetryITUR_BT_601);
    for (unsigned p = 0; p < 16; ++p)
        SetA2r10(oG.oSource.Data(), p, 3, p < 8 ? 1023 : 0, p < 8 ? 1023 : 0, p < 8 ? 1023 : 0);
    ASSERT_TRUE(oG.Copy());
    EXPECT_EQ(940, oG.Y(0));
    EXPECT_EQ(64, oG.Y(8));
    EXPECT_EQ(512, oG.Cb(0));
    EXPECT_EQ(512, oG.Cr(8));
}

// Primaries against the standard's matrix computed here in floating point.
TEST(BlockLayouts, A2r10g10b10PrimariesFollowEachStandard)
{
    struct SStandard {
        EQxColorimetry e;
        double dKr, dKb;
    };
    const SStandard asStandards[] = {{keQxColorimetryITUR_BT_601, 0.299, 0.114},
                                     {keQxColorimetryITUR_BT_709, 0.2126, 0.0722},
                                     {keQxColorimetryITUR_BT_2100_PQ, 0.2627, 0.0593}};
    for (const SStandard& rs : asStandards) {
        SRgbPair o(keQxcSurfaceTypeA2R10G10B10_Unshaped, keQxcColorRangeVideo, rs.e);
        const uint32_t auiRgb[4][3] = {{940, 64, 64}, {64, 940, 64}, {64, 64, 940}, {700, 300, 500}};
        for (unsigned p = 0; p < 16; ++p)
            SetA2r10(o.oSource.Data(), p, 3, auiRgb[(p / 2) % 4][0], auiRgb[(p / 2) % 4][1], auiRgb[(p / 2) % 4][2]);
        ASSERT_TRUE(o.Copy());
        for (unsigned p = 0; p < 16; p += 2) {
            const double r = auiRgb[(p / 2) % 4][0], g = auiRgb[(p / 2) % 4][1], b = auiRgb[(p / 2) % 4][2];
            const double dKg = 1 - rs.dKr - rs.dKb;
            const double dY = rs.dKr * r + dKg * g + rs.dKb * b;
            const double dScale = 224.0 / 219.0;
            const double dCb = 512 + (b - dY) / (2 * (1 - rs.dKb)) * dScale;
            const double dCr = 512 + (r - dY) / (2 * (1 - rs.dKr)) * dScale;
            EXPECT_NEAR(dY, o.Y(p), 1.0) << "colorimetry " << rs.e << " pixel " << p;
            EXPECT_NEAR(dCb, o.Cb(p), 1.0) << "colorimetry " << rs.e << " pixel " << p;
            EXPECT_NEAR(dCr, o.Cr(p), 1.0) << "colorimetry " << rs.e << " pixel " << p;
        }
    }
}

TEST(BlockLayouts, RgbSourcesNeedACoefficientSetAndTheFloatFormatDoesNot)
{
    SRgbPair o(keQxcSurfaceTypeA2R10G10B10_Unshaped, keQxcColorRangeYuv, keQxColorimetryITUR_BT_709);
    const CPicture oBefore(o.oDestination);
    EXPECT_FALSE(o.Copy()) << "no set for the YUV range";
    EXPECT_TRUE(o.oDestination.SameAs(oBefore));

    SRgbPair oF(keQxcSurfaceTypeR4FL_Unshaped, keQxcColorRangeYuv, keQxColorimetryITUR_BT_709);
    const float afPixel[4] = {1.0f, -0.5f, 0.5f, 0.5f};
    const float afOther[4] = {0.0f, 0.25f, NAN, 2.0f};
    for (unsigned p = 0; p < 16; ++p)
        std::memcpy(oF.oSource.Data() + 16 * p, p % 2 == 0 ? afPixel : afOther, 16);
    ASSERT_TRUE(oF.Copy());
    EXPECT_EQ(940, oF.Y(0));
    EXPECT_EQ(64, oF.Cb(0));
    EXPECT_EQ(960, oF.Cr(0));
    EXPECT_EQ(512, oF.K(0)) << "511.5 rounds to even";
    EXPECT_EQ(64, oF.Y(1));
    EXPECT_EQ(1023, oF.K(1)) << "clamped";
}

TEST(BlockLayouts, K64argbIsBigEndianAndReadsItsTopTenBits)
{
    SRgbPair o(keQxcSurfaceTypeK64ARGB_Unshaped, keQxcColorRangeGraphic, keQxColorimetryITUR_BT_709);
    for (unsigned p = 0; p < 16; ++p) {
        const uint8_t auc[8] = {0x80, 0x00, 0xff, 0xff, 0xff, 0xff, 0xff, 0xc0};  // A 0x8000, RGB white
        std::memcpy(o.oSource.Data() + 8 * p, auc, 8);
    }
    ASSERT_TRUE(o.Copy());
    EXPECT_EQ(512, o.K(0));
    EXPECT_EQ(940, o.Y(0));
    EXPECT_EQ(512, o.Cb(0));
}

// ------------------------------------------------------------ round trips
// Converts a random picture from in_eFirst through in_eMiddle back to
// in_eFirst and expects the original bytes.
void ExpectRoundTrip(EQxcSurfaceType in_eFirst, EQxcSurfaceType in_eMiddle, unsigned in_uiWidth,
                     void (*in_pfnPrepare)(CPicture&, unsigned))
{
    const unsigned uiLines = 3;
    SPair oThere(in_eMiddle, in_eFirst, in_uiWidth, uiLines);
    std::mt19937 oRandom(in_uiWidth);
    FillRandom(oThere.oSource.Data(), oThere.oSource.Bytes(), oRandom);
    if (in_pfnPrepare)
        in_pfnPrepare(oThere.oSource, in_uiWidth);
    ASSERT_TRUE(oThere.Copy());
    SPair oBack(in_eFirst, in_eMiddle, in_uiWidth, uiLines);
    std::memcpy(oBack.oSource.Data(), oThere.oDestination.Data(), oThere.oDestination.Bytes());
    FillRandom(oBack.oDestination.Data(), oBack.oDestination.Bytes(), oRandom);
    ASSERT_TRUE(oBack.Copy());
    EXPECT_TRUE(oBack.oDestination.SameAs(oThere.oSource))
        << "round trip " << in_eFirst << " -> " << in_eMiddle << " at width " << in_uiWidth;
}

// v210 and the 10-bit 4:2:2:4 words carry only 10-bit fields: clear bits 30
// and 31 of every word.
void ClearTopBits(CPicture& io_r, unsigned)
{
    for (size_t ui = 0; ui < io_r.Bytes(); ui += 4)
        io_r.Data()[ui + 3] &= 0x3f;
}

TEST(BlockLayouts, RoundTripsAreLossless)
{
    const struct {
        EQxcSurfaceType eFirst, eMiddle;
        void (*pfnPrepare)(CPicture&, unsigned);
    } asTrips[] = {
        {keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceTypeYCbCr422_16bits, nullptr},
        {keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, nullptr},
        {keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, nullptr},
        {keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, ClearTopBits},
        {keQxcSurfaceTypeYCbCr422_10bits, keQxcSurfaceTypeYCbCr422_16bits, nullptr},
        {keQxcSurfaceTypeV210_10bits, keQxcSurfaceTypeYCbCr422_16bits, ClearTopBits},
        {keQxcSurfaceType2VUY_8bits, keQxcSurfaceTypeV210_10bits, nullptr},
        {keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceType2VUY_8bits, nullptr}};
    for (unsigned uiWidth : {48u, 96u, 1920u})
        for (const auto& r : asTrips)
            ExpectRoundTrip(r.eFirst, r.eMiddle, uiWidth, r.pfnPrepare);
}

TEST(BlockLayouts, Packed10ThroughV210AndBackIsLossless)
{
    for (unsigned uiWidth : {48u, 1280u, 1920u}) {
        SPair oToPlanar(keQxcSurfaceTypeYCbCr422_16bits, keQxcSurfaceTypeYCbCr422_10bits, uiWidth, 2);
        std::mt19937 oRandom(uiWidth);
        FillRandom(oToPlanar.oSource.Data(), oToPlanar.oSource.Bytes(), oRandom);
        ASSERT_TRUE(oToPlanar.Copy());
        SPair oToV210(keQxcSurfaceTypeV210_10bits, keQxcSurfaceTypeYCbCr422_16bits, uiWidth, 2);
        std::memcpy(oToV210.oSource.Data(), oToPlanar.oDestination.Data(), oToPlanar.oDestination.Bytes());
        ASSERT_TRUE(oToV210.Copy());
        SPair oBack(keQxcSurfaceTypeYCbCr422_10bits, keQxcSurfaceTypeV210_10bits, uiWidth, 2);
        std::memcpy(oBack.oSource.Data(), oToV210.oDestination.Data(), oToV210.oDestination.Bytes());
        ASSERT_TRUE(oBack.Copy());
        EXPECT_TRUE(oBack.oDestination.SameAs(oToPlanar.oSource)) << uiWidth;
    }
}

}  // namespace
