// The surface model: factory, binding, cursors, range tests and refusals,
// ReplaceBlockFrom, the hub's RGB side, and the buffer dispatchers (through
// leaves that record which kernel they were asked to run).
#include <gtest/gtest.h>

#include "tests/surfaces/surfacetesthelpers.h"

#include <string>

using namespace NQxTest;

namespace {

const unsigned kauiBlockSizes[] = {32, 48, 48, 40, 64, 64, 64, 96, 96, 128, 64, 0, 32};

TEST(SurfaceModel, FactoryMakesUnboundLeavesWithTheirConstants)
{
    for (int i = 0; i < 13; ++i) {
        for (bool bCached : {false, true}) {
            std::unique_ptr<CQxcSurface> p = CreateSurface(kaeBlockTypes[i], bCached);
            ASSERT_TRUE(p);
            EXPECT_EQ(kaeBlockTypes[i], p->GetSurfaceType());
            EXPECT_EQ(kauiBlockSizes[i], p->GetBlockSize());
            EXPECT_EQ(bCached, p->HasCachedStores());
            EXPECT_EQ(nullptr, p->GetBuffer());
            EXPECT_EQ(0u, p->GetWidth());
            EXPECT_EQ(0u, p->GetHeight());
            // Every surface but the 8-bit 4:2:2, 2VUY and AYCbCr block ones is
            // 16-byte aligned; the allocator aligns those too on this platform.
            EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(p.get()) % 16) << kaeBlockTypes[i];
        }
    }
}

// Surface objects hold SIMD scratch that is loaded aligned: every class the
// factory makes is 16-byte aligned but the 8-bit YUYV and 2VUY block
// surfaces and the AYCbCr one, which the ordinary allocator serves.
template <class... TClasses>
constexpr bool AllAligned16()
{
    return ((alignof(TClasses) == 16) && ...);
}
static_assert(AllAligned16<CQxcYCbCrA4224_8bits_UnshapedSurfaceSSE2, CQxcYCbCrA4224_8bits_ShapedSurfaceSSE2,
                           CQxcYCbCr422_10bitsSurfaceSSE2, CQxcYCbCrA4224_10bits_UnshapedSurfaceSSE2,
                           CQxcYCbCrA4224_10bits_ShapedSurfaceSSE2, CQxcYCbCr422_16bitsSurfaceSSE2,
                           CQxcYCbCrA4224_16bits_UnshapedSurfaceSSE2, CQxcYCbCrA4224_16bits_ShapedSurfaceSSE2,
                           CQxcYCbCrA4444_16bits_UnshapedSurfaceSSE2, CQxcV210_10bitsSurfaceSSE2>(),
              "aligned block surfaces");
static_assert(AllAligned16<CQxcYCbCr422_8bits_BufferSurfaceSSE2, qxc2VUY_8bits_BufferSurfaceSSE2,
                           CQxcYCbCrA4224_8bits_UnshapedBufferSurfaceSSE2, CQxcYCbCrA4224_8bits_ShapedBufferSurfaceSSE2,
                           CQxcYCbCr422_10bits_BufferSurfaceSSE2, CQxcYCbCrA4224_10bits_UnshapedBufferSurfaceSSE2,
                           CQxcYCbCrA4224_10bits_ShapedBufferSurfaceSSE2,
                           CQxcYCbCrA4444_16bits_UnshapedBufferSurfaceSSE2, CQxcV210_10bits_BufferSurfaceSSE2>(),
              "aligned YUV buffer surfaces");
static_assert(AllAligned16<CQxcRGBA_8bits_UnshapedBufferSurfaceSSE2, CQxcRGBA_8bits_ShapedBufferSurfaceSSE2,
                           CQxcBGRA_8bits_UnshapedBufferSurfaceSSE2, CQxcRGB24_8bits_BufferSurfaceCPP,
                           CQxcRGB36_12bits_BufferSurfaceCPP, CQxcA2R10G10B10_UnshapedBufferSurfaceSSE2,
                           CQxcA2B10G10R10_UnshapedBufferSurfaceSSE2, CQxcABGR_16bits_UnshapedBufferSurfaceSSE2,
                           CQxcK64ARGB_UnshapedBufferSurfaceSSE2, CQxcR4FL_YUYA_32bits_UnshapedBufferSurfaceSSE2>(),
              "aligned RGB buffer surfaces");

