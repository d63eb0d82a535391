// The buffer surfaces as their users meet them: the factory's classes and
// constants, fills and their byte orders, the layouts of the RGB formats
// (2-bit key, big-endian K64ARGB, RGB36's bit stream), the levels, what a
// call refuses (and that it then writes nothing), the pixels a partial unit
// keeps, ScaleToVideoB64A, and round trips through the hub.
#include <gtest/gtest.h>

#include "tests/surfaces/buffertesthelpers.h"

using namespace NQxTest;
using namespace NQxcKernels;

namespace {

CQxcBufferSurface* AsBuffer(const std::unique_ptr<CQxcSurface>& in_p) { return static_cast<CQxcBufferSurface*>(in_p.get()); }
CQxcRgbBufferSurface* AsRgb(const std::unique_ptr<CQxcSurface>& in_p)
{
    return static_cast<CQxcRgbBufferSurface*>(in_p.get());
}

// A surface over its own picture of in_uiWidth x in_uiLines.
struct SBound {
    CPicture oPicture;
    std::unique_ptr<CQxcSurface> p;
    SBound(int in_iKind, unsigned in_uiWidth, unsigned in_uiLines, EQxcColorRange in_eRange,
           EQxColorimetry in_e = keQxColorimetryITUR_BT_709, bool in_bCached = false, bool in_bKey = true)
        : oPicture(BufferLineBytes(in_iKind, in_uiWidth) + 16, in_uiLines), p(CreateSurface(in_iKind, in_bCached))
    {
        std::mt19937 oRandom(in_iKind);
        FillRandom(oPicture.Data(), oPicture.Bytes(), oRandom);
        Bind(*p, oPicture.Data(), in_uiWidth, in_uiLines, oPicture.Pitch(), in_bKey, in_e, in_eRange);
    }
};

// ----------------------------------------------------------- the factory
TEST(BufferSurfaces, FactoryMakesEachClassWithItsConstants)
{
    struct SExpect {
        int iKind;
        EQxcSurfaceType eType;
        unsigned uiBlockSize, uiGroupBytes, uiGroupPixels;
        bool bRgb;
    };
    const SExpect kas[] = {
        {15, keQxcSurfaceTypeYCbCr422_8bits_Buffer, 32, 4, 2, false},
        {33, keQxcSurfaceTypeYCbCr422_8bits_Buffer, 32, 4, 2, false},
        {16, keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer, 48, 24, 8, false},
        {17, keQxcSurfaceTypeYCbCrA4224_8bits_ShapedBuffer, 48, 24, 8, false},
        {18, keQxcSurfaceTypeYCbCr422_10bits_Buffer, 48, 48, 16, false},
        {19, keQxcSurfaceTypeYCbCrA4224_10bits_UnshapedBuffer, 64, 8, 2, false},
        {20, keQxcSurfaceTypeYCbCrA4224_10bits_ShapedBuffer, 64, 8, 2, false},
        {21, keQxcSurfaceTypeYCbCrA4444_16bits_UnshapedBuffer, 128, 8, 1, false},
        {31, keQxcSurfaceTypeV210_10bits_Buffer, 48, 48, 16, false},
        {13, keQxcSurfaceTypeRGBA_8bits_Unshaped, 64, 4, 1, true},
        {14, keQxcSurfaceTypeRGBA_8bits_Shaped, 64, 4, 1, true},
        {26, keQxcSurfaceTypeBGRA_8bits_Unshaped, 64, 4, 1, true},
        {22, keQxcSurfaceTypeRGB24_8bits, 48, 12, 4, true},
        {36, keQxcSurfaceTypeRGB36_12bits, 72, 36, 8, true},
        {28, keQxcSurfaceTypeA2R10G10B10_Unshaped, 64, 4, 1, true},
        {34, keQxcSurfaceTypeA2B10G10R10_Unshaped, 64, 4, 1, true},
        {32, keQxcSurfaceTypeABGR_16bits_Unshaped, 128, 120, 1, true},
        {29, keQxcSurfaceTypeK64ARGB_Unshaped, 128, 120, 1, true},
        {30, keQxcSurfaceTypeR4FL_Unshaped, 256, 16, 1, true},
    };
    for (const SExpect& rs : kas) {
        for (bool bCached : {false, true}) {
            auto p = CreateSurface(rs.iKind, bCached);
            ASSERT_TRUE(p) << rs.iKind;
            CQxcBufferSurface* pBuffer = dynamic_cast<CQxcBufferSurface*>(p.get());
            ASSERT_NE(nullptr, pBuffer) << rs.iKind;
            EXPECT_EQ(rs.eType, p->GetSurfaceType()) << rs.iKind;
            EXPECT_EQ(rs.uiBlockSize, p->GetBlockSize()) << rs.iKind;
            EXPECT_EQ(rs.uiGroupBytes, pBuffer->GetGroupBytes()) << rs.iKind;
            EXPECT_EQ(rs.uiGroupPixels, pBuffer->GetGroupPixels()) << rs.iKind;
            EXPECT_EQ(rs.bRgb, dynamic_cast<CQxcRgbBufferSurface*>(p.get()) != nullptr) << rs.iKind;
            EXPECT_EQ(bCached, p->HasCachedStores()) << rs.iKind;
            EXPECT_EQ(keQxcColorRangeInvalid, pBuffer->GetColorRange()) << rs.iKind;
            EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(p.get()) % 16) << "kind " << rs.iKind << " not 16-byte aligned";
        }
    }
    // The portable classes of the two RGB formats without SIMD kernels, and
    // the 2VUY buffer's own class.
    EXPECT_NE(nullptr, dynamic_cast<CQxcRGB24_8bits_BufferSurfaceCPP*>(CreateSurface(22, false).get()));
    EXPECT_NE(nullptr, dynamic_cast<CQxcRGB36_12bits_BufferSurfaceCPP*>(CreateSurface(36, false).get()));
    EXPECT_NE(nullptr, dynamic_cast<qxc2VUY_8bits_BufferSurfaceSSE2*>(CreateSurface(33, false).get()));
}

