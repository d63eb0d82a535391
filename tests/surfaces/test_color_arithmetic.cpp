// The colour arithmetic constants: the coefficient sets computed from the
// standards' weights against the rows every implementation must reproduce,
// the selection tables, the reciprocal table, the masks and the literals.
#include <gtest/gtest.h>

#include <qxbase/qxcblocksurfaces.h>
#include <qxbase/qxcbuffersurfaces.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

struct STellingRow {
    int aiY[3];
    int aiCb[3];
    int aiCr[3];
    int iGain;
    int aiInverse[4];  // R from Cr, G from Cr, B from Cb (halved), G from Cb
};

const STellingRow kasRows[6] = {
    {{9798, 19235, 3736}, {5655, 11103, 16758}, {16758, 14033, 2725}, 16384, {22458, 11439, 14192, 5512}},
    {{8414, 16519, 3208}, {4857, 9535, 14392}, {14392, 12052, 2341}, 19077, {26149, 13320, 16525, 6419}},
    {{6966, 23436, 2366}, {3840, 12918, 16758}, {16758, 15221, 1537}, 16384, {25226, 7499, 14862, 3001}},
    {{5983, 20127, 2032}, {3298, 11094, 14392}, {14392, 13073, 1320}, 19077, {29372, 8731, 17305, 3494}},
    {{8608, 22217, 1943}, {4680, 12078, 16758}, {16758, 15410, 1348}, 16384, {23621, 9152, 15068, 2636}},
    {{7393, 19080, 1669}, {4019, 10373, 14392}, {14392, 13235, 1158}, 19077, {27503, 10657, 17545, 3069}}};

// Every lane holds the value (as its 16-bit pattern).
void ExpectLanes(int in_iValue, const SQxcLanes16& in_rs, const char* in_psz)
{
    for (int16_t i16 : in_rs.ai16Lane)
        EXPECT_EQ(static_cast<uint16_t>(in_iValue), static_cast<uint16_t>(i16)) << in_psz;
}

void ExpectSet(const STellingRow& in_rRow, const SQxcRgbCoeff& in_rs, bool in_bGraphics)
{
    ExpectLanes(in_rRow.aiY[0], in_rs.sYFromR, "Y from R");
    ExpectLanes(in_rRow.aiY[1], in_rs.sYFromG, "Y from G");
    ExpectLanes(in_rRow.aiY[2], in_rs.sYFromB, "Y from B");
    ExpectLanes(in_rRow.aiCb[0], in_rs.sCbFromR, "Cb from R");
    ExpectLanes(in_rRow.aiCb[1], in_rs.sCbFromG, "Cb from G");
    ExpectLanes(in_rRow.aiCb[2], in_rs.sCbFromB, "Cb from B");
    ExpectLanes(in_rRow.aiCr[0], in_rs.sCrFromR, "Cr from R");
    ExpectLanes(in_rRow.aiCr[1], in_rs.sCrFromG, "Cr from G");
    ExpectLanes(in_rRow.aiCr[2], in_rs.sCrFromB, "Cr from B");
    ExpectLanes(in_rRow.iGain, in_rs.sYGain, "Y gain");
    ExpectLanes(in_rRow.aiInverse[0], in_rs.sRFromCr, "R from Cr");
    ExpectLanes(in_rRow.aiInverse[1], in_rs.sGFromCr, "G from Cr");
    ExpectLanes(in_rRow.aiInverse[2], in_rs.sBFromCbHalf, "B from Cb");
    ExpectLanes(in_rRow.aiInverse[3], in_rs.sGFromCb, "G from Cb");
    ExpectLanes(in_bGraphics ? 1024 : 0, in_rs.sForwardOffset0, "offset 0");
    ExpectLanes(in_bGraphics ? 2056 : 0, in_rs.sForwardOffset1, "offset 1");
    ExpectLanes(in_bGraphics ? 64 : 0, in_rs.sForwardOffset2, "offset 2");
    ExpectLanes(0x8080, in_rs.s0x8080, "0x8080");
    ExpectLanes(8, in_rs.s8, "8");
    ExpectLanes(32, in_rs.s32, "32");
    ExpectLanes(8192, in_rs.s8192, "8192");
    ExpectLanes(in_bGraphics ? 4112 : 0, in_rs.sInverseOffset, "inverse offset");
    ExpectLanes(128, in_rs.s128, "128");
    ExpectLanes(512, in_rs.s512, "512");
    ExpectLanes(16, in_rs.s16, "16");
    ExpectLanes(0, in_rs.s0, "0");
    ExpectLanes(1023, in_rs.s1023a, "1023");
    ExpectLanes(1023, in_rs.s1023b, "1023");
    ExpectLanes(0xffff, in_rs.sAllOnes, "all ones");
    // Each chroma row weighs to zero: grey has no chroma.
    EXPECT_LE(std::abs(in_rRow.aiCb[2] - in_rRow.aiCb[0] - in_rRow.aiCb[1]), 1);
    EXPECT_LE(std::abs(in_rRow.aiCr[0] - in_rRow.aiCr[1] - in_rRow.aiCr[2]), 1);
}