TEST(SurfaceModel, InitializeBindsAndCountsBlocksRoundedUp)
{
    auto p = CreateSurface(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, false);
    CPicture o(2 * 96 + 32, 4);
    ASSERT_TRUE(p->Initialize(o.Data(), 17, 4, o.Pitch(), true, keQxColorimetryITUR_BT_601));
    EXPECT_EQ(2u, p->GetWidthInBlocks());
    EXPECT_EQ(o.Data(), p->GetCurrentPosition());
    ASSERT_TRUE(p->SetPosition(16, 3));
    EXPECT_EQ(o.Line(3) + 96, p->GetCurrentPosition());
    // Re-binding resets the cursors.
    ASSERT_TRUE(p->Initialize(o.Data(), 16, 4, o.Pitch(), false, keQxColorimetryITUR_BT_709));
    EXPECT_EQ(1u, p->GetWidthInBlocks());
    EXPECT_EQ(0u, p->GetCursorLine());
    EXPECT_EQ(0u, p->GetCursorBlock());
    EXPECT_EQ(o.Data(), p->GetCurrentPosition());
    EXPECT_FALSE(p->IsKeyPresent());
    EXPECT_EQ(keQxColorimetryITUR_BT_709, p->GetColorimetry());
}

TEST(SurfaceModel, SetPositionUsesEachFormatsUnitAndRefusesOutside)
{
    CPicture o(4096, 3);
    auto pPacked = CreateSurface(keQxcSurfaceTypeYCbCr422_10bits, false);
    pPacked->Initialize(o.Data(), 100, 3, 4096, true, keQxColorimetryITUR_BT_709);
    ASSERT_TRUE(pPacked->SetPosition(35, 2));  // block 2
    EXPECT_EQ(o.Line(2) + 80, pPacked->GetCurrentPosition());
    EXPECT_EQ(2u, pPacked->GetCursorBlock());
    EXPECT_FALSE(pPacked->SetPosition(100, 0));
    EXPECT_FALSE(pPacked->SetPosition(0, 3));
    EXPECT_EQ(2u, pPacked->GetCursorLine()) << "a refused position moves nothing";

    auto pV210 = CreateSurface(keQxcSurfaceTypeV210_10bits, false);
    pV210->Initialize(o.Data(), 100, 3, 4096, true, keQxColorimetryITUR_BT_709);
    ASSERT_TRUE(pV210->SetPosition(16, 1));  // pixel 16 lies in group 2
    EXPECT_EQ(o.Line(1) + 32, pV210->GetCurrentPosition());
    ASSERT_TRUE(pV210->SetPosition(48, 1));  // three blocks are eight whole groups
    EXPECT_EQ(o.Line(1) + 128, pV210->GetCurrentPosition());
}

// The hub and an 8-bit YUYV source, 3 blocks and 2 lines each.
struct SRangePair {
    SRangePair()
        : oDestination(3 * 96, 2),
          oSource(3 * 32, 2),
          pDestination(CreateSurface(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, true)),
          pSource(CreateSurface(keQxcSurfaceTypeYCbCr422_8bits, true))
    {
        std::mt19937 oRandom(1);
        FillRandom(oSource.Data(), oSource.Bytes(), oRandom);
        FillRandom(oDestination.Data(), oDestination.Bytes(), oRandom);
        pDestination->Initialize(oDestination.Data(), 40, 2, oDestination.Pitch(), true, keQxColorimetryITUR_BT_709);
        pSource->Initialize(oSource.Data(), 40, 2, oSource.Pitch(), true, keQxColorimetryITUR_BT_709);
    }
    // Refused, with nothing written and the cursors left alone.
    void ExpectRefused(unsigned in_uiBlocks, unsigned in_uiLines, const char* in_psz)
    {
        const CPicture oBefore(oDestination);
        const unsigned uiLine = pDestination->GetCursorLine(), uiBlock = pDestination->GetCursorBlock();
        EXPECT_FALSE(pDestination->CopyBlocksFrom(pSource.get(), in_uiBlocks, in_uiLines)) << in_psz;
        EXPECT_TRUE(oDestination.SameAs(oBefore)) << in_psz;
        EXPECT_EQ(uiLine, pDestination->GetCursorLine()) << in_psz;
        EXPECT_EQ(uiBlock, pDestination->GetCursorBlock()) << in_psz;
    }