// ----------------------------------------------------------------- fills
TEST(BufferSurfaces, RgbFillsWriteTheByteOrderOfEachFormat)
{
    const SQxcRGBAPixel s1234 = {1, 2, 3, 4};
    SBound oRgba(13, 9, 2, keQxcColorRangeGraphic), oBgra(26, 9, 2, keQxcColorRangeGraphic),
        oRgb24(22, 9, 2, keQxcColorRangeGraphic);
    for (SBound* p : {&oRgba, &oBgra, &oRgb24})
        ASSERT_TRUE(AsRgb(p->p)->FillRgb(s1234, 9, 2));
    for (unsigned uiLine = 0; uiLine < 2; ++uiLine) {
        for (unsigned x = 0; x < 9; ++x) {
            const uint8_t* puc = oRgba.oPicture.Line(uiLine) + 4 * x;
            EXPECT_EQ((std::vector<uint8_t>{3, 2, 1, 4}), std::vector<uint8_t>(puc, puc + 4));
            puc = oBgra.oPicture.Line(uiLine) + 4 * x;
            EXPECT_EQ((std::vector<uint8_t>{4, 1, 2, 3}), std::vector<uint8_t>(puc, puc + 4));
            puc = oRgb24.oPicture.Line(uiLine) + 3 * x;
            EXPECT_EQ((std::vector<uint8_t>{3, 2, 1}), std::vector<uint8_t>(puc, puc + 3));
        }
    }
    // A 16-bit colour fills with its high bytes.
    const SQxcRGBAPixel_16bits s16 = {0x1234, 0xABCD, 0x00FF, 0xFFFF};
    oRgba.p->SetPosition(0, 0);
    ASSERT_TRUE(AsRgb(oRgba.p)->FillRgb(s16, 9, 1));
    EXPECT_EQ((std::vector<uint8_t>{0x00, 0xAB, 0x12, 0xFF}),
              std::vector<uint8_t>(oRgba.oPicture.Data(), oRgba.oPicture.Data() + 4));
    EXPECT_TRUE(oRgba.oPicture.GuardsIntact());
}

