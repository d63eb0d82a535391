// Every block kernel against its scalar reference: the SSE2 kernel runs
// through the surfaces (dispatch table included), the reference is the same
// composition over the scalar backend; the bytes, guards and padding
// included, must be identical. Random and edge-value frames, widths that are
// not multiples of 16, cursors off the line start (v210 phases, odd 40-byte
// blocks), pitch padding, both store policies, with and without source key.
#include <gtest/gtest.h>

#include "tests/surfaces/surfacetesthelpers.h"
#include "tests/surfaces/untouched.h"

using namespace NQxTest;
using namespace NQxcKernels;
using namespace NQxcKernels::NBlockMatrix;

namespace {

struct SMatrixEntry {
    EQxcSurfaceType eDestination;
    EQxcSurfaceType eSource;
    PFNQxcBlockJob pfnReference;
    const char* pszName;
};

#define QXT_ENTRY(Destination, Source, Kernel) {Destination, Source, &TScalarEntry<Kernel>::Run, #Kernel},
const SMatrixEntry kasMatrix[] = {QXC_BLOCK_MATRIX(QXT_ENTRY)};
#undef QXT_ENTRY

const uint16_t kausEdge10[] = {0, 1, 64, 512, 940, 1023};
const uint16_t kausEdgeKey[] = {0, 1, 512, 1020, 1023};

// A canonical block of edge values (10-bit scale).
void MakeEdgeBlock(std::mt19937& io_rRandom, SScalar444& out_rs)
{
    for (int p = 0; p < 16; ++p) {
        out_rs.aus16Y[p] = kausEdge10[io_rRandom() % 6];
        out_rs.aus16Cb[p] = kausEdge10[io_rRandom() % 6];
        out_rs.aus16Cr[p] = kausEdge10[io_rRandom() % 6];
        out_rs.aus16K[p] = kausEdgeKey[io_rRandom() % 5];
    }
}

template <class TLayout>
void StoreEdge422(uint8_t* out_puc, std::mt19937& io_rRandom)
{
    SScalar444 s444;
    MakeEdgeBlock(io_rRandom, s444);
    SScalar422 s422;
    X444To422(SQxcBlockJob{}).Apply(s444, s422);
    TLayout::template Store<keStoreUnaligned>(out_puc, s422);
}

template <class TLayout>
void StoreEdge444(uint8_t* out_puc, std::mt19937& io_rRandom)
{
    SScalar444 s444;
    MakeEdgeBlock(io_rRandom, s444);
    TLayout::template Store<keStoreUnaligned>(out_puc, s444);
}

// Edge values of the hub's RGB sources: black, white, full and zero keys,
// and for floats values outside the nominal range and NaN.
void WriteEdgeRgb(EQxcSurfaceType in_eType, uint8_t* out_puc, std::mt19937& io_rRandom)
{
    static const uint16_t kaus10[] = {0, 1, 64, 512, 940, 1020, 1023};
    static const float kaf[] = {0.0f, 1.0f, -0.5f, 0.5f, 1.5f, -1.0f, 0.25f, NAN, INFINITY};
    for (unsigned p = 0; p < 16; ++p) {
        if (in_eType == keQxcSurfaceTypeA2R10G10B10_Unshaped) {
            const uint32_t ui = (io_rRandom() % 4) << 30 | uint32_t(kaus10[io_rRandom() % 7]) << 20 |
                                uint32_t(kaus10[io_rRandom() % 7]) << 10 | kaus10[io_rRandom() % 7];
            std::memcpy(out_puc + 4 * p, &ui, 4);
        } else if (in_eType == keQxcSurfaceTypeK64ARGB_Unshaped) {
            static const uint16_t kaus16[] = {0, 0x00ff, 0x4000, 0xff00, 0xffff};
            for (unsigned c = 0; c < 4; ++c) {
                const uint16_t us = kaus16[io_rRandom() % 5];
                out_puc[8 * p + 2 * c] = static_cast<uint8_t>(us >> 8);
                out_puc[8 * p + 2 * c + 1] = static_cast<uint8_t>(us);
            }
        } else {
            for (unsigned c = 0; c < 4; ++c)
                std::memcpy(out_puc + 16 * p + 4 * c, &kaf[io_rRandom() % 9], 4);
        }
    }
}

// Writes edge values into every block of every line of a picture.
void WriteEdgeFrame(EQxcSurfaceType in_eType, const CPicture& in_r, unsigned in_uiWidth, std::mt19937& io_rRandom)
{
    const unsigned uiBlocks = (in_uiWidth + 15) / 16;
    for (unsigned uiLine = 0; uiLine < in_r.Lines(); ++uiLine) {
        uint8_t* puc = in_r.Line(uiLine);
        for (unsigned b = 0; b < uiBlocks; ++b) {
            switch (in_eType) {
            case keQxcSurfaceTypeYCbCr422_8bits: StoreEdge422<LYuyv8>(puc + 32 * b, io_rRandom); break;
            case keQxcSurfaceType2VUY_8bits: StoreEdge422<L2vuy8>(puc + 32 * b, io_rRandom); break;
            case keQxcSurfaceTypeYCbCr422_10bits: StoreEdge422<LPacked10>(puc + 40 * b, io_rRandom); break;
            case keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped:
            case keQxcSurfaceTypeYCbCrA4224_8bits_Shaped: StoreEdge422<L4224_8>(puc + 48 * b, io_rRandom); break;
            case keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped:
            case keQxcSurfaceTypeYCbCrA4224_10bits_Shaped: StoreEdge422<L4224_10>(puc + 64 * b, io_rRandom); break;
            case keQxcSurfaceTypeYCbCr422_16bits: StoreEdge422<L422_16>(puc + 64 * b, io_rRandom); break;
            case keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped:
            case keQxcSurfaceTypeYCbCrA4224_16bits_Shaped: StoreEdge422<L4224_16>(puc + 96 * b, io_rRandom); break;
            case keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped: StoreEdge444<L4444_16>(puc + 128 * b, io_rRandom); break;
            case keQxcSurfaceTypeAYCbCr4444_8bits_Shaped: StoreEdge444<LAycbcr8>(puc + 64 * b, io_rRandom); break;
            case keQxcSurfaceTypeA2R10G10B10_Unshaped:
            case keQxcSurfaceTypeK64ARGB_Unshaped:
            case keQxcSurfaceTypeR4FL_Unshaped: WriteEdgeRgb(in_eType, puc + LineBytes(in_eType, 16) * b, io_rRandom); break;
            case keQxcSurfaceTypeV210_10bits: {
                SScalar444 s444;
                MakeEdgeBlock(io_rRandom, s444);
                SScalar422 s422;
                X444To422(SQxcBlockJob{}).Apply(s444, s422);
                V210StoreBlock(puc, 16 * b, V210LinePixels(in_uiWidth), s422);
                break;
            }
            default: FAIL() << "no edge writer for type " << in_eType;
            }
        }
    }
}

// One random case of one matrix entry.
struct SCase {
    unsigned uiWidth;
    unsigned uiLines;
    unsigned uiSourceBlock;
    unsigned uiDestinationBlock;
    unsigned uiFirstLine;
    long lSourcePadding;
    long lDestinationPadding;
    bool bCached;
    bool bEdge;
    bool bKeyPresent;
};

SCase DrawCase(std::mt19937& io_rRandom)
{
    static const unsigned kauiWidths[] = {16, 17, 31, 32, 47, 48, 50, 95, 96, 100, 143, 144, 161, 200};
    SCase s;
    s.uiWidth = kauiWidths[io_rRandom() % (sizeof(kauiWidths) / sizeof(kauiWidths[0]))];
    s.uiLines = 1 + io_rRandom() % 4;
    const unsigned uiBlocks = (s.uiWidth + 15) / 16;
    s.uiSourceBlock = io_rRandom() % std::min(uiBlocks, 3u);
    s.uiDestinationBlock = io_rRandom() % std::min(uiBlocks, 4u);
    s.uiFirstLine = io_rRandom() % s.uiLines;
    s.lSourcePadding = 16 * static_cast<long>(io_rRandom() % 3);
    s.lDestinationPadding = 16 * static_cast<long>(io_rRandom() % 3);
    s.bCached = io_rRandom() % 2 == 0;
    s.bEdge = io_rRandom() % 2 == 0;
    s.bKeyPresent = io_rRandom() % 3 != 0;
    return s;
}

std::string Describe(const SMatrixEntry& in_rs, const SCase& in_rc)
{
    return std::string(in_rs.pszName) + " width " + std::to_string(in_rc.uiWidth) + " lines " +
           std::to_string(in_rc.uiLines) + " from line " + std::to_string(in_rc.uiFirstLine) + " blocks src/dst " +
           std::to_string(in_rc.uiSourceBlock) + "/" + std::to_string(in_rc.uiDestinationBlock) +
           (in_rc.bCached ? " cached" : " streaming") + (in_rc.bEdge ? " edge" : " random") +
           (in_rc.bKeyPresent ? "" : " keyless");
}

void RunCase(const SMatrixEntry& in_rs, const SCase& in_rc, std::mt19937& io_rRandom)
{
    const std::string s = Describe(in_rs, in_rc);
    const unsigned uiBlocksInLine = (in_rc.uiWidth + 15) / 16;
    const long lSourcePitch = LineBytes(in_rs.eSource, in_rc.uiWidth) + in_rc.lSourcePadding;
    const long lDestinationPitch = LineBytes(in_rs.eDestination, in_rc.uiWidth) + in_rc.lDestinationPadding;

    CPicture oSource(lSourcePitch, in_rc.uiLines);
    if (in_rc.bEdge)
        WriteEdgeFrame(in_rs.eSource, oSource, in_rc.uiWidth, io_rRandom);
    else
        FillRandom(oSource.Data(), oSource.Bytes(), io_rRandom);
    CPicture oBefore(lDestinationPitch, in_rc.uiLines);
    FillRandom(oBefore.Data(), oBefore.Bytes(), io_rRandom);
    CPicture oKernel(oBefore);
    CPicture oReference(oBefore);

    std::unique_ptr<CQxcSurface> pSource = CreateSurface(in_rs.eSource, false);
    std::unique_ptr<CQxcSurface> pKernel = CreateSurface(in_rs.eDestination, in_rc.bCached);
    std::unique_ptr<CQxcSurface> pReference = CreateSurface(in_rs.eDestination, true);
    ASSERT_TRUE(pSource && pKernel && pReference) << s;
    const EQxColorimetry eColorimetry = keQxColorimetryITUR_BT_709;
    pSource->Initialize(oSource.Data(), in_rc.uiWidth, in_rc.uiLines, lSourcePitch, in_rc.bKeyPresent, eColorimetry);
    pKernel->Initialize(oKernel.Data(), in_rc.uiWidth, in_rc.uiLines, lDestinationPitch, true, eColorimetry);
    pReference->Initialize(oReference.Data(), in_rc.uiWidth, in_rc.uiLines, lDestinationPitch, true, eColorimetry);
    if (in_rs.eDestination == keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped) {
        // The RGB side: graphics or video levels, each standard.
        const EQxcColorRange eRange = in_rc.bEdge ? keQxcColorRangeGraphic : keQxcColorRangeVideo;
        const EQxColorimetry eRgb = static_cast<EQxColorimetry>(1 + in_rc.uiWidth % 6);
        for (CQxcSurface* p : {pKernel.get(), pReference.get()})
            static_cast<CQxcYCbCrA4224_16bits_UnshapedSurface*>(p)->InitializeRGB10(
                p->GetBuffer(), in_rc.uiWidth, in_rc.uiLines, lDestinationPitch, true, eColorimetry, eRange, eRgb);
    }
    ASSERT_TRUE(pSource->SetPosition(16 * in_rc.uiSourceBlock, in_rc.uiFirstLine)) << s;
    ASSERT_TRUE(pKernel->SetPosition(16 * in_rc.uiDestinationBlock, in_rc.uiFirstLine)) << s;
    ASSERT_TRUE(pReference->SetPosition(16 * in_rc.uiDestinationBlock, in_rc.uiFirstLine)) << s;

    const unsigned uiBlocks = uiBlocksInLine - std::max(in_rc.uiSourceBlock, in_rc.uiDestinationBlock);
    const unsigned uiLines = in_rc.uiLines - in_rc.uiFirstLine;
    in_rs.pfnReference(MakeJob(*pReference, *pSource, uiBlocks, uiLines));
    ASSERT_TRUE(pKernel->CopyBlocksFrom(pSource.get(), uiBlocks, uiLines)) << s;

    ASSERT_TRUE(oKernel.SameAs(oReference)) << s;
    // The reference writes only the call's blocks (for v210: the groups its
    // pixels fall in) on the call's lines.
    const bool bV210 = in_rs.eDestination == keQxcSurfaceTypeV210_10bits;
    const long lBegin = bV210 ? V210GroupOffset(16 * in_rc.uiDestinationBlock)
                              : static_cast<long>(in_rc.uiDestinationBlock) * pKernel->GetBlockSize();
    const long lEnd = bV210 ? LineBytes(in_rs.eDestination, in_rc.uiWidth)
                            : lBegin + static_cast<long>(uiBlocks) * pKernel->GetBlockSize();
    ExpectUntouchedOutside(oBefore, oReference, in_rc.uiFirstLine, uiLines, lBegin, lEnd, s);
    ASSERT_TRUE(oSource.GuardsIntact()) << s;

    // Cursors: on the last line processed, past the blocks processed.
    const unsigned uiLastLine = in_rc.uiFirstLine + uiLines - 1;
    EXPECT_EQ(uiLastLine, pKernel->GetCursorLine()) << s;
    EXPECT_EQ(in_rc.uiDestinationBlock + uiBlocks, pKernel->GetCursorBlock()) << s;
    const long lUnit = bV210 ? V210GroupOffset(16 * (in_rc.uiDestinationBlock + uiBlocks)) : lBegin + (lEnd - lBegin);
    EXPECT_EQ(oKernel.Line(uiLastLine) + lUnit, pKernel->GetCurrentPosition()) << s;
    // The source's cursors stay where they were.
    EXPECT_EQ(in_rc.uiFirstLine, pSource->GetCursorLine()) << s;
    EXPECT_EQ(in_rc.uiSourceBlock, pSource->GetCursorBlock()) << s;
}

TEST(BlockKernels, EveryPairMatchesItsScalarReference)
{
    std::mt19937 oRandom(20240611);
    for (const SMatrixEntry& rsEntry : kasMatrix) {
        for (int i = 0; i < 48; ++i) {
            RunCase(rsEntry, DrawCase(oRandom), oRandom);
            if (HasFatalFailure())
                return;
        }
    }
}

// Each dispatch table holds exactly the pairs of the matrix.
TEST(BlockKernels, DispatchTablesHoldExactlyTheMatrix)
{
        for (EQxcSurfaceType eDestination : kaeBlockTypes) {
        for (EQxcSurfaceType eSource : kaeBlockTypes) {
            bool bInMatrix = false;
            for (const SMatrixEntry& rs : kasMatrix)
                bInMatrix |= rs.eDestination == eDestination && rs.eSource == eSource;
            CPicture oSource(LineBytes(eSource, 32), 1), oDestination(LineBytes(eDestination, 32), 1);
            std::mt19937 oRandom(7);
            FillRandom(oSource.Data(), oSource.Bytes(), oRandom);
            CPicture oBefore(oDestination);
            auto pSource = CreateSurface(eSource, true);
            auto pDestination = CreateSurface(eDestination, true);
            pSource->Initialize(oSource.Data(), 32, 1, oSource.Pitch(), true, keQxColorimetryITUR_BT_601);
            pDestination->Initialize(oDestination.Data(), 32, 1, oDestination.Pitch(), true,
                                     keQxColorimetryITUR_BT_601);
            EXPECT_EQ(bInMatrix, pDestination->CopyBlocksFrom(pSource.get(), 2, 1))
                << "destination " << eDestination << " source " << eSource;
            if (!bInMatrix) {
                EXPECT_TRUE(oDestination.SameAs(oBefore)) << "a refused pair wrote";
                EXPECT_EQ(0u, pDestination->GetCursorBlock());
            }
        }
    }
}

// ----------------------------------------------------------------- fills
PFNQxcBlockJob FillReference(EQxcSurfaceType in_e)
{
    switch (in_e) {
    case keQxcSurfaceTypeYCbCr422_8bits: return &TScalarEntry<KFillYuyv8>::Run;
    case keQxcSurfaceType2VUY_8bits: return &TScalarEntry<KFill2vuy8>::Run;
    case keQxcSurfaceTypeYCbCr422_10bits: return &TScalarEntry<KFillPacked10>::Run;
    case keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_8bits_Shaped: return &TScalarEntry<KFill4224_8>::Run;
    case keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_10bits_Shaped: return &TScalarEntry<KFill4224_10>::Run;
    case keQxcSurfaceTypeYCbCr422_16bits: return &TScalarEntry<KFill422_16>::Run;
    case keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped:
    case keQxcSurfaceTypeYCbCrA4224_16bits_Shaped: return &TScalarEntry<KFill4224_16>::Run;
    case keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped: return &TScalarEntry<KFill4444_16>::Run;
    case keQxcSurfaceTypeAYCbCr4444_8bits_Shaped: return &TScalarEntry<KFillAycbcr8>::Run;
    case keQxcSurfaceTypeV210_10bits: return &TScalarEntry<KFillV210>::Run;
    default: return nullptr;
    }
}

TEST(BlockKernels, FillsMatchTheirScalarReference)
{
    std::mt19937 oRandom(99);
    for (int iType = 0; iType <= keQxcSurfaceType2VUY_8bits; ++iType) {
        const EQxcSurfaceType eType = static_cast<EQxcSurfaceType>(iType);
        for (int i = 0; i < 24; ++i) {
            SCase c = DrawCase(oRandom);
            const SQxcYuvaPixel sColor = {kausEdge10[oRandom() % 6], kausEdge10[oRandom() % 6],
                                          kausEdge10[oRandom() % 6], kausEdgeKey[oRandom() % 5]};
            const long lPitch = LineBytes(eType, c.uiWidth) + c.lDestinationPadding;
            CPicture oBefore(lPitch, c.uiLines);
            FillRandom(oBefore.Data(), oBefore.Bytes(), oRandom);
            CPicture oKernel(oBefore), oReference(oBefore);
            auto pKernel = CreateSurface(eType, c.bCached);
            auto pReference = CreateSurface(eType, true);
            pKernel->Initialize(oKernel.Data(), c.uiWidth, c.uiLines, lPitch, true, keQxColorimetryITUR_BT_709);
            pReference->Initialize(oReference.Data(), c.uiWidth, c.uiLines, lPitch, true, keQxColorimetryITUR_BT_709);
            pKernel->SetPosition(16 * c.uiDestinationBlock, c.uiFirstLine);
            pReference->SetPosition(16 * c.uiDestinationBlock, c.uiFirstLine);
            const unsigned uiBlocks = (c.uiWidth + 15) / 16 - c.uiDestinationBlock;
            const unsigned uiLines = c.uiLines - c.uiFirstLine;
            SQxcBlockJob sJob = MakeJob(*pReference, *pReference, uiBlocks, uiLines);
            sJob.sColor = sColor;
            FillReference(eType)(sJob);
            ASSERT_TRUE(pKernel->FillBlocks(sColor, uiBlocks, uiLines));
            ASSERT_TRUE(oKernel.SameAs(oReference)) << "fill of type " << iType << " width " << c.uiWidth;
            EXPECT_EQ(c.uiFirstLine + uiLines - 1, pKernel->GetCursorLine());
            EXPECT_EQ(c.uiDestinationBlock + uiBlocks, pKernel->GetCursorBlock());
        }
    }
}

// ------------------------------------------------- the packed line helpers
TEST(BlockKernels, PackedLineHelpersMatchTheirReferenceAndRefuseShortLines)
{
    std::mt19937 oRandom(5);
    for (unsigned uiPixels : {16u, 32u, 48u, 80u, 1920u}) {
        std::vector<uint16_t> vusY(uiPixels), vusCb(uiPixels / 2), vusCr(uiPixels / 2);
        for (uint16_t& us : vusY)
            us = static_cast<uint16_t>(oRandom() % 1100);  // some above 10 bits
        for (uint16_t& us : vusCb)
            us = static_cast<uint16_t>(oRandom() % 1024);
        for (uint16_t& us : vusCr)
            us = static_cast<uint16_t>(oRandom() % 1024);
        // Odd offsets: the helpers take any address.
        std::vector<uint8_t> vucKernel(uiPixels / 16 * 40 + 9, 0x5a), vucReference(vucKernel);
        ASSERT_TRUE(CQxcYCbCr422_10bitsSurfaceSSE2::
                        _Convert_Planar_YUV422_16M_Pixels_10bit_To_Quelto_YUYV422_16M_Pixels_10bit_ASM(
                            vusY.data(), vusCb.data(), vusCr.data(), vucKernel.data() + 1, uiPixels));
        PlanarToPacked10(CScalar(), vusY.data(), vusCb.data(), vusCr.data(), vucReference.data() + 1, uiPixels / 16);
        EXPECT_EQ(vucReference, vucKernel) << uiPixels << " pixels";

        std::vector<uint8_t> vucV210(V210LinePixels(uiPixels) / 6 * 16);
        FillRandom(vucV210.data(), vucV210.size(), oRandom);
        std::vector<uint8_t> vucFromV210(uiPixels / 16 * 40 + 3, 0x5a), vucFromV210Reference(vucFromV210);
        ASSERT_TRUE(CQxcYCbCr422_10bitsSurfaceSSE2::_PRV210_To_QueltoYUYV10bit(vucV210.data(), vucFromV210.data() + 3,
                                                                                uiPixels));
        V210LineToPacked10(CScalar(), vucV210.data(), vucFromV210Reference.data() + 3, uiPixels);
        EXPECT_EQ(vucFromV210Reference, vucFromV210) << uiPixels << " pixels";
    }
    uint16_t ausPlane[16] = {};
    uint8_t aucOut[80];
    std::memset(aucOut, 0x77, sizeof(aucOut));
    EXPECT_FALSE(CQxcYCbCr422_10bitsSurfaceSSE2::
                     _Convert_Planar_YUV422_16M_Pixels_10bit_To_Quelto_YUYV422_16M_Pixels_10bit_ASM(
                         ausPlane, ausPlane, ausPlane, aucOut, 8));
    EXPECT_FALSE(CQxcYCbCr422_10bitsSurfaceSSE2::
                     _Convert_Planar_YUV422_16M_Pixels_10bit_To_Quelto_YUYV422_16M_Pixels_10bit_ASM(
                         ausPlane, ausPlane, ausPlane, aucOut, 0));
    EXPECT_FALSE(CQxcYCbCr422_10bitsSurfaceSSE2::_PRV210_To_QueltoYUYV10bit(aucOut, aucOut + 40, 24));
    for (uint8_t uc : aucOut)
        ASSERT_EQ(0x77, uc) << "a refusal wrote";
}

}  // namespace
