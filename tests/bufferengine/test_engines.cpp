// The two engines end to end on host surfaces: plain copies, field weave,
// rotation, combine and extract, clears, every refusal with nothing written
// and nothing left locked, content signals, and the engines' own rules.
#include <qxbase/qxclassfactory.h>
#include <qxbase/qxcengines.h>
#include <qxbase/qxerrors.h>
#include <qxbase/qxflexenginehelper.h>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>

#include "bufferengine/enginekit.h"
#include "bufferengine/turnmodel.h"

namespace {

using namespace NQxEngineKit;

// Runs a copy through either engine.
HRESULT Copy(IUnknown* in_pEngine, CQxcHostSurface* in_pSource, SQxRect in_sSource, CQxcHostSurface* in_pDestination,
             SQxRect in_sDestination)
{
    IQxcBufferEngine* pAsync = nullptr;
    if (SUCCEEDED(in_pEngine->QueryInterface(IID_IQxcBufferEngine, reinterpret_cast<void**>(&pAsync)))) {
        const HRESULT hr =
            pAsync->CopySurface(in_pSource, &in_sSource, in_pDestination, &in_sDestination, keQxFilterModeNearest);
        pAsync->Release();
        return hr;
    }
    IQxSyncBufferEngine* pSync = nullptr;
    EXPECT_EQ(in_pEngine->QueryInterface(IID_IQxSyncBufferEngine, reinterpret_cast<void**>(&pSync)), S_OK);
    const HRESULT hr =
        pSync->SyncCopySurface(in_pSource, &in_sSource, in_pDestination, &in_sDestination, keQxFilterModeNearest);
    pSync->Release();
    return hr;
}

// Zeroes the fields of the pixels at and past in_uiWidth in the last v210
// group of a line: each pixel's luma, and the chroma pair of a pair that
// starts there.
void ClearV210PixelsBeyond(unsigned char* io_pucLine, uint32_t in_uiWidth)
{
    static const int s_aiLuma[6][2] = {{0, 1}, {1, 0}, {1, 2}, {2, 1}, {3, 0}, {3, 2}};  // word, field
    static const int s_aiChroma[3][2][2] = {{{0, 0}, {0, 2}}, {{1, 1}, {2, 0}}, {{2, 2}, {3, 1}}};
    uint32_t auiWords[4];
    unsigned char* pucGroup = io_pucLine + (in_uiWidth / 6) * 16;
    if (in_uiWidth % 6 == 0) return;
    std::memcpy(auiWords, pucGroup, 16);
    auto fnClear = [&](const int* in_piAt) { auiWords[in_piAt[0]] &= ~(0x3FFu << (10 * in_piAt[1])); };
    for (uint32_t p = in_uiWidth % 6; p < 6; ++p) {
        fnClear(s_aiLuma[p]);
        if (p % 2 == 0) {
            fnClear(s_aiChroma[p / 2][0]);
            fnClear(s_aiChroma[p / 2][1]);
        }
    }
    std::memcpy(pucGroup, auiWords, 16);
}

class Engines : public testing::Test {
protected:
    void SetUp() override
    {
        m_i32Objects = g_i32Objects;
        m_pAsync = MakeEngine();
        m_pSync = MakeSyncEngine();
        ASSERT_TRUE(m_pAsync && m_pSync);
    }
    void TearDown() override
    {
        m_pAsync.reset();
        m_pSync.reset();
        EXPECT_EQ(g_i32Objects, m_i32Objects) << "an object of the test leaked";
    }
    IUnknown* Both(int i) const { return i == 0 ? static_cast<IUnknown*>(m_pAsync.get()) : m_pSync.get(); }

