// Every allowed YUV pair of the supported-copy matrix through both engines,
// on small frames and at 1920x1080, against the composition of the
// surfaces' scalar references (source into the 16-bit intermediate line,
// intermediate into the destination, or the one direct kernel).
#include <qxbase/qxcengines.h>
#include <qxbase/qxerrors.h>

#include <gtest/gtest.h>

#include "bufferengine/enginekit.h"
#include "tests/surfaces/buffertesthelpers.h"

namespace {

using namespace NQxEngineKit;
using namespace NQxcKernels;
using namespace NQxcKernels::NBlockMatrix;
using namespace NQxcKernels::NBufferMatrix;

struct SReference {
    EQxcSurfaceType eDestination, eSource;
    PFNQxcBlockJob pfnRun;
};
#define QXT_REFERENCE(Destination, Source, Kernel) {Destination, Source, &TScalarEntry<Kernel>::Run},
const SReference kasReferences[] = {QXC_BLOCK_MATRIX(QXT_REFERENCE)};
#undef QXT_REFERENCE

PFNQxcBlockJob ReferenceOf(EQxcSurfaceType in_eDestination, EQxcSurfaceType in_eSource)
{
    for (const SReference& r : kasReferences)
        if (r.eDestination == in_eDestination && r.eSource == in_eSource) return r.pfnRun;
    return nullptr;
}

// The buffer family's references, plain chroma (mode 0).
struct SPixelReference {
    int iDestination, iSource, iMode, iRange;
    PFNQxcPixelJob pfnRun;
};
#define QXT_PIXEL_REFERENCE(Destination, Source, Mode, Range, Kernel) \
    {Destination, Source, Mode, Range, &TPixelScalarEntry<Kernel>::Run},
const SPixelReference kasPixelReferences[] = {QXC_BUFFER_MATRIX(QXT_PIXEL_REFERENCE)};
#undef QXT_PIXEL_REFERENCE

PFNQxcPixelJob PixelReferenceOf(int in_iDestination, int in_iSource)
{
    for (const SPixelReference& r : kasPixelReferences)
        if (r.iDestination == in_iDestination && r.iSource == in_iSource && r.iMode == 0) return r.pfnRun;
    return nullptr;
}

struct SFormat {
    EQxSurfaceFormat eFormat;
    uint32_t uiBits;
    bool bShaped;
    EQxcSurfaceType eType;
    EQxcColorRange eRange;
};
const EQxcColorRange Y = keQxcColorRangeYuv, G = keQxcColorRangeGraphic, V = keQxcColorRangeVideo;
const SFormat kasYuvFormats[] = {
    {keQxSurfaceFormatYUYV422, 8, false, keQxcSurfaceTypeYCbCr422_8bits, Y},
    {keQxSurfaceFormatYUAYVA4224, 8, false, keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, Y},
    {keQxSurfaceFormatYUAYVA4224, 8, true, keQxcSurfaceTypeYCbCrA4224_8bits_Shaped, Y},
    {keQxSurfaceFormatYUYV422, 10, false, keQxcSurfaceTypeYCbCr422_10bits, Y},
    {keQxSurfaceFormatYUAYVA4224, 10, false, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, Y},
    {keQxSurfaceFormatYUAYVA4224, 10, true, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped, Y},
    {keQxSurfaceFormatAYUV4444, 8, true, keQxcSurfaceTypeAYCbCr4444_8bits_Shaped, Y},
    {keQxSurfaceFormatV210, 10, false, keQxcSurfaceTypeV210_10bits, Y},
    {keQxSurfaceFormat2VUY, 8, false, keQxcSurfaceType2VUY_8bits, Y},
};
const SFormat kasRgbFormats[] = {
    {keQxSurfaceFormatARGBGraphic, 8, false, keQxcSurfaceTypeRGBA_8bits_Unshaped, G},
    {keQxSurfaceFormatARGBVideo, 8, false, keQxcSurfaceTypeRGBA_8bits_Unshaped, V},
    {keQxSurfaceFormatARGBGraphic, 8, true, keQxcSurfaceTypeRGBA_8bits_Shaped, G},
    {keQxSurfaceFormatBGRAGraphic, 8, false, keQxcSurfaceTypeBGRA_8bits_Unshaped, G},
    {keQxSurfaceFormatRGBGraphic, 8, false, keQxcSurfaceTypeRGB24_8bits, G},
    {keQxSurfaceFormatRGBGraphic, 12, false, keQxcSurfaceTypeRGB36_12bits, G},
    {keQxSurfaceFormatA2R10G10B10Video, 10, false, keQxcSurfaceTypeA2R10G10B10_Unshaped, V},
    {keQxSurfaceFormatABGR16, 16, false, keQxcSurfaceTypeABGR_16bits_Unshaped, G},
    {keQxSurfaceFormatA2B10G10R10Graphic, 10, false, keQxcSurfaceTypeA2B10G10R10_Unshaped, G},
};

SQxSurfaceDescription DescribeFormat(const SFormat& in_rs, uint32_t in_uiWidth, uint32_t in_uiHeight,
                                     EQxPolarity in_ePolarity = keQxPolarityProgressive)
{
    SQxSurfaceDescription s = Describe(in_rs.eFormat, in_rs.uiBits, in_uiWidth, in_uiHeight, in_ePolarity);
    s.bIsAlphaShaped = in_rs.bShaped;
    return s;
}

bool HasKey(EQxcSurfaceType t)
{
    return t == keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped || t == keQxcSurfaceTypeYCbCrA4224_8bits_Shaped ||
           t == keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped || t == keQxcSurfaceTypeYCbCrA4224_10bits_Shaped ||
           t == keQxcSurfaceTypeAYCbCr4444_8bits_Shaped || t == keQxcSurfaceTypeRGBA_8bits_Unshaped ||
           t == keQxcSurfaceTypeRGBA_8bits_Shaped || t == keQxcSurfaceTypeBGRA_8bits_Unshaped ||
           t == keQxcSurfaceTypeA2R10G10B10_Unshaped || t == keQxcSurfaceTypeABGR_16bits_Unshaped ||
           t == keQxcSurfaceTypeA2B10G10R10_Unshaped;
}

bool IsRgb(EQxcSurfaceType t) { return NQxTest::IsRgbKind(t); }

// The 16-bit line a pair goes through: 4:2:2 into v210, the shaped 4:2:2:4
// line into a shaped destination, the unshaped one otherwise; none for the
// pairs with a kernel of their own (YUYV or v210 with 2VUY).
EQxcSurfaceType IntermediateOf(EQxcSurfaceType in_eSource, EQxcSurfaceType in_eDestination)
{
    if (ReferenceOf(in_eDestination, in_eSource) &&
        (in_eSource == keQxcSurfaceType2VUY_8bits || in_eDestination == keQxcSurfaceType2VUY_8bits))
        return keQxcSurfaceTypeInvalid;
    if (in_eDestination == keQxcSurfaceTypeV210_10bits) return keQxcSurfaceTypeYCbCr422_16bits;
    if (in_eDestination == keQxcSurfaceTypeYCbCrA4224_8bits_Shaped ||
        in_eDestination == keQxcSurfaceTypeYCbCrA4224_10bits_Shaped)
        return keQxcSurfaceTypeYCbCrA4224_16bits_Shaped;
    return keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped;
}

// The RGB side of a pair takes its own colorimetry, else the YUV side's.
EQxColorimetry RgbColorimetryOf(const SQxSurfaceDescription& in_rsSource, const SQxSurfaceDescription& in_rsDestination,
                                const SFormat& in_rsSourceFormat)
{
    const bool bSourceRgb = IsRgb(in_rsSourceFormat.eType);
    const EQxColorimetry eOwn = bSourceRgb ? in_rsSource.eColorimetry : in_rsDestination.eColorimetry;
    const EQxColorimetry eYuv = bSourceRgb ? in_rsDestination.eColorimetry : in_rsSource.eColorimetry;
    // The ARGB and alpha formats carry none.
    const EQxSurfaceFormat eRgbFormat = bSourceRgb ? in_rsSource.eSurfaceFormat : in_rsDestination.eSurfaceFormat;
    const bool bNone = eRgbFormat == keQxSurfaceFormatARGBGraphic || eRgbFormat == keQxSurfaceFormatARGBVideo;
    return bNone || eOwn == keQxColorimetryInvalid ? eYuv : eOwn;
}

// The destination as the references write it: a copy of the destination's
// memory before the copy, then every line of the rectangle converted: YUV
// pairs (and 10/16-bit RGB with YUV) block by block through the 16-bit line,
// the other RGB pairs pixel by pixel between the buffer surfaces.
std::vector<uint8_t> ReferenceCopy(CQxcHostSurface* in_pSource, const SQxRect& in_rsSource,
                                   const std::vector<uint8_t>& in_vDestinationBefore,
                                   const SQxSurfaceDescription& in_rsDescription, const SQxRect& in_rsDestination,
                                   const SFormat& in_rsFrom, const SFormat& in_rsTo, bool in_bWeave)
{
    std::vector<uint8_t> vOut = in_vDestinationBefore;
    const SQxSurfaceDescription& sSource = in_pSource->GetDescription();
    const bool bRgb10 = in_rsFrom.eType == keQxcSurfaceTypeA2R10G10B10_Unshaped ||
                        in_rsTo.eType == keQxcSurfaceTypeA2R10G10B10_Unshaped ||
                        in_rsFrom.eType == keQxcSurfaceTypeABGR_16bits_Unshaped ||
                        in_rsTo.eType == keQxcSurfaceTypeABGR_16bits_Unshaped;
    const bool bBlocks = (in_rsFrom.eRange == Y && in_rsTo.eRange == Y) || bRgb10;
    auto fnKind = [bBlocks](EQxcSurfaceType e) {
        return bBlocks ? e : CQxcBufferEngineCommon::SetFormatToQxcBufferSurface(e);
    };
    const EQxColorimetry eRgbColorimetry = RgbColorimetryOf(sSource, in_rsDescription, in_rsFrom);
    auto fnColorimetry = [&](const SFormat& f, const SQxSurfaceDescription& d) {
        return IsRgb(f.eType) ? eRgbColorimetry : d.eColorimetry;
    };
    auto pSource = NQxTest::CreateSurface(fnKind(in_rsFrom.eType), true);
    auto pDestination = NQxTest::CreateSurface(fnKind(in_rsTo.eType), true);
    const unsigned uiWidth = unsigned(in_rsSource.right - in_rsSource.left);
    const unsigned uiChunks = (uiWidth + 15) / 16;
    const EQxColorimetry eYuvColorimetry = IsRgb(in_rsFrom.eType) ? in_rsDescription.eColorimetry : sSource.eColorimetry;
    alignas(64) static uint8_t s_aucLine[49152];
    std::unique_ptr<CQxcSurface> pMiddle;
    const EQxcSurfaceType eMiddle = bBlocks ? IntermediateOf(in_rsFrom.eType, in_rsTo.eType) : keQxcSurfaceTypeInvalid;
    if (eMiddle != keQxcSurfaceTypeInvalid) {
        pMiddle = NQxTest::CreateSurface(eMiddle, true);
        const bool bKey = eMiddle != keQxcSurfaceTypeYCbCr422_16bits && HasKey(in_rsFrom.eType);
        if (in_rsFrom.eType == keQxcSurfaceTypeA2R10G10B10_Unshaped ||
            in_rsTo.eType == keQxcSurfaceTypeA2R10G10B10_Unshaped)
            static_cast<CQxcYCbCrA4224_16bits_UnshapedSurface*>(pMiddle.get())
                ->InitializeRGB10(s_aucLine, uiWidth, 1, 49152, bKey, eYuvColorimetry,
                                  IsRgb(in_rsFrom.eType) ? in_rsFrom.eRange : in_rsTo.eRange, eRgbColorimetry);
        else
            pMiddle->Initialize(s_aucLine, uiWidth, 1, 49152, bKey, eYuvColorimetry);
    }
    const unsigned uiLines = unsigned(in_rsSource.bottom - in_rsSource.top);
    for (unsigned i = 0; i < uiLines; ++i) {
        // In a weave, frame line i comes from line i / 2 of field i % 2.
        const unsigned uiSourceLine = in_bWeave ? (i % 2) * (sSource.ulHeight / 2) + in_rsSource.top / 2 + i / 2
                                                : in_rsSource.top + i;
        NQxTest::Bind(*pSource, in_pSource->GetBuffer(), sSource.ulWidth, sSource.ulHeight, sSource.lPitch,
                      HasKey(in_rsFrom.eType), fnColorimetry(in_rsFrom, sSource), in_rsFrom.eRange);
        NQxTest::Bind(*pDestination, vOut.data(), in_rsDescription.ulWidth, in_rsDescription.ulHeight,
                      in_rsDescription.lPitch, HasKey(in_rsTo.eType), fnColorimetry(in_rsTo, in_rsDescription),
                      in_rsTo.eRange);
        EXPECT_TRUE(pSource->SetPosition(unsigned(in_rsSource.left) & ~15u, uiSourceLine));
        EXPECT_TRUE(pDestination->SetPosition(unsigned(in_rsDestination.left) & ~15u, in_rsDestination.top + i));
        const CQxcSurface* pRgbSide = IsRgb(in_rsTo.eType) ? pDestination.get() : pSource.get();
        if (!bBlocks) {
            EXPECT_TRUE(PixelReferenceOf(fnKind(in_rsTo.eType), fnKind(in_rsFrom.eType))(
                NQxTest::MakePixelJob(*pDestination, pSource.get(), uiWidth, 1, pRgbSide)));
            continue;
        }
        if (!pMiddle) {
            ReferenceOf(in_rsTo.eType, in_rsFrom.eType)(NQxTest::MakeJob(*pDestination, *pSource, uiChunks, 1));
            continue;
        }
        pMiddle->SetPosition(0, 0);
        ReferenceOf(eMiddle, in_rsFrom.eType)(NQxTest::MakeJob(*pMiddle, *pSource, uiChunks, 1));
        if (IsRgb(in_rsTo.eType))
            EXPECT_TRUE(PixelReferenceOf(in_rsTo.eType, eMiddle)(
                NQxTest::MakePixelJob(*pDestination, pMiddle.get(), uiWidth, 1, pRgbSide)));
        else
            ReferenceOf(in_rsTo.eType, eMiddle)(NQxTest::MakeJob(*pDestination, *pMiddle, uiChunks, 1));
    }
    return vOut;
}

class Conversions : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        ms_pAsync = MakeEngine().release();
        ms_pSync = MakeSyncEngine().release();
    }
    static void TearDownTestSuite()
    {
        ms_pAsync->Release();
        ms_pSync->Release();
    }

    // Copies the rectangles through one engine and compares the whole
    // destination with what the references write.
    void CopyAndCompare(int in_iEngine, CQxcHostSurface* in_pSource, SQxRect in_sSource,
                        CQxcHostSurface* in_pDestination, SQxRect in_sDestination, const SFormat& in_rsFrom,
                        const SFormat& in_rsTo, bool in_bWeave = false)
    {
        const std::vector<uint8_t> vBefore(in_pDestination->GetBuffer(),
                                           in_pDestination->GetBuffer() + in_pDestination->GetBufferSize());
        const HRESULT hr = in_iEngine == 0 ? ms_pAsync->CopySurface(in_pSource, &in_sSource, in_pDestination,
                                                                     &in_sDestination, keQxFilterModeNearest)
                                           : ms_pSync->SyncCopySurface(in_pSource, &in_sSource, in_pDestination,
                                                                       &in_sDestination, keQxFilterModeNearest);
        ASSERT_EQ(hr, S_OK);
        const std::vector<uint8_t> vExpected = ReferenceCopy(in_pSource, in_sSource, vBefore,
                                                             in_pDestination->GetDescription(), in_sDestination,
                                                             in_rsFrom, in_rsTo, in_bWeave);
        ASSERT_TRUE(std::equal(vExpected.begin(), vExpected.end(), in_pDestination->GetBuffer()));
    }

    // Whole random pictures of one size.
    void Check(int in_iEngine, const SFormat& in_rsSource, const SFormat& in_rsDestination, uint32_t in_uiWidth,
               uint32_t in_uiHeight, std::mt19937& io_oRandom)
    {
        auto pSource = Allocate(DescribeFormat(in_rsSource, in_uiWidth, in_uiHeight));
        auto pDestination = Allocate(DescribeFormat(in_rsDestination, in_uiWidth, in_uiHeight));
        FillRandomPixels(pSource.get(), io_oRandom);
        FillRandomPixels(pDestination.get(), io_oRandom);
        const SQxRect s = Whole(pSource.get());
        CopyAndCompare(in_iEngine, pSource.get(), s, pDestination.get(), s, in_rsSource, in_rsDestination);
    }

    static IQxcBufferEngine* ms_pAsync;
    static IQxSyncBufferEngine* ms_pSync;
};
IQxcBufferEngine* Conversions::ms_pAsync = nullptr;
IQxSyncBufferEngine* Conversions::ms_pSync = nullptr;