TEST(BufferSurfaces, TenBitFillsScaleFullScaleAndRoundTheKeyToTwoBits)
{
    // An 8-bit colour becomes floor(c x 1023 / 255 + 0.5): 255 -> 1023,
    // 128 -> 514; the key 255 -> 1023 -> 3.
    for (int iKind : {28, 34}) {
        SBound o(iKind, 5, 1, keQxcColorRangeVideo);
        ASSERT_TRUE(AsRgb(o.p)->FillRgb(SQxcRGBAPixel{255, 0, 128, 255}, 5, 1));
        const uint32_t uiWord = Read32(o.oPicture.Data() + 16);
        const uint32_t uiR = iKind == 28 ? (uiWord >> 20) & 0x3ff : uiWord & 0x3ff;
        const uint32_t uiB = iKind == 28 ? uiWord & 0x3ff : (uiWord >> 20) & 0x3ff;
        EXPECT_EQ(1023u, uiR) << iKind;
        EXPECT_EQ(0u, (uiWord >> 10) & 0x3ff) << iKind;
        EXPECT_EQ(514u, uiB) << iKind;
        EXPECT_EQ(3u, uiWord >> 30) << iKind;
        // A 16-bit colour is read as 10-bit values; keys round to the
        // nearest quarter: 170 -> 0, 171 -> 1, 511 -> 1, 512 -> 2, 852 -> 2, 853 -> 3.
        const uint16_t ausKey[] = {170, 171, 511, 512, 852, 853, 4000};
        const uint32_t auiKey2[] = {0, 1, 1, 2, 2, 3, 3};
        for (unsigned i = 0; i < 7; ++i) {
            o.p->SetPosition(0, 0);
            ASSERT_TRUE(AsRgb(o.p)->FillRgb(SQxcRGBAPixel_16bits{1, 2, 3, ausKey[i]}, 1, 1));
            EXPECT_EQ(auiKey2[i], Read32(o.oPicture.Data()) >> 30) << "key " << ausKey[i];
        }
        ASSERT_TRUE(AsRgb(o.p)->FillRgb(SQxcRGBAPixel_16bits{5000, 2, 3, 0}, 1, 1));
        EXPECT_EQ(1023u, iKind == 28 ? (Read32(o.oPicture.Data() + 4) >> 20) & 0x3ff : Read32(o.oPicture.Data() + 4) & 0x3ff)
            << "10-bit values clamp";
    }
}

TEST(BufferSurfaces, DeepRgbFillsKeepTheirComponentOrderAndEndianness)
{
    // K64ARGB: big-endian A R G B; ABGR 16-bit: little-endian A B G R.
    SBound oK64(29, 3, 1, keQxcColorRangeGraphic), oAbgr(32, 3, 1, keQxcColorRangeGraphic);
    const SQxcRGBAPixel_16bits s = {0x1122, 0x3344, 0x5566, 0x7788};
    ASSERT_TRUE(AsRgb(oK64.p)->FillRgb(s, 3, 1));
    ASSERT_TRUE(AsRgb(oAbgr.p)->FillRgb(s, 3, 1));
    EXPECT_EQ((std::vector<uint8_t>{0x77, 0x88, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66}),
              std::vector<uint8_t>(oK64.oPicture.Data() + 8, oK64.oPicture.Data() + 16));
    EXPECT_EQ((std::vector<uint8_t>{0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11}),
              std::vector<uint8_t>(oAbgr.oPicture.Data() + 8, oAbgr.oPicture.Data() + 16));
    // An 8-bit colour scales by 257.
    oK64.p->SetPosition(0, 0);
    ASSERT_TRUE(AsRgb(oK64.p)->FillRgb(SQxcRGBAPixel{0x12, 0xff, 0x00, 0x80}, 1, 1));
    EXPECT_EQ((std::vector<uint8_t>{0x80, 0x80, 0x12, 0x12, 0xff, 0xff, 0x00, 0x00}),
              std::vector<uint8_t>(oK64.oPicture.Data(), oK64.oPicture.Data() + 8));
}

TEST(BufferSurfaces, Rgb36IsALittleEndianStreamOfTwelveBitComponents)
{
    SBound o(36, 8, 1, keQxcColorRangeGraphic);
    // 8-bit (255, 0, 128) is 12-bit 4095, 0, 2056 (128 x 4095 / 255 = 2055.5).
    ASSERT_TRUE(AsRgb(o.p)->FillRgb(SQxcRGBAPixel{255, 0, 128, 255}, 8, 1));
    // Pixel 0: B 0x808 in bits 0-11, G 0 in 12-23, R 0xfff in 24-35; then
    // pixel 1's B from bit 36.
    EXPECT_EQ((std::vector<uint8_t>{0x08, 0x08, 0x00, 0xff, 0x8f}),
              std::vector<uint8_t>(o.oPicture.Data(), o.oPicture.Data() + 5));
    for (unsigned p = 0; p < 8; ++p) {
        EXPECT_EQ(0x808, LRgb36::Get(o.oPicture.Data(), 3 * p)) << p;
        EXPECT_EQ(0xfff, LRgb36::Get(o.oPicture.Data(), 3 * p + 2)) << p;
    }
    // A fill of 3 pixels (a unit and a half) leaves pixel 3's bits as they were.
    ASSERT_TRUE(o.p->SetPosition(0, 0));
    ASSERT_TRUE(AsRgb(o.p)->FillRgb(SQxcRGBAPixel_16bits{0, 0, 0, 0}, 3, 1));
    for (unsigned p = 0; p < 8; ++p)
        EXPECT_EQ(p < 3 ? 0 : 0x808, LRgb36::Get(o.oPicture.Data(), 3 * p)) << p;
}