template <class TOwner>
void ExpectFamily()
{
    const SQxcRgbCoeff* apsSets[6] = {&TOwner::ms_sVideoRgbCoeff,
                                      &TOwner::ms_sGraphicRgbCoeff,
                                      &TOwner::ms_sVideoRgbCoeff_ITUR_BT_709,
                                      &TOwner::ms_sGraphicRgbCoeff_ITUR_BT_709,
                                      &TOwner::ms_sVideoRgbCoeff_ITUR_BT_2020,
                                      &TOwner::ms_sGraphicRgbCoeff_ITUR_BT_2020};
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        ExpectSet(kasRows[i], *apsSets[i], i % 2 == 1);
    }
    // range + 3 x colorimetry.
    for (int iColorimetry = 0; iColorimetry < 8; ++iColorimetry) {
        for (int iRange = 0; iRange < 3; ++iRange) {
            const SQxcRgbCoeff* psExpected = nullptr;
            if (iRange < 2 && iColorimetry >= 1 && iColorimetry <= 6) {
                const int iStandard = iColorimetry >= 3 ? 2 : iColorimetry - 1;
                psExpected = apsSets[2 * iStandard + (iRange == 0 ? 1 : 0)];
            }
            EXPECT_EQ(psExpected, TOwner::ms_apsRgbCoeffTable[iRange + 3 * iColorimetry])
                << "range " << iRange << " colorimetry " << iColorimetry;
        }
    }
}

TEST(ColorArithmetic, BothFamiliesOfCoefficientSetsComeOutExactly)
{
    ExpectFamily<CQxcBufferSurface>();
    ExpectFamily<CQxcYCbCrA4224_16bits_UnshapedSurface>();
}

// The video set maps studio white to Y 235 and no chroma when rounded at its
// final shift.
TEST(ColorArithmetic, VideoWhiteKeepsItsLevelWithoutChroma)
{
    const SQxcRgbCoeff& rs = CQxcBufferSurface::ms_sVideoRgbCoeff;
    const int iR = 235, iG = 235, iB = 235;
    const int iY = (rs.sYFromR.ai16Lane[0] * iR + rs.sYFromG.ai16Lane[0] * iG + rs.sYFromB.ai16Lane[0] * iB + 16384) >> 15;
    const int iCb = (-rs.sCbFromR.ai16Lane[0] * iR - rs.sCbFromG.ai16Lane[0] * iG + rs.sCbFromB.ai16Lane[0] * iB + 16384) >> 15;
    EXPECT_EQ(235, iY);
    EXPECT_EQ(0, iCb);
    const SQxcRgbCoeff& rsG = CQxcBufferSurface::ms_sGraphicRgbCoeff;
    const int iYGraphic =
        (rsG.sYFromR.ai16Lane[0] * 255 + rsG.sYFromG.ai16Lane[0] * 255 + rsG.sYFromB.ai16Lane[0] * 255 + 16384) >> 15;
    EXPECT_EQ(235, iYGraphic + 16) << "graphics white";
}

TEST(ColorArithmetic, ReciprocalTableIsTheRoundedQuotient)
{
    const uint16_t* pus = CQxcSurface::ms_sUnshapeReciprocal.aus16Entry;
    EXPECT_EQ(0, pus[0]);
    EXPECT_EQ(32736, pus[1]);
    EXPECT_EQ(16368, pus[2]);
    EXPECT_EQ(512, pus[64]);
    EXPECT_EQ(128, pus[255]);
    EXPECT_EQ(32, pus[1023]);
    for (int a = 1; a < 1024; ++a)
        ASSERT_EQ(static_cast<int>(std::floor(32736.0 / a + 0.5)), pus[a]) << a;
}

