// The fill of a v210 buffer surface: whole groups, the partial last group,
// the unmasked sum of the components, cursors, refusals, and the SSE2 stores
// against the scalar reference.
#include <gtest/gtest.h>

#include "tests/surfaces/surfacetesthelpers.h"

using namespace NQxTest;

namespace {

class CV210Buffer : public CQxcV210_10bits_BufferSurface {
public:
    explicit CV210Buffer(bool in_bCached) : CQxcV210_10bits_BufferSurface(in_bCached) {}
    bool FillBlocks(const SQxcYuvaPixel&, unsigned int, unsigned int) override { return false; }
    QXC_KERNELS_YuvFromRgbaAndRgb24(QXT_NOT_HERE)
};

uint32_t Word32(const uint8_t* in_puc, unsigned in_ui)
{
    uint32_t ui;
    std::memcpy(&ui, in_puc + 4 * in_ui, 4);
    return ui;
}

const SQxcYuvaPixel ksColor = {100, 200, 300, 1023};

TEST(V210Fill, SevenPixelsAreAWholeGroupAndOneWithCbAndYOnly)
{
    CPicture o(64, 2);
    CV210Buffer oSurface(false);
    oSurface.Initialize(o.Data(), 7, 2, 64, false, keQxColorimetryITUR_BT_709, keQxcColorRangeYuv);
    ASSERT_TRUE(oSurface.Fill(ksColor, 7, 2));
    for (unsigned uiLine = 0; uiLine < 2; ++uiLine) {
        const uint8_t* puc = o.Line(uiLine);
        EXPECT_EQ(200u | 100u << 10 | 300u << 20, Word32(puc, 0));
        EXPECT_EQ(100u | 200u << 10 | 100u << 20, Word32(puc, 1));
        EXPECT_EQ(300u | 100u << 10 | 200u << 20, Word32(puc, 2));
        EXPECT_EQ(100u | 300u << 10 | 100u << 20, Word32(puc, 3));
        EXPECT_EQ(200u | 100u << 10, Word32(puc, 4)) << "one pixel: Cb and Y, and Cr stays zero";
        for (unsigned ui = 5; ui < 8; ++ui)
            EXPECT_EQ(0u, Word32(puc, ui));
        for (unsigned ui = 32; ui < 64; ++ui)
            EXPECT_EQ(kucGuard, puc[ui]) << "past the groups";
    }
    EXPECT_TRUE(o.GuardsIntact());
    unsigned uiX = 0, uiY = 0;
    oSurface.GetPosition(&uiX, &uiY);
    EXPECT_EQ(7u, uiX);
    EXPECT_EQ(1u, uiY) << "the line cursor rests on the last line filled";
}

TEST(V210Fill, EachRemainderOwnsItsFieldsAndSixIsOneGroup)
{
    // The partial group of k pixels holds the first 2k fields.
    const uint32_t auiExpected[6][4] = {
        {0, 0, 0, 0},
        {200u | 100u << 10, 0, 0, 0},
        {200u | 100u << 10 | 300u << 20, 100, 0, 0},
        {200u | 100u << 10 | 300u << 20, 100u | 200u << 10 | 100u << 20, 0, 0},
        {200u | 100u << 10 | 300u << 20, 100u | 200u << 10 | 100u << 20, 300u | 100u << 10, 0},
        {200u | 100u << 10 | 300u << 20, 100u | 200u << 10 | 100u << 20, 300u | 100u << 10 | 200u << 20, 100}};
    for (unsigned k = 1; k <= 6; ++k) {
        CPicture o(32, 1);
        CV210Buffer oSurface(true);
        oSurface.Initialize(o.Data(), 12, 1, 32, false, keQxColorimetryITUR_BT_709, keQxcColorRangeYuv);
        ASSERT_TRUE(oSurface.Fill(ksColor, k, 1));
        if (k == 6) {
            EXPECT_EQ(100u | 300u << 10 | 100u << 20, Word32(o.Data(), 3));
            EXPECT_EQ(kucGuard, o.Data()[16]) << "six pixels are exactly one group";
            continue;
        }
        for (unsigned w = 0; w < 4; ++w)
            EXPECT_EQ(auiExpected[k][w], Word32(o.Data(), w)) << k << " pixels, word " << w;
    }
}

TEST(V210Fill, ComponentsAreAddedUnmasked)
{
    CPicture o(16, 1);
    CV210Buffer oSurface(true);
    oSurface.Initialize(o.Data(), 6, 1, 16, false, keQxColorimetryITUR_BT_709, keQxcColorRangeYuv);
    ASSERT_TRUE(oSurface.Fill(SQxcYuvaPixel{1024, 0, 0, 0}, 6, 1));
    EXPECT_EQ(1u << 20, Word32(o.Data(), 0)) << "Y 1024 spills into the Cr field";
}

TEST(V210Fill, RefusesOutsideTheSurfaceAndDoesNothingForEmptyFills)
{
    CPicture o(64, 2);
    CV210Buffer oSurface(false);
    oSurface.Initialize(o.Data(), 12, 2, 64, false, keQxColorimetryITUR_BT_709, keQxcColorRangeYuv);
    ASSERT_TRUE(oSurface.SetPosition(6, 1));
    EXPECT_FALSE(oSurface.Fill(ksColor, 7, 1));
    EXPECT_FALSE(oSurface.Fill(ksColor, 6, 2));
    EXPECT_TRUE(oSurface.Fill(ksColor, 0, 2));
    EXPECT_TRUE(oSurface.Fill(ksColor, 6, 0));
    for (size_t ui = 0; ui < o.Bytes(); ++ui)
        ASSERT_EQ(kucGuard, o.Data()[ui]);
    ASSERT_TRUE(oSurface.Fill(ksColor, 6, 1));
    EXPECT_EQ(kucGuard, o.Line(1)[15]);
    EXPECT_NE(kucGuard, o.Line(1)[16]) << "from the cursor's group";
}

TEST(V210Fill, StoresMatchTheScalarReference)
{
    std::mt19937 oRandom(8);
    for (int i = 0; i < 60; ++i) {
        const unsigned uiWidth = 1 + oRandom() % 200;
        const unsigned uiLines = 1 + oRandom() % 3;
        const long lPitch = NQxcKernels::V210LinePixels(uiWidth) / 6 * 16 + 16 * (oRandom() % 3);
        const SQxcYuvaPixel sColor = {static_cast<uint16_t>(oRandom() % 1024), static_cast<uint16_t>(oRandom() % 1024),
                                      static_cast<uint16_t>(oRandom() % 1024), 0};
        CPicture oKernel(lPitch, uiLines);
        FillRandom(oKernel.Data(), oKernel.Bytes(), oRandom);
        CPicture oReference(oKernel);
        CV210Buffer oSurface(i % 2 == 0);
        oSurface.Initialize(oKernel.Data(), uiWidth, uiLines, lPitch, false, keQxColorimetryITUR_BT_709,
                            keQxcColorRangeYuv);
        ASSERT_TRUE(oSurface.Fill(sColor, uiWidth, uiLines));
        NQxcKernels::V210FillLines(NQxcKernels::CScalar(), NQxcKernels::SV210Fill(sColor, uiWidth),
                                   oReference.Data(), lPitch, uiLines, NQxcKernels::keStoreCached);
        ASSERT_TRUE(oKernel.SameAs(oReference)) << "width " << uiWidth;
    }
}

}  // namespace