    CPicture oDestination, oSource;
    std::unique_ptr<CQxcSurface> pDestination, pSource;
};

TEST(SurfaceModel, BlockCopiesTestBothSurfacesRanges)
{
    SRangePair o;
    // 40 pixels are 3 blocks; the third is partial and still allowed.
    o.ExpectRefused(4, 1, "one block past the width");
    o.ExpectRefused(3, 3, "one line past the height");
    ASSERT_TRUE(o.pSource->SetPosition(16, 0));
    o.ExpectRefused(3, 1, "past the source's width");
    ASSERT_TRUE(o.pSource->SetPosition(0, 1));
    o.ExpectRefused(1, 2, "past the source's height");
    ASSERT_TRUE(o.pSource->SetPosition(0, 0));
    o.ExpectRefused(0xffffffffu, 1, "a width that wraps");

    const CPicture oBefore(o.oDestination);
    EXPECT_TRUE(o.pDestination->CopyBlocksFrom(o.pSource.get(), 0, 2));
    EXPECT_TRUE(o.pDestination->CopyBlocksFrom(o.pSource.get(), 3, 0));
    EXPECT_TRUE(o.oDestination.SameAs(oBefore)) << "an empty copy wrote";

    ASSERT_TRUE(o.pDestination->CopyBlocksFrom(o.pSource.get(), 3, 2)) << "exactly the picture";
    EXPECT_EQ(1u, o.pDestination->GetCursorLine());
    EXPECT_EQ(3u, o.pDestination->GetCursorBlock());
    EXPECT_EQ(o.oDestination.Line(1) + 3 * 96, o.pDestination->GetCurrentPosition());
    o.ExpectRefused(1, 1, "the cursor already at the end");
}

TEST(SurfaceModel, FillsTestTheirRangeAndWriteNothingWhenRefused)
{
    SRangePair o;
    const CPicture oBefore(o.oDestination);
    EXPECT_FALSE(o.pDestination->FillBlocks(SQxcYuvaPixel{64, 512, 512, 1023}, 4, 1));
    EXPECT_FALSE(o.pDestination->FillBlocks(SQxcYuvaPixel{64, 512, 512, 1023}, 1, 3));
    EXPECT_TRUE(o.pDestination->FillBlocks(SQxcYuvaPixel{64, 512, 512, 1023}, 0, 1));
    EXPECT_TRUE(o.oDestination.SameAs(oBefore));
}

TEST(SurfaceModel, HubRefusesAColorimetryWithoutMatrix)
{
    for (EQxColorimetry eBad : {keQxColorimetryInvalid, keQxColorimetryLast}) {
        for (bool bOnDestination : {false, true}) {
            SRangePair o;
            o.pDestination->Initialize(o.oDestination.Data(), 40, 2, o.oDestination.Pitch(), true,
                                       bOnDestination ? eBad : keQxColorimetryITUR_BT_601);
            o.pSource->Initialize(o.oSource.Data(), 40, 2, o.oSource.Pitch(), true,
                                  bOnDestination ? keQxColorimetryITUR_BT_601 : eBad);
            o.ExpectRefused(1, 1, "colorimetry without matrix");
        }
    }
    SRangePair o;
    o.pSource->Initialize(o.oSource.Data(), 40, 2, o.oSource.Pitch(), true, keQxColorimetryUnknown);
    EXPECT_TRUE(o.pDestination->CopyBlocksFrom(o.pSource.get(), 1, 1)) << "7 is accepted";
}