    int32_t m_i32Objects = 0;
    TOwned<IQxcBufferEngine> m_pAsync;
    TOwned<IQxSyncBufferEngine> m_pSync;
};

TEST_F(Engines, FactoriesAndEnginesAnswerTheirInterfacesOnly)
{
    HRESULT hr = E_FAIL;
    CQxUnknown* pUnknown = CQxcBufferEngineFactory::CreateInstance(nullptr, &hr);
    ASSERT_EQ(hr, S_OK);
    pUnknown->NonDelegatingAddRef();
    void* p = nullptr;
    EXPECT_EQ(pUnknown->NonDelegatingQueryInterface(IID_IQxcBufferEngine, &p), E_NOINTERFACE);
    EXPECT_EQ(pUnknown->NonDelegatingQueryInterface(IID_IQxcBufferEngineFactory, &p), S_OK);
    static_cast<IUnknown*>(p)->Release();
    pUnknown->NonDelegatingRelease();

    EXPECT_EQ(m_pAsync->QueryInterface(IID_IQxcBufferEngine, &p), S_OK);
    static_cast<IUnknown*>(p)->Release();
    EXPECT_EQ(m_pAsync->QueryInterface(IID_IQxSyncBufferEngine, &p), E_NOINTERFACE);
    EXPECT_EQ(m_pSync->QueryInterface(IID_IQxSyncBufferEngine, &p), S_OK);
    static_cast<IUnknown*>(p)->Release();
    EXPECT_EQ(m_pSync->QueryInterface(IID_IQxcBufferEngine, &p), E_NOINTERFACE);
    EXPECT_EQ(m_pAsync->SetConversionOptions(nullptr), S_OK);
    EXPECT_EQ(m_pSync->SetSyncConversionOptions(nullptr), S_OK);

    // The factories' registration hook lets the library's two classes be
    // registered and unregistered, and stops anything else.
    const PFNQxRegisterRoutine apfnHooks[] = {CQxcBufferEngineFactory::Register,
                                              CQxcSyncBufferEngineFactory::Register};
    for (PFNQxRegisterRoutine pfnRegister : apfnHooks)
        for (bool bRegistering : {true, false}) {
            EXPECT_EQ(pfnRegister(bRegistering, &CLSID_QxcBufferEngine), S_OK);
            EXPECT_EQ(pfnRegister(bRegistering, &CLSID_QxcSyncBufferEngine), S_OK);
            EXPECT_EQ(pfnRegister(bRegistering, &IID_IQxcBufferEngineFactory), CLASS_E_NOAGGREGATION);
            EXPECT_EQ(pfnRegister(bRegistering, nullptr), E_POINTER);
        }
}

TEST_F(Engines, PlainCopiesMoveTheRectangleBytesAndSignalTheContents)
{
    std::mt19937 oRandom = SeededRandom("Engines.PlainCopies");
    for (int e = 0; e < 2; ++e) {
        SCOPED_TRACE(e == 0 ? "asynchronous" : "synchronous");
        // Same-size pictures with different paddings, a rectangle inside.
        CGuardedSurface oSource(Describe(keQxSurfaceFormatYUYV422, 8, 1920, 1080), 4096);
        CGuardedSurface oDestination(Describe(keQxSurfaceFormatYUYV422, 8, 1920, 1080), 3856, 16);
        oSource.Memory().FillRandom(oRandom);
        const std::vector<unsigned char> vBefore = oDestination.Memory().Bytes();
        SQxFrameInformation sInformation{};
        sInformation.ui64FrameNumber = 1234;
        oSource->SetFrameInformation(&sInformation);
        const SQxRect sSource{64, 100, 64 + 640, 100 + 360}, sDestination{1200, 700, 1200 + 640, 700 + 360};
        ASSERT_EQ(Copy(Both(e), oSource.Get(), sSource, oDestination.Get(), sDestination), S_OK);
        for (int y = 0; y < 1080; ++y)
            for (int x = 0; x < 3856; x += 1) {
                const size_t i = size_t(y) * 3856 + x;
                const bool bInside = y >= 700 && y < 1060 && x >= 2400 && x < 2400 + 1280;
                const unsigned char ucExpected =
                    bInside ? oSource.Memory()[size_t(y - 600) * 4096 + (x - 2400 + 128)] : vBefore[i];
                ASSERT_EQ(oDestination.Memory()[i], ucExpected) << "line " << y << " byte " << x;
            }
        EXPECT_TRUE(oDestination.Memory().GuardsIntact());
        EXPECT_EQ(oSource->GetLockCount(), 0);
        EXPECT_EQ(oDestination->GetLockCount(), 0);
        SQxFrameInformation sOut{};
        oDestination->GetFrameInformation(&sOut);
        // Only the asynchronous engine passes the frame's information on and
        // signals the contents.
        EXPECT_EQ(sOut.ui64FrameNumber, e == 0 ? 1234u : 0u);
        const uint32_t uiSignals = e == 0 ? 1 : 0;
        EXPECT_EQ(oSource->GetContent()->GetSignalCount(keQxcContentSignalRead), uiSignals);
        EXPECT_EQ(oDestination->GetContent()->GetSignalCount(keQxcContentSignalWrite), uiSignals);
        EXPECT_EQ(oDestination->GetContent()->GetSignalCount(keQxcContentSignalCompletion), uiSignals);
        EXPECT_EQ(oDestination->GetContent()->GetSignalCount(keQxcContentSignalError), 0u);
    }
}

TEST_F(Engines, SameTypeV210KeepsTheLastPartialGroupAndSixteenBitRgbMovesEightBytesAPixel)
{
    std::mt19937 oRandom = SeededRandom("Engines.PartialGroups");
    for (int e = 0; e < 2; ++e) {
        // 1000 pixels: 166 groups and 4 pixels of a 167th.
        CGuardedSurface oSource(Describe(keQxSurfaceFormatV210, 10, 1000, 4));
        CGuardedSurface oDestination(Describe(keQxSurfaceFormatV210, 10, 1000, 4), 0, 0, 0);
        FillRandomPixels(oSource.Get(), oRandom);
        ASSERT_EQ(Copy(Both(e), oSource.Get(), Whole(oSource.Get()), oDestination.Get(), Whole(oDestination.Get())), S_OK);
        for (int y = 0; y < 4; ++y)
            EXPECT_EQ(0, std::memcmp(oSource.Memory().Data() + y * oSource.Pitch(),
                                     oDestination.Memory().Data() + y * oDestination.Pitch(), 167 * 16));
        EXPECT_TRUE(oDestination.Memory().GuardsIntact());

        // Starts of different v210 phases (pixel 16 lies in the group of
        // pixel 12): the run is cut to what the destination's lines hold.
        CGuardedSurface oOffset(Describe(keQxSurfaceFormatV210, 10, 200, 4));
        CGuardedSurface oTight(Describe(keQxSurfaceFormatV210, 10, 100, 4), 272, 0, 0);
        FillRandomPixels(oOffset.Get(), oRandom);
        const SQxRect sFrom{16, 0, 116, 4}, sTo{0, 0, 100, 4};
        ASSERT_EQ(Copy(Both(e), oOffset.Get(), sFrom, oTight.Get(), sTo), S_OK);
        for (int y = 0; y < 4; ++y)
            EXPECT_EQ(0, std::memcmp(oOffset.Memory().Data() + y * oOffset.Pitch() + 32,
                                     oTight.Memory().Data() + y * 272, 272));
        EXPECT_TRUE(oTight.Memory().GuardsIntact());

        CGuardedSurface oWide(Describe(keQxSurfaceFormatABGR16, 16, 64, 4));
        CGuardedSurface oWideOut(Describe(keQxSurfaceFormatABGR16, 16, 64, 4), 0, 0, 0);
        oWide.Memory().FillRandom(oRandom);
        const SQxRect sRight{32, 1, 64, 3};
        ASSERT_EQ(Copy(Both(e), oWide.Get(), sRight, oWideOut.Get(), sRight), S_OK);
        for (int y = 0; y < 4; ++y)
            for (int x = 0; x < 64 * 8; ++x) {
                const size_t i = size_t(y) * 512 + x;
                ASSERT_EQ(oWideOut.Memory()[i], (y >= 1 && y < 3 && x >= 256) ? oWide.Memory()[i] : 0) << y << "," << x;
            }
    }
}

TEST_F(Engines, FieldWeaveWritesEveryFrameLineOnceFromItsField)
{
    std::mt19937 oRandom = SeededRandom("Engines.Weave");
    for (int e = 0; e < 2; ++e) {
        for (uint32_t uiHeight : {16u, 1080u, 10u}) {
            SCOPED_TRACE(testing::Message() << (e ? "sync " : "async ") << uiHeight << " lines");
            CGuardedSurface oStored(Describe(keQxSurfaceFormatYUYV422, 8, 64, uiHeight, keQxPolarityBackToBack));
            CGuardedSurface oFrame(Describe(keQxSurfaceFormatYUYV422, 8, 64, uiHeight, keQxPolarityInterlaced));
            oStored.Memory().FillRandom(oRandom);
            ASSERT_EQ(Copy(Both(e), oStored.Get(), Whole(oStored.Get()), oFrame.Get(), Whole(oFrame.Get())), S_OK);
            for (uint32_t y = 0; y < uiHeight; ++y) {
                const uint32_t uiStoredLine = (y % 2 == 0 ? 0 : uiHeight / 2) + y / 2;
                ASSERT_EQ(0, std::memcmp(oFrame.Memory().Data() + y * 128, oStored.Memory().Data() + uiStoredLine * 128,
                                         128))
                    << "frame line " << y;
            }
            EXPECT_TRUE(oFrame.Memory().GuardsIntact());
        }
    }
}

TEST_F(Engines, RotationsMatchThePixelModel)
{
    std::mt19937 oRandom = SeededRandom("Engines.Rotations");
    for (const uint32_t uiWidth : {64u, 1920u}) {
        const uint32_t uiHeight = uiWidth == 64 ? 36 : 1080;
        CGuardedSurface oSource(Describe(keQxSurfaceFormatYUYV422, 8, uiWidth, uiHeight));
        oSource.Memory().FillRandom(oRandom);
        for (EQxRotationAngle eAngle : {keQxRotationAngle90, keQxRotationAngle180, keQxRotationAngle270}) {
            SCOPED_TRACE(testing::Message() << uiWidth << " wide, angle " << eAngle);
            const bool bQuarter = eAngle != keQxRotationAngle180;
            CGuardedSurface oTurned(Describe(keQxSurfaceFormatYUYV422, 8, bQuarter ? uiHeight : uiWidth,
                                             bQuarter ? uiWidth : uiHeight),
                                    bQuarter ? int32_t(2 * uiHeight + 64) : oSource.Pitch());
            ASSERT_EQ(m_pAsync->RotateSurface(oSource.Get(), oTurned.Get(), eAngle), S_OK);
            const unsigned int uiDegrees = eAngle == keQxRotationAngle90 ? 90 : eAngle == keQxRotationAngle180 ? 180 : 270;
            ExpectTurned({oSource.Memory().Data(), uint32_t(oSource.Pitch())},
                         {oTurned.Memory().Data(), uint32_t(oTurned.Pitch())}, uiWidth, uiHeight, uiDegrees);
            if (bQuarter)
                for (uint32_t x = 2 * uiHeight; x < uint32_t(oTurned.Pitch()); ++x)
                    ASSERT_EQ(oTurned.Memory()[x], 0x10) << "padding";
            EXPECT_TRUE(oTurned.Memory().GuardsIntact());
            EXPECT_EQ(oTurned->GetLockCount(), 0);
            EXPECT_EQ(oTurned->GetContent()->GetSignalCount(keQxcContentSignalCompletion), 1u);
        }
    }
}

TEST_F(Engines, CombineThenExtractGivesBackFillAndKey)
{
    std::mt19937 oRandom = SeededRandom("Engines.CombineExtract");
    struct SCase {
        EQxSurfaceFormat eFill;
        uint32_t uiBits;
        uint32_t uiWidth, uiHeight;
    };
    for (const SCase& c : {SCase{keQxSurfaceFormatYUYV422, 8, 1920, 1080}, SCase{keQxSurfaceFormatYUYV422, 8, 100, 37},
                           SCase{keQxSurfaceFormatV210, 10, 1920, 1080}, SCase{keQxSurfaceFormatV210, 10, 100, 37}}) {
        SCOPED_TRACE(testing::Message() << "format " << c.eFill << " " << c.uiWidth << "x" << c.uiHeight);
        CGuardedSurface oFill(Describe(c.eFill, c.uiBits, c.uiWidth, c.uiHeight));
        CGuardedSurface oKey(Describe(c.eFill, c.uiBits, c.uiWidth, c.uiHeight));
        CGuardedSurface oCombined(Describe(keQxSurfaceFormatYUAYVA4224, c.uiBits, c.uiWidth, c.uiHeight));
        CGuardedSurface oFillOut(Describe(c.eFill, c.uiBits, c.uiWidth, c.uiHeight), 0, 0, 0);
        CGuardedSurface oKeyOut(Describe(c.eFill, c.uiBits, c.uiWidth, c.uiHeight), 0, 0, 0);
        FillRandomPixels(oFill.Get(), oRandom);
        FillRandomPixels(oKey.Get(), oRandom);
        // Pixels past the width in a v210 line's last group are not part of
        // the picture and do not survive the trip: make them zero, as the
        // extract writes them.
        if (c.eFill == keQxSurfaceFormatV210)
            for (uint32_t y = 0; y < c.uiHeight; ++y)
                ClearV210PixelsBeyond(oFill.Memory().Data() + y * oFill.Pitch(), c.uiWidth);
        ASSERT_EQ(m_pAsync->CombineVideoAndKeySurfaces(oFill.Get(), oKey.Get(), oCombined.Get(), false), S_OK);
        ASSERT_EQ(m_pAsync->ExtractVideoAndKeySurfaces(oCombined.Get(), oFillOut.Get(), oKeyOut.Get()), S_OK);
        const uint32_t uiLineBytes = CQxcHostSurface::GetLineBytes(c.eFill, c.uiBits, c.uiWidth);
        for (uint32_t y = 0; y < c.uiHeight; ++y) {
            const unsigned char* pucFill = oFill.Memory().Data() + y * oFill.Pitch();
            ASSERT_EQ(0, std::memcmp(oFillOut.Memory().Data() + y * oFillOut.Pitch(), pucFill, uiLineBytes))
                << "line " << y;
        }
        if (c.uiBits == 8)  // the grey key: luma kept, chroma 128
            for (uint32_t y = 0; y < c.uiHeight; ++y)
                for (uint32_t x = 0; x < 2 * c.uiWidth; ++x)
                    ASSERT_EQ(oKeyOut.Memory()[y * oKeyOut.Pitch() + x],
                              x % 2 ? 0x80 : oKey.Memory()[y * oKey.Pitch() + x]);
        for (CGuardedSurface* p : {&oCombined, &oFillOut, &oKeyOut}) {
            EXPECT_TRUE(p->Memory().GuardsIntact());
            EXPECT_EQ((*p)->GetLockCount(), 0);
        }
        EXPECT_EQ(oFill->GetContent()->GetSignalCount(keQxcContentSignalRead), 1u);
        EXPECT_EQ(oKey->GetContent()->GetSignalCount(keQxcContentSignalRead), 1u);
        EXPECT_EQ(oKeyOut->GetContent()->GetSignalCount(keQxcContentSignalWrite), 1u);
    }
}

TEST_F(Engines, ClearsFillEveryLineWithTheHostColour)
{
    for (int e = 0; e < 2; ++e) {
        auto fnClear = [&](CQxcHostSurface* in_pSurface, EQxColor in_eColor, float in_fAlpha) {
            return e == 0 ? m_pAsync->ClearSurface(in_pSurface, in_eColor, in_fAlpha)
                          : m_pSync->SyncClearSurface(in_pSurface, in_eColor, in_fAlpha);
        };
        struct SCase {
            EQxSurfaceFormat eFormat;
            uint32_t uiBits;
            EQxColor eColor;
            std::vector<unsigned char> vFirstBytes;  // of every line
        };
        const uint32_t uiV210Red[2] = {364u | 324u << 10 | 960u << 20, 324u | 364u << 10 | 324u << 20};
        std::vector<unsigned char> vV210(8);
        std::memcpy(vV210.data(), uiV210Red, 8);
        const uint32_t uiYuva10Red[2] = {324u << 20 | 364u << 10 | 511u, 324u << 20 | 960u << 10 | 511u};
        std::vector<unsigned char> vYuva10(8);
        std::memcpy(vYuva10.data(), uiYuva10Red, 8);
        const SCase asCases[] = {
            {keQxSurfaceFormatYUYV422, 8, keQxColorBlack, {16, 128, 16, 128}},
            {keQxSurfaceFormatYUYV422, 8, keQxColorRed, {81, 91, 81, 240}},
            {keQxSurfaceFormat2VUY, 8, keQxColorRed, {91, 81, 240, 81}},
            {keQxSurfaceFormatV210, 10, keQxColorRed, vV210},
            {keQxSurfaceFormatYUAYVA4224, 10, keQxColorRed, vYuva10},
            {keQxSurfaceFormatYUAYVA4224, 8, keQxColorWhite, {235, 128, 235, 128}},
            {keQxSurfaceFormatAlpha, 8, keQxColorWhite, {127, 127, 127}},
            {keQxSurfaceFormatYUYV422, 10, keQxColorGreen, {}},
            {keQxSurfaceFormatAYUV4444, 8, keQxColorBlue, {}},
            {keQxSurfaceFormatAlphaLuminance, 8, keQxColorWhite, {127, 235, 127, 235}},
            // RGB: the colour table's graphics or video levels, bytes B G R A.
            {keQxSurfaceFormatARGBGraphic, 8, keQxColorRed, {0, 0, 255, 127, 0, 0, 255, 127}},
            {keQxSurfaceFormatARGBVideo, 8, keQxColorRed, {16, 16, 235, 127}},
            {keQxSurfaceFormatBGRAGraphic, 8, keQxColorRed, {127, 255, 0, 0}},
            {keQxSurfaceFormatRGBGraphic, 8, keQxColorBlue, {255, 0, 0, 255, 0, 0}},
            {keQxSurfaceFormatRGBGraphic, 12, keQxColorWhite, {}},
            {keQxSurfaceFormatA2R10G10B10Video, 10, keQxColorGreen, {}},
            {keQxSurfaceFormatA2B10G10R10Graphic, 10, keQxColorGreen, {}},
            {keQxSurfaceFormatABGR16, 16, keQxColorWhite, {}},
        };
        for (const SCase& c : asCases) {
            SCOPED_TRACE(testing::Message() << (e ? "sync" : "async") << " format " << c.eFormat << " bits "
                                            << c.uiBits << " colour " << c.eColor);
            // 1000 pixels: the last 16-pixel block is partial.
            CGuardedSurface oSurface(Describe(c.eFormat, c.uiBits, 1000, 35));
            const uint32_t uiLine = CQxcHostSurface::GetLineBytes(c.eFormat, c.uiBits, 1000);
            ASSERT_EQ(fnClear(oSurface.Get(), c.eColor, 0.5f), S_OK);
            const unsigned char* pucFirst = oSurface.Memory().Data();
            for (size_t i = 0; i < c.vFirstBytes.size(); ++i) EXPECT_EQ(pucFirst[i], c.vFirstBytes[i]) << "byte " << i;
            for (uint32_t y = 0; y < 35; ++y) {
                const unsigned char* pucLine = pucFirst + y * oSurface.Pitch();
                ASSERT_EQ(0, std::memcmp(pucLine, pucFirst, uiLine)) << "line " << y;
                for (uint32_t x = uiLine; x < uint32_t(oSurface.Pitch()); ++x) ASSERT_EQ(pucLine[x], 0xEE) << "padding";
            }
            EXPECT_TRUE(oSurface.Memory().GuardsIntact());
            EXPECT_EQ(oSurface->GetLockCount(), 0);
            EXPECT_EQ(oSurface->GetContent()->GetSignalCount(keQxcContentSignalWrite), e == 0 ? 1u : 0u);
        }
        // Ancillary data is cleared to the default header, once per stored
        // field.
        SQxSurfaceDescription sData = Describe(keQxSurfaceFormatQueltoAncillaryData, 8, 0, 0, keQxPolarityBackToBack);
        sData.ulBufferSize = 4096;
        CGuardedSurface oData(sData);
        ASSERT_EQ(fnClear(oData.Get(), keQxColorBlack, 1.0f), S_OK);
        std::vector<unsigned char> vExpected(4096, 0);
        NQxfFlexEngineHelper::InsertDefaultQadHeader(vExpected.data(), 4096, keQxPolarityBackToBack);
        EXPECT_EQ(oData.Memory().Bytes(), vExpected);
        EXPECT_EQ(oData.Memory()[2049], 0x01);
        // Refusals: a colour or alpha out of range, a surface without a fill.
        EXPECT_EQ(fnClear(oData.Get(), keQxColorInvalid, 1.0f), E_INVALIDARG);
        CGuardedSurface oRgba(Describe(keQxSurfaceFormatARGBGraphic, 8, 16, 2));
        EXPECT_EQ(fnClear(oRgba.Get(), keQxColorBlack, 1.5f), E_INVALIDARG);
        SQxSurfaceDescription sVideo = sData;
        sVideo.eSurfaceFormat = keQxSurfaceFormatH264;
        CGuardedSurface oCompressed(sVideo);
        EXPECT_EQ(fnClear(oCompressed.Get(), keQxColorBlack, 1.0f), QX_E_INVALID_OPERATION);
        EXPECT_EQ(oCompressed.Memory().Bytes(), std::vector<unsigned char>(4096, 0xEE));
    }
}

// Requests every engine must refuse, with the code it must refuse them with,
// writing nothing and leaving nothing locked.
TEST_F(Engines, BadRequestsAreRefusedWithNothingWrittenAndNothingLocked)
{
    auto pYuyv = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16));
    auto pYuyvTall = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 32));
    auto pV210 = Allocate(Describe(keQxSurfaceFormatV210, 10, 64, 16));
    auto pUnknown =
        Allocate(Describe(keQxSurfaceFormatV210, 10, 64, 16, keQxPolarityProgressive, keQxColorimetryUnknown));
    auto pStored = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16, keQxPolarityBackToBack));
    auto pWide = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 8200, 2));
    auto pWideV210 = Allocate(Describe(keQxSurfaceFormatV210, 10, 8200, 2));
    auto pYuva = Allocate(Describe(keQxSurfaceFormatYUAYVA4224, 8, 64, 16));
    auto pRgba1919 = Allocate(Describe(keQxSurfaceFormatARGBGraphic, 8, 1919, 2));
    auto pYuyv1919 = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 1919, 2));
    SQxSurfaceDescription sData = Describe(keQxSurfaceFormatQueltoAncillaryData, 8, 0, 0);
    sData.ulBufferSize = 4096;
    auto pAncillary = Allocate(sData);
    sData.eSurfaceFormat = keQxSurfaceFormatDV25Field1;
    auto pCompressed = Allocate(sData);
    struct SCase {
        const char* pszWhat;
        CQxcHostSurface* pSource;
        SQxRect sSource;
        bool bNullSourceRect;
        CQxcHostSurface* pDestination;
        SQxRect sDestination;
        HRESULT hrExpected;
    };
    const SQxRect sAll{0, 0, 64, 16};
    const SCase asCases[] = {
        {"inverted", pYuyv.get(), {40, 0, 20, 16}, false, pV210.get(), sAll, QX_E_INVALID_GEOMETRY},
        {"out of bounds", pYuyv.get(), {0, 0, 64, 17}, false, pV210.get(), {0, 0, 64, 17}, QX_E_INVALID_GEOMETRY},
        {"null rectangle", pYuyv.get(), sAll, true, pV210.get(), sAll, QX_E_INVALID_POINTER},
        {"unsupported pair", pV210.get(), sAll, false, pYuva.get(), sAll, QX_E_CONVERSION_NOT_ALLOWED},
        {"colorimetries", pUnknown.get(), sAll, false, pYuyv.get(), sAll, QX_E_COLORIMETRY_MISMATCH},
        {"odd weave", pStored.get(), {0, 0, 64, 15}, false, pYuyvTall.get(), {0, 0, 64, 15}, QX_E_INVALID_OPERATION},
        {"too wide", pWide.get(), {0, 0, 8200, 2}, false, pWideV210.get(), {0, 0, 8200, 2}, QX_E_INVALID_GEOMETRY},
        {"sizes", pYuyv.get(), sAll, false, pYuyvTall.get(), {0, 0, 64, 32}, QX_E_INVALID_GEOMETRY},
        {"width", pRgba1919.get(), {0, 0, 1919, 2}, false, pYuyv1919.get(), {0, 0, 1919, 2}, QX_E_INVALID_WIDTH},
        {"opaque formats", pAncillary.get(), {}, false, pCompressed.get(), {}, QX_E_INCOMPATIBLE_OPAQUE_FORMATS},
    };
    std::mt19937 oRandom = SeededRandom("Engines.BadRequests");
    for (int e = 0; e < 2; ++e)
        for (const SCase& c : asCases) {
            SCOPED_TRACE(testing::Message() << (e ? "sync: " : "async: ") << c.pszWhat);
            FillRandomPixels(c.pDestination, oRandom);
            const std::vector<unsigned char> vBefore(c.pDestination->GetBuffer(),
                                                     c.pDestination->GetBuffer() + c.pDestination->GetBufferSize());
            c.pDestination->GetContent()->Reset();
            SQxRect sSource = c.sSource, sDestination = c.sDestination;
            HRESULT hr;
            if (e == 0)
                hr = m_pAsync->CopySurface(c.pSource, c.bNullSourceRect ? nullptr : &sSource, c.pDestination,
                                           &sDestination, keQxFilterModeNearest);
            else
                hr = m_pSync->SyncCopySurface(c.pSource, c.bNullSourceRect ? nullptr : &sSource, c.pDestination,
                                              &sDestination, keQxFilterModeNearest);
            EXPECT_EQ(hr, c.hrExpected);
            EXPECT_EQ(c.pSource->GetLockCount(), 0);
            EXPECT_EQ(c.pDestination->GetLockCount(), 0);
            EXPECT_TRUE(std::equal(vBefore.begin(), vBefore.end(), c.pDestination->GetBuffer()));
            if (e == 0) {
                // The asynchronous engine tells the destination's waiters.
                HRESULT hrContent = S_OK;
                c.pDestination->GetContent()->GetErrorCode(&hrContent);
                EXPECT_EQ(hrContent, c.hrExpected);
                EXPECT_EQ(c.pDestination->GetContent()->GetSignalCount(keQxcContentSignalCompletion), 1u);
            }
        }
    // Null surfaces: the asynchronous engine refuses and stays usable.
    SQxRect s = sAll;
    EXPECT_EQ(m_pAsync->CopySurface(nullptr, &s, pYuyv.get(), &s, keQxFilterModeNearest), QX_E_INVALID_POINTER);
    EXPECT_EQ(m_pAsync->ClearSurface(nullptr, keQxColorBlack, 1.0f), QX_E_INVALID_POINTER);
    EXPECT_EQ(m_pAsync->CombineVideoAndKeySurfaces(pYuyv.get(), nullptr, pYuva.get(), false), QX_E_INVALID_POINTER);
    EXPECT_EQ(m_pAsync->ExtractVideoAndKeySurfaces(pYuva.get(), pYuyv.get(), nullptr), QX_E_INVALID_POINTER);
    EXPECT_EQ(m_pAsync->RotateSurface(pYuyv.get(), nullptr, keQxRotationAngle90), QX_E_INVALID_POINTER);
    EXPECT_EQ(m_pAsync->CopySurface(pYuyv.get(), &s, pYuyv.get(), &s, keQxFilterModeNearest), S_OK);
    // Combine and extract refuse what their kernels do not take.
    EXPECT_EQ(m_pAsync->CombineVideoAndKeySurfaces(pV210.get(), pV210.get(), pYuva.get(), false),
              QX_E_CONVERSION_NOT_ALLOWED);
    EXPECT_EQ(m_pAsync->CombineVideoAndKeySurfaces(pYuyv.get(), pYuyvTall.get(), pYuva.get(), false),
              QX_E_INVALID_GEOMETRY);
    EXPECT_EQ(m_pAsync->ExtractVideoAndKeySurfaces(pYuyv.get(), pYuyv.get(), pYuyv.get()), QX_E_CONVERSION_NOT_ALLOWED);
    for (CQxcHostSurface* p : {pYuyv.get(), pYuyvTall.get(), pV210.get(), pYuva.get()}) EXPECT_EQ(p->GetLockCount(), 0);
}

