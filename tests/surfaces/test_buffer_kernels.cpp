// Every buffer kernel against its scalar reference: the SSE2 kernel runs
// through the surfaces (dispatcher, chroma mode and range selection
// included), the reference is the same composition over the scalar backend on
// a copy of the destination; the bytes, guards and padding included, must be
// identical. Random and edge-value frames, odd widths and call widths,
// cursors on every unit phase, pitch padding that breaks 16-byte alignment,
// both store policies, sources with and without key, both RGB levels and
// every standard.
#include <gtest/gtest.h>

#include "tests/surfaces/buffertesthelpers.h"
#include "tests/surfaces/untouched.h"

using namespace NQxTest;
using namespace NQxcKernels;
using namespace NQxcKernels::NBufferMatrix;

namespace {

struct SEntry {
    int iDestination;
    int iSource;
    int iMode;
    int iRange;
    PFNQxcPixelJob pfnReference;
    const char* pszName;
};

#define QXT_ENTRY(Destination, Source, Mode, Range, Kernel) \
    {Destination, Source, Mode, Range, &TPixelScalarEntry<Kernel>::Run, #Kernel},
const SEntry kasMatrix[] = {QXC_BUFFER_MATRIX(QXT_ENTRY)};
#undef QXT_ENTRY

const uint8_t kaucEdgeBytes[] = {0x00, 0x01, 0x0f, 0x10, 0x3f, 0x40, 0x7f, 0x80, 0xc0, 0xeb, 0xf0, 0xfe, 0xff};

void FillEdge(uint8_t* out_puc, size_t in_uiBytes, std::mt19937& io_rRandom)
{
    for (size_t ui = 0; ui < in_uiBytes; ++ui)
        out_puc[ui] = kaucEdgeBytes[io_rRandom() % sizeof(kaucEdgeBytes)];
}

struct SCase {
    unsigned uiSourceWidth;
    unsigned uiDestinationWidth;
    unsigned uiSourceX;
    unsigned uiDestinationX;
    unsigned uiPixels;
    unsigned uiLines;
    unsigned uiFirstLine;
    long lSourcePadding;
    long lDestinationPadding;
    bool bCached;
    bool bEdge;
    bool bKeyPresent;
    EQxcColorRange eRange;
    EQxColorimetry eColorimetry;
};

unsigned Phase(int in_iKind, std::mt19937& io_rRandom)
{
    const unsigned uiUnit = UnitOf(in_iKind).uiPixels;
    // Block starts, and for the smaller units a phase inside a block.
    return 16 * (io_rRandom() % 3) + (uiUnit < 16 ? uiUnit * (io_rRandom() % (16 / uiUnit)) : 0);
}

SCase DrawCase(const SEntry& in_rs, std::mt19937& io_rRandom)
{
    static const unsigned kauiWidths[] = {1, 2, 3, 7, 16, 17, 31, 33, 48, 50, 95, 97, 130, 161};
    SCase s;
    const unsigned uiWidth = in_rs.iMode == 1 ? 16 * (1 + io_rRandom() % 9)
                                              : kauiWidths[io_rRandom() % (sizeof(kauiWidths) / sizeof(kauiWidths[0]))];
    s.uiSourceWidth = uiWidth + 48;
    s.uiDestinationWidth = uiWidth + 48 + (in_rs.iMode == 1 ? 0 : io_rRandom() % 5);
    if (in_rs.iMode == 1)
        s.uiSourceWidth = uiWidth + 48;
    s.uiSourceX = Phase(in_rs.iSource, io_rRandom);
    s.uiDestinationX = Phase(in_rs.iDestination, io_rRandom);
    const unsigned uiRoom = std::min<unsigned>(s.uiSourceWidth - s.uiSourceX, s.uiDestinationWidth - s.uiDestinationX);
    s.uiPixels = std::min<unsigned>(uiWidth + io_rRandom() % 3, uiRoom);
    s.uiLines = 1 + io_rRandom() % 3;
    s.uiFirstLine = io_rRandom() % 2;
    s.lSourcePadding = 8 * static_cast<long>(io_rRandom() % 4);
    s.lDestinationPadding = 8 * static_cast<long>(io_rRandom() % 4);
    s.bCached = io_rRandom() % 2 == 0;
    s.bEdge = io_rRandom() % 2 == 0;
    s.bKeyPresent = io_rRandom() % 3 != 0;
    s.eRange = static_cast<EQxcColorRange>(in_rs.iRange >= 0 ? in_rs.iRange : static_cast<int>(io_rRandom() % 2));
    s.eColorimetry = static_cast<EQxColorimetry>(1 + io_rRandom() % 6);
    return s;
}

std::string Describe(const SEntry& in_rs, const SCase& in_rc)
{
    return std::string(in_rs.pszName) + " widths " + std::to_string(in_rc.uiSourceWidth) + "/" +
           std::to_string(in_rc.uiDestinationWidth) + " x " + std::to_string(in_rc.uiSourceX) + "/" +
           std::to_string(in_rc.uiDestinationX) + " pixels " + std::to_string(in_rc.uiPixels) + " lines " +
           std::to_string(in_rc.uiLines) + " padding " + std::to_string(in_rc.lSourcePadding) + "/" +
           std::to_string(in_rc.lDestinationPadding) + (in_rc.bCached ? " cached" : " streaming") +
           (in_rc.bEdge ? " edge" : " random") + (in_rc.bKeyPresent ? "" : " keyless") + " range " +
           std::to_string(in_rc.eRange) + " colorimetry " + std::to_string(in_rc.eColorimetry);
}

// The bytes of the units that hold pixels [in_uiX, in_uiX + in_uiPixels).
void WrittenBytes(int in_iKind, unsigned in_uiX, unsigned in_uiPixels, long& out_rlBegin, long& out_rlEnd)
{
    if (in_iKind == 31) {
        out_rlBegin = V210GroupOffset(in_uiX);
        out_rlEnd = V210GroupOffset(in_uiX + in_uiPixels - 1) + 16;
        return;
    }
    const SUnit s = UnitOf(in_iKind);
    out_rlBegin = in_uiX / s.uiPixels * s.uiBytes;
    out_rlEnd = (in_uiX + in_uiPixels + s.uiPixels - 1) / s.uiPixels * s.uiBytes;
}

void RunCase(const SEntry& in_rs, const SCase& in_rc, std::mt19937& io_rRandom)
{
    const std::string s = Describe(in_rs, in_rc);
    const unsigned uiPictureLines = in_rc.uiFirstLine + in_rc.uiLines + 1;
    const long lSourcePitch = BufferLineBytes(in_rs.iSource, in_rc.uiSourceWidth) + in_rc.lSourcePadding;
    const long lDestinationPitch = BufferLineBytes(in_rs.iDestination, in_rc.uiDestinationWidth) + in_rc.lDestinationPadding;

    CPicture oSource(lSourcePitch, uiPictureLines);
    (in_rc.bEdge ? FillEdge : FillRandom)(oSource.Data(), oSource.Bytes(), io_rRandom);
    CPicture oBefore(lDestinationPitch, uiPictureLines);
    FillRandom(oBefore.Data(), oBefore.Bytes(), io_rRandom);
    CPicture oKernel(oBefore), oReference(oBefore);

    auto pSource = CreateSurface(in_rs.iSource, false);
    auto pKernel = CreateSurface(in_rs.iDestination, in_rc.bCached);
    auto pReference = CreateSurface(in_rs.iDestination, true);
    ASSERT_TRUE(pSource && pKernel && pReference) << s;
    const EQxcColorRange eSourceRange = IsRgbKind(in_rs.iSource) ? in_rc.eRange : keQxcColorRangeYuv;
    const EQxcColorRange eDestinationRange = IsRgbKind(in_rs.iDestination) ? in_rc.eRange : keQxcColorRangeYuv;
    ASSERT_TRUE(Bind(*pSource, oSource.Data(), in_rc.uiSourceWidth, uiPictureLines, lSourcePitch, in_rc.bKeyPresent,
                     in_rc.eColorimetry, eSourceRange));
    ASSERT_TRUE(Bind(*pKernel, oKernel.Data(), in_rc.uiDestinationWidth, uiPictureLines, lDestinationPitch, true,
                     in_rc.eColorimetry, eDestinationRange));
    ASSERT_TRUE(Bind(*pReference, oReference.Data(), in_rc.uiDestinationWidth, uiPictureLines, lDestinationPitch, true,
                     in_rc.eColorimetry, eDestinationRange));
    ASSERT_TRUE(pSource->SetPosition(in_rc.uiSourceX, in_rc.uiFirstLine)) << s;
    ASSERT_TRUE(pKernel->SetPosition(in_rc.uiDestinationX, in_rc.uiFirstLine)) << s;
    ASSERT_TRUE(pReference->SetPosition(in_rc.uiDestinationX, in_rc.uiFirstLine)) << s;
    CQxcBufferSurface* pDestination = static_cast<CQxcBufferSurface*>(pKernel.get());
    pDestination->SetFilter(in_rs.iMode == 1);
    pDestination->SetInterpolate(in_rs.iMode == 1);

    const CQxcSurface* pRgbSide = IsRgbKind(in_rs.iDestination) ? pReference.get() : pSource.get();
    ASSERT_TRUE(in_rs.pfnReference(MakePixelJob(*pReference, pSource.get(), in_rc.uiPixels, in_rc.uiLines, pRgbSide)))
        << s;
    ASSERT_TRUE(pDestination->CopyFrom(pSource.get(), in_rc.uiPixels, in_rc.uiLines))
        << s;

    ASSERT_TRUE(oKernel.SameAs(oReference)) << s;
    long lBegin = 0, lEnd = 0;
    WrittenBytes(in_rs.iDestination, in_rc.uiDestinationX, in_rc.uiPixels, lBegin, lEnd);
    ExpectUntouchedOutside(oBefore, oReference, in_rc.uiFirstLine, in_rc.uiLines, lBegin, lEnd, s);
    ASSERT_TRUE(oSource.GuardsIntact()) << s;

    unsigned uiX = 0, uiY = 0;
    pDestination->GetPosition(&uiX, &uiY);
    EXPECT_EQ(in_rc.uiDestinationX + in_rc.uiPixels, uiX) << s;
    EXPECT_EQ(in_rc.uiFirstLine + in_rc.uiLines - 1, uiY) << s;
    EXPECT_EQ(in_rc.uiSourceX, CursorPixel(*pSource)) << s;
}

TEST(BufferKernels, EveryPairMatchesItsScalarReference)
{
    std::mt19937 oRandom(20260611);
    for (const SEntry& rsEntry : kasMatrix) {
        for (int i = 0; i < 40; ++i) {
            RunCase(rsEntry, DrawCase(rsEntry, oRandom), oRandom);
            if (HasFatalFailure())
                return;
        }
    }
}

// -------------------------------------------------------------- fills
struct SFillEntry {
    int iKind;
    PFNQxcPixelJob pfnReference;
    int iDepth;  // 0: a YUV fill
};

const SFillEntry kasFills[] = {
    {15, &TPixelScalarEntry<KFillYuyv8>::Run, 0},        {33, &TPixelScalarEntry<KFill2vuy8>::Run, 0},
    {18, &TPixelScalarEntry<KFillPacked10>::Run, 0},     {16, &TPixelScalarEntry<KFill4224_8>::Run, 0},
    {17, &TPixelScalarEntry<KFill4224_8>::Run, 0},       {19, &TPixelScalarEntry<KFill4224_10>::Run, 0},
    {20, &TPixelScalarEntry<KFill4224_10>::Run, 0},      {21, &TPixelScalarEntry<KFill4444_16>::Run, 0},
    {30, &TPixelScalarEntry<KFillR4fl>::Run, 0},         {13, &TPixelScalarEntry<KFillRgba8>::Run, 8},
    {14, &TPixelScalarEntry<KFillRgba8>::Run, 8},        {26, &TPixelScalarEntry<KFillBgra8>::Run, 8},
    {22, &TPixelScalarEntry<KFillRgb24>::Run, 8},        {36, &TPixelScalarEntry<KFillRgb36>::Run, 12},
    {28, &TPixelScalarEntry<KFillA2r10>::Run, 10},       {34, &TPixelScalarEntry<KFillA2b10>::Run, 10},
    {32, &TPixelScalarEntry<KFillAbgr16>::Run, 16},      {29, &TPixelScalarEntry<KFillK64>::Run, 16},
};

// Fill (YUV colour) of the YUV formats and FillRgb (8-bit colour) of the RGB
// ones against the reference, from every phase and over odd widths.
TEST(BufferKernels, FillsMatchTheirScalarReference)
{
    std::mt19937 oRandom(31);
    for (const SFillEntry& rs : kasFills) {
        for (int i = 0; i < 24; ++i) {
            const unsigned uiWidth = 48 + oRandom() % 90;
            const unsigned uiX = Phase(rs.iKind, oRandom);
            const unsigned uiPixels = 1 + oRandom() % (uiWidth - uiX);
            const bool bCached = oRandom() % 2 == 0;
            const long lPitch = BufferLineBytes(rs.iKind, uiWidth) + 8 * static_cast<long>(oRandom() % 4);
            CPicture oBefore(lPitch, 3);
            FillRandom(oBefore.Data(), oBefore.Bytes(), oRandom);
            CPicture oKernel(oBefore), oReference(oBefore);
            auto pKernel = CreateSurface(rs.iKind, bCached);
            auto pReference = CreateSurface(rs.iKind, true);
            const EQxcColorRange eRange = rs.iDepth ? keQxcColorRangeGraphic : keQxcColorRangeYuv;
            Bind(*pKernel, oKernel.Data(), uiWidth, 3, lPitch, true, keQxColorimetryITUR_BT_709, eRange);
            Bind(*pReference, oReference.Data(), uiWidth, 3, lPitch, true, keQxColorimetryITUR_BT_709, eRange);
            pKernel->SetPosition(uiX, 1);
            pReference->SetPosition(uiX, 1);
            const SQxcYuvaPixel sYuv = {static_cast<uint16_t>(oRandom() % 1024), static_cast<uint16_t>(oRandom() % 1024),
                                        static_cast<uint16_t>(oRandom() % 1024), static_cast<uint16_t>(oRandom() % 1024)};
            const SQxcRGBAPixel sRgb = {static_cast<uint8_t>(oRandom()), static_cast<uint8_t>(oRandom()),
                                        static_cast<uint8_t>(oRandom()), static_cast<uint8_t>(oRandom())};
            SQxcBlockJob sJob = MakePixelJob(*pReference, nullptr, uiPixels, 2, nullptr);
            sJob.sColor = sYuv;
            const std::string s = "fill of kind " + std::to_string(rs.iKind) + " at " + std::to_string(uiX) + " over " +
                                  std::to_string(uiPixels);
            if (rs.iDepth == 0) {
                ASSERT_TRUE(static_cast<CQxcBufferSurface*>(pKernel.get())->Fill(sYuv, uiPixels, 2)) << s;
            } else {
                // The 8-bit colour at the format's depth, full scale.
                auto Scale = [&](uint8_t in_uc) {
                    const uint64_t uiMax = (1u << rs.iDepth) - 1;
                    return static_cast<uint16_t>((2 * in_uc * uiMax + 255) / 510);
                };
                sJob.sRgbColor = SQxcRGBAPixel_16bits{Scale(sRgb.R), Scale(sRgb.G), Scale(sRgb.B), Scale(sRgb.A)};
                ASSERT_TRUE(static_cast<CQxcRgbBufferSurface*>(pKernel.get())->FillRgb(sRgb, uiPixels, 2)) << s;
            }
            ASSERT_TRUE(rs.pfnReference(sJob)) << s;
            ASSERT_TRUE(oKernel.SameAs(oReference)) << s;
            long lBegin = 0, lEnd = 0;
            WrittenBytes(rs.iKind, uiX, uiPixels, lBegin, lEnd);
            ExpectUntouchedOutside(oBefore, oReference, 1, 2, lBegin, lEnd, s);
            if (HasFatalFailure())
                return;
        }
    }
}

// The 2VUY buffer's block entry: YUYV and 2VUY block surfaces, from their
// block cursor, as far as both pictures reach.
TEST(BufferKernels, TwoVuyBufferConvertsBlocksOfBlockSurfaces)
{
    std::mt19937 oRandom(3);
    for (EQxcSurfaceType eSource : {keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceType2VUY_8bits}) {
        CPicture oSource(32 * 4, 2), oBefore(4 * 40, 2);
        FillRandom(oSource.Data(), oSource.Bytes(), oRandom);
        FillRandom(oBefore.Data(), oBefore.Bytes(), oRandom);
        CPicture oKernel(oBefore), oReference(oBefore);
        auto pSource = CreateSurface(eSource, true);
        auto pKernel = CreateSurface(kiKind2vuyBuffer, false);
        auto pReference = CreateSurface(kiKind2vuyBuffer, true);
        pSource->Initialize(oSource.Data(), 64, 2, oSource.Pitch(), false, keQxColorimetryITUR_BT_709);
        Bind(*pKernel, oKernel.Data(), 70, 2, oKernel.Pitch(), false, keQxColorimetryITUR_BT_709, keQxcColorRangeYuv);
        Bind(*pReference, oReference.Data(), 70, 2, oKernel.Pitch(), false, keQxColorimetryITUR_BT_709,
             keQxcColorRangeYuv);
        pSource->SetPosition(16, 0);
        pKernel->SetPosition(20, 0);
        pReference->SetPosition(20, 0);
        // Three blocks from block 1 reach the source's end: 48 pixels.
        const PFNQxcPixelJob pfn = eSource == keQxcSurfaceTypeYCbCr422_8bits ? &TPixelScalarEntry<K2vuy8FromYuyv8>::Run
                                                                             : &TPixelScalarEntry<K2vuy8From2vuy8>::Run;
        ASSERT_TRUE(pfn(MakePixelJob(*pReference, pSource.get(), 48, 2, nullptr)));
        ASSERT_TRUE(pKernel->CopyBlocksFrom(pSource.get(), 3, 2));
        EXPECT_TRUE(oKernel.SameAs(oReference));
        EXPECT_EQ(68u, CursorPixel(*pKernel));
        // A fourth block is past the source's width in blocks.
        pKernel->SetPosition(0, 0);
        EXPECT_FALSE(pKernel->CopyBlocksFrom(pSource.get(), 4, 1));
        // Other block formats are refused.
        auto pOther = CreateSurface(keQxcSurfaceTypeV210_10bits, true);
        pOther->Initialize(oSource.Data(), 64, 2, oSource.Pitch(), false, keQxColorimetryITUR_BT_709);
        EXPECT_FALSE(pKernel->CopyBlocksFrom(pOther.get(), 1, 1));
    }
}

}  // namespace