TEST(SurfaceModel, HubStartsOnVideoBt709AndInitializeRgb10PicksItsSet)
{
    const CQxcSurfaceFactory oFactory;
    std::unique_ptr<CQxcYCbCrA4224_16bits_UnshapedSurface> p(oFactory.CreateYCbCrA4224_16bits_UnshapedSurface(true));
    EXPECT_EQ(keQxcColorRangeVideo, p->GetColorRange());
    EXPECT_EQ(&CQxcYCbCrA4224_16bits_UnshapedSurface::ms_sVideoRgbCoeff_ITUR_BT_709, p->GetRgbCoeff());
    CPicture o(96, 1);
    ASSERT_TRUE(p->InitializeRGB10(o.Data(), 16, 1, 96, true, keQxColorimetryITUR_BT_709, keQxcColorRangeGraphic,
                                   keQxColorimetryITUR_BT_2100_HLG));
    EXPECT_EQ(&CQxcYCbCrA4224_16bits_UnshapedSurface::ms_sGraphicRgbCoeff_ITUR_BT_2020, p->GetRgbCoeff());
    EXPECT_EQ(keQxColorimetryITUR_BT_2100_HLG, p->GetRgbColorimetry());
    EXPECT_EQ(keQxColorimetryITUR_BT_709, p->GetColorimetry());
    ASSERT_TRUE(p->InitializeRGB10(o.Data(), 16, 1, 96, true, keQxColorimetryITUR_BT_709, keQxcColorRangeYuv,
                                   keQxColorimetryITUR_BT_601));
    EXPECT_EQ(nullptr, p->GetRgbCoeff()) << "no set for the YUV range";
}

// ------------------------------------------------------ ReplaceBlockFrom
TEST(SurfaceModel, ReplaceBlockMergesTheChosenEndAndMovesOn)
{
    for (bool bAtEnd : {false, true}) {
        CPicture oDestination(2 * 96, 1), oSource(2 * 32, 1);
        std::mt19937 oRandom(bAtEnd ? 2 : 3);
        FillRandom(oSource.Data(), oSource.Bytes(), oRandom);
        for (size_t ui = 0; ui < oDestination.Bytes(); ui += 2)
            std::memcpy(oDestination.Data() + ui, "\x11\x01", 2);  // words of 0x111
        auto pDestination = CreateSurface(keQxcSurfaceTypeYCbCrA4224_16bits_Shaped, false);
        auto pSource = CreateSurface(keQxcSurfaceTypeYCbCr422_8bits, false);
        std::unique_ptr<CQxcYCbCrA4224_16bits_ShapedSurface> pShaped(
            static_cast<CQxcYCbCrA4224_16bits_ShapedSurface*>(pDestination.release()));
        pShaped->Initialize(oDestination.Data(), 32, 1, oDestination.Pitch(), true, keQxColorimetryITUR_BT_709);
        pSource->Initialize(oSource.Data(), 32, 1, oSource.Pitch(), true, keQxColorimetryITUR_BT_709);
        ASSERT_TRUE(pSource->SetPosition(16, 0));

        const CPicture oBefore(oDestination);
        EXPECT_TRUE(pShaped->ReplaceBlockFrom(pSource.get(), 0, bAtEnd));
        EXPECT_FALSE(pShaped->ReplaceBlockFrom(pSource.get(), 17, bAtEnd));
        EXPECT_TRUE(oDestination.SameAs(oBefore));
        EXPECT_EQ(0u, pShaped->GetCursorBlock());

        ASSERT_TRUE(pShaped->ReplaceBlockFrom(pSource.get(), 5, bAtEnd));
        EXPECT_EQ(1u, pShaped->GetCursorBlock());
        const uint8_t* pucSource = oSource.Data() + 32;  // the source's second block
        auto Word = [&](unsigned in_ui) {
            uint16_t us;
            std::memcpy(&us, oDestination.Data() + 2 * in_ui, 2);
            return us;
        };
        for (unsigned p = 0; p < 16; ++p) {
            const bool bReplaced = bAtEnd ? p >= 11 : p < 5;
            EXPECT_EQ(bReplaced ? pucSource[2 * p] << 2 : 0x111, Word(p)) << "Y " << p;
            EXPECT_EQ(bReplaced ? 1023 : 0x111, Word(32 + p)) << "K " << p;
        }
        for (unsigned j = 0; j < 8; ++j) {
            const bool bReplaced = bAtEnd ? j >= 5 : j < 3;  // (5 + 1) / 2 pairs
            EXPECT_EQ(bReplaced ? pucSource[4 * j + 1] << 2 : 0x111, Word(16 + j)) << "Cb " << j;
            EXPECT_EQ(bReplaced ? pucSource[4 * j + 3] << 2 : 0x111, Word(24 + j)) << "Cr " << j;
        }
        // The second block is the last; a third is refused.
        ASSERT_TRUE(pShaped->ReplaceBlockFrom(pSource.get(), 16, bAtEnd));
        EXPECT_FALSE(pShaped->ReplaceBlockFrom(pSource.get(), 1, bAtEnd));
        // A pair outside the matrix is refused too.
        auto pV210 = CreateSurface(keQxcSurfaceTypeV210_10bits, false);
        pV210->Initialize(oSource.Data(), 32, 1, oSource.Pitch(), true, keQxColorimetryITUR_BT_709);
        ASSERT_TRUE(pShaped->SetPosition(0, 0));
        EXPECT_FALSE(pShaped->ReplaceBlockFrom(pV210.get(), 3, bAtEnd));
    }
}