TEST(BufferSurfaces, YuvFillsAndFillBlocksCoverTheirPixelsOnly)
{
    const SQxcYuvaPixel sColor = {940, 512, 512, 1023};
    // 17 pixels are two blocks; the second reaches only the 17th pixel.
    SBound o(15, 17, 2, keQxcColorRangeYuv);
    CPicture oBefore(o.oPicture);
    ASSERT_TRUE(o.p->FillBlocks(sColor, 2, 2));
    for (unsigned uiLine = 0; uiLine < 2; ++uiLine) {
        const uint8_t* puc = o.oPicture.Line(uiLine);
        for (unsigned x = 0; x < 17; ++x)
            EXPECT_EQ(235, puc[2 * x]) << x;
        EXPECT_EQ(128, puc[1]);
        EXPECT_EQ(128, puc[3]);
        // Pixel 17 shares its pair with pixel 16: its luma stays.
        EXPECT_EQ(oBefore.Line(uiLine)[34], puc[34]);
        for (long l = 36; l < o.oPicture.Pitch(); ++l)
            EXPECT_EQ(oBefore.Line(uiLine)[l], puc[l]) << l;
    }
    ASSERT_TRUE(o.p->SetPosition(0, 0));
    EXPECT_FALSE(o.p->FillBlocks(sColor, 3, 1)) << "past the width in blocks";
    // An RGB surface fills with the YUV colour converted: video white.
    SBound oRgb(13, 4, 1, keQxcColorRangeGraphic);
    ASSERT_TRUE(AsBuffer(oRgb.p)->Fill(sColor, 4, 1));
    EXPECT_EQ((std::vector<uint8_t>{255, 255, 255, 255}),
              std::vector<uint8_t>(oRgb.oPicture.Data(), oRgb.oPicture.Data() + 4));
    // ... and refuses without a coefficient set, writing nothing.
    SBound oNone(13, 4, 1, keQxcColorRangeGraphic, keQxColorimetryInvalid);
    CPicture oNoneBefore(oNone.oPicture);
    EXPECT_FALSE(AsBuffer(oNone.p)->Fill(sColor, 4, 1));
    EXPECT_TRUE(oNone.oPicture.SameAs(oNoneBefore));
    // The float format fills with the colour's normalized values.
    SBound oFloat(30, 2, 1, keQxcColorRangeGraphic);
    ASSERT_TRUE(AsBuffer(oFloat.p)->Fill(SQxcYuvaPixel{64, 960, 64, 0}, 2, 1));
    float af[4];
    std::memcpy(af, oFloat.oPicture.Data() + 16, 16);
    EXPECT_FLOAT_EQ(0.0f, af[0]);
    EXPECT_FLOAT_EQ(0.5f, af[1]);
    EXPECT_FLOAT_EQ(-0.5f, af[2]);
    EXPECT_FLOAT_EQ(0.0f, af[3]);
}

// ------------------------------------------------------------- refusals
TEST(BufferSurfaces, RefusedCallsWriteNothingAndMoveNoCursor)
{
    SBound oSource(13, 1024, 2, keQxcColorRangeGraphic);
    SBound oDestination(15, 1024, 2, keQxcColorRangeYuv);
    CPicture oBefore(oDestination.oPicture);
    CQxcBufferSurface* pDestination = AsBuffer(oDestination.p);
    const CQxcBufferSurface* pSource = AsBuffer(oSource.p);
    auto Unchanged = [&](const char* in_psz) {
        EXPECT_TRUE(oDestination.oPicture.SameAs(oBefore)) << in_psz;
        unsigned x = 0, y = 0;
        pDestination->GetPosition(&x, &y);
        EXPECT_EQ(0u, y) << in_psz;
    };
    // Zero sizes succeed without work.
    EXPECT_TRUE(pDestination->CopyFrom(pSource, 0, 2));
    EXPECT_TRUE(pDestination->CopyFrom(pSource, 16, 0));
    Unchanged("zero size");
    // One pixel past either picture.
    ASSERT_TRUE(oSource.p->SetPosition(1, 0));
    EXPECT_FALSE(pDestination->CopyFrom(pSource, 1024, 1));
    ASSERT_TRUE(oSource.p->SetPosition(0, 0));
    EXPECT_FALSE(pDestination->CopyFrom(pSource, 16, 3));
    Unchanged("out of range");
    // A YUYV cursor inside a pair.
    ASSERT_TRUE(oDestination.p->SetPosition(3, 0));
    EXPECT_FALSE(pDestination->CopyFrom(pSource, 16, 1));
    oDestination.p->SetPosition(0, 0);
    Unchanged("odd YUYV cursor");
    // No coefficient set on the RGB side.
    SBound oNoSet(13, 1024, 2, keQxcColorRangeYuv);
    EXPECT_FALSE(pDestination->CopyFrom(AsBuffer(oNoSet.p), 16, 1));
    Unchanged("no coefficient set");
    // The filter needs a source width that is a multiple of 16.
    pDestination->SetFilter(true);
    SBound oNarrow(13, 1000, 2, keQxcColorRangeGraphic);
    EXPECT_FALSE(pDestination->CopyFrom(AsBuffer(oNarrow.p), 16, 1));
    Unchanged("filter over 1000 pixels");
    EXPECT_TRUE(pDestination->CopyFrom(pSource, 1024, 2)) << "1024 pixels filter";
    EXPECT_FALSE(oDestination.oPicture.SameAs(oBefore));
}