TEST_F(Engines, SynchronousEngineRefusesEverythingAfterANullSurface)
{
    auto pSource = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16));
    auto pDestination = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16));
    SQxRect s = Whole(pSource.get());
    EXPECT_EQ(m_pSync->SyncCopySurface(pSource.get(), &s, pDestination.get(), &s, keQxFilterModeNearest), S_OK);
    EXPECT_EQ(m_pSync->SyncCopySurface(pSource.get(), &s, nullptr, &s, keQxFilterModeNearest), QX_E_INVALID_POINTER);
    EXPECT_EQ(m_pSync->SyncCopySurface(pSource.get(), &s, pDestination.get(), &s, keQxFilterModeNearest),
              QX_E_OPERATION_REFUSED);
    EXPECT_EQ(m_pSync->SyncClearSurface(pDestination.get(), keQxColorBlack, 1.0f), QX_E_OPERATION_REFUSED);
    EXPECT_EQ(pSource->GetLockCount(), 0);
    EXPECT_EQ(pDestination->GetLockCount(), 0);
}

// A surface over a host surface that runs OnLock() before each lock.
class CForwardingSurface : public CQxLightUnknown, public IQxSurface {
public:
    CForwardingSurface(const wchar_t* in_pszName, CQxcHostSurface* in_pInner)
        : CQxLightUnknown(in_pszName, nullptr), m_pInner(in_pInner)
    {
    }
    QX_DECLARE_IUNKNOWN
    HRESULT GetSurfaceDescription(SQxSurfaceDescription* p) override { return m_pInner->GetSurfaceDescription(p); }
    HRESULT GetAVContent(IQxAVContent** p) override { return m_pInner->GetAVContent(p); }
    HRESULT LockBuffer(EQxBufferAccess a, void** b, int32_t* p, uint32_t* s) override
    {
        OnLock();
        return m_pInner->LockBuffer(a, b, p, s);
    }
    HRESULT UnlockBuffer() override { return m_pInner->UnlockBuffer(); }
    HRESULT GetFrameInformation(SQxFrameInformation* p) override { return m_pInner->GetFrameInformation(p); }
    HRESULT SetFrameInformation(const SQxFrameInformation* p) override { return m_pInner->SetFrameInformation(p); }

protected:
    virtual void OnLock() = 0;
    CQxcHostSurface* m_pInner;
};

