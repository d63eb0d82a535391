// The copy service on its own: how a copy is cut into slices, the small
// checks, and every validation code in its order, with the surfaces left
// unlocked after each refusal.
#include <qxbase/qxcbufferservices.h>
#include <qxbase/qxerrors.h>

#include <gtest/gtest.h>

#include <vector>

#include "bufferengine/enginekit.h"

namespace {

using namespace NQxEngineKit;

TEST(CopySlicing, SlicesOfSixteenLinesUpTo260ThenFewerSlicesOfMoreLines)
{
    struct SCase {
        uint32_t uiLines;
        bool bWeave;
        SQxcSlicePlan sPlan;
    };
    const SCase asCases[] = {
        {1080, false, {67, 16, 8}},   {4160, false, {260, 16, 0}}, {4176, false, {260, 16, 16}},
        {4200, false, {247, 17, 1}},  {4320, false, {254, 17, 2}}, {10, false, {0, 16, 10}},
        {0, false, {0, 16, 0}},       {16, false, {1, 16, 0}},
        // Weave: slices do lines of both fields; the remainder is per field.
        {1080, true, {67, 8, 4}},     {4200, true, {247, 8, 124}}, {10, true, {0, 8, 5}},
    };
    for (const SCase& c : asCases) {
        const SQxcSlicePlan s = CQxcBufferCopyService::PlanSlices(c.uiLines, c.bWeave);
        EXPECT_EQ(s.uiSlices, c.sPlan.uiSlices) << c.uiLines << " lines, weave " << c.bWeave;
        EXPECT_EQ(s.uiLinesPerSlice, c.sPlan.uiLinesPerSlice) << c.uiLines << " lines, weave " << c.bWeave;
        EXPECT_EQ(s.uiRemainder, c.sPlan.uiRemainder) << c.uiLines << " lines, weave " << c.bWeave;
    }
    // Every line is done exactly once, for every count up to 9000.
    for (uint32_t L = 0; L <= 9000; ++L) {
        const SQxcSlicePlan s = CQxcBufferCopyService::PlanSlices(L, false);
        ASSERT_LE(s.uiSlices, 260u);
        ASSERT_EQ(s.uiSlices * s.uiLinesPerSlice + s.uiRemainder, L);
        ASSERT_LE(s.uiRemainder, std::max(s.uiLinesPerSlice, 16u));
        if (L % 2 == 0) {
            const SQxcSlicePlan w = CQxcBufferCopyService::PlanSlices(L, true);
            ASSERT_EQ(2 * (w.uiSlices * w.uiLinesPerSlice + w.uiRemainder), L) << L;
        }
    }
}

TEST(CopyChecks, WidthRulesRgb10FlagAndSupportedPairs)
{
    EXPECT_EQ(CQxcBufferCopyService::validateWidthModuloFormat(keQxSurfaceFormatYUYV422, 1919, 8), QX_E_INVALID_WIDTH);
    EXPECT_EQ(CQxcBufferCopyService::validateWidthModuloFormat(keQxSurfaceFormatYUYV422, 1920, 8), S_OK);
    EXPECT_EQ(CQxcBufferCopyService::validateWidthModuloFormat(keQxSurfaceFormatYUYV422, 1916, 8), S_OK);
    EXPECT_EQ(CQxcBufferCopyService::validateWidthModuloFormat(keQxSurfaceFormatYUYV422, 1916, 10), QX_E_INVALID_WIDTH);
    EXPECT_EQ(CQxcBufferCopyService::validateWidthModuloFormat(keQxSurfaceFormatV210, 1912, 10), QX_E_INVALID_WIDTH);
    EXPECT_EQ(CQxcBufferCopyService::validateWidthModuloFormat(keQxSurfaceFormatV210, 1920, 8), S_OK);
    EXPECT_EQ(CQxcBufferCopyService::validateWidthModuloFormat(keQxSurfaceFormatARGBGraphic, 1917, 8), S_OK);

    const EQxcColorRange Y = keQxcColorRangeYuv, V = keQxcColorRangeVideo, G = keQxcColorRangeGraphic;
    EXPECT_TRUE(CQxcBufferCopyService::isConversionRgb10AndYuv(keQxcSurfaceTypeA2R10G10B10_Unshaped, V,
                                                               keQxcSurfaceTypeYCbCr422_8bits, Y));
    EXPECT_FALSE(CQxcBufferCopyService::isConversionRgb10AndYuv(keQxcSurfaceTypeA2R10G10B10_Unshaped, V,
                                                                keQxcSurfaceTypeRGBA_8bits_Unshaped, G));
    EXPECT_TRUE(CQxcBufferCopyService::isConversionRgb10AndYuv(keQxcSurfaceTypeV210_10bits, Y,
                                                               keQxcSurfaceTypeA2R10G10B10_Unshaped, V));
    EXPECT_TRUE(CQxcBufferCopyService::isConversionRgb10AndYuv(keQxcSurfaceTypeABGR_16bits_Unshaped, G,
                                                               keQxcSurfaceTypeRGBA_8bits_Unshaped, G));
    EXPECT_FALSE(CQxcBufferCopyService::isConversionRgb10AndYuv(keQxcSurfaceTypeRGBA_8bits_Unshaped, G,
                                                                keQxcSurfaceTypeYCbCr422_8bits, Y));

    // The whole matrix: the diagonal and these pairs (source first, then
    // its destinations), nothing else.
    const std::vector<std::vector<int>> vvAllowed = {
        {0, 1, 3, 4, 11, 12, 13, 28, 32}, {1, 0, 3, 4, 13, 26, 28, 32}, {2, 0, 1, 3, 4, 14},
        {3, 0, 1, 4, 11, 13, 28, 32},     {4, 0, 1, 3, 13, 28, 32},     {5, 0, 1, 3, 4, 14},
        {10, 0, 1, 2, 3, 4, 5},           {11, 0, 3, 12, 13},           {12, 0, 11},
        {13, 0, 1, 3, 4, 11},             {14, 2, 5},                   {22, 13},
        {26, 1},                          {28, 0, 1, 3, 4},             {34, 13},
        {36, 13}};
    bool abExpected[kiQxcSurfaceTypeCount][kiQxcSurfaceTypeCount] = {};
    for (int t = 0; t < kiQxcSurfaceTypeCount; ++t) abExpected[t][t] = true;
    for (const std::vector<int>& v : vvAllowed)
        for (size_t i = 1; i < v.size(); ++i) abExpected[v[0]][v[i]] = true;
    for (int from = 0; from < kiQxcSurfaceTypeCount; ++from)
        for (int to = 0; to < kiQxcSurfaceTypeCount; ++to)
            EXPECT_EQ(CQxcBufferCopyService::IsSupportedCopy(EQxcSurfaceType(from), EQxcSurfaceType(to)),
                      abExpected[from][to])
                << from << " to " << to;
    EXPECT_FALSE(CQxcBufferCopyService::IsSupportedCopy(keQxcSurfaceTypeInvalid, keQxcSurfaceTypeYCbCr422_8bits));
    EXPECT_FALSE(CQxcBufferCopyService::IsSupportedCopy(keQxcSurfaceTypeYCbCr422_8bits, EQxcSurfaceType(37)));
}

class CopyValidation : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        ms_pService = new CQxcBufferCopyService();
        ASSERT_EQ(ms_pService->OpenServices(nullptr), S_OK);
    }
    static void TearDownTestSuite()
    {
        ms_pService->NonDelegatingRelease();
        ms_pService = nullptr;
    }

    // Validates a copy of the whole pictures (or the rectangles given) and
    // checks that a refusal leaves both surfaces unlocked; a success is
    // unlocked here.
    HRESULT Validate(CQxcHostSurface* in_pSource, CQxcHostSurface* in_pDestination, const SQxRect* in_psSource = nullptr,
                     const SQxRect* in_psDestination = nullptr)
    {
        SQxRect sSource = in_psSource ? *in_psSource : Whole(in_pSource);
        SQxRect sDestination = in_psDestination ? *in_psDestination : Whole(in_pDestination);
        bool bPlain = false;
        const HRESULT hr = ms_pService->ValidateAndInitializeCopyParams(in_pSource, &sSource, in_pDestination,
                                                                        &sDestination, keQxFilterModeNearest, bPlain);
        if (SUCCEEDED(hr)) ms_pService->UnlockSurfaces();
        EXPECT_EQ(in_pSource->GetLockCount(), 0);
        EXPECT_EQ(in_pDestination->GetLockCount(), 0);
        return hr;
    }

    static CQxcBufferCopyService* ms_pService;
};
CQxcBufferCopyService* CopyValidation::ms_pService = nullptr;