// The copy service holds every surface as a CQxcSurface and reads the hub
// into the deep RGB and float formats: through the buffer root, a block
// source reaches the formats whose rows hold the hub and no other.
TEST(BufferSurfaces, ABlockSourceReachesOnlyTheFormatsThatReadTheHub)
{
    CPicture oHub(2 * 96, 1), oYuyv(2 * 32, 1);
    std::mt19937 oRandom(52);
    FillRandom(oHub.Data(), oHub.Bytes(), oRandom);
    FillRandom(oYuyv.Data(), oYuyv.Bytes(), oRandom);
    auto pHub = CreateSurface(7, false);
    auto pYuyv = CreateSurface(keQxcSurfaceTypeYCbCr422_8bits, false);
    static_cast<CQxcYCbCrA4224_16bits_UnshapedSurface*>(pHub.get())
        ->InitializeRGB10(oHub.Data(), 32, 1, oHub.Pitch(), true, keQxColorimetryITUR_BT_709, keQxcColorRangeGraphic,
                          keQxColorimetryITUR_BT_709);
    pYuyv->Initialize(oYuyv.Data(), 32, 1, oYuyv.Pitch(), true, keQxColorimetryITUR_BT_709);
    const CQxcSurface* pBlock = pHub.get();
    for (int iKind : {28, 34, 32, 29, 30, 22, 36}) {
        SBound o(iKind, 32, 1, keQxcColorRangeGraphic);
        const CPicture oBefore(o.oPicture);
        EXPECT_FALSE(AsBuffer(o.p)->CopyFrom(pYuyv.get(), 16, 1)) << "a block source other than the hub, " << iKind;
        EXPECT_TRUE(o.oPicture.SameAs(oBefore)) << iKind;
        ASSERT_TRUE(AsBuffer(o.p)->CopyFrom(pBlock, 32, 1)) << iKind;
        EXPECT_FALSE(o.oPicture.SameAs(oBefore)) << iKind;
        unsigned x = 0, y = 0;
        AsBuffer(o.p)->GetPosition(&x, &y);
        EXPECT_EQ(32u, x) << iKind;
        EXPECT_TRUE(o.oPicture.GuardsIntact()) << iKind;
    }
    for (int iKind : {13, 14, 26, 15, kiKind2vuyBuffer, 16, 17, 18, 19, 20, 21, 31}) {
        SBound o(iKind, 32, 1, iKind == 13 || iKind == 14 || iKind == 26 ? keQxcColorRangeGraphic : keQxcColorRangeYuv);
        const CPicture oBefore(o.oPicture);
        EXPECT_FALSE(AsBuffer(o.p)->CopyFrom(pBlock, 16, 1)) << iKind;
        EXPECT_TRUE(AsBuffer(o.p)->CopyFrom(pBlock, 0, 1)) << "an empty call succeeds, " << iKind;
        EXPECT_TRUE(o.oPicture.SameAs(oBefore)) << iKind;
    }
}