void ExpectBytes(const SQxcLanes16& in_rs, const uint8_t (&in_auc)[16], const char* in_psz)
{
    EXPECT_EQ(0, std::memcmp(&in_rs, in_auc, 16)) << in_psz;
}

TEST(ColorArithmetic, MaskConstantsHaveTheirBytes)
{
    typedef CQxcYCbCrA4224_16bits_UnshapedSurface C;
    const uint8_t aucZero[16] = {};
    uint8_t aucOnes[16];
    std::memset(aucOnes, 0xff, 16);
    const uint8_t aucCbCr422[16] = {0xff, 0, 0xff, 0, 0xff, 0, 0xff, 0, 0xff, 0, 0xff, 0, 0xff, 0, 0xff, 0};
    const uint8_t aucOpaqueForAlpha[16] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
    const uint8_t aucBGra[16] = {0, 0, 0xff, 0, 0, 0, 0xff, 0, 0, 0, 0xff, 0, 0, 0, 0xff, 0};
    const uint8_t aucBgRa[16] = {0, 0xff, 0, 0, 0, 0xff, 0, 0, 0, 0xff, 0, 0, 0, 0xff, 0, 0};
    const uint8_t aucCbCr[16] = {0xff, 0xff, 0, 0, 0xff, 0xff, 0, 0, 0xff, 0xff, 0, 0, 0xff, 0xff, 0, 0};
    const uint8_t aucFirst[16] = {0xff, 0xff};
    const uint8_t aucLast[16] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    ExpectBytes(C::ms_ki128Zero, aucZero, "zero");
    ExpectBytes(C::ms_ki128w_Mask_CbCr422, aucCbCr422, "CbCr422");
    ExpectBytes(C::ms_ki128b_Opaque, aucOnes, "opaque");
    ExpectBytes(C::ms_ki128b_ffff, aucOnes, "ffff");
    ExpectBytes(C::ms_ki128b_OpaqueForAlpha, aucOpaqueForAlpha, "opaque for alpha");
    ExpectBytes(C::ms_ki128w_Mask_bGra, aucBGra, "bGra");
    ExpectBytes(C::ms_ki128w_Mask_bgRa, aucBgRa, "bgRa");
    ExpectBytes(C::ms_ki128w_Mask_CbCr, aucCbCr, "CbCr");
    ExpectBytes(C::ms_ki128w_Mask_FirstWord, aucFirst, "first word");
    ExpectBytes(C::ms_ki128w_Mask_LastWord, aucLast, "last word");
}

TEST(ColorArithmetic, RangeAndFilterConstantsStandAsGiven)
{
    const SQxcRgbToRgbCoeff& rs = CQxcRgbBufferSurface::ms_sRgbToRgbCoeff;
    ExpectLanes(56283, rs.sGraphicToVideo, "219/255");
    ExpectLanes(38154, rs.sVideoToGraphic, "255/219");
    ExpectLanes(16, rs.s16, "16");
    ExpectLanes(4112, rs.s4112, "4112");
    ExpectLanes(128, rs.s128, "128");
    ExpectLanes(64, rs.s64, "64");
    // Each owner of a family of coefficient sets has its filter set too.
    for (const SQxcRgbFilteringCoeff* psF :
         {&CQxcBufferSurface::ms_sRgbFilteringPrivate, &CQxcYCbCrA4224_16bits_UnshapedSurface::ms_sRgbFilteringPrivate}) {
        ExpectLanes(16384, psF->sTapCentre, "1/2");
        ExpectLanes(6144, psF->sTapNear, "3/16");
        ExpectLanes(2048, psF->sTapFar, "1/16");
        ExpectLanes(16, psF->s16, "16");
        ExpectLanes(4, psF->s4, "4");
    }
    EXPECT_EQ(0x4000400040004000ll, CQxcBufferSurface::ms_ki64HorizontalFilterCoeff0);
    EXPECT_EQ(0x1800180018001800ll, CQxcBufferSurface::ms_ki64HorizontalFilterCoeff1);
    EXPECT_EQ(0x0800080008000800ll, CQxcBufferSurface::ms_ki64HorizontalFilterCoeff2);
}

}  // namespace