TEST_F(CopyValidation, NullsDescriptionsAndRectangles)
{
    auto pYuyv = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16));
    SQxRect sRect = Whole(pYuyv.get());
    bool bPlain = true;
    EXPECT_EQ(ms_pService->ValidateAndInitializeCopyParams(nullptr, &sRect, pYuyv.get(), &sRect,
                                                           keQxFilterModeNearest, bPlain),
              QX_E_INVALID_POINTER);
    EXPECT_FALSE(bPlain);
    EXPECT_EQ(ms_pService->ValidateAndInitializeCopyParams(pYuyv.get(), &sRect, nullptr, &sRect,
                                                           keQxFilterModeNearest, bPlain),
              QX_E_INVALID_POINTER);
    EXPECT_EQ(ms_pService->ValidateAndInitializeCopyParams(pYuyv.get(), nullptr, pYuyv.get(), &sRect,
                                                           keQxFilterModeNearest, bPlain),
              QX_E_INVALID_POINTER);
    auto pOther = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16));
    const HRESULT hrForced = QX_HRESULT(0x89990042u);
    pOther->InjectFailure(keQxcHostSurfaceOperationGetDescription, hrForced);
    EXPECT_EQ(Validate(pYuyv.get(), pOther.get(), &sRect, &sRect), hrForced);
    pOther->InjectFailure(keQxcHostSurfaceOperationGetDescription, S_OK);
    // A failed lock of the second surface unlocks the first.
    pOther->InjectFailure(keQxcHostSurfaceOperationLock, hrForced);
    EXPECT_EQ(Validate(pYuyv.get(), pOther.get()), hrForced);
    pOther->InjectFailure(keQxcHostSurfaceOperationLock, S_OK);
    EXPECT_EQ(Validate(pYuyv.get(), pOther.get()), S_OK);
}