TEST(SurfaceModel, ReplaceBlockOf4444TakesWholePixelsAndTheHubKeepsItsRgbSide)
{
    CPicture oDestination(128, 1), oSource(32, 1);
    std::memset(oDestination.Data(), 0, 128);
    std::mt19937 oRandom(4);
    FillRandom(oSource.Data(), 32, oRandom);
    const CQxcSurfaceFactory oFactory;
    std::unique_ptr<CQxcYCbCrA4444_16bits_UnshapedSurface> p(oFactory.CreateYCbCrA4444_16bits_UnshapedSurface(false));
    auto pSource = CreateSurface(keQxcSurfaceTypeYCbCr422_8bits, false);
    p->Initialize(oDestination.Data(), 16, 1, 128, true, keQxColorimetryITUR_BT_709);
    pSource->Initialize(oSource.Data(), 16, 1, 32, true, keQxColorimetryITUR_BT_709);
    ASSERT_TRUE(p->ReplaceBlockFrom(pSource.get(), 3, true));
    for (unsigned uiPixel = 0; uiPixel < 16; ++uiPixel) {
        uint16_t ausWords[4];
        std::memcpy(ausWords, oDestination.Data() + 8 * uiPixel, 8);
        if (uiPixel < 13) {
            EXPECT_EQ(0, ausWords[0] | ausWords[1] | ausWords[2] | ausWords[3]) << uiPixel;
        } else {
            EXPECT_EQ(oSource.Data()[2 * uiPixel] << 2, ausWords[0]) << uiPixel;
            EXPECT_EQ(oSource.Data()[4 * (uiPixel / 2) + 1] << 2, ausWords[1]) << uiPixel;
            EXPECT_EQ(1023, ausWords[3]) << uiPixel;
        }
    }
    // The hub's scratch conversion sees the hub's colorimetry test.
    std::unique_ptr<CQxcYCbCrA4224_16bits_UnshapedSurface> pHub(oFactory.CreateYCbCrA4224_16bits_UnshapedSurface(false));
    CPicture oHub(96, 1);
    pHub->InitializeRGB10(oHub.Data(), 16, 1, 96, true, keQxColorimetryInvalid, keQxcColorRangeVideo,
                          keQxColorimetryITUR_BT_709);
    EXPECT_FALSE(pHub->ReplaceBlockFrom(pSource.get(), 4, false));
    pHub->InitializeRGB10(oHub.Data(), 16, 1, 96, true, keQxColorimetryITUR_BT_601, keQxcColorRangeVideo,
                          keQxColorimetryITUR_BT_709);
    EXPECT_TRUE(pHub->ReplaceBlockFrom(pSource.get(), 4, false));
}