TEST_F(Conversions, EveryAllowedYuvPairMatchesTheReferencesOnSmallAndFullHdFrames)
{
    std::mt19937 oRandom = SeededRandom("Conversions.EveryPair");
    int iPairs = 0;
    for (const SFormat& sSource : kasYuvFormats)
        for (const SFormat& sDestination : kasYuvFormats) {
            if (sSource.eType == sDestination.eType ||
                !CQxcBufferCopyService::IsSupportedCopy(sSource.eType, sDestination.eType))
                continue;
            ++iPairs;
            for (int e = 0; e < 2; ++e) {
                SCOPED_TRACE(testing::Message() << "type " << sSource.eType << " to " << sDestination.eType << ", "
                                                << (e ? "sync" : "async"));
                Check(e, sSource, sDestination, 40, 6, oRandom);   // a partial last block
                Check(e, sSource, sDestination, 100, 37, oRandom);  // remainder lines, v210 phases
                if (e == iPairs % 2) Check(e, sSource, sDestination, 1920, 1080, oRandom);
            }
        }
    // The matrix's YUV pairs between different types.
    EXPECT_EQ(iPairs, 34);
}

TEST_F(Conversions, EveryAllowedPairWithRgbMatchesTheReferences)
{
    std::mt19937 oRandom = SeededRandom("Conversions.RgbPairs");
    std::vector<SFormat> vAll(std::begin(kasYuvFormats), std::end(kasYuvFormats));
    vAll.insert(vAll.end(), std::begin(kasRgbFormats), std::end(kasRgbFormats));
    int iPairs = 0;
    for (const SFormat& sSource : vAll)
        for (const SFormat& sDestination : vAll) {
            if (sSource.eType == sDestination.eType || (!IsRgb(sSource.eType) && !IsRgb(sDestination.eType)) ||
                !CQxcBufferCopyService::IsSupportedCopy(sSource.eType, sDestination.eType))
                continue;
            ++iPairs;
            for (int e = 0; e < 2; ++e) {
                SCOPED_TRACE(testing::Message() << "format " << sSource.eFormat << "/" << sSource.uiBits << " to "
                                                << sDestination.eFormat << "/" << sDestination.uiBits << ", "
                                                << (e ? "sync" : "async"));
                // RGB into 10-bit YUYV or v210 needs whole 16-pixel groups.
                Check(e, sSource, sDestination, 48, 5, oRandom);
                Check(e, sSource, sDestination, 112, 19, oRandom);
                if (e == iPairs % 2) Check(e, sSource, sDestination, 1920, 1080, oRandom);
            }
        }
    EXPECT_GT(iPairs, 30);
}