// --------------------------------------------------- partial units keep
TEST(BufferSurfaces, PartialUnitsKeepThePixelsOutsideTheCall)
{
    SBound oSource(13, 16, 1, keQxcColorRangeGraphic);
    for (unsigned p = 0; p < 16; ++p) {
        const uint8_t auc[4] = {200, 10, 30, 255};
        std::memcpy(oSource.oPicture.Data() + 4 * p, auc, 4);
    }
    // YUYV, 3 pixels: pixel 2 owns pair 1's chroma; pixel 3's luma stays.
    SBound oYuyv(15, 16, 1, keQxcColorRangeYuv);
    CPicture oBefore(oYuyv.oPicture);
    ASSERT_TRUE(AsBuffer(oYuyv.p)->CopyFrom(AsBuffer(oSource.p), 3, 1));
    const uint8_t* puc = oYuyv.oPicture.Data();
    EXPECT_EQ(oBefore.Data()[6], puc[6]) << "pixel 3's luma";
    EXPECT_EQ(puc[0], puc[4]) << "pixel 2 converted like pixel 0";
    EXPECT_EQ(puc[1], puc[5]) << "pair 1's chroma written";
    EXPECT_EQ(puc[3], puc[7]);
    for (long l = 8; l < oYuyv.oPicture.Pitch(); ++l)
        EXPECT_EQ(oBefore.Data()[l], puc[l]) << l;
    // 8-bit 4:2:2:4, 5 pixels of a group of 8: pixels 5 to 7 keep luma and
    // key, pair 2 (pixels 4, 5) takes pixel 4's chroma, pair 3 stays.
    SBound o4224(16, 16, 1, keQxcColorRangeYuv);
    CPicture oBefore4224(o4224.oPicture);
    oSource.p->SetPosition(0, 0);
    ASSERT_TRUE(AsBuffer(o4224.p)->CopyFrom(AsBuffer(oSource.p), 5, 1));
    puc = o4224.oPicture.Data();
    const uint8_t* pucBefore = oBefore4224.Data();
    for (unsigned x = 5; x < 8; ++x) {
        EXPECT_EQ(pucBefore[2 * x], puc[2 * x]) << "luma of pixel " << x;
        EXPECT_EQ(pucBefore[16 + x], puc[16 + x]) << "key of pixel " << x;
    }
    EXPECT_EQ(puc[1], puc[9]) << "pair 2's Cb from pixel 4";
    EXPECT_EQ(pucBefore[13], puc[13]) << "pair 3's Cb";
    EXPECT_EQ(pucBefore[15], puc[15]) << "pair 3's Cr";
    EXPECT_EQ(255, puc[20]);
}

// ------------------------------------------------------ levels and keys
TEST(BufferSurfaces, LevelConversionsUseTheRangeOfTheDestination)
{
    // A graphics-range destination reads its own format at video levels.
    struct SCase {
        EQxcColorRange eDestination;
        uint8_t ucIn, ucOut;
    };
    const SCase kas[] = {{keQxcColorRangeGraphic, 16, 0},   {keQxcColorRangeGraphic, 235, 255},
                         {keQxcColorRangeGraphic, 126, 128}, {keQxcColorRangeGraphic, 5, 0},
                         {keQxcColorRangeGraphic, 250, 255}, {keQxcColorRangeVideo, 0, 16},
                         {keQxcColorRangeVideo, 255, 235},   {keQxcColorRangeVideo, 128, 126}};
    for (const SCase& rs : kas) {
        SBound oSource(13, 1, 1, keQxcColorRangeVideo), oDestination(13, 1, 1, rs.eDestination);
        const uint8_t auc[4] = {rs.ucIn, rs.ucIn, rs.ucIn, 77};
        std::memcpy(oSource.oPicture.Data(), auc, 4);
        ASSERT_TRUE(AsBuffer(oDestination.p)->CopyFrom(AsBuffer(oSource.p), 1, 1));
        const uint8_t* puc = oDestination.oPicture.Data();
        EXPECT_EQ(rs.ucOut, puc[0]) << int(rs.ucIn) << " into range " << rs.eDestination;
        EXPECT_EQ(rs.ucOut, puc[2]);
        EXPECT_EQ(77, puc[3]) << "the key passes";
    }
    // Shaped: the black level is the key's share of 16.
    SBound oShaped(14, 1, 1, keQxcColorRangeVideo), oInto(14, 1, 1, keQxcColorRangeVideo);
    const uint8_t aucTransparent[4] = {0, 0, 0, 0};
    std::memcpy(oShaped.oPicture.Data(), aucTransparent, 4);
    ASSERT_TRUE(AsBuffer(oInto.p)->CopyFrom(AsBuffer(oShaped.p), 1, 1));
    EXPECT_EQ(0, oInto.oPicture.Data()[0]) << "a transparent shaped pixel stays black at video levels";
}