// On its first lock, runs a call of the test first: a call nested in the
// engine's operation on the same thread.
class CReenteringSurface : public CForwardingSurface {
public:
    CReenteringSurface(CQxcHostSurface* in_pInner, std::function<void()> in_fnOnLock)
        : CForwardingSurface(L"reentering", in_pInner), m_fnOnLock(std::move(in_fnOnLock))
    {
    }

private:
    void OnLock() override
    {
        if (std::function<void()> fn = std::move(m_fnOnLock)) {
            m_fnOnLock = nullptr;
            fn();
        }
    }
    std::function<void()> m_fnOnLock;
};

TEST_F(Engines, SynchronousEngineRefusesACallNestedInItsOwnOperation)
{
    std::mt19937 oRandom = SeededRandom("Engines.Nested");
    auto pSource = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16));
    auto pDestination = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16));
    auto pOther = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 16));
    FillRandomPixels(pSource.get(), oRandom);
    FillRandomPixels(pOther.get(), oRandom);
    const std::vector<unsigned char> vOther(pOther->GetBuffer(), pOther->GetBuffer() + pOther->GetBufferSize());
    SQxRect s = Whole(pSource.get());
    HRESULT hrNestedCopy = S_OK, hrNestedClear = S_OK;
    CReenteringSurface* pReentering = new CReenteringSurface(pSource.get(), [&] {
        SQxRect r = s;
        hrNestedCopy = m_pSync->SyncCopySurface(pOther.get(), &r, pDestination.get(), &r, keQxFilterModeNearest);
        hrNestedClear = m_pSync->SyncClearSurface(pOther.get(), keQxColorBlack, 1.0f);
    });
    // The outer copy runs to its end; the nested calls are refused, do
    // nothing and give their count back.
    EXPECT_EQ(m_pSync->SyncCopySurface(pReentering, &s, pDestination.get(), &s, keQxFilterModeNearest), S_OK);
    EXPECT_EQ(hrNestedCopy, QX_E_OPERATION_REFUSED);
    EXPECT_EQ(hrNestedClear, QX_E_OPERATION_REFUSED);
    EXPECT_EQ(0, std::memcmp(pSource->GetBuffer(), pDestination->GetBuffer(), pSource->GetBufferSize()));
    EXPECT_TRUE(std::equal(vOther.begin(), vOther.end(), pOther->GetBuffer()));
    for (CQxcHostSurface* p : {pSource.get(), pDestination.get(), pOther.get()}) EXPECT_EQ(p->GetLockCount(), 0);
    pReentering->NonDelegatingRelease();
    EXPECT_EQ(m_pSync->SyncClearSurface(pOther.get(), keQxColorBlack, 1.0f), S_OK);
    EXPECT_EQ(m_pSync->SyncCopySurface(pOther.get(), &s, pDestination.get(), &s, keQxFilterModeNearest), S_OK);
}