TEST_F(Conversions, RectanglesWeaveAndLinesWhoseBlocksWouldPassTheBuffer)
{
    std::mt19937 oRandom = SeededRandom("Conversions.Rectangles");
    const SFormat& sYuyv = kasYuvFormats[0];
    const SFormat& sV210 = kasYuvFormats[7];
    // A rectangle inside both pictures, starts taken down to 16 pixels.
    auto pSource = Allocate(DescribeFormat(sYuyv, 640, 360));
    auto pDestination = Allocate(DescribeFormat(sV210, 960, 540));
    FillRandomPixels(pSource.get(), oRandom);
    CopyAndCompare(0, pSource.get(), {37, 11, 37 + 300, 11 + 201}, pDestination.get(), {100, 300, 400, 501},
                   sYuyv, sV210);
    // Two stored fields woven into a frame while converting, and the
    // same through the RGB path (stored RGBA fields into a YUYV frame).
    auto pStored = Allocate(DescribeFormat(sYuyv, 720, 486, keQxPolarityBackToBack));
    auto pFrame = Allocate(DescribeFormat(sV210, 720, 486, keQxPolarityInterlaced));
    FillRandomPixels(pStored.get(), oRandom);
    FillRandomPixels(pFrame.get(), oRandom);
    CopyAndCompare(1, pStored.get(), Whole(pStored.get()), pFrame.get(), Whole(pStored.get()), sYuyv, sV210, true);
    const SFormat& sRgba = kasRgbFormats[0];
    auto pRgbStored = Allocate(DescribeFormat(sRgba, 320, 64, keQxPolarityBackToBack));
    auto pYuyvFrame = Allocate(DescribeFormat(sYuyv, 320, 64, keQxPolarityProgressive));
    FillRandomPixels(pRgbStored.get(), oRandom);
    FillRandomPixels(pYuyvFrame.get(), oRandom);
    CopyAndCompare(0, pRgbStored.get(), {0, 16, 320, 64}, pYuyvFrame.get(), {0, 16, 320, 64}, sRgba, sYuyv, true);
    // Lines of exactly 40 pixels (80 bytes) in memory with nothing after
    // the last one: the last block of every line would pass the line, so
    // those lines are staged; only the line's bytes are written.
    const SFormat& s4224 = kasYuvFormats[1];
    CGuardedSurface oSource(DescribeFormat(s4224, 40, 17), 0, 8);  // unaligned source lines too
    CGuardedSurface oDestination(DescribeFormat(sYuyv, 40, 17), 80);
    FillRandomPixels(oSource.Get(), oRandom);
    oDestination.Memory().FillRandom(oRandom);
    const std::vector<uint8_t> vBefore = oDestination.Memory().Bytes();
    SQxRect s = Whole(oSource.Get());
    ASSERT_EQ(ms_pAsync->CopySurface(oSource.Get(), &s, oDestination.Get(), &s, keQxFilterModeNearest), S_OK);
    // The references write whole blocks: run them on roomy lines and
    // compare each line's 80 bytes.
    SQxSurfaceDescription sRoomy = oDestination->GetDescription();
    sRoomy.lPitch = 96;
    std::vector<uint8_t> vRoomy(96 * 17);
    for (int y = 0; y < 17; ++y) std::memcpy(&vRoomy[96 * y], &vBefore[80 * y], 80);
    const auto vExpected = ReferenceCopy(oSource.Get(), s, vRoomy, sRoomy, s, s4224, sYuyv, false);
    for (int y = 0; y < 17; ++y)
        EXPECT_EQ(0, std::memcmp(&vExpected[96 * y], oDestination.Memory().Data() + 80 * y, 80)) << "line " << y;
    EXPECT_TRUE(oDestination.Memory().GuardsIntact());
}

}  // namespace