TEST(BufferSurfaces, ShapedConversionsScaleBlackAndChromaByTheKey)
{
    // A transparent shaped RGBA pixel is Y 0, chroma 128, key 0.
    SBound oRgba(14, 16, 1, keQxcColorRangeGraphic);
    std::memset(oRgba.oPicture.Data(), 0, 64);
    for (int iKind : {17, 20}) {
        SBound o(iKind, 16, 1, keQxcColorRangeYuv);
        oRgba.p->SetPosition(0, 0);
        ASSERT_TRUE(AsBuffer(o.p)->CopyFrom(AsBuffer(oRgba.p), 16, 1));
        SScalar422 s;
        if (iKind == 17)
            L4224_8::Load(o.oPicture.Data(), s);
        else
            L4224_10::Load(o.oPicture.Data(), s);
        EXPECT_EQ(0, s.aus16Y[3]) << iKind;
        EXPECT_EQ(512, s.aus16Cb[1]) << iKind;
        EXPECT_EQ(512, s.aus16Cr[1]) << iKind;
        EXPECT_EQ(0, s.aus16K[3]) << iKind;
        // ... and back.
        SBound oBack(14, 16, 1, keQxcColorRangeGraphic);
        ASSERT_TRUE(o.p->SetPosition(0, 0));
        ASSERT_TRUE(AsBuffer(oBack.p)->CopyFrom(AsBuffer(o.p), 16, 1));
        EXPECT_EQ((std::vector<uint8_t>{0, 0, 0, 0}),
                  std::vector<uint8_t>(oBack.oPicture.Data(), oBack.oPicture.Data() + 4));
    }
}

// ----------------------------------------------------------- K64ARGB
TEST(BufferSurfaces, ScaleToVideoB64AMapsFullScaleToStudioLevelsInPlace)
{
    SBound o(29, 5, 2, keQxcColorRangeGraphic);
    ASSERT_TRUE(AsRgb(o.p)->FillRgb(SQxcRGBAPixel_16bits{0xffff, 0, 0x8000, 0x1234}, 5, 2));
    ASSERT_TRUE(o.p->SetPosition(1, 0));
    CQxcK64ARGB_UnshapedBufferSurface* p = static_cast<CQxcK64ARGB_UnshapedBufferSurface*>(o.p.get());
    ASSERT_TRUE(p->ScaleToVideoB64A(3, 2));
    auto Word = [&](unsigned in_uiLine, unsigned in_uiPixel, unsigned in_uiComponent) {
        const uint8_t* puc = o.oPicture.Line(in_uiLine) + 8 * in_uiPixel + 2 * in_uiComponent;
        return (puc[0] << 8) | puc[1];
    };
    for (unsigned uiLine = 0; uiLine < 2; ++uiLine) {
        EXPECT_EQ(0xffff, Word(uiLine, 0, 1)) << "pixel 0 is outside the call";
        EXPECT_EQ(0xffff, Word(uiLine, 4, 1)) << "pixel 4 is outside the call";
        for (unsigned x = 1; x < 4; ++x) {
            EXPECT_EQ(0x1234, Word(uiLine, x, 0)) << "the key is kept";
            EXPECT_EQ(60160, Word(uiLine, x, 1));
            EXPECT_EQ(4096, Word(uiLine, x, 2));
            EXPECT_EQ(std::lround(4096 + 32768 * 56064.0 / 65535), Word(uiLine, x, 3));
        }
    }
    unsigned x = 0, y = 0;
    p->GetPosition(&x, &y);
    EXPECT_EQ(4u, x);
    EXPECT_EQ(1u, y);
    EXPECT_FALSE(p->ScaleToVideoB64A(2, 1)) << "past the width";
    EXPECT_TRUE(o.oPicture.GuardsIntact());
}

TEST(BufferSurfaces, SixteenBitRgbRoundTripsAndDepthChangesAreLossless)
{
    // K64ARGB <-> ABGR 16-bit keep every bit.
    SBound oK64(29, 21, 1, keQxcColorRangeGraphic), oAbgr(32, 21, 1, keQxcColorRangeGraphic),
        oBack(29, 21, 1, keQxcColorRangeGraphic);
    ASSERT_TRUE(AsBuffer(oAbgr.p)->CopyFrom(AsBuffer(oK64.p), 21, 1));
    ASSERT_TRUE(oAbgr.p->SetPosition(0, 0));
    ASSERT_TRUE(AsBuffer(oBack.p)->CopyFrom(AsBuffer(oAbgr.p), 21, 1));
    EXPECT_EQ(0, std::memcmp(oK64.oPicture.Data(), oBack.oPicture.Data(), 8 * 21));
    // 8 -> 16 -> 8 bits gives the bytes back: at graphics levels full scale
    // (x 257), at video levels by the power of two (x 256).
    for (EQxcColorRange eRange : {keQxcColorRangeGraphic, keQxcColorRangeVideo}) {
        SBound oWide(29, 256, 1, eRange), oNarrow(13, 256, 1, eRange);
        for (unsigned v = 0; v < 256; ++v) {
            oWide.p->SetPosition(v, 0);
            const uint16_t us = static_cast<uint16_t>(eRange == keQxcColorRangeGraphic ? v * 257 : v << 8);
            ASSERT_TRUE(AsRgb(oWide.p)->FillRgb(SQxcRGBAPixel_16bits{us, us, us, static_cast<uint16_t>(v * 257)}, 1, 1));
        }
        oWide.p->SetPosition(0, 0);
        ASSERT_TRUE(AsBuffer(oNarrow.p)->CopyFrom(AsBuffer(oWide.p), 256, 1));
        for (unsigned v = 0; v < 256; ++v)
            ASSERT_EQ(v, oNarrow.oPicture.Data()[4 * v + 1]) << "range " << eRange;
    }
}