// Holds its first lock until the test lets it go, so that a second caller
// can be made to arrive while an operation is in progress.
class CHeldSurface : public CForwardingSurface {
public:
    explicit CHeldSurface(CQxcHostSurface* in_pInner) : CForwardingSurface(L"held", in_pInner) {}
    void Let()
    {
        std::lock_guard<std::mutex> oLock(m_oMutex);
        m_bReleased = true;
        m_oReleased.notify_all();
    }

private:
    void OnLock() override
    {
        m_pInner->GetContent()->SignalReadCompletion();  // "inside the lock" mark for the test
        std::unique_lock<std::mutex> oLock(m_oMutex);
        m_oReleased.wait(oLock, [this] { return m_bReleased; });
    }
    std::mutex m_oMutex;
    std::condition_variable m_oReleased;
    bool m_bReleased = false;
};

// Runs in_fnFirst on a thread and holds it inside its lock of in_pHeld
// until in_fnSecond, started on another thread, waits for its turn; then
// lets both finish.
void RunSecondBehindFirst(CQxcBufferEngine* in_pEngine, CHeldSurface* in_pHeld, CQxcHostSurface* in_pHeldInner,
                          const std::function<void()>& in_fnFirst, const std::function<void()>& in_fnSecond)
{
    std::thread oFirst(in_fnFirst);
    ASSERT_TRUE(in_pHeldInner->GetContent()->WaitForSignal(keQxcContentSignalRead, 1, 10000));
    std::thread oSecond(in_fnSecond);
    while (in_pEngine->GetOperationsInFlight() < 2) std::this_thread::yield();
    in_pHeld->Let();
    oFirst.join();
    oSecond.join();
}