TEST_F(CopyValidation, RectanglesSizesAndFieldFrameRelations)
{
    auto pFrame = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 32));
    auto pOther = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 32));
    auto pField = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16, keQxPolarityF0));
    const SQxRect sInverted{10, 0, 5, 8}, sUpsideDown{0, 8, 16, 4}, sNegative{-16, 0, 16, 8};
    const SQxRect sPastRight{20, 0, 68, 8};  // starts at 16 once rounded, 16 + 48 = 64 fits
    const SQxRect sTooWide{20, 0, 72, 8};    // 16 + 52 > 64
    const SQxRect sTooLow{0, 30, 64, 34};
    const SQxRect sSmall{0, 0, 32, 8};
    EXPECT_EQ(Validate(pFrame.get(), pOther.get(), &sInverted, &sInverted), QX_E_INVALID_GEOMETRY);
    EXPECT_EQ(Validate(pFrame.get(), pOther.get(), &sUpsideDown, &sUpsideDown), QX_E_INVALID_GEOMETRY);
    EXPECT_EQ(Validate(pFrame.get(), pOther.get(), &sNegative, &sNegative), QX_E_INVALID_GEOMETRY);
    EXPECT_EQ(Validate(pFrame.get(), pOther.get(), &sPastRight, &sPastRight), S_OK);
    EXPECT_EQ(Validate(pFrame.get(), pOther.get(), &sTooWide, &sTooWide), QX_E_INVALID_GEOMETRY);
    EXPECT_EQ(Validate(pFrame.get(), pOther.get(), &sTooLow, &sTooLow), QX_E_INVALID_GEOMETRY);
    EXPECT_EQ(Validate(pFrame.get(), pOther.get(), &sSmall, nullptr), QX_E_INVALID_GEOMETRY);
    // A frame into one of its fields and back; not between two frames.
    EXPECT_EQ(Validate(pFrame.get(), pField.get()), S_OK);
    EXPECT_EQ(Validate(pField.get(), pFrame.get()), S_OK);
    auto pHalf = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16));
    EXPECT_EQ(Validate(pFrame.get(), pHalf.get()), QX_E_INVALID_GEOMETRY);
}