// ---------------------------------------------------------- buffer family
// Leaves whose kernels only record their calls: the dispatchers are what is
// under test.
#define QXT_RECORD(Name) \
    QXC_BUFFER_KERNEL(Name) override { return Record(#Name, in_pSource, in_uiWidth, in_uiHeight); }

struct SRecorder {
    bool Record(const char* in_psz, const CQxcSurface*, unsigned int, unsigned int)
    {
        sLast = in_psz;
        return true;
    }
    std::string sLast;
};

class CYuyvBufferProbe : public CQxcYCbCr422_8bits_BufferSurface, public SRecorder {
public:
    CYuyvBufferProbe() : CQxcYCbCr422_8bits_BufferSurface(false) {}
    bool Fill(const SQxcYuvaPixel&, unsigned int, unsigned int) override { return true; }
    bool FillBlocks(const SQxcYuvaPixel&, unsigned int, unsigned int) override { return true; }
    QXT_RECORD(CopyFromRGBA_8bits_Unshaped)
    QXT_RECORD(CopyFromRGBA_8bits_Unshaped_Filter)
    QXT_RECORD(CopyFromRGB24_8bits)
    QXT_RECORD(CopyFromRGB24_8bits_Filter)
};

class CRgbaProbe : public CQxcRGBA_8bits_UnshapedBufferSurface, public SRecorder {
public:
    CRgbaProbe() : CQxcRGBA_8bits_UnshapedBufferSurface(false) {}
    bool Fill(const SQxcYuvaPixel&, unsigned int, unsigned int) override { return true; }
    bool FillBlocks(const SQxcYuvaPixel&, unsigned int, unsigned int) override { return true; }
    using CQxcRgbBufferSurface::FillRgb;
    bool FillRgb(const SQxcRGBAPixel&, unsigned int, unsigned int) override { return true; }
    QXT_RECORD(CopyFromYCbCr422_8bits)
    QXT_RECORD(CopyFromYCbCr422_8bits_Interp)
    QXT_RECORD(CopyFromYCbCrA4224_8bits_Unshaped)
    QXT_RECORD(CopyFromYCbCrA4224_8bits_Interp_Unshaped)
    QXT_RECORD(CopyFromYCbCr422_10bits)
    QXT_RECORD(CopyFromYCbCr422_10bits_Interp)
    QXT_RECORD(CopyFromYCbCrA4224_10bits_Unshaped)
    QXT_RECORD(CopyFromYCbCrA4224_10bits_Interp_Unshaped)
    QXT_RECORD(CopyFromVideoRGBA_Unshaped)
    QXT_RECORD(CopyFromGraphicRGBA_Unshaped)
    QXT_RECORD(CopyFromK64ARGB_Unshaped)
    QXT_RECORD(CopyFromV210)
    QXT_RECORD(CopyFromA2B10G10R10_Unshaped)
    QXT_RECORD(CopyFromRGB8bit)
    QXT_RECORD(CopyFromRGB12bit)
};

TEST(SurfaceModel, BufferInitializePicksTheCoefficientSetOfRangeAndColorimetry)
{
    CRgbaProbe o;
    EXPECT_EQ(keQxcColorRangeInvalid, o.GetColorRange());
    CPicture oPicture(64, 2);
    ASSERT_TRUE(o.Initialize(oPicture.Data(), 16, 2, 64, true, keQxColorimetryITUR_BT_601, keQxcColorRangeVideo));
    EXPECT_EQ(&CQxcBufferSurface::ms_sVideoRgbCoeff, o.GetRgbCoeff());
    EXPECT_EQ(&CQxcRgbBufferSurface::ms_sRgbToRgbCoeff, o.GetRgbToRgbCoeff());
    ASSERT_TRUE(o.Initialize(oPicture.Data(), 16, 2, 64, true, keQxColorimetryITUR_BT_2100_PQ, keQxcColorRangeGraphic));
    EXPECT_EQ(&CQxcBufferSurface::ms_sGraphicRgbCoeff_ITUR_BT_2020, o.GetRgbCoeff());
    ASSERT_TRUE(o.Initialize(oPicture.Data(), 16, 2, 64, true, keQxColorimetryUnknown, keQxcColorRangeGraphic));
    EXPECT_EQ(nullptr, o.GetRgbCoeff());
    unsigned uiX = 9, uiY = 9;
    o.GetPosition(&uiX, &uiY);
    EXPECT_EQ(0u, uiX);
    EXPECT_EQ(0u, uiY);
    ASSERT_TRUE(o.SetPosition(5, 1));
    o.GetPosition(&uiX, &uiY);
    EXPECT_EQ(5u, uiX);
    EXPECT_EQ(1u, uiY);
    EXPECT_EQ(oPicture.Line(1) + 20, o.GetCurrentPosition());
}

TEST(SurfaceModel, BufferDispatchPicksTheModeAndTestsRanges)
{
    CYuyvBufferProbe oDestination;
    CRgbaProbe oSource;
    CPicture oPictureD(4096, 2), oPictureS(4096, 2);
    oDestination.Initialize(oPictureD.Data(), 1024, 2, 4096, true, keQxColorimetryITUR_BT_709, keQxcColorRangeYuv);
    oSource.Initialize(oPictureS.Data(), 1000, 2, 4096, true, keQxColorimetryITUR_BT_709, keQxcColorRangeVideo);
    EXPECT_TRUE(oDestination.CopyFrom(&oSource, 1000, 2));
    EXPECT_EQ("CopyFromRGBA_8bits_Unshaped", oDestination.sLast);
    // The filter needs whole 16-pixel runs of the source.
    oDestination.SetFilter(true);
    oDestination.sLast.clear();
    EXPECT_FALSE(oDestination.CopyFrom(&oSource, 16, 1));
    EXPECT_EQ("", oDestination.sLast);
    oSource.Initialize(oPictureS.Data(), 1024, 2, 4096, true, keQxColorimetryITUR_BT_709, keQxcColorRangeVideo);
    EXPECT_TRUE(oDestination.CopyFrom(&oSource, 1024, 2));
    EXPECT_EQ("CopyFromRGBA_8bits_Unshaped_Filter", oDestination.sLast);
    // An RGB destination's interpolate flag is ignored by a YUV one.
    oDestination.SetFilter(false);
    oDestination.SetInterpolate(true);
    EXPECT_TRUE(oDestination.CopyFrom(&oSource, 16, 1));
    EXPECT_EQ("CopyFromRGBA_8bits_Unshaped", oDestination.sLast);
    // Ranges, and zero sizes.
    oDestination.sLast.clear();
    EXPECT_FALSE(oDestination.CopyFrom(&oSource, 1025, 1));
    EXPECT_FALSE(oDestination.CopyFrom(&oSource, 16, 3));
    EXPECT_TRUE(oDestination.CopyFrom(&oSource, 0, 1));
    EXPECT_EQ("", oDestination.sLast);
    // A source the table does not hold.
    CYuyvBufferProbe oOther;
    oOther.Initialize(oPictureS.Data(), 1024, 2, 4096, true, keQxColorimetryITUR_BT_709, keQxcColorRangeYuv);
    EXPECT_FALSE(oDestination.CopyFrom(&oOther, 16, 1));
    // Buffer surfaces take no block copies, and succeed doing nothing.
    EXPECT_TRUE(oDestination.CopyBlocksFrom(&oOther, 1, 1));
}

TEST(SurfaceModel, RgbaDispatchUsesTheRangeForItselfAndTheInterpolateFlag)
{
    CRgbaProbe oDestination, oSource;
    CYuyvBufferProbe oYuyv;
    CPicture oPictureD(4096, 1), oPictureS(4096, 1);
    oSource.Initialize(oPictureS.Data(), 64, 1, 4096, true, keQxColorimetryITUR_BT_709, keQxcColorRangeVideo);
    oYuyv.Initialize(oPictureS.Data(), 64, 1, 4096, true, keQxColorimetryITUR_BT_709, keQxcColorRangeYuv);
    oDestination.Initialize(oPictureD.Data(), 64, 1, 4096, true, keQxColorimetryITUR_BT_709, keQxcColorRangeGraphic);
    EXPECT_TRUE(oDestination.CopyFrom(&oSource, 64, 1));
    EXPECT_EQ("CopyFromVideoRGBA_Unshaped", oDestination.sLast);
    oDestination.Initialize(oPictureD.Data(), 64, 1, 4096, true, keQxColorimetryITUR_BT_709, keQxcColorRangeVideo);
    EXPECT_TRUE(oDestination.CopyFrom(&oSource, 64, 1));
    EXPECT_EQ("CopyFromGraphicRGBA_Unshaped", oDestination.sLast);
    EXPECT_TRUE(oDestination.CopyFrom(&oYuyv, 64, 1));
    EXPECT_EQ("CopyFromYCbCr422_8bits", oDestination.sLast);
    oDestination.SetInterpolate(true);
    EXPECT_TRUE(oDestination.CopyFrom(&oYuyv, 64, 1));
    EXPECT_EQ("CopyFromYCbCr422_8bits_Interp", oDestination.sLast);
}

}  // namespace