TEST_F(Engines, TwoThreadsOnOneAsynchronousEngineBothCopyAndTheWaiterIsTold)
{
    std::mt19937 oRandom = SeededRandom("Engines.TwoThreads");
    auto pFirstSource = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 256, 64));
    auto pSecondSource = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 256, 64));
    auto pFirstDestination = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 256, 64));
    auto pSecondDestination = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 256, 64));
    FillRandomPixels(pFirstSource.get(), oRandom);
    FillRandomPixels(pSecondSource.get(), oRandom);
    CHeldSurface* pHeld = new CHeldSurface(pFirstSource.get());
    CQxcBufferEngine* pEngine = static_cast<CQxcBufferEngine*>(m_pAsync.get());
    SQxRect s = Whole(pFirstSource.get());
    HRESULT hrFirst = E_FAIL, hrSecond = E_FAIL;
    RunSecondBehindFirst(
        pEngine, pHeld, pFirstSource.get(),
        [&] {
            SQxRect r = s;
            hrFirst = m_pAsync->CopySurface(pHeld, &r, pFirstDestination.get(), &r, keQxFilterModeNearest);
        },
        [&] {
            SQxRect r = s;
            hrSecond =
                m_pAsync->CopySurface(pSecondSource.get(), &r, pSecondDestination.get(), &r, keQxFilterModeNearest);
        });
    // The waiter reports that it waited, and so does the copy it waited for
    // (the flag it cleared is the engine's).
    EXPECT_EQ(hrSecond, QX_E_OPERATION_REFUSED);
    EXPECT_EQ(hrFirst, QX_E_OPERATION_REFUSED);
    HRESULT hrContent = S_OK;
    pSecondDestination->GetContent()->GetErrorCode(&hrContent);
    EXPECT_EQ(hrContent, QX_E_OPERATION_REFUSED);
    EXPECT_EQ(0, std::memcmp(pFirstSource->GetBuffer(), pFirstDestination->GetBuffer(), pFirstSource->GetBufferSize()));
    EXPECT_EQ(0, std::memcmp(pSecondSource->GetBuffer(), pSecondDestination->GetBuffer(), pSecondSource->GetBufferSize()));
    EXPECT_EQ(pEngine->GetOperationsInFlight(), 0);
    pHeld->NonDelegatingRelease();
    // The engine serves the next caller normally.
    EXPECT_EQ(m_pAsync->CopySurface(pSecondSource.get(), &s, pFirstDestination.get(), &s, keQxFilterModeNearest), S_OK);
}