TEST_F(CopyValidation, OpaqueDataColorimetriesPairsAndConversionPermission)
{
    SQxSurfaceDescription sData = Describe(keQxSurfaceFormatQueltoAncillaryData, 8, 0, 0);
    sData.ulBufferSize = 4096;
    auto pData = Allocate(sData);
    SQxSurfaceDescription sOther = sData;
    sOther.eSurfaceFormat = keQxSurfaceFormatDV25Field1;
    auto pOtherData = Allocate(sOther);
    SQxSurfaceDescription sSmall = sData;
    sSmall.ulBufferSize = 1024;
    auto pSmallData = Allocate(sSmall);
    EXPECT_EQ(Validate(pData.get(), pOtherData.get()), QX_E_INCOMPATIBLE_OPAQUE_FORMATS);
    EXPECT_EQ(Validate(pData.get(), pSmallData.get()), QX_E_INVALID_GEOMETRY);
    SQxSurfaceDescription sSecond = sOther;
    sSecond.eSurfaceFormat = keQxSurfaceFormatDV25Field2;
    auto pSecondField = Allocate(sSecond);
    EXPECT_EQ(Validate(pOtherData.get(), pSecondField.get()), S_OK);  // the two fields of one pattern
    EXPECT_EQ(Validate(pData.get(), pData.get()), S_OK);

    auto pUnknown = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 4, keQxPolarityProgressive,
                                      keQxColorimetryUnknown));
    auto pV210 = Allocate(Describe(keQxSurfaceFormatV210, 10, 64, 4));
    EXPECT_EQ(Validate(pUnknown.get(), pV210.get()), QX_E_COLORIMETRY_MISMATCH);

    auto pYuyv = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 4));
    auto pYuva = Allocate(Describe(keQxSurfaceFormatYUAYVA4224, 8, 64, 4));
    EXPECT_EQ(Validate(pV210.get(), pYuva.get()), QX_E_CONVERSION_NOT_ALLOWED);  // not a supported pair
    EXPECT_EQ(Validate(pYuyv.get(), pV210.get()), S_OK);

    // A producer that forbids conversions allows only the YUYV/2VUY exchange.
    SQxSurfaceDescription sLocked = Describe(keQxSurfaceFormatYUYV422, 8, 64, 4);
    sLocked.bAllowHostConversion = false;
    auto pLocked = Allocate(sLocked);
    EXPECT_EQ(Validate(pLocked.get(), pV210.get()), QX_E_CONVERSION_NOT_ALLOWED);
    EXPECT_EQ(Validate(pV210.get(), pLocked.get()), QX_E_CONVERSION_NOT_ALLOWED);
    // The exception covers the 2VUY side of the exchange: a 2VUY surface
    // that forbids conversions is still exchanged with a YUYV one that
    // allows them, but not with one that forbids them too.
    SQxSurfaceDescription s2Vuy = Describe(keQxSurfaceFormat2VUY, 8, 64, 4);
    s2Vuy.bAllowHostConversion = false;
    auto pLocked2Vuy = Allocate(s2Vuy);
    EXPECT_EQ(Validate(pYuyv.get(), pLocked2Vuy.get()), S_OK);
    EXPECT_EQ(Validate(pLocked2Vuy.get(), pYuyv.get()), S_OK);
    EXPECT_EQ(Validate(pLocked.get(), pLocked2Vuy.get()), QX_E_CONVERSION_NOT_ALLOWED);
    EXPECT_EQ(Validate(pLocked2Vuy.get(), pLocked.get()), QX_E_CONVERSION_NOT_ALLOWED);
}

TEST_F(CopyValidation, FieldWeaveNeedsWholeLinePairsAndUnknownKindsAreRefused)
{
    auto pStored = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 10, keQxPolarityBackToBack));
    auto pFrame = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 10, keQxPolarityInterlaced));
    const SQxRect sOdd{0, 0, 64, 9};
    EXPECT_EQ(Validate(pStored.get(), pFrame.get(), &sOdd, &sOdd), QX_E_INVALID_OPERATION);
    EXPECT_EQ(Validate(pStored.get(), pFrame.get()), S_OK);
    EXPECT_EQ(ms_pService->MainThreadCaller(keQxfBufferCopyServiceMainThreadInvalid), QX_E_INVALID_OPERATION);
    EXPECT_EQ(ms_pService->MainThreadCaller(EQxfBufferCopyServiceMainThreadType(4)), QX_E_INVALID_OPERATION);
}

