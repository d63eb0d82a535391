// The description mapping of the buffer engine: format table, refusals,
// buffer variants, block arithmetic and the colours of a clear.
#include <gtest/gtest.h>

#include <qxbase/qxcbufferenginecommon.h>

namespace {

SQxSurfaceDescription Describe(int32_t in_iFormat, uint32_t in_uiBits, EQxColorimetry in_eColorimetry,
                               bool in_bShaped = false)
{
    SQxSurfaceDescription s = {};
    s.size = sizeof(s);
    s.eSurfaceFormat = static_cast<EQxSurfaceFormat>(in_iFormat);
    s.ulComponentBitCount = in_uiBits;
    s.eColorimetry = in_eColorimetry;
    s.bIsAlphaShaped = in_bShaped;
    return s;
}

struct SMapping {
    bool bResult;
    EQxcSurfaceType eType;
    EQxColorimetry eColorimetry;
    EQxcColorRange eRange;
    bool bIsYuv;
};

SMapping Map(const SQxSurfaceDescription& in_rs)
{
    SMapping s = {};
    s.bResult = CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(in_rs, &s.eType, &s.eColorimetry, &s.eRange,
                                                                        &s.bIsYuv);
    return s;
}

TEST(BufferEngineCommon, MapsEveryConvertedFormat)
{
    struct SRow {
        int32_t iFormat;
        uint32_t uiBits;
        bool bShaped;
        EQxcSurfaceType eType;
        EQxcColorRange eRange;
        bool bIsYuv;
    };
    const SRow asRows[] = {
        {1, 8, false, keQxcSurfaceTypeRGBA_8bits_Unshaped, keQxcColorRangeGraphic, false},
        {1, 8, true, keQxcSurfaceTypeRGBA_8bits_Shaped, keQxcColorRangeGraphic, false},
        {2, 8, false, keQxcSurfaceTypeRGB24_8bits, keQxcColorRangeGraphic, false},
        {2, 12, false, keQxcSurfaceTypeRGB36_12bits, keQxcColorRangeGraphic, false},
        {2, 16, false, keQxcSurfaceTypeRGB36_12bits, keQxcColorRangeGraphic, false},
        {5, 8, false, keQxcSurfaceTypeYCbCr422_8bits, keQxcColorRangeYuv, true},
        {5, 10, false, keQxcSurfaceTypeYCbCr422_10bits, keQxcColorRangeYuv, true},
        {5, 12, false, keQxcSurfaceTypeInvalid, keQxcColorRangeYuv, true},
        {6, 8, false, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcColorRangeYuv, true},
        {6, 8, true, keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, keQxcColorRangeYuv, true},
        {6, 10, false, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcColorRangeYuv, true},
        {6, 10, true, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped, keQxcColorRangeYuv, true},
        {6, 12, false, keQxcSurfaceTypeInvalid, keQxcColorRangeYuv, true},
        {7, 8, false, keQxcSurfaceTypeAlpha, keQxcColorRangeYuv, false},
        {33, 8, false, keQxcSurfaceTypeAYCbCr4444_8bits_Shaped, keQxcColorRangeYuv, true},
        {33, 10, false, keQxcSurfaceTypeInvalid, keQxcColorRangeYuv, true},
        {37, 8, false, keQxcSurfaceTypeAlphaLuminance, keQxcColorRangeYuv, false},
        {38, 8, false, keQxcSurfaceTypeBGRA_8bits_Unshaped, keQxcColorRangeGraphic, false},
        {38, 8, true, keQxcSurfaceTypeBGRA_8bits_Shaped, keQxcColorRangeGraphic, false},
        {51, 10, false, keQxcSurfaceTypeA2R10G10B10_Unshaped, keQxcColorRangeVideo, false},
        {51, 10, true, keQxcSurfaceTypeInvalid, keQxcColorRangeVideo, false},
        {53, 10, false, keQxcSurfaceTypeV210_10bits, keQxcColorRangeYuv, true},
        {53, 8, false, keQxcSurfaceTypeInvalid, keQxcColorRangeYuv, true},
        {54, 8, false, keQxcSurfaceType2VUY_8bits, keQxcColorRangeYuv, true},
        {54, 10, false, keQxcSurfaceTypeInvalid, keQxcColorRangeYuv, true},
        {59, 16, false, keQxcSurfaceTypeABGR_16bits_Unshaped, keQxcColorRangeGraphic, false},
        {81, 10, false, keQxcSurfaceTypeA2B10G10R10_Unshaped, keQxcColorRangeGraphic, false},
        {81, 10, true, keQxcSurfaceTypeInvalid, keQxcColorRangeGraphic, false},
    };
    for (const SRow& r : asRows) {
        const SMapping s = Map(Describe(r.iFormat, r.uiBits, keQxColorimetryITUR_BT_709, r.bShaped));
        EXPECT_TRUE(s.bResult) << r.iFormat << "/" << r.uiBits;
        EXPECT_EQ(r.eType, s.eType) << r.iFormat << "/" << r.uiBits << (r.bShaped ? " shaped" : "");
        EXPECT_EQ(r.eRange, s.eRange) << r.iFormat;
        EXPECT_EQ(r.bIsYuv, s.bIsYuv) << r.iFormat;
    }
}

TEST(BufferEngineCommon, OpaqueAndUnknownFormats)
{
    for (int32_t iFormat : {11, 17, 27, 30, 32, 35, 36, 41, 45, 47, 52, 56, 58, 60, 80}) {
        const SMapping s = Map(Describe(iFormat, 8, keQxColorimetryInvalid));
        EXPECT_TRUE(s.bResult) << iFormat;
        EXPECT_EQ(keQxcSurfaceTypeOpaqueData, s.eType) << iFormat;
        EXPECT_EQ(keQxcColorRangeYuv, s.eRange);
        EXPECT_FALSE(s.bIsYuv);
    }
    for (int32_t iFormat : {0, -1, 4, 8, 9, 10, 28, 29, 34, 39, 40, 46, 48, 49, 50, 55, 61, 79, 82, 1000}) {
        const SMapping s = Map(Describe(iFormat, 8, keQxColorimetryITUR_BT_709));
        EXPECT_FALSE(s.bResult) << iFormat;
        EXPECT_EQ(keQxcSurfaceTypeInvalid, s.eType) << iFormat;
        EXPECT_EQ(keQxcColorRangeInvalid, s.eRange) << iFormat;
    }
}

TEST(BufferEngineCommon, YuvNeedsAColorimetryAndAlphaFormatsDropIt)
{
    SMapping s = Map(Describe(5, 8, keQxColorimetryInvalid));
    EXPECT_FALSE(s.bResult);
    EXPECT_EQ(keQxcSurfaceTypeInvalid, s.eType);
    EXPECT_TRUE(s.bIsYuv);
    EXPECT_EQ(keQxcColorRangeYuv, s.eRange);

    s = Map(Describe(3, 8, keQxColorimetryITUR_BT_2020));
    EXPECT_TRUE(s.bResult);
    EXPECT_EQ(keQxcSurfaceTypeRGBA_8bits_Unshaped, s.eType);
    EXPECT_EQ(keQxcColorRangeVideo, s.eRange);
    EXPECT_EQ(keQxColorimetryInvalid, s.eColorimetry);
    s = Map(Describe(3, 8, keQxColorimetryITUR_BT_2020, true));
    EXPECT_EQ(keQxcSurfaceTypeRGBA_8bits_Shaped, s.eType);
    for (int32_t iFormat : {1, 7, 37}) {
        s = Map(Describe(iFormat, 8, keQxColorimetryITUR_BT_601));
        EXPECT_EQ(keQxColorimetryInvalid, s.eColorimetry) << iFormat;
    }
    // Other formats keep theirs; RGB needs none.
    s = Map(Describe(38, 8, keQxColorimetryITUR_BT_601));
    EXPECT_EQ(keQxColorimetryITUR_BT_601, s.eColorimetry);
    s = Map(Describe(2, 8, keQxColorimetryInvalid));
    EXPECT_TRUE(s.bResult);
    // The four-argument form maps alike.
    EQxcSurfaceType eType;
    EQxColorimetry eColorimetry;
    EQxcColorRange eRange;
    EXPECT_TRUE(CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(Describe(53, 10, keQxColorimetryITUR_BT_709),
                                                                         &eType, &eColorimetry, &eRange));
    EXPECT_EQ(keQxcSurfaceTypeV210_10bits, eType);
}

TEST(BufferEngineCommon, BufferVariants)
{
    const int32_t aiExpected[kiQxcSurfaceTypeCount] = {15, 16, 17, 18, 19, 20, -1, -1, -1, -1, -1, 31, 33,
                                                       13, 14, -1, -1, -1, -1, -1, -1, -1, 22, -1, -1, 25,
                                                       26, 27, 28, -1, -1, -1, -1, -1, 34, -1, 36};
    for (int32_t i = 0; i < kiQxcSurfaceTypeCount; ++i)
        EXPECT_EQ(aiExpected[i], CQxcBufferEngineCommon::SetFormatToQxcBufferSurface(static_cast<EQxcSurfaceType>(i)))
            << i;
    EXPECT_EQ(-1, CQxcBufferEngineCommon::SetFormatToQxcBufferSurface(keQxcSurfaceTypeInvalid));
    EXPECT_EQ(-1, CQxcBufferEngineCommon::SetFormatToQxcBufferSurface(static_cast<EQxcSurfaceType>(37)));
}

TEST(BufferEngineCommon, BlockTablesOffsetsAndLineSizes)
{
    EXPECT_EQ(1u, CQxcBufferEngineCommon::ms_auiMinPixelsPerBlock[28]);
    EXPECT_EQ(4u, CQxcBufferEngineCommon::ms_auiBytesPerBlocksMinPixels[34]);
    EXPECT_EQ(36u, CQxcBufferEngineCommon::ms_auiBytesPerBlocksMinPixels[36]);
    for (int i : {29, 30, 31, 32, 33, 35}) {
        EXPECT_EQ(0u, CQxcBufferEngineCommon::ms_auiMinPixelsPerBlock[i]) << i;
        EXPECT_EQ(0u, CQxcBufferEngineCommon::ms_auiBytesPerBlocksMinPixels[i]) << i;
    }
    EXPECT_EQ(16u, CQxcBufferEngineCommon::ms_auiBytesPerBlocksMinPixels[6]);
    EXPECT_EQ(0u, CQxcBufferEngineCommon::ms_auiBytesPerBlocksMinPixels[7]);

    EXPECT_EQ(8200, CQxcBufferEngineCommon::GetOffset(keQxcSurfaceTypeYCbCr422_8bits, 2, 4096, 5));
    EXPECT_EQ(3 * 5120 + 2 * 16, CQxcBufferEngineCommon::GetOffset(keQxcSurfaceTypeV210_10bits, 3, 5120, 17));
    EXPECT_EQ(-4096 + 40, CQxcBufferEngineCommon::GetOffset(keQxcSurfaceTypeYCbCr422_10bits, -1, 4096, 31));

    // Bytes of a line of each type (only v210 answers from the list).
    const struct {
        EQxcSurfaceType eType;
        uint32_t uiPixels, uiBytes;
    } asLines[] = {{keQxcSurfaceTypeV210_10bits, 1280, 3456}, {keQxcSurfaceTypeV210_10bits, 1279, 3408},
                   {keQxcSurfaceTypeV210_10bits, 2048, 5504}, {keQxcSurfaceTypeV210_10bits, 4096, 11008},
                   {keQxcSurfaceTypeV210_10bits, 720, 1920},  {keQxcSurfaceTypeV210_10bits, 1920, 5120},
                   {keQxcSurfaceTypeYCbCr422_10bits, 1920, 4800}, {keQxcSurfaceTypeRGB24_8bits, 7, 12},
                   {keQxcSurfaceTypeRGB36_12bits, 1920, 8640},   {keQxcSurfaceTypeYCbCr422_8bits, 1280, 2560}};
    for (const auto& r : asLines)
        EXPECT_EQ(r.uiBytes, CQxcBufferEngineCommon::GetBytesFromPixels(r.eType, r.uiPixels))
            << r.eType << " " << r.uiPixels;
}

TEST(BufferEngineCommon, HostColorsOfAClear)
{
    SQxcYuvaPixel sYuva = {};
    SQxcRGBAPixel sRgba = {};
    CQxcBufferEngineCommon::GetHostColor(keQxColorRed, 0.5f, &sYuva, &sRgba, keQxcColorRangeVideo);
    EXPECT_EQ(235, sRgba.R);
    EXPECT_EQ(16, sRgba.G);
    EXPECT_EQ(16, sRgba.B);
    EXPECT_EQ(127, sRgba.A);
    EXPECT_EQ(324, sYuva.Y);
    EXPECT_EQ(364, sYuva.Cb);
    EXPECT_EQ(960, sYuva.Cr);
    EXPECT_EQ(511, sYuva.A);

    for (EQxcColorRange eRange : {keQxcColorRangeGraphic, keQxcColorRangeYuv, keQxcColorRangeInvalid}) {
        CQxcBufferEngineCommon::GetHostColor(keQxColorBlue, 1.0f, &sYuva, &sRgba, eRange);
        EXPECT_EQ(0, sRgba.R);
        EXPECT_EQ(255, sRgba.B);
        EXPECT_EQ(255, sRgba.A);
        EXPECT_EQ(160, sYuva.Y);
        EXPECT_EQ(1023, sYuva.A);
    }

    sYuva = SQxcYuvaPixel{1, 2, 3, 4};
    sRgba = SQxcRGBAPixel{5, 6, 7, 8};
    CQxcBufferEngineCommon::GetHostColor(static_cast<EQxColor>(9), 1.0f, &sYuva, &sRgba, keQxcColorRangeVideo);
    EXPECT_EQ(1, sYuva.Y);
    EXPECT_EQ(3, sYuva.Cr);
    EXPECT_EQ(1023, sYuva.A);
    EXPECT_EQ(5, sRgba.R);
    EXPECT_EQ(7, sRgba.B);
    EXPECT_EQ(255, sRgba.A);

    CQxcBufferEngineCommon::GetHostColor(keQxColorBlack, 0.0f, &sYuva, &sRgba, keQxcColorRangeVideo);
    EXPECT_EQ(64, sYuva.Y);
    EXPECT_EQ(16, sRgba.G);
    EXPECT_EQ(0, sYuva.A);
    EXPECT_EQ(0, sRgba.A);
}

}  // namespace