TEST_F(Engines, AFailedCopyStillLetsTheWaitingCallerIn)
{
    std::mt19937 oRandom = SeededRandom("Engines.FailedCopyLetsIn");
    auto pV210 = Allocate(Describe(keQxSurfaceFormatV210, 10, 96, 16));
    auto pYuva = Allocate(Describe(keQxSurfaceFormatYUAYVA4224, 8, 96, 16));  // no route from v210
    auto pSource = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 96, 16));
    auto pDestination = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 96, 16));
    FillRandomPixels(pSource.get(), oRandom);
    CHeldSurface* pHeld = new CHeldSurface(pV210.get());
    CQxcBufferEngine* pEngine = static_cast<CQxcBufferEngine*>(m_pAsync.get());
    SQxRect s = Whole(pSource.get());
    HRESULT hrFirst = S_OK, hrSecond = E_FAIL;
    RunSecondBehindFirst(
        pEngine, pHeld, pV210.get(),
        [&] {
            SQxRect r = s;
            hrFirst = m_pAsync->CopySurface(pHeld, &r, pYuva.get(), &r, keQxFilterModeNearest);
        },
        [&] {
            SQxRect r = s;
            hrSecond = m_pAsync->CopySurface(pSource.get(), &r, pDestination.get(), &r, keQxFilterModeNearest);
        });
    EXPECT_EQ(hrFirst, QX_E_CONVERSION_NOT_ALLOWED);
    EXPECT_EQ(hrSecond, QX_E_OPERATION_REFUSED);
    EXPECT_EQ(0, std::memcmp(pSource->GetBuffer(), pDestination->GetBuffer(), pSource->GetBufferSize()));
    // The failure went to both contents of the refused copy.
    for (CQxcHostSurface* p : {pV210.get(), pYuva.get()}) {
        HRESULT hrContent = S_OK;
        p->GetContent()->GetErrorCode(&hrContent);
        EXPECT_EQ(hrContent, QX_E_CONVERSION_NOT_ALLOWED);
        EXPECT_EQ(p->GetLockCount(), 0);
    }
    EXPECT_EQ(pEngine->GetOperationsInFlight(), 0);
    pHeld->NonDelegatingRelease();
}

}  // namespace