TEST_F(CopyValidation, PicturesMustLieInsideTheirBuffers)
{
    // Descriptions whose pitch and height promise more than the memory.
    unsigned char aucMemory[64 * 8];
    auto fnOverMemory = [&](bool in_bAllowConversion, EQxPolarity in_ePolarity) {
        SQxSurfaceDescription s = Describe(keQxSurfaceFormatYUYV422, 8, 32, 9, in_ePolarity);
        s.lPitch = 64;
        s.ulBufferSize = sizeof(aucMemory);
        s.bAllowHostConversion = in_bAllowConversion;
        CQxcHostSurface* pSurface = nullptr;
        EXPECT_EQ(CQxcHostSurface::CreateOverMemory(s, aucMemory, nullptr, &pSurface), S_OK);
        return TOwned<CQxcHostSurface>(pSurface);
    };
    auto pLying = fnOverMemory(true, keQxPolarityProgressive);
    auto pGood = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 32, 9));
    EXPECT_EQ(Validate(pGood.get(), pLying.get()), QX_E_INVALID_GEOMETRY);
    EXPECT_EQ(Validate(pLying.get(), pGood.get()), QX_E_INVALID_GEOMETRY);

    // That check comes after every rule of the request itself: a request
    // that breaks one of them gets that rule's code, whatever its buffers.
    auto pV210 = Allocate(Describe(keQxSurfaceFormatV210, 10, 32, 9));
    EXPECT_EQ(Validate(fnOverMemory(false, keQxPolarityProgressive).get(), pV210.get()), QX_E_CONVERSION_NOT_ALLOWED);
    // 9 lines cannot be woven.
    EXPECT_EQ(Validate(fnOverMemory(true, keQxPolarityBackToBack).get(), pGood.get()), QX_E_INVALID_OPERATION);
}

TEST_F(CopyValidation, RotationRefusesWhatTheRotatorCannotTurnSafely)
{
    auto fnRotate = [&](CQxcHostSurface* in_pSource, CQxcHostSurface* in_pDestination, EQxRotationAngle in_eAngle) {
        const HRESULT hr = ms_pService->validateAndInitializeRotateParams(in_pSource, in_pDestination, in_eAngle);
        if (SUCCEEDED(hr)) ms_pService->UnlockSurfaces();
        for (CQxcHostSurface* p : {in_pSource, in_pDestination})
            if (p) EXPECT_EQ(p->GetLockCount(), 0);
        return hr;
    };
    auto pSource = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 32));
    auto pTurned = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 32, 64));
    auto pSame = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 32));
    EXPECT_EQ(fnRotate(pSource.get(), pTurned.get(), keQxRotationAngle90), S_OK);
    EXPECT_EQ(fnRotate(pSource.get(), pSame.get(), keQxRotationAngle180), S_OK);
    EXPECT_EQ(fnRotate(pSource.get(), pSame.get(), keQxRotationAngle270), QX_E_INVALID_GEOMETRY);  // too small
    EXPECT_EQ(fnRotate(pSource.get(), pTurned.get(), keQxRotationAngleNone), QX_E_INVALID_OPERATION);
    EXPECT_EQ(fnRotate(nullptr, pTurned.get(), keQxRotationAngle90), QX_E_INVALID_POINTER);

    auto pV210 = Allocate(Describe(keQxSurfaceFormatV210, 10, 64, 32));
    EXPECT_EQ(fnRotate(pV210.get(), pTurned.get(), keQxRotationAngle90), QX_E_CONVERSION_NOT_ALLOWED);
    auto pOddHeight = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 31));
    EXPECT_EQ(fnRotate(pOddHeight.get(), pTurned.get(), keQxRotationAngle90), QX_E_INVALID_GEOMETRY);

    // Odd pitches: the kernels step rows by the pitch rounded to even.
    CGuardedSurface oOddPitch(Describe(keQxSurfaceFormatYUYV422, 8, 64, 32), 129);
    EXPECT_EQ(fnRotate(oOddPitch.Get(), pTurned.get(), keQxRotationAngle90), QX_E_INVALID_GEOMETRY);

    // The first quarter turn (64 wide) fixes strips of 16 columns for good;
    // 256 of them are as many as the rotator has records for.
    ASSERT_EQ(ms_pService->validateAndInitializeRotateParams(pSource.get(), pTurned.get(), keQxRotationAngle90), S_OK);
    EXPECT_EQ(ms_pService->MainThreadCaller(keQxfBufferCopyServiceMainThreadRotate), S_OK);
    ms_pService->UnlockSurfaces();
    EXPECT_EQ(ms_pService->GetRotator()->getRotateSliceSize(), 16u);
    auto pWidest = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 4096, 2));
    auto pWidestTurned = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 2, 4096));
    EXPECT_EQ(fnRotate(pWidest.get(), pWidestTurned.get(), keQxRotationAngle90), S_OK);
    auto pWide = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 4112, 2));
    auto pWideTurned = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 2, 4112));
    EXPECT_EQ(fnRotate(pWide.get(), pWideTurned.get(), keQxRotationAngle90), QX_E_INVALID_GEOMETRY);
}

}  // namespace