// ---------------------------------------------------- through the hub
// The float format and the 10-bit RGB formats written from the hub read back
// (through the hub's own readers) as they were.
TEST(BufferSurfaces, HubRoundTripsThroughFloatAndTenBitRgb)
{
    std::mt19937 oRandom(43);
    const unsigned uiPixels = 48;
    CPicture oHub(96 * 3, 1), oBack(96 * 3, 1);
    for (unsigned b = 0; b < 3; ++b) {
        SScalar422 s;
        // Colours inside the RGB cube, whatever the standard: RGB has no
        // room for the others.
        for (int i = 0; i < 16; ++i) {
            s.aus16Y[i] = static_cast<uint16_t>(200 + oRandom() % 600);
            s.aus16K[i] = static_cast<uint16_t>(oRandom() % 1024);
        }
        for (int j = 0; j < 8; ++j) {
            s.aus16Cb[j] = static_cast<uint16_t>(480 + oRandom() % 64);
            s.aus16Cr[j] = static_cast<uint16_t>(480 + oRandom() % 64);
        }
        L4224_16::Store<keStoreUnaligned>(oHub.Data() + 96 * b, s);
    }
    for (int iKind : {30, 28, 29}) {
        for (EQxcColorRange eRange : {keQxcColorRangeGraphic, keQxcColorRangeVideo}) {
            auto pHub = CreateSurface(7, true), pBack = CreateSurface(7, true);
            auto* pH = static_cast<CQxcYCbCrA4224_16bits_UnshapedSurface*>(pHub.get());
            auto* pB = static_cast<CQxcYCbCrA4224_16bits_UnshapedSurface*>(pBack.get());
            pH->InitializeRGB10(oHub.Data(), uiPixels, 1, oHub.Pitch(), true, keQxColorimetryITUR_BT_709, eRange,
                                keQxColorimetryITUR_BT_709);
            pB->InitializeRGB10(oBack.Data(), uiPixels, 1, oBack.Pitch(), true, keQxColorimetryITUR_BT_709, eRange,
                                keQxColorimetryITUR_BT_709);
            SBound o(iKind, uiPixels, 1, eRange);
            ASSERT_TRUE(AsBuffer(o.p)->CopyFrom(pH, uiPixels, 1));
            o.p->SetPosition(0, 0);
            ASSERT_TRUE(pB->CopyBlocksFrom(o.p.get(), 3, 1));
            for (unsigned b = 0; b < 3; ++b) {
                SScalar422 sIn, sOut;
                L4224_16::Load(oHub.Data() + 96 * b, sIn);
                L4224_16::Load(oBack.Data() + 96 * b, sOut);
                // Floats carry the values exactly; RGB goes through the
                // matrix both ways (and A2R10G10B10's key through two bits).
                const int iTolerance = iKind == 30 ? 0 : 2;
                for (int i = 0; i < 16; ++i) {
                    EXPECT_LE(std::abs(sIn.aus16Y[i] - sOut.aus16Y[i]), iTolerance) << iKind << " range " << eRange;
                    if (iKind == 28)
                        EXPECT_LE(std::abs(sIn.aus16K[i] - sOut.aus16K[i]), 171);
                    else
                        EXPECT_EQ(sIn.aus16K[i], sOut.aus16K[i]) << iKind;
                }
                for (int j = 0; j < 8; ++j) {
                    EXPECT_LE(std::abs(sIn.aus16Cb[j] - sOut.aus16Cb[j]), iTolerance) << iKind << " range " << eRange;
                    EXPECT_LE(std::abs(sIn.aus16Cr[j] - sOut.aus16Cr[j]), iTolerance) << iKind << " range " << eRange;
                }
            }
        }
    }
}

}  // namespace