namespace {

// Several threads copying and clearing through one engine of each kind:
// every operation is done whole, results are success or (asynchronous
// engine) the report that the operation waited, and the engine ends idle.
TEST(EngineConcurrency, ThreadsSharingOneEngineEachGetTheirFramesWhole)
{
    const int32_t i32Objects = g_i32Objects;
    {
        auto pAsync = MakeEngine();
        auto pSync = MakeSyncEngine();
        constexpr int kiThreads = 4, kiRounds = 12;
        std::vector<std::thread> vThreads;
        std::atomic<int> iWrong{0};
        for (int t = 0; t < kiThreads; ++t)
            vThreads.emplace_back([&, t] {
                std::mt19937 oRandom(1000 + t);
                auto pSource = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 320, 48));
                auto pConverted = Allocate(Describe(keQxSurfaceFormatV210, 10, 320, 48));
                auto pBack = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 320, 48));
                SQxRect s = Whole(pSource.get());
                for (int r = 0; r < kiRounds; ++r) {
                    FillRandomPixels(pSource.get(), oRandom);
                    const HRESULT hrThere = (t + r) % 2 == 0
                                                ? pAsync->CopySurface(pSource.get(), &s, pConverted.get(), &s,
                                                                      keQxFilterModeNearest)
                                                : pSync->SyncCopySurface(pSource.get(), &s, pConverted.get(), &s,
                                                                         keQxFilterModeNearest);
                    const HRESULT hrBack =
                        pAsync->CopySurface(pConverted.get(), &s, pBack.get(), &s, keQxFilterModeNearest);
                    const HRESULT hrClear = pSync->SyncClearSurface(pConverted.get(), keQxColorBlack, 1.0f);
                    // 8-bit YUYV through v210 and back is lossless.
                    const bool bDone = (hrThere == S_OK || hrThere == QX_E_OPERATION_REFUSED) &&
                                       (hrBack == S_OK || hrBack == QX_E_OPERATION_REFUSED) && hrClear == S_OK &&
                                       std::memcmp(pSource->GetBuffer(), pBack->GetBuffer(), pSource->GetBufferSize()) == 0;
                    if (!bDone) ++iWrong;
                }
                if (pSource->GetLockCount() || pConverted->GetLockCount() || pBack->GetLockCount()) ++iWrong;
            });
        for (std::thread& t : vThreads) t.join();
        EXPECT_EQ(iWrong.load(), 0);
        EXPECT_EQ(static_cast<CQxcBufferEngine*>(pAsync.get())->GetOperationsInFlight(), 0);
    }
    EXPECT_EQ(g_i32Objects, i32Objects);
}

}  // namespace
